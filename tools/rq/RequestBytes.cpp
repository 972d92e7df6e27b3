#include "rq/RequestBytes.h"

#include <limits>
#include <list>
#include <stdexcept>
#include <string>

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"

namespace {

/// What bytes may ask for: more than the default, since commands run on a stack of kBigStackBytes.
constexpr BoundedRead::Limits kLimits{.m_maxNesting = 200'000, .m_maxObjects = 50'000'000};

}  // namespace

ByteVector WriteRequest(RqNode& root) {
  std::list<RqNode*> nodes;
  root.GetObjects(nodes);
  for (const RqNode* const pNode : nodes) {
    // A longer list would be cut without a word.
    const int limit = std::numeric_limits<decltype(RqTreeVectorHdr::numChildren_)>::max();
    if (pNode->GetNumChildren() > limit) {
      throw std::runtime_error("a list of " + std::to_string(pNode->GetNumChildren()) +
                               " entries has no byte form: the most are " + std::to_string(limit));
    }
  }
  ByteVector bytes;
  RqTreeVector::ToByteVector(&root, bytes);
  return bytes;
}

Heap<RqNode> ReadRequest(const ByteVector& bytes) {
  const BoundedRead bounds(bytes, kLimits);
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(bytes.data(), &pNode);
  Heap<RqNode> tree(pNode);
  bounds.RequireAtEnd(end);
  if (tree) ReattachRequest(*tree);
  return tree;
}
