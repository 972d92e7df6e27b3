#include "rq/eval/ConditionEvaluator.h"

#include "Host/KXThread.h"
#include "Host/MetadataUtil.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "rq/eval/LikePattern.h"

// ---------------------------------------------------------------------------------------------------------------------
// Learning

bool ConditionEvaluator::Learn(const RqExprCond& cond) {
  KXThread::LowStackCheck(0);
  switch (cond.GetObjectType()) {
    case kRqExprCondAnd:
    case kRqExprCondOr:
    case kRqExprCondNot:
    case kRqExprCondAtomicWrapper:
      return LearnOperands(cond);
    case kRqExprCondEquality:
    case kRqExprCondNotEqual:
    case kRqExprCondLess:
    case kRqExprCondLessEqual:
    case kRqExprCondGreater:
    case kRqExprCondGreaterEqual:
    case kRqExprCondIsNull:
    case kRqExprCondBetween:
      return LearnValues(cond);
    case kRqExprCondLike:
      return LearnValues(cond, true);
    case kRqExprCondIn:
      return LearnList(cond);
    case kRqExprCondMultiColumnIn:
      return LearnRows(cond);
    default:
      return Refuse(cond);
  }
}

bool ConditionEvaluator::LearnOperands(const RqExpr& cond) {
  for (int i = 0; i < cond.GetNumOperands(); ++i) {
    if (!Learn(static_cast<const RqExprCond&>(*cond.GetIthOperand(i)))) return false;
  }
  return true;
}

bool ConditionEvaluator::LearnValues(const RqExpr& cond, bool bIsLike) {
  Meeting meeting{{}, bIsLike};
  for (int i = 0; i < cond.GetNumOperands(); ++i) {
    const RqExpr* const pOperand = cond.GetIthOperand(i);
    if (!pOperand) continue;
    if (!LearnValue(*pOperand)) return false;
    meeting.m_exprs.push_back(pOperand);
  }
  m_meetings.push_back(std::move(meeting));
  return true;
}

bool ConditionEvaluator::LearnList(const RqExpr& cond) {
  const RqExpr& search = *cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  const RqExpr& values = *cond.GetIthOperand(RqExprCondIn::kInValues);
  if (!values.IsMultiExpr()) return Refuse(values);
  if (!LearnValue(search) || !LearnValues(values)) return false;
  m_meetings.back().m_exprs.push_back(&search);
  return true;
}

bool ConditionEvaluator::LearnRows(const RqExpr& cond) {
  const RqExpr& columns = *cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  const RqExpr& rows = *cond.GetIthOperand(RqExprCondIn::kInValues);
  if (!columns.IsMultiExpr()) return Refuse(columns);
  if (!rows.IsMultiExpr()) return Refuse(rows);
  for (int column = 0; column < columns.GetNumOperands(); ++column) {
    Meeting meeting;
    meeting.m_exprs.push_back(columns.GetIthOperand(column));
    for (int i = 0; i < rows.GetNumOperands(); ++i) {
      const RqExpr& row = *rows.GetIthOperand(i);
      if (!row.IsMultiExpr() || row.GetNumOperands() != columns.GetNumOperands()) return Refuse(row);
      meeting.m_exprs.push_back(row.GetIthOperand(column));
    }
    for (const RqExpr* const pExpr : meeting.m_exprs) {
      if (!LearnValue(*pExpr)) return false;
    }
    m_meetings.push_back(std::move(meeting));
  }
  return true;
}

bool ConditionEvaluator::LearnValue(const RqExpr& expr) {
  if (expr.IsColumnReference() || expr.IsParam()) return TakeVariable(expr);
  switch (expr.GetObjectType()) {
    case kRqExprNullLiteral:
      return TakeConstant(expr, RowValue());
    case kRqExprNumberLiteral:
      return TakeConstant(expr,
                          RowValue(TypedFieldValue(static_cast<const RqExprNumberLiteral&>(expr).GetValue(), false)));
    case kRqExprDateLiteral:
      if (static_cast<const RqExprDateLiteral&>(expr).GetDateValue().IsCurrentDateToken()) return Refuse(expr);
      break;
    case kRqExprTimeLiteral:
      if (static_cast<const RqExprTimeLiteral&>(expr).GetTimeValue().IsCurrentTimeToken()) return Refuse(expr);
      break;
    case kRqExprDateTimeLiteral:
      if (static_cast<const RqExprDateTimeLiteral&>(expr).GetDateTimeValue().IsCurrentDateTimeToken()) {
        return Refuse(expr);
      }
      break;
    case kRqExprStringLiteral:
    case kRqExprIntegerLiteral:
    case kRqExprFloatLiteral:
      break;
    case kRqExprSessionVar:
      return LearnSessionVar(static_cast<const RqExprSessionVar&>(expr));
    default:
      return Refuse(expr);
  }
  return TakeConstant(
      expr, RowValue(ExprSubsumptionTester::ExtractConstantFromLiteral(static_cast<const RqExprLiteral*>(&expr))));
}

