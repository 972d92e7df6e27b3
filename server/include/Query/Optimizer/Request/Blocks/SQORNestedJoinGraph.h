#pragma once

#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

class ARpGateway;
class RqJoinNode;

/// Turns a flat graph of joins into a smaller graph of nested joins.
class NestedJoinGraph {
 public:
  NestedJoinGraph() = delete;

  /// Law: (A join B on c) and (B join C on d) over tables A, B, C  =>  (A join B on c) join C on d, so that a connected
  ///      part of the graph is one tree of table references.
  ///
  /// Requires: every link leads from a node of joinNodes to another one; every node has a table reference; joinTrees is
  ///           empty.
  /// Ensures:  joinTrees holds one new node, the caller's, for each part that is connected by the links that are
  ///           folded, in the order of the first nodes of the parts. All links are folded, or those that are no inner
  ///           joins if bOuterJoinsOnly says so. A link between two parts becomes one between their new nodes, in the
  ///           order of the old ones, driven from the same side. Every condition ends in a tree, on such a link, or in
  ///           residualCond, to which an inner join within one tree that was not folded adds its own. joinNodes is
  ///           empty: nodes and links are gone.
  /// Cost:     for each link the logarithm of the nodes and a walk along the lists of its two ends; for one that
  ///           closes a cycle also the depth of the tree. Iterative.
  /// Example:  A inner B on p, B left C on q, for all links: one tree, ((A inner B on p) left C on q); for outer joins
  ///           alone: A and (B left C on q), with a link on p between them.
  static void CollapseJoinTree(std::vector<RqJoinNode*>& joinNodes, bool bOuterJoinsOnly,
                               std::vector<RqJoinNode*>& joinTrees, OwnedRqExprCondPtr& residualCond, ARpGateway* pRp);
};
