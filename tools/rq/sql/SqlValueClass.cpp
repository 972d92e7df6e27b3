#include "rq/sql/SqlValueClass.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "Host/KXThread.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"

namespace {

using enum SqlValueClass;

SqlValueClass ClassOf(KXDataType type) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(type)) {
    case KXTypeClass::kInteger:
      return kInteger;
    case KXTypeClass::kFloat:
      return kReal;
    case KXTypeClass::kMoney:
    case KXTypeClass::kDecimal:
      return kDecimal;
    case KXTypeClass::kText:
      return kText;
    case KXTypeClass::kDate:
      return kDate;
    case KXTypeClass::kTime:
      return kTime;
    case KXTypeClass::kDateTime:
      return kTimestamp;
    case KXTypeClass::kInterval:
      return kInterval;
    case KXTypeClass::kUnknown:
      return kUnknown;
    case KXTypeClass::kBit:
    case KXTypeClass::kBinary:
    case KXTypeClass::kObject:
    case KXTypeClass::kBoolean:
      return kOther;
  }
  return kUnknown;
}

/// Kinds whose values are of one class, whatever their operands are.
struct FixedClass {
  RqNodeType_e m_kind;
  SqlValueClass m_class;
};

constexpr auto kFixedClasses = std::to_array<FixedClass>({
    {kRqExprIntegerLiteral, kInteger},
    {kRqExprFloatLiteral, kReal},
    {kRqExprNumberLiteral, kDecimal},
    {kRqExprStringLiteral, kText},
    {kRqExprDateLiteral, kDate},
    {kRqExprTimeLiteral, kTime},
    {kRqExprDateTimeLiteral, kTimestamp},
    {kRqExprIntervalLiteral, kInterval},
    {kRqExprDivide, kReal},
    {kRqExprCharLength, kInteger},
    {kRqExprOctetLength, kInteger},
    {kRqExprBitLength, kInteger},
    {kRqExprLength, kInteger},
    {kRqExprPosition, kInteger},
    {kRqExprLocate, kInteger},
    {kRqExprAscii, kInteger},
    {kRqExprExtractBit, kInteger},
    {kRqExprTimestampDiff, kInteger},
    {kRqExprTimestampAdd, kTimestamp},
    {kRqExprSign, kInteger},
    {kRqExprExp, kReal},
    {kRqExprSqrt, kReal},
    {kRqExprLog, kReal},
    {kRqExprLog10, kReal},
    {kRqExprDegrees, kReal},
    {kRqExprRadians, kReal},
    {kRqExprSin, kReal},
    {kRqExprCos, kReal},
    {kRqExprTan, kReal},
    {kRqExprCot, kReal},
    {kRqExprAsin, kReal},
    {kRqExprAcos, kReal},
    {kRqExprAtan, kReal},
    {kRqExprAtan2, kReal},
    {kRqExprSinh, kReal},
    {kRqExprCosh, kReal},
    {kRqExprTanh, kReal},
    {kRqExprPi, kReal},
    {kRqExprRand, kReal},
    {kRqExprUpper, kText},
    {kRqExprLower, kText},
    {kRqExprConcat, kText},
    {kRqExprTrim, kText},
    {kRqExprSubstring, kText},
    {kRqExprReplace, kText},
    {kRqExprInsert, kText},
    {kRqExprLeft, kText},
    {kRqExprRight, kText},
    {kRqExprSpace, kText},
    {kRqExprRepeat, kText},
    {kRqExprChar, kText},
    {kRqExprAggrCount, kInteger},
    {kRqExprAggrCountStar, kInteger},
    {kRqExprAggrRowNum, kInteger},
    {kRqExprAggrRank, kInteger},
    {kRqExprAggrNtile, kInteger},
    {kRqExprAggrRunningCount, kInteger},
    {kRqExprAggrReportCount, kInteger},
    {kRqExprAggrStddev, kReal},
    {kRqExprAggrAvg, kReal},
    {kRqExprAggrMovingAvg, kReal},
    {kRqExprAggrReportAvg, kReal},
    {kRqExprAggrMedian, kReal},
    {kRqExprAggrPercentile, kReal},
    {kRqExprGroupingId, kInteger},
});

/// Kinds whose values are of the class of an operand.
constexpr auto kClassOfFirstOperand = std::to_array<RqNodeType_e>({
    kRqExprUnaryMinus,     kRqExprAbs,           kRqExprFloor,          kRqExprCeil,
    kRqExprTruncate,       kRqExprRound,         kRqExprSquare,         kRqExprNullIf,
    kRqExprAggrSum,        kRqExprAggrMin,       kRqExprAggrMax,        kRqExprAggrFirst,
    kRqExprAggrLast,       kRqExprAggrIf,        kRqExprAggrRunningSum, kRqExprAggrRunningMin,
    kRqExprAggrRunningMax, kRqExprAggrMovingSum, kRqExprAggrReportSum,  kRqExprAggrReportMin,
    kRqExprAggrReportMax,
});

