#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "CondLanguage.h"
#include "Host/ErrorMessage.h"
#include "Node/SmallStack.h"
#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "TestUtil.h"
#include "TruthTable.h"

namespace {

/// Sets environment variables until the scope ends.
class ScopedEnv {
 public:
  ~ScopedEnv() {
    for (const std::string& name : m_names) unsetenv(name.c_str());
  }
  void Set(const std::string& name, const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
    m_names.push_back(name);
  }

 private:
  std::vector<std::string> m_names;
};
const char* const kCnfLimit = "TELMA_CNF_COMPLEXITY_LIMIT";
const char* const kUniqueLimit = "TELM_CNF_UNIQUE_CONDITION_LIMIT";
const char* const kDnfLimit = "TELMA_DNF_COMPLEXITY_LIMIT";

/// What the three converters make of a condition.
struct Forms {
  OwnedRqExprCondPtr cnf;
  ConstRqExprVector conjuncts;  // of cnf; both only where lists are expanded
  bool bCnfSuccess = false;
  OwnedRqExprCondVector ownedConjuncts;
  bool bOwnedSuccess = false;
  OwnedRqExprCondVector disjuncts;
};

Forms Convert(const RqExprCond& cond, bool bConvertCondIn = true) {
  Forms forms;
  ToCNF toCNF;
  if (bConvertCondIn) {
    forms.cnf = toCNF(cond);
    toCNF.GetConjuncts(forms.conjuncts);
  } else {
    toCNF.GenerateCNF(cond, false, false, -1);
  }
  forms.bCnfSuccess = toCNF.GetConversionSuccess();
  ToCNFConjuncts toCNFConjuncts;
  toCNFConjuncts.GenerateOwnedCNFConjuncts(cond, bConvertCondIn);
  toCNFConjuncts.ReleaseConjuncts(forms.ownedConjuncts);
  forms.bOwnedSuccess = toCNFConjuncts.GetConversionSuccess();
  ToDNFDisjuncts toDNFDisjuncts;
  toDNFDisjuncts.GenerateOwnedDNFDisjuncts(cond, bConvertCondIn);
  toDNFDisjuncts.ReleaseDisjuncts(forms.disjuncts);
  return forms;
}

enum Meaning { kKept, kKeptWithoutNulls, kLost };

struct Row {
  std::string input, conjuncts, disjuncts;  // of ToCNF, its atoms in the order of occurrence, and ToDNFDisjuncts
  Meaning meaning = kKept;
  std::string ownedConjuncts = {};  // of ToCNFConjuncts, the atoms of each sorted, where that makes a difference
};

/// Whether the connectives below are of one kind, and negations stand on what is no connective.
bool IsFlat(const RqExprCond& cond, RqNodeType_e connective) {
  const RqNodeType_e type = cond.GetObjectType();
  const auto& inner = static_cast<const RqExprCond&>(*cond.GetIthOperand(0));
  if (type == connective) {
    return IsFlat(inner, connective) && IsFlat(static_cast<const RqExprCond&>(*cond.GetIthOperand(1)), connective);
  }
  if (type == kRqExprCondNot) return inner.IsCanonicalAtomicPredicate();
  return type != kRqExprCondAnd && type != kRqExprCondOr;
}

/// All forms are flat and say what the condition says.
void ExpectSameMeaning(const RqExprCond& cond, const Forms& forms, bool bNulls) {
  EXPECT_EQ(FirstDifference(cond, forms.cnf.Get(), bNulls), "");
  EXPECT_EQ(FirstDifference(cond, forms.ownedConjuncts, true, bNulls), "");
  // A disjunctive form of nothing but true atoms is empty, as the conjunctive one is.
  if (!forms.disjuncts.empty()) {
    EXPECT_EQ(FirstDifference(cond, forms.disjuncts, false, bNulls), "");
  }
  EXPECT_TRUE(!forms.cnf || ToCNF::IsCondInCNF(forms.cnf.Get()));
  for (const auto& conjunct : forms.ownedConjuncts) EXPECT_TRUE(IsFlat(*conjunct, kRqExprCondOr));
  for (const auto& disjunct : forms.disjuncts) EXPECT_TRUE(IsFlat(*disjunct, kRqExprCondAnd));
}

const Row kRows[] = {
    // Flat input
    {"a=1", "a=1", "a=1"},
    {"a=1 & b=2", "a=1; b=2", "a=1 & b=2"},
    {"a=1 | b=2", "a=1 | b=2", "a=1; b=2"},
    {"a=1 & a=1", "a=1", "a=1"},
    {"a=b & b=a", "a=b", "a=b"},
    {"a<b & b>a & !b<=a", "a<b", "a<b"},
    {"a=1 & a==1", "a=1; a==1", "a=1 & a==1"},
    // Single atoms come first, then clauses as they arise.
    {"(a=1 | b=2) & c=3", "c=3; a=1 | b=2", "a=1 & c=3; b=2 & c=3"},
    {"c=3 | (a=1 & b=2)", "a=1 | c=3; b=2 | c=3", "c=3; a=1 & b=2"},
    {"(a=1 & b=1) | (c=1 & d=1)", "a=1 | c=1; b=1 | c=1; a=1 | d=1; b=1 | d=1", "a=1 & b=1; c=1 & d=1"},
    {"!(a=1 & b=1 & !(c=1 | d=1))", "!a=1 | c=1 | d=1 | !b=1", "!a=1; !b=1; c=1; d=1", kKept,
     "c=1 | d=1 | !a=1 | !b=1"},
    // Factoring and absorption
    {"(a=1 & b=1) | (a=1 & c=1)", "a=1; b=1 | c=1", "a=1 & b=1; a=1 & c=1"},
    {"a=1 | (a=1 & b=1)", "a=1", "a=1"},
    {"a=1 & (a=1 | b=1)", "a=1", "a=1"},
    {"(a=1 | b=1) & (a=1 | b=1 | c=1)", "a=1 | b=1", "a=1; b=1"},
    // Bounds and lists
    {"In(a,2,1) & b=1", "b=1; a=1 | a=2", "a=2 & b=1; a=1 & b=1"},
    {"In(a) | b=1", "b=1", "b=1"},
    // Atoms that are taken whole
    {"Wrap(a=1 & b=1) | c=1", "c=1 | Wrap(a=1 & b=1)", "c=1; Wrap(a=1 & b=1)"},
    {"Filter(a=1 & b=1) | c=1", "a=1 | c=1; b=1 | c=1", "c=1; a=1 & b=1"},
    {"!Like(a,1) & Like(b,1) & Pred(a)", "NotLike(a,1); Like(b,1); Pred(a)", "Like(b,1) & NotLike(a,1) & Pred(a)"},
    // Folding. A constant leaves its truth value as it is in every row.
    {"1=1", "", "1=1"},
    {"1=2 | a=1", "a=1", "a=1"},
    {"1=2 & a=1", "a=1; 1=2", "a=1 & 1=2"},
    {"1=1 | a=1", "a=1 | 1=1", "a=1; 1=1"},
    {"1=2 | 1=3", "1=2", "1=2"},
    // Not so a column: these hold in rows without nulls alone. Unknown has become true or false.
    {"a=a & b=1", "b=1", "b=1", kKeptWithoutNulls},
    {"(a=1 | !a=1) & b=1", "b=1", "b=1", kKeptWithoutNulls},
    {"(a=1 & !a=1) | b=1", "b=1", "b=1", kKeptWithoutNulls},
    // The order does not tell a predicate of the target from its negation, so both are the atom that comes first.
    {"Pred(a) & (b=1 | NotPred(a))", "NotPred(a)", "NotPred(a)", kLost},
    // Constants are known by form: two parameters are two values, and none of them is null.
    {"?1=?2 | a=1", "a=1", "a=1", kLost},
    {"?1<>?2 & a=1", "a=1", "a=1", kLost},
    {"In(?1,?2,2) | a=1", "a=1 | 2=?1", "a=1; 2=?1", kLost},
    {"NotNull(?3) & a=1", "a=1", "a=1", kLost},
    // An Or loses an operand that is nothing but true atoms.
    {"a=1 | (1=1 & 2=2)", "a=1", "a=1", kLost},
    {"MultiIn(a,b;1,2) | IsNull(a)", "IsNull(a) | MultiIn(a,b;1,2)", "IsNull(a); MultiIn(a,b;1,2)"},
};

TEST(NormalFormTest, EachConditionHasTheFormsOfTheTableAndKeepsItsMeaning) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.input);
    const OwnedRqExprCondPtr cond = ParseCond(row.input);
    const Forms forms = Convert(*cond);
    EXPECT_EQ(CondTexts(forms.conjuncts), row.conjuncts);
    EXPECT_EQ(CondTexts(forms.ownedConjuncts), row.ownedConjuncts.empty() ? row.conjuncts : row.ownedConjuncts);
    EXPECT_EQ(CondTexts(forms.disjuncts), row.disjuncts);
    EXPECT_TRUE(forms.bCnfSuccess);
    EXPECT_TRUE(forms.bOwnedSuccess);
    ConstRqExprVector leaves;
    if (forms.cnf) ToCNF::HarvestConjuncts(forms.cnf.Get(), leaves);
    EXPECT_EQ(std::set<const RqExpr*>(forms.conjuncts.begin(), forms.conjuncts.end()),
              std::set<const RqExpr*>(leaves.begin(), leaves.end()))
        << "the conjuncts stand in the form";
    if (row.meaning != kLost) ExpectSameMeaning(*cond, forms, row.meaning == kKept);
    if (row.meaning != kKept) {
      EXPECT_NE(FirstDifference(*cond, forms.ownedConjuncts, true, true), "") << "the meaning is kept: say so";
    }
  }
}