/// One without a value, and one with many that is used as a whole, cannot be evaluated.
bool ConditionEvaluator::LearnSessionVar(const RqExprSessionVar& variable) {
  if (!MetadataUtil::IsSessionVariablePopulated(m_pRp, variable.GetVarName())) return Refuse(variable);
  const bool bIsMany = variable.GetValue(m_pRp)->GetType() == PropertyValue::StringVector &&
                       variable.GetByIndex() == RqExprSessionVar::kNoIndex;
  if (bIsMany) return Refuse(variable);
  return TakeConstant(variable, RowValue(ExprSubsumptionTester::ExtractConstantFromSessionVar(m_pRp, &variable)));
}

bool ConditionEvaluator::TakeConstant(const RqExpr& expr, RowValue value) {
  m_operands[&expr].m_constant = std::move(value);
  return true;
}

bool ConditionEvaluator::TakeVariable(const RqExpr& expr) {
  const auto [it, bIsNew] = m_numbers.try_emplace(&expr, m_variables.size());
  if (bIsNew) m_variables.push_back(&expr);
  m_operands[&expr].m_variable = it->second;
  return true;
}

bool ConditionEvaluator::Refuse(const RqExpr& expr) {
  if (!m_pUnsupported) m_pUnsupported = &expr;
  return false;
}

std::optional<std::size_t> ConditionEvaluator::FindVariable(const RqExpr& expr) const {
  const auto it = m_operands.find(&expr);
  return it == m_operands.end() ? std::nullopt : it->second.m_variable;
}

std::optional<RowValue> ConditionEvaluator::FindConstant(const RqExpr& expr) const {
  const auto it = m_operands.find(&expr);
  if (it == m_operands.end() || it->second.m_variable) return std::nullopt;
  return it->second.m_constant;
}

// ---------------------------------------------------------------------------------------------------------------------
// Evaluating

namespace {

bool IsEqual(std::partial_ordering order) { return order == 0; }
bool IsLess(std::partial_ordering order) { return order < 0; }

/// The truth of a condition with a negation of its own, given that of its plain form.
TruthSet Signed(const RqExpr& cond, TruthSet truth) {
  return static_cast<const RqExprCondNegatable&>(cond).IsNegated() ? !truth : truth;
}

}  // namespace

TruthSet ConditionEvaluator::Evaluate(const RqExpr& cond, const Row& row) const {
  KXThread::LowStackCheck(0);
  const RqExpr* const pFirst = cond.GetIthOperand(0);
  const RqExpr* const pSecond = cond.GetNumOperands() > 1 ? cond.GetIthOperand(1) : nullptr;
  switch (cond.GetObjectType()) {
    case kRqExprCondAnd: {
      const TruthSet left = Evaluate(*pFirst, row);
      return left.IsFalse() ? left : left & Evaluate(*pSecond, row);
    }
    case kRqExprCondOr: {
      const TruthSet left = Evaluate(*pFirst, row);
      return left.IsTrue() ? left : left | Evaluate(*pSecond, row);
    }
    case kRqExprCondNot:
      return !Evaluate(*pFirst, row);
    case kRqExprCondAtomicWrapper:
      return Evaluate(*pFirst, row);
    case kRqExprCondEquality:
      return EvaluateEquality(static_cast<const RqExprCondEquality&>(cond), row);
    case kRqExprCondNotEqual:
      return !Compare(pFirst, pSecond, row, IsEqual);
    case kRqExprCondLess:
      return Compare(pFirst, pSecond, row, IsLess);
    case kRqExprCondLessEqual:
      return !Compare(pSecond, pFirst, row, IsLess);
    case kRqExprCondGreater:
      return Compare(pSecond, pFirst, row, IsLess);
    case kRqExprCondGreaterEqual:
      return !Compare(pFirst, pSecond, row, IsLess);
    case kRqExprCondIsNull:
      return EvaluateIsNull(cond, row);
    case kRqExprCondBetween:
      return EvaluateBetween(cond, row);
    case kRqExprCondLike:
      return EvaluateLike(cond, row);
    case kRqExprCondIn:
      return EvaluateIn(cond, row);
    case kRqExprCondMultiColumnIn:
      return EvaluateRowIn(cond, row);
    default:
      return TruthSet::Any();
  }
}

/// Null when the row leaves it open.
const RowValue* ConditionEvaluator::FindValue(const RqExpr* pExpr, const Row& row) const {
  const Operand& operand = m_operands.find(pExpr)->second;
  if (!operand.m_variable) return &operand.m_constant;
  const std::optional<RowValue>& value = row[*operand.m_variable];
  return value ? &*value : nullptr;
}