bool IsNumber(SqlValueClass valueClass) {
  return valueClass == kInteger || valueClass == kDecimal || valueClass == kReal;
}

/// The class that holds the values of both.
SqlValueClass Common(SqlValueClass left, SqlValueClass right) {
  if (left == right) return left;
  if (IsNumber(left) && IsNumber(right)) return std::max(left, right);
  return kUnknown;
}

/// Of a sum or a difference.
SqlValueClass ClassOfSum(const RqExpr& expr, ARpGateway& gateway) {
  const SqlValueClass left = ClassOf(*expr.GetIthOperand(0), gateway);
  const SqlValueClass right = ClassOf(*expr.GetIthOperand(1), gateway);
  const bool bSubtract = expr.GetObjectType() == kRqExprSubtract;
  if (bSubtract && left == kDate && right == kDate) return kInteger;
  if (bSubtract && IsMoment(left) && IsMoment(right)) return kInterval;
  if (IsMoment(left)) return left;
  if (IsMoment(right)) return right;
  return Common(left, right);
}

/// Of values one of which is taken; literals of null do not count.
template <class Values>
SqlValueClass ClassOfAny(const Values& values, ARpGateway& gateway) {
  SqlValueClass common = kUnknown;
  bool bFirst = true;
  for (const RqExpr* const pValue : values) {
    if (!pValue || pValue->IsAlwaysNull()) continue;
    const SqlValueClass next = ClassOf(*pValue, gateway);
    common = bFirst ? next : Common(common, next);
    bFirst = false;
  }
  return common;
}

std::vector<const RqExpr*> ValuesOfChoice(const RqExpr& expr, int firstValue, int defaultSlot) {
  std::vector<const RqExpr*> values{expr.GetIthOperand(defaultSlot)};
  for (int i = firstValue; i < expr.GetNumOperands(); i += 2) values.push_back(expr.GetIthOperand(i));
  return values;
}

/// Whether the rows of a list are those of the lists in it.
bool HasRowsOfInner(const RqAbstractList& list) {
  return list.IsRqUnion() || list.IsRqIntersect() || list.IsRqExcept() || list.IsRqStats() || list.IsRqCanonicalMap();
}

/// What the column of that index is in each branch of a list.
void CollectColumn(const RqAbstractList& list, int index, std::vector<const RqExpr*>& values) {
  KXThread::LowStackCheck(0);
  if (HasRowsOfInner(list)) {
    for (int i = 0; i < list.GetNumChildren(); ++i) {
      if (const auto* const pBranch = dynamic_cast<const RqAbstractList*>(list.GetIthChild(i))) {
        CollectColumn(*pBranch, index, values);
      }
    }
    return;
  }
  const RqProjection* const pProjection = list.GetProjection();
  if (!pProjection || index < 0 || index >= pProjection->GetNumColumns()) return;
  values.push_back(pProjection->GetIthColumn(index)->GetExpr());
}

/// The column that is referred to is the first branch's where it is one of a set operator.
std::vector<const RqExpr*> ValuesOfReference(const RqDerivedColumnReference& reference) {
  if (!reference.IsValidDerivedColumnReference()) return {};
  const RqDerivedColumn& column = *reference.GetDerivedColumn();
  const RqAbstractList* pList = column.GetRqAbstractListContainer();
  if (!pList || !pList->GetProjection()) return {column.GetExpr()};
  const int index = pList->GetProjection()->FindColumnIndex(&column);
  while (const auto* const pOuter = dynamic_cast<const RqAbstractList*>(pList->GetParent())) pList = pOuter;
  std::vector<const RqExpr*> values;
  CollectColumn(*pList, index, values);
  return values;
}

/// The expressions of one of which the value of this one is; none if it is not one that takes another's value.
std::vector<const RqExpr*> ValuesTaken(const RqExpr& expr) {
  switch (expr.GetObjectType()) {
    case kRqDerivedColumnReference:
      return ValuesOfReference(static_cast<const RqDerivedColumnReference&>(expr));
    case kRqExprIfCase:
      return ValuesOfChoice(expr, RqExprIfCase::kFirstIfCond + 1, RqExprIfCase::kDefaultReturnValue);
    case kRqExprLookupCase:
      return ValuesOfChoice(expr, RqExprLookupCase::kFirstLookupEntry + 1, RqExprLookupCase::kDefaultReturnValue);
    case kRqExprCoalesce:
    case kRqExprIfNull: {
      std::vector<const RqExpr*> values;
      for (int i = 0; i < expr.GetNumOperands(); ++i) values.push_back(expr.GetIthOperand(i));
      return values;
    }
    case kRqExprPhysicalSubquery: {
      std::vector<const RqExpr*> values;
      const auto* const pList = static_cast<const RqExprPhysicalSubquery&>(expr).GetSubqueryRqAbstractList();
      if (pList) CollectColumn(*pList, 0, values);
      return values;
    }
    default:
      return {};
  }
}

