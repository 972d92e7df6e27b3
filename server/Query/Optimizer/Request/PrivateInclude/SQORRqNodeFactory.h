#pragma once

#include "Host/HostTypes.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"

/// Makes the empty node of a kind that a payload is read into; the caller owns it. Null for a number that is no kind,
/// and for a kind that no tree is rebuilt of: abstract ones, and those that do not travel.
RqNode* MakeEmptyRqNode(RqNodeType_e type);

/// Raises an ErrorMessage unless each child slot of the node has what the class expects there. start is the node's
/// place in the bytes, for the message. A BoundedRead is in force.
void RequireRqNodeShape(const RqNode& node, const_iterator start);
