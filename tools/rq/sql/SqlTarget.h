#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Host/RpObjects.h"
#include "Host/SUFeaturesTable.h"
#include "HostMemory/MemoryGateway.h"

/// What a database cannot do of a request: the feature or kind of node, and the place that needs it.
class SqlWriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The database that SQL is written for: how it spells things, and by its features what it can do.
class SqlTarget {
 public:
  /// kStandard stands for every kind of target that has no spelling of its own here.
  enum Dialect { kSqlite, kPostgresql, kDuckdb, kStandard };
  using FeatureId = SUFeaturesTable::FeatureId;

  /// Both are lent.
  SqlTarget(RefADatabase database, MemoryGateway& gateway);

  MemoryGateway& GetGateway() const { return m_gateway; }
  Dialect GetDialect() const { return m_dialect; }
  bool IsSqlite() const { return m_dialect == kSqlite; }
  std::string GetName() const;

  bool Can(FeatureId id) const;
  std::uint32_t GetLimit(FeatureId id) const;
  /// "LEFT_OUTER_JOIN"
  static std::string NameOf(FeatureId id);

  /// A name as the dialect needs it: bare where it is a plain word that is no word of SQL, else in quotes.
  std::string Quote(std::string_view name) const;
  /// The table as the database has it: an alias of the model goes by its table's name. In front stands the schema,
  /// which tables of SQLite do not have.
  std::string GetTableName(const VoidID& tableID) const;
  /// Its name alone, without quotes.
  std::string GetBareTableName(const VoidID& tableID) const;

 private:
  RefATable FindBaseTable(const VoidID& tableID) const;

  RefADatabase m_database;
  MemoryGateway& m_gateway;
  Dialect m_dialect;
  std::string m_quote;
};