TEST(NormalFormTest, AtomsThatHaveNoStrictOrderAreFoundAndSorted) {
  // Of two outer join filters each may be less than the other.
  std::mt19937 random(20);
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    OwnedRqExprCondPtr cond;
    for (int i = 0; i < 80; ++i) {
      const OwnedRqExprCondPtr inner = ParseCond(std::string("a") + "=<>"[random() % 3] + std::to_string(random() % 5));
      const auto joinType = static_cast<SqlTableRef::JoinType>(random() % 5);
      OwnedRqExprCondPtr filter(new RqExprCondOuterJoinFilter(inner->DeepExprCopy(false), joinType));
      cond = RqExprCondOr::Concatenate(cond.Release(), new RqExprCondNot(filter.Release()));
    }
    ExpectSameMeaning(*cond, Convert(*cond), true);
  }
}

TEST(NormalFormTest, ListsStayWholeWhereAskedFor) {
  const OwnedRqExprCondPtr cond = ParseCond("(In(a,1,2) & b=1) | In(c,1,2)");
  const Forms forms = Convert(*cond, false);
  EXPECT_EQ(CondTexts(forms.ownedConjuncts), "b=1 | In(c,1,2); In(a,1,2) | In(c,1,2)");
  EXPECT_EQ(CondTexts(forms.disjuncts), "In(c,1,2); b=1 & In(a,1,2)");
  EXPECT_EQ(FirstDifference(*cond, forms.ownedConjuncts, true, true), "");
  EXPECT_EQ(FirstDifference(*cond, forms.disjuncts, false, true), "");
  ToCNF toCNF;
  toCNF.GenerateCNF(*cond, false, false, -1);
  ConstRqExprVector conjuncts;
  toCNF.GetConjuncts(conjuncts);
  EXPECT_EQ(CondTexts(conjuncts), "b=1 | In(c,1,2); In(a,1,2) | In(c,1,2)");
  EXPECT_EQ(FirstDifference(*cond, conjuncts, true, true), "");
}

