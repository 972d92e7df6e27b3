#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Host/BaseStringUtil.h"
#include "Host/KXThread.h"
#include "Host/SystemUtility.h"
#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "SQORBitClauseToRqExprCond.h"
#include "SQORDistribute.h"
#include "SQORRqExprCondToBitClause.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Limits

struct Setting {
  const char* m_name;
  unsigned m_default;
};
constexpr Setting kCnfComplexityLimit{"TELMA_CNF_COMPLEXITY_LIMIT", 512};
constexpr Setting kCnfUniqueConditionLimit{"TELM_CNF_UNIQUE_CONDITION_LIMIT", 16};
constexpr Setting kDnfComplexityLimit{"TELMA_DNF_COMPLEXITY_LIMIT", 1024};

unsigned ReadSetting(const Setting& setting) {
  KXString value;
  if (!SystemUtility::Getenv(setting.m_name, value)) return setting.m_default;
  return BaseStringUtil::UIntFrom(value).value_or(setting.m_default);
}

/// Whether the estimated number of clauses is above the limit: the one given, or the setting's if that is negative.
bool IsScoreAboveLimit(const RqExprCond& cond, bool bNegated, int complexityLimit, const Setting& setting) {
  std::uint32_t limit = complexityLimit >= 0 ? static_cast<std::uint32_t>(complexityLimit) : ReadSetting(setting);
  return limit != 0 && InwardNegationForm::CheckComplexityScore(&cond, bNegated, limit) > limit;
}

const RqExprCond* CondOperand(const RqExprCond& cond, int i) {
  return static_cast<const RqExprCond*>(cond.GetIthOperand(i));
}

/// Whether the condition has more distinct atoms than limit. Ends with the first that is one too many.
bool CheckComplexityUniqueConds(const RqExprCond& cond, ConstRqExprSet& atoms, std::size_t limit) {
  KXThread::LowStackCheck(0);
  if (!cond.IsAndCond() && !cond.IsOrCond() && !cond.IsNotConnective()) {
    return atoms.insert(&cond).second && atoms.size() > limit;
  }
  for (int i = 0; i < cond.GetNumOperands(); ++i) {
    if (CheckComplexityUniqueConds(*CondOperand(cond, i), atoms, limit)) return true;
  }
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Harvest

bool HasAndInside(const RqExprCond& cond) {
  return FoundNodes(&cond, [](const RqNode& node) {
    KXThread::LowStackCheck(0);
    return node.GetObjectType() == kRqExprCondAnd;
  });
}

bool IsCondInCNF(const RqExprCond& cond, bool bUnderOr, bool bUnderNot) {
  KXThread::LowStackCheck(0);
  const auto operandIsInCNF = [&cond](int i, bool bOperandUnderOr, bool bOperandUnderNot) {
    return IsCondInCNF(*CondOperand(cond, i), bOperandUnderOr, bOperandUnderNot);
  };
  if (cond.IsAndCond()) {
    return !bUnderOr && !bUnderNot && operandIsInCNF(0, false, false) && operandIsInCNF(1, false, false);
  }
  if (cond.IsOrCond()) return !bUnderNot && operandIsInCNF(0, true, bUnderNot) && operandIsInCNF(1, true, bUnderNot);
  if (cond.IsNotConnective()) return !bUnderNot && operandIsInCNF(0, bUnderOr, true);
  return true;
}

/// Calls function with each leaf of the spine that the predicate makes out, left to right. Cond is const or not.
template <class Cond, class IsSpine, class Function>
void ForEachLeaf(Cond* pCond, IsSpine isSpine, Function function) {
  KXThread::LowStackCheck(0);
  if (!isSpine(*pCond)) {
    function(pCond);
    return;
  }
  for (int i = 0; i < pCond->GetNumOperands(); ++i) {
    ForEachLeaf(static_cast<Cond*>(pCond->GetIthOperand(i)), isSpine, function);
  }
}

RqExprCond* CopyCond(const RqExpr& cond) { return static_cast<RqExprCond*>(cond.DeepExprCopy(false)); }

// ---------------------------------------------------------------------------------------------------------------------
// Conversion

/// Lets the visitor see the condition as a clause. Appends the distinct atoms to literals, and gives the tree that they
/// stand in.
OwnedRqExprCondPtr VisitBitClause(const RqExprCond& cond, bool bConvertCondIn, RqExprCondVector& literals,
                                  BitClauseVisitor& visitor) {
  InwardNegationForm inwardNegationForm(bConvertCondIn);
  // A tour takes what it visits by a reference to change it; this visitor changes nothing.
  const_cast<RqExprCond&>(cond).TourExpr(inwardNegationForm);
  const RqExprVector& atoms = inwardNegationForm.GetLiteralExprs();
  LiteralIndexMap literalIndexMap;
  literals.reserve(literals.size() + atoms.size());
  std::for_each(atoms.begin(), atoms.end(), BuildLiteralIndexMap(literalIndexMap, literals));

  OwnedRqExprCondPtr inwardForm(inwardNegationForm.ReleaseInwardNegationForm());
  RqExprCondToBitClause condToBitClause(literalIndexMap);
  inwardForm->TourExpr(condToBitClause);
  condToBitClause.GetBitClause()->Accept(visitor);
  return inwardForm;
}

}  // namespace

