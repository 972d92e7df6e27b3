#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Blocks/BlockSamples.h"
#include "RqTestUtil.h"
#include "SQORRqNodeFactory.h"
#include "Text/TreeSamples.h"
#include "rq/TreeDot.h"
#include "rq/TreeJson.h"

namespace {

using Json = nlohmann::ordered_json;

class TreeWriters : public testing::Test {
 protected:
  RqAtomicTable* Table(int number, const VoidID& id) { return new RqAtomicTable(&m_gateway, number, id); }
  RqExpr* Column(const VoidID& id, int table) { return new RqTargetColumn(&m_gateway, id, table); }
  /// Regions with the keys of a derived table, without those regions that a subquery gives.
  std::unique_ptr<RqList> Query() {
    RqList* const pInner = List({Column(m_key, 2)}, {Table(2, m_facts)});
    RqDerivedColumn* const pKey = pInner->GetProjection()->GetIthColumn(0);
    std::unique_ptr<RqList> query(List({Column(m_name, 1), new RqDerivedColumnReference(pKey)},
                                       {Table(1, m_regions), new RqDerivedTable(pInner, 3)}));
    RqJoinSpec& joinSpec = *query->GetJoinSpec();
    joinSpec.GetIthJoinNode(0)->AddLink(joinSpec.GetIthJoinNode(1),
                                        Equal(Column(m_id, 1), new RqDerivedColumnReference(pKey)),
                                        SqlTableRef::kLeftOuterJoin, k_One_To_Many, nullptr, false);
    RqList* const pBlock = List({Column(m_name, 4)});
    pBlock->SetRowNumLimit(10);
    query->SetDetailFilter(
        new RqDetailFilter(new RqExprCondIn(Column(m_name, 1), new RqExprPhysicalSubquery(pBlock, &m_gateway), true)));
    query->SetOrderBy(new RqOrderBy({{2, RqSortSpec::kDesc, false, false, RqSortSpec::kLast}}, false));
    query->SetDistinct(true);
    query->MarkTargetType(ServerInfo::kPostgreSQL);
    query->MarkTargetID(m_warehouse);
    return query;
  }

  template <class Object, class... Args>
  VoidID MakeObject(const Args&... args) {
    return m_gateway.MakeObject<Object>(args...).GetID();
  }