// ---------------------------------------------------------------------------------------------------------------------
// Giving up

/// Or of that many pairs, over atoms of three columns, the first `distinct` of 18 again and again; and the last atom
/// once more, on its own, if bTail.
std::string Pairs(int count, int distinct, bool bTail) {
  const auto atom = [distinct](int i) {
    i %= distinct;
    return std::string(1, "abc"[i % 3]) + "=<"[i / 3 % 2] + std::to_string(i / 6 + 1);
  };
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += (i == 0 ? "(" : " | (") + atom(2 * i) + " & " + atom(2 * i + 1) + ")";
  }
  return bTail ? "(" + text + ") & " + atom(distinct - 1) : text;
}

TEST(ComplexityTest, AConditionIsTooComplicatedByScoreAndByDistinctAtoms) {
  struct {
    std::string cond;
    int limit;
    const char *cnfEnv, *uniqueEnv;
    bool bTooComplicated;
  } const rows[] = {
      // A score of 513 over 17 or 16 atoms
      {Pairs(9, 17, true), -1, nullptr, nullptr, true},
      {Pairs(9, 16, true), -1, nullptr, nullptr, false},
      {Pairs(9, 18, false), -1, nullptr, nullptr, false},  // 512
      {Pairs(9, 17, true), 512, nullptr, nullptr, true},
      {Pairs(9, 17, true), 0, nullptr, nullptr, false},
      // The environment counts where no limit is given.
      {Pairs(9, 17, true), -1, "513", nullptr, false},
      {Pairs(9, 17, true), -1, "many", nullptr, true},
      {Pairs(9, 17, true), 512, "513", nullptr, true},
      {Pairs(9, 18, false), -1, "511", nullptr, true},
      {Pairs(9, 17, true), -1, nullptr, "17", false},
      {Pairs(9, 16, true), -1, nullptr, "15", true},
      {"a=1 & a=1 & !a=1", 1, nullptr, "1", false},  // what a Not stands on is the same atom
      {"a=1 & a=1 & !b=1", 1, nullptr, "1", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cond + " at " + std::to_string(row.limit));
    ScopedEnv env;
    if (row.cnfEnv) env.Set(kCnfLimit, row.cnfEnv);
    if (row.uniqueEnv) env.Set(kUniqueLimit, row.uniqueEnv);
    EXPECT_EQ(ToCNF::IsCondTooComplicated(*ParseCond(row.cond), row.limit), row.bTooComplicated);
  }

  // The disjunctive form has a limit of its own. A score of 1024, and one more
  const OwnedRqExprCondPtr clauses = ParseCond("!(" + Pairs(10, 18, false) + ")");
  const OwnedRqExprCondPtr more = ParseCond("a=1 | !(" + Pairs(10, 18, false) + ")");
  EXPECT_FALSE(ToDNFDisjuncts::IsCondTooComplicatedToConvert(*clauses, -1));
  EXPECT_TRUE(ToDNFDisjuncts::IsCondTooComplicatedToConvert(*more, -1));
  EXPECT_TRUE(ToDNFDisjuncts::IsCondTooComplicatedToConvert(*clauses, 1023));
  EXPECT_FALSE(ToDNFDisjuncts::IsCondTooComplicatedToConvert(*more, 0));
  ScopedEnv env;
  env.Set(kDnfLimit, "1025");
  EXPECT_FALSE(ToDNFDisjuncts::IsCondTooComplicatedToConvert(*more, -1));
}