SqlValueClass ClassOf(PropertyValue::Type type) {
  switch (type) {
    case PropertyValue::Integer:
      return kInteger;
    case PropertyValue::Float:
      return kReal;
    case PropertyValue::Number:
      return kDecimal;
    case PropertyValue::String:
    case PropertyValue::StringVector:
      return kText;
    case PropertyValue::Date:
      return kDate;
    case PropertyValue::Time:
      return kTime;
    case PropertyValue::DateTime:
      return kTimestamp;
  }
  return kUnknown;
}

bool IsAmong(std::span<const RqNodeType_e> kinds, RqNodeType_e kind) {
  return std::ranges::find(kinds, kind) != kinds.end();
}

}  // namespace

bool IsAlwaysReal(const RqExpr& expr, ARpGateway& gateway) {
  KXThread::LowStackCheck(0);
  const RqNodeType_e kind = expr.GetObjectType();
  const auto fixed = std::ranges::find(kFixedClasses, kind, &FixedClass::m_kind);
  if (fixed != kFixedClasses.end()) return fixed->m_class == kReal;
  const auto isReal = [&gateway](const RqExpr* pExpr) { return pExpr && IsAlwaysReal(*pExpr, gateway); };
  if (kind == kRqExprRound) return true;
  if (IsAmong(kClassOfFirstOperand, kind)) return expr.GetNumOperands() > 0 && isReal(expr.GetIthOperand(0));
  switch (kind) {
    case kRqExprAdd:
    case kRqExprSubtract:
    case kRqExprMultiply:
    case kRqExprMod:
      return isReal(expr.GetIthOperand(0)) || isReal(expr.GetIthOperand(1));
    case kRqExprCast:
    case kRqExprSessionVar:
      return ClassOf(expr, gateway) == kReal;
    default: {
      const std::vector<const RqExpr*> values = ValuesTaken(expr);
      return !values.empty() && std::ranges::all_of(values, [&](const RqExpr* pValue) {
        return !pValue || pValue->IsAlwaysNull() || isReal(pValue);
      });
    }
  }
}

SqlValueClass ClassOfColumn(const RqAbstractList& list, int index, ARpGateway& gateway) {
  std::vector<const RqExpr*> values;
  CollectColumn(list, index, values);
  return ClassOfAny(values, gateway);
}

SqlValueClass ClassOf(const RqExpr& expr, ARpGateway& gateway) {
  KXThread::LowStackCheck(0);
  const RqNodeType_e kind = expr.GetObjectType();
  const auto fixed = std::ranges::find(kFixedClasses, kind, &FixedClass::m_kind);
  if (fixed != kFixedClasses.end()) return fixed->m_class;
  if (IsAmong(kClassOfFirstOperand, kind)) {
    return expr.GetNumOperands() > 0 && expr.GetIthOperand(0) ? ClassOf(*expr.GetIthOperand(0), gateway) : kUnknown;
  }
  switch (kind) {
    case kRqTargetColumn: {
      const RefAColumn column(&gateway, static_cast<const RqTargetColumn&>(expr).GetColumnID());
      return column ? ClassOf(column->GetTypeInfo().type_) : kUnknown;
    }
    case kRqExprAdd:
    case kRqExprSubtract:
      return ClassOfSum(expr, gateway);
    case kRqExprMultiply:
    case kRqExprMod:
      return Common(ClassOf(*expr.GetIthOperand(0), gateway), ClassOf(*expr.GetIthOperand(1), gateway));
    case kRqExprCast:
      return ClassOf(static_cast<const RqExprCast&>(expr).GetToDataType());
    case kRqExprSessionVar:
      return ClassOf(static_cast<const RqExprSessionVar&>(expr).GetValue(&gateway)->GetType());
    case kRqExprCalendarExtract: {
      const KXDateTime::ExtractOpcode operation = static_cast<const RqExprCalendarExtract&>(expr).GetOperation();
      const bool bName = operation == KXDateTime::kExtractNameOfMonth || operation == KXDateTime::kExtractNameOfDay;
      return bName ? kText : kInteger;
    }
    default:
      return ClassOfAny(ValuesTaken(expr), gateway);
  }
}
