#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

#include <algorithm>
#include <compare>
#include <typeinfo>

#include "Host/DataBlobUtil.h"
#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

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
  if (GetKind() != rhs.GetKind()) return false;
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

namespace {

// The order of two nodes without their operands, under each rule. Comparing is what the sets and sorts of a request do
// most, on nodes of ever other classes: where the kinds tell, no virtual call is made.

struct PlainRule {
  std::weak_ordering Compare(const RqExpr& lhs, const RqExpr& rhs) const {
    if (const std::weak_ordering order = CompareKinds(lhs, rhs); order != 0) return order;
    return lhs.IsOrderedByKind() ? std::weak_ordering::equivalent : lhs.CompareShallow(rhs);
  }
};

template <class IsLess>
std::weak_ordering AskBothWays(const RqExpr& lhs, const RqExpr& rhs, const IsLess& isLess) {
  if (isLess(lhs, rhs)) return std::weak_ordering::less;
  return isLess(rhs, lhs) ? std::weak_ordering::greater : std::weak_ordering::equivalent;
}

/// Only aggregates have a share base, and they have fields.
struct ShareBaseRule {
  const RqShallowLessThan& m_rule;

  std::weak_ordering Compare(const RqExpr& lhs, const RqExpr& rhs) const {
    return !lhs.IsOrderedByKind() && lhs.IsAggr() && rhs.IsAggr() ? AskBothWays(lhs, rhs, m_rule)
                                                                  : PlainRule().Compare(lhs, rhs);
  }
};

struct UnknownRule {
  const RqShallowLessThan& m_rule;

  std::weak_ordering Compare(const RqExpr& lhs, const RqExpr& rhs) const { return AskBothWays(lhs, rhs, m_rule); }
};

/// The total order of two trees, and equivalent if no difference is found at any level.
/// Cost: kinds that differ decide at once; a tie costs two questions a node.
template <class Rule>
std::weak_ordering CompareTrees(const RqExpr& lhs, const RqExpr& rhs, const Rule& rule) {
  if (const std::weak_ordering order = rule.Compare(lhs, rhs); order != 0) return order;

  const int nLeft = lhs.GetNumOperands();
  const int nRight = rhs.GetNumOperands();
  const int nCommon = std::min(nLeft, nRight);
  for (int i = 0; i < nCommon; ++i) {
    const RqExpr* const pLeft = lhs.GetIthOperand(i);
    const RqExpr* const pRight = rhs.GetIthOperand(i);
    if (!pLeft && !pRight) continue;
    if (!pLeft || !pRight) return pLeft ? std::weak_ordering::greater : std::weak_ordering::less;
    if (const std::weak_ordering order = CompareTrees(*pLeft, *pRight, rule); order != 0) return order;
  }
  return nLeft <=> nRight;
}

/// Any rule may come; which it is is found out once for the whole tree.
std::weak_ordering Compare(const RqExpr& lhs, const RqExpr& rhs, const RqShallowLessThan& rule) {
  const std::type_info* const pType = &typeid(rule);
  if (pType == &typeid(RqShallowLessThan)) return CompareTrees(lhs, rhs, PlainRule());
  if (pType == &typeid(RqShallowLessThanShareBase)) return CompareTrees(lhs, rhs, ShareBaseRule{rule});
  return CompareTrees(lhs, rhs, UnknownRule{rule});
}

}  // namespace

bool RqExpr::IsLessThan(const RqExpr& rhs, const RqShallowLessThan& shallowLessThanPred) const {
  return Compare(*this, rhs, shallowLessThanPred) < 0;
}

bool RqExpr::IsDeepLessThan(const RqExpr& rhs, const RqShallowLessThan& shallowLessThanPred, bool& bEquivalent) const {
  const std::weak_ordering order = Compare(*this, rhs, shallowLessThanPred);
  bEquivalent = order == 0;
  return order < 0;
}

namespace {

/// That of an expression that is an aggregate.
const ShareBaseID& ShareBaseOf(const RqExpr& expr) { return static_cast<const RqExprAggr&>(expr).GetShareBase(); }

}  // namespace

bool RqEquivalenceShareBase::operator()(const RqExpr& lhs, const RqExpr& rhs) const {
  if (!lhs.IsEquivalent(rhs, *this)) return false;
  if (!lhs.IsAggr()) return true;
  return rhs.IsAggr() && ShareBaseOf(lhs) == ShareBaseOf(rhs);
}

bool RqShallowLessThanShareBase::operator()(const RqExpr& lhs, const RqExpr& rhs) const {
  if (lhs.IsAggr() && rhs.IsAggr()) {
    if (const auto order = ShareBaseOf(lhs) <=> ShareBaseOf(rhs); order != 0) return order < 0;
  }
  return lhs.IsShallowLessThan(rhs);
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

void RqExpr::TakeOperands(RqExprVector& exprs) {
  OwnedRqExprVector donated;
  donated.swap(exprs);
  for (RqExpr*& pExpr : donated) {
    AddChild(pExpr);
    pExpr = nullptr;
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
