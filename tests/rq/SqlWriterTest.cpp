#include <gtest/gtest.h>

#include <algorithm>
#include <string>

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
