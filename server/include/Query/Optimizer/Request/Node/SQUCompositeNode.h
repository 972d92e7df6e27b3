#pragma once

#include <algorithm>
#include <cstdint>

#include "Host/KXString.h"
#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"

/// Identity of a node, unique within the process and not beyond it. A copy of a node keeps it or draws a new one.
class NodeID {
 public:
  NodeID();  ///< Draws a new identity.
  NodeID(const NodeID& rhs) = default;
  /// Draws a new identity, or takes that of rhs.
  NodeID(const NodeID& rhs, bool bUniqueID) : m_transientID(rhs.m_transientID) {
    if (bUniqueID) SetUniqueID();
  }
  NodeID& operator=(const NodeID& rhs) = default;

  void SetUniqueID();

  friend bool operator==(NodeID lhs, NodeID rhs) { return lhs.m_transientID == rhs.m_transientID; }
  friend bool operator<(NodeID lhs, NodeID rhs) { return lhs.m_transientID < rhs.m_transientID; }

  KXString ToString() const;  ///< "<<", the decimal identity, ">>".

 private:
  std::uint32_t m_transientID;
};

/// A node's identity and nothing else.
class PartialNodeImpl : public memalloc::MemAllocNewdel {
 public:
  PartialNodeImpl() = default;
  PartialNodeImpl(const PartialNodeImpl& rhs, bool bUniqueID) : m_nodeID(rhs.m_nodeID, bUniqueID) {}
  PartialNodeImpl(const PartialNodeImpl&) = delete;
  PartialNodeImpl& operator=(const PartialNodeImpl&) = delete;
  virtual ~PartialNodeImpl() = default;

  const NodeID& GetNodeID() const { return m_nodeID; }
  void SetNodeID(const NodeID& nodeID) { m_nodeID = nodeID; }
  void SetUniqueID() { m_nodeID.SetUniqueID(); }

 private:
  NodeID m_nodeID;
};

class CompositeNode;

/// The child slots of a node: a vector of pointers, null or not, whose targets CompositeNode owns. Two slots lie in the
/// vector itself, since most nodes are unary or binary and a node of a request should cost one allocation.
class NodeVector {
 public:
  NodeVector() noexcept {}
  NodeVector(const NodeVector&) = delete;
  NodeVector& operator=(const NodeVector&) = delete;
  ~NodeVector() {
    if (m_capacity != kInlineSlots) FreeSlots();
  }

  std::uint32_t Size() const { return m_size; }
  bool Empty() const { return m_size == 0; }
  CompositeNode*& operator[](std::uint32_t i) { return Data()[i]; }
  CompositeNode* operator[](std::uint32_t i) const { return Data()[i]; }

  void PushBack(CompositeNode* pNode) {
    if (m_size == m_capacity) [[unlikely]]
      Grow(m_size + m_size / 2 + 1);
    Data()[m_size++] = pNode;
  }
  CompositeNode* PopBack() { return Data()[--m_size]; }
  /// Appends null slots up to the size given, which is at least the present one.
  void GrowTo(std::uint32_t size) {
    if (size > m_capacity) Grow(size);
    if (m_capacity == kInlineSlots) {
      // A loop of a fixed length comes down to two stores.
      for (std::uint32_t i = 0; i < kInlineSlots; ++i) {
        if (i >= m_size) m_inline[i] = nullptr;
      }
    } else {
      std::fill(m_pSlots + m_size, m_pSlots + size, nullptr);
    }
    m_size = size;
  }
  /// Removes the slots, whatever they hold.
  void Clear() { m_size = 0; }

  CompositeNode* const* begin() const { return Data(); }
  CompositeNode* const* end() const { return Data() + m_size; }

 private:
  static constexpr std::uint32_t kInlineSlots = 2;

  CompositeNode** Data() { return m_capacity == kInlineSlots ? m_inline : m_pSlots; }
  CompositeNode* const* Data() const { return m_capacity == kInlineSlots ? m_inline : m_pSlots; }
  // Rare, and kept out of the callers, which would save registers for it each time.
  [[gnu::noinline]] void Grow(std::uint32_t capacity);
  [[gnu::noinline]] void FreeSlots();