  MemoryGateway m_gateway;
  const VoidID m_warehouse = MakeObject<MemoryDatabase>(40u, L"Warehouse", ServerInfo::kPostgreSQL);
  const VoidID m_regions = MakeObject<MemoryTable>(30u, L"REGIONS", VoidID::NullID, m_warehouse);
  const VoidID m_facts = MakeObject<MemoryTable>(31u, L"FACTS", VoidID::NullID, m_warehouse);
  const VoidID m_id = MakeObject<MemoryColumn>(50u, L"ID", m_regions, KXTypeInfo());
  const VoidID m_name = MakeObject<MemoryColumn>(51u, L"NAME", m_regions, KXTypeInfo());
  const VoidID m_key = MakeObject<MemoryColumn>(52u, L"KEY", m_facts, KXTypeInfo());
};

// ---------------------------------------------------------------------------------------------------------------------
// A query

TEST_F(TreeWriters, JsonOfAQuery) {
  std::ifstream file(RQ_SOURCE_DIR "/tests/rq/tree_of_a_query.json");
  EXPECT_EQ(WriteTreeJson(*Query(), &m_gateway, {}), std::string(std::istreambuf_iterator<char>(file), {}));
}

// ---------------------------------------------------------------------------------------------------------------------
// Each kind of node

TEST_F(TreeWriters, WhatIsSaidOfANode) {
  const auto pShared = std::make_unique<RqDerivedTable>(new RqList(0), 7);
  auto pDangling = std::make_unique<RqDerivedColumn>(Int(1), 5);
  RqNode* const pReferenceToNothing = new RqDerivedColumnReference(pDangling.get());
  pDangling.reset();
  const std::vector<std::pair<RqNode*, std::string>> rows{
      // Values
      {Int(-7), R"({"kind": "RqExprIntegerLiteral", "value": -7} )"},
      {Str(L"a\"\\\n\x1\u00df"), R"({"kind": "RqExprStringLiteral", "value": "a\"\\\n\u0001ß"} )"},
      {Null(), R"({"kind": "RqExprNullLiteral", "value": null} )"},
      {new RqExprFloatLiteral(0.1), R"({"kind": "RqExprFloatLiteral", "value": 0.1} )"},
      {new RqExprFloatLiteral(std::numeric_limits<double>::infinity()),
       R"({"kind": "RqExprFloatLiteral", "value": "inf"} )"},
      {new RqExprNumberLiteral(Number(L"-12345678901234567890.125")),
       R"({"kind": "RqExprNumberLiteral", "value": -12345678901234567890.125} )"},
      {new RqExprNumberLiteral(Number(L"5e-100")), R"({"kind": "RqExprNumberLiteral", "value": 5E-100} )"},
      {new RqExprDateTimeLiteral(KXDateTime(2024, 2, 29, 1, 2, 3, 500'000'000), 1),
       R"({"kind": "RqExprDateTimeLiteral", "value": "2024-02-29 01:02:03.500000000", "precision": 1} )"},
      {new RqExprCalendarExtract(new RqExprParam(1), KXDateTime::kExtractQuarterOfYear),
       R"({"kind": "RqExprCalendarExtract", "operation": "quarter of year",)"
       R"( "dateTimeExpr": {"kind": "RqExprParam", "number": 1} } )"},
      {new RqExprSessionVar(KXStringPair(L"b", L"n")), R"({"kind": "RqExprSessionVar", "variable": ["b", "n"]} )"},
      // Marks
      {Changed<RqNode>(new RqExprPi, [](RqNode& node) { node.MarkTargetType(ServerInfo::kPostgreSQL); }),
       R"({"kind": "RqExprPi", "target": {"type": "POSTGRESQL"}} )"},
      // Slots: null ones, repeated ones, pairs, and more than there are names for
      {new RqExprCondLike(Col(L"a"), Str(L"x"), true, nullptr),
       R"({"kind": "RqExprCondLike", "negated": true,)"
       R"( "operand": {"kind": "RqTargetColumn", "table": "T1", "column": "a"},)"
       R"( "patternString": {"kind": "RqExprStringLiteral", "value": "x"} } )"},
      {Changed<RqNode>(new RqExprIfCase,
                       [](RqNode& node) {
                         node.AddChild(nullptr);
                         node.AddChild(new RqExprPi);
                         node.AddChild(Null());
                         node.AddChild(nullptr);
                         node.AddChild(new RqExprUser);
                       }),
       R"({"kind": "RqExprIfCase", "when": [ {"kind": "RqExprPi"}, null ],)"
       R"( "then": [ {"kind": "RqExprNullLiteral", "value": null}, {"kind": "RqExprUser"} ] } )"},
      {Changed<RqNode>(new RqExprCondNot(new RqExprCondExists(LogicalSubquery(L"q"))),
                       [](RqNode& node) { node.AddChild(new RqExprPi); }),
       R"({"kind": "RqExprCondNot", "operand": {"kind": "RqExprCondExists",)"
       R"( "subquery": {"kind": "RqExprLogicalSubquery", "statement": "q"} }, "more": [ {"kind": "RqExprPi"} ] } )"},
      // What stands aside or elsewhere
      {Changed(new RqGroupBy,
               [this](RqGroupBy& node) {
                 node.AddChild(Column(m_name, 1));
                 node.AddChild(Column(m_key, 2));
                 node.SetGroupingSet({0, 1, 3});
                 OwnedRqExprCondVector filters(3);
                 filters[1] = new RqExprCondExists(LogicalSubquery(L"q"));
                 node.SetGroupingSetFilters(filters);
               }),
       R"({"kind": "RqGroupBy", "groupingSets": [["REGIONS.NAME", "FACTS.KEY"], ["REGIONS.NAME"], []], "columns": [)"
       R"( {"kind": "RqTargetColumn", "table": "T1", "column": "NAME", "columnID": "3025:51"},)"
       R"( {"kind": "RqTargetColumn", "table": "T2", "column": "KEY", "columnID": "3025:52"} ], "groupingSetFilters": [ null,)"
       R"( {"kind": "RqExprCondExists", "subquery": {"kind": "RqExprLogicalSubquery", "statement": "q"} }, null ] } )"},
      {new RqSharedList(nullptr, pShared->GetInnerList()), R"({"kind": "RqSharedList", "sharing": 7} )"},
      {new RqSharedList(nullptr, nullptr), R"({"kind": "RqSharedList", "sharing": null} )"},
      {pReferenceToNothing, R"({"kind": "RqDerivedColumnReference", "table": "Dangling derived column reference"} )"},
      // An object that the gateway does not have
      {new RqAtomicTable(&m_gateway, 1, VoidID(kTIDATable, 99u)),
       R"({"kind": "RqAtomicTable", "number": 1, "tableID": "3024:99"} )"},
  };
  for (const auto& [pNode, json] : rows) {
    SCOPED_TRACE(json);
    const std::unique_ptr<RqNode> node(pNode);
    EXPECT_EQ(OneLine(WriteTreeJson(*node, &m_gateway, {})), json);
  }
}

