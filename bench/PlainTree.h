#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

class RqExpr;

/// The baseline of the tree benchmarks: what one would write without a library. 96 bytes a node, any number of children
/// by std::unique_ptr, a virtual clone, the system allocator.
class PlainNode {
 public:
  PlainNode() = default;
  PlainNode(const PlainNode&) = delete;
  PlainNode& operator=(const PlainNode&) = delete;
  virtual ~PlainNode() = default;

  virtual std::unique_ptr<PlainNode> Clone() const;
  virtual std::size_t Tour() const;
  virtual bool Equals(const PlainNode& rhs) const;
  virtual void AppendText(std::string& text) const;

  std::vector<std::unique_ptr<PlainNode>> m_children;
  std::int32_t m_kind = 0;
  std::int64_t m_payload[7] = {};
};

/// The same node in an arena: the children are a run of pointers behind the node, and nothing is ever freed.
struct ArenaNode {
  virtual ~ArenaNode() = default;
  ArenaNode** m_children = nullptr;
  std::int32_t m_numChildren = 0;
  std::int32_t m_kind = 0;
  std::int64_t m_payload[9] = {};
};

/// Copies a tree into an arena, whose end place is moved on.
ArenaNode* CopyToArena(const PlainNode& node, std::byte*& place);

/// The same shape, node for node. The kind and, for a leaf, its text go with it.
std::unique_ptr<PlainNode> MakePlainTree(const RqExpr& expr);

std::size_t CountNodes(const PlainNode& node);
