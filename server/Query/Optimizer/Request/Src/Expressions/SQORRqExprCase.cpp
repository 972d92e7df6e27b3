#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqExprLookupCase

RqExprLookupCase::RqExprLookupCase(RqExpr* pKey, RqExpr* pDefaultReturnValue, RqExprPairVector& entries) {
  KX_ASSERT(pKey);
  AddChild(pKey);
  AddChild(pDefaultReturnValue);
  for (const auto& [pEntryKey, pEntryValue] : entries) {
    KX_ASSERT(pEntryKey);
    KX_ASSERT(pEntryValue);
    AddChild(pEntryKey);
    AddChild(pEntryValue);
  }
  entries.clear();
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprIfCase

RqExprIfCase::RqExprIfCase(RqExpr* pDefaultReturnValue, RqExprPairVector& whenThenPairs)
    : RqScalarWithFields(pDefaultReturnValue) {
  for (const auto& [pCond, pValue] : whenThenPairs) AddNewWhenThenPair(OwnedRqExprPtr(pCond), OwnedRqExprPtr(pValue));
  whenThenPairs.clear();
}

void RqExprIfCase::AddNewWhenThenPair(OwnedRqExprPtr cond, OwnedRqExprPtr value) {
  RqExpr* const pCond = cond.Release();
  RqExpr* const pValue = value.Release();
  KX_ASSERT(pCond);
  KX_ASSERT(pValue);
  KX_ASSERT(pCond->IsCond());
  if (GetNumOperands() == 0) SetNumOperands(kFirstIfCond);
  AddChild(pCond);
  AddChild(pValue);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCoalesce

RqExprCoalesce::RqExprCoalesce(RqExprVector& valueExprs, bool bCreatedForJoin) : m_bCreatedForJoin(bCreatedForJoin) {
  for (RqExpr* const pValueExpr : valueExprs) AddValueExpr(OwnedRqExprPtr(pValueExpr));
  valueExprs.clear();
}

void RqExprCoalesce::AddValueExpr(OwnedRqExprPtr valueExpr) {
  RqExpr* const pValueExpr = valueExpr.Release();
  KX_ASSERT(pValueExpr);
  AddChild(pValueExpr);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprCast

bool RqExprCast::IsCastType(KXDataType type) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(type)) {
    case KXTypeClass::kBit:
    case KXTypeClass::kText:
    case KXTypeClass::kBinary:
    case KXTypeClass::kFloat:
    case KXTypeClass::kDecimal:
    case KXTypeClass::kDate:
    case KXTypeClass::kTime:
    case KXTypeClass::kDateTime:
      return true;
    case KXTypeClass::kInteger:
      return type == KXInt2Data || type == KXInt4Data;
    case KXTypeClass::kMoney:
    case KXTypeClass::kInterval:
    case KXTypeClass::kObject:
    case KXTypeClass::kBoolean:
    case KXTypeClass::kUnknown:
      return false;
  }
  return false;
}

const_iterator RqExprCast::FromByteVector(const_iterator start) {
  const const_iterator end = RqScalarWithFields::FromByteVector(start);
  if (!IsCastType(m_toDataType)) DataBlobUtil::RaiseMalformedIfBounded(start, L"type of a cast");
  return end;
}

bool RqExprCast::IsAlwaysNull() const {
  const RqExpr* const pOperand = GetIthOperand(kOperand);
  return pOperand && pOperand->IsAlwaysNull();
}
