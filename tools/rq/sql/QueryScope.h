#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/RepositoryNames.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"
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
  bool IsCalled(const std::vector<std::string>& qualifier) const;
  const std::string& GetName() const { return m_name; }
  std::size_t GetNumColumns() const { return m_columnNames.size(); }
  const std::string& GetColumnName(std::size_t i) const { return m_columnNames[i]; }
  OwnedRqExprPtr MakeColumn(std::size_t i) const;
  /// Gives the first columns other names. False if there are not so many.
  bool RenameColumns(const std::vector<std::string>& names);
  /// Appends the columns of that name.
  void FindColumns(std::string_view name, std::vector<std::size_t>& columns) const;

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

/// The names of one block: those of its tables, and behind them those of the blocks around it.
class QueryScope final : public SqlScope {
 public:
  /// Both are lent; pOuter is null for the outermost block.
  QueryScope(QueryBuilder& builder, QueryScope* pOuter) : m_builder(builder), m_pOuter(pOuter) {}

  OwnedRqExprPtr MakeColumn(const std::vector<std::string>& names, SqlNode node) override;
  Heap<RqExprSubquery> MakeSubquery(SqlNode select, std::size_t nColumns) override;

  void AddSource(TableSource source, SqlNode node);
  std::vector<TableSource>& GetSources() { return m_sources; }
  /// While ON conditions are built, only the tables of their join are seen: those from `begin` on.
  void ShowSourcesFrom(std::size_t begin) { m_firstVisible = begin; }

  /// A column of two tables that USING makes one: what it stands for, and the two, which the sign for all columns and
  /// names without a table then pass over. A full join gives the value that is not null.
  struct MergedColumn {
    std::string m_name;
    std::vector<SourceColumn> m_parts;
    bool m_bCoalesced = false;
  };
  void AddMergedColumn(MergedColumn column) { m_merged.push_back(std::move(column)); }
  const std::vector<MergedColumn>& GetMergedColumns() const { return m_merged; }
  OwnedRqExprPtr MakeMergedColumn(const MergedColumn& column) const;
  bool IsMerged(const SourceColumn& column) const;

  /// The columns among sources [begin, end) that a name without a table means, merged ones once.
  std::vector<SourceColumn> FindColumns(std::string_view name, std::size_t begin, std::size_t end) const;

 private:
  OwnedRqExprPtr FindColumn(const std::vector<std::string>& names, SqlNode node, bool& bTableFound);
  OwnedRqExprPtr FindUnqualified(const std::string& name, SqlNode node);
  [[noreturn]] void RaiseNoColumn(const std::vector<std::string>& names, SqlNode node, bool bTableFound) const;

  QueryBuilder& m_builder;
  QueryScope* m_pOuter;
  std::vector<TableSource> m_sources;
  std::vector<MergedColumn> m_merged;
  std::size_t m_firstVisible = 0;
};
