#include "rq/sql/QueryBuilder.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <list>
#include <utility>

#include "Host/KXThread.h"
#include "HostMemory/MemoryObjects.h"
#include "HostMemory/NearestNames.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/sql/FromBuilder.h"
#include "rq/sql/GroupingSets.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlSort.h"
#include "rq/sql/SqlText.h"

namespace {

bool IsSetOperator(SqlNode select) {
  const std::string_view op = select.Get("op").GetText();
  return !op.empty() && op != "SETOP_NONE";
}

/// Whether a query says more than the set operator above it could.
bool HasOwnEnd(SqlNode select) {
  static constexpr std::string_view kClauses[] = {"sortClause", "limitCount", "limitOffset", "withClause"};
  return std::ranges::any_of(kClauses, [&](std::string_view clause) { return !select.Get(clause).IsNone(); });
}

void RefuseUnsupportedClauses(SqlNode select) {
  static constexpr std::pair<std::string_view, const char*> kClauses[] = {
      {"intoClause", "INTO"},
      {"lockingClause", "a locking clause"},
      {"valuesLists", "VALUES"},
  };
  for (const auto& [clause, name] : kClauses) {
    const SqlNode node = select.Get(clause);
    if (!node.IsNone()) throw SqlError(PlaceOfNode(node), std::string(name) + " is not supported");
  }
  // DISTINCT alone is a list with an empty element.
  for (const SqlNode on : select.Get("distinctClause").GetElements()) {
    if (!on.GetKind().empty()) throw SqlError(PlaceOfNode(on), "DISTINCT ON is not supported");
  }
}

/// Whether its rows are groups of those of its tables.
bool IsGrouped(SqlNode select) { return !select.Get("groupClause").IsNone() || !select.Get("havingClause").IsNone(); }

bool IsStar(SqlNode target) {
  const std::vector<SqlNode> fields = target.Get("fields").GetElements();
  return target.GetKind() == "ColumnRef" && !fields.empty() && fields.back().GetKind() == "A_Star";
}

/// The position that a plain integer names; none for anything else.
std::optional<std::int64_t> PositionOf(SqlNode node) {
  const SqlNode integer = node.Get("ival");
  if (node.GetKind() != "A_Const" || integer.IsNone()) return {};
  return integer.Get("ival").GetNumber();
}

/// The only part of a name; empty for all else.
std::string_view BareName(SqlNode node) {
  const std::vector<SqlNode> fields = node.Get("fields").GetElements();
  if (node.GetKind() != "ColumnRef" || fields.size() != 1) return {};
  return fields.front().Get("sval").GetText();
}

/// The index of the one output column of that name; none if there is none.
std::optional<int> FindOutput(const std::vector<std::string>& names, std::string_view name, SqlNode node) {
  const std::vector<std::size_t> found = FindNames({names.begin(), names.end()}, name);
  if (found.empty()) return {};
  if (found.size() > 1) {
    throw SqlError(PlaceOfNode(node),
                   "several columns of the select list are called " + ForMessage(name, kMaxQuotedCharacters));
  }
  return static_cast<int>(found.front());
}

std::string Columns(std::size_t count) { return std::to_string(count) + (count == 1 ? " column" : " columns"); }

int CheckPosition(std::int64_t position, std::size_t numColumns, SqlNode node) {
  if (position < 1 || position > static_cast<std::int64_t>(numColumns)) {
    throw SqlError(PlaceOfNode(node), "the select list has no column of that number");
  }
  return static_cast<int>(position) - 1;
}

/// Grouping by a constant would be grouping by nothing, which has a group where there are no rows.
void RequireGroupable(RqExpr& expr, SqlNode node) {
  if (expr.IsConstant()) throw SqlError(PlaceOfNode(node), "a constant makes no groups");
  if (FoundNodes(&expr, RqNode::IsObjectType(kRqExprPhysicalSubquery)))
    RaiseUnsupported(node, "a subquery in GROUP BY");
  if (FoundNodes(&expr, RqNode::IsAggrNode()))
    throw SqlError(PlaceOfNode(node), "an aggregate cannot stand in GROUP BY");
}

/// What aggregates may be in a clause.
AggregateRules RulesOf(QueryBuilder::Clause clause, QueryScope& scope) {
  BlockAggregates* const pBlock = &scope.GetAggregates();
  switch (clause) {
    case QueryBuilder::kOn:
      return {pBlock, "ON", false, false};
    case QueryBuilder::kWhere:
      return {pBlock, "WHERE", false, false};
    case QueryBuilder::kGroupBy:
      return {pBlock, "GROUP BY", false, false};
    case QueryBuilder::kHaving:
      return {pBlock, "HAVING", true, false};
    case QueryBuilder::kSelect:
      return {pBlock, "the select list", true, true};
    case QueryBuilder::kOrderBy:
      return {pBlock, "ORDER BY", true, true};
    case QueryBuilder::kOrderBySetOperator:
      return {pBlock, "the ORDER BY of a set operation", false, false};
  }
  return {};
}

/// Expressions are built in a clause of a block while this stands.
class ScopeChange {
 public:
  ScopeChange(SqlContext& context, QueryScope& scope, QueryBuilder::Clause clause)
      : m_context(context),
        m_pBefore(std::exchange(context.m_pScope, &scope)),
        m_rulesBefore(std::exchange(context.m_aggregates, RulesOf(clause, scope))) {}
  ScopeChange(const ScopeChange&) = delete;
  ScopeChange& operator=(const ScopeChange&) = delete;
  ~ScopeChange() {
    m_context.m_pScope = m_pBefore;
    m_context.m_aggregates = m_rulesBefore;
  }

