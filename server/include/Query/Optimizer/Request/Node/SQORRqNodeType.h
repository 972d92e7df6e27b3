#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

// Every class of the catalogue, declared. Pointers and references to a class cost no more than this header.
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) class Class;
#define RQ_NODE_UNNUMBERED(Class, state, interface)                   class Class;
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"

/// The kind of a node. The enumerator of class RqX is kRqX; the value is the node's tag in the byte form and the first
/// key of the order of expressions.
enum RqNodeType_e : std::int32_t {
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) k##Class = value,
#define RQ_NODE_MARKER(value, Name)                                   k##Name = value,
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
};

/// The highest kind there is. kRqLastType is not it: that mark was frozen in the middle when later kinds were appended.
inline constexpr RqNodeType_e kRqHighestNodeType = kRqExprDictLookup;

using RqNodeTypeVector = std::vector<RqNodeType_e>;

/// What the catalogue says of a kind with a class.
template <RqNodeType_e kKind>
struct RqNodeTraits;

#define RQ_NODE_KIND(value, TheClass, state, interface, TheVisitedAs, made) \
  template <>                                                               \
  struct RqNodeTraits<k##TheClass> {                                        \
    using Class = TheClass;                                                 \
    using VisitedAs = TheVisitedAs;                                         \
  };
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"

/// The name of a kind without its k, as in "RqExprAdd"; empty for a value outside the catalogue.
std::string_view GetRqNodeTypeName(RqNodeType_e type);
