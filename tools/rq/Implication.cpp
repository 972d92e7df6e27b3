#include "rq/Implication.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/KnownConditions.h"
#include "rq/RowIns.h"
#include "rq/eval/RowSearch.h"

namespace {

std::string TextOf(const RqExpr* pExpr) { return RqDumpout::StringFrom(pExpr).ToUTF8(); }

struct Pair {
  ARpGateway* m_pRp;
  OwnedRqExprCondPtr m_a;
  OwnedRqExprCondPtr m_b;
  bool m_bImplied = false;
  bool m_bEquivalent = false;

  Pair(ARpGateway* pRp, OwnedRqExprCondPtr a, OwnedRqExprCondPtr b) : m_pRp(pRp), m_a(a), m_b(b) {
    ExpandNegatedRowIns(m_a);
    ExpandNegatedRowIns(m_b);
    m_bImplied = ExprSubsumptionTester::IsSubsumedBy(m_pRp, m_a.Get(), m_b.Get(), m_bEquivalent);
  }
};

// ---------------------------------------------------------------------------------------------------------------------
// Conjuncts

/// A condition in the form that the test for implication works on.
class Conjuncts {
 public:
  explicit Conjuncts(const RqExprCond& cond) {
    m_toCNF.GenerateCNF(cond, false, true, -1);
    if (m_toCNF.GetConversionSuccess()) m_toCNF.GetConjuncts(m_conjuncts);
  }

  bool IsConverted() const { return m_toCNF.GetConversionSuccess(); }
  const ConstRqExprVector& Get() const { return m_conjuncts; }

 private:
  ToCNF m_toCNF;
  ConstRqExprVector m_conjuncts;
};

/// The first conjunct of b that none of a implies; null if there is none.
const RqExpr* FindUncovered(ARpGateway* pRp, const Conjuncts& a, const Conjuncts& b) {
  const auto isCovered = [&](const RqExpr* pConjunct) {
    bool bEquivalent = false;
    return std::ranges::any_of(
        a.Get(), [&](const RqExpr* pOther) { return IsContainedBy(pRp, pOther, pConjunct, bEquivalent); });
  };
  const auto it = std::ranges::find_if_not(b.Get(), isCovered);
  return it == b.Get().end() ? nullptr : *it;
}

/// Why the library could not show it.
std::string ReasonText(const Conjuncts& a, const Conjuncts& b, const RqExpr* pUncovered) {
  for (const auto& [pConjuncts, pName] : {std::pair(&a, "A"), std::pair(&b, "B")}) {
    if (!pConjuncts->IsConverted()) return std::string(pName) + " is too complicated to be taken apart\n";
  }
  if (pUncovered) return "no conjunct of A implies: " + TextOf(pUncovered) + '\n';
  return "A has fewer conjuncts than B, " + std::to_string(a.Get().size()) + " and " + std::to_string(b.Get().size()) +
         ", and is then not taken to imply it\n";
}

// ---------------------------------------------------------------------------------------------------------------------
// Rows

std::string RowText(const ConditionEvaluator& evaluator, const std::vector<RowValue>& row) {
  std::string text;
  for (std::size_t i = 0; i < row.size(); ++i) {
    text += "    " + TextOf(evaluator.GetVariables()[i]) + " = " + row[i].ToText() + '\n';
  }
  return text;
}

/// A row that satisfies a and not b, or what became of the search for one.
struct Evidence {
  std::string m_text;
  bool m_bSought = true;
  std::vector<RowValue> m_row = {};
  bool m_bFound = false;
};

Evidence FindEvidence(const Pair& pair, const RqExpr* pFirst, std::uint64_t maxSteps) {
  ConditionEvaluator evaluator(pair.m_pRp);
  if (!evaluator.Learn(*pair.m_a) || !evaluator.Learn(*pair.m_b)) {
    return {"no row was looked for: " + TextOf(evaluator.GetUnsupported()) + " cannot be evaluated here\n", false};
  }
  const RowSearchResult result = FindRow(evaluator, *pair.m_a, *pair.m_b, pFirst, maxSteps);
  switch (result.m_outcome) {
    case RowSearchResult::Outcome::kFound:
      return {"this row satisfies A and not B:\n" + RowText(evaluator, result.m_row), true, result.m_row, true};
    case RowSearchResult::Outcome::kNone:
      return {"no row over the values of the conditions, their neighbours and NULL satisfies A and not B\n"};
    case RowSearchResult::Outcome::kStopped:
      return {"the search for a row that satisfies A and not B stopped after " + std::to_string(result.m_nSteps) +
              " comparisons\n"};
  }
  return {};
}

// ---------------------------------------------------------------------------------------------------------------------
// Where the library's answer is not SQL's

constexpr const char* kConstantsDiffer = "constants that are written differently are taken to differ";
constexpr const char* kNullsLeftOut = "what holds for all values is taken to hold for NULL";
constexpr const char* kBlanksLeftOut = "texts that differ in blanks at the end are taken for the same";

/// What the library takes for known of a pair, and what that is in a row.
class KnownOfPair {
 public:
  /// Of no row, if it is empty.
  KnownOfPair(const Pair& pair, const std::vector<RowValue>& row) : m_ofA(*pair.m_a), m_ofB(*pair.m_b) {
    ConditionEvaluator evaluator(pair.m_pRp);
    // Variables get the numbers that they had in the search.
    if (evaluator.Learn(*pair.m_a)) static_cast<void>(evaluator.Learn(*pair.m_b));
    for (const KnownAtoms* const pAtoms : {&m_ofA, &m_ofB}) {
      for (const RqExprCond* const pAtom : pAtoms->Get()) {
        const TruthSet truth = EvaluateAtom(*pAtom, evaluator, {row.begin(), row.end()});
        const bool bIsNull = pAtom->GetObjectType() == kRqExprCondIsNull;
        m_bHasEqualConstants |= !bIsNull && pAtom->IsAlwaysFalse() && truth.MayBeTrue();
        m_bHasUnknown |= truth == TruthSet::Unknown();
      }
    }
  }

