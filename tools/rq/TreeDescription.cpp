#include "rq/TreeDescription.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTELMNativeTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

std::string JsonString(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string IdTextOf(const RqNode& node) {
  std::string text = node.GetNodeID().ToString().ToUTF8();
  std::erase_if(text, [](char c) { return c == '<' || c == '>'; });
  return text;
}

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Values as JSON

template <std::size_t kSize>
using Words = std::array<std::string_view, kSize>;

/// The words of an enumeration, by number.
template <class Enum>
constexpr Words<0> kWords{};
template <>
constexpr Words<6> kWords<SqlTableRef::JoinType>{"inner",      "left outer",        "right outer",
                                                 "full outer", "full outer stitch", "natural"};
template <>
constexpr Words<3> kWords<SqlTableRef::JoinSubType>{"unknown", "eager", "index"};
template <>
constexpr Words<10> kWords<JoinCardinality>{"one to one",         "zero or one to one",
                                            "one to zero or one", "zero or one to zero or one",
                                            "one to many",        "zero or one to many",
                                            "many to one",        "many to zero or one",
                                            "many to many",       "unknown"};
template <>
constexpr Words<3> kWords<DrivingTableHint>{"left", "right", "unknown"};
template <>
constexpr Words<4> kWords<HashTableHint>{"left", "right", "unknown", "none"};
template <>
constexpr Words<3> kWords<RqSortSpec::SortDirection>{"asc", "desc", "either"};
template <>
constexpr Words<3> kWords<RqExprAggrRowNum::NullsSortOrder>{"database", "first", "last"};
template <>
constexpr Words<3> kWords<RqSortSpec::NullSortDirection>{"first", "last", "no care"};
template <>
constexpr Words<5> kWords<RqDerivedColumn::BreakStatus>{"unknown", "no duplicates", "allow duplicates", "", "lob data"};
template <>
constexpr Words<3> kWords<RqGroupBy::InternalExecutionMode>{"unknown", "hash", "sort"};
template <>
constexpr Words<2> kWords<HDSSummaryParameters::SummarizeComputeStrategy>{"internal compute", "columnar optimized"};
template <>
constexpr Words<4> kWords<RqExprLevel::LevelType>{"logical", "physical", "analytic workspace", "unknown"};
template <>
constexpr Words<3> kWords<RqExprTrim::TrimOperation>{"both", "leading", "trailing"};
template <>
constexpr Words<9> kWords<KXDateTime::UnitOfTime>{"millisecond", "second", "minute",  "hour", "day",
                                                  "week",        "month",  "quarter", "year"};
template <>
constexpr Words<16> kWords<KXDateTime::ExtractOpcode>{"day of week",
                                                      "name of day",
                                                      "year",
                                                      "month",
                                                      "day",
                                                      "hour",
                                                      "minute",
                                                      "second",
                                                      "week of year",
                                                      "day of year",
                                                      "month of quarter",
                                                      "week of quarter",
                                                      "day of quarter",
                                                      "week of month",
                                                      "name of month",
                                                      "quarter of year"};
template <>
constexpr Words<2> kWords<RqExternalColumn::ExternalDataForm>{"csv", "unknown"};
template <>
constexpr Words<8> kWords<ExternalJoinForm>{"inner",   "left outer", "right outer", "full outer", "full outer stitch",
                                            "natural", "union",      "unknown"};

std::string JsonOf(const KXString& text) { return JsonString(text.ToUTF8()); }

std::string JsonOf(bool bValue) { return bValue ? "true" : "false"; }

template <std::integral Number>
std::string JsonOf(Number number) {
  return std::to_string(number);
}

/// JSON has neither infinities nor a NaN: they are texts.
std::string JsonOf(double number) {
  return std::isfinite(number) ? nlohmann::json(number).dump() : JsonString(std::to_string(number));
}

/// A number of JSON may have any digits: it depends on its reader whether they all count.
std::string JsonOf(const KorvelNumber& number) { return number.asString().ToUTF8(); }

std::string JsonOf(KXDataType type) {
  KXString name;
  SUKXDataTypeUtility::GetKXDataTypeName(type, name);
  return JsonOf(name);
}

std::string JsonOf(const KXTypeInfo& typeInfo) { return JsonOf(typeInfo.Describe()); }

std::string JsonOf(ServerInfo::TargetType type) { return JsonOf(ServerInfo::GetTargetNameFromEnum(type)); }

template <class Enum>
requires std::is_enum_v<Enum> std::string JsonOf(Enum value) {
  static_assert(!kWords<Enum>.empty(), "its words are missing");
  const auto index = static_cast<std::size_t>(value);
  if (index >= kWords<Enum>.size()) return std::to_string(index);
  return JsonString(std::string(kWords<Enum>[index]));
}

/// With all digits of the second where it has a fraction.
template <class Time>
requires requires(Time time) { time.nanosecond_; }
std::string JsonOf(const Time& time) { return JsonOf(time.ToString(time.nanosecond_ == 0 ? 0 : 9)); }

/// Identifiers and references, by their text.
template <class Value>
requires requires(const Value& value) {
  { value.ToString() } -> std::same_as<KXString>;
} &&(!requires(Value time) { time.nanosecond_; })std::string JsonOf(const Value& value) {
  return JsonOf(value.ToString());
}

template <class Value>
std::string JsonOf(const std::optional<Value>& value) {
  return value ? JsonOf(*value) : "null";
}

// Each may hold the others.
template <class Value, class Allocator>
std::string JsonOf(const std::vector<Value, Allocator>& values);
template <class Value, class Less, class Allocator>
std::string JsonOf(const std::set<Value, Less, Allocator>& values);
template <class First, class Second>
std::string JsonOf(const std::pair<First, Second>& pair);

std::string JsonOf(const HDSSummaryColumn& column) {
  return JsonOf(std::pair(column.m_InputColumnIndex, column.m_AggregationRule));
}
std::string JsonOf(const ExternalJoiningIndex& index) { return JsonOf(std::pair(index.m_index, index.m_joinForm)); }

template <class Range>
std::string JsonOfRange(const Range& range) {
  std::string json = "[";
  for (const auto& element : range) {
    if (json.size() > 1) json += ", ";
    json += JsonOf(static_cast<const typename Range::value_type&>(element));
  }
  return json + "]";
}
template <class Value, class Allocator>
std::string JsonOf(const std::vector<Value, Allocator>& values) {
  return JsonOfRange(values);
}
template <class Value, class Less, class Allocator>
std::string JsonOf(const std::set<Value, Less, Allocator>& values) {
  return JsonOfRange(values);
}
template <class First, class Second>
std::string JsonOf(const std::pair<First, Second>& pair) {
  return "[" + JsonOf(pair.first) + ", " + JsonOf(pair.second) + "]";
}

// ---------------------------------------------------------------------------------------------------------------------
// Names

/// Empty if the gateway does not have the object, or there is no gateway.
KXString NameOf(ARpGateway* pRp, const VoidID& id) {
  const RefARpObject object(pRp, id);
  return object.IsNull() ? KXString() : object->GetName();
}

/// "T1"
KXString NumberedName(const KXString& prefix, int number) {
  return prefix + KXString::FromUTF8(std::to_string(number));
}

/// The derived table that a list which stands elsewhere belongs to; none for null and for a list in no table.
std::optional<int> TableNumberOf(const RqAbstractList* pList) {
  const RqDerivedTable* const pTable = pList ? pList->GetRqDerivedTableContainer() : nullptr;
  return pTable ? std::optional(pTable->GetTableNumber()) : std::nullopt;
}

/// The name of the column that a chain of references ends in; empty if it ends in anything else.
KXString OriginalName(const RqExpr* pExpr, ARpGateway* pRp) {
  constexpr int kMaxSteps = 1000;  // a damaged tree may have a chain that never ends
  for (int step = 0; pExpr && pExpr->IsDerivedColumnReference() && step < kMaxSteps; ++step) {
    const auto& reference = static_cast<const RqDerivedColumnReference&>(*pExpr);
    pExpr = reference.IsValidDerivedColumnReference() ? reference.GetDerivedColumn()->GetExpr() : nullptr;
  }
  if (!pExpr) return {};
  if (pExpr->IsTargetColumn()) return static_cast<const RqTargetColumn*>(pExpr)->GetColumnName(pRp);
  return pExpr->IsAttribute() ? NameOf(pRp, static_cast<const RqAttribute*>(pExpr)->GetID()) : KXString();
}

/// "c2"
KXString ColumnNameOf(const RqDerivedColumnReference& reference) {
  if (reference.IsValidDerivedColumnReference()) return reference.GetColumnName();
  if (!reference.IsRqTreeVectorForm() || reference.GetColumnNumber() == RqDerivedColumn::kUnknownColumnNum) return {};
  return NumberedName(RqDerivedColumn::kColumnPrefix, reference.GetColumnNumber());
}

/// Whether the table can be asked for its names: it is a logic error to ask one that the repository does not have.
bool HasNames(const RqAtomicTable& table, ARpGateway* pRp) {
  VoidID id;
  table.GetTableID(id);
  return pRp && !RefATable(pRp, id).IsNull();
}

/// The columns of each grouping set, as texts: a bit that is set takes a column away, the lowest bit the last one.
std::vector<KXStringVector> GroupingSetsOf(RqGroupBy& groupBy, ARpGateway* pRp) {
  constexpr int kBits = 32;
  std::vector<KXStringVector> sets;
  const int numColumns = groupBy.GetNumColumns();
  for (const std::int32_t mask : groupBy.GetGroupingSet()) {
    KXStringVector& columns = sets.emplace_back();
    for (int i = 0; i < numColumns; ++i) {
      const int bit = numColumns - 1 - i;
      if (bit < kBits && (static_cast<std::uint32_t>(mask) >> bit & 1) != 0) continue;
      columns.push_back(RqDumpout::StringFrom(groupBy.GetIthColumn(i), false, false, pRp));
    }
  }
  return sets;
}

KXStringVector ProbeStatementsOf(const RqList& list) {
  KXNodeVector<ProbeQuery> probes;
  list.GetProbeSqls(probes);
  KXStringVector statements;
  for (const ProbeQuery& probe : probes) statements.push_back(probe.m_ProbeSql);
  return statements;
}

KXStringVector ScriptPathsOf(const RqTransientOpaqueTable& table) {
  KXStringVector paths;
  for (const auto& script : table.GetExternalScriptExecutionDataVector()) {
    paths.push_back(script->m_ScriptPath);
  }
  return paths;
}

std::vector<int> StarFactOf(const RqJoinSpec& spec) {
  std::vector<int> places;
  SmartRqJoinNodePtrVector facts;
  spec.GetStarFact(facts);
  for (const SmartRqNodePtr& pFact : facts) {
    const auto* const pNode = static_cast<const RqJoinNode*>(pFact.Get());
    const int place = spec.FindChildIndex(pNode);
    places.push_back(place == RqJoinSpec::kChildNotFound ? TreeLink::kNoNode : place);
  }
  return places;
}

KXString TableNameOf(const RqTargetColumn& column) {
  const int number = column.GetSourceTableNumber();
  return number == RqTargetColumn::kUnknownTableNum ? KXString() : NumberedName(RqAtomicTable::kTablePrefix, number);
}

/// Each list of a join in a cube by its table, with the columns of both sides.
auto MolapJoinsOf(const MolapQueryAndJoinIndexVector& entries) {
  std::vector<std::pair<std::optional<int>, std::pair<Int32Vector, Int32Vector>>> joins;
  for (const auto& [lists, indexes] : entries) joins.emplace_back(TableNumberOf(lists.second), indexes);
  return joins;
}

// ---------------------------------------------------------------------------------------------------------------------
// Forms

/// Marks a field that is left out where it has the value that a value of its type starts with.
struct Initial {};
/// Marks a field that is always told: it says what the node is.
struct Always {};

/// A field: its name, how a node, or a node and a gateway, give it, and its value in a new node.
template <class Getter, class Default>
struct Field {
  std::string_view m_name;
  Getter m_get;
  Default m_default{};
};
template <class Getter>
Field(const char*, Getter) -> Field<Getter, Initial>;
template <class Getter, class Default>
Field(const char*, Getter, Default) -> Field<Getter, Default>;

/// What a getter hands out through its argument.
template <class Class, class Value>
constexpr auto Out(void (Class::*pGet)(Value&) const) {
  return [pGet](const Class& node) {
    Value value{};
    (node.*pGet)(value);
    return value;
  };
}

/// The name of the object whose identifier the getter gives.
template <class Class>
constexpr auto NameBy(const VoidID& (Class::*pGet)() const) {
  return [pGet](const Class& node, ARpGateway* pRp) { return NameOf(pRp, (node.*pGet)()); };
}

/// A class: the names of its slots, and its fields. Behind the names of the fixed slots, in parentheses, stand those of
/// what may come any number of times; of several, each has an array of its own.
template <class... Fields>
struct Form {
  std::string_view m_slots;
  std::tuple<Fields...> m_fields;
};

constexpr Form<> NoFields(std::string_view slots) { return {slots, {}}; }

template <class... Fields>
constexpr Form<Fields...> WithFields(std::string_view slots, Fields... fields) {
  return {slots, {fields...}};
}

constexpr Form<> kUndescribed{"?", {}};

/// Each class that stands has a form of its own below.
template <class Node>
constexpr Form<> kForm = kUndescribed;

/// For several classes that differ by name alone.
template <class Node, class... Nodes>
concept OneOf = (std::same_as<Node, Nodes> || ...);

/// Opens the form of one class.
#define RQ_FORM(Class) \
  template <>          \
  constexpr auto kForm<Class>

// Fields of base classes, which the forms of derived ones leave out.

constexpr std::tuple kListFields{Field{"shared", &RqAbstractList::IsShared},
                                 Field{"rowNumLimit", &RqAbstractList::GetRowNumLimit},
                                 Field{"rowNumOffset", &RqAbstractList::GetRowNumOffset},
                                 Field{"withSupported", &RqAbstractList::IsWithSupported, true}};

constexpr std::tuple kIdentifiedTableFields{Field{"number", &RqIdentifiedTable::GetTableNumber}};

constexpr std::tuple kAtomicTableFields{
    Field{"table",
          [](RqAtomicTable& table, ARpGateway* pRp) {
            return HasNames(table, pRp) ? table.GetTableName(pRp, false, false) : KXString();
          }},
    Field{"alias", [](RqAtomicTable& table,
                      ARpGateway* pRp) { return HasNames(table, pRp) ? table.GetAliasName(pRp) : KXString(); }},
    Field{"tableID", Out(&RqAtomicTable::GetTableID)}, Field{"cacheTableID", &RqAtomicTable::GetCacheTableID},
    Field{"sampleSize", &RqAtomicTable::GetSampleSize}};

constexpr std::tuple kTargetColumnFields{Field{"table", TableNameOf}, Field{"column", &RqTargetColumn::GetColumnName},
                                         Field{"columnID", &RqTargetColumn::GetColumnID},
                                         Field{"relatedAttributeIDs", &RqTargetColumn::GetRelatedAttrIds},
                                         Field{"dataMiningColumn", &RqTargetColumn::IsDataMiningColumn}};

constexpr std::tuple kNegatableFields{Field{"negated", &RqExprCondNegatable::IsNegated}};

constexpr std::tuple kAncestorFields{Field{"leaf", &RqExprIsAncestor::IsTypeOfIsLeaf},
                                     Field{"negated", &RqExprIsAncestor::IsNegated},
                                     Field{"logicalTableSourceID", &RqExprIsAncestor::GetLTSVoidID}};

constexpr std::tuple kAggrFields{Field{"distinct", &RqExprAggr::IsDistinctAggregation},
                                 Field{"builtInExecutionOnly", &RqExprAggr::IsBuiltInExecutionOnly},
                                 Field{"sql99Aggregation", &RqExprAggr::IsSQL99Aggregation},
                                 Field{"computeBreakRedundant", &RqExprAggr::IsComputeBreakRedundant},
                                 Field{"shareBase", &RqExprAggr::GetShareBase},
                                 Field{"gtDegenDims", &RqExprAggr::GetGTDegenDims},
                                 Field{"noAggrsInAggregateBy", &RqExprAggr::IsNoAggrsInAggregateBy},
                                 Field{"mashupsPinnedExpr", &RqExprAggr::IsMashupsPinnedExpr},
                                 Field{"measurePredicateTransform", &RqExprAggr::IsMeasurePredicateTransform},
                                 Field{"overrideAsScalar", &RqExprAggr::IsOverrideAsScalar},
                                 Field{"rewrittenDistinct", &RqExprAggr::IsRewrittenDistinct}};

constexpr std::tuple kSortDependentFields{Field{"sortOrder",
                                                [](const RqExprSortDependentAggr& aggr) {
                                                  SortDirectonVector directions;
                                                  Int32Vector order;
                                                  aggr.GetSortSpec(directions, order);
                                                  return order;
                                                }},
                                          Field{"sortDirections", [](const RqExprSortDependentAggr& aggr) {
                                                  SortDirectonVector directions;
                                                  Int32Vector order;
                                                  aggr.GetSortSpec(directions, order);
                                                  return directions;
                                                }}};

constexpr std::tuple kLiteralFields{Field{"descriptorIDOFValue", &RqExprLiteral::IsDescriptorIDOFValue}};

// Blocks

RQ_FORM(RqHandleNode) = NoFields("childNode (released)");

template <class Value>
constexpr auto HdsParameter(Value HDSSummaryParameters::*pValue) {
  return [pValue](const RqList& list) { return Out(&RqList::GetHDSSummaryParameters)(list).*pValue; };
}
RQ_FORM(RqList) = WithFields(
    "projection joinSpec detailFilter summaryFilter groupBy having orderBy", Field{"distinct", &RqList::IsDistinct},
    Field{"unsuppressed", &RqList::IsUnsuppressed}, Field{"bypassNavigation", &RqList::IsBypassNavigation},
    Field{"breakColumns", Out(&RqList::GetBreakColumns)}, Field{"catalogFolderID", &RqList::GetCatalogFolderID},
    Field{"dynamicSamplingLevel", &RqList::GetDynamicSamplingLevel},
    Field{"predicateRewrite", &RqList::IsPredicateRewrite}, Field{"probeSqls", ProbeStatementsOf},
    Field{"hdsEvaluateBreakFilter", &RqList::IsHdsEvaluateBreakFilter},
    Field{"hdsSimulateUserDistinct", &RqList::IsHdsSimulateUserDistinct},
    Field{"hdsSummaryColumns", HdsParameter(&HDSSummaryParameters::m_HDSSummaryColumns)},
    Field{"hdsHiddenColumnIndexes", HdsParameter(&HDSSummaryParameters::m_InputColumnIndexesHiddenFromOutput)},
    Field{"hdsRemovedColumnIndexes", HdsParameter(&HDSSummaryParameters::m_InputColumnIndexesRemoved)},
    Field{"hdsComputeStrategy", HdsParameter(&HDSSummaryParameters::m_SummarizeComputeStrategy)},
    Field{"hdsStrategyLocked", HdsParameter(&HDSSummaryParameters::m_bIsLocked)},
    Field{"markedForRemoteRPD", &RqList::IsMarkedForRemoteRPD});
RQ_FORM(RqProjection) = NoFields("(columns)");
RQ_FORM(RqDerivedColumn) = WithFields("expr", Field{"number", &RqDerivedColumn::GetColumnNum, Always{}},
                                      Field{"breakStatus", &RqDerivedColumn::GetBreakStatus});
template <OneOf<RqDetailFilter, RqSummaryFilter, RqHaving> Node>
constexpr auto kForm<Node> = NoFields("cond");
RQ_FORM(RqGroupBy) = WithFields("(columns)", Field{"internalExecutionMode", &RqGroupBy::GetInternalExecutionMode},
                                Field{"ignoreProjectionConsistency", &RqGroupBy::IsIgnoreProjectionConsistency},
                                Field{"groupingSets", GroupingSetsOf},
                                Field{"groupingSetFilters", &RqGroupBy::GetGroupingSetFilters},
                                Field{"granularity", &RqGroupBy::GetGranularity});
RQ_FORM(RqOrderBy) = WithFields("(sortSpecs)", Field{"stickyTypes", &RqOrderBy::GetStickyTypes},
                                Field{"addedForJoin", &RqOrderBy::IsAddedForJoin});
RQ_FORM(RqSortSpec) = WithFields("", Field{"columnNumber", &RqSortSpec::GetColumnNumber, int{RqSortSpec::kNoColumn}},
                                 Field{"direction", &RqSortSpec::GetSortDirection, RqSortSpec::kEitherDirection},
                                 Field{"nulls", &RqSortSpec::GetNullSortDirection, RqSortSpec::kNoCare},
                                 Field{"notInLogicalSelect", &RqSortSpec::GetLogicalSelectListStatus},
                                 Field{"constantColumn", &RqSortSpec::IsConstantColumn});
RQ_FORM(RqUnion) = WithFields("(lists)", Field{"all", &RqUnion::IsUnionAll});
RQ_FORM(RqIntersect) = WithFields("(lists)", Field{"all", &RqIntersect::IsIntersectAll});
RQ_FORM(RqExcept) = WithFields("(lists)", Field{"all", &RqExcept::IsExceptAll});
RQ_FORM(RqSharedList) = WithFields("projection",
                                   Field{"sharing",
                                         [](const RqSharedList& list) { return TableNumberOf(list.GetSharedRqList()); },
                                         Always{}});
RQ_FORM(RqBreakFilter) = WithFields("innerList",
                                    Field{"breakColumnNumbers", Out(&RqBreakFilter::GetBreakColumnNumbers)},
                                    Field{"noOrderByBreakColumnNumbers",
                                          Out(&RqBreakFilter::GetNoOrderByBreakColumnNumbers)});
RQ_FORM(RqMolapStarJoin) = WithFields("innerList",
                                      Field{"starJoins", [](const RqMolapStarJoin& list) {
                                              return MolapJoinsOf(
                                                  Out(&RqMolapStarJoin::GetStarJoinQueriesAndJoinIndexes)(list));
                                            }});
RQ_FORM(RqMolapFilterJoin) = WithFields("innerList",
                                        Field{"filterJoins", [](const RqMolapFilterJoin& list) {
                                                return MolapJoinsOf(
                                                    Out(&RqMolapFilterJoin::GetFilterJoinQueriesAndJoinIndexes)(list));
                                              }});
RQ_FORM(RqCanonicalMap) = NoFields("innerList");

/// A part of what a list counts; that of a new record if it counts nothing.
template <class Part, class Value>
constexpr auto Counted(Part StatsStruct::*pPart, Value Part::*pValue) {
  return [=](const RqStats& list) {
    return list.GetStatsStruct().IsNull() ? Value{} : (*list.GetStatsStruct()).*pPart.*pValue;
  };
}
RQ_FORM(RqStats) =
    WithFields("innerList", Field{"userName", Counted(&StatsStruct::m_origin, &StatsStruct::Origin::m_userName)},
               Field{"subjectArea", Counted(&StatsStruct::m_origin, &StatsStruct::Origin::m_subjectArea)},
               Field{"statement", Counted(&StatsStruct::m_request, &StatsStruct::Request::m_statement)},
               Field{"cacheHit", Counted(&StatsStruct::m_request, &StatsStruct::Request::m_bCacheHit)},
               Field{"physicalQueries", Counted(&StatsStruct::m_counts, &StatsStruct::Counts::m_physicalQueries)},
               Field{"rowsFromDatabases", Counted(&StatsStruct::m_counts, &StatsStruct::Counts::m_rowsFromDatabases)},
               Field{"rowsToClient", Counted(&StatsStruct::m_counts, &StatsStruct::Counts::m_rowsToClient)});

// Tables and joins

RQ_FORM(RqEntity) = WithFields("", Field{"name", NameBy(&RqEntity::GetID)}, Field{"objectID", &RqEntity::GetID});
RQ_FORM(RqAtomicTable) = NoFields("");
RQ_FORM(RqOpaqueTable) = WithFields("", Field{"select", &RqOpaqueTable::IsSelectStatement},
                                    Field{"tableName", &RqOpaqueTable::IsTableName});
RQ_FORM(RqTransientOpaqueTable) =
    WithFields("", Field{"select", &RqOpaqueTable::IsSelectStatement}, Field{"tableName", &RqOpaqueTable::IsTableName},
               Field{"query", &RqTransientOpaqueTable::GetQueryString},
               Field{"targetConnectionId", &RqTransientOpaqueTable::GetTargetConnectionId},
               Field{"opaqueTableName", &RqTransientOpaqueTable::GetOpaqueTableName},
               Field{"transientColumns", Out(&RqTransientOpaqueTable::GetTransientColumns)},
               Field{"cacheSharedKey", &RqTransientOpaqueTable::GetCacheSharedKey},
               Field{"extTableDelimiter", &RqTransientOpaqueTable::GetExtTableDelimiter},
               Field{"scripts", ScriptPathsOf}, Field{"retryForReplica", &RqTransientOpaqueTable::GetRetryForReplica});
RQ_FORM(RqExternalTable) =
    WithFields("", Field{"tableName", [](const RqExternalTable& table) { return table.GetTableName(); }},
               Field{"tableTargetType", &RqExternalTable::GetTableTargetType, ServerInfo::kUnknown},
               Field{"tableTargetID", &RqExternalTable::GetTableTargetID});
RQ_FORM(RqTELMNativeTable) = WithFields("", Field{"nativeTable", &RqTELMNativeTable::GetTableIdentifier},
                                        Field{"dictionary", &RqTELMNativeTable::GetDictionaryName});
RQ_FORM(RqDerivedTable) = WithFields("innerList", Field{"commonExprName", &RqDerivedTable::GetCommonExprName},
                                     Field{"internalExec", &RqDerivedTable::IsInternalExec});
RQ_FORM(RqTableReference) =
    WithFields("leftTable searchCond rightTable", Field{"joinType", &RqTableReference::GetJoinType},
               Field{"joinSubType", &RqTableReference::GetJoinSubType},
               Field{"drivingTableHint", &RqTableReference::GetDrivingTableHint, kDriving_UnknownTable},
               Field{"leftJoinColumnIndexes", &RqTableReference::GetLeftJoinColumnIndexes},
               Field{"rightJoinColumnIndexes", &RqTableReference::GetRightJoinColumnIndexes},
               Field{"nullsAreEqualFlags", &RqTableReference::GetNullsAreEqualFlags},
               Field{"removeCandidate", &RqTableReference::GetRemoveCandidacy},
               Field{"factTableIndex", &RqTableReference::GetFactTableIndex, -1},
               Field{"joinAbsorbed", &RqTableReference::IsJoinAbsorbed},
               Field{"executionRecords",
                     [](const RqTableReference& reference) {
                       return reference.GetNodeInfoVector() ? reference.GetNodeInfoVector()->size() : 0;
                     }},
               Field{"multiJoinProjectedColumns",
                     [](const RqTableReference& reference) {
                       std::vector<int> numbers;
                       for (const RqDerivedColumn* const pColumn : reference.GetMultiJoinProjectedColumns()) {
                         numbers.push_back(pColumn->GetColumnNum());
                       }
                       return numbers;
                     }},
               Field{"internalDriveJoinParameters",
                     [](const RqTableReference& reference) {
                       std::vector<int> numbers;
                       for (const RqExprParam* const pParam : reference.GetInternalDriveJoinParameters()) {
                         numbers.push_back(pParam->GetParamNumber());
                       }
                       return numbers;
                     }},
               Field{"molapStarJoin", &RqTableReference::IsMolapStarJoin},
               Field{"hashJoinHint", &RqTableReference::GetHashJoinHint, kHash_NoHashJoin},
               Field{"estimatedDictionarySize", &RqTableReference::GetEstimatedDictionarySize},
               Field{"dictionaryRowCount", &RqTableReference::GetDictionaryRowCount, std::int64_t{-1}});
RQ_FORM(RqJoinSpec) = WithFields("(nodes)", Field{"hasGraphInfo", &RqJoinSpec::HasGraphInfo, true},
                                 Field{"starFact", StarFactOf});
RQ_FORM(RqJoinNode) = WithFields("tableRef", Field{"agoJoinNode", &RqJoinNode::IsAgoJoinNode});

// References

RQ_FORM(RqAttribute) = WithFields("", Field{"name", NameBy(&RqAttribute::GetID)},
                                  Field{"table", NameBy(&RqAttribute::GetTableID)},
                                  Field{"objectID", &RqAttribute::GetID}, Field{"tableID", &RqAttribute::GetTableID},
                                  Field{"sourceContentMapExpr", &RqAttribute::IsSourceContentMapExpr},
                                  Field{"catalogFolderID", &RqAttribute::GetCatalogFolderID},
                                  Field{"sortKeyAttribute", &RqAttribute::GetIsSortKeyAttribute},
                                  Field{"descriptorAttributeName", &RqAttribute::GetDescriptorAttributeName});
RQ_FORM(RqTargetColumn) = NoFields("");
RQ_FORM(RqTargetCubeColumn) = WithFields("", Field{"matchParentAggrType", &RqTargetCubeColumn::IsMatchParentAggrType});
RQ_FORM(RqTargetCacheColumn) = WithFields("", Field{"mashupsPinnedExpr", &RqTargetCacheColumn::IsMashupsPinnedExpr});
/// Known by name alone as long as it is not aimed at the column, as after a read-back.
RQ_FORM(RqDerivedColumnReference) = WithFields("", Field{"table", &RqDerivedColumnReference::GetSourceTableName},
                                               Field{"column", ColumnNameOf},
                                               Field{"name", [](const RqDerivedColumnReference& node,
                                                                ARpGateway* pRp) { return OriginalName(&node, pRp); }},
                                               Field{"unattached", &RqDerivedColumnReference::IsRqTreeVectorForm});
RQ_FORM(RqExprDimension) = WithFields("", Field{"name", NameBy(&RqExprDimension::GetID)},
                                      Field{"hierarchy", NameBy(&RqExprDimension::GetPresentationHierarchyID)},
                                      Field{"objectID", &RqExprDimension::GetID},
                                      Field{"hierarchyID", &RqExprDimension::GetPresentationHierarchyID});
RQ_FORM(RqExprLevel) = WithFields("", Field{"name", NameBy(&RqExprLevel::GetID)},
                                  Field{"objectID", &RqExprLevel::GetID},
                                  Field{"levelType", &RqExprLevel::GetLevelType, RqExprLevel::kUnknown});
RQ_FORM(RqExprMemberReference) = NoFields("levelOperand valueOperand (logicalKeyCols)");
template <OneOf<RqExprColumnListOrdered, RqExprColumnList> Node>
constexpr auto kForm<Node> = NoFields("(columns)");
RQ_FORM(RqExprParam) = WithFields("", Field{"number", &RqExprParam::GetParamNumber, Always{}},
                                  Field{"type", &RqExprParam::GetTypeInfo});
RQ_FORM(RqExprSessionVar) = WithFields("", Field{"variable", &RqExprSessionVar::GetVarName},
                                       Field{"byIndex", &RqExprSessionVar::GetByIndex,
                                             int{RqExprSessionVar::kNoIndex}});

// Literals

RQ_FORM(RqExprStringLiteral) = WithFields("", Field{"value", &RqExprStringLiteral::GetString, Always{}},
                                          Field{"doubleQuotes", [](const RqExprStringLiteral& literal) {
                                                  return literal.GetStringWrapperSymbol() ==
                                                         RqExprStringLiteral::kDoubleQuote;
                                                }});
RQ_FORM(RqExprIntegerLiteral) = WithFields("", Field{"value", &RqExprIntegerLiteral::GetValue, Always{}},
                                           Field{"placeHolder", &RqExprIntegerLiteral::IsPlaceHolder});
RQ_FORM(RqExprFloatLiteral) = WithFields("", Field{"value", &RqExprFloatLiteral::GetValue, Always{}});
RQ_FORM(RqExprNumberLiteral) = WithFields("", Field{"value", &RqExprNumberLiteral::GetValue, Always{}});
RQ_FORM(RqExprDateLiteral) = WithFields("", Field{"value", &RqExprDateLiteral::GetDateValue, Always{}});
RQ_FORM(RqExprTimeLiteral) = WithFields("", Field{"value", &RqExprTimeLiteral::GetTimeValue, Always{}});
RQ_FORM(RqExprDateTimeLiteral) = WithFields("", Field{"value", &RqExprDateTimeLiteral::GetDateTimeValue, Always{}},
                                            Field{"precision", &RqExprDateTimeLiteral::GetPrecision});
RQ_FORM(RqExprIntervalLiteral) = WithFields("", Field{"value", &RqExprIntervalLiteral::GetIntervalValue, Always{}});
RQ_FORM(RqExprNullLiteral) = WithFields("",
                                        Field{"value", [](const RqExprNullLiteral&) { return std::optional<int>(); },
                                              Always{}});

// Conditions

RQ_FORM(RqExprCondEquality) = WithFields("leftOperand rightOperand",
                                         Field{"nullsAreEqual", &RqExprCondEquality::AreNullsEqual});
template <OneOf<RqExprCondNotEqual, RqExprCondLess, RqExprCondLessEqual, RqExprCondGreater, RqExprCondGreaterEqual,
                RqExprCondAnd, RqExprCondOr, RqExprAdd, RqExprSubtract, RqExprMultiply, RqExprDivide>
              Node>
constexpr auto kForm<Node> = NoFields("leftOperand rightOperand");
template <OneOf<RqExprCondNot, RqExprCondIsNull, RqExprCondAtomicWrapper, RqExprUnaryMinus, RqExprCharLength,
                RqExprOctetLength, RqExprBitLength, RqExprUpper, RqExprLower, RqExprAllValues>
              Node>
constexpr auto kForm<Node> = NoFields("operand");
RQ_FORM(RqExprCondBetween) = NoFields("operand lowOperand highOperand");
RQ_FORM(RqExprCondLike) = NoFields("operand patternString escapeString");
template <OneOf<RqExprCondIn, RqExprCondMultiColumnIn> Node>
constexpr auto kForm<Node> = NoFields("searchExpr inValues");
template <OneOf<RqExprIsAncestor, RqExprIsRoot> Node>
constexpr auto kForm<Node> = NoFields("firstArg secondArg parentChildDistance");
RQ_FORM(RqExprIsSibling) = WithFields("firstArg secondArg parentChildDistance parentKey",
                                      Field{"includeRootNode", &RqExprIsSibling::IsIncludeRootNode});
RQ_FORM(RqExprIsLeaf) = WithFields("operand (operands)",
                                   Field{"processedExpr", [](RqExprIsLeaf& node) { return node.GetProcessedExpr(); }});
RQ_FORM(RqExprEvaluatePredicate) = WithFields("(operands)",
                                              Field{"functionDef", &RqExprEvaluatePredicate::GetFunctionDef},
                                              Field{"negated", &RqExprEvaluatePredicate::IsNegated},
                                              Field{"userDefinedFuncName",
                                                    &RqExprEvaluatePredicate::GetUserDefinedFuncName});
RQ_FORM(RqExprCondOuterJoinFilter) = WithFields("operand", Field{"joinType", &RqExprCondOuterJoinFilter::GetJoinType});
RQ_FORM(RqExprCondGroupByContent) = NoFields("(groupByExprs)");
template <OneOf<RqExprCondAnyLessThan, RqExprCondAnyLessEqual, RqExprCondAnyGreaterThan, RqExprCondAnyGreaterEqual,
                RqExprCondAnyNotEqual, RqExprCondAllLessThan, RqExprCondAllLessEqual, RqExprCondAllEqual,
                RqExprCondAllGreaterThan, RqExprCondAllGreaterEqual>
              Node>
constexpr auto kForm<Node> = NoFields("searchExpr subquery");
RQ_FORM(RqExprCondExists) = NoFields("subquery");

// Aggregates

template <OneOf<RqExprAggrSum, RqExprAggrCount, RqExprAggrCountStar, RqExprAggrAvg, RqExprAggrMedian, RqExprAggrMin,
                RqExprAggrListAgg, RqExprAggrNullAgg, RqExprAggrNullIfNotUnique, RqExprAggrSubtotal, RqExprAggrReport,
                RqExprAggrReportSum, RqExprAggrReportMin, RqExprAggrReportMax, RqExprAggrReportCount,
                RqExprAggrReportAvg, RqExprAggrPercentile, RqExprAggrRunningSum, RqExprAggrRunningCount,
                RqExprAggrRunningMax, RqExprAggrRunningMin>
              Node>
constexpr auto kForm<Node> = NoFields("aggrExpr controlBreak computeBreak");
RQ_FORM(RqExprAggrStddev) = WithFields("aggrExpr controlBreak computeBreak",
                                       Field{"sample", &RqExprAggrStddev::IsSample});
RQ_FORM(RqExprAggrMax) = WithFields("aggrExpr controlBreak computeBreak",
                                    Field{"forSubtotallingOnly", &RqExprAggrMax::IsForSubtotallingOnly},
                                    Field{"isLeafDimID", &RqExprAggrMax::GetIsLeafDimID});
RQ_FORM(RqExprAggrFirst) = WithFields("aggrExpr controlBreak computeBreak",
                                      Field{"firstPeriod", &RqExprAggrFirst::IsFirstPeriod});
RQ_FORM(RqExprAggrLast) = WithFields("aggrExpr controlBreak computeBreak",
                                     Field{"lastPeriod", &RqExprAggrLast::IsLastPeriod});
RQ_FORM(RqExprAggrRank) = WithFields("aggrExpr controlBreak computeBreak",
                                     Field{"sortDirections", &RqExprAggrRank::GetSortDirections},
                                     Field{"dense", &RqExprAggrRank::IsDenseRank},
                                     Field{"createdForTopOrBottomN", &RqExprAggrRank::IsCreatedForTopOrBottomN});
RQ_FORM(RqExprAggrRowNum) = WithFields("aggrExpr controlBreak computeBreak",
                                       Field{"sortDirections", &RqExprAggrRowNum::GetSortDirections},
                                       Field{"nulls", &RqExprAggrRowNum::GetNullsSortOrder});
RQ_FORM(RqExprAggrNtile) = NoFields("aggrExpr controlBreak computeBreak tiles");
template <OneOf<RqExprAggrTopN, RqExprAggrBottomN> Node>
constexpr auto kForm<Node> = NoFields("aggrExpr controlBreak computeBreak n");
template <OneOf<RqExprAggrMovingAvg, RqExprAggrMovingSum> Node>
constexpr auto kForm<Node> = NoFields("aggrExpr controlBreak computeBreak windowSize");
RQ_FORM(RqExprAggrIf) = WithFields("firstArg controlBreak computeBreak filterExpr",
                                   Field{"forSecurityFilter", &RqExprAggrIf::IsForSecurityFilter});
RQ_FORM(RqExprNoAggregate) = NoFields("firstArg controlBreak computeBreak");
RQ_FORM(RqExprMashupsNoAggregate) = WithFields("firstArg controlBreak computeBreak",
                                               Field{"dimensionBasedAggrCount",
                                                     &RqExprMashupsNoAggregate::GetDimensionBasedAggrCount},
                                               Field{"splitInnerAggrForDimensionBasedAggr",
                                                     &RqExprMashupsNoAggregate::IsSplitInnerAggrForDimensionBasedAggr});
RQ_FORM(RqExprVariableReplace) = NoFields("firstArg controlBreak computeBreak (variable value)");
RQ_FORM(RqExprQualify) = NoFields("firstArg controlBreak computeBreak (memberReferences)");

// Subqueries

RQ_FORM(RqExprLogicalSubquery) = WithFields("", Field{"statement", &RqExprLogicalSubquery::GetSubquerySQLString},
                                            Field{"commonExprName", &RqExprLogicalSubquery::GetCommonExprName});
RQ_FORM(RqExprPhysicalSubquery) =
    WithFields("", Field{"commonExprName", &RqExprPhysicalSubquery::GetCommonExprName},
               Field{"shippableTargets", &RqExprPhysicalSubquery::GetShippableTargets},
               Field{"highVolume", &RqExprPhysicalSubquery::IsHighVolume},
               // The text says no more than the block, which may be gone.
               Field{"text",
                     [](const RqExprPhysicalSubquery& node) {
                       return node.GetSubqueryRqAbstractList() ? KXString() : node.GetSubqueryDumpout();
                     }},
               Field{"block", [](RqExprPhysicalSubquery& node) { return node.GetSubqueryRqAbstractList(); }});
RQ_FORM(RqExprPersistSubquery) = WithFields("", Field{"table", &RqExprPersistSubquery::GetTableName},
                                            Field{"column", &RqExprPersistSubquery::GetColumnName},
                                            Field{"databaseID", &RqExprPersistSubquery::GetDatabaseID},
                                            Field{"databaseType", &RqExprPersistSubquery::GetTargetType,
                                                  ServerInfo::kUnknown},
                                            Field{"text", &RqExprPersistSubquery::GetSubqueryDumpout});

// Scalar functions

template <OneOf<RqExprExp, RqExprSquare, RqExprSqrt, RqExprCeil, RqExprFloor, RqExprSign, RqExprAbs, RqExprLog,
                RqExprLog10, RqExprDegrees, RqExprRadians, RqExprSin, RqExprCos, RqExprTan, RqExprCot, RqExprAsin,
                RqExprAcos, RqExprAtan, RqExprSinh, RqExprCosh, RqExprTanh, RqExprRand>
              Node>
constexpr auto kForm<Node> = NoFields("firstOperand");
template <
    OneOf<RqExprPow, RqExprRound, RqExprTruncate, RqExprMod, RqExprModf, RqExprAtan2, RqExprExtractBit, RqExprConcat>
        Node>
constexpr auto kForm<Node> = NoFields("firstOperand secondOperand");
template <OneOf<RqExprPi, RqExprDatabase, RqExprUser, RqExprRowID> Node>
constexpr auto kForm<Node> = NoFields("");
template <OneOf<RqExprAscii, RqExprChar, RqExprLength> Node>
constexpr auto kForm<Node> = NoFields("stringOperand");
template <OneOf<RqExprLeft, RqExprRight, RqExprRepeat> Node>
constexpr auto kForm<Node> = NoFields("stringOperand countOperand");
RQ_FORM(RqExprSpace) = NoFields("countOperand");
RQ_FORM(RqExprPosition) = NoFields("stringOperand sourceOperand");
RQ_FORM(RqExprLocate) = NoFields("stringOperand sourceOperand startPosition");
RQ_FORM(RqExprSubstring) =
    NoFields("stringOperand startOperand lengthOperand numLeadingTokensOperand delimiterOperand");
RQ_FORM(RqExprReplace) = NoFields("stringOperand oldStringOperand newStringOperand");
RQ_FORM(RqExprInsert) = NoFields("stringOperand startPositionOperand lengthOperand newStringOperand");
RQ_FORM(RqExprTrim) = WithFields("charToTrim fromString", Field{"trimOperation", &RqExprTrim::GetTrimOperation});
RQ_FORM(RqExprNLSSort) = NoFields("firstOperand nlsSortSpec");

RQ_FORM(RqExprNullIf) = NoFields("exprOperand1 exprOperand2");
RQ_FORM(RqExprIfNull) = NoFields("expressionOperand valueOperand");
RQ_FORM(RqExprLookupCase) = NoFields("key defaultReturnValue (entryKeys entryValues)");
RQ_FORM(RqExprIfCase) = WithFields("defaultReturnValue (when then)",
                                   Field{"addedInHDSRewrite", &RqExprIfCase::IsAddedInHDSRewrite});
RQ_FORM(RqExprCoalesce) = WithFields("(valueExprs)", Field{"createdForJoin", &RqExprCoalesce::IsCreatedForJoin},
                                     Field{"stickyType", &RqExprCoalesce::GetStickyType},
                                     Field{"addedInHDSRewrite", &RqExprCoalesce::IsAddedInHDSRewrite});
RQ_FORM(RqExprCast) = WithFields("operand", Field{"toDataType", &RqExprCast::GetToDataType, KXUnknown},
                                 Field{"precision", &RqExprCast::GetPrecision}, Field{"scale", &RqExprCast::GetScale},
                                 Field{"dateTimeFormat", &RqExprCast::GetDateTimeFormat});

RQ_FORM(RqExprCalendarExtract) = WithFields("dateTimeExpr",
                                            Field{"operation", &RqExprCalendarExtract::GetOperation, Always{}});
RQ_FORM(RqExprFiscalExtract) = WithFields("dateTimeExpr startMonth startDay",
                                          Field{"operation", &RqExprFiscalExtract::GetOperation, Always{}});
RQ_FORM(RqExprTimestampAdd) = WithFields("numIntervals timestamp",
                                         Field{"unitOfTime", &RqExprTimestampAdd::GetUnitOfTime, Always{}});
RQ_FORM(RqExprTimestampDiff) = WithFields("firstTimestamp secondTimestamp",
                                          Field{"unitOfTime", &RqExprTimestampDiff::GetUnitOfTime, Always{}});

RQ_FORM(RqExprIndexCol) = NoFields("(operands)");
RQ_FORM(RqExprExtract) = WithFields("(operands)", Field{"columnNumber", &RqExprExtract::GetColumnNumber, Always{}});
RQ_FORM(RqExprEvaluate) = WithFields("(operands)", Field{"functionDef", &RqExprEvaluate::GetFunctionDef},
                                     Field{"stickyType", &RqExprEvaluate::GetStickyType},
                                     Field{"userDefinedFuncName", &RqExprEvaluate::GetUserDefinedFuncName},
                                     Field{"typingParams", &RqExprEvaluate::GetTypingParams},
                                     Field{"microExpr", [](RqExprEvaluate& node) { return node.GetMicroExpr(); }});
RQ_FORM(RqExprLookup) = WithFields("(operands)", Field{"denseLookup", &RqExprLookup::IsDenseLookup},
                                   Field{"valueExpr", [](RqExprLookup& node) { return node.GetValueExpr(); }});
RQ_FORM(RqExprHDSLookup) = NoFields("groupingEntity bindingExpression optionalNameValuePairs");
RQ_FORM(RqExprDictLookup) = WithFields("firstOperand", Field{"nativeTable", &RqExprDictLookup::GetTableIdentifier},
                                       Field{"dictionary", &RqExprDictLookup::GetDictionaryName});
RQ_FORM(RqExprJsonValue) = WithFields("operandPath operandColumnValue",
                                      Field{"stickyType", &RqExprJsonValue::GetStickyType},
                                      Field{"hdsPath", &RqExprJsonValue::GetHDSPath},
                                      Field{"hdsTableName", &RqExprJsonValue::GetHDSTableName});
RQ_FORM(RqExprPredict) = WithFields("(operands)", Field{"datasourceID", &RqExprPredict::GetDatasourceID},
                                    Field{"scriptName", &RqExprPredict::GetScriptName},
                                    Field{"modelName", &RqExprPredict::GetModelName},
                                    Field{"columnType", &RqExprPredict::GetColumnType},
                                    Field{"dataBindings", &RqExprPredict::GetDataBindings},
                                    Field{"options", &RqExprPredict::GetOptions},
                                    Field{"evaluateScript", &RqExprPredict::IsEvaluateScript});

template <class Value>
constexpr auto Column(Value RqExternalColumn::*pValue) {
  return [pValue](const RqExprExternalData& node) { return node.GetExternalColumn().*pValue; };
}
RQ_FORM(RqExprExternalData) = WithFields(
    "conformsToExpr conformsToEntityExprs conformsToColumnExprs derivedColumnExpr sourceExpr",
    Field{"externalDataForm", Column(&RqExternalColumn::m_ExternalDataForm), RqExternalColumn::kUnknownData},
    Field{"objectReference", Column(&RqExternalColumn::m_ObjectReference)},
    Field{"cacheSharedKey", Column(&RqExternalColumn::m_CacheSharedKey)},
    Field{"columnName", Column(&RqExternalColumn::m_ColumnName)},
    Field{"columnType", Column(&RqExternalColumn::m_ColumnTypeInfo)},
    Field{"aggrRule", Column(&RqExternalColumn::m_AggrRule)}, Field{"virtual", Column(&RqExternalColumn::m_bIsVirtual)},
    Field{"forceVirtual", Column(&RqExternalColumn::m_bIsForceVirtual)},
    Field{"optionalVirtual", Column(&RqExternalColumn::m_bIsOptionalVirtual)},
    Field{"sortKeyColumn", Column(&RqExternalColumn::m_bIsSortKeyColumn)},
    Field{"descriptorIDColumn", Column(&RqExternalColumn::m_bIsDescriptorIDColumn)},
    Field{"scalarWithNoPath", Column(&RqExternalColumn::m_bScalarWithNoPath)},
    Field{"needsGrainCheck", Column(&RqExternalColumn::m_bNeedsGrainCheck)},
    Field{"primaryKeyColumn", Column(&RqExternalColumn::m_bIsPrimaryKeyColumn)},
    Field{"lookupJoinColumn", Column(&RqExternalColumn::m_bIsLookupJoinColumn)},
    Field{"presentWithIncomingQuery", Column(&RqExternalColumn::m_bIsPresentWithIncomingQuery)},
    Field{"joiningIndexes", &RqExprExternalData::GetExternalJoiningIndexVector},
    Field{"script", [](const RqExprExternalData& node) {
            const auto& script = node.GetExternalScriptExecutionData();
            return script.IsNull() ? KXString() : script->m_ScriptPath;
          }});

RQ_FORM(RqExprCalculatedMember) = WithFields("dimensionOperand memberValueOperand memberFormulaOperand",
                                             Field{"solveOrder", &RqExprCalculatedMember::GetSolveOrder});
RQ_FORM(RqExprDepth) = WithFields("keyAttribute", Field{"logicalTableSourceID", &RqExprDepth::GetLTSVoidID});
RQ_FORM(RqExprIDOf) = WithFields("operand", Field{"constant", [](const RqExprIDOf& node) {
                                                    return node.IsConstant() && !node.RqExpr::IsConstant();
                                                  }});
RQ_FORM(RqExprGroupingId) = NoFields("columnListOperand");
RQ_FORM(RqExprTimeDimSeqNum) = WithFields("timeLevelExpr",
                                          Field{"timeLevel",
                                                [](const RqExprTimeDimSeqNum& node) {
                                                  const RefALevel& level = node.GetTimeLevel();
                                                  return level.IsNull() ? KXString() : level->GetName();
                                                }},
                                          Field{"timeLevelID", [](const RqExprTimeDimSeqNum& node) {
                                                  return node.GetTimeLevel().GetID();
                                                }});
RQ_FORM(RqExprGrainCheckDisplay) = NoFields("displayExpr");
RQ_FORM(RqExprBinPlaceHolder) = WithFields("(operands)", Field{"stickyType", &RqExprBinPlaceHolder::GetStickyType});
RQ_FORM(RqExprCanonical) = NoFields("operand canonicalMapQuery");

#undef RQ_FORM

// ---------------------------------------------------------------------------------------------------------------------
// Descriptions

struct Slots {
  std::vector<std::string_view> m_fixed;
  std::vector<std::string_view> m_repeated;
};

Slots ParseSlots(std::string_view text) {
  Slots slots;
  std::vector<std::string_view>* pNames = &slots.m_fixed;
  for (std::size_t begin = text.find_first_not_of(" ()"); begin != text.npos;
       begin = text.find_first_not_of(" ()", begin)) {
    if (begin > 0 && text[begin - 1] == '(') pNames = &slots.m_repeated;
    const std::size_t end = std::min(text.find_first_of(" ()", begin), text.size());
    pNames->push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return slots;
}

constexpr int CountFixed(std::string_view slots) {
  const std::string_view fixed = slots.substr(0, slots.find('('));
  int count = 0;
  for (std::size_t i = 0; i < fixed.size(); ++i) count += fixed[i] != ' ' && (i == 0 || fixed[i - 1] == ' ');
  return count;
}

/// The slots that the class itself names.
template <class Node>
constexpr int NumNamedSlots() {
  if constexpr (requires { Node::kNumOperands; }) {
    return Node::kNumOperands;
  } else if constexpr (requires { Node::kNumChildren; }) {
    return Node::kNumChildren;
  } else {
    return 0;
  }
}

class Describer {
 public:
  Describer(ARpGateway* pRp, TreeTokens& tokens) : m_pRp(pRp), m_tokens(tokens) {}

  template <class Node>
  void Describe(Node& node) {
    static_assert(kForm<Node>.m_slots != kUndescribed.m_slots, "a class that stands needs a form above");
    static_assert(CountFixed(kForm<Node>.m_slots) == NumNamedSlots<Node>(), "its form has to name all slots");
    // Told as values, and then as trees: what belongs to one line comes first.
    PutAllFields(node, false);
    PutTarget(node);
    PutChildren(node, ParseSlots(kForm<Node>.m_slots), NumRegularChildren(node));
    PutAllFields(node, true);
    if constexpr (std::same_as<Node, RqJoinSpec>) PutLinks(node);
  }

 private:
  using Kind = TreeToken::Kind;

  void Put(Kind kind, std::string_view name = {}) { m_tokens.push_back({kind, name, {}}); }
  void PutJson(std::string_view name, std::string json) { m_tokens.push_back({Kind::kField, name, std::move(json)}); }
  void PutNode(std::string_view name, RqNode* pNode) { m_tokens.push_back({Kind::kNode, name, {}, pNode}); }

  template <class Value>
  static constexpr bool kIsTree = std::is_pointer_v<Value> || std::same_as<Value, OwnedRqExprCondVector>;

  template <class Value>
  void PutValue(std::string_view name, const Value& value) {
    if constexpr (std::is_pointer_v<Value>) {
      PutNode(name, value);
    } else if constexpr (std::same_as<Value, OwnedRqExprCondVector>) {
      Put(Kind::kArray, name);
      for (const OwnedRqExprCondPtr& pCond : value) PutNode({}, pCond.Get());
      Put(Kind::kEnd);
    } else {
      PutJson(name, JsonOf(value));
    }
  }

  template <class Node, class Getter, class Default>
  void PutField(Node& node, const Field<Getter, Default>& field, bool bTrees) {
    const auto get = [&]() -> decltype(auto) {
      if constexpr (std::is_invocable_v<Getter, Node&, ARpGateway*>) {
        return std::invoke(field.m_get, node, m_pRp);
      } else {
        return std::invoke(field.m_get, node);
      }
    };
    using Value = std::remove_cvref_t<decltype(get())>;
    if (kIsTree<Value> != bTrees) return;
    decltype(auto) value = get();
    if constexpr (std::same_as<Default, Initial>) {
      if (value == Value{}) return;
    } else if constexpr (!std::same_as<Default, Always>) {
      if (value == static_cast<Value>(field.m_default)) return;
    }
    PutValue<Value>(field.m_name, value);
  }

  template <class Node, class... Fields>
  void PutFields(Node& node, const std::tuple<Fields...>& fields, bool bTrees) {
    std::apply([&](const auto&... field) { (PutField(node, field, bTrees), ...); }, fields);
  }

  template <class Node>
  void PutAllFields(Node& node, bool bTrees) {
    const auto putOfBase = [&]<class Base>(std::type_identity<Base>, const auto& fields) {
      if constexpr (std::derived_from<Node, Base>) PutFields(static_cast<Base&>(node), fields, bTrees);
    };
    putOfBase(std::type_identity<RqIdentifiedTable>(), kIdentifiedTableFields);
    putOfBase(std::type_identity<RqAtomicTable>(), kAtomicTableFields);
    putOfBase(std::type_identity<RqTargetColumn>(), kTargetColumnFields);
    putOfBase(std::type_identity<RqExprCondNegatable>(), kNegatableFields);
    putOfBase(std::type_identity<RqExprIsAncestor>(), kAncestorFields);
    PutFields(node, kForm<Node>.m_fields, bTrees);
    putOfBase(std::type_identity<RqAbstractList>(), kListFields);
    putOfBase(std::type_identity<RqExprSortDependentAggr>(), kSortDependentFields);
    putOfBase(std::type_identity<RqExprAggr>(), kAggrFields);
    putOfBase(std::type_identity<RqExprLiteral>(), kLiteralFields);
  }

  void PutTarget(RqNode& node) {
    VoidID id;
    node.GetTargetID(id);
    if (id.IsNullID() && node.GetTargetType() == ServerInfo::kUnknown) return;
    Put(Kind::kRecord, "target");
    PutJson("type", JsonOf(node.GetTargetType()));
    if (!id.IsNullID()) PutJson("id", JsonOf(id));
    if (const KXString name = NameOf(m_pRp, id); !name.empty()) PutJson("name", JsonOf(name));
    Put(Kind::kEnd);
  }

  static int NumRegularChildren(RqNode& node) { return node.GetNumChildren(); }
  /// The aggregates of a sort stand behind its columns.
  static int NumRegularChildren(RqOrderBy& orderBy) {
    return std::min(orderBy.GetNumSortSpecs(), orderBy.GetNumChildren());
  }

  void PutEvery(std::string_view name, RqNode& node, int begin, int end, int step) {
    if (begin >= end) return;
    Put(Kind::kArray, name);
    for (int i = begin; i < end; i += step) PutNode({}, node.GetIthChild(i));
    Put(Kind::kEnd);
  }

  /// Children past numRegular, or past the slots that have a name, are told as well.
  void PutChildren(RqNode& node, const Slots& slots, int numRegular) {
    const int numFixed = std::min(static_cast<int>(slots.m_fixed.size()), numRegular);
    for (int i = 0; i < numFixed; ++i) {
      if (RqNode* const pChild = node.GetIthChild(i)) PutNode(slots.m_fixed[static_cast<std::size_t>(i)], pChild);
    }
    const int step = static_cast<int>(slots.m_repeated.size());
    for (int i = 0; i < step; ++i) {
      PutEvery(slots.m_repeated[static_cast<std::size_t>(i)], node, numFixed + i, numRegular, step);
    }
    PutEvery(node.GetObjectType() == kRqOrderBy ? "pushDownAggrs" : "more", node, step > 0 ? numRegular : numFixed,
             node.GetNumChildren(), 1);
  }

  void PutLinks(RqJoinSpec& joinSpec) {
    const std::vector<TreeLink> links = LinksOf(joinSpec);
    if (links.empty()) return;
    const auto putPlace = [this](std::string_view name, int place) {
      PutJson(name, place == TreeLink::kNoNode ? "null" : JsonOf(place));
    };
    Put(Kind::kArray, "links");
    for (const TreeLink& link : links) {
      Put(Kind::kRecord);
      putPlace("from", link.m_from);
      putPlace("to", link.m_to);
      PutJson("type", JsonOf(link.m_pLink->GetJoinType()));
      PutJson("cardinality", JsonOf(link.m_pLink->GetCardinality()));
      if (link.m_driving != TreeLink::kNoNode) putPlace("driving", link.m_driving);
      PutJson("attached", JsonOf(link.m_pLink->AlreadyAttachedCond()));
      if (RqExprCond* const pCond = link.m_pLink->GetJoinCond()) PutNode("condition", pCond);
      Put(Kind::kEnd);
    }
    Put(Kind::kEnd);
  }

  ARpGateway* m_pRp;
  TreeTokens& m_tokens;
};

template <class Node>
void DescribeAs(RqNode& node, Describer& describer) {
  if constexpr (std::is_abstract_v<Node>) {
    KX_LOGIC_ERROR(L"");
  } else {
    describer.Describe(static_cast<Node&>(node));
  }
}

}  // namespace

std::string_view WordOf(SqlTableRef::JoinType joinType) {
  const auto index = static_cast<std::size_t>(joinType);
  return index < kWords<SqlTableRef::JoinType>.size() ? kWords<SqlTableRef::JoinType>[index] : "unknown";
}

std::vector<TreeLink> LinksOf(RqJoinSpec& joinSpec) {
  std::unordered_map<const RqJoinNode*, int> places;
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) places.emplace(joinSpec.GetIthJoinNode(i), i);
  const auto placeOf = [&](const RqJoinNode* pNode) {
    const auto it = places.find(pNode);
    return pNode && it != places.end() ? it->second : TreeLink::kNoNode;
  };
  std::vector<TreeLink> links;
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) {
    const RqJoinNode* const pNode = joinSpec.GetIthJoinNode(i);
    if (!pNode) continue;
    for (RqJoinLink* const pLink : pNode->GetIncidentLinks()) {
      const int from = placeOf(pLink->GetInNode());
      // Of a link between two nodes of the graph the in-node tells.
      if (pLink->GetInNode() != pNode && from != TreeLink::kNoNode) continue;
      links.push_back({from, placeOf(pLink->GetOutNode()), placeOf(pLink->GetDrivingJoinNode()), pLink});
    }
  }
  return links;
}

