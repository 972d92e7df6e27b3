#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <list>
#include <string>

#include "CondLanguage.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "TruthTable.h"

namespace {

struct Rewritten {
  OwnedRqExprCondPtr cond;
  std::string text, atoms;
};

template <class Rewriter>
Rewritten Rewrite(Rewriter& rewriter, RqExprCond& cond) {
  cond.TourExpr(rewriter);
  RqExprVector atoms;
  rewriter.GetLiteralExprs(atoms);
  Rewritten result;
  if constexpr (std::is_same_v<Rewriter, InwardNegationForm>) {
    result.cond = rewriter.ReleaseInwardNegationForm();
    EXPECT_EQ(rewriter.GetInwardNegationExpr(), nullptr);
  } else {
    result.cond = rewriter.ReleaseNegatedExpr();
    EXPECT_EQ(rewriter.GetNegatedExpr(), nullptr);
  }
  result.text = CondText(result.cond.Get());
  result.atoms = CondTexts(atoms);
  return result;
}

OwnedRqExprCondPtr NotOf(const RqExprCond& cond) {
  return OwnedRqExprCondPtr(new RqExprCondNot(static_cast<RqExprCond*>(cond.DeepExprCopy(false))));
}

/// The numbers from 1 to count, each behind the prefix, with the separator between.
std::string Values(int count, const std::string& prefix, const std::string& separator) {
  std::string text;
  for (int i = 1; i <= count; ++i) text += (i == 1 ? "" : separator) + prefix + std::to_string(i);
  return text;
}
std::string In(int count) { return "In(a," + Values(count, "", ",") + ")"; }
std::string NotIn(int count) { return "Not" + In(count); }

struct Row {
  std::string input, inward, inwardAtoms, negated, negatedAtoms;
};

const Row kRows[] = {
    {"a=1", "a=1", "a=1", "!a=1", "!a=1"},
    {"a==1", "a==1", "a==1", "!a==1", "!a==1"},
    {"a<>1", "!a=1", "!a=1", "a=1", "a=1"},
    {"a<1", "a<1", "a<1", "!a<1", "!a<1"},
    {"a<=1", "!1<a", "!1<a", "1<a", "1<a"},
    {"a>1", "1<a", "1<a", "!1<a", "!1<a"},
    {"a>=1", "!a<1", "!a<1", "a<1", "a<1"},
    {"IsNull(a)", "IsNull(a)", "IsNull(a)", "NotNull(a)", "NotNull(a)"},
    {"NotNull(a)", "NotNull(a)", "NotNull(a)", "IsNull(a)", "IsNull(a)"},
    {"Like(a,1)", "Like(a,1)", "Like(a,1)", "NotLike(a,1)", "NotLike(a,1)"},
    {"Pred(a,b)", "Pred(a,b)", "Pred(a,b)", "NotPred(a,b)", "NotPred(a,b)"},
    {"NotPred(a,b)", "NotPred(a,b)", "NotPred(a,b)", "Pred(a,b)", "Pred(a,b)"},
    {"IsAncestor(a,b,1)", "IsAncestor(a,b,1)", "IsAncestor(a,b,1)", "!IsAncestor(a,b,1)", "!IsAncestor(a,b,1)"},
    {"IsLeaf(a)", "IsLeaf(a)", "IsLeaf(a)", "!IsLeaf(a)", "!IsLeaf(a)"},
    {"IsRoot(a)", "IsRoot(a)", "IsRoot(a)", "!IsRoot(a)", "!IsRoot(a)"},
    {"IsSibling(a,b,c)", "IsSibling(a,b,c)", "IsSibling(a,b,c)", "!IsSibling(a,b,c)", "!IsSibling(a,b,c)"},
    {"GroupBy(a,b)", "GroupBy(a,b)", "GroupBy(a,b)", "!GroupBy(a,b)", "!GroupBy(a,b)"},
    {"Wrap(b=1 & a>1)", "Wrap(b=1 & a>1)", "Wrap(b=1 & a>1)", "!Wrap(b=1 & a>1)", "!Wrap(b=1 & a>1)"},
    // Bounds. The low side is the first atom, wherever it ends up.
    {"Between(a,1,3)", "!a<1 & !3<a", "!a<1; !3<a", "a<1 | 3<a", "a<1; 3<a"},
    {"Between(2,a,b)", "!b<2 & !2<a", "!2<a; !b<2", "b<2 | 2<a", "2<a; b<2"},
    {"NotBetween(a,1,3)", "a<1 | 3<a", "a<1; 3<a", "!a<1 & !3<a", "!a<1; !3<a"},
    // Lists
    {"In(a,2)", "a=2", "a=2", "!a=2", "!a=2"},
    {"In(a,2,1)", "a=1 | a=2", "a=2; a=1", "!a=1 & !a=2", "!a=2; !a=1"},
    {"NotIn(a,2,1)", "!a=1 & !a=2", "!a=2; !a=1", "a=1 | a=2", "a=2; a=1"},
    {"In(a,1,null)", "a=1 | a=null", "a=1; a=null", "!a=1 & !a=null", "!a=1; !a=null"},
    {"In(a)", "1=2", "1=2", "1=1", "1=1"},
    {"NotIn(a)", "1=1", "1=1", "1=2", "1=2"},
    {In(513), In(513), In(513), NotIn(513), NotIn(513)},
    {"MultiIn(a,b;1,2;3,4)", "MultiIn(a,b;1,2;3,4)", "MultiIn(a,b;1,2;3,4)", "", ""},  // nobody negates one
    // Connectives. The operands may change places, the atoms keep the order of the visits.
    {"a<>1 & b<1", "b<1 & !a=1", "!a=1; b<1", "a=1 | !b<1", "a=1; !b<1"},
    {"a=1 | a=1", "a=1 | a=1", "a=1; a=1", "!a=1 & !a=1", "!a=1; !a=1"},
    {"a=1 & (b=2 | c>3)", "a=1 & (b=2 | 3<c)", "a=1; b=2; 3<c", "!b=2 & !3<c | !a=1", "!a=1; !b=2; !3<c"},
    // Negations
    {"!a=1", "!a=1", "!a=1", "a=1", "a=1"},
    {"!a<=1", "1<a", "1<a", "!1<a", "!1<a"},
    {"!!a=1", "a=1", "a=1", "!a=1", "!a=1"},
    {"!IsNull(a)", "!IsNull(a)", "!IsNull(a)", "IsNull(a)", "IsNull(a)"},
    {"!Pred(a)", "!Pred(a)", "!Pred(a)", "Pred(a)", "Pred(a)"},
    {"!Like(a,1)", "NotLike(a,1)", "NotLike(a,1)", "Like(a,1)", "Like(a,1)"},
    {"!Wrap(a=1 | b=1)", "!Wrap(a=1 | b=1)", "!Wrap(a=1 | b=1)", "Wrap(a=1 | b=1)", "Wrap(a=1 | b=1)"},
    {"!Between(a,1,3)", "a<1 | 3<a", "a<1; 3<a", "!a<1 & !3<a", "!a<1; !3<a"},
    {"!In(a,1,2)", "!a=1 & !a=2", "!a=1; !a=2", "a=1 | a=2", "a=1; a=2"},
    {"!(a=1 & !(b=1 | c=1))", "b=1 | c=1 | !a=1", "!a=1; b=1; c=1", "a=1 & !b=1 & !c=1", "a=1; !b=1; !c=1"},
    // The filter of an outer join is lost, unless it is negated right away.
    {"Filter(a>1)", "1<a", "1<a", "!1<a", "!1<a"},
    {"!Filter(a>1)", "!Filter(a>1)", "!Filter(a>1)", "Filter(a>1)", "Filter(a>1)"},
};

TEST(InwardNegationFormTest, EachConditionBecomesTheFormOfTheTableAndKeepsItsMeaning) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.input);
    const OwnedRqExprCondPtr cond = ParseCond(row.input);
    ASSERT_EQ(CondText(cond.Get()), row.input);
    InwardNegationForm inwardNegationForm;
    const Rewritten inward = Rewrite(inwardNegationForm, *cond);
    EXPECT_EQ(inward.text, row.inward);
    EXPECT_EQ(inward.atoms, row.inwardAtoms);
    EXPECT_EQ(CondText(cond.Get()), row.input) << "the input changed";
    EXPECT_EQ(FirstDifference(*cond, inward.cond.Get(), true), "");
    if (row.negated.empty()) continue;
    NegateCondExpr negateCondExpr;
    const Rewritten negated = Rewrite(negateCondExpr, *cond);
    EXPECT_EQ(negated.text, row.negated);
    EXPECT_EQ(negated.atoms, row.negatedAtoms);
    EXPECT_EQ(FirstDifference(*NotOf(*cond), negated.cond.Get(), true), "");
  }
}

