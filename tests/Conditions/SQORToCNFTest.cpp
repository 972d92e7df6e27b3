#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"

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
#include "SQORBitClause.h"
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
  ConstRqExprVector conjuncts;  // of cnf
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
  } else {
    toCNF.GenerateCNF(cond, false, false, -1);
  }
  toCNF.GetConjuncts(forms.conjuncts);
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

struct Row {
  std::string input;
  std::string conjuncts;       // of ToCNF: the atoms of each concatenated in the order of their first occurrence
  std::string ownedConjuncts;  // of ToCNFConjuncts: the atoms of each sorted
  std::string disjuncts;       // of ToDNFDisjuncts
  bool bKeepsNulls = true;     // else the meaning stays on rows without nulls alone
};

const Row kRows[] = {
    // Flat input
    {"a=1", "a=1", "a=1", "a=1"},
    {"a=1 & b=2", "a=1; b=2", "a=1; b=2", "a=1 & b=2"},
    {"a=1 | b=2", "a=1 | b=2", "a=1 | b=2", "a=1; b=2"},
    {"a=1 & a=1", "a=1", "a=1", "a=1"},
    {"a=b & b=a", "a=b", "a=b", "a=b"},
    {"a<b & b>a & !b<=a", "a<b", "a<b", "a<b"},
    {"a=1 & a==1", "a=1; a==1", "a=1; a==1", "a=1 & a==1"},
    // Single atoms come first, then clauses as they arise.
    {"(a=1 | b=2) & c=3", "c=3; a=1 | b=2", "c=3; a=1 | b=2", "a=1 & c=3; b=2 & c=3"},
    {"c=3 | (a=1 & b=2)", "a=1 | c=3; b=2 | c=3", "a=1 | c=3; b=2 | c=3", "c=3; a=1 & b=2"},
    {"(a=1 & b=1) | (c=1 & d=1)", "a=1 | c=1; b=1 | c=1; a=1 | d=1; b=1 | d=1",
     "a=1 | c=1; b=1 | c=1; a=1 | d=1; b=1 | d=1", "a=1 & b=1; c=1 & d=1"},
    {"!(a=1 & b=1 & !(c=1 | d=1))", "!a=1 | c=1 | d=1 | !b=1", "c=1 | d=1 | !a=1 | !b=1", "!a=1; !b=1; c=1; d=1"},
    // Factoring and absorption
    {"(a=1 & b=1) | (a=1 & c=1)", "a=1; b=1 | c=1", "a=1; b=1 | c=1", "a=1 & b=1; a=1 & c=1"},
    {"a=1 | (a=1 & b=1)", "a=1", "a=1", "a=1"},
    {"a=1 & (a=1 | b=1)", "a=1", "a=1", "a=1"},
    {"(a=1 | b=1) & (a=1 | b=1 | c=1)", "a=1 | b=1", "a=1 | b=1", "a=1; b=1"},
    // Bounds and lists
    {"Between(a,1,2)", "!a<1; !2<a", "!a<1; !2<a", "!a<1 & !2<a"},
    {"In(a,2,1) & b=1", "b=1; a=1 | a=2", "b=1; a=1 | a=2", "a=2 & b=1; a=1 & b=1"},
    {"NotIn(a,2,1)", "!a=2; !a=1", "!a=2; !a=1", "!a=1 & !a=2"},
    {"In(a) | b=1", "b=1", "b=1", "b=1"},
    // Atoms that are taken whole
    {"Wrap(a=1 & b=1) | c=1", "c=1 | Wrap(a=1 & b=1)", "c=1 | Wrap(a=1 & b=1)", "c=1; Wrap(a=1 & b=1)"},
    {"Filter(a=1 & b=1) | c=1", "a=1 | c=1; b=1 | c=1", "a=1 | c=1; b=1 | c=1", "c=1; a=1 & b=1"},
    {"!Like(a,1) & Like(b,1) & Pred(a)", "NotLike(a,1); Like(b,1); Pred(a)", "NotLike(a,1); Like(b,1); Pred(a)",
     "Like(b,1) & NotLike(a,1) & Pred(a)"},
    // Folding. A constant leaves its truth value as it is in every row.
    {"1=1", "", "", "1=1"},
    {"1=2 | a=1", "a=1", "a=1", "a=1"},
    {"1=2 & a=1", "a=1; 1=2", "a=1; 1=2", "a=1 & 1=2"},
    {"1=1 | a=1", "a=1 | 1=1", "a=1 | 1=1", "a=1; 1=1"},
    {"1=2 | 1=3", "1=2", "1=2", "1=2"},
    // Not so a column: these hold in rows without nulls alone. Unknown has become true or false.
    {"a=a & b=1", "b=1", "b=1", "b=1", false},
    {"(a=1 | !a=1) & b=1", "b=1", "b=1", "b=1", false},
    {"(a=1 & !a=1) | b=1", "b=1", "b=1", "b=1", false},
};

