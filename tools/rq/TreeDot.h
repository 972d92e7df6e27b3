#pragma once

#include <string>

#include "rq/TreeDescription.h"

/// A tree as a graph for Graphviz. Solid edges are slots and lead to what stands in them; dashed ones lead from
/// references to their columns, from shared lists to what they share, and along the links of join graphs. Each query
/// block has a frame. An expression whose text is short is one node with that text; what is said of the others stands
/// in their nodes, cut short. The numbers n1, n2 ... are given in pre-order, so that one tree has one text.
///
/// Cost: linear in the text; any depth of tree will do, as nothing here recurses. pRp gives names, and may be null.
std::string WriteTreeDot(RqNode& root, ARpGateway* pRp, const TreeOptions& options);
