#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

#include <algorithm>
#include <typeinfo>

#include "Host/DataBlobUtil.h"
#include "Host/KXThread.h"

static_assert(sizeof(RqExpr) == sizeof(RqNode));

AVisitorRqNode& RqExpr::Tour(AVisitorRqNode& visitor) {
  KXThread::LowStackCheck(0);
  KXThreadJobMgr::ServiceJobCancellation();
  Accept(visitor);
  return visitor;
}

AVisitorRqExpr& RqExpr::TourExpr(AVisitorRqExpr& visitor) {
  KXThread::LowStackCheck(0);
  KXThreadJobMgr::ServiceJobCancellation();
  if (Accept(visitor)) return visitor;
  for (int i = 0; i < GetNumOperands(); ++i) {
    if (RqExpr* const pOperand = GetIthOperand(i)) pOperand->TourExpr(visitor);
  }
  return visitor;
}

bool RqExpr::IsConstant() const {
  const int numOperands = GetNumOperands();
  for (int i = 0; i < numOperands; ++i) {
    const RqExpr* const pOperand = GetIthOperand(i);
    if (pOperand && !pOperand->IsConstant()) return false;
  }
  return numOperands > 0;
}

bool RqExpr::IsNavigationConstant() const {
  const int numOperands = GetNumOperands();
  if (numOperands == 0) return IsConstant();
  for (int i = 0; i < numOperands; ++i) {
    const RqExpr* const pOperand = GetIthOperand(i);
    if (pOperand && !pOperand->IsNavigationConstant()) return false;
  }
  return true;
}

bool RqExpr::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (GetObjectType() != rhs.GetObjectType()) return false;
  const int numOperands = GetNumOperands();
  if (numOperands != rhs.GetNumOperands()) return false;
  for (int i = 0; i < numOperands; ++i) {
    const RqExpr* const pLeft = GetIthOperand(i);
    const RqExpr* const pRight = rhs.GetIthOperand(i);
    if (!pLeft && !pRight) continue;
    if (!pLeft || !pRight || !pred(*pLeft, *pRight)) return false;
  }
  return true;
}

bool RqExpr::IsLessThan(const RqExpr& rhs, const RqShallowLessThan& shallowLessThanPred) const {
  bool bEquivalent = false;
  return IsDeepLessThan(rhs, shallowLessThanPred, bEquivalent);
}

bool RqExpr::IsDeepLessThan(const RqExpr& rhs, const RqShallowLessThan& shallowLessThanPred, bool& bEquivalent) const {
  bEquivalent = false;
  // Most nodes that differ are of two kinds, and the plain rule orders those by number: it need not be asked.
  if (typeid(shallowLessThanPred) == typeid(RqShallowLessThan)) {
    const RqNodeType_e type = GetObjectType();
    const RqNodeType_e rhsType = rhs.GetObjectType();
    if (type != rhsType) return type < rhsType;
  }
  if (shallowLessThanPred(*this, rhs)) return true;
  if (shallowLessThanPred(rhs, *this)) return false;

  const int nLeft = GetNumOperands();
  const int nRight = rhs.GetNumOperands();
  const int nCommon = std::min(nLeft, nRight);
  for (int i = 0; i < nCommon; ++i) {
    const RqExpr* const pLeft = GetIthOperand(i);
    const RqExpr* const pRight = rhs.GetIthOperand(i);
    if (!pLeft && !pRight) continue;
    if (!pLeft || !pRight) return !pLeft;
    bool bOperandsEquivalent = false;
    if (pLeft->IsDeepLessThan(*pRight, shallowLessThanPred, bOperandsEquivalent)) return true;
    if (!bOperandsEquivalent) return false;
  }
  bEquivalent = nLeft == nRight;
  return nLeft < nRight;
}

void RqExpr::FindEquivalentSubExprs(RqExpr* pRoot, const RqExpr& searchExpr, RqExprVector& equivalentSubExprs) {
  if (!pRoot) return;
  if (RqEquivalenceShareBase{}(*pRoot, searchExpr)) {
    equivalentSubExprs.push_back(pRoot);
    return;
  }
  const int numOperands = pRoot->GetNumOperands();
  for (int i = 0; i < numOperands; ++i) {
    FindEquivalentSubExprs(pRoot->GetIthOperand(i), searchExpr, equivalentSubExprs);
  }
}

void RqExpr::FindSubExprs(RqExpr* pRoot, ConstRqExprVector& subExprs) {
  if (!pRoot) return;
  const int numOperands = pRoot->GetNumOperands();
  if (numOperands == 0) subExprs.push_back(pRoot);
  for (int i = 0; i < numOperands; ++i) FindSubExprs(pRoot->GetIthOperand(i), subExprs);
}

void RqExpr::ToByteVector_KXTypeInfo(ByteVector& bv, const KXTypeInfo& typeInfo) {
  KXString typeName;
  SUKXDataTypeUtility::GetSingleWordKXDataTypeName(typeInfo.type_, typeName);
  DataBlobUtil::ToByteVector(bv, typeName);
  DataBlobUtil::ToByteVector(bv, typeInfo.precision_);
  DataBlobUtil::ToByteVector(bv, typeInfo.scale_);
  DataBlobUtil::ToByteVector(bv, typeInfo.nullable_);
}

const_iterator RqExpr::FromByteVector_KXTypeInfo(const_iterator start, KXTypeInfo& typeInfo) {
  KXString typeName;
  start = DataBlobUtil::FromByteVector(start, typeName, true);
  typeInfo.type_ = SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(typeName);
  start = DataBlobUtil::FromByteVector(start, typeInfo.precision_);
  start = DataBlobUtil::FromByteVector(start, typeInfo.scale_);
  return DataBlobUtil::FromByteVector(start, typeInfo.nullable_);
}

namespace {

template <class Vector>
bool EquivalentVectors(const Vector& lhs, const Vector& rhs, const RqEquivalence& pred) {
  return std::equal(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(), [&pred](const RqExpr* pLeft, const RqExpr* pRight) {
    if (!pLeft || !pRight) return !pLeft && !pRight;
    return pred(*pLeft, *pRight);
  });
}

template <class Vector>
bool LessEquivalentVectors(const Vector& lhs, const Vector& rhs) {
  return std::lexicographical_compare(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(), LessEquivalentRqExpr());
}

}  // namespace

bool EquivalentVectorExprs(const RqExprVector& lhs, const RqExprVector& rhs, const RqEquivalence& pred) {
  return EquivalentVectors(lhs, rhs, pred);
}

bool EquivalentVectorExprs(const ConstRqExprVector& lhs, const ConstRqExprVector& rhs, const RqEquivalence& pred) {
  return EquivalentVectors(lhs, rhs, pred);
}

bool LessEquivalentVectorExprs(const RqExprVector& lhs, const RqExprVector& rhs) {
  return LessEquivalentVectors(lhs, rhs);
}

bool LessEquivalentVectorExprs(const ConstRqExprVector& lhs, const ConstRqExprVector& rhs) {
  return LessEquivalentVectors(lhs, rhs);
}