TEST(NormalFormTest, EachConditionHasTheFormsOfTheTableAndKeepsItsMeaning) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.input);
    const OwnedRqExprCondPtr cond = ParseCond(row.input);
    const Forms forms = Convert(*cond);
    EXPECT_EQ(CondTexts(forms.conjuncts), row.conjuncts);
    EXPECT_EQ(CondTexts(forms.ownedConjuncts), row.ownedConjuncts);
    EXPECT_EQ(CondTexts(forms.disjuncts), row.disjuncts);
    EXPECT_TRUE(forms.bCnfSuccess);
    EXPECT_TRUE(forms.bOwnedSuccess);
    if (forms.cnf) {
      EXPECT_TRUE(ToCNF::IsCondInCNF(forms.cnf.Get()));
    }
    const bool bNulls = row.bKeepsNulls;
    EXPECT_EQ(FirstDifference(*cond, forms.cnf.Get(), bNulls), "");
    EXPECT_EQ(FirstDifference(*cond, forms.ownedConjuncts, true, bNulls), "");
    // A disjunctive form of nothing but true atoms is empty, as the conjunctive one is.
    if (!forms.disjuncts.empty()) {
      EXPECT_EQ(FirstDifference(*cond, forms.disjuncts, false, bNulls), "");
    }
    if (!bNulls) {
      EXPECT_NE(FirstDifference(*cond, forms.ownedConjuncts, true, true), "") << "nulls are kept: say so";
    }
  }
}

