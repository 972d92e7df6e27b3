#include <gtest/gtest.h>
#include <sqlite3.h>

#include <random>
#include <sstream>

#include "RqTestUtil.h"

namespace {

RqRun Implies(std::vector<std::string> arguments, const std::string& input = {}) {
  arguments.insert(arguments.begin(), "implies");
  return RunRq(arguments, input);
}

// ---------------------------------------------------------------------------------------------------------------------
// Answers

TEST(Implies, Answers) {
  for (const TextCase& c : CasesOf("rq/cases/implications.txt")) {
    SCOPED_TRACE(c.m_input);
    const auto [a, b] = c.Split(" ==> ");
    const std::string& expected = c.m_expected;
    const RqRun run = Implies({a, b});
    EXPECT_EQ(run.m_out, expected + "\n");
    EXPECT_EQ(run.m_err, "");
    const bool bImplied = expected.starts_with("implied");
    EXPECT_EQ(run.m_status, bImplied ? 0 : 1);
    const bool bEquivalent = expected.starts_with("implied, equivalent");
    EXPECT_EQ(Implies({"--format", "json", a, b}).m_out, std::string("{\"implied\":") + (bImplied ? "true" : "false") +
                                                             ",\"equivalent\":" + (bEquivalent ? "true" : "false") +
                                                             "}\n");
  }
}

// Nine columns cannot all differ over eight values, and to see that takes longer than the search is given.
TEST(Implies, SearchStops) {
  std::string a;
  for (int i = 0; i < 9; ++i) {
    const std::string column = 'c' + std::to_string(i);
    a += (i ? " AND " : "") + column + " IN (1, 2, 3, 4, 5, 6, 7, 8)";
    for (int j = 0; j < i; ++j) a += " AND " + column + " <> c" + std::to_string(j);
  }
  const RqRun run = Implies({a, "z = 1"});
  EXPECT_EQ(run.m_status, 1);
  EXPECT_TRUE(run.m_out.starts_with("not shown\nno conjunct of A implies: z = 1\nthe search for a row")) << run.m_out;
  EXPECT_NE(run.m_out.find("stopped after 2000"), std::string::npos) << run.m_out;
}

// ---------------------------------------------------------------------------------------------------------------------
// Against another engine

/// The rows over columns a, b, c of small integers and null, and t of texts, in SQLite.
class Engine {
 public:
  Engine() {
    EXPECT_EQ(sqlite3_open(":memory:", &m_pDatabase), SQLITE_OK);
    Count("PRAGMA case_sensitive_like = ON");
    Count(
        "CREATE TABLE numbers AS WITH RECURSIVE n(v) AS (SELECT -2 UNION ALL SELECT v + 1 FROM n WHERE v < 6) "
        "SELECT v FROM n UNION ALL SELECT NULL");
    Count(
        "CREATE TABLE texts AS SELECT NULL AS v UNION ALL SELECT '' UNION ALL SELECT 'a' UNION ALL SELECT 'ab' "
        "UNION ALL SELECT 'b' UNION ALL SELECT 'ba'");
  }
  ~Engine() { sqlite3_close(m_pDatabase); }

  /// The number that a statement gives, 0 if it gives none.
  int Count(const std::string& statement) {
    sqlite3_stmt* pStatement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(m_pDatabase, statement.c_str(), -1, &pStatement, nullptr), SQLITE_OK)
        << sqlite3_errmsg(m_pDatabase) << ": " << statement;
    const int count = sqlite3_step(pStatement) == SQLITE_ROW ? sqlite3_column_int(pStatement, 0) : 0;
    sqlite3_finalize(pStatement);
    return count;
  }

  /// How many rows of those from a source satisfy a and not b.
  int CountCounterexamples(const std::string& a, const std::string& b, const std::string& source) {
    return Count("SELECT count(*) FROM (" + source + ") WHERE (" + a + ") AND NOT coalesce((" + b + "), 0)");
  }

 private:
  sqlite3* m_pDatabase = nullptr;
};

constexpr const char* kAllRows =
    "SELECT x.v AS a, y.v AS b, z.v AS c, w.v AS t FROM numbers x, numbers y, numbers z, texts w";

