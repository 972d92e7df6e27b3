#pragma once

#include <memory>
#include <string>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

// What tests of the library ask of a node.

/// Its text on one line; that of null is empty.
inline std::string TextOf(const RqNode* pNode) { return RqDumpout::StringFrom(pNode).ToUTF8(); }
inline std::string TextOf(const RqNode& node) { return TextOf(&node); }

/// What it writes of itself, without its children.
inline ByteVector Payload(RqNode& node) {
  ByteVector bytes;
  node.ToByteVector(bytes);
  return bytes;
}

/// The tree as it comes back from its bytes, read as those of a stranger.
template <class Class>
Heap<Class> ReadBack(Class& tree) {
  ByteVector bytes;
  RqTreeVector::ToByteVector(&tree, bytes);
  const BoundedRead bounds(bytes);
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(bytes.data(), &pNode);
  Heap<Class> read(static_cast<Class*>(pNode));
  bounds.RequireAtEnd(end);
  return read;
}

/// A deep copy that keeps identities.
template <class Class>
std::unique_ptr<Class> Copy(const Class& source) {
  return std::unique_ptr<Class>(static_cast<Class*>(source.DeepCopy(false)));
}

/// The code of the error that an action raises; 0 if it raises none.
template <class Action>
unsigned long CodeRaisedBy(Action action) {
  try {
    action();
  } catch (const ErrorMessage& error) {
    return error.GetCode();
  }
  return 0;
}
