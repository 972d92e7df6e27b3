#include "SQORRqNodeFactory.h"

#include <iterator>
#include <string_view>
#include <type_traits>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "SQORRqNodeClasses.h"

namespace {

/// Makes a node of a class whose constructor needs arguments.
template <class Class>
RqNode* MakeGiven();

template <>
RqNode* MakeGiven<RqDerivedColumn>() {
  return new RqDerivedColumn(nullptr, RqDerivedColumn::kUnknownColumnNum);
}
template <>
RqNode* MakeGiven<RqProjection>() {
  return new RqProjection(0);
}
template <>
RqNode* MakeGiven<RqDerivedTable>() {
  return new RqDerivedTable(nullptr, 0);
}
template <>
RqNode* MakeGiven<RqHaving>() {
  return new RqHaving(nullptr);
}
template <>
RqNode* MakeGiven<RqList>() {
  return new RqList(0);
}
template <>
RqNode* MakeGiven<RqSharedList>() {
  return new RqSharedList(nullptr, nullptr);
}
template <>
RqNode* MakeGiven<RqExprParam>() {
  return new RqExprParam(0);
}
template <>
RqNode* MakeGiven<RqExprExtract>() {
  return new RqExprExtract(0);
}
template <>
RqNode* MakeGiven<RqExprIntegerLiteral>() {
  return new RqExprIntegerLiteral(0, false);
}
template <>
RqNode* MakeGiven<RqExprFloatLiteral>() {
  return new RqExprFloatLiteral(0.0);
}

}  // namespace

RqNode* MakeEmptyRqNode(RqNodeType_e type) {
#define MAKE_Default(Class)        new Class()
#define MAKE_Given(Class)          MakeGiven<Class>()
#define MAKE_Never(Class)          nullptr
#define MAKE_Stands(Class, made)   MAKE_##made(Class)
#define MAKE_Declared(Class, made) nullptr
  switch (type) {
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) \
  case k##Class:                                                      \
    return MAKE_##state(Class, made);
#define RQ_NODE_MARKER(value, Name) \
  case k##Name:                     \
    return nullptr;
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
  }
#undef MAKE_Default
#undef MAKE_Given
#undef MAKE_Never
#undef MAKE_Stands
#undef MAKE_Declared
  return nullptr;
}

