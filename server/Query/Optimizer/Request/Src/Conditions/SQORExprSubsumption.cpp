#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"

#include <algorithm>
#include <optional>

#include "Host/KXThread.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

/// Whether both have one value in every row: the same form, and aggregates the same share base too.
bool AreSameExpr(const RqExpr& lhs, const RqExpr& rhs) { return RqEquivalenceShareBase()(lhs, rhs); }

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Comparisons of a column with a constant

namespace {

TypedFieldValue ExtractConstantFromVector(const PropertyValueStringVector& values, int byIndex) {
  if (byIndex < 0) return {values.StringFrom(), false};
  const auto index = static_cast<std::size_t>(byIndex);
  const KXStringVector& strings = values.GetStrings();
  return {index < strings.size() ? strings[index] : KXString(), false};
}

const RqExpr* FindConstantSide(const RqExpr& comparison, bool bConstant) {
  for (int i = 0; i < comparison.GetNumOperands(); ++i) {
    const RqExpr* const pOperand = comparison.GetIthOperand(i);
    if (pOperand->IsConstant() == bConstant) return pOperand;
  }
  return nullptr;
}

/// c op column  =>  column op' c
RqNodeType_e FlipComparison(RqNodeType_e op) {
  switch (op) {
    case kRqExprCondLess:
      return kRqExprCondGreater;
    case kRqExprCondGreater:
      return kRqExprCondLess;
    default:
      return op;
  }
}

RqNodeType_e NegateInequality(RqNodeType_e op) {
  return op == kRqExprCondLess ? kRqExprCondGreaterEqual : kRqExprCondLessEqual;
}

bool IsInequality(const RqExpr& expr) {
  return expr.GetObjectType() == kRqExprCondLess || expr.GetObjectType() == kRqExprCondGreater;
}

/// The comparison of a condition, below a Not or not; null if it is none that is read.
const RqExpr* FindComparison(const RqExpr& cond, bool& bUnderNot) {
  bUnderNot = cond.GetObjectType() == kRqExprCondNot;
  if (!bUnderNot) return cond.GetObjectType() == kRqExprCondEquality || IsInequality(cond) ? &cond : nullptr;
  const RqExpr* const pInner = cond.GetIthOperand(RqExprCondNot::kOperand);
  KX_ASSERT(pInner != NULL);
  return IsInequality(*pInner) ? pInner : nullptr;
}

}  // namespace

TypedFieldValue ExprSubsumptionTester::ExtractConstantFromLiteral(const RqExprLiteral* pLiteral) {
  if (!pLiteral) return {};
  if (pLiteral->IsStringLiteral()) return {static_cast<const RqExprStringLiteral*>(pLiteral)->GetString(), false};
  if (pLiteral->IsIntegerLiteral()) return {static_cast<const RqExprIntegerLiteral*>(pLiteral)->GetValue(), false};
  if (pLiteral->IsFloatLiteral()) return {static_cast<const RqExprFloatLiteral*>(pLiteral)->GetValue(), false};
  if (pLiteral->IsDateLiteral()) return {static_cast<const RqExprDateLiteral*>(pLiteral)->GetDateValue(), false};
  if (pLiteral->IsTimeLiteral()) return {static_cast<const RqExprTimeLiteral*>(pLiteral)->GetTimeValue(), false};
  if (pLiteral->IsDateTimeLiteral()) {
    return {static_cast<const RqExprDateTimeLiteral*>(pLiteral)->GetDateTimeValue(), false};
  }
  return {};
}

TypedFieldValue ExprSubsumptionTester::ExtractConstantFromSessionVar(ARpGateway* pRp,
                                                                     const RqExprSessionVar* pSessionVar) {
  const OwnedPropertyValue value = pSessionVar->GetValue(pRp);
  switch (value->GetType()) {
    case PropertyValue::Integer:
      return {static_cast<const PropertyValueInteger&>(*value).GetInteger(), false};
    case PropertyValue::String:
      return {static_cast<const PropertyValueString&>(*value).GetString(), false};
    case PropertyValue::Float:
      return {static_cast<const PropertyValueFloat&>(*value).GetFloat(), false};
    case PropertyValue::Date:
      return {static_cast<const PropertyValueDate&>(*value).GetDate(), false};
    case PropertyValue::Time:
      return {static_cast<const PropertyValueTime&>(*value).GetTime(), false};
    case PropertyValue::DateTime:
      return {static_cast<const PropertyValueDateTime&>(*value).GetDateTime(), false};
    case PropertyValue::Number:
      return {static_cast<const PropertyValueNumber&>(*value).GetNumber(), false};
    case PropertyValue::StringVector:
      return ExtractConstantFromVector(static_cast<const PropertyValueStringVector&>(*value),
                                       pSessionVar->GetByIndex());
  }
  return {};
}

