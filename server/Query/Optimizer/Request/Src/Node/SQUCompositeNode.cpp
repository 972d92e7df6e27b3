#include "Query/Optimizer/Request/Node/SQUCompositeNode.h"

#include <algorithm>
#include <utility>

#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"
#include "Host/UniqueIDGenerator.h"

NodeID::NodeID() : m_transientID(sug::UniqueIDGenerator::generateProcessUniqueID32()) {}

void NodeID::SetUniqueID() { m_transientID = sug::UniqueIDGenerator::generateProcessUniqueID32(); }

KXString NodeID::ToString() const {
  KXString text(L"<<");
  text.append(BaseStringUtil::StringFrom(m_transientID));
  text.append(L">>");
  return text;
}

void NodeVector::FreeSlots() { KXNodeAlloc::deallocate(m_pSlots, m_capacity * sizeof(CompositeNode*)); }

void NodeVector::Grow(std::uint32_t capacity) {
  auto** const pSlots =
      static_cast<CompositeNode**>(KXNodeAlloc::allocate(capacity * sizeof(CompositeNode*), __FILE__, __LINE__));
  std::copy(begin(), end(), pSlots);
  if (m_capacity != kInlineSlots) FreeSlots();
  m_pSlots = pSlots;
  m_capacity = capacity;
}

/// Law: the nodes of a subtree can be freed in any order in which each is childless when its turn comes.
/// Ensures: constant stack depth, whatever the depth of the tree, and no memory taken: a node that waits for its turn
///          has no parent any more, and keeps in its place the node that comes after it.
void CompositeNode::Dismantle() {
  if (m_pParent) ReleaseFromParent();
  CompositeNode* pDoomed = ReleaseChildrenTo(nullptr);
  while (pDoomed) {
    CompositeNode* const pCurrent = std::exchange(pDoomed, std::exchange(pDoomed->m_pParent, nullptr));
    pDoomed = pCurrent->ReleaseChildrenTo(pDoomed);
    delete pCurrent;
  }
}

/// Puts the children before the nodes that wait, the last one first, and has none then. Gives the new first.
CompositeNode* CompositeNode::ReleaseChildrenTo(CompositeNode* pDoomed) {
  for (CompositeNode* const pChild : m_children) {
    if (!pChild) continue;
    pChild->m_pParent = pDoomed;
    pDoomed = pChild;
  }
  m_children.Clear();
  return pDoomed;
}

void CompositeNode::FailRange() { KX_LOGIC_ERROR(L""); }

void CompositeNode::SetIthChild(int i, CompositeNode* pNewChild) {
  AssertInRange(i);
  const auto slot = static_cast<std::uint32_t>(i);
  CompositeNode* const pOldChild = m_children[slot];
  if (pOldChild == pNewChild) return;
  if (pOldChild) {
    pOldChild->m_pParent = nullptr;
    delete pOldChild;
  }
  m_children[slot] = pNewChild;
  if (pNewChild) {
    if (pNewChild->m_pParent) pNewChild->ReleaseFromParent();
    pNewChild->m_pParent = this;
  }
}

CompositeNode* CompositeNode::ReleaseIthChild(int i) {
  CompositeNode* const pChild = std::exchange(m_children[static_cast<std::uint32_t>(i)], nullptr);
  if (pChild) pChild->m_pParent = nullptr;
  return pChild;
}

void CompositeNode::DeleteChild(CompositeNode* pChild, CompositeNode* pReleaseContainer) {
  const auto* const pSlot = std::find(m_children.begin(), m_children.end(), pChild);
  if (pSlot == m_children.end()) return;
  auto slot = static_cast<std::uint32_t>(pSlot - m_children.begin());
  Heap<CompositeNode> doomed(ReleaseIthChild(static_cast<int>(slot)));
  if (pReleaseContainer) pReleaseContainer->AddChild(doomed.Release());
  const std::uint32_t last = m_children.Size() - 1;
  for (; slot < last; ++slot) m_children[slot] = std::exchange(m_children[slot + 1], nullptr);
  SetNumChildren(static_cast<int>(last));
}

void CompositeNode::SetNumChildren(int nChildren) {
  const auto size = static_cast<std::uint32_t>(nChildren);
  while (m_children.Size() > size) {
    if (CompositeNode* const pChild = m_children.PopBack()) {
      pChild->m_pParent = nullptr;
      delete pChild;
    }
  }
  m_children.GrowTo(size);
}

int CompositeNode::FindChildIndex(const CompositeNode* pSearchNode) const {
  const auto* const pSlot = std::find(m_children.begin(), m_children.end(), pSearchNode);
  return pSlot == m_children.end() ? kChildNotFound : static_cast<int>(pSlot - m_children.begin());
}

CompositeNode* CompositeNode::ReleaseFromParent() {
  if (!m_pParent) return this;
  // A node that waits for its turn in Dismantle stands in no slot of what m_pParent points to.
  if (const int i = m_pParent->FindChildIndex(this); i != kChildNotFound) m_pParent->ReleaseIthChild(i);
  return this;
}