 private:
  SqlContext& m_context;
  SqlScope* m_pBefore;
  AggregateRules m_rulesBefore;
};

std::vector<std::string> AliasColumnsOf(SqlNode node) {
  std::vector<std::string> names;
  for (const std::string_view name : TextsOf(node.Get("alias", "colnames"))) names.emplace_back(name);
  return names;
}

}  // namespace

QueryBuilder::QueryBuilder(std::string_view text, MemoryGateway& gateway, const RepositoryNames& names,
                           QueryObserver* pObserver)
    : m_text(text), m_gateway(gateway), m_names(names), m_pObserver(pObserver) {
  m_context.m_pSession = &gateway;
}

OwnedRqExprPtr QueryBuilder::BuildValue(SqlNode node, QueryScope& scope, Clause clause) {
  const ScopeChange change(m_context, scope, clause);
  return ConditionBuilder(m_text, m_context).BuildValue(node);
}

OwnedRqExprCondPtr QueryBuilder::BuildCondition(SqlNode node, QueryScope& scope, Clause clause) {
  const ScopeChange change(m_context, scope, clause);
  return ConditionBuilder(m_text, m_context).BuildCondition(node);
}

// ---------------------------------------------------------------------------------------------------------------------
// Queries

BuiltList QueryBuilder::BuildList(SqlNode select, QueryScope* pOuter) {
  KXThread::LowStackCheck(0);
  RefuseUnsupportedClauses(select);
  const SqlNode withClause = select.Get("withClause");
  if (!withClause.IsNone()) OpenCommonExprs(withClause);
  BuiltList built = IsSetOperator(select) ? BuildSetOperator(select, pOuter) : BuildBlock(select, pOuter);
  if (!withClause.IsNone()) CloseCommonExprs();
  return built;
}

