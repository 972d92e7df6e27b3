#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "TestUtil.h"
#include "TruthTable.h"

namespace {

using testing::HasSubstr;
using Own = OwnedRqExprCondPtr;

// Making expressions. The caller, or the node that takes them, owns what these give.

RqExpr* Flt(double value) { return new RqExprFloatLiteral(value); }
RqExpr* Var(const wchar_t* name, int index = RqExprSessionVar::kNoIndex) {
  return new RqExprSessionVar(KXStringPair(L"block", name), index);
}
RqExpr* List(const std::vector<RqExpr*>& columns) {
  auto* const pList = new RqExprColumnList();
  for (RqExpr* const pColumn : columns) pList->AddChild(pColumn);
  return pList;
}

RqExprCond* IsNull(RqExpr* pExpr) { return new RqExprCondIsNull(pExpr, false); }
RqExprCond* NotNull(RqExpr* pExpr) { return new RqExprCondIsNull(pExpr, true); }
RqExprCond* Less(RqExpr* pLeft, RqExpr* pRight) { return new RqExprCondLess(pLeft, pRight); }
RqExprCond* Eq(RqExpr* pLeft, RqExpr* pRight) { return new RqExprCondEquality(pLeft, pRight, false); }
RqExprCond* Not(RqExprCond* pCond) { return new RqExprCondNot(pCond); }
RqExprCond* In(RqExpr* pSearch, RqExpr* pValues, bool bNegated = false) {
  return new RqExprCondIn(pSearch, pValues, bNegated);
}
RqExprCond* True() { return Eq(Int(1), Int(1)); }
RqExprCond* False() { return Eq(Int(1), Int(2)); }
RqExprCond* Unknown() { return IsNull(Col(L"u")); }
/// An atom of one letter, told from others and ordered by it.
RqExprCond* Atom(char letter) { return IsNull(Col(std::wstring(1, static_cast<wchar_t>(letter)).c_str())); }

/// Two operands that are let go of here and taken by the constructor.
template <class Class>
RqExprCond* Both(RqExprCond* pLeft, RqExprCond* pRight) {
  return new Class(pLeft, pRight);
}

RqExpr* Attr(std::uint32_t number) {
  static MemoryGateway s_gateway;
  return new RqAttribute(&s_gateway, VoidID(3001, number));
}

/// As CondText, but a column for "is null" of it, and And and Or with their height behind them.
std::string Shape(const RqExpr* pExpr) {
  if (!pExpr) return "-";
  const auto operand = [&](int i) { return Shape(pExpr->GetIthOperand(i)); };
  const auto junction = [&](const char* sign, int height) {
    return "(" + operand(0) + sign + operand(1) + ")" + std::to_string(height);
  };
  const RqNodeType_e type = pExpr->GetObjectType();
  if (type == kRqExprCondAnd) return junction("&", static_cast<const RqExprCondAnd*>(pExpr)->GetHeight());
  if (type == kRqExprCondOr) return junction("|", static_cast<const RqExprCondOr*>(pExpr)->GetHeight());
  if (type == kRqExprCondNot) return "!" + operand(0);
  if (type == kRqExprCondIsNull) return operand(0);
  if (type != kRqExprIsLeaf) return CondText(pExpr);
  std::string text("IsLeaf");
  for (int i = 0; i < pExpr->GetNumOperands(); ++i) text += (i ? "," : "(") + operand(i);
  return text + ")";
}
std::string Shape(const Own& cond) { return Shape(cond.Get()); }

// Order of operands at construction

// clang-format off
TEST(OperandOrder, Construction) {
  struct { const char* m_name; RqExprCond* m_pCond; const char* m_text; } const rows[] = {
      {"lesser stays", Eq(Col(L"a"), Col(L"b")), "a=b"},
      {"greater swaps", Eq(Col(L"b"), Col(L"a")), "a=b"},
      {"parameter right stays right of a lesser one", Eq(Col(L"a"), Param(1)), "a=?1"},
      {"parameter right stays right of a greater one", Eq(Int(1), Param(1)), "1=?1"},
      {"parameter left swaps with a greater one", Eq(Param(1), Int(1)), "1=?1"},
      {"two parameters stay as given", Eq(Param(2), Param(1)), "?2=?1"},
      {"not equal keeps", new RqExprCondNotEqual(Col(L"b"), Col(L"a")), "b<>a"},
      {"less keeps", Less(Col(L"b"), Col(L"a")), "b<a"},
      {"and sorts", Both<RqExprCondAnd>(Atom('b'), Atom('a')), "(a&b)0"},
      {"or sorts", Both<RqExprCondOr>(Atom('b'), Atom('a')), "(a|b)0"},
      {"like has its escape third", new RqExprCondLike(Col(L"a"), Int(1), false, Int(2)), "Like(a,1,2)"},
      {"between without bounds", new RqExprCondBetween(Col(L"a"), nullptr, nullptr, true), "NotBetween(a)"},
      {"leaf form", new RqExprIsAncestor(Col(L"a"), true), "NotIsAncestor(a,1,-1)"},
      {"sibling", new RqExprIsSibling(Col(L"a"), Col(L"b"), Col(L"k"), true), "IsSibling(a,b,k)"},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    EXPECT_EQ(row.m_text, Shape(Own(row.m_pCond)));
  }

  RqExprCond* const pFirst = Atom('a');
  RqExprCond* const pSecond = Atom('a');
  const RqExprCondAnd both(pFirst, pSecond);
  EXPECT_EQ(pSecond, both.GetLeftCond()) << "equal operands change places";
}

// Balanced trees

template <class Connective>
class SpineTest : public testing::Test {
 public:
  /// The shapes are written for And; Or has the signs the other way round.
  static std::string Mirror(std::string text) {
    if (Connective::kObjectType == kRqExprCondAnd) return text;
    for (char& sign : text) sign = sign == '&' ? '|' : sign == '|' ? '&' : sign;
    return text;
  }

