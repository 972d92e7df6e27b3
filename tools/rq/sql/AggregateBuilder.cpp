#include "rq/sql/AggregateBuilder.h"

#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlSort.h"
#include "rq/sql/SqlSpelling.h"
#include "rq/sql/SqlText.h"

namespace {

/// Other rules hold while this stands.
class RulesChange {
 public:
  RulesChange(SqlContext& context, const AggregateRules& rules)
      : m_context(context), m_before(std::exchange(context.m_aggregates, rules)) {}
  RulesChange(const RulesChange&) = delete;
  RulesChange& operator=(const RulesChange&) = delete;
  ~RulesChange() { m_context.m_aggregates = m_before; }

 private:
  SqlContext& m_context;
  AggregateRules m_before;
};

RqExprVector Release(std::vector<OwnedRqExprPtr>& columns) {
  RqExprVector released;
  for (OwnedRqExprPtr& column : columns) released.push_back(column.Release());
  columns.clear();
  return released;
}

/// The columns as a break without constants and repeats; null without any.
Heap<RqExprColumnList> MakeBreak(std::vector<OwnedRqExprPtr> columns) {
  RqExprVector released = Release(columns);
  Heap<RqExprColumnList> list(new RqExprColumnList(released, true, false));
  if (list->GetNumColumns() == 0) return {};
  return list;
}

/// The break of a partition of an aggregate that groups have, too: never null.
Heap<RqExprColumnList> MakePartition(std::vector<OwnedRqExprPtr> columns) {
  Heap<RqExprColumnList> list = MakeBreak(std::move(columns));
  if (list) return list;
  list = Heap<RqExprColumnList>(new RqExprColumnList);
  list->AddChild(new RqExprIntegerLiteral(1));
  return list;
}

/// Both in one, without repeats, as SetComputeBreak would have it. A direction goes with each column: of one of the
/// partition that of the order if it is in there.
Heap<RqExprColumnList> MakeRowOrder(const RqExprColumnList* pPartition, std::vector<OwnedRqExprPtr> order,
                                    SortDirectonVector& directions) {
  std::map<const RqExpr*, RqSortSpec::SortDirection, LessEquivalentRqExpr> ordered;
  std::vector<std::pair<OwnedRqExprPtr, RqSortSpec::SortDirection>> columns;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (!order[i]->IsConstant()) ordered.try_emplace(order[i].Get(), directions[i]);
  }
  for (int i = 0; pPartition && !ordered.empty() && i < pPartition->GetNumColumns(); ++i) {
    const RqExpr* const pColumn = pPartition->GetIthColumn(i);
    const auto it = ordered.find(pColumn);
    columns.emplace_back(pColumn->DeepExprCopy(true), it == ordered.end() ? RqSortSpec::kAsc : it->second);
    if (it != ordered.end()) ordered.erase(it);
  }
  for (OwnedRqExprPtr& column : order) {
    const auto it = ordered.find(column.Get());
    if (it == ordered.end() || it->first != column.Get()) continue;
    const RqSortSpec::SortDirection direction = it->second;
    ordered.erase(it);
    columns.emplace_back(std::move(column), direction);
  }
  directions.clear();
  if (columns.empty()) return {};
  Heap<RqExprColumnList> list(new RqExprColumnList);
  for (auto& [column, direction] : columns) {
    list->AddChild(column.Release());
    directions.push_back(direction);
  }
  return list;
}

/// Where all elements of the order that are told nulls have them.
RqExprAggrRowNum::NullsSortOrder NullsOf(const SqlWindow& window) {
  std::optional<RqSortSpec::NullSortDirection> nulls;
  for (const SqlNode sortBy : window.m_order) {
    const RqSortSpec::NullSortDirection next = NullSortDirectionOf(sortBy);
    if (nulls && *nulls != next) {
      throw SqlError(PlaceOfNode(sortBy),
                     "a row number has all its nulls first, or last, or where the database has them");
    }
    nulls = next;
  }
  if (nulls == RqSortSpec::kFirst) return RqExprAggrRowNum::kNullsFirst;
  return nulls == RqSortSpec::kLast ? RqExprAggrRowNum::kNullsLast : RqExprAggrRowNum::kBackendDB;
}

}  // namespace

AggregateBuilder::AggregateBuilder(std::string_view text, SqlContext& context, std::string_view name, SqlNode call)
    : m_text(text), m_context(context), m_name(name), m_call(call), m_pBlock(context.m_aggregates.m_pBlock) {}