BuiltList QueryBuilder::BuildBlock(SqlNode select, QueryScope* pOuter) {
  QueryScope scope(*this, pOuter);
  BuiltList built;
  Heap<RqList> list(new RqList(0));
  FromBuilder from(*this, scope, pOuter);
  if (Heap<RqJoinSpec> joinSpec = from.Build(select)) list->SetJoinSpec(joinSpec.Release());
  if (OwnedRqExprCondPtr residual = from.ReleaseResidual()) list->ConcatenateToDetailFilter(residual.Release());
  if (const SqlNode where = select.Get("whereClause"); !where.IsNone()) {
    list->ConcatenateToDetailFilter(BuildCondition(where, scope, kWhere).Release());
  }
  BlockAggregates& aggregates = scope.GetAggregates();
  aggregates.SetWindowClause(select.Get("windowClause"));
  std::vector<SqlNode> places = BuildSelectList(select, scope, *list, built.m_names);
  BuildGroupBy(select, scope, *list, built.m_names);
  if (const SqlNode having = select.Get("havingClause"); !having.IsNone()) {
    list->SetHaving(new RqHaving(BuildCondition(having, scope, kHaving).Release()));
  }
  list->SetDistinct(!select.Get("distinctClause").GetElements().empty());
  aggregates.PutOrders(*list, built.m_names.size(), places);
  BuildOrderBy(select, scope, *list, built.m_names, places);
  aggregates.PutOrderOfQuery(*list);
  CheckGroups(select, scope, *list, places);
  SetLimits(select, *list);
  // What the observer builds over the block is no part of the query, and not told of.
  if (QueryObserver* const pObserver = std::exchange(m_pObserver, nullptr)) {
    pObserver->OnScope(scope);
    pObserver->OnBlock(*list);
    m_pObserver = pObserver;
  }
  CompileJoins(*list);
  built.m_list = Heap<RqAbstractList>(list.Release());
  return built;
}

/// What stands where there is one row for a group must have one value in it.
void QueryBuilder::CheckGroups(SqlNode select, QueryScope& scope, const RqList& list,
                               const std::vector<SqlNode>& places) {
  const BlockAggregates& aggregates = scope.GetAggregates();
  aggregates.CheckGroupingIds(list.GetGroupBy());
  if (!IsGrouped(select) && aggregates.GetNumOfGroup() == 0) return;
  const std::set<int> tables = scope.GetNumbers();
  if (const RqHaving* const pHaving = list.GetHaving()) {
    RequireGrouped(*pHaving->GetCond(), list.GetGroupBy(), tables, aggregates, select.Get("havingClause"));
  }
  for (std::size_t i = 0; i < places.size(); ++i) {
    const RqExpr& expr = *list.GetProjection()->GetIthColumn(static_cast<int>(i))->GetExpr();
    RequireGrouped(expr, list.GetGroupBy(), tables, aggregates, places[i]);
  }
  aggregates.CheckWindowsOverGroups();
}

void QueryBuilder::CompileJoins(RqList& list) {
  RqJoinSpec* const pJoinSpec = list.GetJoinSpec();
  if (!pJoinSpec) return;
  std::vector<RqJoinNode*> nodes;
  for (int i = 0; i < pJoinSpec->GetNumTableReferences(); ++i) {
    nodes.push_back(static_cast<RqJoinNode*>(pJoinSpec->ReleaseIthChild(i)));
  }
  OwnedRqExprCondPtr residual;
  list.SetJoinSpec(RqJoinSpec::CompileLinkGraph(nodes, residual, &m_gateway, true));
  if (residual) list.ConcatenateToDetailFilter(residual.Release());
}

BuiltList QueryBuilder::BuildSetOperator(SqlNode select, QueryScope* pOuter) {
  const std::string_view op = select.Get("op").GetText();
  const bool bAll = select.Get("all").IsTrue();
  // A chain of one operator is one node: its branches come from the innermost operator outwards.
  std::vector<SqlNode> branches{select.Get("rarg")};
  SqlNode left = select.Get("larg");
  while (left.Get("op").GetText() == op && left.Get("all").IsTrue() == bAll && !HasOwnEnd(left)) {
    branches.push_back(left.Get("rarg"));
    left = left.Get("larg");
  }
  branches.push_back(left);
  std::ranges::reverse(branches);

  BuiltList built;
  OwnedRqPtrVector<std::vector<RqAbstractList*>> lists;
  for (const SqlNode branch : branches) {
    BuiltList next = WithoutHiddenColumns(branch, BuildList(branch, pOuter));
    if (lists.empty()) {
      built.m_names = next.m_names;
    } else if (next.m_names.size() != built.m_names.size()) {
      throw SqlError(PlaceOfNode(branch), "this query has " + Columns(next.m_names.size()) +
                                              ", and the first one of the set operation " +
                                              Columns(built.m_names.size()));
    }
    lists.push_back(next.m_list.Get());
    static_cast<void>(next.m_list.Release());
  }
  std::vector<RqAbstractList*> taken;
  taken.swap(lists);
  if (op == "SETOP_UNION") {
    built.m_list = Heap<RqAbstractList>(new RqUnion(taken, bAll));
  } else if (op == "SETOP_INTERSECT") {
    built.m_list = Heap<RqAbstractList>(new RqIntersect(taken, bAll));
  } else {
    built.m_list = Heap<RqAbstractList>(new RqExcept(taken, bAll));
  }
  if (!select.Get("sortClause").IsNone()) built = OrderSetOperator(select, std::move(built));
  SetLimits(select, *built.m_list);
  return built;
}

