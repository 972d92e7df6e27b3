#include "rq/sql/GroupingSets.h"

#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

GroupingSets::Set Union(GroupingSets::Set set, const GroupingSets::Set& other) {
  set.insert(other.begin(), other.end());
  return set;
}

void RequireFewSets(std::size_t count, SqlNode node) {
  if (count > GroupingSets::kMaxSets) {
    throw SqlError(PlaceOfNode(node),
                   "there are more than " + std::to_string(GroupingSets::kMaxSets) + " grouping sets");
  }
}

}  // namespace

GroupingSets::GroupingSets(SqlNode groupClause, const NumberColumn& numberColumn) : m_numberColumn(numberColumn) {
  for (const SqlNode item : groupClause.GetElements()) {
    m_bPlain &= item.GetKind() != "GroupingSet";
    const std::vector<Set> sets = Expand(item);
    RequireFewSets(m_sets.size() * sets.size(), item);
    std::vector<Set> product;
    for (const Set& set : m_sets) {
      for (const Set& other : sets) product.push_back(Union(set, other));
    }
    m_sets = std::move(product);
  }
}

/// The columns of an element: one, or those of a bracket.
GroupingSets::Set GroupingSets::ColumnsOf(SqlNode item) {
  if (item.GetKind() != "RowExpr") return {m_numberColumn(item)};
  Set columns;
  for (const SqlNode column : item.Get("args").GetElements()) columns.insert(m_numberColumn(column));
  return columns;
}

std::vector<GroupingSets::Set> GroupingSets::Expand(SqlNode item) {
  if (item.GetKind() != "GroupingSet") return {ColumnsOf(item)};
  const std::string_view kind = item.Get("kind").GetText();
  const std::vector<SqlNode> content = item.Get("content").GetElements();
  std::vector<Set> sets;
  if (kind == "GROUPING_SET_EMPTY") return {Set()};
  if (kind == "GROUPING_SET_SETS") {
    for (const SqlNode element : content) {
      for (Set& set : Expand(element)) sets.push_back(std::move(set));
    }
  } else if (kind == "GROUPING_SET_ROLLUP") {
    sets.push_back({});
    for (const SqlNode element : content) sets.push_back(Union(sets.back(), ColumnsOf(element)));
    sets = {sets.rbegin(), sets.rend()};
  } else if (kind == "GROUPING_SET_CUBE") {
    sets.push_back({});
    for (const SqlNode element : content) {
      RequireFewSets(2 * sets.size(), element);
      const Set columns = ColumnsOf(element);
      std::vector<Set> doubled;
      for (const Set& set : sets) {
        doubled.push_back(Union(set, columns));
        doubled.push_back(set);
      }
      sets = std::move(doubled);
    }
  } else {
    RaiseUnsupported(item, "this grouping");
  }
  RequireFewSets(sets.size(), item);
  return sets;
}