TEST(NormalFormTest, WantedLossesOfMeaning) {
  struct {
    std::string input, conjuncts, disjuncts;
  } const rows[] = {
      // An Or loses an operand that is nothing but true atoms.
      {"a=1 | (1=1 & 2=2)", "a=1", "a=1"},
      // The order does not tell a predicate of the target from its negation, so both are the atom that comes first.
      {"Pred(a) & (b=1 | NotPred(a))", "NotPred(a)", "NotPred(a)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input);
    const OwnedRqExprCondPtr cond = ParseCond(row.input);
    const Forms forms = Convert(*cond);
    EXPECT_EQ(CondTexts(forms.conjuncts), row.conjuncts);
    EXPECT_EQ(CondTexts(forms.disjuncts), row.disjuncts);
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
    const Forms forms = Convert(*cond);
    EXPECT_EQ(FirstDifference(*cond, forms.cnf.Get(), true), "");
    EXPECT_EQ(FirstDifference(*cond, forms.ownedConjuncts, true, true), "");
    EXPECT_EQ(FirstDifference(*cond, forms.disjuncts, false, true), "");
  }
}

TEST(NormalFormTest, ListsStayWholeWhereAskedFor) {
  const OwnedRqExprCondPtr cond = ParseCond("(In(a,1,2) & b=1) | In(c,1,2)");
  const Forms forms = Convert(*cond, false);
  EXPECT_EQ(CondTexts(forms.ownedConjuncts), "b=1 | In(c,1,2); In(a,1,2) | In(c,1,2)");
  EXPECT_EQ(CondTexts(forms.disjuncts), "In(c,1,2); b=1 & In(a,1,2)");
}

TEST(NormalFormTest, TheConjunctsStandInTheForm) {
  const OwnedRqExprCondPtr cond = ParseCond("a=1 & (b=1 | c=1) & (d=1 | (b=1 & e=1))");
  ToCNF toCNF;
  const OwnedRqExprCondPtr cnf(toCNF(*cond));
  std::vector<const RqExprCond*> conjuncts;
  toCNF.GetConjuncts(conjuncts);
  ConstRqExprVector leaves;
  ToCNF::HarvestConjuncts(cnf.Get(), leaves);
  EXPECT_EQ(std::set<const RqExpr*>(conjuncts.begin(), conjuncts.end()),
            std::set<const RqExpr*>(leaves.begin(), leaves.end()));
  std::list<RqNode*> nodesOfInput;
  cond->GetObjects(nodesOfInput);
  for (const RqExprCond* const pConjunct : conjuncts) {
    EXPECT_EQ(std::count(nodesOfInput.begin(), nodesOfInput.end(), pConjunct), 0);
  }
}

TEST(NormalFormTest, BitClausesCountAtomsByFirstOccurrence) {
  const OwnedRqExprCondPtr cond = ParseCond("b=1 & (a>1 | b=1) & !a>1");
  RqExprCondVector literals;
  BitClauseConjunction clause(0);
  bool bSuccess = false;
  const OwnedRqExprCondPtr inwardForm(GenerateBitClauses(*cond, false, literals, clause, bSuccess, true));
  EXPECT_TRUE(bSuccess);
  EXPECT_EQ(CondTexts(literals), "b=1; 1<a; !1<a");
  std::list<RqNode*> nodes;
  inwardForm->GetObjects(nodes);
  for (RqExprCond* const pLiteral : literals) EXPECT_EQ(std::count(nodes.begin(), nodes.end(), pLiteral), 1);
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
    const char* cnfEnv;
    const char* uniqueEnv;
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
}

TEST(ComplexityTest, TheDisjunctiveFormHasALimitOfItsOwn) {
  const OwnedRqExprCondPtr clauses = ParseCond("!(" + Pairs(10, 18, false) + ")");  // a score of 1024
  const OwnedRqExprCondPtr more = ParseCond("a=1 | !(" + Pairs(10, 18, false) + ")");
  using Dnf = ToDNFDisjuncts;
  EXPECT_FALSE(Dnf::IsCondTooComplicatedToConvert(*clauses, -1));
  EXPECT_TRUE(Dnf::IsCondTooComplicatedToConvert(*more, -1));
  EXPECT_TRUE(Dnf::IsCondTooComplicatedToConvert(*clauses, 1023));
  EXPECT_FALSE(Dnf::IsCondTooComplicatedToConvert(*more, 0));
  ScopedEnv env;
  env.Set(kDnfLimit, "1025");
  EXPECT_FALSE(Dnf::IsCondTooComplicatedToConvert(*more, -1));
  EXPECT_TRUE(Dnf::IsCondTooComplicatedToConvert(*more, 1024));
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

  const OwnedRqExprCondPtr below = ParseCond("(" + Pairs(9, 18, false) + ") & a>3");
  ToCNF forcedBelow;
  forcedBelow.GenerateCNF(*below, true, true, 0);
  conjuncts.clear();
  forcedBelow.GetConjuncts(conjuncts);
  EXPECT_FALSE(forcedBelow.GetConversionSuccess());
  EXPECT_EQ(CondTexts(conjuncts), "3<a") << "force ends at the top";
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
  struct {
    std::string cond;
    bool bInCNF;
  } const rows[] = {
      {"a=1", true},
      {"!a=1", true},
      {"a=1 & (b=1 | !c=1 | d=1)", true},
      {"a=1 | (b=1 & c=1)", false},
      {"!(a=1 & b=1)", false},
      {"(a=1 | !(b=1 | c=1)) & d=1", false},
      {"Wrap(a=1 & b=1) | c=1", true},
  };
  for (const auto& row : rows) EXPECT_EQ(ToCNF::IsCondInCNF(ParseCond(row.cond).Get()), row.bInCNF) << row.cond;
  EXPECT_DEATH(ToCNF::IsCondInCNF(nullptr), "pCond");
}

// ---------------------------------------------------------------------------------------------------------------------
// Random conditions

class RandomConds {
 public:
  explicit RandomConds(unsigned seed) : m_random(seed) {}

  std::string Make() { return MakeCond(3); }

 private:
  int UpTo(int last) { return std::uniform_int_distribution<int>(0, last)(m_random); }
  std::string Column() { return std::string(1, "abcd"[UpTo(3)]); }
  std::string Operand() { return UpTo(4) == 0 ? Column() : std::to_string(UpTo(3)); }

  std::string MakeCond(int depth) {
    if (depth == 0 || UpTo(4) == 0) return MakeAtom();
    if (UpTo(4) == 0) return "!(" + MakeCond(depth - 1) + ")";
    const char* const connective = UpTo(1) == 0 ? " & " : " | ";
    std::string text = "(" + MakeCond(depth - 1) + ")";
    for (int i = UpTo(1); i >= 0; --i) text += connective + ("(" + MakeCond(depth - 1) + ")");
    return text;
  }
  std::string MakeAtom() {
    static const char* const kOperators[] = {"=", "==", "<>", "<", "<=", ">", ">="};
    const std::string column = Column();
    switch (UpTo(9)) {
      case 0:
        return UpTo(1) == 0 ? "IsNull(" + column + ")" : "NotNull(" + column + ")";
      case 1:
        return (UpTo(1) == 0 ? "Between(" : "NotBetween(") + column + "," + Operand() + "," + Operand() + ")";
      case 2: {
        std::string list = (UpTo(1) == 0 ? "In(" : "NotIn(") + column;
        for (int i = UpTo(2); i >= 0; --i) list += "," + Operand();
        return list + ")";
      }
      case 3:
        return (UpTo(1) == 0 ? "Like(" : "NotLike(") + column + "," + Operand() + ")";
      default:
        return column + kOperators[UpTo(6)] + Operand();
    }
  }

  std::mt19937 m_random;
};

/// Whether folding changes truth values of some rows (see the table above): of those with nulls, or of any.
struct Folds {
  bool bNulls = false;
  bool bLostTruth = false;
};
void FindFolds(const RqExprCond& cond, bool bUnderOr, Folds& folds) {
  if (!cond.IsAndCond() && !cond.IsOrCond()) {
    const auto isConstant = [&cond](int i) { return cond.GetIthOperand(i)->IsConstant(); };
    if (cond.IsAlwaysTrue() && !(cond.IsEqualityPredicate() && isConstant(0) && isConstant(1))) folds.bNulls = true;
    if (cond.IsNotConnective() && cond.IsAlwaysFalse()) folds.bNulls = true;
    return;
  }
  const auto& left = static_cast<const RqExprCond&>(*cond.GetIthOperand(0));
  const auto& right = static_cast<const RqExprCond&>(*cond.GetIthOperand(1));
  if (cond.IsAndCond() && cond.IsAlwaysFalse() && !left.IsAlwaysFalse() && !right.IsAlwaysFalse()) folds.bNulls = true;
  if (cond.IsOrCond() && cond.IsAlwaysTrue() && !left.IsAlwaysTrue() && !right.IsAlwaysTrue()) folds.bNulls = true;
  if (cond.IsAndCond() && cond.IsAlwaysTrue() && bUnderOr) folds.bLostTruth = true;
  FindFolds(left, cond.IsOrCond(), folds);
  FindFolds(right, cond.IsOrCond(), folds);
}

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

/// The clauses of a text as sets of atoms. Those are left out that a shorter one makes redundant, and those of an atom
/// and its negation: a second conversion finds those that the first has left.
std::set<std::string> ClauseSet(const std::string& texts, const std::string& separator) {
  const auto split = [](const std::string& text, const std::string& by) {
    std::set<std::string> parts;
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = std::min(text.find(by, begin), text.size());
      parts.insert(text.substr(begin, end - begin));
      begin = end + by.size();
    }
    return parts;
  };
  std::vector<std::set<std::string>> clauses;
  for (const std::string& text : split(texts, "; ")) {
    const std::set<std::string> atoms = split(text, separator);
    const auto isNegatedToo = [&atoms](const std::string& atom) { return atoms.contains("!" + atom); };
    if (std::none_of(atoms.begin(), atoms.end(), isNegatedToo)) clauses.push_back(atoms);
  }
  std::set<std::string> result;
  for (const std::set<std::string>& clause : clauses) {
    const auto absorbs = [&clause](const std::set<std::string>& other) {
      return other.size() < clause.size() && std::includes(clause.begin(), clause.end(), other.begin(), other.end());
    };
    if (std::any_of(clauses.begin(), clauses.end(), absorbs)) continue;
    std::string text;
    for (const std::string& atom : clause) text += atom + ";";
    result.insert(text);
  }
  return result;
}

