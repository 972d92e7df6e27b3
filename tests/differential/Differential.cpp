#include "differential/Differential.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "HostMemory/ModelReader.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"
#include "rq/rewrite/Grain.h"
#include "rq/rewrite/RewriteRefusal.h"
#include "rq/rewrite/Rewrites.h"
#include "rq/rewrite/SplitBlock.h"
#include "rq/run/RowWriter.h"
#include "rq/run/RunDatabase.h"
#include "rq/sql/SqlParser.h"
#include "rq/sql/SqlWriter.h"

namespace {

/// Folds all joins of every block.
class Collapser final : public QueryObserver {
 public:
  explicit Collapser(MemoryGateway& gateway) : m_gateway(gateway) {}

  void OnBlock(RqList& list) override {
    RqJoinSpec* const pJoinSpec = list.GetJoinSpec();
    if (!pJoinSpec) return;
    std::vector<RqJoinNode*> nodes;
    for (int i = 0; i < pJoinSpec->GetNumTableReferences(); ++i) {
      nodes.push_back(static_cast<RqJoinNode*>(pJoinSpec->ReleaseIthChild(i)));
    }
    OwnedRqExprCondPtr residual;
    list.SetJoinSpec(RqJoinSpec::CompileLinkGraph(nodes, residual, &m_gateway, false));
    if (residual) list.ConcatenateToDetailFilter(residual.Release());
  }

 private:
  MemoryGateway& m_gateway;
};

/// The columns of the tables of the outermost block, as texts.
class ColumnLister final : public QueryObserver {
 public:
  void OnBlock(RqList&) override {}
  void OnScope(QueryScope& scope) override {
    m_columns.clear();
    for (const TableSource& source : scope.GetSources()) {
      for (std::size_t i = 0; i < source.GetNumColumns(); ++i) {
        m_columns.push_back(source.GetName() + '.' + source.GetColumnName(i));
      }
    }
  }
  std::vector<std::string> m_columns;
};

std::optional<double> NumberOf(const SqliteValue& value) {
  if (const auto* const pInteger = std::get_if<std::int64_t>(&value)) return static_cast<double>(*pInteger);
  if (const auto* const pReal = std::get_if<double>(&value)) return *pReal;
  return {};
}

bool IsInexact(const KnownQuery& query, std::size_t column) {
  return column < query.m_inexact.size() && query.m_inexact[column];
}

/// An integer and a real are the same if they are equal.
bool IsSame(const SqliteValue& left, const SqliteValue& right, bool bInexact) {
  const std::optional<double> number = NumberOf(left);
  const std::optional<double> other = NumberOf(right);
  if (!number || !other) return left == right;
  if (!bInexact) return *number == *other;
  return std::abs(*number - *other) <= 1e-9 * std::max({1.0, std::abs(*number), std::abs(*other)});
}

/// Nulls, numbers, texts; what is inexact counts last.
void Sort(SqliteRows& rows, const KnownQuery& query) {
  const auto less = [](const SqliteValue& left, const SqliteValue& right) {
    const std::optional<double> number = NumberOf(left);
    const std::optional<double> other = NumberOf(right);
    return number && other ? *number < *other : left < right;
  };
  std::ranges::sort(rows.m_rows, [&](const SqliteRow& left, const SqliteRow& right) {
    for (const bool bInexact : {false, true}) {
      for (std::size_t i = 0; i < left.size(); ++i) {
        if (IsInexact(query, i) != bInexact) continue;
        if (less(left[i], right[i]) || less(right[i], left[i])) return less(left[i], right[i]);
      }
    }
    return false;
  });
}

std::string RowText(const SqliteRow& row) {
  std::string text;
  for (const SqliteValue& value : row) {
    const bool bNull = std::holds_alternative<std::monostate>(value);
    text += (text.empty() ? "(" : ", ") + (bNull ? "NULL" : ValueText(value));
  }
  return text + ')';
}

MemoryGateway& ReadModels(const std::string& path, MemoryGateway& gateway) {
  ModelReader::ReadDefault(gateway);
  if (!path.empty()) ModelReader::ReadFile(path, gateway);
  return gateway;
}

}  // namespace