namespace {

constexpr const wchar_t* kNoShape = nullptr;

constexpr const wchar_t* GetShape(RqNodeType_e type) {
  switch (type) {
#define RQ_NODE_SHAPE(Class, slots) \
  case k##Class:                    \
    return L##slots;
#include "SQORRqNodeShapes.def"
    default:
      return kNoShape;
  }
}

#define HAS_SHAPE_Default(Class)        GetShape(k##Class) != kNoShape
#define HAS_SHAPE_Given(Class)          GetShape(k##Class) != kNoShape
#define HAS_SHAPE_Never(Class)          true
#define HAS_SHAPE_Stands(Class, made)   HAS_SHAPE_##made(Class)
#define HAS_SHAPE_Declared(Class, made) true
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) \
  static_assert(HAS_SHAPE_##state(Class, made), #Class " has no line in SQORRqNodeShapes.def");
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
#undef HAS_SHAPE_Default
#undef HAS_SHAPE_Given
#undef HAS_SHAPE_Never
#undef HAS_SHAPE_Stands
#undef HAS_SHAPE_Declared

/// A letter of a shape.
struct Slot {
  wchar_t m_letter;  // lower case
  bool m_bMayBeNull;

  explicit Slot(wchar_t letter)
      : m_letter(letter >= L'a' ? letter : static_cast<wchar_t>(letter - L'A' + L'a')), m_bMayBeNull(letter < L'a') {}

  bool Takes(const RqNode& child) const {
    const RqNodeType_e type = child.GetObjectType();
    switch (m_letter) {
      case L'n':
        return true;
      case L'e':
        return child.IsExpr();
      case L'c':
        return child.IsExpr() && static_cast<const RqExpr&>(child).IsCond();
      case L'l':
        return type == kRqExprColumnList || type == kRqGroupBy;
      case L'y':
        return type == kRqExprColumnListOrdered || type == kRqExprColumnList || type == kRqGroupBy;
      case L'm':
        return type == kRqExprMemberReference;
      case L'd':
        return type == kRqExprLevel;
      case L't':
        return child.IsExpr() && static_cast<const RqExpr&>(child).IsLiteral();
      case L'x':
        return type == kRqExprStringLiteral;
      case L'a':
        return child.IsAbstractTable() && (static_cast<const RqAbstractTable&>(child).IsIdentifiedTable() ||
                                           static_cast<const RqAbstractTable&>(child).IsTableReference());
      case L'b':
        return dynamic_cast<const RqAbstractList*>(&child) != nullptr;
      case L'k':
        return type == kRqDerivedColumn;
      case L'v':
        return type == kRqJoinNode;
      case L'r':
        return type == kRqTableReference;
      case L'z':
        return type == kRqSortSpec;
      case L'p':
        return type == kRqProjection;
      case L'j':
        return type == kRqJoinSpec;
      case L'w':
        return type == kRqDetailFilter;
      case L'u':
        return type == kRqSummaryFilter;
      case L'h':
        return type == kRqHaving;
      case L'g':
        return type == kRqGroupBy;
      case L'o':
        return type == kRqOrderBy;
      case L's':
        return type == kRqExprLogicalSubquery || type == kRqExprPhysicalSubquery || type == kRqExprPersistSubquery;
      default:
        return false;
    }
  }
};

[[noreturn]] void RaiseMalformed(const RqNode& node, const_iterator start, const KXString& what) {
  KX_RAISE(kMsgNodeMalformed, KXString::FromUTF8(GetRqNodeTypeName(node.GetObjectType())),
           BoundedRead::Current()->GetOffset(start), what);
}

/// The sort columns that a sort counts come first, and expressions behind them.
bool HasConsistentChildren(const RqOrderBy& orderBy) {
  const int numSortSpecs = orderBy.GetNumSortSpecs();
  if (numSortSpecs < 0 || numSortSpecs > orderBy.GetNumChildren()) return false;
  for (int i = 0; i < orderBy.GetNumChildren(); ++i) {
    const RqNode& child = *orderBy.GetIthChild(i);
    if (i < numSortSpecs ? child.GetObjectType() != kRqSortSpec : !child.IsExpr()) return false;
  }
  return true;
}

bool HasDirectionForEachColumn(const RqExprAggrRank& rank) {
  return std::ssize(rank.GetSortDirections()) == rank.GetAggrExpr()->GetNumOperands();
}

bool HasDirectionForEachColumn(const RqExprSortDependentAggr& aggr) {
  SortDirectonVector directions;
  Int32Vector order;
  aggr.GetSortSpec(directions, order);
  return directions.size() == order.size();
}

/// What fields say of children and of each other.
void RequireConsistentFields(const RqNode& node, const_iterator start) {
  const auto require = [&](bool bConsistent) {
    if (!bConsistent) RaiseMalformed(node, start, L"it counts its sort columns wrong");
  };
  if (const auto* const pAggr = dynamic_cast<const RqExprSortDependentAggr*>(&node)) {
    require(HasDirectionForEachColumn(*pAggr));
    return;
  }
  switch (node.GetObjectType()) {
    case kRqOrderBy:
      require(HasConsistentChildren(static_cast<const RqOrderBy&>(node)));
      break;
    case kRqExprAggrRank:
      require(HasDirectionForEachColumn(static_cast<const RqExprAggrRank&>(node)));
      break;
    case kRqJoinSpec:
      static_cast<const RqJoinSpec&>(node).RequireReattachableLinks(start);
      break;
    default:
      break;
  }
}

}  // namespace

void RequireRqNodeShape(const RqNode& node, const_iterator start) {
  std::wstring_view shape = GetShape(node.GetObjectType());
  std::wstring_view repeated;
  if (const std::size_t open = shape.find(L'('); open != std::wstring_view::npos) {
    repeated = shape.substr(open + 1, shape.size() - open - 2);
    shape = shape.substr(0, open);
  }
  int slot = 0;
  const int numSlots = node.GetNumChildren();
  const auto requireChild = [&](wchar_t letter) {
    const RqNode* const pChild = node.GetIthChild(slot);
    const Slot expected(letter);
    if (pChild ? expected.Takes(*pChild) : expected.m_bMayBeNull) {
      ++slot;
      return;
    }
    RaiseMalformed(node, start,
                   L"child " + BaseStringUtil::StringFrom(slot) + (pChild ? L" is of a wrong kind" : L" is missing"));
  };
  bool bMayEnd = false;
  for (const wchar_t letter : shape) {
    if (letter == L'|') {
      bMayEnd = true;
    } else if (slot < numSlots) {
      requireChild(letter);
    } else if (!bMayEnd) {
      RaiseMalformed(node, start, L"it has too few children");
    }
  }
  while (!repeated.empty() && slot < numSlots) {
    for (const wchar_t letter : repeated) {
      if (slot == numSlots) RaiseMalformed(node, start, L"it has too few children");
      requireChild(letter);
    }
  }
  if (slot < numSlots) RaiseMalformed(node, start, L"it has too many children");
  RequireConsistentFields(node, start);
}