/// A block that selects the columns of a list that have their place in the names, and nothing more.
Heap<RqList> QueryBuilder::Enclose(BuiltList built, SqlNode select, QueryScope& scope) {
  Heap<RqList> list(new RqList(0));
  Heap<RqAbstractTable> table = MakeDerivedTable(std::move(built), select, std::string(), scope);
  Heap<RqTableReference> reference(
      new RqTableReference(SqlTableRef::kInnerJoin, table.Release(), nullptr, nullptr, kDriving_UnknownTable));
  std::vector<RqJoinNode*> nodes{new RqJoinNode(reference.Release(), false)};
  list->SetJoinSpec(new RqJoinSpec(nodes));
  scope.Show(0, scope.GetColumnsOf(0));
  for (const NamedColumn& column : scope.GetColumns()) {
    list->GetProjection()->AddColumn(
        new RqDerivedColumn(scope.MakeColumn(column).Release(), RqDerivedColumn::kUnknownColumnNum));
  }
  return list;
}

/// A set operator has no sort: a block around it does.
BuiltList QueryBuilder::OrderSetOperator(SqlNode select, BuiltList built) {
  QueryScope scope(*this, nullptr);
  BuiltList ordered{Heap<RqAbstractList>(), built.m_names};
  Heap<RqList> list = Enclose(std::move(built), select, scope);
  std::vector<SqlNode> places;
  BuildOrderBy(select, scope, *list, ordered.m_names, places);
  ordered.m_list = Heap<RqAbstractList>(list.Release());
  return ordered;
}

/// For a reader that counts columns: columns that only the sort has stay in an inner block.
BuiltList QueryBuilder::WithoutHiddenColumns(SqlNode select, BuiltList built) {
  if (static_cast<std::size_t>(built.m_list->GetProjection()->GetNumColumns()) == built.m_names.size()) return built;
  QueryScope scope(*this, nullptr);
  BuiltList outer{Heap<RqAbstractList>(), built.m_names};
  outer.m_list = Heap<RqAbstractList>(Enclose(std::move(built), select, scope).Release());
  return outer;
}

Heap<RqExprSubquery> QueryBuilder::BuildSubquery(SqlNode select, QueryScope& outer, std::size_t nColumns) {
  BuiltList built = BuildList(select, &outer);
  if (nColumns != 0 && built.m_names.size() != nColumns) {
    throw SqlError(PlaceOfNode(select), "the subquery has " + Columns(built.m_names.size()) + ", where " +
                                            Columns(nColumns) + (nColumns == 1 ? " is needed" : " are needed"));
  }
  if (nColumns != 0) built = WithoutHiddenColumns(select, std::move(built));
  return Heap<RqExprSubquery>(new RqExprPhysicalSubquery(built.m_list.Release(), &m_gateway));
}

// ---------------------------------------------------------------------------------------------------------------------
// Clauses

/// Gives the place of each column.
std::vector<SqlNode> QueryBuilder::BuildSelectList(SqlNode select, QueryScope& scope, RqList& list,
                                                   std::vector<std::string>& names) {
  std::vector<SqlNode> places;
  for (const SqlNode target : select.Get("targetList").GetElements()) {
    const SqlNode value = target.Get("val");
    if (IsStar(value)) {
      AddAllColumns(value, scope, list, names);
      places.resize(names.size(), value);
      continue;
    }
    places.push_back(value);
    list.GetProjection()->AddColumn(
        new RqDerivedColumn(BuildValue(value, scope, kSelect).Release(), RqDerivedColumn::kUnknownColumnNum));
    std::string name(target.Get("name").GetText());
    if (name.empty() && value.GetKind() == "ColumnRef") {
      name = ConditionBuilder(m_text, m_context).ReadNames(value).back();
    }
    names.push_back(std::move(name));
  }
  if (names.empty()) throw SqlError(PlaceOfNode(select), "the query selects no column");
  return places;
}