OwnedRqExprPtr AggregateBuilder::Build() {
  const AggregateFunction* const pFunction = FindAggregateFunction(m_name);
  const bool bOver = !m_call.Get("over").IsNone();
  ReadArguments();
  const bool bPlain = pFunction && pFunction->m_bOfGroup && !bOver && !m_bBy;
  RequirePlace(bPlain);
  RefuseOptions();
  if (bOver) return BuildFiltered(BuildOver(pFunction));
  if (!pFunction) throw SqlError(m_call.GetLocation(), NameAsWritten() + " needs an OVER");
  if (!m_bStar && m_arguments.size() != pFunction->m_numArguments) RaiseArguments(std::string(pFunction->m_arguments));
  return BuildFiltered(bPlain ? BuildOfGroup(*pFunction) : BuildWithBreak(*pFunction));
}

// ---------------------------------------------------------------------------------------------------------------------
// What the call says

std::string AggregateBuilder::NameAsWritten() const {
  const SqlToken token = SqlLexer(m_text, m_call.GetLocation()).Next();
  return std::string(m_text.substr(token.m_begin, token.m_end - token.m_begin));
}

void AggregateBuilder::RaiseArguments(const std::string& arguments) const {
  throw SqlError(m_call.GetLocation(), "the arguments of " + NameAsWritten() + " are (" + arguments + ')');
}

void AggregateBuilder::RequirePlace(bool bOfGroup) const {
  const AggregateRules& rules = m_context.m_aggregates;
  const std::string what = bOfGroup ? "an aggregate" : "a window function";
  if (!m_pBlock) throw SqlError(m_call.GetLocation(), NameAsWritten() + " is " + what + ", which only a query has");
  if (bOfGroup ? rules.m_bOfGroup : rules.m_bOfRow) return;
  throw SqlError(m_call.GetLocation(), what + " cannot stand in " + std::string(rules.m_place));
}

void AggregateBuilder::RefuseOptions() const {
  if (m_call.Get("agg_within_group").IsTrue()) RaiseUnsupported(m_call, "WITHIN GROUP");
  if (const SqlNode order = m_call.Get("agg_order"); !order.IsNone()) {
    throw SqlError(PlaceOfNode(order), "no aggregate holds an order of what it aggregates");
  }
  if (m_call.Get("func_variadic").IsTrue()) RaiseUnsupported(m_call, "VARIADIC");
  if (m_bStar && m_name != "count") RaiseArguments("x");
  const bool bJoinsTexts = m_name == "listagg" || m_name == "string_agg" || m_name == "group_concat";
  if (bJoinsTexts && m_arguments.size() == 2) {
    throw SqlError(PlaceOfNode(m_arguments[1]), "no aggregate holds a separator");
  }
}

void AggregateBuilder::RefuseFilter() const {
  const SqlNode filter = m_call.Get("agg_filter");
  if (!filter.IsNone()) throw SqlError(PlaceOfNode(filter), NameAsWritten() + " takes no FILTER");
}

void AggregateBuilder::ReadArguments() {
  const std::optional<std::size_t> by = FindBreakWord(m_text, m_call.GetLocation());
  m_bBy = by.has_value();
  for (const SqlNode argument : m_call.Get("args").GetElements()) {
    (m_bBy && argument.GetStart() > *by ? m_breaks : m_arguments).push_back(argument);
  }
  m_bDistinct = m_call.Get("agg_distinct").IsTrue();
  m_bStar = m_call.Get("agg_star").IsTrue();
  // In front of BY the sign has been respelled.
  const bool bStarBeforeBy = m_bBy && m_arguments.size() == 1 && m_text[m_arguments[0].GetStart()] == '*';
  if (bStarBeforeBy) m_arguments.clear();
  m_bStar |= bStarBeforeBy;
}

// ---------------------------------------------------------------------------------------------------------------------
// Operands

OwnedRqExprPtr AggregateBuilder::BuildArgument(bool bNeedsRow) {
  if (m_bStar) return bNeedsRow ? OwnedRqExprPtr(new RqExprStringLiteral(L"*")) : OwnedRqExprPtr();
  return ConditionBuilder(m_text, m_context).BuildValue(m_arguments.at(0));
}