std::string FirstDifference(SqliteRows expected, SqliteRows actual, const KnownQuery& query) {
  if (expected.m_columns.size() != actual.m_columns.size()) {
    return std::to_string(expected.m_columns.size()) + " columns are " + std::to_string(actual.m_columns.size());
  }
  if (!query.m_bOrdered) {
    Sort(expected, query);
    Sort(actual, query);
  }
  for (std::size_t row = 0; row < std::max(expected.m_rows.size(), actual.m_rows.size()); ++row) {
    const bool bBoth = row < expected.m_rows.size() && row < actual.m_rows.size();
    bool bSame = bBoth;
    for (std::size_t i = 0; bSame && i < expected.m_columns.size(); ++i) {
      bSame = IsSame(expected.m_rows[row][i], actual.m_rows[row][i], IsInexact(query, i));
    }
    if (bSame) continue;
    const auto textOf = [row](const SqliteRows& rows) {
      return (row < rows.m_rows.size() ? RowText(rows.m_rows[row]) : "none") + " of " +
             std::to_string(rows.m_rows.size());
    };
    return "row " + std::to_string(row + 1) + ", expected: " + textOf(expected) + ", actual: " + textOf(actual);
  }
  return {};
}

Differential::Differential(const std::string& modelPath)
    : m_names(ReadModels(modelPath, m_gateway)),
      m_target(MakeRunDatabase(m_gateway), m_gateway),
      m_database(":memory:", SqliteDatabase::Access::kReadWrite) {}

BuiltList Differential::Build(const std::string& text, QueryObserver* pObserver) {
  if (!m_parsed || m_text != text) {
    m_parsed.reset();
    m_text = text;
    m_parsed = std::make_unique<SqlQuery>(m_text);
  }
  return QueryBuilder(m_text, m_gateway, m_names, pObserver).Build(m_parsed->GetSelect());
}

std::string Differential::Write(const BuiltList& built) {
  return SqlWriter(m_target).Write(*built.m_list, built.m_names);
}

void Differential::CheckRequest(const KnownQuery& query, const SqliteRows& expected, const std::string& rewriting,
                                const BuiltList& built) {
  std::string sql = "(none)";
  std::string fault;
  try {
    sql = Write(built);
    fault = FirstDifference(expected, m_database.Query(sql, query.m_parameters), query);
  } catch (const std::exception& error) {
    fault = error.what();
  }
  ++m_counts[rewriting.substr(0, rewriting.find(' '))];
  EXPECT_EQ(fault, "") << rewriting << " of\n"
                       << query.m_text << "\nas\n"
                       << sql << "\nexpected of\n"
                       << query.m_reference;
}

SqliteRows Differential::CheckRewritings(const KnownQuery& query) {
  const SqliteRows expected = m_database.Query(query.m_reference, query.m_parameters);
  CheckRequest(query, expected, "built", Build(query.m_text));
  for (const char* const rewriting : {"copy", "bytes", "cnf", "dnf"}) {
    BuiltList built = Build(query.m_text);
    built.m_list = ApplyRewrite(rewriting, std::move(built.m_list), m_gateway);
    CheckRequest(query, expected, rewriting, built);
  }
  Collapser collapser(m_gateway);
  CheckRequest(query, expected, "collapsed", Build(query.m_text, &collapser));
  return expected;
}

bool Differential::CheckSplit(const KnownQuery& query, const SqliteRows& expected, const std::string& grain) {
  GrainReader reader(grain);
  BuiltList built = Build(query.m_text, &reader);
  try {
    if (!built.m_list->IsRqList()) throw RewriteRefusal("the query is no single block");
    SplitBlock(static_cast<RqList&>(*built.m_list), reader.Take("the grain"), NextTableNumber(*built.m_list),
               &m_gateway);
  } catch (const RewriteRefusal& refusal) {
    const std::string reason = refusal.what();
    const std::size_t name = reason.find(" cannot be split: ");
    ++m_counts["not split: " + (name == reason.npos ? reason : reason.substr(name + 18))];
    return false;
  }
  EXPECT_EQ(PlanChecker::CheckPlan(&m_gateway, *built.m_list), 0) << "split at " << grain << ":\n" << query.m_text;
  CheckRequest(query, expected, "split at " + grain, built);
  return true;
}

bool Differential::CheckSplits(const KnownQuery& query, const SqliteRows& expected, bool bMayNotSplit) {
  ColumnLister lister;
  static_cast<void>(Build(query.m_text, &lister));
  std::vector<std::string> grains = lister.m_columns;
  const std::size_t numColumns = grains.size();
  for (std::size_t i = 0; i + 1 < numColumns; i += 4)
    grains.push_back(grains[i] + ", " + grains[numColumns - 1 - i / 2]);
  for (const std::string& grain : grains) {
    if (CheckSplit(query, expected, grain)) continue;
    EXPECT_TRUE(bMayNotSplit) << "not split at " << grain << ":\n" << query.m_text;
    return false;
  }
  return true;
}