  static Own Chain(const std::string& letters) {
    Own cond;
    for (const char letter : letters) cond = Connective::Concatenate(cond.Release(), Atom(letter));
    return cond;
  }

  /// Heights, balance and parents of a spine and its height; what is no spine is a leaf.
  static int CheckSpine(const RqExprCond* pCond, std::vector<const RqExprCond*>& leaves) {
    if (pCond->GetObjectType() != Connective::kObjectType || static_cast<const Connective*>(pCond)->GetHeight() == 0) {
      leaves.push_back(pCond);
      return 0;
    }
    const auto* const pNode = static_cast<const Connective*>(pCond);
    EXPECT_EQ(pNode, pNode->GetLeftCond()->GetParent());
    EXPECT_EQ(pNode, pNode->GetRightCond()->GetParent());
    const int left = CheckSpine(pNode->GetLeftCond(), leaves);
    const int right = CheckSpine(pNode->GetRightCond(), leaves);
    EXPECT_LE(std::abs(left - right), 1);
    EXPECT_EQ(std::max(left, right) + 1, pNode->GetHeight());
    return pNode->GetHeight();
  }
};

using Connectives = testing::Types<RqExprCondAnd, RqExprCondOr>;
TYPED_TEST_SUITE(SpineTest, Connectives);

TYPED_TEST(SpineTest, WhatIsALeafAndWhatIsNot) {
  using Connective = TypeParam;
  using Other = std::conditional_t<std::is_same_v<Connective, RqExprCondAnd>, RqExprCondOr, RqExprCondAnd>;
  const char* const kHigh = "abcdefghi";
  const auto concatenate = [](Own first, Own second) {
    return Own(Connective::Concatenate(first.Release(), second.Release()));
  };
  const auto grow = [&](Own cond, const std::string& letters) {
    for (const char letter : letters) cond = concatenate(cond, Own(Atom(letter)));
    return cond;
  };
  const auto chain = [](const std::string& letters) { return SpineTest<Connective>::Chain(letters); };
  const auto join = [](Own left, Own right) { return Own(new Connective(left.Release(), right.Release())); };
  const auto atom = [](char letter) { return Own(Atom(letter)); };
  const Own heightless = join(atom('a'), atom('b'));
  const std::string high = this->Mirror(Shape(chain(kHigh)));

  // clang-format off
  struct { const char* m_name; Own m_cond; std::string m_shape; } const rows[] = {
      // Each new pair is sorted, so the older condition of a pair drifts to the right; a rotation sorts nothing.
      {"sorted", chain("abcdefghi"), "(((a&b)1&(c&d)1)2&((e&f)1&(g&(h&i)1)2)3)4"},
      {"reversed", chain("hgfedc"), "((g&f)1&((e&d)1&(c&h)1)2)3"},
      {"null first", concatenate(Own(), chain("ab")), "(a&b)1"},
      {"null second", concatenate(chain("ab"), Own()), "(a&b)1"},
      {"a tree behind an atom is a leaf", concatenate(chain("a"), chain("bc")), "((b&c)0&a)1"},
      {"a tree behind a tree is a leaf", concatenate(chain("ab"), chain("cd")), "(a&((c&d)0&b)1)2"},
      {"a tree without heights grows at its right edge", grow(heightless, "cd"), "((a&b)1&(c&d)1)2"},
      {"a leaf tree at the right edge is not entered",
       grow(concatenate(Own(Less(Int(0), Int(0))), chain("bc")), "d"), "(0<0&((b&c)0&d)1)2"},
      {"a tree of the other connective is a leaf too and keeps its height",
       concatenate(chain("a"), SpineTest<Other>::Chain("bc")), "((b|c)1&a)1"},
      {"a high left operand, not looked at first", grow(join(chain(kHigh), atom('m')), "n"), "(" + high + "&(m&n)1)2"},
      {"a level an insertion", grow(join(chain(kHigh), atom('m')), "nop"), "(((" + high + "&m)5&n)6&(o&p)1)2"},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    EXPECT_EQ(this->Mirror(row.m_shape), Shape(row.m_cond));
  }
}

TYPED_TEST(SpineTest, ConcatenateCopyResetsTheHeightOfItsSource) {
  using Connective = TypeParam;
  // clang-format off
  struct { const char* m_name; RqExprCond* m_pFirst; const char *m_result, *m_source, *m_grown; } const rows[] = {
      {"nothing first: a copy with its height", nullptr, "(b&c)1", "(b&c)1", "(b&(c&d)1)2"},
      {"an atom first: the source loses its height, the copy is entered", Less(Int(0), Int(0)), "(0<0&(b&c)1)1",
       "(b&c)0", "((0<0&b)1&(c&d)1)2"},
      {"a tree first: the copy is its leaf", this->Chain("ax").Release(), "(a&((b&c)0&x)1)2", "(b&c)1",
       "((a&(b&c)0)1&(d&x)1)2"},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const Own source = this->Chain("bc");
    Own result(Connective::ConcatenateCopy(row.m_pFirst, *source));
    EXPECT_EQ(this->Mirror(row.m_result), Shape(result));
    EXPECT_EQ(this->Mirror(row.m_source), Shape(source));
    EXPECT_FALSE(FoundNodes(result.Get(), [&](const RqNode& node) { return &node == source.Get(); }));
    result = Connective::Concatenate(result.Release(), Atom('d'));
    EXPECT_EQ(this->Mirror(row.m_grown), Shape(result));
  }
}

TYPED_TEST(SpineTest, ThousandsOfConditionsStayLogarithmic) {
  constexpr unsigned kSeed = 20;
  constexpr int kCount = 100'000;
  std::vector<int> numbers(kCount);
  std::iota(numbers.begin(), numbers.end(), 0);
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(kSeed));