TEST(ComplexityTest, TooComplicatedConditionsAreTakenAsTheyStand) {
  struct {
    std::string cond;
    bool bSuccess;
    std::string cnf, conjuncts, ownedConjuncts;
  } const rows[] = {
      {"a=1 & (b=1 | c=1)", true, "a=1 & (b=1 | c=1)", "a=1; b=1 | c=1", "a=1; b=1 | c=1"},
      // Only duplicates make a new tree; what the rewriting would merge stays apart.
      {"a=1 & (b=1 | c=1) & a=1", true, "a=1 & (b=1 | c=1)", "a=1; b=1 | c=1", "a=1; b=1 | c=1"},
      {"a<b & b>a & !a=1", true, "a<b & b>a & !a=1", "a<b; b>a; !a=1", "a<b; b>a; !a=1"},
      {"d=1 & (c=1 | (a=1 & b=1))", false, "-", "", "d=1; c=1 | a=1 & b=1"},
      {"d=1 & !(a=1 & b=1)", false, "-", "", "d=1; !(a=1 & b=1)"},
      {"c=1 | (a=1 & b=1)", false, "-", "", "c=1 | a=1 & b=1"},
  };
  ScopedEnv env;
  env.Set(kCnfLimit, "1");
  env.Set(kUniqueLimit, "2");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cond);
    const OwnedRqExprCondPtr cond = ParseCond(row.cond);
    ASSERT_TRUE(ToCNF::IsCondTooComplicated(*cond, -1));
    Forms forms = Convert(*cond);
    EXPECT_EQ(forms.bCnfSuccess, row.bSuccess);
    EXPECT_EQ(forms.bOwnedSuccess, row.bSuccess);
    EXPECT_EQ(CondText(forms.cnf.Get()), row.cnf);
    EXPECT_EQ(CondTexts(forms.conjuncts), row.conjuncts);
    EXPECT_EQ(CondTexts(forms.ownedConjuncts), row.ownedConjuncts);
    EXPECT_EQ(FirstDifference(*cond, forms.ownedConjuncts, true, true), "");
    std::list<RqNode*> nodes;
    cond->GetObjects(nodes);
    for (const RqExpr* const pConjunct : forms.conjuncts) {
      EXPECT_EQ(std::count(nodes.begin(), nodes.end(), pConjunct), 1) << "the conjuncts are those of the input";
    }
    for (const OwnedRqExprCondPtr& conjunct : forms.ownedConjuncts) {
      EXPECT_EQ(std::count(nodes.begin(), nodes.end(), conjunct.Get()), 0);
    }
  }
}

