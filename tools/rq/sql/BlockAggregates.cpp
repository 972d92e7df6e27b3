#include "rq/sql/BlockAggregates.h"

#include <algorithm>

#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

template <class Columns>
bool HasMember(const Columns* pColumns, const RqExpr& expr) {
  const ExactEquivalence equivalence;
  for (int i = 0; pColumns && i < pColumns->GetNumColumns(); ++i) {
    if (equivalence(*pColumns->GetIthColumn(i), expr)) return true;
  }
  return false;
}

/// Whether partition and order tell all rows of the block apart, since its groups have them for their columns.
bool TellsRowsApart(const AggregateOrder& order, const RqGroupBy* pGroupBy) {
  if (!pGroupBy || pGroupBy->IsGroupingSet()) return false;
  const ExactEquivalence equivalence;
  for (int i = 0; i < pGroupBy->GetNumColumns(); ++i) {
    const RqExpr& column = *pGroupBy->GetIthColumn(i);
    const bool bOrdered =
        std::ranges::any_of(order.m_columns, [&](const OwnedRqExprPtr& other) { return equivalence(*other, column); });
    if (!bOrdered && !HasMember(order.m_pAggr->GetControlBreak(), column)) return false;
  }
  return true;
}

}  // namespace

bool ExactEquivalence::operator()(const RqExpr& lhs, const RqExpr& rhs) const {
  if (lhs.GetObjectType() == rhs.GetObjectType()) {
    if (lhs.GetObjectType() == kRqExprAggrRank) {
      const auto& rank = static_cast<const RqExprAggrRank&>(lhs);
      const auto& other = static_cast<const RqExprAggrRank&>(rhs);
      if (rank.GetSortDirections() != other.GetSortDirections() || rank.IsDenseRank() != other.IsDenseRank()) {
        return false;
      }
    } else if (lhs.GetObjectType() == kRqExprAggrRowNum) {
      const auto& number = static_cast<const RqExprAggrRowNum&>(lhs);
      const auto& other = static_cast<const RqExprAggrRowNum&>(rhs);
      if (number.GetSortDirections() != other.GetSortDirections() ||
          number.GetNullsSortOrder() != other.GetNullsSortOrder()) {
        return false;
      }
    }
  }
  return RqEquivalence::operator()(lhs, rhs);
}

RqDerivedColumn* BlockAggregates::InsertColumn(RqProjection& projection, OwnedRqExprPtr expr,
                                               std::vector<SqlNode>& places, SqlNode place) {
  const ExactEquivalence equivalence;
  for (int i = 0; i < projection.GetNumColumns(); ++i) {
    RqDerivedColumn* const pColumn = projection.GetIthColumn(i);
    if (!equivalence(*pColumn->GetExpr(), *expr)) continue;
    m_dropped.push_back(std::move(expr));
    return pColumn;
  }
  auto* const pColumn = new RqDerivedColumn(expr.Release(), RqDerivedColumn::kUnknownColumnNum);
  projection.AddColumn(pColumn);
  places.push_back(place);
  return pColumn;
}

void BlockAggregates::PutOrders(RqList& list, std::size_t numVisible, std::vector<SqlNode>& places) {
  std::vector<AggregateOrder> waiting;
  for (AggregateOrder& order : m_orders) {
    if (order.m_bOfQuery) {
      waiting.push_back(std::move(order));
      continue;
    }
    if (order.m_bWithPeers && !TellsRowsApart(order, list.GetGroupBy())) {
      throw SqlError(PlaceOfNode(order.m_node),
                     "this takes rows of equal order together, which no running aggregate does; write ROWS UNBOUNDED "
                     "PRECEDING");
    }
    RqProjection& projection = *list.GetProjection();
    Int32Vector numbers;
    for (std::size_t i = 0; i < order.m_columns.size(); ++i) {
      RqDerivedColumn* const pColumn =
          InsertColumn(projection, std::move(order.m_columns[i]), places, order.m_places[i]);
      if (list.IsDistinct() && projection.FindColumnIndex(pColumn) >= static_cast<int>(numVisible)) {
        throw SqlError(PlaceOfNode(order.m_places[i]),
                       "in a query with DISTINCT a running aggregate is ordered by what "
                       "the query selects");
      }
      numbers.push_back(pColumn->GetColumnNum());
    }
    order.m_pAggr->SetSortSpec(order.m_directions, numbers);
  }
  m_orders = std::move(waiting);
}

void BlockAggregates::PutOrderOfQuery(RqList& list) {
  const RqOrderBy* const pOrderBy = list.GetOrderBy();
  for (const AggregateOrder& order : m_orders) {
    SortDirectonVector directions;
    Int32Vector numbers;
    for (int i = 0; pOrderBy && i < pOrderBy->GetNumSortSpecs(); ++i) {
      const RqSortSpec& spec = *pOrderBy->GetIthSortSpec(i);
      const RqDerivedColumn* const pColumn = list.GetProjection()->GetMatchingColumn(spec.GetColumnNumber());
      if (FoundNodes(pColumn, [&order](const RqNode& node) { return &node == order.m_pAggr; })) {
        throw SqlError(PlaceOfNode(order.m_node), "the order that this runs along depends on it");
      }
      if (spec.GetNullSortDirection() != RqSortSpec::kNoCare) {
        throw SqlError(
            PlaceOfNode(order.m_node),
            "this runs along the order of the query, and no running aggregate holds its NULLS FIRST or LAST");
      }
      directions.push_back(spec.GetSortDirection());
      numbers.push_back(spec.GetColumnNumber());
    }
    order.m_pAggr->SetSortSpec(directions, numbers);
  }
  m_orders.clear();
}

void BlockAggregates::CheckWindowsOverGroups() const {
  if (m_plainWindows.empty()) return;
  throw SqlError(PlaceOfNode(m_plainWindows.front()),
                 "a window over groups takes an aggregate, as SUM(COUNT(*)) OVER (...) does");
}

void BlockAggregates::CheckGroupingIds(const RqGroupBy* pGroupBy) const {
  for (const auto& [pGroupingId, node] : m_groupingIds) {
    const auto& columns =
        static_cast<const RqExprColumnListOrdered&>(*pGroupingId->GetIthOperand(RqExprGroupingId::kColumnListOperand));
    for (int i = 0; i < columns.GetNumColumns(); ++i) {
      if (!HasMember(pGroupBy, *columns.GetIthColumn(i))) {
        throw SqlError(PlaceOfNode(node.Get("args").GetElements().at(static_cast<std::size_t>(i))),
                       "GROUPING takes what is grouped by");
      }
    }
  }
}
