#pragma once

#include "Host/KXAssert.h"
#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

/// Visitor over the operands of an expression, in pre-order: RqExpr::TourExpr calls the Visit of each node's class.
/// A true answer says that the visitor has dealt with the node and its operands. Side trees that are no operands are a
/// matter for the Visit body.
class AVisitorRqExpr : public memalloc::MemAllocNewdel {
 public:
  virtual ~AVisitorRqExpr() = default;

#define RQ_VISIT_BODY_Pure = 0;
#define RQ_VISIT_BODY_False \
  { return false; }
#define RQ_VISIT_BODY_LogicError \
  { KX_LOGIC_ERROR(L""); }
#define RQ_VISIT(Class, body, state) virtual bool Visit([[maybe_unused]] Class& expr) RQ_VISIT_BODY_##body
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
#undef RQ_VISIT_BODY_Pure
#undef RQ_VISIT_BODY_False
#undef RQ_VISIT_BODY_LogicError
};
