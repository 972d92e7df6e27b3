#pragma once

#include <cstdint>

#include "Host/HostTypes.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

class RqNode;

/// The frame of a node in the byte form: its number of child slots, null ones included, and its kind. A default one
/// stands for no node.
struct RqTreeVectorHdr {
  std::uint16_t numChildren_ = 0;
  std::int32_t objType_ = kRqNullNode;

  bool IsNull() const { return objType_ == kRqNullNode; }
  /// Raises ErrorMessage when the stack runs low or the job is cancelled.
  void ToByteVector(ByteVector& bv) const;
  static const_iterator FromByteVector(const_iterator start, RqTreeVectorHdr& header);
};

/// The byte form of a tree: depth first, each node as its frame, its own fields and its child slots in order; a null
/// slot is a default frame. No version and no checksum: whoever reads was built from the source of whoever wrote.
///
/// Identities do not travel: what is read has new ones. Nor do references out of a node's child slots.
class RqTreeVector {
 public:
  /// Appends the tree below pNode, which is lent and may be null, to bv. Wanted: a node of more than 65,535 child slots
  /// does not fit the frame, and its count is cut without a word: do not write one. Raises ErrorMessage when the stack
  /// runs low or the job is cancelled. Cost: one pass; recursive, a level of the tree a level of the stack.
  static void ToByteVector(RqNode* pNode, ByteVector& bv);

  /// Reads one tree, stores its root, null or owned by the caller, and returns the cursor behind it. Raises
  /// ErrorMessage as the writing does, and then leaves *ppNode as it was.
  ///
  /// The bytes are trusted: a kind that no tree is made of ends the process. Under a BoundedRead they are not. Damage
  /// raises an ErrorMessage with its offset, and a tree that is read has in every slot what its classes expect there,
  /// so that it can be copied, compared, printed and written, once ReattachRqList has aimed its references to columns:
  /// a reference without its column can only be printed.
  static const_iterator FromByteVector(const_iterator start, RqNode** ppNode);
};