/// A form converted once more has the same clauses.
void CheckSecondConversion(const Forms& forms) {
  ToCNF toCNF;
  const OwnedRqExprCondPtr cnf(toCNF(*forms.cnf));
  ConstRqExprVector conjuncts;
  toCNF.GetConjuncts(conjuncts);
  ToCNFConjuncts toCNFConjuncts;
  toCNFConjuncts.GenerateOwnedCNFConjuncts(*forms.cnf, true);
  OwnedRqExprCondVector ownedConjuncts;
  toCNFConjuncts.ReleaseConjuncts(ownedConjuncts);
  const std::set<std::string> first = ClauseSet(CondTexts(forms.ownedConjuncts), " | ");
  EXPECT_EQ(ClauseSet(CondTexts(conjuncts), " | "), first);
  EXPECT_EQ(ClauseSet(CondTexts(ownedConjuncts), " | "), first);

  OwnedRqExprCondPtr dnf;
  for (const auto& disjunct : forms.disjuncts) {
    dnf = RqExprCondOr::Concatenate(dnf.Release(), static_cast<RqExprCond*>(disjunct->DeepExprCopy(false)));
  }
  ToDNFDisjuncts toDNFDisjuncts;
  toDNFDisjuncts.GenerateOwnedDNFDisjuncts(*dnf, true);
  OwnedRqExprCondVector disjuncts;
  toDNFDisjuncts.ReleaseDisjuncts(disjuncts);
  EXPECT_EQ(ClauseSet(CondTexts(disjuncts), " & "), ClauseSet(CondTexts(forms.disjuncts), " & "));
}