  /// Constants that were taken for two values, and may be one.
  bool HasEqualConstants() const { return m_bHasEqualConstants; }
  /// What is unknown.
  bool HasUnknown() const { return m_bHasUnknown; }

 private:
  KnownAtoms m_ofA;
  KnownAtoms m_ofB;
  bool m_bHasEqualConstants = false;
  bool m_bHasUnknown = false;
};

/// The library takes a value compared with itself, and a condition or its negation, for true, constants of one kind
/// that are written differently for different values, and texts that differ in blanks at the end for the same. Where
/// the difference shows soon, a row tells it.
std::string ExceptionText(const Pair& pair) {
  constexpr std::uint64_t kMaxSteps = 20'000;
  const Evidence evidence = FindEvidence(pair, nullptr, kMaxSteps);
  if (evidence.m_bSought && !evidence.m_bFound) return {};
  const KnownOfPair known(pair, evidence.m_row);
  // What is the same implies itself, whatever it is.
  if (!evidence.m_bFound && (!known.HasEqualConstants() || RqEquivalence()(*pair.m_a, *pair.m_b))) return {};
  const bool bHasNull = known.HasUnknown() || std::ranges::any_of(evidence.m_row, &RowValue::IsNull);
  const char* const pReason = known.HasEqualConstants() ? kConstantsDiffer : bHasNull ? kNullsLeftOut : kBlanksLeftOut;
  return std::string("but ") + pReason + ", and " + evidence.m_text;
}

}  // namespace

ImplicationAnswer ImplicationAsJson(ARpGateway* pRp, OwnedRqExprCondPtr a, OwnedRqExprCondPtr b) {
  const Pair pair(pRp, a, b);
  const nlohmann::ordered_json object{{"implied", pair.m_bImplied}, {"equivalent", pair.m_bEquivalent}};
  return {pair.m_bImplied, object.dump() + '\n'};
}

ImplicationAnswer ImplicationAsText(ARpGateway* pRp, OwnedRqExprCondPtr a, OwnedRqExprCondPtr b,
                                    std::uint64_t maxSteps) {
  const Pair pair(pRp, a, b);
  if (pair.m_bImplied) {
    return {true, std::string(pair.m_bEquivalent ? "implied, equivalent\n" : "implied\n") + ExceptionText(pair)};
  }
  const Conjuncts conjunctsOfA(*pair.m_a);
  const Conjuncts conjunctsOfB(*pair.m_b);
  const RqExpr* const pUncovered = FindUncovered(pRp, conjunctsOfA, conjunctsOfB);
  const Evidence evidence = FindEvidence(pair, pUncovered, maxSteps);
  return {false, (evidence.m_bFound ? "not implied\n" : "not shown\n") +
                     ReasonText(conjunctsOfA, conjunctsOfB, pUncovered) + evidence.m_text};
}