const RqExpr* ExtractConstantOperand(const RqExpr* pBinaryOperator) {
  KX_ASSERT(pBinaryOperator->GetNumOperands() == 2);
  return FindConstantSide(*pBinaryOperator, true);
}

const RqExpr* ExtractNonConstantOperand(const RqExpr* pBinaryOperator) {
  KX_ASSERT(pBinaryOperator->GetNumOperands() == 2);
  return FindConstantSide(*pBinaryOperator, true) ? FindConstantSide(*pBinaryOperator, false) : nullptr;
}

bool ExtractColexprOpConstant(ARpGateway* pRp, const RqExpr* expr, const RqExpr*& column, TypedFieldValue& value,
                              RqNodeType_e& op) {
  column = nullptr;
  if (!expr->IsCond()) return false;
  bool bUnderNot = false;
  const RqExpr* const pCond = FindComparison(*expr, bUnderNot);
  if (!pCond) return false;
  KX_ASSERT(pCond->GetNumOperands() == 2);
  const RqExpr* const pConstant = ExtractConstantOperand(pCond);
  if (!pConstant) return false;

  const bool bConstantIsRight = pConstant == pCond->GetIthOperand(RqExprCondLess::kRightOperand);
  op = bConstantIsRight ? pCond->GetObjectType() : FlipComparison(pCond->GetObjectType());
  if (bUnderNot) op = NegateInequality(op);
  column = ExtractNonConstantOperand(pCond);
  if (!column) return false;
  if (pConstant->IsLiteral()) {
    value = ExprSubsumptionTester::ExtractConstantFromLiteral(static_cast<const RqExprLiteral*>(pConstant));
  } else if (pConstant->GetObjectType() == kRqExprSessionVar) {
    value = ExprSubsumptionTester::ExtractConstantFromSessionVar(pRp, static_cast<const RqExprSessionVar*>(pConstant));
  }
  return value.GetKXDataType() != KXUnknown;
}

// ---------------------------------------------------------------------------------------------------------------------
// Implication of conjuncts

namespace {

/// column op value
struct ColumnComparison {
  const RqExpr* m_pColumn = nullptr;
  RqNodeType_e m_op = kRqInvalid;
  TypedFieldValue m_value;
};

bool BoundsFromAbove(RqNodeType_e op) {
  return op == kRqExprCondEquality || op == kRqExprCondLess || op == kRqExprCondLessEqual;
}
bool BoundsFromBelow(RqNodeType_e op) {
  return op == kRqExprCondEquality || op == kRqExprCondGreater || op == kRqExprCondGreaterEqual;
}

/// Whether there are values with which column opA value implies column opB value.
bool MayImply(RqNodeType_e opA, RqNodeType_e opB) {
  if (opB == kRqExprCondEquality) return opA == kRqExprCondEquality;
  return BoundsFromAbove(opB) ? BoundsFromAbove(opA) : BoundsFromBelow(opA);
}

/// Law: c = v or c < v or c <= v implies c < w if v < w, and c <= w if v <= w; likewise from below. c = v implies c = w
/// if v is w. Nothing follows from values that do not compare.
bool Implies(const ColumnComparison& a, const ColumnComparison& b) {
  if (!MayImply(a.m_op, b.m_op) || !AreSameExpr(*a.m_pColumn, *b.m_pColumn)) return false;
  const TypedFieldValue& valueA = a.m_value;
  const TypedFieldValue& valueB = b.m_value;
  switch (b.m_op) {
    case kRqExprCondEquality:
      return valueA == valueB;
    case kRqExprCondLess:
      return valueA < valueB;
    case kRqExprCondLessEqual:
      return valueA < valueB || valueA == valueB;
    case kRqExprCondGreater:
      return valueB < valueA;
    case kRqExprCondGreaterEqual:
      return valueB < valueA || valueA == valueB;
    default:
      return false;
  }
}

/// Calls function with each disjunct, left to right. Nothing for null; the condition must not be an And.
template <class Function>
void ForEachDisjunct(const RqExpr* pExpr, Function function) {
  if (!pExpr) return;
  KXThread::LowStackCheck(0);
  KX_ASSERT_TEXT(pExpr->IsCond(), L"pCond->IsCond()");
  const auto* const pCond = static_cast<const RqExprCond*>(pExpr);
  KX_ASSERT(!pCond->IsAndCond());
  if (!pCond->IsOrCond()) {
    function(pCond);
    return;
  }
  for (int i = 0; i < pCond->GetNumOperands(); ++i) ForEachDisjunct(pCond->GetIthOperand(i), function);
}

/// What a column of an inner block computes; any other expression as it is.
const RqExpr* WithoutReference(const RqExpr* pExpr) {
  if (!pExpr->IsDerivedColumnReference()) return pExpr;
  const RqExpr* const pColumnExpr = static_cast<const RqDerivedColumnReference&>(*pExpr).GetDerivedColumn()->GetExpr();
  return pColumnExpr ? pColumnExpr : pExpr;
}

/// A disjunct, and what it says as a comparison, which is worked out when it is first asked for.
class Disjunct {
 public:
  explicit Disjunct(const RqExpr* pExpr) : m_pExpr(pExpr) {}