  std::set<const RqExprCond*> given;
  Own cond;
  for (const int number : numbers) {
    RqExprCond* const pAtom = IsNull(Int(number));
    given.insert(pAtom);
    cond = TypeParam::Concatenate(cond.Release(), pAtom);
  }
  std::vector<const RqExprCond*> leaves;
  EXPECT_LE(this->CheckSpine(cond.Get(), leaves), 1.45 * std::log2(kCount));
  EXPECT_EQ(given.size(), leaves.size());
  EXPECT_EQ(given, std::set<const RqExprCond*>(leaves.begin(), leaves.end()));
}

/// An atom that counts how often it is asked. Its truth is not known.
class CountingAtom final : public RqExprCondIn {
 public:
  explicit CountingAtom(int& count) : RqExprCondIn(Col(L"a"), Row({}), false), m_count(count) {}
  bool IsAlwaysTrue() const override { return ++m_count, false; }
  bool IsAlwaysFalse() const override { return ++m_count, false; }

 private:
  int& m_count;
};

// A node that asks an operand twice would make this exponential.
TEST(Folding, AsksEachNodeOnce) {
  constexpr int kDepth = 16;
  int count = 0;
  Own cond(new CountingAtom(count));
  for (int i = 0; i < kDepth; ++i) {
    RqExprCond* const pAtom = new CountingAtom(count);
    cond = Not(i % 2 ? Both<RqExprCondAnd>(cond.Release(), pAtom) : Both<RqExprCondOr>(cond.Release(), pAtom));
  }
  EXPECT_FALSE(cond->IsAlwaysFalse());
  EXPECT_FALSE(cond->IsAlwaysTrue());
  EXPECT_GT(count, 1);
  EXPECT_LE(count, 2 * (kDepth + 1));
}

// Folding

enum Fold { kTrue, kFalse, kOpen };

Fold FoldOf(const RqExprCond& cond) {
  const bool bTrue = cond.IsAlwaysTrue();
  const bool bFalse = cond.IsAlwaysFalse();
  EXPECT_FALSE(bTrue && bFalse);
  return bTrue ? kTrue : bFalse ? kFalse : kOpen;
}

