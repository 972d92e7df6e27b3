#include <algorithm>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/sql/SqlText.h"
#include "rq/sql/SqlWriter.h"
#include "rq/sql/SqlWriterScopes.h"

// Statements and blocks.

namespace {

constexpr std::size_t kMaxLine = 110;
constexpr std::size_t kMaxQuotedText = 100;
constexpr int kMaxBranches = 250;  ///< SQLite takes 500 in one chain.

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) text.append(text.empty() ? "" : separator).append(part);
  return text;
}

std::vector<const RqExpr*> Concatenated(std::vector<const RqExpr*> first, const std::vector<const RqExpr*>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

bool HasOwnEnd(const RqAbstractList& list) {
  const auto* const pBlock = dynamic_cast<const RqList*>(&list);
  return list.GetRowNumLimit() != 0 || list.GetRowNumOffset() != 0 || (pBlock && pBlock->GetOrderBy());
}

bool HasGroupingSets(const RqAbstractList& list) {
  const auto* const pBlock = dynamic_cast<const RqList*>(&list);
  return pBlock && pBlock->GetGroupBy() && pBlock->GetGroupBy()->IsGroupingSet();
}

}  // namespace

bool HasAggregates(const RqNode* pNode) {
  if (!pNode) return false;
  const auto* const pExpr = dynamic_cast<const RqExpr*>(pNode);
  if (pExpr && pExpr->IsAggr()) return true;
  for (int i = 0; i < pNode->GetNumChildren(); ++i) {
    if (HasAggregates(pNode->GetIthChild(i))) return true;
  }
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Refusals

void SqlWriter::Refuse(const std::string& what, const RqNode* pNode) const {
  std::string message = "the database " + m_target.GetName() + " cannot do " + what;
  message += (what.ends_with(',') ? " which is needed in " : ", which is needed in ") + m_place;
  if (pNode) {
    const std::string text = RqDumpout::StringFrom(*pNode, false, false, &m_target.GetGateway()).ToUTF8();
    message += ": " + ForMessage(text.substr(std::min(text.find_first_not_of(" \n"), text.size())), kMaxQuotedText);
  }
  throw SqlWriteError(message);
}

void SqlWriter::Require(FeatureId id, const RqNode* pNode) const {
  if (!m_target.Can(id)) Refuse(SqlTarget::NameOf(id), pNode);
}

void SqlWriter::RequireAtMost(FeatureId id, std::size_t count, const RqNode* pNode) const {
  const std::uint32_t limit = m_target.GetLimit(id);
  if (limit != 0 && count > limit) {
    Refuse(std::to_string(count) + " where " + SqlTarget::NameOf(id) + " is " + std::to_string(limit), pNode);
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Lines

std::string SqlWriter::NewLine(int more) const {
  return '\n' + std::string(static_cast<std::size_t>(m_indent + more), ' ');
}

std::string SqlWriter::Enclosed(const RqAbstractList& list, const Names& names) {
  std::string text;
  {
    const ValueScope indent(m_indent, m_indent + 4);
    text = NewLine() + List(list, names);
  }
  return '(' + text + NewLine(2) + ')';
}

/// The same for a text that was written at an indent of 4 more.
std::string SqlWriter::EnclosedText(const std::string& text) const {
  return '(' + NewLine(4) + text + NewLine(2) + ')';
}

std::string SqlWriter::FilterLines(const char* word, const std::vector<std::string>& conjuncts) const {
  if (conjuncts.empty()) return {};
  return NewLine() + word + ' ' + Joined(conjuncts, NewLine(2) + "AND ");
}

// ---------------------------------------------------------------------------------------------------------------------
// Statements

std::string SqlWriter::Write(const RqAbstractList& list, const std::vector<std::string>& names) {
  TakeTableNames();
  Names columns = VisibleNames(list);
  if (!names.empty() && names.size() < columns.size()) columns.resize(names.size());
  for (std::size_t i = 0; i < std::min(names.size(), columns.size()); ++i) {
    if (!names[i].empty()) columns[i] = names[i];
  }
  const std::string body = List(list, columns);
  std::string text;
  for (const CommonExpr& common : m_commonExprs) {
    text += text.empty() ? "WITH " : ",\n";
    text += m_target.Quote(common.m_name) + " AS (\n  " + common.m_text + "\n)";
  }
  if (!text.empty()) text += '\n';
  text += body;
  RequireAtMost(SUFeaturesTable::kFeature_MaxStatementLen, text.size(), nullptr);
  return text;
}

std::string SqlWriter::List(const RqAbstractList& list, const Names& names) {
  KXThread::LowStackCheck(0);
  const ValueScope depth(m_depth, m_depth + 1);
  RequireAtMost(SUFeaturesTable::kFeature_MaxNestedLevel, m_depth - 1, &list);
  return ListText(list, names);
}

/// The list on the level of what stands around it.
std::string SqlWriter::ListText(const RqAbstractList& list, const Names& names) {
  KXThread::LowStackCheck(0);
  switch (list.GetObjectType()) {
    case kRqList:
      return Block(static_cast<const RqList&>(list), names);
    case kRqUnion:
    case kRqIntersect:
    case kRqExcept:
      return SetOperator(list, names);
    case kRqStats:
      return ListText(*static_cast<const RqStats&>(list).GetInnerList(), names);
    case kRqCanonicalMap:
      return ListText(*static_cast<const RqCanonicalMap&>(list).GetInnerList(), names);
    default:
      Refuse("a list of this kind", &list);
  }
}

std::string SqlWriter::Block(const RqList& list, const Names& names) {
  if (list.GetSummaryFilter()) Refuse("a summary filter", list.GetSummaryFilter());
  const ValueScope block(m_pBlock, &list);
  const ValueScope outerNulls(m_outerNulls, Concatenated(m_outerNulls, m_nulls));
  const ValueScope outerKept(m_outerKept, Concatenated(m_outerKept, m_kept));
  const ValueScope nulls(m_nulls, {});
  const ValueScope kept(m_kept, {});
  const RqGroupBy* const pGroupBy = list.GetGroupBy();
  if (pGroupBy && pGroupBy->IsGroupingSet() && !m_target.Can(SUFeaturesTable::kFeature_GroupByGroupingSets)) {
    return ExpandedGroupingSets(list, names);
  }
  std::vector<int> columns = VisibleColumns(list);
  // Behind the columns that have names may stand those that aggregates are ordered by.
  if (!names.empty() && names.size() < columns.size()) columns.resize(names.size());
  return SelectClause(list, columns, names) + RowsClauses(list) + OrderByClause(list, columns, names) +
         LimitClause(list);
}

/// The columns of those indexes. Without names there are no aliases.
std::string SqlWriter::SelectClause(const RqList& list, const std::vector<int>& columns, const Names& names) {
  const PlaceScope place(*this, "the select list");
  RequireAtMost(SUFeaturesTable::kFeature_MaxColumnsInSelect, columns.size(), &list);
  if (list.IsDistinct()) Require(SUFeaturesTable::kFeature_Distinct, nullptr);
  const std::string words = list.IsDistinct() ? "SELECT DISTINCT " : "SELECT ";
  // SQLite takes the condition of a single group only where an aggregate is selected; what else is selected is
  // constant.
  const bool bLacksAggregate =
      m_target.IsSqlite() && list.GetHaving() && !list.GetGroupBy() && !HasAggregates(list.GetProjection());
  std::vector<std::string> items;
  std::size_t length = static_cast<std::size_t>(m_indent) + words.size();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const ValueScope indent(m_indent, m_indent + 7);
    const RqExpr& expr = *list.GetProjection()->GetIthColumn(columns[i])->GetExpr();
    std::string item = Argument(expr);
    if (i == 0 && bLacksAggregate) item = "CASE WHEN count(*) >= 0 THEN " + item + " END";
    if (!names.empty()) {
      const std::string alias = m_target.Quote(names[i]);
      // A column goes by its name.
      const bool bNamed = item == alias || (expr.IsColumnReference() && item.ends_with('.' + alias));
      if (!bNamed) item += " AS " + alias;
    }
    length += item.find('\n') == std::string::npos ? item.size() + 2 : kMaxLine;
    items.push_back(std::move(item));
  }
  return words + Joined(items, length <= kMaxLine ? ", " : "," + NewLine(7));
}

/// FROM to HAVING.
std::string SqlWriter::RowsClauses(const RqList& list) {
  std::vector<std::string> conjuncts;
  std::string text = FromLines(list, conjuncts);
  if (const RqDetailFilter* const pFilter = list.GetDetailFilter(); pFilter && pFilter->GetCond()) {
    const PlaceScope place(*this, "WHERE");
    const ValueScope indent(m_indent, m_indent + 2);
    const ValueScope nulls(m_nulls, {});
    const bool bAlone = conjuncts.empty();
    for (std::string& conjunct : Conjuncts(*pFilter->GetCond(), bAlone)) conjuncts.push_back(std::move(conjunct));
  }
  text += FilterLines("WHERE", conjuncts) + GroupByClause(list);
  if (const RqHaving* const pHaving = list.GetHaving(); pHaving && pHaving->GetCond()) {
    const PlaceScope place(*this, "HAVING");
    Require(SUFeaturesTable::kFeature_Having, pHaving->GetCond());
    std::vector<std::string> conditions;
    {
      const ValueScope indent(m_indent, m_indent + 2);
      conditions = Conjuncts(*pHaving->GetCond(), true);
    }
    text += FilterLines("HAVING", conditions);
  }
  return text;
}

std::string SqlWriter::GroupByClause(const RqList& list) {
  const RqGroupBy* const pGroupBy = list.GetGroupBy();
  if (!pGroupBy) return {};
  const PlaceScope place(*this, "GROUP BY");
  const std::vector<const RqExpr*> nulls = m_nulls;
  const ValueScope noNulls(m_nulls, {});
  Require(SUFeaturesTable::kFeature_GroupBy, pGroupBy);
  if (pGroupBy->IsGroupingSetFiltersAvailable()) Refuse("filters of grouping sets", pGroupBy);
  Names columns;
  for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
    const RqExpr& column = *pGroupBy->GetIthColumn(i);
    if (!column.IsColumnReference()) Require(SUFeaturesTable::kFeature_GroupByExpr, &column);
    columns.push_back(Argument(column));
  }
  RequireAtMost(SUFeaturesTable::kFeature_MaxColumnsInGroupBy, columns.size(), pGroupBy);
  Names written;
  if (!pGroupBy->IsGroupingSet()) {
    written = columns;
  } else if (!m_target.Can(SUFeaturesTable::kFeature_GroupByGroupingSets)) {
    for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
      if (std::ranges::find(nulls, pGroupBy->GetIthColumn(i)) == nulls.end()) {
        written.push_back(columns[static_cast<std::size_t>(i)]);
      }
    }
  } else {
    for (const std::int32_t set : pGroupBy->GetGroupingSet()) {
      Names inSet;
      for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!(set >> (columns.size() - 1 - i) & 1)) inSet.push_back(columns[i]);
      }
      written.push_back('(' + Joined(inSet, ", ") + ')');
    }
    return NewLine() + "GROUP BY GROUPING SETS (" + Joined(written, ", ") + ')';
  }
  return written.empty() ? "" : NewLine() + "GROUP BY " + Joined(written, ", ");
}