/// A number that is written down, from 1 on.
OwnedRqExprPtr AggregateBuilder::BuildNumber(SqlNode node, const char* what) {
  OwnedRqExprPtr number = ConditionBuilder(m_text, m_context).BuildValue(node);
  if (number->GetObjectType() != kRqExprIntegerLiteral ||
      static_cast<const RqExprIntegerLiteral&>(*number).GetValue() < 1) {
    throw SqlError(PlaceOfNode(node), std::string(what) + " is a whole number from 1 on");
  }
  return number;
}

/// How many rows a moving frame has, this one among them.
OwnedRqExprPtr AggregateBuilder::BuildWindowSize(const SqlFrame& frame) {
  OwnedRqExprPtr size(new RqExprIntegerLiteral(1));
  if (frame.m_numBefore.IsNone()) return size;
  OwnedRqExprPtr before = ConditionBuilder(m_text, m_context).BuildValue(frame.m_numBefore);
  const bool bIsNumber = before->GetObjectType() == kRqExprIntegerLiteral;
  const int number = bIsNumber ? static_cast<const RqExprIntegerLiteral&>(*before).GetValue() : -1;
  if (number < 0 || number == std::numeric_limits<int>::max()) {
    throw SqlError(PlaceOfNode(frame.m_numBefore), "a frame begins a whole number of rows before this one");
  }
  static_cast<RqExprIntegerLiteral&>(*size).SetValue(number + 1);
  return size;
}

AggregateBuilder::Columns AggregateBuilder::BuildColumns(const std::vector<SqlNode>& nodes) {
  Columns columns;
  for (const SqlNode node : nodes) columns.push_back(ConditionBuilder(m_text, m_context).BuildValue(node));
  return columns;
}

AggregateBuilder::Columns AggregateBuilder::BuildOrder(const SqlWindow& window, SortDirectonVector& directions,
                                                       bool bMayPlaceNulls) {
  Columns columns;
  for (const SqlNode sortBy : window.m_order) {
    if (!bMayPlaceNulls && NullSortDirectionOf(sortBy) != RqSortSpec::kNoCare) {
      throw SqlError(PlaceOfNode(sortBy), "the order of " + NameAsWritten() + " holds no NULLS FIRST or LAST");
    }
    columns.push_back(ConditionBuilder(m_text, m_context).BuildValue(sortBy.Get("node")));
    directions.push_back(SortDirectionOf(sortBy));
  }
  return columns;
}

// ---------------------------------------------------------------------------------------------------------------------
// Without a window

AggregateBuilder::OwnedAggr AggregateBuilder::BuildOfGroup(const AggregateFunction& function) {
  m_pBlock->NoteOfGroup();
  const RulesChange rules(m_context, {m_pBlock, "an aggregate", false, false});
  if (m_bStar) return OwnedAggr(new RqExprAggrCountStar(nullptr, nullptr));
  const SqlScope::ColumnUses before = m_context.m_pScope->GetColumnUses();
  OwnedRqExprPtr argument = BuildArgument(false);
  const SqlScope::ColumnUses after = m_context.m_pScope->GetColumnUses();
  if (after.m_own == before.m_own && after.m_outer != before.m_outer) {
    throw SqlError(m_call.GetLocation(), "an aggregate over columns of an outer query alone is not supported");
  }
  return OwnedAggr(function.m_make(argument.Release(), nullptr, nullptr, m_bDistinct));
}

AggregateBuilder::OwnedAggr AggregateBuilder::BuildWithBreak(const AggregateFunction& function) {
  if (m_bDistinct && !function.m_bOfGroup) RaiseArguments(std::string(function.m_arguments));
  if (!function.m_bOfGroup) RefuseFilter();
  const RulesChange rules(m_context, {m_pBlock, "a window function", true, false});
  const std::size_t numBefore = m_pBlock->GetNumOfGroup();
  Columns argument;
  if (!m_bStar) argument.push_back(BuildArgument(false));
  const bool bOverBlock = !function.m_bOfGroup || m_pBlock->GetNumOfGroup() != numBefore;
  if (function.m_numArguments > 1) {
    argument.push_back(BuildNumber(m_arguments[1], "the number behind what is aggregated"));
  }
  Columns columns = BuildColumns(m_breaks);
  Heap<RqExprColumnList> controlBreak =
      function.m_bOfGroup ? MakePartition(std::move(columns)) : MakeBreak(std::move(columns));
  RqExprVector released = Release(argument);
  released.resize(2);
  OwnedAggr aggr(m_bStar ? new RqExprAggrCountStar(controlBreak.Release(), nullptr)
                         : function.m_make(released[0], released[1], controlBreak.Release(), m_bDistinct));
  if (bOverBlock) m_pBlock->NoteOverBlock(aggr.Get());
  if (aggr->IsSortDependent()) {
    AggregateOrder order;
    order.m_pAggr = static_cast<RqExprSortDependentAggr*>(aggr.Get());
    order.m_node = m_call;
    order.m_bOfQuery = true;
    m_pBlock->NoteOrder(std::move(order));
  }
  return aggr;
}

