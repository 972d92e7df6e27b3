#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <list>
#include <set>
#include <string>

#include "Blocks/BlockSamples.h"
#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "TestUtil.h"
#include "Text/TreeSamples.h"

namespace {

ByteVector Write(RqNode* pNode) {
  ByteVector bytes;
  RqTreeVector::ToByteVector(pNode, bytes);
  return bytes;
}

/// Reads a tree that must fill the bytes.
Heap<RqNode> Read(const ByteVector& bytes) {
  RqNode* pNode = nullptr;
  EXPECT_EQ(RqTreeVector::FromByteVector(bytes.data(), &pNode), bytes.data() + bytes.size());
  return Heap<RqNode>(pNode);
}

Heap<RqNode> ReadBounded(const ByteVector& bytes, const BoundedRead::Limits& limits = {}) {
  const BoundedRead bounds(bytes, limits);
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(bytes.data(), &pNode);
  Heap<RqNode> tree(pNode);
  bounds.RequireAtEnd(end);
  return tree;
}

RqExprCond* Comparison() { return new RqExprCondEquality(Col(L"a"), Int(1), true); }

/// A tree of every kind that stands and travels, with the fields that travel set to other values than a new node has.
std::vector<TreeSample> Samples() {
  static SampleRepository repository;
  std::vector<TreeSample> samples = TreeSamples(repository);
  samples.push_back({new RqExprCondOuterJoinFilter(Comparison(), SqlTableRef::kLeftOuterJoin), {}});
  for (const auto& make : BlockSamples()) samples.push_back({make(), {}});
  for (const TreeSample& sample : samples) {
    sample.m_pNode->MarkTargetType(ServerInfo::kPostgreSQL);
    sample.m_pNode->MarkTargetID(VoidID(3023, 9U));
  }
  return samples;
}

enum class Made { Default, Given, Never };
struct Kind {
  RqNodeType_e m_type;
  bool m_bStands;
  Made m_made;
};
constexpr Kind kKinds[] = {
#define STANDS_Stands                                                 true
#define STANDS_Declared                                               false
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) {k##Class, STANDS_##state, Made::made},
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
};

TEST(TreeVector, EveryKindThatTravelsComesBack) {
  std::set<RqNodeType_e> sampled;
  for (const TreeSample& sample : Samples()) {
    const Heap<RqNode> tree(sample.m_pNode);
    SCOPED_TRACE(TextOf(*tree));
    std::list<RqNode*> nodes;
    tree->GetObjects(nodes);
    for (const RqNode* const pNode : nodes) {
      sampled.insert(pNode->GetObjectType());
      EXPECT_EQ(pNode->GetKind(), pNode->GetObjectType()) << GetRqNodeTypeName(pNode->GetObjectType());
      EXPECT_FALSE(pNode->IsOrderedByKind() && pNode->IsAggr()) << "the share base is a field";
    }
    if (tree->IsExpr()) {
      const auto& expr = static_cast<const RqExpr&>(*tree);
      const Heap<RqExpr> shallow(expr.ShallowCopy());
      EXPECT_EQ(Payload(*shallow), Payload(*tree));
      EXPECT_FALSE(shallow->IsCopyOf(*tree));
      EXPECT_EQ(shallow->GetNumOperands(), expr.GetNumOperands());
      for (int i = 0; i < shallow->GetNumOperands(); ++i) EXPECT_EQ(shallow->GetIthOperand(i), nullptr);
    }
    const ByteVector bytes = Write(tree.Get());
    if (tree->GetObjectType() == kRqExprIDOf || tree->GetObjectType() == kRqExprTimeDimSeqNum) {
      EXPECT_THROW(ReadBounded(bytes), ErrorMessage);
      continue;
    }
    const Heap<RqNode> copy(tree->DeepCopy(false));
    EXPECT_EQ(Write(copy.Get()), bytes);
    for (const Heap<RqNode>& read : {Read(bytes), ReadBounded(bytes)}) {
      ASSERT_TRUE(read);
      if (read->GetObjectType() == kRqList) ReattachRqList(static_cast<RqList*>(read.Get()));
      EXPECT_EQ(read->GetObjectType(), tree->GetObjectType());
      EXPECT_EQ(Write(read.Get()), bytes);
      EXPECT_FALSE(read->IsCopyOf(*tree));
      EXPECT_TRUE(!sample.m_bTravels || TextOf(*read) == TextOf(*tree)) << TextOf(*read);
      if (!tree->IsExpr() || !sample.m_bTravels) continue;
      auto& expr = static_cast<RqExpr&>(*tree);
      auto& readExpr = static_cast<RqExpr&>(*read);
      EXPECT_TRUE(expr.IsEquivalent(readExpr, RqEquivalence()));
      EXPECT_TRUE(expr.IsEquivalent(static_cast<RqExpr&>(*copy), RqEquivalence()));
      EXPECT_FALSE(expr.IsLessThan(readExpr, RqShallowLessThan()));
      EXPECT_FALSE(readExpr.IsLessThan(expr, RqShallowLessThan()));
    }
  }
  for (const Kind& kind : kKinds) {
    if (kind.m_bStands && kind.m_made != Made::Never) {
      EXPECT_TRUE(sampled.contains(kind.m_type)) << GetRqNodeTypeName(kind.m_type);
    }
  }
}

// What was written once is to be read for good: the file has the bytes of each sample, kind by kind. A new sample adds
// its lines.
TEST(TreeVector, BytesAreFrozen) {
  std::multiset<std::string> lines;
  for (const TreeSample& sample : Samples()) {
    const Heap<RqNode> tree(sample.m_pNode);
    std::string line(GetRqNodeTypeName(tree->GetObjectType()));
    line += ' ';
    for (const std::uint8_t byte : Write(tree.Get()))
      line += {"0123456789abcdef"[byte / 16], "0123456789abcdef"[byte % 16]};
    lines.insert(line + '\n');
  }
  std::string written;
  for (const std::string& line : lines) written += line;
  std::ifstream file(RQ_SOURCE_DIR "/tests/Node/sample_bytes.txt");
  EXPECT_EQ(written, std::string(std::istreambuf_iterator<char>(file), {}));
}

TEST(TreeVector, NullsKeepTheirPlace) {
  EXPECT_EQ(Write(nullptr), (ByteVector{0, 0, 1, 0, 0, 0}));
  EXPECT_FALSE(Read(Write(nullptr)));
  const Heap<RqNode> row(Row({nullptr, Int(1), nullptr}));
  const Heap<RqNode> read = Read(Write(row.Get()));
  ASSERT_EQ(read->GetNumChildren(), 3);
  EXPECT_TRUE(!read->GetIthChild(0) && read->GetIthChild(1) && !read->GetIthChild(2));
}

ByteVector Frame(int children, int type) {
  ByteVector bytes;
  DataBlobUtil::ToByteVector(bytes, static_cast<std::uint16_t>(children));
  DataBlobUtil::ToByteVector(bytes, static_cast<std::int32_t>(type));
  return bytes;
}

TEST(TreeVectorDeathTest, ATrustedBufferHoldsNoSuchKind) {
  for (const int type : {-1, 0, 214, 253, static_cast<int>(kRqExprIDOf), static_cast<int>(kRqExprCond)}) {
    RqNode* pNode = nullptr;
    EXPECT_DEATH(RqTreeVector::FromByteVector(Frame(0, type).data(), &pNode), "SQORRqTreeVector.*logic error") << type;
  }
}

/// The code of the error that reading under a bound raises; 0 without one.
unsigned long ErrorOf(const ByteVector& bytes, const BoundedRead::Limits& limits = {}) {
  return CodeRaisedBy([&] { ReadBounded(bytes, limits); });
}

TEST(TreeVectorBounded, EveryCutOfEverySampleIsFound) {
  for (const TreeSample& sample : Samples()) {
    const Heap<RqNode> tree(sample.m_pNode);
    SCOPED_TRACE(TextOf(*tree));
    const ByteVector bytes = Write(tree.Get());
    for (std::size_t length = 0; length < bytes.size(); ++length) {
      EXPECT_NE(ErrorOf(ByteVector(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length))), 0U) << length;
    }
    ByteVector longer = bytes;
    longer.push_back(0);
    EXPECT_NE(ErrorOf(longer), 0U);
  }
}