TEST(Folding, AloneAndUnderWrappers) {
  // clang-format off
#define FOLD(condition, fold) {#condition, condition, fold}
  struct { const char* m_name; RqExprCond* m_pCond; Fold m_fold; } const rows[] = {
      // Equality
      FOLD(Eq(Col(L"a"), Col(L"a")), kTrue), FOLD(Eq(Col(L"a"), Col(L"b")), kOpen), FOLD(Eq(Int(1), Int(1)), kTrue),
      FOLD(Eq(Int(1), Int(2)), kFalse), FOLD(Eq(Int(1), Flt(1.0)), kOpen), FOLD(Eq(Str(L"a "), Str(L"a")), kTrue),
      FOLD(Eq(Null(), Null()), kTrue), FOLD(Eq(Null(), Int(1)), kOpen), FOLD(Eq(Var(L"v"), Var(L"v")), kTrue),
      FOLD(Eq(Var(L"v"), Var(L"w")), kOpen), FOLD(Eq(Param(1), Param(2)), kFalse),
      FOLD(Eq(Row({Int(1)}), Row({Int(2)})), kFalse), FOLD(Eq(Row({Col(L"a")}), Row({Int(2)})), kOpen),
      FOLD(new RqExprCondNotEqual(Int(1), Int(2)), kOpen), FOLD(Less(Int(1), Int(2)), kOpen),
      // And, Or
      FOLD(Both<RqExprCondAnd>(True(), True()), kTrue), FOLD(Both<RqExprCondAnd>(True(), Unknown()), kOpen),
      FOLD(Both<RqExprCondAnd>(False(), Unknown()), kFalse), FOLD(Both<RqExprCondAnd>(Unknown(), False()), kFalse),
      FOLD(Both<RqExprCondOr>(False(), False()), kFalse), FOLD(Both<RqExprCondOr>(False(), Unknown()), kOpen),
      FOLD(Both<RqExprCondOr>(True(), Unknown()), kTrue), FOLD(Both<RqExprCondOr>(Unknown(), True()), kTrue),
      // The sides of a pair with a Not: IsNull sorts behind it, Less before it.
      FOLD(Both<RqExprCondAnd>(Not(Unknown()), Unknown()), kFalse),
      FOLD(Both<RqExprCondAnd>(Less(Col(L"a"), Int(1)), Not(Less(Col(L"a"), Int(1)))), kFalse),
      FOLD(Both<RqExprCondAnd>(Not(Not(Unknown())), Not(Unknown())), kFalse),
      FOLD(Both<RqExprCondOr>(Not(Unknown()), Unknown()), kTrue),
      FOLD(Both<RqExprCondOr>(Less(Col(L"a"), Int(1)), Not(Less(Col(L"a"), Int(1)))), kTrue),
      FOLD(Both<RqExprCondOr>(Not(Atom('a')), Atom('b')), kOpen),
      // IsNull
      FOLD(IsNull(Null()), kTrue), FOLD(IsNull(Int(1)), kFalse), FOLD(IsNull(Col(L"a")), kOpen),
      FOLD(NotNull(Null()), kFalse), FOLD(NotNull(Int(1)), kTrue), FOLD(NotNull(Col(L"a")), kOpen),
      // In
      FOLD(In(Str(L"a"), List({Str(L"a"), Null()})), kTrue), FOLD(In(Str(L"a"), List({Str(L"a"), Str(L"b")})), kOpen),
      FOLD(In(Str(L"a"), List({Null()})), kOpen), FOLD(In(Str(L"a"), List({Str(L"b"), Str(L"c")})), kFalse),
      FOLD(In(Str(L"a"), List({Str(L"b"), Null()})), kOpen), FOLD(In(Str(L"a"), List({Str(L"b"), Int(1)})), kOpen),
      FOLD(In(Str(L"a"), List({Str(L"b"), Col(L"c")})), kOpen), FOLD(In(Str(L"a"), List({Str(L"a"), nullptr})), kOpen),
      FOLD(In(Str(L"a"), List({})), kFalse), FOLD(In(Col(L"a"), List({})), kOpen),
      FOLD(In(Col(L"a"), List({Col(L"a")})), kOpen), FOLD(In(Null(), List({})), kOpen),
      FOLD(In(Str(L"a"), List({Str(L"a"), Param(1)})), kOpen), FOLD(In(Param(1), List({Param(1)})), kOpen),
      FOLD(In(Param(1), List({})), kOpen), FOLD(In(Row({Int(1), Param(1)}), List({})), kOpen),
      FOLD(In(Var(L"v"), List({Var(L"v")})), kTrue), FOLD(In(Var(L"v"), List({Var(L"w")})), kOpen),
      FOLD(In(Int(1), Row({Int(1)})), kOpen), FOLD(In(Int(1), List({Int(1)}), true), kOpen),
      FOLD(In(Int(1), List({}), true), kOpen), FOLD(In(Row({Int(1)}), List({Row({Int(2)})})), kFalse),
      FOLD(In(Row({Int(1)}), List({Row({Col(L"a")})})), kOpen),
      FOLD(In(Row({Int(1)}), List({Row({Param(1)})})), kOpen),
      // No folding of its own
      FOLD(new RqExprCondBetween(Int(1), Int(1), Int(1), false), kOpen),
  };
#undef FOLD
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const Own cond(row.m_pCond);
    const auto copy = [&cond] { return static_cast<RqExprCond*>(cond->DeepExprCopy(true)); };
    EXPECT_EQ(row.m_fold, FoldOf(*cond));
    EXPECT_EQ(row.m_fold == kTrue ? kFalse : row.m_fold == kFalse ? kTrue : kOpen, FoldOf(RqExprCondNot(copy())));
    EXPECT_EQ(row.m_fold, FoldOf(RqExprCondAtomicWrapper(copy())));
    EXPECT_EQ(row.m_fold, FoldOf(RqExprCondOuterJoinFilter(copy(), SqlTableRef::kLeftOuterJoin)));
  }
}

// Order and equivalence

RqExprCond* Predicate(const wchar_t* functionDef, bool bNegated = false) {
  RqExprVector operands{Col(L"a")};
  auto* const pPredicate = new RqExprEvaluatePredicate(operands, bNegated);
  EXPECT_TRUE(operands.empty());
  pPredicate->SetFunctionDef(functionDef);
  return pPredicate;
}

