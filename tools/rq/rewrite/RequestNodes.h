#pragma once

#include <functional>

#include "Query/Optimizer/Request/Node/SQORRqNode.h"

/// Visits what stands right below a node of a request: its children, the block of a subquery and, at the node that a
/// link leaves, the link's condition.
void ForEachNodeBelow(RqNode& node, const std::function<void(RqNode&)>& visit);

/// Visits every node of a request, children before their parents: those in child slots, in the blocks of subqueries and
/// in the conditions of links, each once. Raises ErrorMessage when the stack runs low.
void ForEachRequestNode(RqNode& root, const std::function<void(RqNode&)>& visit);

/// Gives nodes of the request that have the identity of another one, as copies may, new ones.
void RenewCopiedIdentities(RqNode& root);
