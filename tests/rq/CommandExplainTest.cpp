#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "RqTestUtil.h"

namespace {

/// The tree on one line, with each run of blanks as one.
std::string Explain(const std::string& query) {
  const RqRun run = RunRq({"explain", "--one-line", query});
  EXPECT_EQ(run.m_status, 0) << run.m_err;
  return OneLine(run.m_out);
}

/// The error without the text and the caret.
std::string Error(const std::string& query) {
  const RqRun run = RunRq({"explain", query});
  EXPECT_EQ(run.m_status, 2);
  EXPECT_EQ(run.m_out, "");
  EXPECT_TRUE(run.m_err.ends_with("^\n")) << run.m_err;
  return run.m_err.substr(0, run.m_err.find('\n'));
}

TEST(CommandExplain, Errors) {
  for (const auto& [query, error] : CasesOf("rq/cases/explain_errors.txt"))
    EXPECT_EQ(Error(query), "rq: " + error) << query;
  EXPECT_EQ(Error("SELECT " + Repeated("n", 100) + " FROM sales"),
            "rq: line 1, column 8: there is no column " + Repeated("n", 40) + "...");
}

TEST(CommandExplain, Trees) {
  for (const auto& [query, tree] : CasesOf("rq/cases/explain_trees.txt")) {
    const std::string text = Explain(query);
    EXPECT_EQ(text.substr(0, text.find_last_not_of(' ') + 1), tree) << query;
  }
}

}  // namespace