RqExprCond* Ancestor(bool bLeaf, std::uint32_t lts, bool bNegated) {
  auto* const pCond =
      bLeaf ? new RqExprIsAncestor(Col(L"a"), bNegated) : new RqExprIsAncestor(Col(L"a"), Int(1), Int(-1), bNegated);
  pCond->SetLTSVoidID(VoidID(1, lts));
  return pCond;
}

RqExprCond* Sibling(bool bIncludeRoot, std::uint32_t lts) {
  auto* const pCond = new RqExprIsSibling(Col(L"a"), Col(L"b"), Col(L"k"), bIncludeRoot);
  pCond->SetLTSVoidID(VoidID(1, lts));
  return pCond;
}

RqExprCond* Between(bool bNegated) { return new RqExprCondBetween(Int(1), Int(1), nullptr, bNegated); }
RqExprCond* Like(bool bNegated) { return new RqExprCondLike(Col(L"a"), Str(L"%"), bNegated, nullptr); }
constexpr auto kInner = SqlTableRef::kInnerJoin;
constexpr auto kLeft = SqlTableRef::kLeftOuterJoin;
RqExprCond* Filter(RqExprCond* pInner, SqlTableRef::JoinType joinType) {
  return new RqExprCondOuterJoinFilter(pInner, joinType);
}

RqExprCond* Wrap(RqExprCond* pInner) { return new RqExprCondAtomicWrapper(pInner); }

TEST(Order, ShallowOrderAndEquivalence) {
  // Relation "<": left is less. "><": each is less than the other. "=": equivalent. "~": neither is less.
  // clang-format off
  struct { const char* m_name; RqExprCond* m_pLeft; RqExprCond* m_pRight; const char* m_relation; } const rows[] = {
      {"equality by flag", Eq(Col(L"a"), Int(1)), new RqExprCondEquality(Col(L"a"), Int(1), true), "<"},
      {"between by flag", Between(false), Between(true), "<"},
      {"like by flag", Like(false), Like(true), "<"},
      {"in by flag", In(Int(1), List({})), In(Int(1), List({}), true), "<"},
      {"is leaf by flag", new RqExprIsLeaf(Col(L"a"), false), new RqExprIsLeaf(Col(L"a"), true), "<"},
      {"ancestor by leaf form first", Ancestor(false, 2, true), Ancestor(true, 1, false), "<"},
      {"then by table source", Ancestor(true, 1, true), Ancestor(true, 2, false), "<"},
      {"then by negation", Ancestor(true, 1, false), Ancestor(true, 1, true), "<"},
      {"ancestor before root", Ancestor(true, 1, false), new RqExprIsRoot(Col(L"a")), "<"},
      {"root before sibling", new RqExprIsRoot(Col(L"a")), Sibling(false, 1), "<"},
      {"sibling by root first", Sibling(false, 2), Sibling(true, 1), "<"},
      {"then as ancestor", Sibling(true, 1), Sibling(true, 2), "<"},
      {"wrapper by inner flag", Wrap(IsNull(Col(L"a"))), Wrap(NotNull(Col(L"a"))), "<"},
      {"wrapper, inner operands alone", Wrap(Atom('a')), Wrap(Atom('b')), "~"},
      {"filter by join type", Filter(Atom('a'), kInner), Filter(Atom('a'), kLeft), "<"},
      {"filter of a higher type is not greater", Filter(NotNull(Col(L"a")), kInner), Filter(Atom('a'), kLeft), "><"},
      {"predicate without regard to case", Predicate(L"Score(%1)"), Predicate(L"sCORE(%1)"), "="},
      {"predicate, prefix first", Predicate(L"SCORE"), Predicate(L"score("), "<"},
      {"predicate, the underscore is below the lower letter", Predicate(L"a_"), Predicate(L"AB"), "<"},
      {"predicate, negation counts for nothing", Predicate(L"f"), Predicate(L"f", true), "="},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const Own left(row.m_pLeft);
    const Own right(row.m_pRight);
    const std::string relation = row.m_relation;
    const bool bEquivalent = relation == "=";
    EXPECT_EQ(relation == "<" || relation == "><", left->IsShallowLessThan(*right));
    EXPECT_EQ(relation == "><", right->IsShallowLessThan(*left));
    EXPECT_EQ(bEquivalent, left->IsEquivalent(*right, RqEquivalence()));
    EXPECT_EQ(bEquivalent, right->IsEquivalent(*left, RqEquivalence()));
    EXPECT_EQ(bEquivalent,
              !left->IsLessThan(*right, RqShallowLessThan()) && !right->IsLessThan(*left, RqShallowLessThan()));
  }
}

TEST(Heights, AreCopiedAndDoNotTravel) {
  const Own spine(RqExprCondAnd::Concatenate(Atom('a'), Atom('b')));
  EXPECT_EQ("(a&b)1", Shape(Own(static_cast<RqExprCond*>(spine->DeepExprCopy(true)))));
  Own read(Both<RqExprCondAnd>(Atom('a'), Atom('b')));
  read->FromByteVector(Payload(*spine).data());
  EXPECT_EQ("(a&b)0", Shape(read));
}

