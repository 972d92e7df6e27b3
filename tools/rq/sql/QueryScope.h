#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"
#include "rq/sql/BlockAggregates.h"
#include "rq/sql/SqlScope.h"

class QueryBuilder;

/// A table that the columns of a block are resolved against, and what its columns are called.
class TableSource {
 public:
  /// A table of the repository: physical, with a number, or logical. Without an alias it goes by its own name, with or
  /// without those of its containers.
  TableSource(MemoryGateway& gateway, const RepositoryNames& names, const VoidID& tableID, int number,
              const std::string& alias);
  /// A derived table; its select list is lent and names gives the columns their names. An alias is not needed.
  TableSource(int number, const std::string& alias, RqProjection& projection, std::vector<std::string> names);

  /// 0 for a logical table.
  int GetNumber() const { return m_number; }
  const VoidID& GetTableID() const { return m_tableID; }
  bool IsSameLogicalTable(const TableSource& other) const {
    return !m_tableID.IsNullID() && m_number == 0 && other.m_number == 0 && other.m_tableID == m_tableID;
  }
  bool IsCalled(const std::vector<std::string>& qualifier) const;
  const std::string& GetName() const { return m_name; }
  std::size_t GetNumColumns() const { return m_columnNames.size(); }
  const std::string& GetColumnName(std::size_t i) const { return m_columnNames[i]; }
  OwnedRqExprPtr MakeColumn(std::size_t i) const;
  /// Gives the first columns other names. False if there are not so many.
  bool RenameColumns(const std::vector<std::string>& names);

 private:
  MemoryGateway* m_pGateway = nullptr;
  VoidID m_tableID;
  int m_number;
  std::string m_name;
  std::vector<std::string> m_path;  ///< Of a table of the repository without an alias, in lower case.
  RqProjection* m_pProjection = nullptr;
  std::vector<std::string> m_columnNames;
  VoidIDVector m_columnIDs;
};

/// A column of a source.
struct SourceColumn {
  std::size_t m_source;
  std::size_t m_column;
};

/// What a name without a table means: a column or, of the columns that USING makes one, the first that is not null.
struct NamedColumn {
  std::string m_name;  ///< Empty for a column without a name.
  std::vector<SourceColumn> m_values;
};
using NamedColumns = std::vector<NamedColumn>;
std::vector<std::string_view> NamesOf(const NamedColumns& columns);

/// The indexes of the names that are the sought one; if there is none, of those that differ from it in letter case
/// alone.
std::vector<std::size_t> FindNames(const std::vector<std::string_view>& names, std::string_view sought);

/// The names of one block: those of its tables, and behind them those of the blocks around it.
class QueryScope final : public SqlScope {
 public:
  /// Both are lent; pOuter is null for the outermost block.
  QueryScope(QueryBuilder& builder, QueryScope* pOuter) : m_builder(builder), m_pOuter(pOuter) {}

  OwnedRqExprPtr MakeColumn(const std::vector<std::string>& names, SqlNode node) override;
  Heap<RqExprSubquery> MakeSubquery(SqlNode select, std::size_t nColumns) override;
  ColumnUses GetColumnUses() const override;

  BlockAggregates& GetAggregates() { return m_aggregates; }
  /// Whether names may mean columns of blocks around this one.
  bool HasOuter() const { return m_pOuter != nullptr; }

  /// The node is the place of an error. Raises SqlError for a name that another table has, and for a logical table that
  /// stands there already: attributes name their table alone, so the two could not be told apart.
  void AddSource(TableSource source, SqlNode node);
  std::vector<TableSource>& GetSources() { return m_sources; }
  /// The numbers of the tables that have one.
  std::set<int> GetNumbers() const;
  /// All columns of a source.
  NamedColumns GetColumnsOf(std::size_t source) const;

  /// What expressions see from now on: the tables from that one on and, without a table in front, those columns.
  void Show(std::size_t firstSource, NamedColumns columns);
  /// What the sign for all columns stands for.
  const NamedColumns& GetColumns() const { return m_columns; }
  OwnedRqExprPtr MakeColumn(const NamedColumn& column) const;
  /// Whether a name without a table means a column of this block, or one of several.
  bool HasColumn(std::string_view name) const;

 private:
  std::vector<SourceColumn> FindColumn(const std::vector<std::string>& names, SqlNode node, bool& bTableFound) const;
  std::vector<SourceColumn> FindUnqualified(const std::string& name, SqlNode node) const;
  void RequireReachable(const QueryScope& owner, const SourceColumn& column, SqlNode node) const;
  [[noreturn]] void RaiseNoColumn(const std::vector<std::string>& names, SqlNode node, bool bTableFound) const;

  QueryBuilder& m_builder;
  QueryScope* m_pOuter;
  std::vector<TableSource> m_sources;
  NamedColumns m_columns;
  std::size_t m_firstVisible = 0;
  mutable std::size_t m_numUses = 0;  ///< Of columns of the tables here.
  BlockAggregates m_aggregates;
};