TEST(ComplexityTest, ARefusedConditionStaysNestedAndAForcedOneDoesNot) {
  const OwnedRqExprCondPtr cond = ParseCond(Pairs(9, 18, false));
  const Forms forms = Convert(*cond);
  EXPECT_FALSE(forms.bCnfSuccess);
  EXPECT_EQ(forms.conjuncts.size(), 1U);
  EXPECT_FALSE(ToCNF::IsCondInCNF(forms.cnf.Get()));
  EXPECT_EQ(FirstDifference(*cond, forms.cnf.Get(), true), "");
  EXPECT_FALSE(forms.bOwnedSuccess);
  ASSERT_EQ(CondTexts(forms.ownedConjuncts), CondText(cond.Get()));
  EXPECT_FALSE(forms.ownedConjuncts[0]->IsCopyOf(*cond)) << "a copy with an identity of its own";
  EXPECT_EQ(FirstDifference(*cond, forms.disjuncts, false, true), "");

  ToCNF forced;
  forced.GenerateCNF(*cond, true, true, -1);
  ConstRqExprVector conjuncts;
  forced.GetConjuncts(conjuncts);
  EXPECT_TRUE(forced.GetConversionSuccess());
  EXPECT_EQ(FirstDifference(*cond, conjuncts, true, true), "");
}

TEST(ComplexityTest, DeepInputRaisesAnErrorInsteadOfUsingUpTheStack) {
  constexpr int kDepth = 50'000;
  for (const bool bOrs : {false, true}) {
    OwnedRqExprCondPtr cond = ParseCond("a=1 & b=1");
    for (int i = 0; i < kDepth; ++i) {
      if (bOrs) {
        cond = new RqExprCondOr(cond.Release(), ParseCond("a=1").Release());
      } else {
        cond = new RqExprCondNot(cond.Release());
      }
    }
    RunOnSmallStack([&cond] {
      EXPECT_THROW(ToCNF()(*cond), ErrorMessage);
      EXPECT_THROW(ToCNFConjuncts().GenerateOwnedCNFConjuncts(*cond, true), ErrorMessage);
      EXPECT_THROW(ToDNFDisjuncts().GenerateOwnedDNFDisjuncts(*cond, true), ErrorMessage);
      ConstRqExprVector out;
      bool bDuplicateFound = false;
      EXPECT_THROW(HarvestLeafConjuncts(cond.Get(), out, bDuplicateFound, false), ErrorMessage);
      EXPECT_THROW(ToCNF::HarvestDisjunctivePredicates(cond.Get(), out), ErrorMessage);
    });
  }
}