  std::uint32_t m_size = 0;
  std::uint32_t m_capacity = kInlineSlots;
  union {
    CompositeNode* m_inline[kInlineSlots];
    CompositeNode** m_pSlots;
  };
};

/// A node with positional child slots and one parent. A slot may be null and counts all the same. The parent owns its
/// children and frees them; handing a node to a parent detaches it from the parent it had.
///
/// Not safe for use by two threads at a time.
class CompositeNode : public PartialNodeImpl {
 public:
  /// What FindChildIndex answers for a stranger: above any valid index, and not minus one.
  static constexpr int kChildNotFound = 0x7fffffff;

  CompositeNode() = default;
  /// Copies the identity alone: no children, no parent.
  CompositeNode(const CompositeNode& rhs, bool bUniqueID) : PartialNodeImpl(rhs, bUniqueID) {}
  /// Frees the subtree in constant stack depth, and leaves a null slot in the parent of a node still attached.
  ~CompositeNode() override {
    if (!m_children.Empty() || m_pParent) Dismantle();
  }

  CompositeNode* GetParent() { return m_pParent; }
  const CompositeNode* GetParent() const { return m_pParent; }
  int GetNumChildren() const { return static_cast<int>(m_children.Size()); }

  /// Lends the child of a slot, null or not. The index must be in range.
  CompositeNode* GetIthChild(int i) {
    AssertInRange(i);
    return m_children[static_cast<std::uint32_t>(i)];
  }
  const CompositeNode* GetIthChild(int i) const {
    AssertInRange(i);
    return m_children[static_cast<std::uint32_t>(i)];
  }

  /// Deletes what the slot holds and takes pNewChild, which may be null. The node it already holds is left alone. A
  /// node that stands in a later slot of this very parent ends up in that later slot: the lower one is the first to be
  /// found when it is detached. Requires: pNewChild does not stand below what the slot holds, which is deleted first;
  /// to lift a node over its parent, release it beforehand.
  void SetIthChild(int i, CompositeNode* pNewChild);
  /// Hands the child to the caller; the slot stays, null. The index is not checked.
  CompositeNode* ReleaseIthChild(int i);
  /// Appends a slot and takes pNewChild, which may be null.
  void AddChild(CompositeNode* pNewChild) {
    if (pNewChild && pNewChild->m_pParent) [[unlikely]]
      pNewChild->ReleaseFromParent();
    m_children.PushBack(pNewChild);
    if (pNewChild) pNewChild->m_pParent = this;
  }
  /// Removes the slot that holds pChild. The child moves to the end of pReleaseContainer, or is deleted when that is
  /// null. A pointer that is no child changes nothing.
  void DeleteChild(CompositeNode* pChild, CompositeNode* pReleaseContainer);
  /// Deletes the children past the new end, or appends null slots. The number must not be negative.
  void SetNumChildren(int nChildren);
  /// The first slot that holds the pointer, or kChildNotFound. Linear: nodes have few children.
  int FindChildIndex(const CompositeNode* pSearchNode) const;
  /// Detaches this node and hands it to the caller; its slot stays, null.
  CompositeNode* ReleaseFromParent();

 protected:
  static constexpr std::int32_t kNoKind = -1;

  /// Gives a node under construction as many null slots.
  void MakeSlots(int nChildren) { m_children.GrowTo(static_cast<std::uint32_t>(nChildren)); }
  /// Fills a null slot with a detached node.
  void FillSlot(int i, CompositeNode* pNewChild) {
    m_children[static_cast<std::uint32_t>(i)] = pNewChild;
    pNewChild->m_pParent = this;
  }

 private:
  void AssertInRange(int i) const {
    if (static_cast<std::uint32_t>(i) >= m_children.Size()) [[unlikely]]
      FailRange();
  }
  [[noreturn]] static void FailRange();
  void Dismantle();
  CompositeNode* ReleaseChildrenTo(CompositeNode* pDoomed);

 protected:
  /// What the classes built on this one may keep of the class of the object. It stands here, and is not used here,
  /// since here it takes the place of padding.
  std::int32_t m_kind = kNoKind;

 private:
  NodeVector m_children;
  CompositeNode* m_pParent = nullptr;
};
