#include "Query/Optimizer/Request/Node/SQORSmartRqNodePtr.h"

#include "Host/KXAssert.h"

SmartRqNodePtr::SmartRqNodePtr(SmartRqNodeContainer* pTarget) : m_pRqNode(pTarget) {
  if (m_pRqNode) m_pRqNode->AddRqNodePtr(this);
}

SmartRqNodePtr::~SmartRqNodePtr() {
  if (m_pRqNode) m_pRqNode->ReleaseRqNodePtr(this);
}

SmartRqNodePtr& SmartRqNodePtr::operator=(SmartRqNodeContainer* pTarget) {
  if (m_pRqNode) m_pRqNode->ReleaseRqNodePtr(this);
  m_pRqNode = pTarget;
  if (m_pRqNode) m_pRqNode->AddRqNodePtr(this);
  return *this;
}

SmartRqNodeContainer& SmartRqNodePtr::operator*() const {
  if (!m_pRqNode) KX_LOGIC_ERROR(L"");
  return *m_pRqNode;
}

SmartRqNodeContainer* SmartRqNodePtr::operator->() const { return &**this; }

SmartRqNodeContainer::~SmartRqNodeContainer() {
  for (const SmartRqNodePtr* pPtr : m_nodePtrs) pPtr->NotifyDeletion();
}

void SmartRqNodeContainer::ReplaceSmartPtrReferences(SmartRqNodeContainer* pNew) {
  // Re-aiming takes each pointer out of the set, so the walk is over a copy.
  const SmartRqNodePtrSet nodePtrs = m_nodePtrs;
  for (SmartRqNodePtr* pPtr : nodePtrs) *pPtr = pNew;
}

void SmartRqNodeContainer::AddRqNodePtr(SmartRqNodePtr* pPtr) {
  if (pPtr) m_nodePtrs.insert(pPtr);
}