// What walks the part, what searches it and what copies it take stacks of different sizes: at some depth each of them
// is the first that runs out.
TEST(ComplexityTest, ADeepPartOfATooComplicatedConditionRaisesAnErrorInsteadOfUsingUpTheStack) {
  constexpr int kMaxDepth = 20'000;
  ScopedEnv env;
  env.Set(kCnfLimit, "1");
  env.Set(kUniqueLimit, "2");
  const auto convert = [](const RqExprCond& cond) { ToCNF().GenerateCNF(cond, false, true, -1); };
  const auto convertToOwned = [](const RqExprCond& cond) { ToCNFConjuncts().GenerateOwnedCNFConjuncts(cond, true); };
  unsigned long codes[2] = {};
  for (int depth = 100; depth < kMaxDepth; depth += depth / 10) {
    SCOPED_TRACE(depth);
    const RqExprCondAnd cond(ParseCond("b=1 & c=1 & d=1").Release(), DeepOr(depth).Release());
    ASSERT_TRUE(ToCNF::IsCondTooComplicated(cond, -1));
    RunOnSmallStack([&] {
      codes[0] = CodeRaisedBy([&] { convert(cond); });
      codes[1] = CodeRaisedBy([&] { convertToOwned(cond); });
    });
    for (const unsigned long code : codes) EXPECT_THAT(code, testing::AnyOf(0U, kMsgStackLow));
  }
  for (const unsigned long code : codes) EXPECT_EQ(code, kMsgStackLow);
}

TEST(NormalFormDeathTest, AFilterBelowTwoNegations) {
  EXPECT_DEATH(ToCNF()(*ParseCond("!(!Filter(a=1) & b=1)")), "SQORRqExprCondToBitClause.*logic error");
}

// ---------------------------------------------------------------------------------------------------------------------
// Harvest

TEST(HarvestTest, SpinesGiveTheirLeavesLeftToRight) {
  const OwnedRqExprCondPtr cond = ParseCond("a=1 & (b=1 | !(c=1 | !d=1)) & !(e=1 & f=1) & !!g=1");
  ConstRqExprVector out;
  ToCNF::HarvestConjuncts(cond.Get(), out);
  EXPECT_EQ(CondTexts(out), "a=1; b=1 | !(c=1 | !d=1); !(e=1 & f=1); !!g=1");
  const RqExpr* const pOr = out[1];
  out.clear();
  ToCNF::HarvestDisjuncts(static_cast<const RqExprCond*>(pOr), out);
  EXPECT_EQ(CondTexts(out), "b=1; !(c=1 | !d=1)");
  out.clear();
  ToCNF::HarvestDisjunctivePredicates(static_cast<const RqExprCond*>(pOr), out);
  EXPECT_EQ(CondTexts(out), "b=1; c=1; d=1");
  RqExprCondVector candidates;
  ToCNF::GatherCandidateCondsForAtomicCondWrap(cond.Get(), candidates);
  EXPECT_EQ(CondTexts(candidates), "b=1 | !(c=1 | !d=1); !(e=1 & f=1); !!g=1");
}

TEST(HarvestTest, LeafConjunctsAreDistinctAndFree_OfAnds) {
  struct {
    std::string cond;
    bool bIgnoreNestedAnd, bResult, bDuplicateFound;
    std::string out;
  } const rows[] = {
      {"b=1 & (c=1 | d=1)", false, true, false, "z=1; b=1; c=1 | d=1"},
      {"b=1 & z=1", false, true, true, "z=1; b=1"},
      {"b=1 & (c=1 | (d=1 & e=1)) & f=1", false, false, false, ""},
      {"b=1 & (c=1 | (d=1 & e=1)) & f=1", true, true, false, "z=1; b=1; f=1; c=1 | d=1 & e=1"},
      {"Wrap(b=1 & c=1) & d=1", false, true, false, "z=1; d=1; Wrap(b=1 & c=1)"},
      {"!Wrap(b=1 & c=1)", false, false, false, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cond);
    const OwnedRqExprCondPtr cond = ParseCond(row.cond);
    const OwnedRqExprCondPtr first = ParseCond("z=1");
    ConstRqExprVector out{first.Get()};
    bool bDuplicateFound = false;
    EXPECT_EQ(HarvestLeafConjuncts(cond.Get(), out, bDuplicateFound, row.bIgnoreNestedAnd), row.bResult);
    EXPECT_EQ(bDuplicateFound, row.bDuplicateFound);
    EXPECT_EQ(CondTexts(out), row.out);
  }
}

