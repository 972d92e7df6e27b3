#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/RepositoryNames.h"
#include "rq/run/SqliteDatabase.h"
#include "rq/sql/QueryBuilder.h"
#include "rq/sql/SqlParser.h"
#include "rq/sql/SqlTarget.h"

/// A query whose rows are known.
struct KnownQuery {
  std::string m_text;
  std::string m_reference;      ///< What SQLite says to this is what it must say to each rewriting.
  bool m_bOrdered = false;      ///< The order counts.
  std::vector<bool> m_inexact;  ///< By column, whether its last digits do not count; none that is not there.
  std::vector<SqliteValue> m_parameters;
};

/// Empty if both have the same rows; else which one is the first that differs.
std::string FirstDifference(SqliteRows expected, SqliteRows actual, const KnownQuery& query);

/// Holds rewritings of queries against the rows that SQLite gives for the queries.
class Differential {
 public:
  /// Over the built-in model and, behind it, the model of a file if one is named.
  explicit Differential(const std::string& modelPath = {});

  SqliteDatabase& GetDatabase() { return m_database; }
  MemoryGateway& GetGateway() { return m_gateway; }

  BuiltList Build(const std::string& text, QueryObserver* pObserver = nullptr);
  std::string Write(const BuiltList& built);
  /// Runs all rewritings but splits and gives what the reference says. Faults are failures of the running test.
  SqliteRows CheckRewritings(const KnownQuery& query);
  /// Splits the outermost block at each column of its tables, and at pairs of them. False if it cannot be split, which
  /// is a failure unless it may be so.
  bool CheckSplits(const KnownQuery& query, const SqliteRows& expected, bool bMayNotSplit);
  bool CheckSplit(const KnownQuery& query, const SqliteRows& expected, const std::string& grain);
  /// Writes the request and runs it. Any error is a failure, with what SQL was written.
  void CheckRequest(const KnownQuery& query, const SqliteRows& expected, const std::string& rewriting,
                    const BuiltList& built);

  /// How often each rewriting was compared, and how often each reason was a refusal.
  const std::map<std::string, int>& GetCounts() const { return m_counts; }

 private:
  MemoryGateway m_gateway;
  RepositoryNames m_names;
  SqlTarget m_target;
  SqliteDatabase m_database;
  std::map<std::string, int> m_counts;
  // The query that was built last, which is often the next one too.
  std::string m_text;
  std::unique_ptr<SqlQuery> m_parsed;
};
