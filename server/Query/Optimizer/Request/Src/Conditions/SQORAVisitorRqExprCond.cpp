#include "Query/Optimizer/Request/Conditions/SQORAVisitorRqExprCond.h"

#include <type_traits>

namespace {

template <class Class>
constexpr bool kLetThrough =
    std::is_same_v<Class, RqExprCondMultiColumnIn> || std::is_same_v<Class, RqExprCondOuterJoinFilter>;

template <class Class>
bool VisitUnhandled() {
  if constexpr (kLetThrough<Class>) {
    return false;
  } else {
    KX_LOGIC_ERROR(L"");
  }
}

}  // namespace

#define RQ_VISIT(Class, body, state) \
  bool AVisitorRqExprCond::Visit(Class&) { return VisitUnhandled<Class>(); }
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
