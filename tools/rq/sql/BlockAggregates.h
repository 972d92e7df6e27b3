#pragma once

#include <cstddef>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"
#include "rq/sql/SqlTree.h"

/// As RqEquivalence, and what ranks rows must rank them alike: equivalence itself passes over directions, density and
/// the place of nulls.
class ExactEquivalence : public RqEquivalence {
 public:
  bool operator()(const RqExpr& lhs, const RqExpr& rhs) const override;
};

/// The order of a running or moving aggregate.
struct AggregateOrder {
  RqExprSortDependentAggr* m_pAggr = nullptr;
  SqlNode m_node;
  /// Whether rows that the order does not tell apart are taken together, so that there must be none.
  bool m_bWithPeers = false;
  /// Whether it is that of the query.
  bool m_bOfQuery = false;
  std::vector<OwnedRqExprPtr> m_columns;
  std::vector<SqlNode> m_places;
  SortDirectonVector m_directions;
};

/// What a block notes of its aggregates while it is built. Aggregates are lent.
class BlockAggregates {
 public:
  void SetWindowClause(SqlNode windowClause) { m_windowClause = windowClause; }
  SqlNode GetWindowClause() const { return m_windowClause; }

  /// Aggregates of groups make the rows of the block groups, also without a GROUP BY.
  void NoteOfGroup() { ++m_numOfGroup; }
  std::size_t GetNumOfGroup() const { return m_numOfGroup; }
  /// What aggregates over the rows of the block: those of the tables, or their groups.
  void NoteOverBlock(const RqExpr* pAggr) { m_overBlock.insert(pAggr); }
  bool IsOverBlock(const RqExpr* pAggr) const { return m_overBlock.contains(pAggr); }
  /// A window that aggregates no aggregate: what it says is over the rows of the tables.
  void NotePlainWindow(SqlNode node) { m_plainWindows.push_back(node); }
  void NoteOrder(AggregateOrder order) { m_orders.push_back(std::move(order)); }
  void NoteGroupingId(const RqExprGroupingId* pGroupingId, SqlNode node) {
    m_groupingIds.emplace_back(pGroupingId, node);
  }

  /// Gives the aggregates noted since the last time their orders, as columns of the select list, whose last ones may be
  /// hidden: the first numVisible are not. Places gets that of each new column. Those that run along the query wait.
  void PutOrders(RqList& list, std::size_t numVisible, std::vector<SqlNode>& places);
  /// Gives the others the order of the query.
  void PutOrderOfQuery(RqList& list);
  /// The column of the select list that computes exactly the expression, or a new one. New ones get a place.
  RqDerivedColumn* InsertColumn(RqProjection& projection, OwnedRqExprPtr expr, std::vector<SqlNode>& places,
                                SqlNode place);

  /// In a block that groups: raises SqlError for a window over the groups that the tree cannot tell from one over the
  /// rows of the tables, as it aggregates no aggregate.
  void CheckWindowsOverGroups() const;
  /// Raises SqlError for a GROUPING of anything but what is grouped by.
  void CheckGroupingIds(const RqGroupBy* pGroupBy) const;

 private:
  SqlNode m_windowClause;
  std::size_t m_numOfGroup = 0;
  std::set<const RqExpr*> m_overBlock;
  std::vector<SqlNode> m_plainWindows;
  std::vector<AggregateOrder> m_orders;
  std::vector<std::pair<const RqExprGroupingId*, SqlNode>> m_groupingIds;
  std::vector<OwnedRqExprPtr> m_dropped;  ///< What a column computes already; kept, since it may have been noted.
};

/// Which aggregates an expression may hold where it stands.
struct AggregateRules {
  /// Null where there is no query, and so no aggregate.
  BlockAggregates* m_pBlock = nullptr;
  std::string_view m_place;  ///< For messages.
  bool m_bOfGroup = false;
  bool m_bOfRow = false;
};
