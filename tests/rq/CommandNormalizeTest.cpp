#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <istream>
#include <ostream>
#include <streambuf>

#include "Host/MemAlloc.h"
#include "RqTestUtil.h"
#include "rq/BigStack.h"

namespace {

RqRun Normalize(std::vector<std::string> arguments, const std::string& input = {}) {
  arguments.insert(arguments.begin(), "normalize");
  return RunRq(arguments, input);
}

/// A disjunction of conjunctions of two atoms each, or the other way round; no atom twice.
std::string Pairs(int count, const std::string& inner, const std::string& outer) {
  std::string sql;
  for (int i = 0; i < count; ++i) {
    const std::string n = std::to_string(i);
    sql += (i == 0 ? "" : ' ' + outer + ' ') + "(a" + n + " = 1 " + inner + " b" + n + " = 1)";
  }
  return sql;
}

// ---------------------------------------------------------------------------------------------------------------------
// Output

struct OutputCase {
  const char* m_name;
  std::vector<std::string> m_arguments;
  const char* m_out;
};

void ExpectOutput(const OutputCase& c, const std::string& out, const RqRun& run) {
  SCOPED_TRACE(c.m_name);
  EXPECT_EQ(out, c.m_out);
  EXPECT_EQ(run.m_err, "");
  EXPECT_EQ(run.m_status, 0);
}

TEST(Normalize, JsonOfEachForm) {
  const OutputCase cases[] = {
      {"cnf",
       {"a = 1 AND b = 2 OR c > 3"},
       "{\"input\":\"c > 3 or a = 1 and b = 2\",\"success\":true,"
       "\"result\":\"(a = 1 or 3 < c) and (b = 2 or 3 < c)\",\"conjuncts\":[\"a = 1 or 3 < c\",\"b = 2 or 3 < c\"]}\n"},
      {"nothing is left", {"a = a"}, "{\"input\":\"a = a\",\"success\":true,\"result\":null,\"conjuncts\":[]}\n"},
      {"dnf",
       {"--form=dnf", "(a = 1 OR b = 2) AND c < 3"},
       "{\"input\":\"c < 3 and (a = 1 or b = 2)\",\"tooComplicated\":false,"
       "\"disjuncts\":[\"a = 1 and c < 3\",\"b = 2 and c < 3\"]}\n"},
      {"cnf-conjuncts",
       {"--form=cnf-conjuncts", "b = 2 AND a = 1"},
       "{\"input\":\"a = 1 and b = 2\",\"success\":true,\"conjuncts\":[\"a = 1\",\"b = 2\"]}\n"},
      {"an IN is kept",
       {"--keep-in", "a IN (2, 1)"},
       "{\"input\":\"a in ([ 2, 1] )\",\"success\":true,\"result\":\"a in ([ 2, 1] )\","
       "\"conjuncts\":[\"a in ([ 2, 1] )\"]}\n"},
      {"several conditions, and text that JSON must escape",
       {"a = 'x\"\\\n\x01'", "\"Größe\" = 1"},
       "{\"input\":\"a = 'x\\\"\\\\\\n\\u0001'\",\"success\":true,\"result\":\"a = 'x\\\"\\\\\\n\\u0001'\","
       "\"conjuncts\":[\"a = 'x\\\"\\\\\\n\\u0001'\"]}\n"
       "{\"input\":\"Größe = 1\",\"success\":true,\"result\":\"Größe = 1\",\"conjuncts\":[\"Größe = 1\"]}\n"},
      {"rows below a negated AND",
       {"NOT (a = 1 AND (b, c) IN ((1, 2)))"},
       "{\"input\":\"not a = 1 and (b, c) in ((1, 2))\",\"success\":true,"
       "\"result\":\"not a = 1 or not b = 1 or not c = 2\","
       "\"conjuncts\":[\"not a = 1 or not b = 1 or not c = 2\"]}\n"},
      {"rows right below a NOT stay",
       {"NOT ((b, c) NOT IN ((1, 2)))"},
       "{\"input\":\"not (b, c) not in ((1, 2))\",\"success\":true,\"result\":\"not (b, c) not in ((1, 2))\","
       "\"conjuncts\":[\"not (b, c) not in ((1, 2))\"]}\n"},
  };
  for (const OutputCase& c : cases) {
    std::vector<std::string> arguments = c.m_arguments;
    arguments.insert(arguments.begin(), "--format=json");
    const RqRun run = Normalize(arguments);
    ExpectOutput(c, run.m_out, run);
  }
}

TEST(Normalize, TextToRead) {
  const OutputCase cases[] = {
      {"cnf; atoms that occur twice count once",
       {"(a = 1 AND b = 2) OR c < 3 OR (a = 1 AND d = 4)"},
       "    (a = 1 or c < 3)\nand (b = 2 or d = 4 or c < 3)\n4 atoms, 2 clauses, converted\n"},
      {"nothing is left", {"a = a"}, "    always true\n1 atom, 0 clauses, converted\n"},
      {"dnf, and several conditions",
       {"--form", "dnf", "(a = 1 OR b = 2) AND c < 3", "a = 1"},
       "    a = 1 and c < 3\n or b = 2 and c < 3\n3 atoms, 2 clauses, converted\n"
       "\n    a = 1\n1 atom, 1 clause, converted\n"},
  };
  for (const OutputCase& c : cases) {
    const RqRun run = Normalize(c.m_arguments);
    ExpectOutput(c, run.m_out, run);
  }
}

std::string LastLine(const std::string& text) {
  return text.substr(text.rfind('\n', text.size() - 2) + 1, text.size());
}

// Nine terms of two factors are refused, and a limit below their 512 clauses keeps them from being tried.
TEST(Normalize, GivingUpIsNoError) {
  const std::string many = Pairs(9, "AND", "OR");
  const OutputCase cases[] = {
      {"refused",
       {many},
       "18 atoms, 0 clauses, given up: more than 8 terms of several factors to multiply out "
       "(--force does so for a disjunction at the top)\n"},
      {"forced", {"--force", many}, "18 atoms, 512 clauses, converted\n"},
      {"above the limit",
       {"--limit", "511", many},
       "18 atoms, 0 clauses, given up: too complicated, with more clauses "
       "estimated and more atoms than the limits allow (--limit 0 tries it)\n"},
      {"a list of conjuncts refused",
       {"--form", "cnf-conjuncts", many},
       "18 atoms, 1 clause, given up: more than 8 terms of several factors to multiply out\n"},
      {"a disjunctive form above the limit",
       {"--form", "dnf", "--limit", "511", Pairs(9, "OR", "AND")},
       "18 atoms, 0 clauses, given up: too complicated, with more clauses estimated than the limit allows "
       "(--force tries it)\n"},
      {"a disjunctive form forced",
       {"--form", "dnf", "--limit", "511", "--force", Pairs(9, "OR", "AND")},
       "18 atoms, 512 clauses, converted\n"},
      {"conjunctive already",
       {"--limit", "1", Pairs(9, "OR", "AND")},
       "18 atoms, 9 clauses, left as it stands: too complicated to convert, and in conjunctive form already\n"},
  };
  for (const OutputCase& c : cases) {
    const RqRun run = Normalize(c.m_arguments);
    ExpectOutput(c, LastLine(run.m_out), run);
  }
  // A refused form may lack a part of the condition, so the condition itself is shown.
  const RqRun refused = Normalize({"z = 0 AND (" + many + ')'});
  EXPECT_NE(refused.m_out.find("a8 = 1 and b8 = 1"), std::string::npos) << refused.m_out;
  EXPECT_EQ(std::ranges::count(refused.m_out, '\n'), 2);

  const std::string dnf = Normalize({"--form", "dnf", "--format", "json", Pairs(11, "OR", "AND")}).m_out;
  EXPECT_TRUE(dnf.ends_with("\"tooComplicated\":true,\"disjuncts\":[]}\n")) << dnf;
  const std::string cnf = Normalize({"--limit", "511", "--format", "json", many}).m_out;
  EXPECT_TRUE(cnf.ends_with("\"success\":false,\"result\":null,\"conjuncts\":[]}\n")) << cnf;
}

TEST(Normalize, WhatHasNoEffectIsNoted) {
  EXPECT_EQ(Normalize({"--form", "cnf-conjuncts", "--force", "a = 1"}).m_err,
            "rq: note: --force and --limit have no effect on cnf-conjuncts\n");
}

// ---------------------------------------------------------------------------------------------------------------------
// Errors of conditions

TEST(Normalize, AnErrorInAnArgumentLeavesTheOutputEmpty) {
  for (const char* const pFormat : {"text", "json"}) {
    const RqRun run = Normalize({"--format", pFormat, "a = 1", "b IN (1,\n\t2 +", "soundex(c) = 'x'"});
    EXPECT_EQ(run.m_out, "");
    EXPECT_EQ(run.m_err,
              "rq: condition 2, line 2, column 5: syntax error at end of input\n  \t2 +\n  \t   ^\n"
              "rq: condition 3, line 1, column 1: the function soundex is not supported; rq normalize "
              "--help lists those that are\n  soundex(c) = 'x'\n  ^\n");
    EXPECT_EQ(run.m_status, 2);
  }
  EXPECT_EQ(Normalize({""}).m_err, "rq: line 1, column 1: there is no condition here\n  \n  ^\n");
}

TEST(Normalize, AnErrorOnALineStandsInItsPlace) {
  using namespace std::string_literals;
  const std::string input =
      "\xEF\xBB\xBF"
      "a = 1\r\n"
      "\n"
      "  \t\r\n"
      "-- a comment\n"
      "  -- another\n"
      "é = = 2\n"
      "b = 'x\0y'\n"
      "b = '\xFF'\n"
      "a = DATE '2023-02-30' -- no such day\n"
      "c = 3"s;
  const RqRun json = Normalize({"--format", "json", "-"}, input);
  EXPECT_EQ(json.m_out,
            "{\"input\":\"a = 1\",\"success\":true,\"result\":\"a = 1\",\"conjuncts\":[\"a = 1\"]}\n"
            "{\"error\":\"syntax error at or near \\\"=\\\"\",\"line\":6,\"column\":5}\n"
            "{\"error\":\"a zero byte is not text\",\"line\":7,\"column\":7}\n"
            "{\"error\":\"this is not UTF-8\",\"line\":8,\"column\":6}\n"
            "{\"error\":\"'2023-02-30' is not a date of the form YYYY-MM-DD\",\"line\":9,\"column\":5}\n"
            "{\"input\":\"c = 3\",\"success\":true,\"result\":\"c = 3\",\"conjuncts\":[\"c = 3\"]}\n");
  EXPECT_EQ(json.m_err, "");
  EXPECT_EQ(json.m_status, 2);

  const RqRun text = Normalize({}, "a = 1\nb =\nc = 3\n");
  EXPECT_EQ(text.m_out, "    a = 1\n1 atom, 1 clause, converted\n\n    c = 3\n1 atom, 1 clause, converted\n");
  EXPECT_EQ(text.m_err, "rq: standard input, line 2, column 4: syntax error at end of input\n  b =\n     ^\n");
  EXPECT_EQ(text.m_status, 2);

  EXPECT_EQ(Normalize({"-"}, "-- nothing\n\n").m_out, "");
}

TEST(Normalize, ALineThatIsTooLongIsAnErrorAndTheNextOneIsNot) {
  const RqRun run = Normalize({"--format", "json"}, std::string(20 << 20, 'x') + "\na = 1\n");
  EXPECT_EQ(run.m_out,
            "{\"error\":\"the text is longer than 16 MiB\",\"line\":1,\"column\":16777217}\n"
            "{\"input\":\"a = 1\",\"success\":true,\"result\":\"a = 1\",\"conjuncts\":[\"a = 1\"]}\n");
  EXPECT_EQ(run.m_status, 2);
}

// ---------------------------------------------------------------------------------------------------------------------
// Files and streams

TEST(Normalize, ReadsAFile) {
  const std::string directory = testing::TempDir();
  const std::string path = directory + "rq_normalize_test.sql";
  std::ofstream(path, std::ios::binary) << "a = 1\nb = \n";
  const RqRun run = Normalize({"--file", path}, "not = read");
  EXPECT_EQ(run.m_out, "    a = 1\n1 atom, 1 clause, converted\n");
  EXPECT_EQ(run.m_err, "rq: " + path + ", line 2, column 5: syntax error at end of input\n  b = \n      ^\n");
  EXPECT_EQ(run.m_status, 2);
  std::remove(path.c_str());
  EXPECT_EQ(Normalize({"--file", "-"}, "a = 1").m_status, 0);
  EXPECT_EQ(Normalize({"--file", path}).m_err, "rq: cannot read " + path + ": No such file or directory\n");
  EXPECT_EQ(Normalize({"--file", directory}).m_err, "rq: cannot read " + directory + ": Is a directory\n");
  EXPECT_EQ(Normalize({"--file", ""}).m_status, 2);
}

/// Makes lines as they are asked for, one at a time.
class LineSource : public std::streambuf {
 public:
  LineSource(std::string line, int count) : m_line(std::move(line)), m_nLeft(count) {}

