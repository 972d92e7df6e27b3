#include <algorithm>
#include <cstdint>
#include <string_view>

#include "Host/ARpGateway.h"
#include "Host/BaseStringUtil.h"
#include "Host/Expr.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

// The text of expressions: literals, references, lists and conditions. Each Visit prints the operands, too, and so ends
// the descent.

// ---------------------------------------------------------------------------------------------------------------------
// Operands

void RqDumpout::PrintOperand(RqExpr& expr, int slot) {
  if (RqExpr* const pOperand = expr.FindOperand(slot)) pOperand->TourExpr(*this);
}

void RqDumpout::PrintOperands(RqExpr& expr, int firstSlot) {
  for (int slot = firstSlot; slot < expr.GetNumOperands(); ++slot) {
    if (slot > firstSlot) Append(L", ");
    PrintOperand(expr, slot);
  }
}

void RqDumpout::PrintConnectiveOperand(RqExpr& expr, int slot) {
  RqExpr* const pOperand = expr.FindOperand(slot);
  if (!pOperand) return;
  const bool bParentheses = pOperand->GetObjectType() == kRqExprCondOr;
  if (bParentheses) Append(L"(");
  pOperand->TourExpr(*this);
  if (bParentheses) Append(L")");
}

bool RqDumpout::PrintBinary(RqExpr& expr, std::wstring_view operatorText) {
  PrintOperand(expr, 0);
  Append(operatorText);
  PrintOperand(expr, 1);
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Literals

void RqDumpout::AppendDescriptorMark(const RqExprLiteral& literal) {
  if (!m_bExternalMode && literal.IsDescriptorIDOFValue()) Append(L"[DESCRIPTOR_IDOF]");
}

bool RqDumpout::Visit(RqExprStringLiteral& expr) {
  AppendDescriptorMark(expr);
  AppendStringText(expr.GetString());
  return true;
}

bool RqDumpout::Visit(RqExprIntegerLiteral& expr) {
  AppendDescriptorMark(expr);
  if (expr.IsPlaceHolder()) Append(L"%");
  Append(expr.GetValue());
  return true;
}

bool RqDumpout::Visit(RqExprFloatLiteral& expr) {
  AppendDescriptorMark(expr);
  Append(BaseStringUtil::StringFrom(expr.GetValue(), false));
  return true;
}

bool RqDumpout::Visit(RqExprNumberLiteral& expr) {
  AppendDescriptorMark(expr);
  Append(expr.GetValue().asString());
  return true;
}

namespace {

/// The digits of a second's fraction that are shown: the precision, or all of them where that would hide some.
short ShownPrecision(short precision, std::uint32_t nanosecond) {
  constexpr short kAllDigits = 9;
  std::uint32_t unit = 1;  // nanoseconds in the last digit shown
  for (short digits = std::max<short>(precision, 0); digits < kAllDigits; ++digits) unit *= 10;
  return nanosecond % unit == 0 ? precision : kAllDigits;
}

}  // namespace

bool RqDumpout::Visit(RqExprDateLiteral& expr) {
  AppendDescriptorMark(expr);
  const KXDate& date = expr.GetDateValue();
  if (date.IsCurrentDateToken()) {
    Append(L"CURRENT_DATE");
    return true;
  }
  Append(L"DATE '");
  Append(date.ToString());
  Append(L"'");
  return true;
}

bool RqDumpout::Visit(RqExprTimeLiteral& expr) {
  AppendDescriptorMark(expr);
  const KXTime& time = expr.GetTimeValue();
  if (time.IsCurrentTimeToken()) {
    Append(L"CURRENT_TIME");
    return true;
  }
  Append(L"TIME '");
  Append(time.ToString(ShownPrecision(0, time.nanosecond_)));
  Append(L"'");
  return true;
}

bool RqDumpout::Visit(RqExprDateTimeLiteral& expr) {
  AppendDescriptorMark(expr);
  const KXDateTime& dateTime = expr.GetDateTimeValue();
  if (dateTime.IsCurrentDateTimeToken()) {
    Append(L"CURRENT_TIMESTAMP");
    return true;
  }
  Append(L"TIMESTAMP '");
  Append(dateTime.ToString(ShownPrecision(expr.GetPrecision(), dateTime.nanosecond_)));
  Append(L"'");
  return true;
}

bool RqDumpout::Visit(RqExprIntervalLiteral& expr) {
  AppendDescriptorMark(expr);
  Append(expr.GetIntervalValue());
  return true;
}

bool RqDumpout::Visit(RqExprNullLiteral& expr) {
  AppendDescriptorMark(expr);
  Append(L"NULL");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// References to what lies outside the expression

namespace {

/// The block under which a repository names the variables of the session.
const KXString kSessionBlock(L"KX_SESSION");

/// Shows the visitor a value as a literal from the pools, without the marks that this one keeps of earlier use.
void VisitAsLiteral(PropertyValue& value, RqDumpout& dumpout) {
  ObjPoolGuard<RqExprLiteral> owner;
  RqExprLiteral& literal = *RqExprLiteral::MakeRqExprLiteral(owner, &value);
  literal.SetDescriptorIDOFValue(false);
  if (literal.IsIntegerLiteral()) static_cast<RqExprIntegerLiteral&>(literal).SetPlaceHolder(false);
  if (literal.IsDateTimeLiteral()) static_cast<RqExprDateTimeLiteral&>(literal).SetPrecision(0);
  literal.TourExpr(dumpout);
}

}  // namespace

bool RqDumpout::Visit(RqAttribute& expr) {
  ARpGateway* const pRp = m_pRp_ForPrettyColumnNames;
  const RefAAttribute attribute = expr.GetAttribute(pRp);
  if (attribute.IsNull() || m_bExternalMode) {
    AppendObject(expr.GetRepositoryUniqueID32(), expr.GetID());
  } else {
    if (const RefAEntity entity(pRp, attribute->GetEntityID()); entity) {
      Append(entity->GetName());
      Append(L".");
    }
    Append(attribute->GetName());
  }
  if (attribute) {
    Expr attributeExpr = attribute->GetExpr();
    ExtractExpr(attributeExpr, pRp);
  }
  return true;
}

void RqDumpout::AppendVariableValue(const ARpVariable& variable, ARpGateway* pRp) {
  Append(L" : ");
  if (!variable.IsSessionVariable()) {
    Append(variable.GetValueText());
    return;
  }
  const Heap<PropertyValue> value(pRp->GetSessionVariable(KXStringPair(kSessionBlock, variable.GetName())));
  if (!value) {
    Append(L"NULL");
    return;
  }
  VisitAsLiteral(*value, *this);
}

void RqDumpout::ExtractExpr(Expr& expr, ARpGateway* pRp) {
  std::vector<RefARpObject> objects;
  expr.GetObjectsInExpr(pRp, objects, false);
  bool bFirst = true;
  for (const RefARpObject& object : objects) {
    Append(bFirst ? std::wstring_view(L" [ ") : std::wstring_view(L", "));
    bFirst = false;
    Append(object->GetName());
    const RefARpVariable variable(pRp, object->GetID());
    if (variable) AppendVariableValue(*variable, pRp);
  }
  if (!bFirst) Append(L" ] ");
}

bool RqDumpout::Visit(RqTargetColumn& expr) {
  ARpGateway* const pRp = m_pRp_ForPrettyColumnNames;
  const RefAColumn column(pRp, expr.GetColumnID());
  const RefATable table(pRp, column ? column->GetTableID() : VoidID::NullID);
  const int tableNumber = expr.GetSourceTableNumber();
  if (table) {
    AppendName(table->GetName());
    Append(L".");
  } else if (m_bExternalMode) {
    Append(L"\"T");
    Append(tableNumber);
    Append(L"\".");
  } else if (tableNumber != RqTargetColumn::kUnknownTableNum) {
    Append(L"T");
    Append(tableNumber);
    Append(L".");
  }

  const KXString name = expr.GetColumnName(pRp);
  if (name.empty() && !expr.GetColumnID().IsNullID()) {
    Append(expr.GetColumnID());
  } else {
    AppendName(name);
  }
  return true;
}

bool RqDumpout::Visit(RqExprDimension& expr) {
  Append(L"[Dimension ");
  AppendObject(expr.GetRepositoryUniqueID32(), expr.GetID());
  if (!expr.GetPresentationHierarchyID().IsNullID()) {
    Append(L", ");
    AppendObject(expr.GetRepositoryUniqueID32(), expr.GetPresentationHierarchyID());
  }
  Append(L"]");
  return true;
}

bool RqDumpout::Visit(RqExprLevel& expr) {
  Append(L"[Level ");
  AppendObject(expr.GetRepositoryUniqueID32(), expr.GetID());
  Append(L"]");
  return true;
}

bool RqDumpout::Visit(RqExprMemberReference& expr) {
  constexpr int kFirstKeyColumn = RqExprMemberReference::kNumOperands;
  PrintOperand(expr, RqExprMemberReference::kLevelOperand);
  Append(L".");
  if (expr.FindOperand(RqExprMemberReference::kValueOperand)) {
    PrintOperand(expr, RqExprMemberReference::kValueOperand);
  } else {
    Append(L"ALL");
  }
  if (expr.GetNumOperands() > kFirstKeyColumn) {
    Append(L" (");
    PrintOperands(expr, kFirstKeyColumn);
    Append(L")");
  }
  return true;
}

bool RqDumpout::Visit(RqExprParam& expr) {
  Append(L"?");
  Append(expr.GetParamNumber());
  return true;
}

bool RqDumpout::Visit(RqExprSessionVar& expr) {
  if (m_pRp_ForSessionVars) {
    const OwnedPropertyValue value = expr.GetValue(m_pRp_ForSessionVars);
    VisitAsLiteral(*value, *this);
    return true;
  }
  Append(L"VALUEOF(");
  Append(expr.GetVarName().first);
  Append(L".");
  Append(expr.GetVarName().second);
  Append(L")");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Column lists

namespace {

bool IsColumnList(const RqNode& node) {
  const RqNodeType_e type = node.GetObjectType();
  return type == kRqExprColumnList || type == kRqExprColumnListOrdered;
}

/// Whether the list belongs to the lists of a multi-column IN, which prints parentheses around them. Cost: the depth to
/// which lists stand in lists.
bool IsOfMultiColumnIn(const RqExprColumnListOrdered& list) {
  const RqNode* pAncestor = list.GetParent();
  while (pAncestor && IsColumnList(*pAncestor)) pAncestor = pAncestor->GetParent();
  return pAncestor && pAncestor->GetObjectType() == kRqExprCondMultiColumnIn;
}

}  // namespace

bool RqDumpout::Visit(RqExprColumnListOrdered& columnList) {
  const bool bBrackets = !m_bExternalMode && !IsOfMultiColumnIn(columnList);
  if (bBrackets) Append(L"[ ");
  for (int i = 0; i < columnList.GetNumColumns(); ++i) {
    KX_ASSERT(columnList.GetIthColumn(i));
    if (i > 0) Append(L", ");
    columnList.GetIthColumn(i)->TourExpr(*this);
  }
  if (bBrackets) Append(L"] ");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conditions

bool RqDumpout::Visit(RqExprCondEquality& expr) {
  return PrintBinary(expr, expr.AreNullsEqual() ? L" =NullsEqual " : L" = ");
}
bool RqDumpout::Visit(RqExprCondNotEqual& expr) { return PrintBinary(expr, L" <> "); }
bool RqDumpout::Visit(RqExprCondLess& expr) { return PrintBinary(expr, L" < "); }
bool RqDumpout::Visit(RqExprCondLessEqual& expr) { return PrintBinary(expr, L" <= "); }
bool RqDumpout::Visit(RqExprCondGreater& expr) { return PrintBinary(expr, L" > "); }
bool RqDumpout::Visit(RqExprCondGreaterEqual& expr) { return PrintBinary(expr, L" >= "); }
bool RqDumpout::Visit(RqExprCondOr& expr) { return PrintBinary(expr, L" or "); }

bool RqDumpout::Visit(RqExprCondAnd& expr) {
  PrintConnectiveOperand(expr, RqExprCondAnd::kLeftOperand);
  Append(L" and ");
  PrintConnectiveOperand(expr, RqExprCondAnd::kRightOperand);
  return true;
}

bool RqDumpout::Visit(RqExprCondNot& expr) {
  Append(L"not ");
  PrintConnectiveOperand(expr, RqExprCondNot::kOperand);
  return true;
}

bool RqDumpout::Visit(RqExprCondIsNull& expr) {
  PrintOperand(expr, RqExprCondIsNull::kOperand);
  Append(L" is ");
  if (expr.IsNegated()) Append(L"not ");
  Append(L"null");
  return true;
}

bool RqDumpout::Visit(RqExprCondBetween& expr) {
  PrintOperand(expr, RqExprCondBetween::kOperand);
  if (expr.IsNegated()) Append(L" not");
  Append(L" between ");
  PrintOperand(expr, RqExprCondBetween::kLowOperand);
  Append(L" and ");
  PrintOperand(expr, RqExprCondBetween::kHighOperand);
  return true;
}

bool RqDumpout::Visit(RqExprCondLike& expr) {
  PrintOperand(expr, RqExprCondLike::kOperand);
  if (expr.IsNegated()) Append(L" not");
  Append(L" like ");
  PrintOperand(expr, RqExprCondLike::kPatternString);
  if (expr.FindOperand(RqExprCondLike::kEscapeString)) {
    Append(L" escape ");
    PrintOperand(expr, RqExprCondLike::kEscapeString);
  }
  return true;
}

bool RqDumpout::Visit(RqExprCondIn& expr) {
  PrintOperand(expr, RqExprCondIn::kSearchExpr);
  if (expr.IsNegated()) Append(L" not");
  Append(L" in (");
  PrintOperand(expr, RqExprCondIn::kInValues);
  Append(L")");
  return true;
}

/// The rows of the values, each in parentheses. Values that are no list stand as they are.
void RqDumpout::PrintRows(RqExprCondMultiColumnIn& cond) {
  RqExpr* const pValues = cond.FindOperand(RqExprCondMultiColumnIn::kInValues);
  if (!pValues) return;
  if (!IsColumnList(*pValues)) {
    pValues->TourExpr(*this);
    return;
  }
  auto& columnList = static_cast<RqExprColumnListOrdered&>(*pValues);
  for (int i = 0; i < columnList.GetNumColumns(); ++i) {
    KX_ASSERT(columnList.GetIthColumn(i));
    Append(i > 0 ? std::wstring_view(L", (") : std::wstring_view(L"("));
    columnList.GetIthColumn(i)->TourExpr(*this);
    Append(L")");
  }
}

bool RqDumpout::Visit(RqExprCondMultiColumnIn& expr) {
  Append(L"(");
  PrintOperand(expr, RqExprCondMultiColumnIn::kSearchExpr);
  Append(L") ");
  if (expr.IsNegated()) Append(L"not ");
  Append(L"in (");
  PrintRows(expr);
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprCondGroupByContent& expr) {
  Append(L"[GroupByContent ");
  PrintOperands(expr);
  Append(L"]");
  return true;
}

bool RqDumpout::Visit(RqExprCondAtomicWrapper& expr) {
  Append(L"Atomic[");
  PrintOperand(expr, RqExprCondAtomicWrapper::kOperand);
  Append(L"]");
  return true;
}

namespace {

std::wstring_view JoinTypeWords(SqlTableRef::JoinType type) {
  switch (type) {
    case SqlTableRef::kInnerJoin:
      return L"Inner join";
    case SqlTableRef::kLeftOuterJoin:
      return L"Left outer join";
    case SqlTableRef::kRightOuterJoin:
      return L"Right outer join";
    case SqlTableRef::kFullOuterJoin:
      return L"Full outer join";
    case SqlTableRef::kFullOuterStitchJoin:
      return L"Full outer stitch join";
    case SqlTableRef::kNaturalJoin:
      return L"Natural join";
  }
  return L"Unknown join type";
}

}  // namespace

bool RqDumpout::Visit(RqExprCondOuterJoinFilter& expr) {
  Append(L"OuterJoinFilter[");
  Append(JoinTypeWords(expr.GetJoinType()));
  Append(L", ");
  PrintOperand(expr, RqExprCondOuterJoinFilter::kOperand);
  Append(L"]");
  return true;
}

bool RqDumpout::Visit(RqExprEvaluatePredicate& expr) {
  if (expr.IsNegated()) Append(L"not ");
  Append(L"Evaluate_Predicate( ");
  AppendStringText(expr.GetFunctionDef());
  if (expr.GetNumOperands() > 0) Append(L", ");
  PrintOperands(expr);
  Append(L") ");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Hierarchy predicates

void RqDumpout::PrintTableSource(const RqExprIsAncestor& cond) {
  if (cond.GetLTSVoidID().IsNullID()) return;
  Append(L", ");
  Append(cond.GetLTSVoidID());
}

bool RqDumpout::Visit(RqExprIsAncestor& expr) {
  if (expr.IsNegated()) Append(L" not ");
  if (expr.IsTypeOfIsLeaf() || expr.IsIsRoot()) {
    Append(expr.IsIsRoot() ? std::wstring_view(L"IsRoot(") : std::wstring_view(L"IsLeaf("));
    PrintOperand(expr, RqExprIsAncestor::k1stArg);
  } else {
    Append(L"IsAncestor(");
    PrintOperands(expr);
  }
  PrintTableSource(expr);
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprIsSibling& expr) {
  if (expr.IsNegated()) Append(L" not ");
  Append(L"IsSibling(");
  PrintOperands(expr);
  if (expr.IsIncludeRootNode()) Append(L", include root");
  PrintTableSource(expr);
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprIsLeaf& expr) {
  if (expr.IsNegated()) Append(L" not ");
  Append(L"IsLeaf(");
  PrintOperands(expr);
  Append(L")");
  return true;
}