TEST(TreeVectorBounded, DamageIsNamed) {
  EXPECT_EQ(ErrorOf(Frame(0, 253)), kMsgNodeKindUnknown);
  EXPECT_EQ(ErrorOf(Frame(0, -5)), kMsgNodeKindUnknown);
  for (const Kind& kind : kKinds) {
    if (kind.m_made == Made::Never) {
      EXPECT_EQ(ErrorOf(Frame(0, kind.m_type)), kMsgNodeKindDoesNotTravel) << GetRqNodeTypeName(kind.m_type);
    }
  }
  const Heap<RqNode> tree(new RqExprCondNot(Comparison()));
  const ByteVector good = Write(tree.Get());
  const auto with = [&good](std::size_t offset, std::uint8_t byte) {
    ByteVector bytes = good;
    bytes[offset] = byte;
    return bytes;
  };
  EXPECT_EQ(ErrorOf(with(0, 200)), kMsgBytesEndTooEarly) << "more children than bytes are left for";
  EXPECT_EQ(ErrorOf(with(6, 200)), kMsgBytesMalformed) << "a target type that there is not";
  EXPECT_EQ(ErrorOf(good, {.m_maxNesting = 2}), kMsgBytesNestTooDeeply);
  EXPECT_EQ(ErrorOf(good, {.m_maxObjects = 3}), kMsgBytesHoldTooMuch);
  EXPECT_EQ(ErrorOf(good, {.m_maxNesting = 3, .m_maxObjects = 4}), 0U);

  const Heap<RqNode> level(new RqExprLevel);
  ByteVector damagedLevel = Write(level.Get());
  damagedLevel[damagedLevel.size() - sizeof(std::int32_t)] = RqExprLevel::kUnknown + 1;  // the type comes last
  EXPECT_EQ(ErrorOf(damagedLevel), kMsgBytesMalformed);

  // Operands that the class cannot live with: none, too many, null, a value in place of a condition.
  const auto shape = [](std::initializer_list<RqExpr*> operands) {
    const Heap<RqNode> node(new RqExprCondNot);
    for (RqExpr* const pOperand : operands) node->AddChild(pOperand);
    return ErrorOf(Write(node.Get()));
  };
  EXPECT_EQ(shape({}), kMsgNodeMalformed);
  EXPECT_EQ(shape({nullptr}), kMsgNodeMalformed);
  EXPECT_EQ(shape({Int(1)}), kMsgNodeMalformed);
  EXPECT_EQ(shape({Comparison(), Comparison()}), kMsgNodeMalformed);
  EXPECT_EQ(shape({Comparison()}), 0U);
}

}  // namespace