// ---------------------------------------------------------------------------------------------------------------------
// Over a window

AggregateBuilder::OwnedAggr AggregateBuilder::BuildOver(const AggregateFunction* pFunction) {
  if (m_bBy) throw SqlError(PlaceOfNode(m_call.Get("over")), "BY and OVER do not go together");
  const SqlWindow window = ReadWindow(m_call.Get("over"), m_pBlock->GetWindowClause());
  const RulesChange rules(m_context, {m_pBlock, "a window function", true, false});
  const bool bAggregate = pFunction && pFunction->m_bOfGroup;
  if (bAggregate && m_arguments.size() != (m_bStar ? 0 : 1)) RaiseArguments("x");
  OwnedAggr aggr = bAggregate ? BuildAggregateOver(*pFunction, window) : BuildPlaceOver(window);
  m_pBlock->NoteOverBlock(aggr.Get());
  if (bAggregate && !aggr->IsSortDependent() && !FoundNodes(aggr->GetAggrExpr(), RqNode::IsAggrNode())) {
    m_pBlock->NotePlainWindow(m_call);
  }
  return aggr;
}

/// What tells the place of a row in its window.
AggregateBuilder::OwnedAggr AggregateBuilder::BuildPlaceOver(const SqlWindow& window) {
  using Method = OwnedAggr (AggregateBuilder::*)(const SqlWindow&);
  struct PlaceFunction {
    std::string_view m_name;
    std::string_view m_arguments;
    bool m_bNeedsOrder;
    Method m_build;
  };
  static constexpr PlaceFunction kFunctions[] = {
      {"rank", "", true, &AggregateBuilder::BuildRankOver},
      {"dense_rank", "", true, &AggregateBuilder::BuildRankOver},
      {"row_number", "", false, &AggregateBuilder::BuildRowNumber},
      {"ntile", "n", true, &AggregateBuilder::BuildOverOneColumn},
      {"percent_rank", "", true, &AggregateBuilder::BuildOverOneColumn},
  };
  const PlaceFunction* const pFunction = FindByName(kFunctions, m_name);
  if (!pFunction) {
    throw SqlError(m_call.GetLocation(), IsWindowFunction(m_name) ? "no aggregate of the tree is " + NameAsWritten()
                                                                  : NameAsWritten() + " goes without OVER");
  }
  if (m_arguments.size() != (pFunction->m_arguments.empty() ? 0 : 1) || m_bDistinct) {
    RaiseArguments(std::string(pFunction->m_arguments));
  }
  RefuseFilter();
  if (window.m_bHasFrame) throw SqlError(PlaceOfNode(window.m_node), NameAsWritten() + " takes no frame");
  if (window.m_order.empty() && pFunction->m_bNeedsOrder) {
    throw SqlError(PlaceOfNode(m_call.Get("over")), NameAsWritten() + " needs an ORDER BY in its window");
  }
  return (this->*pFunction->m_build)(window);
}