// ---------------------------------------------------------------------------------------------------------------------
// Grouping sets where there are none

/// One query for each set, in which the columns that are not in it are null.
/// Ensures: the rows of all of them, in any order, are those of the grouping sets; then sorted and cut.
std::string SqlWriter::ExpandedGroupingSets(const RqList& list, const Names& names) {
  const bool bEnclosed = list.IsDistinct() || HasOwnEnd(list);
  const RqGroupBy& groupBy = *list.GetGroupBy();
  Require(SUFeaturesTable::kFeature_UnionAll, &groupBy);
  if (bEnclosed) Require(SUFeaturesTable::kFeature_DerivedTables, &groupBy);
  std::vector<int> visible = VisibleColumns(list);
  if (!names.empty() && names.size() < visible.size()) visible.resize(names.size());
  std::vector<int> columns = visible;
  if (bEnclosed) {
    columns.clear();
    for (int i = 0; i < list.GetProjection()->GetNumColumns(); ++i) columns.push_back(i);
  }
  std::string sets;
  {
    const ValueScope indent(m_indent, m_indent + (bEnclosed ? 4 : 0));
    Names branchNames = bEnclosed ? ColumnNames(list) : names;
    for (const std::int32_t set : groupBy.GetGroupingSet()) {
      if (!sets.empty()) sets += NewLine() + "UNION ALL" + NewLine();
      sets += GroupingSet(list, set, columns, branchNames);
    }
  }
  if (!bEnclosed) return sets;
  std::vector<std::string> items;
  for (std::size_t i = 0; i < visible.size(); ++i) {
    const std::string name = m_target.Quote(ColumnNames(list)[static_cast<std::size_t>(visible[i])]);
    const std::string alias = names.empty() ? name : m_target.Quote(names[i]);
    items.push_back(name == alias ? "G." + name : "G." + name + " AS " + alias);
  }
  std::string text = (list.IsDistinct() ? "SELECT DISTINCT " : "SELECT ") + Joined(items, ", ");
  text += NewLine() + "FROM " + EnclosedText(sets) + " AS G";
  if (const RqOrderBy* const pOrderBy = list.GetOrderBy()) {
    Names keys;
    for (int i = 0; i < pOrderBy->GetNumSortSpecs(); ++i) {
      const RqSortSpec& spec = *pOrderBy->GetIthSortSpec(i);
      const int index = list.GetProjection()->FindColumnIndex(spec.GetColumnNumber());
      keys.push_back(Directed("G." + m_target.Quote(ColumnNames(list).at(static_cast<std::size_t>(index))), spec));
    }
    if (!keys.empty()) text += NewLine() + "ORDER BY " + Joined(keys, ", ");
  }
  return text + LimitClause(list);
}

