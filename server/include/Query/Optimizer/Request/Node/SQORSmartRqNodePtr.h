#pragma once

#include <cstdint>
#include <functional>
#include <set>

#include "Host/MemAlloc.h"

class SmartRqNodeContainer;

/// A pointer at a node that it does not own, and that reads null once the node is gone: the target knows the address of
/// every pointer aimed at it and tells them when it dies.
class SmartRqNodePtr {
 public:
  SmartRqNodePtr() = default;
  explicit SmartRqNodePtr(SmartRqNodeContainer* pTarget);
  explicit SmartRqNodePtr(SmartRqNodeContainer& target) : SmartRqNodePtr(&target) {}
  SmartRqNodePtr(const SmartRqNodePtr& rhs) : SmartRqNodePtr(rhs.m_pRqNode) {}
  ~SmartRqNodePtr();

  SmartRqNodePtr& operator=(SmartRqNodeContainer* pTarget);
  SmartRqNodePtr& operator=(const SmartRqNodePtr& rhs) { return *this = rhs.m_pRqNode; }

  SmartRqNodeContainer& operator*() const;   ///< The target must be there.
  SmartRqNodeContainer* operator->() const;  ///< The target must be there.
  SmartRqNodeContainer* Get() const { return m_pRqNode; }

  friend bool operator==(const SmartRqNodePtr& lhs, const SmartRqNodePtr& rhs) {
    return lhs.m_pRqNode == rhs.m_pRqNode;
  }
  friend bool operator<(const SmartRqNodePtr& lhs, const SmartRqNodePtr& rhs) {
    return std::less<>{}(lhs.m_pRqNode, rhs.m_pRqNode);
  }

  /// Called by the dying target: forgets it, with no further action.
  void NotifyDeletion() const { m_pRqNode = nullptr; }

 private:
  mutable SmartRqNodeContainer* m_pRqNode = nullptr;
};

using SmartRqNodePtrSet = std::set<SmartRqNodePtr*, std::less<SmartRqNodePtr*>, KXNodeStdAlloc<SmartRqNodePtr*>>;

/// Mix-in of nodes that others point at without owning them. A copy starts with no pointers aimed at it.
class SmartRqNodeContainer : public memalloc::MemAllocNewdel {
 public:
  SmartRqNodeContainer() = default;
  SmartRqNodeContainer(const SmartRqNodeContainer&) : memalloc::MemAllocNewdel() {}
  SmartRqNodeContainer& operator=(const SmartRqNodeContainer&) = delete;
  virtual ~SmartRqNodeContainer();

  /// Re-aims every pointer at this object to pNew, which may be null.
  virtual void ReplaceSmartPtrReferences(SmartRqNodeContainer* pNew);
  virtual std::int32_t GetSmartPtrReferencesCount() { return static_cast<std::int32_t>(m_nodePtrs.size()); }
  virtual void AddRqNodePtr(SmartRqNodePtr* pPtr);
  virtual void ReleaseRqNodePtr(SmartRqNodePtr* pPtr) { m_nodePtrs.erase(pPtr); }

 private:
  SmartRqNodePtrSet m_nodePtrs;
};
