#include <gtest/gtest.h>

#include "RqTestUtil.h"

namespace {

/// The first line of a message, without the program and the option.
std::string Cause(const std::string& message, const std::string& option) {
  const std::string line = message.substr(0, message.find('\n'));
  const std::string begin = "rq: " + option + ", ";
  return line.substr(line.starts_with(begin) ? begin.size() : 4);
}

TEST(CommandSplit, SplitsOrRefuses) {
  for (const TextCase& textCase : CasesOf("rq/cases/splits.txt")) {
    SCOPED_TRACE(textCase.m_input);
    const auto [grain, query] = textCase.Split(" | ");
    const RqRun run = RunRq({"split", "--format", "sql", "--target", "postgresql", "--grain", grain, query});
    const std::string outcome = run.m_status == 0 ? OneLine(run.m_out) : Cause(run.m_err, "--grain");
    EXPECT_EQ(std::to_string(run.m_status) + ' ' + outcome, textCase.m_expected + (run.m_status == 0 ? " " : ""));
    if (run.m_status == 0) continue;
    EXPECT_EQ(run.m_out, "");
    const RqRun rewrite = RunRq({"run", "--rewrite", "split:" + grain, query});
    EXPECT_EQ(std::to_string(rewrite.m_status) + ' ' + Cause(rewrite.m_err, "--rewrite split"), textCase.m_expected);
  }
}

}  // namespace