std::string SqlWriter::GroupingSet(const RqList& list, std::int32_t set, const std::vector<int>& columns,
                                   const Names& names) {
  const RqGroupBy& groupBy = *list.GetGroupBy();
  std::vector<const RqExpr*> nulls;
  std::vector<const RqExpr*> kept;
  for (int i = 0; i < groupBy.GetNumColumns(); ++i) {
    const bool bInSet = !(set >> (groupBy.GetNumColumns() - 1 - i) & 1);
    (bInSet ? kept : nulls).push_back(groupBy.GetIthColumn(i));
  }
  const bool bAllRows = kept.empty();
  const ValueScope nullScope(m_nulls, std::move(nulls));
  const ValueScope keptScope(m_kept, std::move(kept));
  // DISTINCT is for all sets together.
  std::string select = SelectClause(list, columns, names);
  if (list.IsDistinct()) select.replace(0, std::string_view("SELECT DISTINCT").size(), "SELECT");
  const RqHaving* const pHaving = list.GetHaving();
  if (!bAllRows || HasAggregates(list.GetProjection()) || HasAggregates(pHaving)) return select + RowsClauses(list);
  // Without aggregates the group of all rows, which is there without rows too, needs one to come into being.
  const PlaceScope place(*this, "GROUP BY");
  std::string rows;
  {
    const ValueScope indent(m_indent, m_indent + 4);
    std::vector<std::string> conjuncts;
    rows = FromLines(list, conjuncts);
    if (const RqDetailFilter* const pFilter = list.GetDetailFilter(); pFilter && pFilter->GetCond()) {
      const ValueScope noNulls(m_nulls, {});
      const bool bAlone = conjuncts.empty();
      for (std::string& conjunct : Conjuncts(*pFilter->GetCond(), bAlone)) conjuncts.push_back(std::move(conjunct));
    }
    rows = "SELECT count(*)" + rows + FilterLines("WHERE", conjuncts);
  }
  select += NewLine() + "FROM " + EnclosedText(rows) + " AS R";
  if (pHaving && pHaving->GetCond()) select += FilterLines("WHERE", Conjuncts(*pHaving->GetCond(), true));
  return select;
}

