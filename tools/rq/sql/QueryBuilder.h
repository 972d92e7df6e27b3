#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/QueryScope.h"

/// A list of a request and the names of its columns, for which the tree has no place.
struct BuiltList {
  Heap<RqAbstractList> m_list;
  std::vector<std::string> m_names;  ///< Empty for a column that the text does not name.
};

/// Is told of the blocks of a query while they are built.
class QueryObserver {
 public:
  virtual ~QueryObserver() = default;
  /// A block with all its clauses, innermost blocks first, while its joins still stand as links alone. Lent.
  virtual void OnBlock(RqList& list) = 0;
  /// The names of the same block, before OnBlock. Lent.
  virtual void OnScope(QueryScope&) {}
};

/// Builds the request tree of a query as a navigator leaves it for the optimizer: blocks with their clauses, tables as
/// nodes of a join graph and joins as its links.
///
///   tables          a name of a physical table of the model or, if there is none, of a logical one, with any of its
///                   containers in front; each physical and each derived table has a number of its own in the query
///   joins           ON, USING and NATURAL as conditions. Outer joins are folded into table references, and inner ones
///                   stay links, whose conditions stand in table references too; those that join no two tables go to
///                   the filter
///   derived tables  subqueries in FROM and common table expressions; of one that is read more than once the first
///                   reader has the block and the others share it
///   grouping        columns, positions and aliases; ROLLUP, CUBE and GROUPING SETS as the sets that they say
///   order           names, positions and expressions; one that is not selected becomes a hidden column
///   aggregates      in the select list, HAVING and ORDER BY; windows, named ones too, in the select list and ORDER BY
///   set operators   of one kind in a row as one node
///   subqueries      as a value, in IN, EXISTS, ANY and ALL, with columns of the queries around them
///
/// Raises SqlError at the place of anything else, and ErrorMessage when the stack runs low.
class QueryBuilder {
 public:
  /// All are lent; the observer may be null. The tree refers to the gateway's objects by identifier.
  QueryBuilder(std::string_view text, MemoryGateway& gateway, const RepositoryNames& names,
               QueryObserver* pObserver = nullptr);

  /// Where in a block an expression stands.
  enum Clause { kOn, kWhere, kGroupBy, kHaving, kSelect, kOrderBy, kOrderBySetOperator };

  BuiltList Build(SqlNode select) { return BuildList(select, nullptr); }

  // For the parts of the builder.

  /// A list with the names of the scopes around it.
  BuiltList BuildList(SqlNode select, QueryScope* pOuter);
  Heap<RqExprSubquery> BuildSubquery(SqlNode select, QueryScope& outer, std::size_t nColumns);
  /// A table of a FROM clause, which the scope then knows.
  Heap<RqAbstractTable> BuildTable(SqlNode node, QueryScope& scope, QueryScope* pOuter);
  OwnedRqExprCondPtr BuildCondition(SqlNode node, QueryScope& scope, Clause clause);

 private:
  /// A common table expression: its query, and once it has been read the block that its first reader has.
  struct CommonExpr {
    SqlNode m_node;
    SqlNode m_query;
    std::string m_name;
    std::vector<std::string> m_columnNames;
    RqAbstractList* m_pList = nullptr;
    std::vector<std::string> m_names;
  };
  /// A WITH clause, of which a query that stands in it sees what stands before.
  struct WithClause {
    std::vector<CommonExpr> m_exprs;
    std::size_t m_numVisible = 0;
  };
  /// Where a common table expression stands: the WITH clauses around its own one, and those before it.
  struct CommonPlace {
    std::size_t m_clause;
    std::size_t m_index;
  };

  BuiltList BuildSetOperator(SqlNode select, QueryScope* pOuter);
  BuiltList BuildBlock(SqlNode select, QueryScope* pOuter);
  std::vector<SqlNode> BuildSelectList(SqlNode select, QueryScope& scope, RqList& list,
                                       std::vector<std::string>& names);
  void AddAllColumns(SqlNode node, QueryScope& scope, RqList& list, std::vector<std::string>& names);
  void BuildGroupBy(SqlNode select, QueryScope& scope, RqList& list, const std::vector<std::string>& names);
  OwnedRqExprPtr BuildGroupingColumn(SqlNode node, QueryScope& scope, const RqList& list,
                                     const std::vector<std::string>& names);
  void BuildOrderBy(SqlNode select, QueryScope& scope, RqList& list, const std::vector<std::string>& names,
                    std::vector<SqlNode>& places);
  static void CheckGroups(SqlNode select, QueryScope& scope, const RqList& list, const std::vector<SqlNode>& places);
  Heap<RqList> Enclose(BuiltList built, SqlNode select, QueryScope& scope);
  BuiltList WithoutHiddenColumns(SqlNode select, BuiltList built);
  BuiltList OrderSetOperator(SqlNode select, BuiltList built);
  void CompileJoins(RqList& list);
  void SetLimits(SqlNode select, RqAbstractList& list);
  std::uint32_t ReadRowNumber(SqlNode node, const char* clause, std::uint32_t least);
  void OpenCommonExprs(SqlNode withClause);
  void CloseCommonExprs();
  std::optional<CommonPlace> FindCommonExpr(const std::string& name) const;
  BuiltList BuildCommonExpr(const CommonPlace& place);
  Heap<RqAbstractTable> BuildCommonExprTable(const CommonPlace& place, SqlNode node, QueryScope& scope);
  Heap<RqAbstractTable> MakeDerivedTable(BuiltList built, SqlNode node, const std::string& alias, QueryScope& scope);

  OwnedRqExprPtr BuildValue(SqlNode node, QueryScope& scope, Clause clause);

  std::string_view m_text;
  MemoryGateway& m_gateway;
  const RepositoryNames& m_names;
  QueryObserver* m_pObserver;
  SqlContext m_context;
  int m_numTables = 0;
  /// The WITH clauses around the query being built, the innermost last.
  std::vector<WithClause> m_withClauses;
  std::set<std::size_t> m_built;  ///< The places of the common table expressions that have been built.
};