 protected:
  int_type underflow() override {
    if (m_nLeft == 0) return traits_type::eof();
    --m_nLeft;
    setg(m_line.data(), m_line.data(), m_line.data() + m_line.size());
    return traits_type::to_int_type(m_line[0]);
  }

  std::string m_line;
  int m_nLeft;
};

/// Counts what is written and forgets it; may fail as a system call would.
class ByteSink : public std::streambuf {
 public:
  explicit ByteSink(int error = 0) : m_error(error) {}

  std::size_t m_nBytes = 0;
  std::size_t m_largestBlock = 0;
  std::int64_t m_mostNodes = 0;

 protected:
  std::streamsize xsputn(const char*, std::streamsize count) override {
    if (m_error != 0) {
      errno = m_error;
      return 0;
    }
    m_nBytes += static_cast<std::size_t>(count);
    m_largestBlock = std::max(m_largestBlock, static_cast<std::size_t>(count));
    m_mostNodes = std::max(m_mostNodes, MemoryDataCollector::GetRqNodeCount());
    return count;
  }

 private:
  int m_error;
};

TEST(Normalize, ALongBatchKeepsNothing) {
  constexpr int kLines = 20'000;
  LineSource source("a=1 or b=2\n", kLines);
  ByteSink sink;
  std::istream in(&source);
  std::ostream out(&sink);
  std::ostringstream err;
  CommandStreams streams{in, out, err, false, false, true};
  const std::int64_t nNodes = MemoryDataCollector::GetRqNodeCount();
  EXPECT_EQ(RunCommandLine({"normalize", "--format", "json"}, streams), 0);
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nNodes);
  EXPECT_EQ(sink.m_nBytes % kLines, 0u);
  EXPECT_GT(sink.m_nBytes, kLines * 50u);
  EXPECT_LT(sink.m_largestBlock, 100'000u);
  EXPECT_LT(sink.m_mostNodes - nNodes, 100);
}

/// A partner who writes the next line when the result of the last one has come.
class Partner : public LineSource {
 public:
  explicit Partner(const std::ostringstream& out) : LineSource("a = 1\n", 3), m_out(out) {}

