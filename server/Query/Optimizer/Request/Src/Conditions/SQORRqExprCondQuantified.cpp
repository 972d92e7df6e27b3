#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"

RqExprCondExists::RqExprCondExists(RqExprSubquery* subquery) {
  KX_ASSERT(subquery);
  AddChild(subquery);
}