void QueryBuilder::AddAllColumns(SqlNode node, QueryScope& scope, RqList& list, std::vector<std::string>& names) {
  const auto add = [&](OwnedRqExprPtr column, const std::string& name) {
    list.GetProjection()->AddColumn(new RqDerivedColumn(column.Release(), RqDerivedColumn::kUnknownColumnNum));
    names.push_back(name);
  };
  std::vector<std::string> qualifier;
  for (const SqlNode field : node.Get("fields").GetElements()) {
    if (field.GetKind() == "String") qualifier.emplace_back(field.Get("sval").GetText());
  }
  if (qualifier.empty()) {
    for (const NamedColumn& column : scope.GetColumns()) add(scope.MakeColumn(column), column.m_name);
    if (scope.GetColumns().empty()) throw SqlError(PlaceOfNode(node), "there is no FROM to take all columns of");
    return;
  }
  const std::vector<TableSource>& sources = scope.GetSources();
  const auto source = std::ranges::find_if(sources, [&](const TableSource& s) { return s.IsCalled(qualifier); });
  if (source == sources.end()) {
    throw SqlError(PlaceOfNode(node),
                   "there is no table " + ForMessage(qualifier.back(), kMaxQuotedCharacters) + " in this FROM");
  }
  for (std::size_t i = 0; i < source->GetNumColumns(); ++i) add(source->MakeColumn(i), source->GetColumnName(i));
}

/// A column of the tables goes before an alias of the select list, as the standard has it.
OwnedRqExprPtr QueryBuilder::BuildGroupingColumn(SqlNode node, QueryScope& scope, const RqList& list,
                                                 const std::vector<std::string>& names) {
  const auto copyOutput = [&list](int index) {
    return OwnedRqExprPtr(list.GetProjection()->GetIthColumn(index)->GetExpr()->DeepExprCopy(true));
  };
  if (const auto position = PositionOf(node)) {
    return copyOutput(CheckPosition(*position, names.size(), node));
  }
  const std::string_view name = BareName(node);
  const bool bIsColumn = scope.HasColumn(name);
  if (!bIsColumn) {
    if (const std::optional<int> output = FindOutput(names, name, node)) return copyOutput(*output);
  }
  return BuildValue(node, scope, kGroupBy);
}

void QueryBuilder::BuildGroupBy(SqlNode select, QueryScope& scope, RqList& list,
                                const std::vector<std::string>& names) {
  const SqlNode groupClause = select.Get("groupClause");
  if (groupClause.IsNone()) return;
  if (select.Get("groupDistinct").IsTrue()) RaiseUnsupported(groupClause, "GROUP BY DISTINCT");
  OwnedRqExprVector columns;
  const RqEquivalence equivalence;
  const GroupingSets sets(groupClause, [&](SqlNode node) {
    OwnedRqExprPtr column = BuildGroupingColumn(node, scope, list, names);
    RequireGroupable(*column, node);
    const auto it = std::ranges::find_if(columns, [&](RqExpr* pOther) { return equivalence(*pOther, *column); });
    const auto number = static_cast<std::size_t>(it - columns.begin());
    if (it == columns.end()) {
      columns.push_back(column.Get());
      static_cast<void>(column.Release());
    }
    return number;
  });

  // The grouping drops constants, so the columns are found again by what they are.
  std::vector<OwnedRqExprPtr> numbered;
  for (const RqExpr* const pColumn : columns) numbered.emplace_back(pColumn->DeepExprCopy(true));
  RqExprVector donated;
  donated.swap(columns);
  Heap<RqGroupBy> groupBy(new RqGroupBy(donated, false));
  if (!sets.IsPlain()) {
    constexpr int kMaxColumns = 31;
    const int numColumns = groupBy->GetNumColumns();
    if (numColumns > kMaxColumns) throw SqlError(PlaceOfNode(groupClause), "grouping sets have at most 31 columns");
    Int32Vector ids;
    for (const GroupingSets::Set& set : sets.Get()) {
      std::int32_t id = 0;
      for (int i = 0; i < numColumns; ++i) {
        const bool bInSet = std::ranges::any_of(
            set, [&](std::size_t number) { return equivalence(*groupBy->GetIthColumn(i), *numbered[number]); });
        if (!bInSet) id |= 1 << (numColumns - 1 - i);
      }
      ids.push_back(id);
    }
    groupBy->SetGroupingSet(ids);
  }
  list.SetGroupBy(groupBy.Release());
}