  const RqExpr& GetExpr() const { return *m_pExpr; }

  /// Null when it is no comparison of a column with a constant.
  const ColumnComparison* GetComparison(ARpGateway* pRp) {
    if (!m_bRead) {
      ColumnComparison comparison;
      if (ExtractColexprOpConstant(pRp, m_pExpr, comparison.m_pColumn, comparison.m_value, comparison.m_op)) {
        comparison.m_pColumn = WithoutReference(comparison.m_pColumn);
        m_comparison = std::move(comparison);
      }
      m_bRead = true;
    }
    return m_comparison ? &*m_comparison : nullptr;
  }

 private:
  const RqExpr* m_pExpr;
  bool m_bRead = false;
  std::optional<ColumnComparison> m_comparison;
};

/// A conjunct with the set of its disjuncts, which is made when it is first asked for and serves every comparison of
/// the conjunct after that.
class Conjunct {
 public:
  explicit Conjunct(const RqExpr* pExpr) : m_pExpr(pExpr) {}

  const RqExpr* GetExpr() const { return m_pExpr; }

  /// In the order of expressions, each kind of equals once.
  std::vector<Disjunct>& GetDisjuncts() {
    if (m_disjuncts.empty()) {
      ConstRqExprVector exprs;
      ForEachDisjunct(m_pExpr, [&exprs](const RqExpr* pExpr) { exprs.push_back(pExpr); });
      const LessEquivalentRqExpr less;
      std::ranges::stable_sort(exprs, less);
      const auto isRepeat = [less](const RqExpr* pFirst, const RqExpr* pNext) { return !less(pFirst, pNext); };
      exprs.erase(std::unique(exprs.begin(), exprs.end(), isRepeat), exprs.end());
      m_disjuncts.reserve(exprs.size());
      for (const RqExpr* const pExpr : exprs) m_disjuncts.emplace_back(pExpr);
    }
    return m_disjuncts;
  }

  /// Whether it has the disjunct, up to the order of expressions.
  bool Has(const RqExpr& expr) {
    const std::vector<Disjunct>& disjuncts = GetDisjuncts();
    const RqShallowLessThan less;
    for (std::size_t begin = 0, end = disjuncts.size(); begin < end;) {
      const std::size_t middle = begin + (end - begin) / 2;
      bool bEquivalent = false;
      if (disjuncts[middle].GetExpr().IsDeepLessThan(expr, less, bEquivalent)) {
        begin = middle + 1;
      } else if (bEquivalent) {
        return true;
      } else {
        end = middle;
      }
    }
    return false;
  }