AggregateBuilder::OwnedAggr AggregateBuilder::BuildAggregateOver(const AggregateFunction& function,
                                                                 const SqlWindow& window) {
  const SqlFrame& frame = window.m_frame;
  const bool bWhole = frame.m_kind == SqlFrame::kPartition;
  const bool bMoving = frame.m_kind == SqlFrame::kMoving;
  const MakeAggregate make = bWhole ? function.m_make : bMoving ? function.m_makeMoving : function.m_makeRunning;
  if (!make || (!bWhole && m_bDistinct)) {
    const std::string name = NameAsWritten() + (m_bDistinct ? " with DISTINCT" : "");
    throw SqlError(PlaceOfNode(window.m_node),
                   "no aggregate of the tree is a " + std::string(bMoving ? "moving " : "running ") + name);
  }
  OwnedRqExprPtr argument = BuildArgument(!bWhole);
  Columns partition = BuildColumns(window.m_partition);
  if (bWhole) {
    Heap<RqExprColumnList> controlBreak = MakePartition(std::move(partition));
    if (m_bStar) return OwnedAggr(new RqExprAggrCountStar(controlBreak.Release(), nullptr));
    return OwnedAggr(make(argument.Release(), nullptr, controlBreak.Release(), m_bDistinct));
  }
  AggregateOrder order;
  order.m_node = window.m_node;
  order.m_bWithPeers = frame.m_kind == SqlFrame::kRunningWithPeers;
  order.m_columns = BuildOrder(window, order.m_directions, false);
  for (const SqlNode sortBy : window.m_order) order.m_places.push_back(sortBy);
  OwnedRqExprPtr size = bMoving ? BuildWindowSize(frame) : OwnedRqExprPtr();
  Heap<RqExprColumnList> controlBreak = MakeBreak(std::move(partition));
  OwnedAggr aggr(make(argument.Release(), size.Release(), controlBreak.Release(), false));
  order.m_pAggr = static_cast<RqExprSortDependentAggr*>(aggr.Get());
  m_pBlock->NoteOrder(std::move(order));
  return aggr;
}

AggregateBuilder::OwnedAggr AggregateBuilder::BuildRankOver(const SqlWindow& window) {
  SortDirectonVector directions;
  Columns columns = BuildOrder(window, directions, false);
  Heap<RqExprColumnList> controlBreak = MakeBreak(BuildColumns(window.m_partition));
  RqExprVector released = Release(columns);
  return OwnedAggr(new RqExprAggrRank(new RqExprColumnListOrdered(released), directions, controlBreak.Release(),
                                      nullptr, false, m_name == "dense_rank", false));
}

AggregateBuilder::OwnedAggr AggregateBuilder::BuildRowNumber(const SqlWindow& window) {
  SortDirectonVector directions;
  Columns order = BuildOrder(window, directions, true);
  Heap<RqExprColumnList> controlBreak = MakeBreak(BuildColumns(window.m_partition));
  Heap<RqExprColumnList> computeBreak = MakeRowOrder(controlBreak.Get(), std::move(order), directions);
  OwnedRqExprPtr row(new RqExprStringLiteral(L"*"));
  if (!computeBreak) return OwnedAggr(new RqExprAggrRowNum(row.Release(), controlBreak.Release(), nullptr, false));
  Heap<RqExprAggrRowNum> number(
      new RqExprAggrRowNum(row.Release(), directions, controlBreak.Release(), computeBreak.Release(), false));
  number->SetNullsSortOrder(NullsOf(window));
  return OwnedAggr(number.Release());
}

AggregateBuilder::OwnedAggr AggregateBuilder::BuildOverOneColumn(const SqlWindow& window) {
  const bool bTiles = m_name == "ntile";
  OwnedRqExprPtr number = bTiles ? BuildNumber(m_arguments[0], "the number of tiles") : OwnedRqExprPtr();
  SortDirectonVector directions;
  Columns order = BuildOrder(window, directions, false);
  if (order.size() != 1 || directions[0] != RqSortSpec::kAsc) {
    throw SqlError(PlaceOfNode(window.m_order.back()), NameAsWritten() + " goes up by a single value");
  }
  Heap<RqExprColumnList> controlBreak = MakeBreak(BuildColumns(window.m_partition));
  const MakeAggregate make = FindAggregateFunction(bTiles ? "ntile" : "percentile")->m_make;
  return OwnedAggr(make(order[0].Release(), number.Release(), controlBreak.Release(), false));
}

OwnedRqExprPtr AggregateBuilder::BuildFiltered(OwnedAggr aggr) {
  const SqlNode filter = m_call.Get("agg_filter");
  if (filter.IsNone()) return OwnedRqExprPtr(aggr.Release());
  const bool bOverBlock = m_pBlock->IsOverBlock(aggr.Get());
  const RulesChange rules(m_context, {m_pBlock, "FILTER", bOverBlock, false});
  OwnedRqExprCondPtr cond = ConditionBuilder(m_text, m_context).BuildCondition(filter);
  OwnedRqExprPtr filtered(new RqExprAggrIf(aggr.Release(), cond.Release(), false));
  if (bOverBlock) m_pBlock->NoteOverBlock(filtered.Get());
  return filtered;
}
