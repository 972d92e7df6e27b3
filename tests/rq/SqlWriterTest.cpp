#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "RqTestUtil.h"

namespace {

TEST(SqlWriter, WritesOrRefuses) {
  for (const TextCase& textCase : CasesOf("rq/cases/sql.txt")) {
    SCOPED_TRACE(textCase.m_input);
    const auto [target, query] = textCase.Split(": ");
    const RqRun run = RunRq({"sql", "--target", target, query});
    const bool bRefused = textCase.m_expected.starts_with("cannot do ");
    EXPECT_EQ(run.m_status, bRefused ? 1 : 0);
    if (bRefused) {
      EXPECT_EQ(run.m_err, "rq: the database " + target + ' ' + textCase.m_expected + '\n');
      EXPECT_EQ(run.m_out, "");
    } else {
      EXPECT_EQ(OneLine(run.m_out), textCase.m_expected + ' ') << run.m_err;
    }
  }
}

/// What goes by the model: the names of tables, which common table expressions must not have, and features.
TEST(SqlWriter, NamesAndFeaturesOfTheModel) {
  const std::string file = testing::TempDir() + "/rq_writer_model.json";
  std::ofstream(file) << R"json({"databases": [
    {"name": "a", "preset": "sqlite", "features": {"CORRELATED_SUBQUERY": false}}, {"name": "b", "preset": "sqlite"}],
    "tables": [{"name": "SALES", "database": "a", "names": {"b": "Shops"},
                "columns": [{"name": "city", "type": "VARCHAR(9)"}]}]})json";
  const std::vector<std::array<std::string, 3>> rows{
      {"a", "WITH sales AS (SELECT city FROM \"SALES\") SELECT * FROM sales",
       "WITH sales_2 AS ( SELECT T1.city FROM \"SALES\" AS T1 ) SELECT D2.city FROM sales_2 AS D2 "},
      {"b", "WITH shops AS (SELECT city FROM \"SALES\") SELECT * FROM shops",
       "WITH shops_2 AS ( SELECT T1.city FROM \"Shops\" AS T1 ) SELECT D2.city FROM shops_2 AS D2 "},
      {"a", "SELECT 1 FROM \"SALES\" s WHERE EXISTS (SELECT 1 FROM \"SALES\" t WHERE t.city = s.city)", ""},
      {"a", "SELECT 1 FROM \"SALES\" s WHERE city < ANY (SELECT t.city FROM \"SALES\" t)", ""},
      {"a", "WITH c AS (SELECT city FROM \"SALES\") SELECT 1 FROM c WHERE city IN (SELECT city FROM c)",
       "WITH c AS ( SELECT T1.city FROM \"SALES\" AS T1 ) SELECT 1 AS c1 FROM c AS D2 WHERE D2.city IN ( SELECT "
       "D3.city "
       "FROM c AS D3 ) "},
  };
  for (const auto& [target, query, expected] : rows) {
    SCOPED_TRACE(query);
    const RqRun run = RunRq({"sql", "--model", file, "--target", target, query});
    EXPECT_EQ(run.m_status, expected.empty() ? 1 : 0) << run.m_err;
    EXPECT_EQ(OneLine(run.m_out), expected);
    EXPECT_EQ(run.m_err.find("CORRELATED_SUBQUERY") != std::string::npos, expected.empty());
  }
}

/// Clauses stand below each other.
TEST(SqlWriter, Lines) {
  EXPECT_EQ(RunRq({"sql", "--target", "sqlite",
                   "SELECT city FROM store WHERE city > 'A' GROUP BY city HAVING COUNT(*) > 1 ORDER BY city"})
                .m_out,
            "SELECT T1.city\nFROM store AS T1\nWHERE T1.city > 'A'\nGROUP BY T1.city\nHAVING count(*) > 1\n"
            "ORDER BY T1.city\n");
}

/// A database takes a chain of operators as a tree as deep as it is long, so a long one is nested.
TEST(SqlWriter, LongChainsAreNested) {
  std::string filter = "store_id = 0";
  for (int i = 1; i < 3000; ++i) filter += " OR store_id = " + std::to_string(i) + " AND floor_area <> 1";
  const RqRun run = RunRq({"sql", "--target", "sqlite", "SELECT 1 FROM store WHERE " + filter});
  ASSERT_EQ(run.m_status, 0) << run.m_err;
  std::size_t inChain = 0;
  std::size_t longest = 0;
  for (std::size_t i = 0; i < run.m_out.size(); ++i) {
    if (run.m_out[i] == '(') inChain = 0;
    if (run.m_out.compare(i, 4, " OR ") == 0) longest = std::max(longest, ++inChain);
  }
  EXPECT_GT(longest, 0U);
  EXPECT_LE(longest, 200U);
}

}  // namespace