 private:
  const RqExpr* m_pExpr;
  std::vector<Disjunct> m_disjuncts;
};

bool IsIn(RqNodeType_e type) { return type == kRqExprCondIn || type == kRqExprCondMultiColumnIn; }

/// The compiled subquery that an In searches; null if it searches something else.
const RqExprPhysicalSubquery* GetPhysicalSubquery(const RqExprCondIn& cond) {
  const RqExpr* const pValues = cond.GetIthOperand(RqExprCondIn::kInValues);
  if (!pValues || pValues->GetObjectType() != kRqExprPhysicalSubquery) return nullptr;
  return static_cast<const RqExprPhysicalSubquery*>(pValues);
}

/// The list that a block does no more than wrap, select list aside: SELECT ... FROM (list), without any clause. Null if
/// the block is no such wrapper.
const RqAbstractList* GetWrappedList(const RqAbstractList* pBlock) {
  if (!pBlock || !pBlock->IsRqList()) return nullptr;
  const auto& list = static_cast<const RqList&>(*pBlock);
  if (list.GetDetailFilter() || list.GetSummaryFilter() || list.GetGroupBy() || list.GetHaving() || list.GetOrderBy()) {
    return nullptr;
  }
  const RqJoinSpec* const pJoinSpec = list.GetJoinSpec();
  if (!pJoinSpec || pJoinSpec->GetNumTableReferences() != 1) return nullptr;
  const RqTableReference* const pReference = pJoinSpec->GetIthTableReference(0);
  if (!pReference || !pReference->IsDerivedTableReference()) return nullptr;
  return pReference->GetDerivedTable()->GetInnerList();
}

/// Whether each list has one column, and that of the wrapper is one of an inner block as it is.
bool PassesOnSoleColumn(const RqAbstractList& wrapper, const RqAbstractList& inner) {
  const RqProjection* const pWrapper = wrapper.GetProjection();
  const RqProjection* const pInner = inner.GetProjection();
  if (!pWrapper || !pInner || pWrapper->GetNumColumns() != 1 || pInner->GetNumColumns() != 1) return false;
  const RqExpr* const pExpr = pWrapper->GetIthColumn(0)->GetExpr();
  return pExpr && pExpr->IsDerivedColumnReference();
}

/// Whether both are Ins of one search in one subquery, and both plain or both negated. The subquery of a may also wrap
/// that of b; bEquivalent then tells whether it gives the same rows. Wanted: a wrapper counts though it may give other
/// columns than b has.
bool AreInsOfOneSubquery(ARpGateway* pRp, const RqExpr& a, const RqExpr& b, bool& bEquivalent) {
  if (!IsIn(a.GetObjectType()) || a.GetObjectType() != b.GetObjectType()) return false;
  const auto& inA = static_cast<const RqExprCondIn&>(a);
  const auto& inB = static_cast<const RqExprCondIn&>(b);
  const RqExprPhysicalSubquery* const pSubqueryA = GetPhysicalSubquery(inA);
  const RqExprPhysicalSubquery* const pSubqueryB = GetPhysicalSubquery(inB);
  const RqEquivalence equivalent;
  if (!pSubqueryA || !pSubqueryB || inA.IsNegated() != inB.IsNegated() ||
      !equivalent(*inA.GetIthOperand(RqExprCondIn::kSearchExpr), *inB.GetIthOperand(RqExprCondIn::kSearchExpr))) {
    return false;
  }
  if (equivalent(*pSubqueryA, *pSubqueryB)) {
    bEquivalent = true;
    return true;
  }
  const RqAbstractList* const pWrapper = pSubqueryA->GetSubqueryRqAbstractList();
  const RqAbstractList* const pInner = GetWrappedList(pWrapper);
  if (!pInner || RqExprPhysicalSubquery::RenderBlock(*pInner, pRp) != pSubqueryB->GetSubqueryDumpout()) return false;
  bEquivalent = PassesOnSoleColumn(*pWrapper, *pInner);
  return true;
}

/// Whether the rows of one list all stand in another. Cost: the product of their lengths.
bool AreRowsAmong(const RqExpr& rowsA, const RqExpr& rowsB) {
  const RqEquivalence equivalent;
  const auto isRowOf = [&equivalent](const RqExpr* pRow, const RqExpr& rows) {
    for (int i = 0; i < rows.GetNumOperands(); ++i) {
      const RqExpr* const pOther = rows.GetIthOperand(i);
      if (pRow == pOther || (pRow && pOther && equivalent(*pRow, *pOther))) return true;
    }
    return false;
  };
  if (rowsA.GetNumOperands() > rowsB.GetNumOperands()) return false;
  for (int i = 0; i < rowsA.GetNumOperands(); ++i) {
    if (!isRowOf(rowsA.GetIthOperand(i), rowsB)) return false;
  }
  return true;
}

/// The columns or the rows of an IN over rows; null if a subquery gives them.
const RqExpr* GetColumnList(const RqExprCondMultiColumnIn& cond, int operand) {
  const RqExpr* const pList = cond.GetIthOperand(operand);
  return pList && pList->IsMultiExpr() ? pList : nullptr;
}

/// (c, d) in rows  implies  (c, d) in more rows. Wanted: negated ones are taken in the same direction, which is the
/// wrong one for them: a caller that may meet such lists expands them first (RqExprCondMultiColumnIn::Expand).
bool Implies(const RqExprCondMultiColumnIn& a, const RqExprCondMultiColumnIn& b) {
  const RqExpr* const pColumnsA = GetColumnList(a, RqExprCondIn::kSearchExpr);
  const RqExpr* const pColumnsB = GetColumnList(b, RqExprCondIn::kSearchExpr);
  const RqExpr* const pRowsA = GetColumnList(a, RqExprCondIn::kInValues);
  const RqExpr* const pRowsB = GetColumnList(b, RqExprCondIn::kInValues);
  return a.IsNegated() == b.IsNegated() && pColumnsA && pColumnsB && RqEquivalence()(*pColumnsA, *pColumnsB) &&
         pRowsA && pRowsB && AreRowsAmong(*pRowsA, *pRowsB);
}

/// Whether a disjunct implies one of others. It is none of them.
bool ImpliesOneOf(ARpGateway* pRp, Disjunct& a, std::vector<Disjunct>& disjuncts) {
  if (a.GetExpr().GetObjectType() == kRqExprCondMultiColumnIn) {
    const auto& rowInA = static_cast<const RqExprCondMultiColumnIn&>(a.GetExpr());
    return std::ranges::any_of(disjuncts, [&](const Disjunct& b) {
      return b.GetExpr().GetObjectType() == kRqExprCondMultiColumnIn &&
             Implies(rowInA, static_cast<const RqExprCondMultiColumnIn&>(b.GetExpr()));
    });
  }
  const ColumnComparison* const pComparisonA = a.GetComparison(pRp);
  return pComparisonA && std::ranges::any_of(disjuncts, [&](Disjunct& b) {
           const ColumnComparison* const pComparisonB = b.GetComparison(pRp);
           return pComparisonB && Implies(*pComparisonA, *pComparisonB);
         });
}

/// Whether each disjunct of a implies one of b. bEquivalent: whether both have the same disjuncts.
bool AreDisjunctsContained(ARpGateway* pRp, Conjunct& a, Conjunct& b, bool& bEquivalent) {
  bool bAllInB = true;
  for (Disjunct& disjunct : a.GetDisjuncts()) {
    if (b.Has(disjunct.GetExpr())) continue;
    if (!ImpliesOneOf(pRp, disjunct, b.GetDisjuncts())) return false;
    bAllInB = false;
  }
  bEquivalent =
      bAllInB && std::ranges::all_of(b.GetDisjuncts(), [&a](const Disjunct& other) { return a.Has(other.GetExpr()); });
  return true;
}

bool IsContainedBy(ARpGateway* pRp, Conjunct& a, Conjunct& b, bool& bEquivalent) {
  bEquivalent = false;
  if (!b.GetExpr()) {
    bEquivalent = !a.GetExpr();
    return true;
  }
  if (!a.GetExpr()) return false;
  if (AreSameExpr(*a.GetExpr(), *b.GetExpr())) {
    bEquivalent = true;
    return true;
  }
  if (AreInsOfOneSubquery(pRp, *a.GetExpr(), *b.GetExpr(), bEquivalent)) return true;
  return AreDisjunctsContained(pRp, a, b, bEquivalent);
}

}  // namespace