/// Places gets those of hidden columns.
void QueryBuilder::BuildOrderBy(SqlNode select, QueryScope& scope, RqList& list, const std::vector<std::string>& names,
                                std::vector<SqlNode>& places) {
  const SqlNode sortClause = select.Get("sortClause");
  if (sortClause.IsNone()) return;
  Heap<RqOrderBy> orderBy(new RqOrderBy);
  const Clause clause = IsSetOperator(select) ? kOrderBySetOperator : kOrderBy;
  RqProjection& projection = *list.GetProjection();
  for (const SqlNode sortBy : sortClause.GetElements()) {
    const SqlNode node = sortBy.Get("node");
    RqDerivedColumn* pColumn = nullptr;
    bool bHidden = false;
    if (const auto position = PositionOf(node)) {
      pColumn = projection.GetIthColumn(CheckPosition(*position, names.size(), node));
    } else if (const std::optional<int> output = FindOutput(names, BareName(node), node)) {
      pColumn = projection.GetIthColumn(*output);
    } else {
      OwnedRqExprPtr value = BuildValue(node, scope, clause);
      scope.GetAggregates().PutOrders(list, names.size(), places);
      pColumn = scope.GetAggregates().InsertColumn(projection, std::move(value), places, node);
      bHidden = projection.FindColumnIndex(pColumn) >= static_cast<int>(names.size());
      if (bHidden && list.IsDistinct()) {
        throw SqlError(PlaceOfNode(node), "a query with DISTINCT is sorted by what it selects");
      }
    }
    const Heap<RqSortSpec> spec(new RqSortSpec(pColumn->GetColumnNum(), SortDirectionOf(sortBy), bHidden,
                                               pColumn->GetExpr()->IsConstant(), NullSortDirectionOf(sortBy)));
    orderBy->AddSortSpec(*spec);
  }
  list.SetOrderBy(orderBy.Release());
}

void QueryBuilder::SetLimits(SqlNode select, RqAbstractList& list) {
  if (select.Get("limitOption").GetText() == "LIMIT_OPTION_WITH_TIES") {
    throw SqlError(PlaceOfNode(select.Get("limitCount")), "WITH TIES is not supported");
  }
  if (const SqlNode limit = select.Get("limitCount"); !limit.IsNone() && !limit.Get("isnull").IsTrue()) {
    list.SetRowNumLimit(ReadRowNumber(limit, "LIMIT", 1));
  }
  if (const SqlNode offset = select.Get("limitOffset"); !offset.IsNone()) {
    list.SetRowNumOffset(ReadRowNumber(offset, "OFFSET", 0));
  }
}

std::uint32_t QueryBuilder::ReadRowNumber(SqlNode node, const char* clause, std::uint32_t least) {
  std::uint64_t number = 0;
  bool bRead = false;
  if (const SqlNode integer = node.Get("ival"); !integer.IsNone()) {
    const std::int64_t value = integer.Get("ival").GetNumber();
    bRead = value >= 0;
    number = static_cast<std::uint64_t>(value);
  } else if (const std::string_view digits = node.Get("fval", "fval").GetText(); !digits.empty()) {
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    bRead = error == std::errc() && end == digits.data() + digits.size();
  }
  if (node.GetKind() != "A_Const" || !bRead || number < least || number > std::numeric_limits<std::uint32_t>::max()) {
    throw SqlError(PlaceOfNode(node),
                   std::string(clause) + " takes a whole number from " + std::to_string(least) + " to 4294967295");
  }
  return static_cast<std::uint32_t>(number);
}