/// The row in the output of rq as a SELECT; columns that it does not name are null.
std::string SelectOf(const std::string& out) {
  std::string columns;
  std::string named;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("    ")) continue;
    named += line[4];
    columns += (columns.empty() ? "" : ", ") + line.substr(8) + " AS " + line[4];
  }
  for (const char column : std::string("abct")) {
    if (named.find(column) == std::string::npos)
      columns += std::string(columns.empty() ? "" : ", ") + "NULL AS " + column;
  }
  return "SELECT " + columns;
}

std::string RandomSql(std::mt19937& random, int depth) {
  const auto uniform = [&random](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  if (depth > 0 && uniform(0, 2) > 0) {
    const std::string left = RandomSql(random, depth - 1);
    const std::string text = '(' + left + (uniform(0, 1) ? " AND " : " OR ") + RandomSql(random, depth - 1) + ')';
    return uniform(0, 3) ? text : "NOT " + text;
  }
  const std::string column(1, "abc"[uniform(0, 2)]);
  const std::string value = std::to_string(uniform(0, 3));
  static const char* const kTexts[] = {"'a'", "'ab'", "'b'", "''"};
  static const char* const kPatterns[] = {"'a%'", "'_'", "'%b'", "'a_'"};
  static const char* const kOperators[] = {"=", "<>", "<", "<=", ">", ">="};
  const std::string op = std::string(" ") + kOperators[uniform(0, 5)] + ' ';
  switch (uniform(0, 9)) {
    case 0:
      return column + (uniform(0, 1) ? " IS NULL" : " IS NOT NULL");
    case 1:
      return column + (uniform(0, 1) ? "" : " NOT") + " IN (" + value + ", " + std::to_string(uniform(0, 3)) +
             (uniform(0, 3) ? ")" : ", NULL)");
    case 2:
      return column + (uniform(0, 1) ? "" : " NOT") + " BETWEEN " + value + " AND 3";
    case 3:
      return std::string("(a, b)") + (uniform(0, 1) ? "" : " NOT") + " IN (VALUES (1, 2), (" + value + ", 1))";
    case 4:
      return std::string("t") + op + kTexts[uniform(0, 3)];
    case 5:
      return std::string("t") + (uniform(0, 1) ? "" : " NOT") + " LIKE " + kPatterns[uniform(0, 3)];
    case 6:
      return column + op + (column == "a" ? "b" : "a");
    default:
      return column + op + value;
  }
}

/// The spelling of PostgreSQL, which has no VALUES there.
std::string ForRq(std::string sql) {
  for (std::size_t at = sql.find("VALUES "); at != std::string::npos; at = sql.find("VALUES ")) sql.erase(at, 7);
  return sql;
}

// Of each random pair: a row that rq shows is one in the engine's eyes, too; where the engine has one, rq does not say
// that there is none; and where rq says that B is implied, the engine has none, unless rq shows one of nulls.
TEST(Implies, AgreesWithAnotherEngine) {
  constexpr unsigned kSeed = 20262;
  constexpr int kPairs = 400;
  std::mt19937 random(kSeed);
  Engine engine;
  int nImplied = 0;
  int nRows = 0;
  for (int i = 0; i < kPairs && !HasFailure(); ++i) {
    const std::string b = RandomSql(random, 2);
    const std::string a = i % 2 ? RandomSql(random, 2) : b + " AND " + RandomSql(random, 1);
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ": " + a + "  =>  " + b);
    const RqRun run = Implies({ForRq(a), ForRq(b)});
    ASSERT_LT(run.m_status, 2) << run.m_err;
    const bool bShowsRow = run.m_out.find("this row satisfies") != std::string::npos;
    nImplied += run.m_status == 0;
    nRows += bShowsRow;
    if (bShowsRow) {
      EXPECT_EQ(engine.CountCounterexamples(a, b, SelectOf(run.m_out)), 1) << run.m_out;
    } else {
      EXPECT_EQ(engine.CountCounterexamples(a, b, kAllRows), 0) << run.m_out;
    }
  }
  EXPECT_GT(nImplied, kPairs / 10);
  EXPECT_GT(nRows, kPairs / 10);
}

}  // namespace