// ---------------------------------------------------------------------------------------------------------------------
// The end of a list

std::string SqlWriter::OrderByClause(const RqList& list, const std::vector<int>& columns, const Names& names) {
  const RqOrderBy* const pOrderBy = list.GetOrderBy();
  if (!pOrderBy) return {};
  const PlaceScope place(*this, "ORDER BY");
  Names keys;
  for (int i = 0; i < pOrderBy->GetNumSortSpecs(); ++i) {
    const RqSortSpec& spec = *pOrderBy->GetIthSortSpec(i);
    // What has one value in all rows sorts nothing, and a number would be taken for a position.
    if (!spec.IsConstantColumn()) keys.push_back(SortKey(list, spec, columns, names));
  }
  if (keys.empty()) return {};
  Require(SUFeaturesTable::kFeature_OrderBy, pOrderBy);
  if (m_depth > 1 && !m_target.Can(SUFeaturesTable::kFeature_NestedOrderBy)) {
    if (list.GetRowNumLimit() == 0 && list.GetRowNumOffset() == 0) return {};
    Require(SUFeaturesTable::kFeature_NestedOrderBy, pOrderBy);
  }
  RequireAtMost(SUFeaturesTable::kFeature_MaxColumnsInOrderBy, keys.size(), pOrderBy);
  return NewLine() + "ORDER BY " + Joined(keys, ", ");
}

