#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"

#include <list>
#include <utility>

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqExprIsAncestor

RqExprIsAncestor::RqExprIsAncestor(RqExpr* pFirstArg, RqExpr* pSecArg, RqExpr* pDistance, bool bNegated)
    : m_bNegated(bNegated) {
  KX_ASSERT(pFirstArg);
  KX_ASSERT(pSecArg);
  KX_ASSERT(pDistance);
  AddChild(pFirstArg);
  AddChild(pSecArg);
  AddChild(pDistance);
}

RqExprIsAncestor::RqExprIsAncestor(RqExpr* pFirstArg, bool bNegated) : m_bIsLeaf(true), m_bNegated(bNegated) {
  KX_ASSERT(pFirstArg);
  AddChild(pFirstArg);
  AddChild(new RqExprIntegerLiteral(1, false));
  AddChild(new RqExprIntegerLiteral(-1, false));
}

RqExprIsAncestor::RqExprIsAncestor(const RqExprIsAncestor& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      m_bIsLeaf(rhs.m_bIsLeaf),
      m_bNegated(rhs.m_bNegated),
      m_LTSVoidID(rhs.m_LTSVoidID) {}

bool RqExprIsAncestor::IsDescendant() const {
  const RqExpr* const pSecArg = GetIthOperand(k2ndArg);
  KX_ASSERT(pSecArg);
  return pSecArg->IsTargetColumn() || pSecArg->IsAttribute();
}

RqAttribute* RqExprIsAncestor::GetAttributeArgument() {
  RqExpr* const pFirstArg = GetIthOperand(k1stArg);
  if (pFirstArg->IsAttribute()) return static_cast<RqAttribute*>(pFirstArg);
  RqExpr* const pSecArg = GetIthOperand(k2ndArg);
  KX_ASSERT(pSecArg->IsAttribute());
  return static_cast<RqAttribute*>(pSecArg);
}

RqTargetColumn* RqExprIsAncestor::GetTargetColumn() {
  RqExpr* const pFirstArg = GetIthOperand(k1stArg);
  if (pFirstArg->IsTargetColumn()) return static_cast<RqTargetColumn*>(pFirstArg);
  RqExpr* const pSecArg = GetIthOperand(k2ndArg);
  KX_ASSERT(pSecArg->IsTargetColumn());
  return static_cast<RqTargetColumn*>(pSecArg);
}

RqExpr* RqExprIsAncestor::GetLiteralColumn() {
  RqExpr* const pFirstArg = GetIthOperand(k1stArg);
  if (pFirstArg->IsConstant()) return pFirstArg;
  RqExpr* const pSecArg = GetIthOperand(k2ndArg);
  KX_ASSERT(pSecArg->IsConstant());
  return pSecArg;
}

std::int32_t RqExprIsAncestor::GetDistanceValue() const {
  const RqExpr* const pDistance = GetDistanceColumn();
  KX_ASSERT(pDistance && pDistance->GetObjectType() == kRqExprIntegerLiteral);
  return static_cast<const RqExprIntegerLiteral*>(pDistance)->GetValue();
}

bool RqExprIsAncestor::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqExpr::IsEquivalent(rhs, pred) && SortKey() == static_cast<const RqExprIsAncestor&>(rhs).SortKey();
}

bool RqExprIsAncestor::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprIsAncestor& cond) { return cond.SortKey(); });
}

void RqExprIsAncestor::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  RqFieldBytes::Write(bv, *this, kWrittenFields);
}

const_iterator RqExprIsAncestor::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqNodeImpl::FromByteVector(start), *this, kWrittenFields);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprIsSibling

RqExprIsSibling::RqExprIsSibling(RqExpr* first, RqExpr* second, RqExpr* pParentKey, bool bIncludeRootNode)
    : m_bIncludeRootNode(bIncludeRootNode) {
  KX_ASSERT(first);
  KX_ASSERT(second);
  KX_ASSERT(pParentKey);
  AddChild(first);
  AddChild(second);
  AddChild(new RqExprIntegerLiteral(1, false));
  AddChild(pParentKey);
}

RqExprIsSibling::RqExprIsSibling(const RqExprIsSibling& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_bIncludeRootNode(rhs.m_bIncludeRootNode) {}

RqExpr* RqExprIsSibling::GetParentKeyColumn() {
  RqExpr* const parentKey = GetIthOperand(kParentKey);
  KX_ASSERT(parentKey);
  return parentKey;
}

bool RqExprIsSibling::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return rhs.GetObjectType() == kRqExprIsSibling && RqExprIsAncestor::IsEquivalent(rhs, pred) &&
         m_bIncludeRootNode == static_cast<const RqExprIsSibling&>(rhs).m_bIncludeRootNode;
}

bool RqExprIsSibling::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprIsSibling& cond) {
    return std::tuple_cat(std::tie(cond.m_bIncludeRootNode), cond.SortKey());
  });
}

void RqExprIsSibling::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bIncludeRootNode);
}

const_iterator RqExprIsSibling::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_bIncludeRootNode);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprIsLeaf

namespace {

/// The distinct attributes of an expression, in their order. They stay the expression's.
RqExprSet CollectAttributes(RqExpr* pExpr) {
  std::list<RqNode*> nodes;
  FindNodes(
      pExpr, [](const RqNode& node) { return node.GetObjectType() == kRqAttribute; }, nodes, false);
  RqExprSet attributes;
  for (RqNode* const pNode : nodes) attributes.insert(static_cast<RqExpr*>(pNode));
  return attributes;
}

}  // namespace

RqExprIsLeaf::RqExprIsLeaf(RqExpr* pExpr, bool bNegated) : RqNodeImpl(bNegated) {
  KX_ASSERT(pExpr);
  AddChild(pExpr);
}

RqExprIsLeaf::RqExprIsLeaf(const RqExprIsLeaf& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy),
      maxExpr(rhs.maxExpr ? static_cast<RqExprCond*>(rhs.maxExpr->DeepExprCopy(bNewIDs)) : nullptr) {}

void RqExprIsLeaf::SetQueryLevelExpr(const RqExprVector& keyComponents) {
  KX_ASSERT(GetNumOperands() == kNumOperands);
  KX_ASSERT_TEXT(keyComponents.size() > 0, L"keyComponents.size() >0");
  // The components are copied while the old operand still stands: they may be parts of it.
  OwnedRqExprVector copies;
  for (const RqExpr* const pComponent : keyComponents) copies.push_back(pComponent->DeepExprCopy(false));
  RqHandleNode oldOperand(ReleaseIthChild(kExprOperand1));
  SetNumOperands(0);
  for (RqExpr*& pCopy : copies) AddChild(std::exchange(pCopy, nullptr));
}

void RqExprIsLeaf::SetProcessedExpr(OwnedRqExprCondPtr& processedExpr) {
  KX_ASSERT(processedExpr.Get());
  for (const RqExpr* const pAttribute : CollectAttributes(processedExpr.Get())) {
    AddChild(pAttribute->DeepExprCopy(false));
  }
  maxExpr = processedExpr;
}

void RqExprIsLeaf::RemoveProcessedExpr() {
  const auto numAttributes = static_cast<int>(CollectAttributes(maxExpr.Get()).size());
  SetNumOperands(GetNumOperands() - numAttributes);
  maxExpr = nullptr;
}

RqExprCond* RqExprIsLeaf::ReplaceWithProcessedExpr() {
  KX_ASSERT(maxExpr.Get());
  RqExprCond* const pProcessedExpr = maxExpr.Release();
  RqHandleNode removed;
  Replace(pProcessedExpr, removed);
  return pProcessedExpr;
}
