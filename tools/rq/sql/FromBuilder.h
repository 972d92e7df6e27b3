#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "rq/sql/QueryBuilder.h"

/// Builds the join graph of a FROM clause.
///
/// Law: the rows of the graph, its residual condition applied to them, are those of the clause. So a join becomes a
/// link only where folding the links in any order that starts with the first table of a part that they connect keeps
/// its meaning; other joins stand as nested references inside a node, and other conditions of inner joins are residual.
class FromBuilder {
 public:
  /// All are lent. The scope gets the tables.
  FromBuilder(QueryBuilder& builder, QueryScope& scope, QueryScope* pOuter)
      : m_builder(builder), m_scope(scope), m_pOuter(pOuter) {}

  /// Null for a query without FROM.
  Heap<RqJoinSpec> Build(SqlNode select);
  /// Conditions of inner joins that became no link; null if there are none. They belong to the filter.
  OwnedRqExprCondPtr ReleaseResidual() { return OwnedRqExprCondPtr(m_residual.Release()); }

 private:
  /// What a node of the graph is to be: a table, or a join that no links can say.
  struct Unit {
    std::set<int> m_tables;
    std::size_t m_part = 0;  ///< Those that links connect have one number, the place of the first of them.
    bool m_bBehind = false;  ///< Whether an outer link leads to it from the first of its part.
    bool m_bClosed = false;  ///< Whether it can have no further links: as the first, it would take them before its own.
  };
  using Units = std::vector<Unit>;

  /// A FROM item as the text has it: a table, or a join of two items.
  struct JoinTree {
    Heap<RqAbstractTable> m_table;
    SqlTableRef::JoinType m_type = SqlTableRef::kInnerJoin;
    std::unique_ptr<JoinTree> m_left;
    std::unique_ptr<JoinTree> m_right;
    OwnedRqExprCondPtr m_cond;
    std::set<int> m_tables;      ///< The numbers of the tables in it.
    NamedColumns m_columns;      ///< What names without a table mean in it.
    Units m_units;               ///< The nodes that Flatten makes of it.
    std::vector<bool> m_linked;  ///< Which conjuncts become links; of an outer join, one element for all.

    bool IsTable() const { return m_left == nullptr; }
    bool IsInner() const { return m_type == SqlTableRef::kInnerJoin; }
    bool IsRight() const { return m_type == SqlTableRef::kRightOuterJoin; }
    bool IsFull() const { return m_type == SqlTableRef::kFullOuterJoin; }
    bool IsFlat() const { return !IsTable() && (IsInner() || !m_linked.empty()); }
  };
  using JoinTreePtr = std::unique_ptr<JoinTree>;

  JoinTreePtr BuildItem(SqlNode node);
  JoinTreePtr BuildJoin(SqlNode node);
  void BuildOn(SqlNode node, JoinTree& join, std::size_t begin);
  void BuildUsing(SqlNode node, JoinTree& join, const std::vector<std::string>& names);

  void Plan(JoinTree& tree) const;
  void PlanInner(JoinTree& join) const;
  void PlanOuter(JoinTree& join) const;
  std::vector<std::size_t> FindTouched(const Units& units, const RqExpr& cond) const;
  static bool MayLink(const Units& units, std::size_t first, std::size_t second);
  static void Link(Units& units, std::size_t first, std::size_t second);
  void Flatten(JoinTree& tree);
  void AddNode(JoinTree& tree);
  void AddInnerLinks(JoinTree& join);
  void AddLink(OwnedRqExprCondPtr cond, SqlTableRef::JoinType type);
  std::set<RqJoinNode*> GetNodes(const RqExpr& expr) const;
  Heap<RqTableReference> MakeReference(JoinTree& tree) const;
  Heap<RqAbstractTable> MakeOperand(JoinTree& tree) const;

  QueryBuilder& m_builder;
  QueryScope& m_scope;
  QueryScope* m_pOuter;
  OwnedRqPtrVector<std::vector<RqJoinNode*>> m_nodes;
  std::map<int, RqJoinNode*> m_nodeOfTable;
  OwnedRqExprCondPtr m_residual;
};