/// A selected column by its alias, or by its position where there is no alias or more than one column has it.
std::string SqlWriter::SortKey(const RqList& list, const RqSortSpec& spec, const std::vector<int>& columns,
                               const Names& names) {
  const RqProjection& projection = *list.GetProjection();
  const int index = projection.FindColumnIndex(spec.GetColumnNumber());
  if (index < 0 || index >= projection.GetNumColumns()) Refuse("a sort by a column that is not there", &spec);
  const RqExpr& expr = *projection.GetIthColumn(index)->GetExpr();
  const auto it = std::ranges::find(columns, index);
  const bool bNeedsExpr = spec.GetNullSortDirection() != RqSortSpec::kNoCare &&
                          !m_target.Can(SUFeaturesTable::kFeature_NullsSortDirectionInOrderBy);
  if (it == columns.end() || bNeedsExpr) {
    if (it == columns.end() && m_target.Can(SUFeaturesTable::kFeature_OrderByColumnsInSelect)) {
      Refuse("a sort by what is not selected", &expr);
    }
    if (!expr.IsColumnReference()) Require(SUFeaturesTable::kFeature_ExpressionsInOrderBy, &expr);
    const ValueScope indent(m_indent, m_indent + 2);
    return Directed(Argument(expr), spec);
  }
  const auto place = static_cast<std::size_t>(it - columns.begin());
  const std::string position = std::to_string(place + 1);
  if (names.empty() || std::ranges::count(names, names[place]) > 1) return Directed(position, spec);
  // A column that has its own name has no alias, and other tables may have one of that name.
  const std::string alias = m_target.Quote(names[place]);
  const std::string text = expr.IsColumnReference() ? Argument(expr) : std::string();
  return Directed(text.ends_with('.' + alias) ? text : alias, spec);
}