 protected:
  int_type underflow() override {
    EXPECT_EQ(std::ranges::count(m_out.str(), '\n'), m_nAsked++);
    return LineSource::underflow();
  }

 private:
  const std::ostringstream& m_out;
  int m_nAsked = 0;
};

TEST(Normalize, ResultsDoNotWaitForMoreInput) {
  std::ostringstream out;
  Partner partner(out);
  std::istream in(&partner);
  std::ostringstream err;
  CommandStreams streams{in, out, err};
  EXPECT_EQ(RunCommandLine({"normalize", "--format", "json"}, streams), 0);
}

TEST(Normalize, OutputThatFails) {
  const std::tuple<int, int, std::string> cases[] = {
      {EPIPE, 141, ""}, {ENOSPC, 2, "rq: cannot write the output: No space left on device\n"}};
  for (const auto& [error, status, message] : cases) {
    for (const char* const pArgument : {"a = 1", "-", "--help"}) {
      ByteSink sink(error);
      std::istringstream in(Repeated("a = 1\n", 2000));
      std::ostream out(&sink);
      std::ostringstream err;
      CommandStreams streams{in, out, err};
      EXPECT_EQ(RunCommandLine({"normalize", pArgument}, streams), status);
      EXPECT_EQ(err.str(), message);
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// The command line itself

TEST(CommandLine, MisuseIsAnErrorWithAHint) {
  const std::tuple<std::vector<std::string>, std::string, std::string> cases[] = {
      {{"frobnicate", "a = 1"}, "there is no command frobnicate", "rq --help"},
      {{"normalize", "--frobnicate", "a = 1"}, "--frobnicate", "rq normalize --help"},
      {{"normalize", "--form", "nnf", "a = 1"}, "nnf", "rq normalize --help"},
      {{"normalize", "--limit", "-2", "a = 1"}, "--limit", "rq normalize --help"},
      {{"normalize", "--file", "x", "a = 1"}, "conditions and --file do not go together", "rq normalize --help"},
  };
  for (const auto& [arguments, message, hint] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const RqRun run = RunRq(arguments);
    EXPECT_EQ(run.m_status, 2);
    EXPECT_EQ(run.m_out, "");
    EXPECT_TRUE(run.m_err.starts_with("rq: ")) << run.m_err;
    EXPECT_NE(run.m_err.find(message), std::string::npos) << run.m_err;
    EXPECT_TRUE(run.m_err.ends_with("\nSee \"" + hint + "\".\n")) << run.m_err;
  }
}

TEST(CommandLine, NothingGivenOnATerminalIsMisuse) {
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  CommandStreams streams{in, out, err, true, true, true};
  EXPECT_EQ(RunCommandLine({"normalize"}, streams), 2);
  EXPECT_EQ(RunCommandLine({"normalize", "-"}, streams), 0);
}

TEST(CommandLine, HelpAndVersionGoToTheOutput) {
  for (const char* const pOption : {"--help", "--version"}) {
    const RqRun run = RunRq({pOption});
    EXPECT_EQ(run.m_status, 0);
    EXPECT_EQ(run.m_err, "");
    EXPECT_NE(run.m_out.find("rq "), std::string::npos);
  }
}

TEST(CommandLine, AConditionMayBeginWithADash) { EXPECT_EQ(Normalize({"-1 < a"}).m_status, 0); }

TEST(CommandLine, ConditionsMayNestDeeply) {
  for (const char* const pForm : {"cnf", "cnf-conjuncts", "dnf"}) {
    const RqRun run = Normalize({"--form", pForm, Repeated("NOT ", 9'001) + "a = 1"});
    EXPECT_EQ(run.m_out, "    not a = 1\n1 atom, 1 clause, converted\n");
    EXPECT_EQ(run.m_err, "");
  }
  const RqRun nested =
      Normalize({"--format", "json", Repeated("(a = 1 AND (b = 1 OR ", 1'500) + "c = 1" + Repeated("))", 1'500)});
  EXPECT_EQ(nested.m_status, 0) << nested.m_err;
}

TEST(BigStack, PassesErrorsOn) {
  EXPECT_THROW(RunOnBigStack([] { throw std::runtime_error("x"); }), std::runtime_error);
}

}  // namespace