// ---------------------------------------------------------------------------------------------------------------------
// Tables

Heap<RqAbstractTable> QueryBuilder::BuildTable(SqlNode node, QueryScope& scope, QueryScope* pOuter) {
  const std::string alias(node.Get("alias", "aliasname").GetText());
  if (node.GetKind() == "RangeSubselect") {
    if (node.Get("lateral").IsTrue()) RaiseUnsupported(node, "LATERAL");
    return MakeDerivedTable(BuildList(node.Get("subquery"), pOuter), node, alias, scope);
  }
  if (node.GetKind() != "RangeVar") RaiseUnsupported(node, "this kind of table");

  std::vector<std::string> path;
  for (const std::string_view field : {"catalogname", "schemaname", "relname"}) {
    if (const std::string_view name = node.Get(field).GetText(); !name.empty()) path.emplace_back(name);
  }
  if (path.size() == 1) {
    if (const auto place = FindCommonExpr(path[0])) return BuildCommonExprTable(*place, node, scope);
  }
  KXStringVector names;
  for (const std::string& name : path) names.push_back(ToText(name));
  NameLookup lookup = m_names.FindPhysicalTable(names);
  const bool bPhysical = static_cast<bool>(lookup);
  if (!bPhysical) {
    const NameLookup anyTable = m_names.FindTable(names);
    if (!anyTable) throw SqlError(PlaceOfNode(node), anyTable.m_cause.ToUTF8());
    lookup = anyTable;
  }
  const int number = bPhysical ? ++m_numTables : 0;
  TableSource source(m_gateway, m_names, lookup.m_id, number, alias);
  if (!source.RenameColumns(AliasColumnsOf(node))) {
    throw SqlError(PlaceOfNode(node), "the alias names more columns than the table has");
  }
  scope.AddSource(std::move(source), node);
  if (bPhysical) return Heap<RqAbstractTable>(new RqAtomicTable(&m_gateway, number, lookup.m_id));
  return Heap<RqAbstractTable>(new RqEntity(&m_gateway, lookup.m_id));
}

Heap<RqAbstractTable> QueryBuilder::MakeDerivedTable(BuiltList built, SqlNode node, const std::string& alias,
                                                     QueryScope& scope) {
  RqProjection* const pProjection = built.m_list->GetProjection();
  const int number = ++m_numTables;
  TableSource source(number, alias, *pProjection, std::move(built.m_names));
  if (!source.RenameColumns(AliasColumnsOf(node))) {
    throw SqlError(PlaceOfNode(node), "the alias names more columns than the query has");
  }
  Heap<RqAbstractTable> table(new RqDerivedTable(built.m_list.Release(), number));
  scope.AddSource(std::move(source), node);
  return table;
}

void QueryBuilder::OpenCommonExprs(SqlNode withClause) {
  if (withClause.Get("recursive").IsTrue()) RaiseUnsupported(withClause, "WITH RECURSIVE");
  WithClause clause;
  for (const SqlNode node : withClause.Get("ctes").GetElements()) {
    CommonExpr common;
    common.m_node = node;
    common.m_query = node.Get("ctequery");
    common.m_name = node.Get("ctename").GetText();
    if (common.m_query.GetKind() != "SelectStmt") throw SqlError(PlaceOfNode(node), "this is no query");
    for (const std::string_view name : TextsOf(node.Get("aliascolnames"))) common.m_columnNames.emplace_back(name);
    if (std::ranges::find(clause.m_exprs, common.m_name, &CommonExpr::m_name) != clause.m_exprs.end()) {
      throw SqlError(PlaceOfNode(node),
                     "WITH gives the name " + ForMessage(common.m_name, kMaxQuotedCharacters) + " twice");
    }
    clause.m_exprs.push_back(std::move(common));
  }
  clause.m_numVisible = clause.m_exprs.size();
  m_withClauses.push_back(std::move(clause));
}