TEST_F(TreeWriters, ANewNodeSaysWhatItIsAtMost) {
  const std::set<std::string> whatItIs{"kind",      "value",      "number",     "sharing",   "columnNumber",
                                       "operation", "unitOfTime", "unattached", "projection"};
  for (int type = 0; type <= kRqHighestNodeType; ++type) {
    const std::unique_ptr<RqNode> node(MakeEmptyRqNode(static_cast<RqNodeType_e>(type)));
    if (!node) continue;
    const Json json = Json::parse(WriteTreeJson(*node, nullptr, {}));
    EXPECT_EQ(json["kind"], GetRqNodeTypeName(node->GetObjectType()));
    for (const auto& [name, value] : json.items()) {
      EXPECT_TRUE(whatItIs.contains(name)) << json;
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Any tree

void CollectKinds(const RqNode& node, std::multiset<std::string>& kinds) {
  kinds.emplace(GetRqNodeTypeName(node.GetObjectType()));
  for (int i = 0; i < node.GetNumChildren(); ++i) {
    if (node.GetIthChild(i)) CollectKinds(*node.GetIthChild(i), kinds);
  }
}

void CollectKinds(const Json& json, std::multiset<std::string>& kinds) {
  if (json.is_object() && json.contains("kind")) kinds.insert(json["kind"].get<std::string>());
  if (!json.is_structured()) return;
  for (const Json& element : json) CollectKinds(element, kinds);
}

/// The place behind the quoted text that begins there; npos if none does.
std::size_t BehindQuoted(const std::string& line, std::size_t begin) {
  if (line[begin] != '"') return std::string::npos;
  for (std::size_t i = begin + 1; i < line.size(); ++i) {
    if (line[i] == '"') return i + 1;
    if (line[i] == '\\') ++i;
  }
  return std::string::npos;
}

/// Each line has its form, each frame its end, and each edge ends in nodes.
void CheckDot(const std::string& dot) {
  constexpr std::string_view kLabel = " [label=";
  std::istringstream lines(dot);
  std::set<std::string> nodes;
  int depth = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t label = line.find(kLabel);
    if (line.ends_with("{") || line.starts_with("  subgraph cluster_")) {
      ++depth;
    } else if (line.ends_with("}")) {
      ASSERT_GE(--depth, 0);
    } else if (label != std::string::npos) {
      const std::string ends = line.substr(2, label - 2);  // "n1" or "n1 -> n2"
      const std::size_t behind = BehindQuoted(line, label + kLabel.size());
      ASSERT_NE(behind, std::string::npos) << line;
      const std::string options = line.substr(behind);
      if (const std::size_t arrow = ends.find(" -> "); arrow != std::string::npos) {
        EXPECT_TRUE(nodes.contains(ends.substr(0, arrow)) && nodes.contains(ends.substr(arrow + 4))) << line;
        EXPECT_TRUE(options == "];" || options == ", style=dashed, constraint=false, color=\"#b85450\"];") << line;
      } else {
        EXPECT_EQ(ends, "n" + std::to_string(nodes.size() + 1));
        EXPECT_TRUE(options.starts_with(", fillcolor=\"#") && options.ends_with("\"];")) << line;
        nodes.insert(ends);
      }
    } else {
      EXPECT_TRUE(nodes.empty() && line.ends_with(";")) << line;
    }
  }
  EXPECT_EQ(depth, 0);
}

TEST_F(TreeWriters, DotOfAQuery) {
  const std::string dot = WriteTreeDot(*Query(), &m_gateway, {});
  CheckDot(dot);
  for (const char* const line : {
           R"(  subgraph cluster_14 { color="#6c8ebf";)",
           R"(  n1 [label="RqList\ndistinct", fillcolor="#dae8fc"];)",
           R"(  n10 [label="RqAtomicTable\nT1 REGIONS", fillcolor="#d5e8d4"];)",
           R"(  n17 [label="FACTS.KEY", fillcolor="#ffffff"];)",
           R"(  n23 [label="IN\nnegated", fillcolor="#fff2cc"];)",
           R"(  n2 -> n5 [label="columns[1]"];)",
           R"(  n25 -> n26 [label="block"];)",
           R"(  n6 -> n16 [label="D3.c1", style=dashed, constraint=false, color="#b85450"];)",
           R"(  n8 -> n11 [label="left outer\nREGIONS.ID = D3.c1", style=dashed, constraint=false, color="#b85450"];)",
       }) {
    EXPECT_THAT(dot, testing::HasSubstr(line + std::string("\n")));
  }
}

TEST_F(TreeWriters, ASharedListLeadsToWhatItShares) {
  RqList* const pInner = List({Int(1)});
  std::vector<RqAbstractList*> lists{List({Int(2)}, {new RqDerivedTable(pInner, 3)}),
                                     new RqSharedList(nullptr, pInner)};
  RqUnion all(lists, true);
  const std::string dot = WriteTreeDot(all, nullptr, {});
  CheckDot(dot);
  EXPECT_THAT(dot, testing::HasSubstr("  n10 [label=\"RqList\\nshared\","));
  EXPECT_THAT(dot, testing::HasSubstr("  n14 -> n10 [label=\"sharing\", style=dashed,"));
}

TEST_F(TreeWriters, EachSampleIsWhole) {
  SampleRepository repository;
  std::vector<std::unique_ptr<RqNode>> samples;
  for (const TreeSample& sample : TreeSamples(repository)) samples.emplace_back(sample.m_pNode);
  samples.push_back(Query());
  samples.emplace_back(new RqExprSubstring(Int(1), nullptr, nullptr, Str(L"a \"quoted\" \\ text\nof lines"), Int(2)));
  for (const auto& sample : samples) {
    const std::string text = WriteTreeJson(*sample, nullptr, {});
    SCOPED_TRACE(text);
    std::multiset<std::string> ofTree;
    std::multiset<std::string> ofJson;
    CollectKinds(*sample, ofTree);
    CollectKinds(Json::parse(text), ofJson);
    EXPECT_TRUE(std::includes(ofJson.begin(), ofJson.end(), ofTree.begin(), ofTree.end()));
    CheckDot(WriteTreeDot(*sample, nullptr, {}));
  }
}

TEST_F(TreeWriters, Identities) {
  const std::unique_ptr<RqList> query = Query();
  const std::unique_ptr<RqNode> copy(query->NestedDeepCopy(true));
  EXPECT_EQ(WriteTreeJson(*query, nullptr, {}), WriteTreeJson(*copy, nullptr, {}));
  EXPECT_EQ(WriteTreeDot(*query, nullptr, {}), WriteTreeDot(*copy, nullptr, {}));

  const Json json = Json::parse(WriteTreeJson(*query, nullptr, {.m_bIds = true}));
  EXPECT_EQ("<<" + json["id"].dump() + ">>", query->GetNodeID().ToString().ToUTF8());
  EXPECT_NE(json["projection"]["id"], json["id"]);
  EXPECT_THAT(WriteTreeDot(*query, nullptr, {.m_bIds = true}), testing::HasSubstr("\\n#" + json["id"].dump() + "\","));
}

/// So deep that anything recursive would run out of the stack of this thread.
TEST_F(TreeWriters, DeepTree) {
  constexpr int kDepth = 100'000;
  RqExprCond* pCond = new RqExprCondIsNull(Int(1), false);
  for (int i = 0; i < kDepth; ++i) pCond = new RqExprCondNot(pCond);
  const std::unique_ptr<RqNode> tree(pCond);
  const std::string json = WriteTreeJson(*tree, nullptr, {});
  EXPECT_TRUE(Json::accept(json));
  EXPECT_LT(json.size(), 60u * kDepth);
  const std::string dot = WriteTreeDot(*tree, nullptr, {});
  EXPECT_THAT(dot, testing::HasSubstr("n" + std::to_string(kDepth - 7) + " ["));
}

}  // namespace