// Sets and trees of conjuncts

TEST(Conjuncts, ContainedInConjunctTree) {
  const Own tree(Both<RqExprCondAnd>(Both<RqExprCondAnd>(Atom('a'), Both<RqExprCondOr>(Atom('b'), Atom('c'))),
                                     Not(Both<RqExprCondAnd>(Atom('d'), Atom('e')))));
  // clang-format off
  struct { const char* m_name; RqExprCond* m_pCond; bool m_bContained; } const rows[] = {
      {"conjunct", Atom('a'), true},
      {"disjunction as a conjunct", Both<RqExprCondOr>(Atom('c'), Atom('b')), true},
      {"inner conjunction", Both<RqExprCondAnd>(Both<RqExprCondOr>(Atom('b'), Atom('c')), Atom('a')), true},
      {"the tree itself", static_cast<RqExprCond*>(tree->DeepExprCopy(true)), true},
      {"disjunct", Atom('b'), false},
      {"below a not", Atom('d'), false},
      {"stranger", Atom('x'), false},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    EXPECT_EQ(row.m_bContained, Own(row.m_pCond)->IsContainedInConjunctTree(*tree));
  }
}

TEST(Conjuncts, SetBecomesCondition) {
  OwnedEquivRqExprCondSet set;
  for (const char letter : {'c', 'a', 'd', 'b', 'a'}) {
    Own atom(Atom(letter));
    if (set.insert(atom.Get()).second) atom.Release();
  }
  Own cond(Atom('x'));
  set.moveConjunctSetToCondition(cond);
  EXPECT_EQ("((a&b)1&(c&d)1)2", Shape(cond));
  EXPECT_TRUE(set.empty());
  set.moveConjunctSetToCondition(cond);
  EXPECT_EQ("-", Shape(cond));
}

// Session variables in comparisons

TEST(EqualityOperator, MultiValuedInListExpression) {
  MemoryGateway gateway;
  gateway.SetSessionVariable(L"block", L"many", KXStringVector{L"x", L"y"}).SetSessionVariable(L"block", L"one", L"x");
  constexpr int kNone = -1;
  // clang-format off
  struct { const char* m_name; RqExprCondEqualityOperator* m_pCond; bool m_bMany; int m_varOperand; } const rows[] = {
      {"left", new RqExprCondNotEqual(Var(L"many"), Col(L"a")), true, 0},
      {"right", new RqExprCondNotEqual(Col(L"a"), Var(L"many")), true, 1},
      {"one element", new RqExprCondNotEqual(Var(L"many", 0), Col(L"a")), false, 0},
      {"one value", new RqExprCondNotEqual(Col(L"a"), Var(L"one")), false, 1},
      {"left decides, against", new RqExprCondNotEqual(Var(L"one"), Var(L"many")), false, 0},
      {"no variable", new RqExprCondNotEqual(Col(L"a"), Int(1)), false, kNone},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const Own cond(row.m_pCond);
    RqExpr* pOther = nullptr;
    RqExprSessionVar* pVar = nullptr;
    EXPECT_EQ(row.m_bMany, row.m_pCond->IsMultiValuedInListExpression(&gateway, pOther, pVar));
    EXPECT_EQ(row.m_varOperand == kNone ? nullptr : cond->GetIthOperand(row.m_varOperand), pVar);
    EXPECT_EQ(row.m_varOperand == kNone ? nullptr : cond->GetIthOperand(1 - row.m_varOperand), pOther);
  }
}

// Expansion of multi-column lists

RqExpr* XY() { return Row({Col(L"x"), Col(L"y")}); }

TEST(MultiColumnIn, ExpandShapes) {
  // clang-format off
  struct { const char* m_name; RqExpr* m_pColumns; RqExpr* m_pRows; bool m_bNot; const char* m_text; } const rows[] = {
      {"one row", XY(), Row({Row({Int(1), Int(2)})}), false, "(x=1&y=2)1"},
      {"two rows", XY(), List({Row({Int(1), Int(2)}), List({Int(3), Int(4)})}), false, "((x=1&y=2)1|(x=3&y=4)1)1"},
      {"one row, negated", XY(), Row({Row({Int(1), Int(2)})}), true, "(x<>1|y<>2)1"},
      {"two rows, negated", XY(), Row({Row({Int(1), Int(2)}), Row({Int(3), Int(4)})}), true,
       "((x<>1|y<>2)1&(x<>3|y<>4)1)1"},
      {"one column", Row({Col(L"x")}), Row({Row({Int(1)}), Row({Int(2)})}), false, "(x=1|x=2)1"},
      {"no rows", XY(), Row({}), false, "-"},
      {"no columns", Row({}), Row({Row({})}), true, "-"},
      {"search is no list", Col(L"x"), Row({Row({Int(1)})}), false, "-"},
      {"values are no list", XY(), Int(1), false, "-"},
      {"a row is no list", XY(), Row({Row({Int(1), Int(2)}), Int(3)}), false, "-"},
      {"a row is null", XY(), Row({Row({Int(1), Int(2)}), nullptr}), true, "-"},
      {"a row is short", XY(), Row({Row({Int(1)})}), false, "-"},
      {"a value is null", XY(), Row({Row({Int(1), nullptr})}), false, "-"},
  };
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const RqExprCondMultiColumnIn in(row.m_pColumns, row.m_pRows, row.m_bNot);
    const Own expanded(in.Expand());
    EXPECT_EQ(row.m_text, Shape(expanded));
    if (expanded) {
      EXPECT_EQ("", FirstDifference(in, expanded.Get(), true));
    }
  }
}

