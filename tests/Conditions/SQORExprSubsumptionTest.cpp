#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"

#include <gtest/gtest.h>

#include <random>
#include <tuple>

#include "CaseFile.h"
#include "Conditions/SubquerySamples.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "TestUtil.h"
#include "TruthTable.h"

namespace {

/// "yes", "same" when equivalent, or "no".
template <class Exprs>
std::string Subsumes(const Exprs& a, const Exprs& b, ARpGateway* pRp = nullptr) {
  bool bEquivalent = true;
  if (!ExprSubsumptionTester::IsSubsumedBy(pRp, a, b, bEquivalent)) return bEquivalent ? "no, equivalent" : "no";
  return bEquivalent ? "same" : "yes";
}

/// The first row that satisfies a and not b; empty if there is none.
std::string FirstCounterexample(const RqExpr* pA, const RqExpr* pB, bool bNulls = true) {
  for (const TruthTable::Row& row : TruthTable::RowsOver({pA, pB}, bNulls)) {
    if (TruthTable::Evaluate(pA, row) == Truth::kTrue && TruthTable::Evaluate(pB, row) != Truth::kTrue) {
      return TruthTable::Text(row);
    }
  }
  return {};
}

/// A yes holds in every row, and that of equivalents both ways.
void ExpectSound(const RqExprCond* pA, const RqExprCond* pB, const std::string& answer) {
  if (answer.starts_with("no")) return;
  const bool bNulls = !HasFoldedPart(*pA) && !HasFoldedPart(*pB);
  EXPECT_EQ(FirstCounterexample(pA, pB, bNulls), "");
  if (answer == "same") {
    EXPECT_EQ(FirstCounterexample(pB, pA, bNulls), "");
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Conditions

TEST(Subsumption, OfConditions) {
  for (const TextCase& c : CasesOf("Conditions/implications.txt")) {
    SCOPED_TRACE(c.m_input);
    const auto [textA, textB] = c.Split(" ==> ");
    const OwnedRqExprCondPtr a = ParseCond(textA);
    const OwnedRqExprCondPtr b = ParseCond(textB);
    const RqExprCond *const pA = a.Get(), *const pB = b.Get();
    const std::string answer = Subsumes(pA, pB);
    EXPECT_EQ(answer, c.m_expected);
    EXPECT_EQ(CondText(pA), CondText(ParseCond(textA).Get())) << "read only";
    ExpectSound(pA, pB, answer);
  }
  const OwnedRqExprCondPtr some = ParseCond("a=1");
  const RqExprCond* const pSome = some.Get();
  const RqExprCond* const pNone = nullptr;
  EXPECT_EQ(Subsumes(pSome, pNone), "yes");
  EXPECT_EQ(Subsumes(pNone, pSome), "no");
  EXPECT_EQ(Subsumes(pNone, pNone), "same");
}

// Answers that do not hold in every row, and are to stay: nobody may come to rely on the contrary unknowingly.
TEST(Subsumption, ExceptionsThatAreWanted) {
  const std::pair<const char*, const char*> rows[] = {
      {"NotMultiIn(a,b;1,2)", "NotMultiIn(a,b;1,2;3,3)"},
      {"b=1", "b=1 & a=a"},
      {"b=1", "b=1 & (a<2 | !(a<2))"},
  };
  for (const auto& [textA, textB] : rows) {
    const OwnedRqExprCondPtr a = ParseCond(textA);
    const OwnedRqExprCondPtr b = ParseCond(textB);
    const RqExprCond *const pA = a.Get(), *const pB = b.Get();
    EXPECT_NE(Subsumes(pA, pB), "no") << textB;
    EXPECT_NE(FirstCounterexample(pA, pB), "") << textB;
  }
}

// Of two comparisons of a column with a constant, whatever their form is, one is found to imply the other exactly where
// no row says the contrary. The constants leave a value between them.
TEST(Subsumption, OfComparisonsIsExact) {
  OwnedRqExprCondVector comparisons;
  for (const char* const sign : {"=", "<", "<=", ">", ">="}) {
    for (const std::string constant : {"1", "3"}) {
      comparisons.push_back(ParseCond("a" + (sign + constant)));
      comparisons.push_back(ParseCond(constant + sign + "a"));
      if (*sign == '=') continue;
      comparisons.push_back(ParseCond("!a" + (sign + constant)));
      comparisons.push_back(ParseCond("!" + constant + sign + "a"));
    }
  }
  for (const OwnedRqExprCondPtr& a : comparisons) {
    for (const OwnedRqExprCondPtr& b : comparisons) {
      SCOPED_TRACE(CondText(a.Get()) + "  =>  " + CondText(b.Get()));
      const bool bImplies = FirstCounterexample(a.Get(), b.Get()).empty();
      const bool bImplied = FirstCounterexample(b.Get(), a.Get()).empty();
      EXPECT_EQ(Subsumes<const RqExprCond*>(a.Get(), b.Get()), bImplies ? (bImplied ? "same" : "yes") : "no");
    }
  }
}

TEST(Subsumption, EveryYesOfRandomPairsHolds) {
  constexpr unsigned kSeed = 20261;
  constexpr int kPairs = 4000;
  std::mt19937 random(kSeed);
  int nYes = 0;
  for (int i = 0; i < kPairs; ++i) {
    const std::string textB = RandomCondText(random, 2);
    // Half of the pairs are made to have a chance.
    const std::string textA =
        i % 2 ? RandomCondText(random, 2) : "(" + textB + ") & (" + RandomCondText(random, 1) + ")";
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ": " + textA + "  =>  " + textB);
    const OwnedRqExprCondPtr a = ParseCond(textA);
    const OwnedRqExprCondPtr b = ParseCond(textB);
    const RqExprCond *const pA = a.Get(), *const pB = b.Get();
    const std::string answer = Subsumes(pA, pB);
    nYes += answer.starts_with("no") ? 0 : 1;
    ExpectSound(pA, pB, answer);
    if (HasFailure()) return;
  }
  EXPECT_GT(nYes, kPairs / 4);
}

// ---------------------------------------------------------------------------------------------------------------------
// Lists

TEST(Subsumption, OfLists) {
  struct {
    std::vector<const char*> m_a, m_b;
    const char* m_answer;
  } const rows[] = {
      {{}, {}, "same"},
      {{"a=1"}, {}, "yes"},
      {{}, {"a=1"}, "no"},
      {{"a=1", "b=1"}, {"b=1", "a=1"}, "same"},
      // One that is only implied makes it no equivalence, though another one is equivalent.
      {{"a=1", "b=1"}, {"b=1", "a<2"}, "yes"},
      {{"a=1", "a<2", "b=1"}, {"a<2"}, "yes"},
      // The second equal conjunct is matched by none of its own, and found equivalent all the same.
      {{"a=1", "a=1"}, {"a=1"}, "same"},
      {{"a=1"}, {"a=1", "a=1"}, "no"},
      {{"a=1", "b=1"}, {"c=1"}, "no"},
      {{"a=1", "b=1"}, {"b=1", "c=1"}, "no"},
  };
  for (const auto& [textsA, textsB, expected] : rows) {
    OwnedRqExprCondVector a, b;
    ConstRqExprVector lentA, lentB;
    for (const char* const text : textsA) lentA.push_back(a.emplace_back(ParseCond(text)).Get());
    for (const char* const text : textsB) lentB.push_back(b.emplace_back(ParseCond(text)).Get());
    SCOPED_TRACE(CondTexts(lentA) + "  =>  " + CondTexts(lentB));
    EXPECT_EQ(Subsumes(lentA, lentB), expected);
    bool bEquivalent = false;
    EXPECT_EQ(ExprSubsumptionTester::IsSubsumedBy(nullptr, lentA, b, bEquivalent), std::string(expected) != "no");
  }
}

TEST(Subsumption, InsOverSubqueries) {
  const auto in = [](const wchar_t* column, RqExpr* pSubquery, bool bNegated = false) {
    return new RqExprCondIn(Col(column), pSubquery, bNegated);
  };
  const auto rowIn = [](RqExpr* pRows) { return new RqExprCondMultiColumnIn(Row({Col(L"a")}), pRows, false); };
  const OwnedRqExprCondPtr a(in(L"a", PhysicalSubquery(L"q", 1, true)));
  const OwnedRqExprCondPtr rowsA(rowIn(PhysicalSubquery(L"q", 1)));
  const std::tuple<const RqExprCond*, RqExprCond*, bool> rows[] = {
      {a.Get(), in(L"a", PhysicalSubquery(L"q", 1, false)), true},
      {a.Get(), in(L"b", PhysicalSubquery(L"q", 1)), false},
      {a.Get(), in(L"a", PhysicalSubquery(L"r", 1)), false},
      {a.Get(), in(L"a", PhysicalSubquery(L"q", 1), true), false},
      {a.Get(), in(L"a", PersistSubquery(L"q")), false},
      {rowsA.Get(), rowIn(PhysicalSubquery(L"q", 1)), true},
      // A subquery has no rows to look at, which is not the same as a list without rows.
      {rowsA.Get(), rowIn(PhysicalSubquery(L"r", 1)), false},
      {rowsA.Get(), rowIn(Row({})), false},
  };
  for (const auto& [pA, pB, bSame] : rows) {
    const OwnedRqExprCondPtr b(pB);
    bool bEquivalent = false;
    EXPECT_EQ(IsContainedBy(nullptr, pA, pB, bEquivalent), bSame) << TextOf(*pB);
    EXPECT_EQ(bEquivalent, bSame);
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Constants

// Before a condition is converted there is a greater, too.
TEST(Subsumption, ReadsColumnOperatorConstant) {
  const std::pair<const char*, RqNodeType_e> rows[] = {
      {"a>1", kRqExprCondGreater},         {"1>a", kRqExprCondLess},  {"!(a>1)", kRqExprCondLessEqual},
      {"!(1>a)", kRqExprCondGreaterEqual}, {"a<1 & b<1", kRqInvalid},
  };
  for (const auto& [text, expected] : rows) {
    SCOPED_TRACE(text);
    const OwnedRqExprCondPtr cond = ParseCond(text);
    const RqExpr* pColumn = cond.Get();
    TypedFieldValue value;
    RqNodeType_e op = kRqInvalid;
    EXPECT_EQ(ExtractColexprOpConstant(nullptr, cond.Get(), pColumn, value, op), expected != kRqInvalid);
    EXPECT_EQ(op, expected);
    EXPECT_EQ(CondText(pColumn), expected == kRqInvalid ? "-" : "a");
  }
}

// Constants of every type compare by value, and those of different families do not compare.
TEST(Subsumption, ConstantsOfEveryType) {
  const KXDateTime midnight(2024, 5, 1, 0, 0, 0);
  struct {
    RqExpr *m_pSmaller, *m_pGreater;
    bool m_bComparable;
  } const rows[] = {
      {Int(1), Int(2), true},
      {Int(1), new RqExprFloatLiteral(1.5), true},
      {Str(L"a"), Str(L"b"), true},
      {new RqExprDateLiteral(KXDate(2024, 4, 30)), new RqExprDateLiteral(KXDate(2024, 5, 1)), true},
      {new RqExprDateLiteral(KXDate(2024, 4, 30)), new RqExprDateTimeLiteral(midnight), true},
      {new RqExprTimeLiteral(KXTime(1, 2, 3)), new RqExprTimeLiteral(KXTime(1, 2, 4)), true},
      {Int(1), Str(L"b"), false},
      {Int(1), new RqExprNumberLiteral(KorvelNumber::FromInteger(2)), false},  // exact numbers are not read
      {Int(1), new RqExprIntervalLiteral(L"INTERVAL '1' DAY"), false},
  };
  for (const auto& [pSmaller, pGreater, bComparable] : rows) {
    const RqExprCondLess a(Col(L"a"), pSmaller);
    const RqExprCondLess b(Col(L"a"), pGreater);
    SCOPED_TRACE(TextOf(b));
    EXPECT_EQ(Subsumes<const RqExprCond*>(&a, &b), bComparable ? "yes" : "no");
    EXPECT_EQ(Subsumes<const RqExprCond*>(&b, &a), "no");
  }
  EXPECT_EQ(ExprSubsumptionTester::ExtractConstantFromLiteral(nullptr).GetKXDataType(), KXUnknown);
}

TEST(Subsumption, SessionVariablesByTheirValues) {
  MemoryGateway gateway;
  const KXStringVector many{L"a", L"b"};
  struct {
    MemoryValue m_value;
    int m_index;
    const wchar_t* m_text;
    KXDataType m_type;
  } rows[] = {
      {7, -1, L"7", KXInt4Data},
      {0.5, -1, L"0.5", KXDoubleData},
      {L"x", -1, L"x", KXVarCharData},
      {KXDate(2024, 5, 1), -1, L"2024-05-01", KXDateData},
      {KXTime(1, 2, 3), -1, L"01:02:03", KXTimeData},
      {KXDateTime(2024, 5, 1, 1, 2, 3), -1, L"2024-05-01 01:02:03", KXDateTimeData},
      {KorvelNumber::FromInteger(12), -1, L"12", KXNumericData},
      {many, -1, L"a;b", KXVarCharData},
      {many, 1, L"b", KXVarCharData},
      {many, 2, L"", KXVarCharData},
  };
  for (auto& [value, index, text, type] : rows) {
    gateway.SetSessionVariable(L"block", L"v", std::move(value));
    const RqExprSessionVar variable({L"block", L"v"}, index);
    const TypedFieldValue constant = ExprSubsumptionTester::ExtractConstantFromSessionVar(&gateway, &variable);
    EXPECT_EQ(constant.ToString(), text);
    EXPECT_EQ(constant.GetKXDataType(), type);
  }
  const RqExprCondEquality a(Col(L"a"), new RqExprSessionVar({L"block", L"v"}), false);
  const RqExprCondLess b(Col(L"a"), Int(8));
  gateway.SetSessionVariable(L"block", L"v", 7);
  EXPECT_EQ(Subsumes<const RqExprCond*>(&a, &b, &gateway), "yes");
  gateway.SetSessionVariable(L"block", L"v", 8);
  EXPECT_EQ(Subsumes<const RqExprCond*>(&a, &b, &gateway), "no");
  gateway.RemoveSessionVariable(L"block", L"v");
  EXPECT_THROW(Subsumes<const RqExprCond*>(&a, &b, &gateway), ErrorMessage);
  EXPECT_EQ(Subsumes<const RqExprCond*>(&a, &a, &gateway), "same") << "no value is needed for that";
}

// A condition that cannot be converted implies nothing but itself.
TEST(Subsumption, ConversionWithoutSuccess) {
  std::string text;
  for (int i = 0; i < 20; ++i) {
    const std::string n = std::to_string(i);
    text += std::string(i ? " | " : "") + "(a=" + n + " & b=" + n + ")";
  }
  const OwnedRqExprCondPtr many = ParseCond(text);
  const OwnedRqExprCondPtr copy = ParseCond(text);
  const OwnedRqExprCondPtr some = ParseCond("a<100");
  const RqExprCond *const pMany = many.Get(), *const pCopy = copy.Get(), *const pSome = some.Get();
  EXPECT_EQ(Subsumes(pMany, pSome), "no");
  EXPECT_EQ(Subsumes(pSome, pMany), "no");
  EXPECT_EQ(Subsumes(pMany, pCopy), "same");
}

TEST(SubsumptionDeathTest, WhatIsNoConjunct) {
  const OwnedRqExprCondPtr conjunction = ParseCond("a=1 & b=1");
  const OwnedRqExprCondPtr nested = ParseCond("c=1 | (a=1 & b=1)");
  const Heap<RqExpr> value(Int(1));
  ConstRqExprSet exprs;
  ExtractORExprSet(nullptr, exprs);
  EXPECT_TRUE(exprs.empty());
  EXPECT_DEATH(ExtractORExprSet(conjunction.Get(), exprs), "!pCond->IsAndCond\\(\\)");
  EXPECT_DEATH(ExtractORExprSet(nested.Get(), exprs), "!pCond->IsAndCond\\(\\)");
  EXPECT_DEATH(ExtractORExprSet(value.Get(), exprs), "pCond->IsCond\\(\\)");
  EXPECT_DEATH(ExtractConstantOperand(ParseCond("IsNull(a)").Get()), "pBinaryOperator->GetNumOperands\\(\\) == 2");
  EXPECT_DEATH(EquivClassUtil::IsPartOfEquivalenceClass({}, nullptr), "pExpr");
}

// ---------------------------------------------------------------------------------------------------------------------
// Equivalence classes

TEST(EquivalenceClasses, FromConditions) {
  struct {
    const char* m_cond;
    const char* m_classes;
  } const rows[] = {
      {"a=b", "[{a, b}]"},
      {"a=a", "[{a}]"},
      {"a=b & b=a", "[{a, b}]"},
      {"a=b & c=d & b=c", "[{a, b, c, d}]"},
      {"a=b & c=d & e=f & d=e", "[{a, b}, {c, d, e, f}]"},
      {"a=b & c=b & a=1", "[{a, b, c, 1}]"},
      {"a=b | c=d", "[]"},
      {"!(a=b) & c<d & e<>f", "[]"},
  };
  for (const auto& [text, expected] : rows) {
    SCOPED_TRACE(text);
    const OwnedRqExprCondPtr cond = ParseCond(text);
    EquivalenceClasses classes;
    EquivClassUtil::AddEquivalenceClasses(cond.Get(), classes);
    EquivClassUtil::AddEquivalenceClasses(nullptr, classes);
    EXPECT_EQ(ToString(classes, nullptr).ToUTF8(), expected);
  }
}

// The class of the first expression stays where it stands, and the later ones move up.
TEST(EquivalenceClasses, MergingKeepsThePlaceOfTheFirst) {
  OwnedRqExprCondVector conds;
  for (const char* const text : {"a=b", "c=d", "e=f"}) conds.push_back(ParseCond(text));
  EquivalenceClasses classes;
  EquivClassUtil::AddEquivalenceClasses(conds, classes);
  const Heap<RqExpr> a(Col(L"a", -1)), d(Col(L"d", -1)), g(Col(L"g", -1));
  EquivClassUtil::AddEquivalentExprPair(d.Get(), a.Get(), classes);
  EXPECT_EQ(ToString(classes, nullptr), L"[{a, b, c, d}, {e, f}]");
  EXPECT_EQ(EquivClassUtil::FindEquivalenceClass(classes, g.Get()), classes.end());
  EquivClassUtil::AddEquivalentExprPair(g.Get(), a.Get(), classes);
  EXPECT_EQ(ToString(classes, nullptr), L"[{a, b, c, d, g}, {e, f}]");
  const EquivalenceClasses& constClasses = classes;
  EXPECT_EQ(EquivClassUtil::FindEquivalenceClass(constClasses, g.Get()), constClasses.begin());
}

// ---------------------------------------------------------------------------------------------------------------------
// Search

TEST(SubExprFinder, FindsTopmostMatchesInOrder) {
  /// Takes any two conditions of one kind for equal.
  class SameKind : public RqEquivalence {
    bool operator()(const RqExpr& lhs, const RqExpr& rhs) const override {
      return lhs.GetObjectType() == rhs.GetObjectType();
    }
  };
  const OwnedRqExprCondPtr root = ParseCond("!(a=1 | !(b=1)) & !(c=1)");
  const OwnedRqExprCondPtr sought = ParseCond("!(z=9)");
  const OwnedRqExprCondPtr b = ParseCond("!(b=1)");
  RqExprVector found;
  SubExprFinder::FindAllEquivalentSubExprs(root.Get(), *sought, found, SameKind());
  EXPECT_EQ(CondTexts(found), "!c=1; !(a=1 | !b=1)");
  EXPECT_EQ(CondText(SubExprFinder::FindEquivalentSubExpr(root.Get(), *b, RqEquivalence())), "!b=1");
  EXPECT_EQ(SubExprFinder::FindEquivalentSubExpr(nullptr, *b, RqEquivalence()), nullptr);
  const RqExprCond& constRoot = *root;
  EXPECT_TRUE(SubExprFinder::FindEquivalentSubExpr(constRoot, *b, RqEquivalence()));
  EXPECT_FALSE(SubExprFinder::FindEquivalentSubExpr(constRoot, *sought, RqEquivalence()));
  const RqExprCondLike withNull(Col(L"a"), Int(1), false, nullptr);
  EXPECT_FALSE(SubExprFinder::FindEquivalentSubExpr(static_cast<const RqExpr&>(withNull), *b, RqEquivalence()));
}

}  // namespace