std::string SqlWriter::Directed(const std::string& key, const RqSortSpec& spec) const {
  const std::string text = spec.GetSortDirection() == RqSortSpec::kDesc ? key + " DESC" : key;
  if (spec.GetNullSortDirection() == RqSortSpec::kNoCare) return text;
  const bool bFirst = spec.GetNullSortDirection() == RqSortSpec::kFirst;
  if (m_target.Can(SUFeaturesTable::kFeature_NullsSortDirectionInOrderBy)) {
    return text + (bFirst ? " NULLS FIRST" : " NULLS LAST");
  }
  Require(SUFeaturesTable::kFeature_CaseIf, &spec);
  return "CASE WHEN " + key + " IS NULL THEN " + (bFirst ? "0 ELSE 1" : "1 ELSE 0") + " END, " + text;
}

std::string SqlWriter::LimitClause(const RqAbstractList& list) {
  const PlaceScope place(*this, "LIMIT");
  std::string text;
  if (list.GetRowNumLimit() != 0) {
    Require(SUFeaturesTable::kFeature_RowNumLimit, nullptr);
    text += NewLine() + "LIMIT " + std::to_string(list.GetRowNumLimit());
  }
  if (list.GetRowNumOffset() != 0) {
    Require(SUFeaturesTable::kFeature_RowNumOffset, nullptr);
    if (text.empty() && m_target.IsSqlite()) text += NewLine() + "LIMIT -1";
    text += (text.empty() ? NewLine() : " ") + "OFFSET " + std::to_string(list.GetRowNumOffset());
  }
  return text;
}

// ---------------------------------------------------------------------------------------------------------------------
// Set operators

std::string SqlWriter::SetOperator(const RqAbstractList& list, const Names& names) {
  using F = SUFeaturesTable;
  const PlaceScope place(*this, "a set operator");
  if (list.IsRqUnion()) {
    const auto& setOperator = static_cast<const RqUnion&>(list);
    const bool bAll = setOperator.IsUnionAll();
    Require(bAll ? F::kFeature_UnionAll : F::kFeature_Union, nullptr);
    return Branches(setOperator, names, bAll ? "UNION ALL" : "UNION");
  }
  const bool bIntersect = list.IsRqIntersect();
  const bool bAll = bIntersect ? static_cast<const RqIntersect&>(list).IsIntersectAll()
                               : static_cast<const RqExcept&>(list).IsExceptAll();
  const bool bCanAll = m_target.Can(bIntersect ? F::kFeature_IntersectAll : F::kFeature_ExceptAll);
  if (!bAll) Require(bIntersect ? F::kFeature_Intersect : F::kFeature_Except, nullptr);
  std::string words = bIntersect ? "INTERSECT" : "EXCEPT";
  if (bAll && !bCanAll) return NumberedBranches(list, names, words);
  if (bAll) words += " ALL";
  return bIntersect ? Branches(static_cast<const RqIntersect&>(list), names, words)
                    : Branches(static_cast<const RqExcept&>(list), names, words);
}

/// The list as a branch: enclosed if its end, or another operator, would be taken for this one's.
std::string SqlWriter::Branch(const RqAbstractList& list, const Names& names) {
  const bool bOperator = list.IsRqUnion() || list.IsRqIntersect() || list.IsRqExcept();
  const bool bExpanded = HasGroupingSets(list) && !m_target.Can(SUFeaturesTable::kFeature_GroupByGroupingSets);
  if (!bOperator && !bExpanded && !HasOwnEnd(list)) return ListText(list, names);
  const std::string text = Enclosed(list, names);
  // A branch in brackets is none to SQLite.
  return m_target.IsSqlite() ? "SELECT *" + NewLine() + "FROM " + text : text;
}

/// Whether a set operator can be the first branch of another without brackets: they bind to the left, and INTERSECT
/// more tightly than the others but in SQLite.
bool SqlWriter::IsFlatFirstBranch(const RqAbstractList& branch, const RqAbstractList& list) const {
  if (HasOwnEnd(branch) || !(branch.IsRqUnion() || branch.IsRqIntersect() || branch.IsRqExcept())) return false;
  return m_target.IsSqlite() || branch.IsRqIntersect() || !list.IsRqIntersect();
}