/// What nobody has read is built for its errors alone. It does not count as a reader of others.
void QueryBuilder::CloseCommonExprs() {
  std::vector<CommonExpr*> unread;
  for (WithClause& clause : m_withClauses) {
    for (CommonExpr& common : clause.m_exprs) {
      if (!common.m_pList) unread.push_back(&common);
    }
  }
  QueryObserver* const pObserver = std::exchange(m_pObserver, nullptr);
  std::vector<BuiltList> dropped;
  const std::size_t last = m_withClauses.size() - 1;
  for (std::size_t i = m_withClauses[last].m_exprs.size(); i-- > 0;) {
    const CommonExpr& common = m_withClauses[last].m_exprs[i];
    // Once is enough, however often the query around it is built.
    if (!common.m_pList && !m_built.contains(PlaceOfNode(common.m_node))) dropped.push_back(BuildCommonExpr({last, i}));
  }
  for (CommonExpr* const pCommon : unread) pCommon->m_pList = nullptr;
  m_pObserver = pObserver;
  m_withClauses.pop_back();
}

std::optional<QueryBuilder::CommonPlace> QueryBuilder::FindCommonExpr(const std::string& name) const {
  for (std::size_t clause = m_withClauses.size(); clause-- > 0;) {
    for (std::size_t index = 0; index < m_withClauses[clause].m_numVisible; ++index) {
      if (m_withClauses[clause].m_exprs[index].m_name == name) return CommonPlace{clause, index};
    }
  }
  return {};
}

/// The query sees the WITH clauses around it and what stands before it in its own, and no block that reads it.
BuiltList QueryBuilder::BuildCommonExpr(const CommonPlace& place) {
  const auto begin = m_withClauses.begin() + static_cast<std::ptrdiff_t>(place.m_clause) + 1;
  std::vector<WithClause> inner(std::make_move_iterator(begin), std::make_move_iterator(m_withClauses.end()));
  m_withClauses.erase(begin, m_withClauses.end());
  const std::size_t numVisible = std::exchange(m_withClauses.back().m_numVisible, place.m_index);
  BuiltList built = BuildList(m_withClauses.back().m_exprs[place.m_index].m_query, nullptr);
  m_withClauses.back().m_numVisible = numVisible;
  CommonExpr& common = m_withClauses.back().m_exprs[place.m_index];
  if (common.m_columnNames.size() > built.m_names.size()) {
    throw SqlError(PlaceOfNode(common.m_node), "WITH names more columns than its query has");
  }
  std::ranges::copy(common.m_columnNames, built.m_names.begin());
  common.m_pList = built.m_list.Get();
  m_built.insert(PlaceOfNode(common.m_node));
  common.m_names = built.m_names;
  std::ranges::move(inner, std::back_inserter(m_withClauses));
  return built;
}

Heap<RqAbstractTable> QueryBuilder::BuildCommonExprTable(const CommonPlace& place, SqlNode node, QueryScope& scope) {
  const std::string name(node.Get("relname").GetText());
  std::string alias(node.Get("alias", "aliasname").GetText());
  if (alias.empty()) alias = name;
  const CommonExpr& common = m_withClauses[place.m_clause].m_exprs[place.m_index];
  if (RqAbstractList* const pList = common.m_pList) {
    // A reader of what stands elsewhere has a select list of its own.
    Heap<RqProjection> projection(new RqProjection(0));
    for (int i = 0; i < static_cast<int>(common.m_names.size()); ++i) {
      projection->AddColumn(new RqDerivedColumn(new RqDerivedColumnReference(pList->GetProjection()->GetIthColumn(i)),
                                                RqDerivedColumn::kUnknownColumnNum));
    }
    BuiltList built{Heap<RqAbstractList>(new RqSharedList(projection.Release(), pList)), common.m_names};
    return MakeDerivedTable(std::move(built), node, alias, scope);
  }
  Heap<RqAbstractTable> table = MakeDerivedTable(BuildCommonExpr(place), node, alias, scope);
  static_cast<RqDerivedTable&>(*table).SetCommonExprName(ToText(name));
  return table;
}