// Hierarchies and wrappers

TEST(IsAncestor, OperandsAreToldByTheirKind) {
  RqExprIsAncestor attributes(Attr(1), Int(5), Int(-2), false);
  EXPECT_EQ(attributes.GetIthOperand(0), attributes.GetAttributeArgument());
  EXPECT_EQ(attributes.GetIthOperand(1), attributes.GetLiteralColumn());
  EXPECT_EQ(-2, attributes.GetDistanceValue());
  EXPECT_FALSE(attributes.IsDescendant());
  RqExprIsAncestor columns(Int(5), Col(L"a"), Int(2), false);
  EXPECT_EQ(columns.GetIthOperand(1), columns.GetTargetColumn());
  EXPECT_EQ(columns.GetIthOperand(0), columns.GetLiteralColumn());
  EXPECT_TRUE(columns.IsDescendant());
  EXPECT_TRUE(RqExprIsAncestor(Int(5), Attr(1), Int(2), false).IsDescendant());
  EXPECT_FALSE(RqExprIsAncestor(Col(L"a"), false).IsDescendant());
}

TEST(GroupByContent, LendsItsExpressionsInTheOrderGiven) {
  RqExprVector exprs{Col(L"b"), Col(L"a"), Col(L"b")};
  const RqExprVector given = exprs;
  RqExprCondGroupByContent cond(exprs);
  RqExprVector lent(5, nullptr);
  cond.GetGroupByExprs(lent);
  EXPECT_EQ(given, lent);
}

TEST(IsLeaf, ProcessedExpressionComesAndGoes) {
  // The components are parts of the operand that makes way for them.
  auto* const pLevel = Row({Attr(1), Attr(2)});
  auto* const pLeaf = new RqExprIsLeaf(pLevel, true);
  Own root(Not(pLeaf));
  EXPECT_TRUE(pLeaf->IsTargetOnlyExpr());
  pLeaf->SetQueryLevelExpr({pLevel->GetIthOperand(0), pLevel->GetIthOperand(1)});
  EXPECT_EQ("!IsLeaf(@1,@2)", Shape(root));

  const std::string processed = "(@3=1&(@5=1&@5=2)0)0";
  const auto setProcessed = [&] {
    Own expr(Both<RqExprCondAnd>(Both<RqExprCondAnd>(Eq(Attr(5), Int(2)), Eq(Int(1), Attr(5))), Eq(Int(1), Attr(3))));
    pLeaf->SetProcessedExpr(expr);
    EXPECT_EQ(nullptr, expr.Get());
    EXPECT_EQ(processed, Shape(pLeaf->GetProcessedExpr()));
  };
  setProcessed();
  EXPECT_EQ("!IsLeaf(@1,@2,@3,@5)", Shape(root));

  const OwnedRqExprPtr copies[] = {OwnedRqExprPtr(pLeaf->DeepExprCopy(true)), OwnedRqExprPtr(pLeaf->ShallowCopy())};
  for (const OwnedRqExprPtr& copy : copies) {
    const auto& leaf = static_cast<const RqExprIsLeaf&>(*copy);
    EXPECT_NE(pLeaf->GetProcessedExpr(), leaf.GetProcessedExpr());
    EXPECT_EQ(processed, Shape(leaf.GetProcessedExpr()));
  }

  RqExprIsLeaf read;
  read.FromByteVector(Payload(*pLeaf).data());
  EXPECT_EQ(nullptr, read.GetProcessedExpr());

  pLeaf->RemoveProcessedExpr();
  EXPECT_EQ("!IsLeaf(@1,@2)", Shape(root));
  EXPECT_EQ(nullptr, pLeaf->GetProcessedExpr());
  setProcessed();
  const RqExprCond* const pProcessed = pLeaf->GetProcessedExpr();
  EXPECT_EQ(pProcessed, pLeaf->ReplaceWithProcessedExpr());
  EXPECT_EQ("!" + processed, Shape(root));
}

