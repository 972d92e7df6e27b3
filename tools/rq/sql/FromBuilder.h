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
/// link only where folding the links in any order that starts with the first table keeps its meaning; other joins stand
/// as nested references inside a node.
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
  /// A FROM item as the text has it: a table, or a join of two items.
  struct JoinTree {
    Heap<RqAbstractTable> m_table;
    SqlTableRef::JoinType m_type = SqlTableRef::kInnerJoin;
    std::unique_ptr<JoinTree> m_left;
    std::unique_ptr<JoinTree> m_right;
    OwnedRqExprCondPtr m_cond;
    std::set<int> m_tables;  ///< The numbers of the tables in it.

    bool IsTable() const { return m_left == nullptr; }
  };
  using JoinTreePtr = std::unique_ptr<JoinTree>;
  /// The tables of a node of the graph to be.
  using Unit = std::set<int>;

  JoinTreePtr BuildItem(SqlNode node);
  JoinTreePtr BuildJoin(SqlNode node);
  OwnedRqExprCondPtr BuildOn(SqlNode node, std::size_t begin, std::size_t middle);
  OwnedRqExprCondPtr BuildUsing(SqlNode node, const std::vector<std::string>& names, std::size_t begin,
                                std::size_t middle);
  std::vector<std::string> FindCommonNames(std::size_t begin, std::size_t middle) const;

  bool IsLink(const JoinTree& join, bool bFirst) const;
  std::vector<Unit> GetUnits(const JoinTree& tree, bool bFirst) const;
  void Flatten(JoinTree& tree, bool bFirst);
  void AddNode(Heap<RqTableReference> reference, const Unit& tables);
  void AddInnerLinks(OwnedRqExprCondPtr cond);
  void AddLink(OwnedRqExprCondPtr cond, SqlTableRef::JoinType type);
  std::set<RqJoinNode*> GetNodes(const RqExpr& expr) const;
  Heap<RqTableReference> MakeReference(JoinTree& tree) const;
  Heap<RqAbstractTable> MakeOperand(JoinTree& tree) const;

  QueryBuilder& m_builder;
  QueryScope& m_scope;
  QueryScope* m_pOuter;
  OwnedRqPtrVector<std::vector<RqJoinNode*>> m_nodes;
  std::map<int, RqJoinNode*> m_nodeOfTable;
  std::set<RqJoinNode*> m_nullable;  ///< Nodes whose columns an outer join may fill with nulls.
  OwnedRqExprCondPtr m_residual;
};
