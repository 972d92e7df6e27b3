#pragma once

#include "Host/HostTypes.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"

/// The byte form of a request. Raises std::runtime_error for a list that is too long to have one.
ByteVector WriteRequest(RqNode& root);

/// The request that bytes from outside hold, repaired: see ReattachRequest. Null for the bytes of no request. Raises
/// ErrorMessage for any damage, and for anything behind the request.
Heap<RqNode> ReadRequest(const ByteVector& bytes);