TEST(InwardNegationFormTest, TheResultSharesNothingAndCopiesKeepTheirIdentity) {
  const OwnedRqExprCondPtr cond = ParseCond("a<1 & (!b=2 | In(c,1,2)) & Between(d,1,2)");
  InwardNegationForm rewriter;
  const Rewritten inward = Rewrite(rewriter, *cond);
  std::list<RqNode*> before;
  cond->GetObjects(before);
  std::list<RqNode*> after;
  inward.cond->GetObjects(after);
  for (const RqNode* const pNode : after) EXPECT_EQ(std::count(before.begin(), before.end(), pNode), 0);

  const RqExpr& lessBefore = *static_cast<RqExprCondAnd&>(*cond).GetLeftCond();
  const auto isCopy = [&](const RqNode* pNode) { return pNode->IsCopyOf(lessBefore); };
  EXPECT_EQ(std::count_if(after.begin(), after.end(), isCopy), 1);
}

TEST(InwardNegationFormTest, ListsStayWholeUntilANegatedConnectiveForgetsToSayIt) {
  struct {
    std::string input, inward, negated;
  } const rows[] = {
      {"In(a,1,2)", "In(a,1,2)", "NotIn(a,1,2)"},
      {"!In(a,1,2)", "NotIn(a,1,2)", "In(a,1,2)"},
      {"b=1 & In(a,1,2)", "b=1 & In(a,1,2)", "!a=1 & !a=2 | !b=1"},
      {"!(b=1 & In(a,1,2))", "!a=1 & !a=2 | !b=1", "b=1 & In(a,1,2)"},
      {"b=1 & !(c=1 | !In(a,1,2))", "b=1 & (a=1 | a=2) & !c=1", "c=1 | !a=1 & !a=2 | !b=1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input);
    const OwnedRqExprCondPtr cond = ParseCond(row.input);
    InwardNegationForm inwardNegationForm(false);
    const Rewritten inward = Rewrite(inwardNegationForm, *cond);
    EXPECT_EQ(inward.text, row.inward);
    EXPECT_EQ(FirstDifference(*cond, inward.cond.Get(), true), "");
    NegateCondExpr negateCondExpr(false);
    const Rewritten negated = Rewrite(negateCondExpr, *cond);
    EXPECT_EQ(negated.text, row.negated);
    EXPECT_EQ(FirstDifference(*NotOf(*cond), negated.cond.Get(), true), "");
  }
}

TEST(InwardNegationFormTest, AListOf512ValuesIsExpandedAndAListOfAnotherKindIsNot) {
  InwardNegationForm inwardNegationForm;
  const OwnedRqExprCondPtr list = ParseCond(In(512));
  const Rewritten expanded = Rewrite(inwardNegationForm, *ParseCond(In(512)));
  EXPECT_EQ(expanded.atoms, Values(512, "a=", "; "));
  TruthTable::Row row;
  EXPECT_EQ(TruthTable::Evaluate(expanded.cond.Get(), row), Truth::kUnknown);
  for (int value = 0; value <= 513; ++value) {
    row[0] = value;
    const Truth truth = TruthTable::Evaluate(list.Get(), row);
    ASSERT_EQ(truth, TruthOf(value >= 1 && value <= 512));
    ASSERT_EQ(TruthTable::Evaluate(expanded.cond.Get(), row), truth) << value;
  }

  const OwnedRqExprCondPtr noList(new RqExprCondIn(new RqExprIntegerLiteral(1), new RqExprIntegerLiteral(2), false));
  NegateCondExpr negateCondExpr;
  const Rewritten negated = Rewrite(negateCondExpr, *noList);
  EXPECT_EQ(negated.text, "NotIn(1,2)");
  EXPECT_EQ(negated.cond->GetIthOperand(RqExprCondIn::kInValues)->GetObjectType(), kRqExprIntegerLiteral);
}

TEST(InwardNegationFormDeathTest, WhatIsNoConditionHasNoNegation) {
  constexpr const char* kLogicError = "SQORAVisitorRqExprCond.*logic error";
  RqExprIntegerLiteral literal(1, false);
  InwardNegationForm inwardNegationForm;
  EXPECT_DEATH(literal.TourExpr(inwardNegationForm), kLogicError);
  NegateCondExpr negateCondExpr;
  EXPECT_DEATH(literal.TourExpr(negateCondExpr), kLogicError);
  const OwnedRqExprCondPtr cond = ParseCond("MultiIn(a,b;1,2)");
  EXPECT_DEATH(cond->TourExpr(negateCondExpr), kLogicError);
}

// ---------------------------------------------------------------------------------------------------------------------
// The estimate of the number of clauses

/// (t & t) | (t & t) | ..., of that many pairs.
std::string Pairs(int count) { return Values(count, "(x=1 & y=", ") | ") + ")"; }

TEST(CheckComplexityScoreTest, CountsSumsAndProductsByTheFormAimedAt) {
  constexpr std::uint32_t kNoLimit = std::numeric_limits<std::uint32_t>::max();
  struct {
    std::string input;
    std::uint32_t limit, conjunctive, disjunctive;
  } const rows[] = {
      {"a=1", kNoLimit, 1, 1},
      {"a=1 | b=1 | c=1", kNoLimit, 1, 3},
      {"(a=1 & b=1) | (c=1 & d=1 & e=1)", kNoLimit, 6, 2},
      {"!(a=1 & b=1 & c=1)", kNoLimit, 1, 3},
      // A list counts in the disjunctive form alone, negated or not.
      {"In(a,1,2,3)", kNoLimit, 1, 3},
      {"NotIn(a,1,2,3)", kNoLimit, 1, 3},
      {"!In(a,1,2,3)", kNoLimit, 3, 1},
      {"In(a)", kNoLimit, 1, 0},
      {"MultiIn(a,b;1,2;3,4)", kNoLimit, 1, 1},
      // A part above the limit ends it, at that part's own score; a product above it does not.
      {"(a=1 & b=1 & c=1) | (d=1 & e=1)", 3, 6, 2},
      {"(a=1 & b=1 & c=1) | (d=1 & e=1)", 2, 3, 2},
      {"(a=1 & b=1) | (d=1 & e=1 & f=1 & g=1)", 3, 4, 2},
      {Pairs(9), kNoLimit, 512, 9},
      // Modulo 2^32
      {Pairs(31), kNoLimit, 1U << 31, 31},
      {Pairs(32), kNoLimit, 0, 32},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input);
    const OwnedRqExprCondPtr cond = ParseCond(row.input);
    std::uint32_t limit = row.limit;
    EXPECT_EQ(InwardNegationForm::CheckComplexityScore(cond.Get(), false, limit), row.conjunctive);
    EXPECT_EQ(InwardNegationForm::CheckComplexityScore(cond.Get(), true, limit), row.disjunctive);
    EXPECT_EQ(limit, row.limit);
  }
  std::uint32_t limit = 0;
  EXPECT_EQ(InwardNegationForm::CheckComplexityScore(nullptr, false, limit), 1U);
}

}  // namespace