TreeTokens DescribeNode(RqNode& node, ARpGateway* pRp) {
  TreeTokens tokens;
  Describer describer(pRp, tokens);
  switch (node.GetObjectType()) {
// Kinds without an Accept are abstract, and the others without an object if they are only declared.
#define RQ_DESCRIBE_StandsNone(Class)
#define RQ_DESCRIBE_DeclaredNone(Class)
#define RQ_DESCRIBE_DeclaredNode(Class)
#define RQ_DESCRIBE_DeclaredExpr(Class)
#define RQ_DESCRIBE_StandsNode(Class) \
  DescribeAs<Class>(node, describer); \
  return tokens;
#define RQ_DESCRIBE_StandsExpr(Class) RQ_DESCRIBE_StandsNode(Class)
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) \
  case k##Class:                                                      \
    RQ_DESCRIBE_##state##interface(Class) break;
#define RQ_NODE_MARKER(value, Name) \
  case k##Name:                     \
    break;
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
#undef RQ_DESCRIBE_StandsNone
#undef RQ_DESCRIBE_DeclaredNone
#undef RQ_DESCRIBE_DeclaredNode
#undef RQ_DESCRIBE_DeclaredExpr
#undef RQ_DESCRIBE_StandsNode
#undef RQ_DESCRIBE_StandsExpr
  }
  KX_LOGIC_ERROR(L"");
}