/// Whether the order of two values is as it should be: unknown with a null among them, anything where they do not
/// compare.
template <class Holds>
TruthSet ConditionEvaluator::Compare(const RqExpr* pLeft, const RqExpr* pRight, const Row& row, Holds holds) const {
  ++m_nSteps;
  const RowValue* const pLeftValue = FindValue(pLeft, row);
  const RowValue* const pRightValue = FindValue(pRight, row);
  if ((pLeftValue && pLeftValue->IsNull()) || (pRightValue && pRightValue->IsNull())) return TruthSet::Unknown();
  if (!pLeftValue || !pRightValue) return TruthSet::Any();
  const std::partial_ordering order = RowValue::Compare(*pLeftValue, *pRightValue);
  return order == std::partial_ordering::unordered ? TruthSet::Any() : TruthSet::Of(holds(order));
}

TruthSet ConditionEvaluator::EvaluateEquality(const RqExprCondEquality& cond, const Row& row) const {
  const RqExpr* const pLeft = cond.GetIthOperand(RqExprCondEquality::kLeftOperand);
  const RqExpr* const pRight = cond.GetIthOperand(RqExprCondEquality::kRightOperand);
  if (cond.AreNullsEqual()) {
    const RowValue* const pLeftValue = FindValue(pLeft, row);
    const RowValue* const pRightValue = FindValue(pRight, row);
    if (!pLeftValue || !pRightValue) return TruthSet::Any();
    if (pLeftValue->IsNull() || pRightValue->IsNull()) {
      return TruthSet::Of(pLeftValue->IsNull() == pRightValue->IsNull());
    }
  }
  return Compare(pLeft, pRight, row, IsEqual);
}

TruthSet ConditionEvaluator::EvaluateIsNull(const RqExpr& cond, const Row& row) const {
  ++m_nSteps;
  const RowValue* const pValue = FindValue(cond.GetIthOperand(RqExprCondIsNull::kOperand), row);
  return pValue ? Signed(cond, TruthSet::Of(pValue->IsNull())) : TruthSet::Any();
}

TruthSet ConditionEvaluator::EvaluateBetween(const RqExpr& cond, const Row& row) const {
  const RqExpr* const pValue = cond.GetIthOperand(RqExprCondBetween::kOperand);
  const TruthSet isBelow = Compare(pValue, cond.GetIthOperand(RqExprCondBetween::kLowOperand), row, IsLess);
  const TruthSet isAbove = Compare(cond.GetIthOperand(RqExprCondBetween::kHighOperand), pValue, row, IsLess);
  return Signed(cond, !(isBelow | isAbove));
}

TruthSet ConditionEvaluator::EvaluateLike(const RqExpr& cond, const Row& row) const {
  ++m_nSteps;
  const RqExpr* const pEscape = cond.GetIthOperand(RqExprCondLike::kEscapeString);
  const RowValue* const values[] = {FindValue(cond.GetIthOperand(RqExprCondLike::kOperand), row),
                                    FindValue(cond.GetIthOperand(RqExprCondLike::kPatternString), row),
                                    pEscape ? FindValue(pEscape, row) : nullptr};
  const std::size_t nValues = pEscape ? 3 : 2;
  KXString texts[3];
  for (std::size_t i = 0; i < nValues; ++i) {
    if (values[i] && values[i]->IsNull()) return TruthSet::Unknown();
  }
  for (std::size_t i = 0; i < nValues; ++i) {
    if (!values[i] || !values[i]->IsText()) return TruthSet::Any();
    texts[i] = values[i]->Get().ToString();
  }
  if (pEscape && texts[2].size() != 1) return TruthSet::Any();
  const std::optional<LikePattern> pattern =
      LikePattern::Make(texts[1], pEscape ? std::optional<wchar_t>(texts[2][0]) : std::nullopt);
  return pattern ? Signed(cond, TruthSet::Of(pattern->Matches(texts[0]))) : TruthSet::Any();
}

TruthSet ConditionEvaluator::EvaluateIn(const RqExpr& cond, const Row& row) const {
  const RqExpr* const pSearch = cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  const RqExpr& values = *cond.GetIthOperand(RqExprCondIn::kInValues);
  TruthSet truth = TruthSet::False();
  for (int i = 0; i < values.GetNumOperands() && !truth.IsTrue(); ++i) {
    truth = truth | Compare(pSearch, values.GetIthOperand(i), row, IsEqual);
  }
  return Signed(cond, truth);
}

TruthSet ConditionEvaluator::EvaluateRowIn(const RqExpr& cond, const Row& row) const {
  const RqExpr& columns = *cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  const RqExpr& rows = *cond.GetIthOperand(RqExprCondIn::kInValues);
  TruthSet truth = TruthSet::False();
  for (int i = 0; i < rows.GetNumOperands() && !truth.IsTrue(); ++i) {
    TruthSet rowTruth = TruthSet::True();
    for (int column = 0; column < columns.GetNumOperands() && !rowTruth.IsFalse(); ++column) {
      rowTruth =
          rowTruth & Compare(columns.GetIthOperand(column), rows.GetIthOperand(i)->GetIthOperand(column), row, IsEqual);
    }
    truth = truth | rowTruth;
  }
  return Signed(cond, truth);
}