TEST(HarvestTest, ConjunctiveFormIsToldByTheConnectives) {
  const std::pair<const char*, bool> rows[] = {
      {"a=1 & (b=1 | !c=1 | d=1)", true},    {"a=1 | (b=1 & c=1)", false},    {"!(a=1 & b=1)", false},
      {"(a=1 | !(b=1 | c=1)) & d=1", false}, {"Wrap(a=1 & b=1) | c=1", true},
  };
  for (const auto& [text, bInCNF] : rows) EXPECT_EQ(ToCNF::IsCondInCNF(ParseCond(text).Get()), bInCNF) << text;
  EXPECT_DEATH(ToCNF::IsCondInCNF(nullptr), "pCond");
}

// ---------------------------------------------------------------------------------------------------------------------
// Random conditions

/// The texts of clauses, each of them sorted atoms.
template <class Exprs>
std::set<std::string> ClauseSet(const Exprs& clauses) {
  std::set<std::string> texts;
  for (const auto& clause : clauses) texts.insert(CondText(&*clause));
  return texts;
}

/// Of the clauses of a form, a second conversion leaves out what only the whole form makes redundant, such as those of
/// an atom and its negation, and adds none.
void ExpectStable(const Forms& forms) {
  ToCNF toCNF;
  const OwnedRqExprCondPtr cnf(toCNF(*forms.cnf));
  EXPECT_EQ(FirstDifference(*forms.cnf, cnf.Get(), false), "");
  ToCNFConjuncts toCNFConjuncts;
  toCNFConjuncts.GenerateOwnedCNFConjuncts(*forms.cnf, true);
  OwnedRqExprCondVector conjuncts;
  toCNFConjuncts.ReleaseConjuncts(conjuncts);
  EXPECT_EQ(FirstDifference(*forms.cnf, conjuncts, true, false), "");
  EXPECT_TRUE(std::ranges::includes(ClauseSet(forms.ownedConjuncts), ClauseSet(conjuncts)));

  OwnedRqExprCondPtr dnf;
  for (const auto& disjunct : forms.disjuncts) {
    dnf = RqExprCondOr::Concatenate(dnf.Release(), static_cast<RqExprCond*>(disjunct->DeepExprCopy(false)));
  }
  ToDNFDisjuncts toDNFDisjuncts;
  toDNFDisjuncts.GenerateOwnedDNFDisjuncts(*dnf, true);
  OwnedRqExprCondVector disjuncts;
  toDNFDisjuncts.ReleaseDisjuncts(disjuncts);
  EXPECT_EQ(FirstDifference(*dnf, disjuncts, false, false), "");
  EXPECT_TRUE(std::ranges::includes(ClauseSet(forms.disjuncts), ClauseSet(disjuncts)));
}

TEST(NormalFormTest, RandomConditionsKeepTheirMeaningAndBecomeFlat) {
  constexpr unsigned kSeed = 1970;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  constexpr int kMaxDisjuncts = 64;
  std::mt19937 random(kSeed);
  int stable = 0;
  for (int i = 0; i < 600 && !HasFailure(); ++i) {
    const std::string text = RandomCondText(random, 3);
    SCOPED_TRACE(text);
    const OwnedRqExprCondPtr cond = ParseCond(text);
    if (ToCNF::IsCondTooComplicated(*cond, -1) || ToDNFDisjuncts::IsCondTooComplicatedToConvert(*cond, kMaxDisjuncts)) {
      continue;
    }
    const Forms forms = Convert(*cond);
    if (!forms.bCnfSuccess) continue;
    EXPECT_TRUE(forms.bOwnedSuccess);
    const bool bFolds = HasFoldedPart(*cond);
    ExpectSameMeaning(*cond, forms, !bFolds);
    const OwnedRqExprCondPtr copy(static_cast<RqExprCond*>(cond->DeepExprCopy(true)));
    const Forms ofCopy = Convert(*copy);
    EXPECT_EQ(CondText(ofCopy.cnf.Get()), CondText(forms.cnf.Get()));
    EXPECT_EQ(CondTexts(ofCopy.ownedConjuncts), CondTexts(forms.ownedConjuncts));
    EXPECT_EQ(CondTexts(ofCopy.disjuncts), CondTexts(forms.disjuncts));
    // What is left of a fold may fold in its new place.
    if (bFolds || !forms.cnf || forms.disjuncts.empty()) continue;
    ++stable;
    ExpectStable(forms);
  }
  EXPECT_GT(stable, 450);
}

}  // namespace
