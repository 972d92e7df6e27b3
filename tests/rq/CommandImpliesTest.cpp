#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdio>
#include <fstream>
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
  struct {
    const char *m_a, *m_b, *m_out;
  } const rows[] = {
      {"x = 5 AND y > 0", "x < 6", "implied\n"},
      {"x <= 5", "x < 5", "not implied\nno conjunct of A implies: x < 5\nthis row satisfies A and not B:\n    x = 5\n"},
      {"x = 5", "x < 6 AND x > 4",
       "not shown\nA has fewer conjuncts than B, 1 and 2, and is then not taken to imply it\n"
       "no row over the values of the conditions, their neighbours and NULL satisfies A and not B\n"},
      // The tables of both are numbered together, whatever order they come in.
      {"p.x = 1 AND s.y = 2", "s.y = 2", "implied\n"},
      {"p.x = 1 AND s.y = 2", "s.x = 1",
       "not implied\nno conjunct of A implies: T2.x = 1\nthis row satisfies A and not B:\n"
       "    T1.x = 1\n    T2.y = 2\n    T2.x = 0\n"},
      // Neither satisfied nor false: a null makes B unknown.
      {"y = 1", "y = 1 AND x = x",
       "implied, equivalent\nbut what holds for all values is taken to hold for NULL, and this row "
       "satisfies A and not B:\n    y = 1\n    x = NULL\n"},
      // Blanks at the end of a text.
      {"t LIKE 'a%'", "t LIKE 'a% '",
       "implied, equivalent\nbut texts that differ in blanks at the end are taken for the same, and this row "
       "satisfies A and not B:\n    t = 'a'\n"},
      // A negated list of rows is one conjunct a row.
      {"(a, b) NOT IN ((1, 2))", "(a, b) NOT IN ((1, 2), (3, 4))",
       "not implied\nno conjunct of A implies: not a = 3 or not b = 4\nthis row satisfies A and not B:\n"
       "    a = 3\n    b = 4\n"},
      {"NOT (c = 1 OR (a, b) IN ((1, 2)))", "NOT c = 1", "implied\n"},
      // Values of other types, and what lies between two of them.
      {"d <= DATE '2024-02-29'", "d < DATE '2024-02-29'",
       "not implied\nno conjunct of A implies: d < DATE '2024-02-29'\nthis row satisfies A and not B:\n"
       "    d = DATE '2024-02-29'\n"},
      {"d > TIMESTAMP '2023-12-31 23:59:59'", "d <> TIMESTAMP '2024-01-01 00:00:00'",
       "not implied\nno conjunct of A implies: not d = TIMESTAMP '2024-01-01 00:00:00'\n"
       "this row satisfies A and not B:\n    d = TIMESTAMP '2024-01-01 00:00:00'\n"},
      {"x > 1.25 AND x < 1.5", "x IS NULL",
       "not implied\nno conjunct of A implies: x is null\nthis row satisfies A and not B:\n    x = 1.375\n"},
      {"x > 2147483647", "x IS NULL",
       "not implied\nno conjunct of A implies: x is null\nthis row satisfies A and not B:\n    x = 2147483648.0\n"},
      {"t > 'a' AND t LIKE '_'", "t IS NULL",
       "not implied\nno conjunct of A implies: t is null\nthis row satisfies A and not B:\n    t = 'b'\n"},
      {"t LIKE '_!%%' ESCAPE '!'", "t LIKE '%z'",
       "not implied\nno conjunct of A implies: t like '%z'\nthis row satisfies A and not B:\n    t = 'a%'\n"},
      {"x = $1", "x = $2",
       "not implied\nno conjunct of A implies: x = ?2\nthis row satisfies A and not B:\n"
       "    x = 1\n    ?1 = 1\n    ?2 = 0\n"},
      // What cannot be evaluated gives no evidence.
      {"x < CURRENT_DATE", "x < DATE '2024-01-01'",
       "not shown\nno conjunct of A implies: x < DATE '2024-01-01'\n"
       "no row was looked for: CURRENT_DATE cannot be evaluated here\n"},
      {"x = 'a'", "x < 5",
       "not shown\nno conjunct of A implies: x < 5\n"
       "no row over the values of the conditions, their neighbours and NULL satisfies A and not B\n"},
  };
  for (const auto& [a, b, out] : rows) {
    SCOPED_TRACE(std::string(a) + "  =>  " + b);
    const RqRun run = Implies({a, b});
    EXPECT_EQ(run.m_out, out);
    EXPECT_EQ(run.m_err, "");
    const bool bImplied = std::string(out).starts_with("implied");
    EXPECT_EQ(run.m_status, bImplied ? 0 : 1);
    const bool bEquivalent = std::string(out).starts_with("implied, equivalent");
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

TEST(Implies, SessionVariables) {
  struct {
    std::vector<std::string> m_settings;
    const char* m_b;
    int m_status;
  } const rows[] = {
      {{"s.v=7"}, "x < 8", 0},
      {{"s.v=7"}, "x < 7", 1},
      {{"s.v='7'"}, "x = '7'", 0},
      {{"s.v=it's=so"}, "x = 'it''s=so'", 0},
      {{"s.v=date '2024-01-01'"}, "x < DATE '2024-01-02'", 0},
      {{"s.v=TIME '01:02:03'"}, "x < TIME '01:02:04'", 0},
      {{"s.v=TIMESTAMP '2024-01-01 00:00:00'"}, "x < TIMESTAMP '2024-01-01 00:00:01'", 0},
      {{}, "x = VALUEOF(s.v)", 0},  // no value is needed for that
  };
  for (const auto& [settings, b, status] : rows) {
    std::vector<std::string> arguments;
    for (const std::string& setting : settings) arguments.insert(arguments.end(), {"--set", setting});
    arguments.insert(arguments.end(), {"x = VALUEOF(s.v)", b});
    SCOPED_TRACE(settings.empty() ? b : settings[0]);
    const RqRun run = Implies(arguments);
    EXPECT_EQ(run.m_status, status) << run.m_out << run.m_err;
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Errors

TEST(Implies, ErrorsHaveAPlace) {
  struct {
    std::vector<std::string> m_arguments;
    const char* m_err;
  } const rows[] = {
      {{"x = 1", "y = 1 AND"},
       "rq: condition B, line 1, column 10: syntax error at end of input\n  y = 1 AND\n           ^\n"},
      {{"x = 1 AND", "y = "},
       "rq: condition A, line 1, column 10: syntax error at end of input\n  x = 1 AND\n           ^\n"},
      {{"x = 1", "x < VALUEOF(s.v)"},
       "rq: condition B, line 1, column 5: the session variable s.v has no value\n  x < VALUEOF(s.v)\n      ^\n"},
      {{"x = 1"}, "rq: two conditions are needed, A and B, or --file FILE\nSee \"rq implies --help\".\n"},
      {{"--set", "v=1", "x = 1", "y = 1"}, "rq: --set takes BLOCK.NAME=VALUE, not 'v=1'\nSee \"rq implies --help\".\n"},
      {{"--set", "s.v=1", "--set", "s.v=2", "x = 1", "y = 1"},
       "rq: --set gives 's.v' a value twice\nSee \"rq implies --help\".\n"},
      {{"--set", "s.v=DATE '2023-02-29'", "x = 1", "y = 1"},
       "rq: 'DATE '2023-02-29'' is no value of the calendar\nSee \"rq implies --help\".\n"},
      {{"--file", "-", "x = 1"}, "rq: conditions and --file do not go together\nSee \"rq implies --help\".\n"},
  };
  for (const auto& [arguments, err] : rows) {
    const RqRun run = Implies(arguments);
    EXPECT_EQ(run.m_err, err);
    EXPECT_EQ(run.m_out, "");
    EXPECT_EQ(run.m_status, 2);
  }
}

TEST(Implies, PairsOfAFile) {
  const std::string input =
      "x = 1\tx < 2\r\n"
      "-- a comment\n"
      "\n"
      "x = 'a\tb'\t x = 'a\tb' OR y = 1\n"
      "x < 2\tx = 1\n"
      "x = \ty = 1\n"
      "x = 1\n"
      "x = 1\ty = 1\tz = 1\n"
      "x = 1\tx > VALUEOF(s.v)\n";
  const std::string path = testing::TempDir() + "pairs.txt";
  std::ofstream(path) << input;
  const RqRun run = Implies({"--file", path});
  EXPECT_EQ(run.m_out,
            "{\"implied\":true,\"equivalent\":false}\n"
            "{\"implied\":true,\"equivalent\":false}\n"
            "{\"implied\":false,\"equivalent\":false}\n"
            "{\"error\":\"syntax error at end of input\",\"line\":6,\"column\":5}\n"
            "{\"error\":\"a tab and a second condition are missing here\",\"line\":7,\"column\":6}\n"
            "{\"error\":\"there is a second tab here: a line is two conditions with a tab between them\",\"line\":8,"
            "\"column\":12}\n"
            "{\"error\":\"the session variable s.v has no value\",\"line\":9,\"column\":11}\n");
  EXPECT_EQ(run.m_status, 2);

  const RqRun text = Implies({"--file", "-", "--format", "text"}, "x = 1\tx < 2\nx =\tx\nx < 2\tx = 1\n");
  EXPECT_EQ(text.m_out,
            "implied\n\nnot implied\nno conjunct of A implies: x = 1\nthis row satisfies A and not B:\n    x = 0\n");
  EXPECT_EQ(text.m_err, "rq: standard input, line 2, column 4: syntax error at end of input\n  x =\tx\n     ^\n");
  EXPECT_EQ(Implies({"--file", "-"}, "x = 1\tx < 2\nx < 2\tx = 1\n").m_status, 1);
  EXPECT_EQ(Implies({"--file", "/nowhere"}).m_status, 2);
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
