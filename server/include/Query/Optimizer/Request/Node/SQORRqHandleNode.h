#pragma once

#include "Query/Optimizer/Request/Node/SQORRqNodeImpl.h"

/// A holder of one tree, so that the tree can be passed on while its root is still to be replaced. On the stack it
/// serves as the release container of RqNode::Replace, which appends to it, and frees at its end what it was given.
class RqHandleNode final : public RqNodeImpl<RqHandleNode, RqNode, kRqHandleNode> {
 public:
  enum { kChildNode, kNumChildren };

  RqHandleNode() = default;
  explicit RqHandleNode(RqNode* pDonated);
  using RqNodeImpl::RqNodeImpl;

  /// Lends the tree; null when none is held.
  RqNode* GetRqNode();
  /// Hands the tree to the caller.
  RqNode* ReleaseRqNode();
};
