#include "rq/sql/SqlValueClass.h"

#include <algorithm>
#include <array>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
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
    kRqExprTruncate,       kRqExprMod,           kRqExprSquare,         kRqExprNullIf,
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

SqlValueClass ClassOfCase(const RqExpr& expr, int numLeading, int firstValue, int defaultSlot, ARpGateway& gateway) {
  std::vector<const RqExpr*> values{expr.GetIthOperand(defaultSlot)};
  for (int i = numLeading + firstValue; i < expr.GetNumOperands(); i += 2) values.push_back(expr.GetIthOperand(i));
  return ClassOfAny(values, gateway);
}

SqlValueClass ClassOfSubquery(const RqExprPhysicalSubquery& subquery, ARpGateway& gateway) {
  const RqAbstractList* const pList = subquery.GetSubqueryRqAbstractList();
  const RqProjection* const pProjection = pList ? pList->GetProjection() : nullptr;
  if (!pProjection || pProjection->GetNumColumns() == 0) return kUnknown;
  return ClassOf(*pProjection->GetIthColumn(0)->GetExpr(), gateway);
}

}  // namespace

SqlValueClass ClassOf(const RqExpr& expr, ARpGateway& gateway) {
  KXThread::LowStackCheck(0);
  const RqNodeType_e kind = expr.GetObjectType();
  const auto fixed = std::ranges::find(kFixedClasses, kind, &FixedClass::m_kind);
  if (fixed != kFixedClasses.end()) return fixed->m_class;
  if (std::ranges::find(kClassOfFirstOperand, kind) != kClassOfFirstOperand.end()) {
    return expr.GetNumOperands() > 0 && expr.GetIthOperand(0) ? ClassOf(*expr.GetIthOperand(0), gateway) : kUnknown;
  }
  switch (kind) {
    case kRqTargetColumn: {
      const RefAColumn column(&gateway, static_cast<const RqTargetColumn&>(expr).GetColumnID());
      return column ? ClassOf(column->GetTypeInfo().type_) : kUnknown;
    }
    case kRqDerivedColumnReference: {
      const auto& reference = static_cast<const RqDerivedColumnReference&>(expr);
      if (!reference.IsValidDerivedColumnReference()) return kUnknown;
      return ClassOf(*reference.GetDerivedColumn()->GetExpr(), gateway);
    }
    case kRqExprAdd:
    case kRqExprSubtract:
      return ClassOfSum(expr, gateway);
    case kRqExprMultiply:
      return Common(ClassOf(*expr.GetIthOperand(0), gateway), ClassOf(*expr.GetIthOperand(1), gateway));
    case kRqExprCast:
      return ClassOf(static_cast<const RqExprCast&>(expr).GetToDataType());
    case kRqExprIfCase:
      return ClassOfCase(expr, RqExprIfCase::kFirstIfCond, 1, RqExprIfCase::kDefaultReturnValue, gateway);
    case kRqExprLookupCase:
      return ClassOfCase(expr, RqExprLookupCase::kFirstLookupEntry, 1, RqExprLookupCase::kDefaultReturnValue, gateway);
    case kRqExprCoalesce:
    case kRqExprIfNull: {
      std::vector<const RqExpr*> values;
      for (int i = 0; i < expr.GetNumOperands(); ++i) values.push_back(expr.GetIthOperand(i));
      return ClassOfAny(values, gateway);
    }
    case kRqExprPhysicalSubquery:
      return ClassOfSubquery(static_cast<const RqExprPhysicalSubquery&>(expr), gateway);
    default:
      return kUnknown;
  }
}
