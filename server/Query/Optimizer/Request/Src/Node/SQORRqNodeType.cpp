#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

#include <type_traits>

#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"

std::string_view GetRqNodeTypeName(RqNodeType_e type) {
  switch (type) {
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) \
  case k##Class:                                                      \
    return #Class;
#define RQ_NODE_MARKER(value, Name) \
  case k##Name:                     \
    return #Name;
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
  }
  return {};
}

// The build holds the catalogue and the two lists of visitor overloads against each other.
namespace {

template <class Visitor, class Class>
concept HasVisit = requires {
  static_cast<bool (Visitor::*)(Class&)>(&Visitor::Visit);
};

// Each kind lands in an overload that the visitor has for exactly that class.
#define CHECK_None(Class) true
#define CHECK_Node(Class) HasVisit<AVisitorRqNode, Class>
#define CHECK_Expr(Class) HasVisit<AVisitorRqExpr, Class>
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) \
  static_assert(CHECK_##interface(VisitedAs), #VisitedAs " has no overload in the visitor of this interface");
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
#undef CHECK_None
#undef CHECK_Node
#undef CHECK_Expr

// Each overload stands for a class that the catalogue gives to that interface, in the same state.
struct Entry {
  char interface;
  bool bStands;
};
template <class Class>
inline constexpr Entry kEntry{};
#define INTERFACE_None                                                'x'
#define INTERFACE_Node                                                'n'
#define INTERFACE_Expr                                                'e'
#define STATE_Stands                                                  true
#define STATE_Declared                                                false
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) RQ_NODE_ENTRY(Class, state, interface)
#define RQ_NODE_UNNUMBERED(Class, state, interface)                   RQ_NODE_ENTRY(Class, state, interface)
#define RQ_NODE_ENTRY(Class, state, interface) \
  template <>                                  \
  inline constexpr Entry kEntry<Class>{INTERFACE_##interface, STATE_##state};
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
#define RQ_VISIT(Class, body, state)                                                     \
  static_assert(kEntry<Class>.interface == 'n', #Class " is no kind for node visitors"); \
  static_assert(kEntry<Class>.bStands == STATE_##state, #Class " has another state in the catalogue");
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
#define RQ_VISIT(Class, body, state)                                                           \
  static_assert(kEntry<Class>.interface == 'e', #Class " is no kind for expression visitors"); \
  static_assert(kEntry<Class>.bStands == STATE_##state, #Class " has another state in the catalogue");
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"

}  // namespace
