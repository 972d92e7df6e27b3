#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"

#include <gtest/gtest.h>

#include "Conditions/SubquerySamples.h"
#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "TestUtil.h"

namespace {

// A copy holds what does not travel, too.
TEST(Subquery, WhatTravelsAndWhatDoesNot) {
  const OwnedRqExprPtr logicalOwner(LogicalSubquery(L"SELECT 1"));
  auto& logical = static_cast<RqExprLogicalSubquery&>(*logicalOwner);
  logical.SetCommonExprName(L"cte");
  EXPECT_EQ(logical.GetMySize(), 64 + 4 * 8 + 4 * 3 + 24) << "the node, both texts, the other fields";
  RqExprLogicalSubquery read;
  read.FromByteVector(Payload(logical).data());
  EXPECT_EQ(read.GetSubquerySQLString(), L"SELECT 1");
  EXPECT_EQ(read.GetCRC(), TextCRC(L"SELECT 1"));
  EXPECT_EQ(read.GetCommonExprName(), L"");
  ASSERT_NE(read.GetLogicalSubqueryParseTree(), nullptr);
  EXPECT_EQ(read.GetLogicalSubqueryParseTree()->ToSQLStatement(nullptr), L"SELECT 1");
  const OwnedRqExprPtr logicalCopy(logical.ShallowCopy());
  const auto& copied = static_cast<const RqExprLogicalSubquery&>(*logicalCopy);
  EXPECT_EQ(copied.GetCommonExprName(), L"cte");
  EXPECT_NE(copied.GetLogicalSubqueryParseTree(), logical.GetLogicalSubqueryParseTree());
  EXPECT_FALSE(copied.IsNavigationConstant());
  // One without a parse tree has no text, and travels too.
  RqExprLogicalSubquery none(nullptr, nullptr);
  read.FromByteVector(Payload(none).data());
  EXPECT_EQ(read.GetLogicalSubqueryParseTree(), nullptr);
  EXPECT_EQ(read.GetCRC(), 0U);

  const OwnedRqExprPtr physical(PhysicalSubquery(L"q", 1, true));
  static_cast<RqExprPhysicalSubquery&>(*physical).SetShippableTargets({VoidID(1, 2u)});
  static_cast<RqExprPhysicalSubquery&>(*physical).SetCommonExprName(L"cte");
  const OwnedRqExprPtr physicalCopy(physical->DeepExprCopy(true));
  const auto& copiedPhysical = static_cast<const RqExprPhysicalSubquery&>(*physicalCopy);
  EXPECT_EQ(copiedPhysical.GetShippableTargets(), VoidIDSet{VoidID(1, 2u)});
  EXPECT_EQ(copiedPhysical.GetCommonExprName(), L"cte");
  EXPECT_TRUE(copiedPhysical.IsHighVolume());
  EXPECT_TRUE(copiedPhysical.IsNavigationConstant());

  const OwnedRqExprPtr persist(PersistSubquery(L"p"));
  RqExprPersistSubquery readPersist;
  readPersist.FromByteVector(Payload(*persist).data());
  EXPECT_EQ(readPersist.GetSubqueryDumpout(), L"p");
  EXPECT_EQ(readPersist.GetTableName(), L"");
  EXPECT_TRUE(readPersist.GetDatabaseID().IsNullID());
  const OwnedRqExprPtr persistCopy(persist->ShallowCopy());
  EXPECT_EQ(static_cast<const RqExprPersistSubquery&>(*persistCopy).GetColumnName(), L"C1");
  EXPECT_EQ(static_cast<const RqExprPersistSubquery&>(*persistCopy).GetTargetType(), ServerInfo::kSQLite);
}

TEST(Subquery, NoReaderForAParseTreeIsAnError) {
  const OwnedRqExprPtr logical(LogicalSubquery(L"SELECT 1"));
  const ByteVector bytes = Payload(*logical);
  AbstractListQuerySpec::SetReader(nullptr);
  RqExprLogicalSubquery read;
  try {
    read.FromByteVector(bytes.data());
    ADD_FAILURE() << "it was read";
  } catch (const ErrorMessage& message) {
    // The bytes have no bound here, so the place is given as unknown.
    EXPECT_NE(message.GetText().ToUTF8().find("unknown"), std::string::npos) << message.GetText().ToUTF8();
  }
  AbstractListQuerySpec::SetReader(&TextQuerySpec::Read);
}

// The order is that of kinds, checksums and texts; the rest of a subquery is nothing to it.
TEST(Subquery, OrderAndEquivalence) {
  struct {
    RqExpr* m_pLeft;
    RqExpr* m_pRight;
    char m_relation;
  } const rows[] = {
      {PhysicalSubquery(L"a"), PhysicalSubquery(L"a"), '='},
      {PhysicalSubquery(L"a", 1, true), PhysicalSubquery(L"a", 1, false), '='},
      {PhysicalSubquery(L"b", 1), PhysicalSubquery(L"a", 2), '<'},
      {PhysicalSubquery(L"a", 1), PhysicalSubquery(L"b", 1), '<'},
      {PersistSubquery(L"a", L"T1"), PersistSubquery(L"a", L"T2"), '='},
      {PhysicalSubquery(L"a"), PersistSubquery(L"a"), '<'},
      {LogicalSubquery(L"a"), PhysicalSubquery(L"a", 0), '<'},
  };
  for (const auto& [pLeft, pRight, relation] : rows) {
    const OwnedRqExprPtr left(pLeft);
    const OwnedRqExprPtr right(pRight);
    SCOPED_TRACE(TextOf(pLeft) + relation + TextOf(pRight));
    EXPECT_EQ(left->IsEquivalent(*right, RqEquivalence()), relation == '=');
    EXPECT_EQ(right->IsEquivalent(*left, RqEquivalence()), relation == '=');
    EXPECT_EQ(left->IsShallowLessThan(*right), relation == '<');
    EXPECT_FALSE(right->IsShallowLessThan(*left));
  }
}

// What the rewriters make of each quantified condition: it stays whole, and so does a Not of it.
TEST(QuerySubexpr, RewritersCarryConditionsThroughWhole) {
  for (const auto& [pNode, text, external, named, bTravels] : SubquerySamples()) {
    const OwnedRqExprPtr expr(static_cast<RqExpr*>(pNode));
    if (!expr->IsCond()) continue;
    SCOPED_TRACE(text);
    InwardNegationForm inward;
    expr->TourExpr(inward);
    EXPECT_EQ(TextOf(inward.GetInwardNegationExpr()), text);
    NegateCondExpr negate;
    expr->TourExpr(negate);
    EXPECT_EQ(TextOf(negate.GetNegatedExpr()), "not " + text);

    auto* const pCopy = static_cast<RqExprCond*>(expr->DeepExprCopy(false));
    const RqExprCondOr disjunction(new RqExprCondNot(new RqExprCondNot(pCopy)), new RqExprCondIsNull(Col(L"b"), false));
    ToCNF toCNF;
    toCNF.GenerateCNF(disjunction, false, true, -1);
    EXPECT_TRUE(toCNF.GetConversionSuccess());
    EXPECT_EQ(TextOf(toCNF.GetCNF()), "T1.b is null or " + text);
  }
}

// An In over a logical subquery is an atom; one over a compiled one says its negation by itself.
TEST(QuerySubexpr, NegationOfAnInWithASubquery) {
  struct {
    RqExpr* m_pSubquery;
    const char* m_negated;
  } const rows[] = {{LogicalSubquery(L"SELECT 1"), "not T1.a in (SELECT 1)"},
                    {PhysicalSubquery(L"q"), "T1.a not in (Subquery(q))"}};
  for (const auto& [pSubquery, negated] : rows) {
    const RqExprCondNot cond(new RqExprCondIn(Col(L"a"), pSubquery, false));
    InwardNegationForm inward;
    const_cast<RqExprCondNot&>(cond).TourExpr(inward);
    EXPECT_EQ(TextOf(inward.GetInwardNegationExpr()), negated);
  }
}

TEST(QuerySubexprDeathTest, Mistakes) {
  EXPECT_DEATH(RqExprCondAnyLessThan(nullptr, PhysicalSubquery(L"q")), "search");
  EXPECT_DEATH(RqExprCondAllEqual(Col(L"a"), nullptr), "subquery");
  EXPECT_DEATH(RqExprCondExists(nullptr), "subquery");
  // A value has no negation.
  InwardNegationForm inward;
  EXPECT_DEATH(PhysicalSubquery(L"q")->TourExpr(inward), "SQORAVisitorRqExprCond");
}

}  // namespace
