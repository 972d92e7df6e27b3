#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <list>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Host/MemAlloc.h"
#include "HostMemory/MemoryGateway.h"
#include "HostMemory/ModelReader.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/QueryStages.h"
#include "rq/RequestBytes.h"
#include "rq/TreeDot.h"
#include "rq/TreeJson.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlParser.h"

namespace {

std::vector<std::filesystem::path> QueryFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(RQ_SOURCE_DIR "/examples/queries")) {
    if (entry.path().extension() == ".sql") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

std::string ReadFile(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// What a query builds must survive copying and travel.
class ExampleQueries : public testing::TestWithParam<std::filesystem::path> {
 protected:
  void SetUp() override {
    ModelReader::ReadDefault(m_gateway);
    m_sql = ReadFile(GetParam());
    m_tree = Build(nullptr);
  }

  Heap<RqAbstractList> Build(QueryObserver* pObserver) {
    const RepositoryNames names(m_gateway);
    return std::move(QueryBuilder(m_sql, m_gateway, names, pObserver).Build(SqlQuery(m_sql).GetSelect()).m_list);
  }

  std::string TextOf(const RqNode& node, bool bOneLine = false) {
    return RqDumpout::StringFrom(node, false, !bOneLine, &m_gateway).ToUTF8();
  }

  MemoryGateway m_gateway;
  std::string m_sql;
  Heap<RqAbstractList> m_tree;
};

TEST_P(ExampleQueries, IsWrittenInEachForm) {
  EXPECT_TRUE(m_sql.starts_with("-- "));
  const std::string text = TextOf(*m_tree);
  EXPECT_EQ(text.find("Dangling"), text.npos) << text;
  EXPECT_EQ(TextOf(*m_tree, true).find('\n'), std::string::npos);
  EXPECT_TRUE(nlohmann::json::accept(WriteTreeJson(*m_tree, &m_gateway, {})));
  EXPECT_TRUE(WriteTreeDot(*m_tree, &m_gateway, {}).ends_with("}\n"));

  // Being watched changes nothing.
  QueryStages stages(m_gateway);
  EXPECT_EQ(TextOf(*Build(&stages)), text);
  EXPECT_TRUE(stages.GetText().starts_with("== block 1: as parsed\nRqList"));
}

TEST_P(ExampleQueries, IsUndamaged) { EXPECT_EQ(PlanChecker::CheckPlan(&m_gateway, *m_tree), 0); }

TEST_P(ExampleQueries, IsCopied) {
  const Heap<RqNode> copy(m_tree->DeepCopy(true));
  EXPECT_EQ(TextOf(*copy), TextOf(*m_tree));
}

TEST_P(ExampleQueries, ANestedCopyLeadsNowhereElse) {
  const Heap<RqNode> copy(m_tree->NestedDeepCopy(true));
  std::list<RqNode*> nodes;
  copy->GetObjects(nodes);
  const std::set<const RqNode*> inside(nodes.begin(), nodes.end());
  std::vector<RqDerivedColumnReference*> references;
  FindAllReferences(*copy, references);
  for (RqDerivedColumnReference* const pReference : references) {
    EXPECT_TRUE(inside.contains(pReference->GetDerivedColumn())) << TextOf(*pReference);
  }
  EXPECT_EQ(TextOf(*copy), TextOf(*m_tree));
}

TEST_P(ExampleQueries, TravelsAsBytes) {
  const ByteVector bytes = WriteRequest(*m_tree);
  const Heap<RqNode> read = ReadRequest(bytes);
  std::list<RqNode*> nodes;
  m_tree->GetObjects(nodes);
  for (RqNode* const pNode : nodes) {
    auto* const pList = dynamic_cast<RqAbstractList*>(pNode);
    if (!pList) continue;
    pList->SetRowNumLimit(0);  // limits do not travel
    pList->SetRowNumOffset(0);
  }
  EXPECT_EQ(TextOf(*read), TextOf(*m_tree));
}

TEST_P(ExampleQueries, LeavesNothingBehind) {
  const auto before = MemoryDataCollector::GetRqNodeCount();
  static_cast<void>(Build(nullptr));
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), before);
}

INSTANTIATE_TEST_SUITE_P(Files, ExampleQueries, testing::ValuesIn(QueryFiles()),
                         [](const auto& info) { return info.param.stem().string(); });

}  // namespace
