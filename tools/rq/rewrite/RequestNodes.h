#pragma once

#include <functional>

#include "Query/Optimizer/Request/Node/SQORRqNode.h"

/// Visits every node of a request, children before their parents: those in child slots, in the blocks of subqueries and
/// in the conditions of links, each once. Raises ErrorMessage when the stack runs low.
void ForEachRequestNode(RqNode& root, const std::function<void(RqNode&)>& visit);