TEST(Replacing, WrapperGivesWayToItsCondition) {
  auto* const pWrapper = new RqExprCondAtomicWrapper(Atom('a'));
  const Own root(Not(pWrapper));
  const RqExprCond* const pInner = pWrapper->GetInnerCond();
  EXPECT_EQ(pInner, pWrapper->ReplaceWithInnerCond());
  EXPECT_EQ("!a", Shape(root));
  EXPECT_EQ(root.Get(), pInner->GetParent());

  // A root leaves its condition to the caller.
  const Own inner((new RqExprCondAtomicWrapper(Atom('b')))->ReplaceWithInnerCond());
  EXPECT_EQ("b", Shape(inner));
  EXPECT_EQ(nullptr, inner->GetParent());
  auto* const pLeaf = new RqExprIsLeaf(Attr(1), false);
  Own processed(Atom('c'));
  pLeaf->SetProcessedExpr(processed);
  EXPECT_EQ("c", Shape(Own(pLeaf->ReplaceWithProcessedExpr())));
}

// Mistakes of callers

// clang-format off
TEST(ConditionDeathTest, Assertions) {
  RqExprCond* const pNoCond = nullptr;
  RqExpr* const pNone = nullptr;
  struct { const char* m_text; std::function<void()> m_mistake; } const rows[] = {
      {"pLeftOperand", [=] { new RqExprCondEquality(pNone, Int(1), false); }},
      {"pRightOperand", [=] { new RqExprCondEquality(Int(1), pNone, false); }},
      {"pLeftOperand", [=] { new RqExprCondLess(pNone, Int(1)); }},
      {"pRightOperand", [=] { new RqExprCondNotEqual(Int(1), pNone); }},
      {"pLeftOperand", [=] { new RqExprCondAnd(pNoCond, Atom('a')); }},
      {"pRightOperand", [=] { new RqExprCondOr(Atom('a'), pNoCond); }},
      {"pOperand", [=] { new RqExprCondNot(pNoCond); }},
      {"pExpr", [=] { new RqExprCondIsNull(pNone, false); }},
      {"pExpr", [=] { new RqExprCondBetween(pNone, Int(1), Int(1), false); }},
      {"pExpr", [=] { new RqExprCondLike(pNone, Int(1), false, nullptr); }},
      {"pSearchExpr", [=] { new RqExprCondIn(pNone, Int(1), false); }},
      {"pInClause", [=] { new RqExprCondMultiColumnIn(Int(1), pNone, false); }},
      {"pFirstArg", [=] { new RqExprIsRoot(pNone); }},
      {"pSecArg", [=] { new RqExprIsAncestor(Int(1), pNone, Int(1), false); }},
      {"pDistance", [=] { new RqExprIsAncestor(Int(1), Int(1), pNone, false); }},
      {"pParentKey", [=] { new RqExprIsSibling(Int(1), Int(1), pNone, false); }},
      {"pExpr", [=] { new RqExprIsLeaf(pNone, false); }},
      {"pExpr", [=] { new RqExprCondAtomicWrapper(pNone); }},
      {"pExpr->IsCond()", [=] { new RqExprCondAtomicWrapper(Int(1)); }},
      {"pExpr", [=] { new RqExprCondOuterJoinFilter(pNone, kInner); }},
      {"pExpr->IsCond()", [=] { new RqExprCondOuterJoinFilter(Int(1), kInner); }},
      {"GetIthOperand(kOperand) && GetIthOperand(kOperand)->IsCond()",
       [] { static_cast<RqExprCondAtomicWrapper*>(Wrap(Atom('a'))->ShallowCopy())->GetInnerCond(); }},
      {"GetIthOperand(kOperand) && GetIthOperand(kOperand)->IsCond()",
       [] { static_cast<RqExprCondOuterJoinFilter*>(Filter(Atom('a'), kInner)->ShallowCopy())->GetInnerCond(); }},
      {"pSecArg->IsAttribute()", [] { RqExprIsAncestor(Int(1), false).GetAttributeArgument(); }},
      {"pSecArg->IsTargetColumn()", [] { RqExprIsAncestor(Int(1), false).GetTargetColumn(); }},
      {"pSecArg->IsConstant()", [] { RqExprIsAncestor(Col(L"a"), Col(L"b"), Int(1), false).GetLiteralColumn(); }},
      {"pSecArg", [] { static_cast<RqExprIsAncestor*>(Ancestor(true, 1, true)->ShallowCopy())->IsDescendant(); }},
      {"parentKey", [] { static_cast<RqExprIsSibling*>(Sibling(true, 1)->ShallowCopy())->GetParentKeyColumn(); }},
      {"GetNumOperands() == kNumOperands", [] { RqExprIsLeaf().SetQueryLevelExpr({Int(1)}); }},
      {"keyComponents.size() >0", [] { RqExprIsLeaf(Int(1), false).SetQueryLevelExpr({}); }},
      {"processedExpr.Get()", [] { Own none; RqExprIsLeaf(Int(1), false).SetProcessedExpr(none); }},
      {"maxExpr.Get()", [] { RqExprIsLeaf(Int(1), false).ReplaceWithProcessedExpr(); }},
  };
  // clang-format on
  for (const auto& row : rows) {
    EXPECT_DEATH(row.m_mistake(), HasSubstr(std::string("assertion failed: ") + row.m_text + "\n"));
  }
}

}  // namespace
