#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <set>
#include <string>

#include "Blocks/BlockSamples.h"
#include "Conditions/SubquerySamples.h"
#include "Expressions/ExprSamples.h"
#include "Expressions/ScalarSamples.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

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

std::string TextOf(const RqNode& node) { return RqDumpout::StringFrom(node).ToUTF8(); }

RqExprCond* Comparison() { return new RqExprCondEquality(Col(L"a"), Int(1), true); }

template <class Expr, class... Children>
Expr* Operands(Children*... pOperands) {
  auto* const pExpr = new Expr;
  (pExpr->AddChild(pOperands), ...);
  return pExpr;
}

/// A tree of every kind that stands and travels, with all fields that travel set to other values than a new node has.
std::vector<std::function<RqNode*()>> Samples() {
  static MemoryGateway gateway;
  const VoidID id(3001, 7U);
  std::vector<std::function<RqNode*()>> samples{
      [] { return new RqHandleNode(Int(1)); },
      [=] { return new RqEntity(&gateway, id); },
      [=]() -> RqNode* {
        auto* const pAttribute = new RqAttribute(&gateway, id);
        pAttribute->SetIsSortKeyAttribute(true);
        pAttribute->SetDescriptorAttributeName(L"name");
        return pAttribute;
      },
      [=] { return new RqExprDimension(&gateway, id, VoidID(3002, 8U)); },
      [=] { return new RqExprLevel(&gateway, id, RqExprLevel::kPhysicalLevel); },
      [=]() -> RqNode* {
        auto* const pMember = new RqExprMemberReference(new RqExprLevel(&gateway, id), new RqExprStringLiteral(L"m"));
        pMember->AddChild(Col(L"k"));
        return pMember;
      },
      [=] { return new RqExprMemberReference(new RqExprLevel(&gateway, id), nullptr); },
      [=]() -> RqNode* {
        auto* const pColumn = new RqTargetColumn(KXString(L"Größe"), 3);
        pColumn->SetColumnID(id);
        pColumn->SetDataMiningColumn(true);
        return pColumn;
      },
      [] { return new RqTargetCubeColumn(); },
      [] { return new RqTargetCacheColumn(); },
      [] { return Operands<RqExprColumnListOrdered>(Int(1), Str(L"x")); },
      [] { return Operands<RqExprColumnList>(Col(L"b"), Col(L"a")); },
      [] { return new RqExprParam(5); },
      [] { return new RqExprSessionVar(KXStringPair(L"block", L"name"), 2); },
      [] { return Str(L"it's"); },
      [] { return Int(-7); },
      [] { return new RqExprFloatLiteral(0.5); },
      [] { return new RqExprDateLiteral(KXDate(2024, 2, 29)); },
      [] { return new RqExprTimeLiteral(KXTime(23, 59, 58)); },
      [] { return new RqExprDateTimeLiteral(KXDateTime(KXDate(1999, 12, 31), KXTime(1, 2, 3))); },
      [] { return new RqExprIntervalLiteral(KXString(L"1 day")); },
      [] { return Null(); },
      [] {
        return new RqExprNumberLiteral(PropertyValueString(L"12345678901234567890.5").ToNumberValue().GetNumber());
      },
      [] { return new RqExprCondAnd(Comparison(), new RqExprCondNotEqual(Col(L"b"), Int(2))); },
      [] { return new RqExprCondOr(Comparison(), new RqExprCondLess(Col(L"a"), Int(1))); },
      [] { return new RqExprCondLessEqual(Col(L"b"), Int(2)); },
      [] { return new RqExprCondNot(new RqExprCondGreater(Col(L"a"), Int(1))); },
      [] { return new RqExprCondGreaterEqual(Col(L"a"), Int(1)); },
      [] { return new RqExprCondIsNull(Col(L"a"), true); },
      [] { return new RqExprCondBetween(Col(L"a"), Int(1), Int(2), true); },
      [] { return new RqExprCondLike(Col(L"a"), Str(L"x%"), true, nullptr); },
      [] { return new RqExprCondIn(Col(L"a"), Operands<RqExprColumnListOrdered>(Int(1), Int(2)), true); },
      [] { return new RqExprCondMultiColumnIn(Row({Col(L"a")}), Row({Row({Int(1)})}), true); },
      [] { return new RqExprIsAncestor(Col(L"a"), Str(L"m"), Int(2), true); },
      [] { return new RqExprIsRoot(Col(L"a")); },
      [] { return new RqExprIsSibling(Col(L"a"), Str(L"m"), Col(L"p"), true); },
      [] { return new RqExprIsLeaf(Col(L"a"), true); },
      [] { return new RqExprCondAtomicWrapper(Comparison()); },
      [] { return new RqExprCondOuterJoinFilter(Comparison(), SqlTableRef::kLeftOuterJoin); },
      [] { return Operands<RqExprCondGroupByContent>(Col(L"a"), Col(L"b")); },
      []() -> RqNode* {
        RqExprVector arguments{Col(L"a")};
        auto* const pPredicate = new RqExprEvaluatePredicate(arguments, true);
        pPredicate->SetFunctionDef(L"f(%1)");
        return pPredicate;
      },
  };
  for (const ScalarSample& sample : ScalarSamples()) {
    if (sample.m_bTravels) samples.emplace_back(sample.m_make);
  }
  for (const QuerySubexprSample& sample : QuerySubexprSamples()) samples.emplace_back(sample.m_make);
  for (const auto& make : BlockSamples()) samples.push_back(make);
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
  for (const auto& make : Samples()) {
    const Heap<RqNode> tree(make());
    SCOPED_TRACE(TextOf(*tree));
    std::list<RqNode*> nodes;
    tree->GetObjects(nodes);
    for (const RqNode* const pNode : nodes) sampled.insert(pNode->GetObjectType());
    tree->MarkTargetType(ServerInfo::kPostgreSQL);
    tree->MarkTargetID(VoidID(3023, 9U));
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
      // The names of the table and the column with the result do not travel.
      const bool bTextTravels = tree->GetObjectType() != kRqExprPersistSubquery;
      EXPECT_TRUE(!bTextTravels || TextOf(*read) == TextOf(*tree)) << TextOf(*read);
      EXPECT_FALSE(read->IsCopyOf(*tree));
      if (!tree->IsExpr()) continue;
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
    EXPECT_DEATH(RqTreeVector::FromByteVector(Frame(0, type).data(), &pNode), "") << type;
  }
}

/// The code of the error that reading under a bound raises, and the offset in its arguments; 0 without one.
unsigned long ErrorOf(const ByteVector& bytes, const BoundedRead::Limits& limits = {}) {
  try {
    ReadBounded(bytes, limits);
  } catch (const ErrorMessage& error) {
    return error.GetCode();
  }
  return 0;
}

TEST(TreeVectorBounded, EveryCutOfEverySampleIsFound) {
  for (const auto& make : Samples()) {
    const Heap<RqNode> tree(make());
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