RqExprCond* GenerateBitClauses(const RqExprCond& cond, bool bForceCNFConversion, RqExprCondVector& literals,
                               BitClauseConjunction& result, bool& bSuccess, bool bConvertCondIn) {
  Distribute distribute(bForceCNFConversion);
  OwnedRqExprCondPtr inwardForm = VisitBitClause(cond, bConvertCondIn, literals, distribute);
  bSuccess = distribute.GetConversionSuccess();
  std::move(distribute).GetCNFConjunction(result);
  return inwardForm.Release();
}

bool HarvestLeafConjuncts(const RqExprCond* cond, ConstRqExprVector& out, bool& bDuplicateFound,
                          bool bIgnoreNestedAnd) {
  KXThread::LowStackCheck(0);
  if (cond->IsAndCond()) {
    return HarvestLeafConjuncts(CondOperand(*cond, RqExprCondAnd::kLeftOperand), out, bDuplicateFound,
                                bIgnoreNestedAnd) &&
           HarvestLeafConjuncts(CondOperand(*cond, RqExprCondAnd::kRightOperand), out, bDuplicateFound,
                                bIgnoreNestedAnd);
  }
  if (!bIgnoreNestedAnd && (cond->IsOrCond() || cond->IsNotConnective()) && HasAndInside(*cond)) {
    out.clear();
    return false;
  }
  const RqEquivalence equivalent;
  if (std::any_of(out.begin(), out.end(), [&](const RqExpr* pOther) { return equivalent(*pOther, *cond); })) {
    bDuplicateFound = true;
  } else {
    out.push_back(cond);
  }
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// ToCNF

RqExprCond* ToCNF::operator()(const RqExprCond& cond) {
  GenerateCNF(cond, false, true, kLimitOfEnvironment);
  return m_exprCNF.Release();
}

void ToCNF::GenerateCNF(const RqExprCond& cond, bool bForceCNFConversion, bool bConvertCondIn, int complexityLimit) {
  if (IsCondTooComplicated(cond, complexityLimit)) {
    TakeConjunctsAsTheyStand(cond);
    return;
  }
  RqExprCondVector literals;
  BitClauseConjunction clause(0);
  const OwnedRqExprCondPtr inwardForm(
      GenerateBitClauses(cond, bForceCNFConversion, literals, clause, m_bConversionSuccess, bConvertCondIn));
  BitClauseToRqExprCond toRqExprCond(literals);
  toRqExprCond.Visit(clause);
  m_exprCNF = toRqExprCond.ReleaseExprCond();
  m_conjuncts.assign(toRqExprCond.GetConjuncts().begin(), toRqExprCond.GetConjuncts().end());
}

void ToCNF::TakeConjunctsAsTheyStand(const RqExprCond& cond) {
  bool bDuplicateFound = false;
  HarvestLeafConjuncts(&cond, m_conjuncts, bDuplicateFound, false);
  m_bConversionSuccess = !m_conjuncts.empty();
  if (!m_bConversionSuccess) return;
  if (!bDuplicateFound) {
    m_exprCNF = CopyCond(cond);
    return;
  }
  OwnedRqExprCondPtr distinct;
  for (const RqExpr* const pConjunct : m_conjuncts) {
    distinct = RqExprCondAnd::Concatenate(distinct.Release(), CopyCond(*pConjunct));
  }
  m_exprCNF = std::move(distinct);
}

void ToCNF::GetConjuncts(ConstRqExprVector& conjuncts) const {
  conjuncts.insert(conjuncts.end(), m_conjuncts.begin(), m_conjuncts.end());
}

void ToCNF::GetConjuncts(std::vector<const RqExprCond*>& conjuncts) const {
  for (const RqExpr* const pConjunct : m_conjuncts) conjuncts.push_back(static_cast<const RqExprCond*>(pConjunct));
}

bool ToCNF::IsCondTooComplicated(const RqExprCond& cond, int complexityLimit) {
  if (!IsScoreAboveLimit(cond, false, complexityLimit, kCnfComplexityLimit)) return false;
  ConstRqExprSet atoms;
  return CheckComplexityUniqueConds(cond, atoms, ReadSetting(kCnfUniqueConditionLimit));
}

bool ToCNF::IsCondInCNF(const RqExprCond* pCond) {
  KX_ASSERT(pCond);
  return ::IsCondInCNF(*pCond, false, false);
}

void ToCNF::HarvestConjuncts(const RqExprCond* pCond, ConstRqExprVector& conjuncts) {
  ForEachLeaf(
      pCond, [](const RqExprCond& cond) { return cond.IsAndCond(); },
      [&conjuncts](const RqExprCond* pLeaf) { conjuncts.push_back(pLeaf); });
}

void ToCNF::HarvestDisjuncts(const RqExprCond* pCond, ConstRqExprVector& disjuncts) {
  ForEachLeaf(
      pCond, [](const RqExprCond& cond) { return cond.IsOrCond(); },
      [&disjuncts](const RqExprCond* pLeaf) { disjuncts.push_back(pLeaf); });
}

void ToCNF::HarvestDisjunctivePredicates(const RqExprCond* pCond, ConstRqExprVector& predicates) {
  ForEachLeaf(
      pCond, [](const RqExprCond& cond) { return cond.IsOrCond() || cond.IsNotConnective(); },
      [&predicates](const RqExprCond* pLeaf) { predicates.push_back(pLeaf); });
}

void ToCNF::GatherCandidateCondsForAtomicCondWrap(RqExprCond* pCond, RqExprCondVector& candidates) {
  ForEachLeaf(
      pCond, [](const RqExprCond& cond) { return cond.IsAndCond(); },
      [&candidates](RqExprCond* pLeaf) {
        if (!IsCondInCNF(pLeaf)) candidates.push_back(pLeaf);
      });
}

// ---------------------------------------------------------------------------------------------------------------------
// ToCNFConjuncts

void ToCNFConjuncts::GenerateOwnedCNFConjuncts(const RqExprCond& cond, bool bConvertCondIn) {
  if (ToCNF::IsCondTooComplicated(cond, ToCNF::kLimitOfEnvironment)) {
    CopyConjunctsAsTheyStand(cond);
    return;
  }
  RqExprCondVector literals;
  BitClauseConjunction clause(0);
  const OwnedRqExprCondPtr inwardForm(
      GenerateBitClauses(cond, false, literals, clause, m_bConversionSuccess, bConvertCondIn));
  BitClauseToConjuncts toConjuncts(literals);
  toConjuncts.Visit(clause);
  toConjuncts.ReleaseTerms(m_ownedConjuncts);
  if (m_bConversionSuccess) return;
  m_ownedConjuncts.clear();
  m_ownedConjuncts.emplace_back(static_cast<RqExprCond*>(cond.DeepExprCopy(true)));
}

void ToCNFConjuncts::CopyConjunctsAsTheyStand(const RqExprCond& cond) {
  ConstRqExprVector conjuncts;
  bool bDuplicateFound = false;
  HarvestLeafConjuncts(&cond, conjuncts, bDuplicateFound, false);
  m_bConversionSuccess = !conjuncts.empty();
  if (!m_bConversionSuccess) ToCNF::HarvestConjuncts(&cond, conjuncts);
  for (const RqExpr* const pConjunct : conjuncts) m_ownedConjuncts.emplace_back(CopyCond(*pConjunct));
}

void ToCNFConjuncts::ReleaseConjuncts(OwnedRqExprCondVector& conjuncts) {
  conjuncts = std::exchange(m_ownedConjuncts, {});
}

// ---------------------------------------------------------------------------------------------------------------------
// ToDNFDisjuncts

void ToDNFDisjuncts::GenerateOwnedDNFDisjuncts(const RqExprCond& cond, bool bConvertCondIn) {
  RqExprCondVector literals;
  DistributeDNF distribute;
  const OwnedRqExprCondPtr inwardForm = VisitBitClause(cond, bConvertCondIn, literals, distribute);
  BitClauseDisjunction clause(0);
  std::move(distribute).GetDNFDisjunction(clause);
  BitClauseToDisjuncts toDisjuncts(literals);
  toDisjuncts.Visit(clause);
  toDisjuncts.ReleaseTerms(m_ownedDisjuncts);
}

void ToDNFDisjuncts::ReleaseDisjuncts(OwnedRqExprCondVector& disjuncts) {
  disjuncts = std::exchange(m_ownedDisjuncts, {});
}

bool ToDNFDisjuncts::IsCondTooComplicatedToConvert(const RqExprCond& cond, int complexityLimit) {
  return IsScoreAboveLimit(cond, true, complexityLimit, kDnfComplexityLimit);
}