bool IsContainedBy(ARpGateway* pRp, const RqExpr* a, const RqExpr* b, bool& bEquivalent) {
  Conjunct conjunctA(a);
  Conjunct conjunctB(b);
  return IsContainedBy(pRp, conjunctA, conjunctB, bEquivalent);
}

void ExtractORExprSet(const RqExpr* pExpr, ConstRqExprSet& exprs) {
  ForEachDisjunct(pExpr, [&exprs](const RqExpr* pDisjunct) { exprs.insert(pDisjunct); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Implication of conditions

namespace {

std::vector<Conjunct> MakeConjuncts(const ConstRqExprVector& exprs) { return {exprs.begin(), exprs.end()}; }

/// Whether some conjunct of a implies y. The first that y implies in turn is marked, and bEquivalent told.
bool IsImpliedByOneOf(ARpGateway* pRp, std::vector<Conjunct>& a, Conjunct& y, std::vector<bool>& matched,
                      bool& bEquivalent) {
  bool bImplied = false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!IsContainedBy(pRp, a[i], y, bEquivalent)) continue;
    bImplied = true;
    if (bEquivalent) {
      matched[i] = true;
      return true;
    }
  }
  return bImplied;
}

}  // namespace

bool ExprSubsumptionTester::IsSubsumedBy(ARpGateway* pRp, const RqExprCond* a, const RqExprCond* b, bool& bEquivalent) {
  bEquivalent = false;
  if (!b) {
    bEquivalent = !a;
    return true;
  }
  if (!a) return false;
  if (AreSameExpr(*a, *b)) {
    bEquivalent = true;
    return true;
  }
  ToCNF toCNF[2];
  ConstRqExprVector conjuncts[2];
  for (int i = 0; const RqExprCond* const pCond : {a, b}) {
    toCNF[i].GenerateCNF(*pCond, false, true, ToCNF::kLimitOfEnvironment);
    if (!toCNF[i].GetConversionSuccess()) return false;
    toCNF[i].GetConjuncts(conjuncts[i]);
    ++i;
  }
  return IsSubsumedBy(pRp, conjuncts[0], conjuncts[1], bEquivalent);
}

bool ExprSubsumptionTester::IsSubsumedBy(ARpGateway* pRp, const ConstRqExprVector& a, const ConstRqExprVector& b,
                                         bool& bEquivalent) {
  bEquivalent = b.empty() && a.empty();
  if (b.empty()) return true;
  if (a.size() < b.size()) return false;

  std::vector<Conjunct> conjunctsA = MakeConjuncts(a);
  std::vector<Conjunct> conjunctsB = MakeConjuncts(b);
  std::vector<bool> matched(a.size());
  bool bAllEquivalent = true;
  for (Conjunct& y : conjunctsB) {
    bool bFoundEquivalent = false;
    if (!IsImpliedByOneOf(pRp, conjunctsA, y, matched, bFoundEquivalent)) return false;
    bAllEquivalent &= bFoundEquivalent;
  }
  for (std::size_t i = 0; bAllEquivalent && i < a.size(); ++i) {
    bAllEquivalent = matched[i] || std::ranges::any_of(conjunctsB, [&](Conjunct& y) {
                       bool bThisIsEquivalent = false;
                       return IsContainedBy(pRp, conjunctsA[i], y, bThisIsEquivalent) && bThisIsEquivalent;
                     });
  }
  bEquivalent = bAllEquivalent;
  return true;
}

bool ExprSubsumptionTester::IsSubsumedBy(ARpGateway* pRp, const ConstRqExprVector& a, const OwnedRqExprCondVector& b,
                                         bool& bEquivalent) {
  ConstRqExprVector lentB;
  lentB.reserve(b.size());
  for (const OwnedRqExprCondPtr& cond : b) lentB.push_back(cond.Get());
  return IsSubsumedBy(pRp, a, lentB, bEquivalent);
}

// ---------------------------------------------------------------------------------------------------------------------
// Equivalence classes

void EquivClassUtil::AddEquivalenceClasses(const RqExprCond* pCond, EquivalenceClasses& classes) {
  if (!pCond) return;
  KXThread::LowStackCheck(0);
  if (pCond->IsEqualityPredicate()) {
    AddEquivalentExprPair(pCond->GetIthOperand(RqExprCondEquality::kLeftOperand),
                          pCond->GetIthOperand(RqExprCondEquality::kRightOperand), classes);
  } else if (pCond->IsAndCond()) {
    const auto& conjunction = static_cast<const RqExprCondAnd&>(*pCond);
    AddEquivalenceClasses(conjunction.GetLeftCond(), classes);
    AddEquivalenceClasses(conjunction.GetRightCond(), classes);
  }
}

void EquivClassUtil::AddEquivalenceClasses(const OwnedRqExprCondVector& conds, EquivalenceClasses& classes) {
  for (const OwnedRqExprCondPtr& cond : conds) AddEquivalenceClasses(cond.Get(), classes);
}

void EquivClassUtil::AddEquivalentExprPair(const RqExpr* a, const RqExpr* b, EquivalenceClasses& classes) {
  const auto classOfA = FindEquivalenceClass(classes, a);
  if (AreSameExpr(*a, *b)) {
    if (classOfA == classes.end()) classes.push_back({a});
    return;
  }
  const auto classOfB = FindEquivalenceClass(classes, b);
  if (classOfA == classes.end() && classOfB == classes.end()) {
    classes.push_back({a, b});
  } else if (classOfB == classes.end()) {
    classOfA->insert(b);
  } else if (classOfA == classes.end()) {
    classOfB->insert(a);
  } else if (classOfA != classOfB) {
    classOfA->insert(classOfB->begin(), classOfB->end());
    classes.erase(classOfB);
  }
}

EquivalenceClasses::iterator EquivClassUtil::FindEquivalenceClass(EquivalenceClasses& classes, const RqExpr* pExpr) {
  return std::ranges::find_if(classes, [pExpr](const auto& each) { return IsPartOfEquivalenceClass(each, pExpr); });
}

EquivalenceClasses::const_iterator EquivClassUtil::FindEquivalenceClass(const EquivalenceClasses& classes,
                                                                        const RqExpr* pExpr) {
  return std::ranges::find_if(classes, [pExpr](const auto& each) { return IsPartOfEquivalenceClass(each, pExpr); });
}

bool EquivClassUtil::IsPartOfEquivalenceClass(const EquivalenceClass& equivalenceClass, const RqExpr* pExpr) {
  KX_ASSERT(pExpr);
  return equivalenceClass.contains(pExpr);
}

KXString ToString(const EquivalenceClass& equivalenceClass, ARpGateway* pRp) {
  KXString text = L"{";
  for (const RqExpr* const pExpr : equivalenceClass) {
    text.append(text.size() == 1 ? L"" : L", ").append(RqDumpout::StringFrom(pExpr, false, true, pRp));
  }
  return text.append(L"}");
}

KXString ToString(const EquivalenceClasses& classes, ARpGateway* pRp) {
  KXString text = L"[";
  for (const EquivalenceClass& equivalenceClass : classes) {
    text.append(text.size() == 1 ? L"" : L", ").append(ToString(equivalenceClass, pRp));
  }
  return text.append(L"]");
}

// ---------------------------------------------------------------------------------------------------------------------
// Search

namespace {

/// Calls onMatch with the topmost matches, left to right, until it answers true; whether it did.
template <class OnMatch>
bool ForEachTopmostMatch(RqExpr* pRoot, const RqExpr& sought, const RqEquivalence& equivalence, OnMatch onMatch) {
  if (!pRoot) return false;
  KXThread::LowStackCheck(0);
  if (equivalence(*pRoot, sought)) return onMatch(pRoot);
  for (int i = 0; i < pRoot->GetNumOperands(); ++i) {
    if (ForEachTopmostMatch(pRoot->GetIthOperand(i), sought, equivalence, onMatch)) return true;
  }
  return false;
}

}  // namespace

RqExpr* SubExprFinder::FindEquivalentSubExpr(RqExpr* pRoot, const RqExpr& sought, const RqEquivalence& equivalence) {
  RqExpr* pFound = nullptr;
  ForEachTopmostMatch(pRoot, sought, equivalence, [&pFound](RqExpr* pMatch) {
    pFound = pMatch;
    return true;
  });
  return pFound;
}

bool SubExprFinder::FindEquivalentSubExpr(const RqExpr& root, const RqExpr& sought, const RqEquivalence& equivalence) {
  // Nothing is done with what is found.
  return FindEquivalentSubExpr(const_cast<RqExpr*>(&root), sought, equivalence) != nullptr;
}

void SubExprFinder::FindAllEquivalentSubExprs(RqExpr* pRoot, const RqExpr& sought, RqExprVector& found,
                                              const RqEquivalence& equivalence) {
  ForEachTopmostMatch(pRoot, sought, equivalence, [&found](RqExpr* pMatch) {
    found.push_back(pMatch);
    return false;
  });
}