TEST(NormalFormTest, RandomConditionsKeepTheirMeaningAndBecomeFlat) {
  constexpr unsigned kSeed = 1970;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  constexpr int kMaxDisjuncts = 64;
  RandomConds random(kSeed);
  int compared = 0;
  for (int i = 0; i < 600; ++i) {
    const std::string text = random.Make();
    SCOPED_TRACE(text);
    const OwnedRqExprCondPtr cond = ParseCond(text);
    InwardNegationForm inwardNegationForm;
    cond->TourExpr(inwardNegationForm);
    EXPECT_EQ(FirstDifference(*cond, inwardNegationForm.GetInwardNegationExpr(), true), "");
    Folds folds;
    FindFolds(*inwardNegationForm.GetInwardNegationExpr(), false, folds);
    if (ToCNF::IsCondTooComplicated(*cond, -1) || folds.bLostTruth ||
        ToDNFDisjuncts::IsCondTooComplicatedToConvert(*cond, kMaxDisjuncts)) {
      continue;
    }
    const Forms forms = Convert(*cond);
    if (!forms.bCnfSuccess) continue;
    ++compared;
    EXPECT_TRUE(forms.bOwnedSuccess);
    EXPECT_EQ(FirstDifference(*cond, forms.cnf.Get(), !folds.bNulls), "");
    EXPECT_EQ(FirstDifference(*cond, forms.ownedConjuncts, true, !folds.bNulls), "");
    if (!forms.disjuncts.empty()) {
      EXPECT_EQ(FirstDifference(*cond, forms.disjuncts, false, !folds.bNulls), "");
    }
    if (forms.cnf) {
      EXPECT_TRUE(ToCNF::IsCondInCNF(forms.cnf.Get()));
    }
    for (const auto& conjunct : forms.ownedConjuncts) EXPECT_TRUE(IsFlat(*conjunct, kRqExprCondOr));
    for (const auto& disjunct : forms.disjuncts) EXPECT_TRUE(IsFlat(*disjunct, kRqExprCondAnd));
    const OwnedRqExprCondPtr copy(static_cast<RqExprCond*>(cond->DeepExprCopy(true)));
    const Forms ofCopy = Convert(*copy);
    EXPECT_EQ(CondText(ofCopy.cnf.Get()), CondText(forms.cnf.Get()));
    EXPECT_EQ(CondTexts(ofCopy.ownedConjuncts), CondTexts(forms.ownedConjuncts));
    EXPECT_EQ(CondTexts(ofCopy.disjuncts), CondTexts(forms.disjuncts));
    // What is left of a fold may fold in its new place.
    if (!folds.bNulls && forms.cnf) CheckSecondConversion(forms);
    if (HasFailure()) break;
  }
  EXPECT_GT(compared, 550);
}

}  // namespace
