#pragma once

#include "Host/KXString.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

/// Visitor over the structure of a request: RqNode::Tour calls the Visit of each node's class. An expression arrives as
/// one opaque leaf in Visit(RqExpr&); a visitor that wants its inside starts RqExpr::TourExpr from there.
///
/// A true answer says that the visitor has dealt with the subtree and ends the descent at that node alone; siblings and
/// the rest of the tour go on. A post-order visitor cannot prune: its answers are ignored.
class AVisitorRqNode {
 public:
  static const KXString kNewLine;  ///< One line feed.

  virtual ~AVisitorRqNode() = default;

#define RQ_VISIT_BODY_Pure = 0;
#define RQ_VISIT_BODY_False \
  { return false; }
#define RQ_VISIT(Class, body, state) virtual bool Visit([[maybe_unused]] Class& node) RQ_VISIT_BODY_##body
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
#undef RQ_VISIT_BODY_Pure
#undef RQ_VISIT_BODY_False

  /// True makes the tour call Visit behind the children. No visitor of this library does; it is kept for outside ones.
  virtual bool IsPostOrderVisitor() const { return false; }
};