template <class Operator>
std::string SqlWriter::Branches(const Operator& list, const Names& names, const std::string& words) {
  return FirstBranches(list, list.GetNumLists(), names, words) + LimitClause(list);
}

/// As many branches, from the first one on. What is too long for one chain begins with a query of its own.
template <class Operator>
std::string SqlWriter::FirstBranches(const Operator& list, int count, const Names& names, const std::string& words) {
  const int begin = m_target.IsSqlite() && count > kMaxBranches ? count - kMaxBranches : 0;
  std::string text;
  if (begin > 0) {
    KXThread::LowStackCheck(0);
    const ValueScope depth(m_depth, m_depth + 1);
    RequireAtMost(SUFeaturesTable::kFeature_MaxNestedLevel, m_depth - 1, &list);
    const ValueScope indent(m_indent, m_indent + 4);
    text = FirstBranches(list, begin, names, words);
  }
  if (begin > 0) text = "SELECT *" + NewLine() + "FROM " + EnclosedText(text);
  for (int i = begin; i < count; ++i) {
    if (i > 0) text += NewLine() + words + NewLine();
    const RqAbstractList& branch = *list.GetIthList(i);
    const bool bFlat = i == 0 && IsFlatFirstBranch(branch, list);
    text += bFlat ? ListText(branch, names) : Branch(branch, i == 0 ? names : Names());
  }
  return text;
}

/// INTERSECT ALL and EXCEPT ALL where there are none: equal rows of a branch are numbered, and so told apart.
/// Law: a - b - c = a - (b + c), where + keeps all rows.
std::string SqlWriter::NumberedBranches(const RqAbstractList& list, const Names& names, const std::string& words) {
  using F = SUFeaturesTable;
  if (!m_target.Can(F::kFeature_RowNum) ||
      !m_target.Can(list.IsRqIntersect() ? F::kFeature_Intersect : F::kFeature_Except)) {
    Refuse(SqlTarget::NameOf(list.IsRqIntersect() ? F::kFeature_IntersectAll : F::kFeature_ExceptAll), &list);
  }
  const Names columns = VisibleNames(list);
  std::vector<std::string> items;
  std::vector<std::string> quoted;
  std::string number = "row_no";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    quoted.push_back(m_target.Quote(columns[i]));
    const std::string alias = names.empty() ? quoted[i] : m_target.Quote(names[i]);
    items.push_back(alias == quoted[i] ? alias : quoted[i] + " AS " + alias);
    if (columns[i].starts_with(number)) number = columns[i] + '_';
  }
  std::string rows;
  {
    const ValueScope indent(m_indent, m_indent + 4);
    const std::string numbered = "SELECT *, row_number() OVER (PARTITION BY " + Joined(quoted, ", ") + ") AS " +
                                 m_target.Quote(number) + NewLine() + "FROM ";
    const int numLists = list.GetNumChildren();
    for (int i = 0; i < numLists; ++i) {
      const bool bRest = i > 0 && list.IsRqExcept();
      std::string branch;
      {
        const ValueScope inner(m_indent, m_indent + 4);
        branch = Branch(static_cast<const RqAbstractList&>(*list.GetIthChild(i)), columns);
        while (bRest && ++i < numLists) {
          branch += NewLine() + "UNION ALL" + NewLine() +
                    Branch(static_cast<const RqAbstractList&>(*list.GetIthChild(i)), {});
        }
      }
      if (!rows.empty()) rows += NewLine() + words + NewLine();
      rows += numbered + EnclosedText(branch) + " AS B";
    }
  }
  return "SELECT " + Joined(items, ", ") + NewLine() + "FROM " + EnclosedText(rows) + " AS S" + LimitClause(list);
}
