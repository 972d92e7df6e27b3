#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"

#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqExprLookup

RqExprLookup::RqExprLookup(bool bDenseLookup, RqExpr* pValueExpr, RqExprVector& operands)
    : isDenseLookup(bDenseLookup), m_pValueExpr(pValueExpr) {
  TakeOperands(operands);
}

RqExprLookup::RqExprLookup(const RqExprLookup& rhs, bool bNewIDs, bool bDeepCopy)
    : RqScalarFunction(rhs, bNewIDs, bDeepCopy),
      isDenseLookup(rhs.isDenseLookup),
      m_pValueExpr(rhs.m_pValueExpr ? rhs.m_pValueExpr->DeepExprCopy(bNewIDs) : nullptr) {}

bool RqExprLookup::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqScalarFunction::IsEquivalent(rhs, pred)) return false;
  const auto& right = static_cast<const RqExprLookup&>(rhs);
  if (!m_pValueExpr != !right.m_pValueExpr) return false;
  if (m_pValueExpr && !pred(*m_pValueExpr, *right.m_pValueExpr)) return false;
  return isDenseLookup == right.isDenseLookup;
}

void RqExprLookup::ToByteVector(ByteVector& bv) {
  RqScalarFunction::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, isDenseLookup);
  RqTreeVector::ToByteVector(m_pValueExpr.Get(), bv);
}

const_iterator RqExprLookup::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(RqScalarFunction::FromByteVector(start), isDenseLookup);
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(start, &pNode);
  Heap<RqNode> value(pNode);
  if (value && !value->IsExpr()) DataBlobUtil::RaiseMalformed(start, L"expression");
  m_pValueExpr = static_cast<RqExpr*>(value.Release());
  return end;
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprExternalData

namespace {

/// Without a script first, then by what running it takes.
std::strong_ordering CompareScripts(const RefCnt<ExternalScriptExecutionData>& lhs,
                                    const RefCnt<ExternalScriptExecutionData>& rhs) {
  if (lhs.IsNull() || rhs.IsNull()) return !lhs.IsNull() <=> !rhs.IsNull();
  return *lhs <=> *rhs;
}

/// The fields that travel, in the order of the byte form.
constexpr std::tuple kExternalColumnBytes{
    RqEnumField{&RqExternalColumn::m_ExternalDataForm, RqExternalColumn::kUnknownData},
    &RqExternalColumn::m_ObjectReference,
    &RqExternalColumn::m_CacheSharedKey,
    &RqExternalColumn::m_ColumnName,
    &RqExternalColumn::m_bIsPrimaryKeyColumn,
    &RqExternalColumn::m_AggrRule,
    &RqExternalColumn::m_bIsVirtual,
    &RqExternalColumn::m_bIsForceVirtual,
    &RqExternalColumn::m_bIsOptionalVirtual,
    &RqExternalColumn::m_bIsSortKeyColumn,
    &RqExternalColumn::m_bIsDescriptorIDColumn,
    &RqExternalColumn::m_bScalarWithNoPath,
    &RqExternalColumn::m_bNeedsGrainCheck,
    &RqExternalColumn::m_bIsLookupJoinColumn,
    &RqExternalColumn::m_bIsPresentWithIncomingQuery,
    &RqExternalColumn::m_ExternalJoiningIndexVector};

}  // namespace

std::strong_ordering RqExprExternalData::CompareFields(const RqExprExternalData& rhs) const {
  const std::strong_ordering order = GetExternalColumn() <=> rhs.GetExternalColumn();
  return order != 0 ? order : CompareScripts(m_ExternalScriptExecutionData, rhs.m_ExternalScriptExecutionData);
}

bool RqExprExternalData::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqScalarFunction::IsEquivalent(rhs, pred) && CompareFields(static_cast<const RqExprExternalData&>(rhs)) == 0;
}

bool RqExprExternalData::IsShallowLessThan(const RqExpr& rhs) const {
  if (rhs.GetObjectType() != kRqExprExternalData) return RqScalarFunction::IsShallowLessThan(rhs);
  return CompareFields(static_cast<const RqExprExternalData&>(rhs)) < 0;
}

void RqExprExternalData::ToByteVector(ByteVector& bv) {
  RqScalarFunction::ToByteVector(bv);
  RqFieldBytes::Write(bv, GetExternalColumn(), kExternalColumnBytes);
}

const_iterator RqExprExternalData::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqScalarFunction::FromByteVector(start), static_cast<RqExternalColumn&>(*this),
                            kExternalColumnBytes);
}
