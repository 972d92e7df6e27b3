// Bytes that nobody vouches for, read under a bound. What can be read is a tree like any other: it is copied, compared,
// printed and written, and what is written reads back as the same bytes.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

constexpr BoundedRead::Limits kLimits{.m_maxNesting = 300, .m_maxObjects = 100'000};

void Require(bool bHolds) {
  if (!bHolds) std::abort();
}

Heap<RqNode> Read(const ByteVector& bytes) {
  const BoundedRead bounds(bytes, kLimits);
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(bytes.data(), &pNode);
  Heap<RqNode> tree(pNode);
  bounds.RequireAtEnd(end);
  return tree;
}

ByteVector Write(RqNode* pNode) {
  ByteVector bytes;
  RqTreeVector::ToByteVector(pNode, bytes);
  return bytes;
}

/// Whether every reference leads to a column. One that does not has no byte form and no place in the order.
bool IsWhole(RqNode& tree) {
  std::vector<RqDerivedColumnReference*> references;
  FindAllReferences(tree, references);
  return std::ranges::all_of(references, [](const RqDerivedColumnReference* pReference) {
    return pReference->IsValidDerivedColumnReference();
  });
}

bool HasJoins(RqNode& tree) { return FoundNodes(&tree, RqNode::IsObjectType(kRqJoinNode)); }

/// A copy is the same tree under both relations, in its text and in its bytes; the links of joins may stand in another
/// order in it.
void UseTree(RqNode& tree) {
  const Heap<RqNode> copy(tree.DeepCopy(true));
  const bool bWhole = IsWhole(tree);
  if (bWhole && !HasJoins(tree)) Require(Write(copy.Get()) == Write(&tree));
  if (bWhole) const Heap<RqNode> nested(tree.NestedDeepCopy(true));
  const KXString text = RqDumpout::StringFrom(tree);
  Require(RqDumpout::StringFrom(*copy) == text);
  RqDumpout::StringFrom(tree, true, true, nullptr, false, nullptr, false, true);
  if (!tree.IsExpr() || !bWhole) return;
  const auto& expr = static_cast<const RqExpr&>(tree);
  const auto& exprCopy = static_cast<const RqExpr&>(*copy);
  const RqShallowLessThan rule;
  expr.IsEquivalent(exprCopy, RqEquivalence());
  // No tree is below itself; the copy of an outer join filter may be, as that class orders its nodes.
  expr.IsLessThan(exprCopy, rule);
  expr.IsConstant();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size) {
  const ByteVector bytes(pData, pData + size);
  try {
    const Heap<RqNode> tree = Read(bytes);
    if (!tree) return 0;
    ReattachRequest(*tree);
    UseTree(*tree);
    if (!IsWhole(*tree)) return 0;
    // What the reader passes over, such as a bool of 2, is gone in what is written: that reads back byte for byte.
    const ByteVector written = Write(tree.Get());
    const Heap<RqNode> again = Read(written);
    ReattachRequest(*again);
    const ByteVector rewritten = Write(again.Get());
    // Links settle in their order with the second reading.
    if (!HasJoins(*tree)) Require(rewritten == written);
    const Heap<RqNode> settled = Read(rewritten);
    ReattachRequest(*settled);
    Require(Write(settled.Get()) == rewritten);
  } catch (const ErrorMessage&) {
    // Damage, or a tree too deep for the stack: the answer that is wanted.
  }
  return 0;
}
