#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <istream>
#include <ostream>
#include <streambuf>

#include "Host/MemAlloc.h"
#include "RqTestUtil.h"
#include "rq/BigStack.h"

namespace {

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

// The sanitizers need address space without a limit.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCanLimitAddressSpace = false;
#else
constexpr bool kCanLimitAddressSpace = true;
#endif

/// Leaves that much address space to the process.
void LeaveAddressSpace(std::size_t nBytes) {
  std::size_t nPages = 0;
  std::ifstream("/proc/self/statm") >> nPages;
  const rlim_t limit = nPages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + nBytes;
  const rlimit limits{limit, limit};
  setrlimit(RLIMIT_AS, &limits);
}

TEST(NormalizeDeathTest, ALineThatTheMemoryIsTooSmallForIsAnErrorAmongTheOthers) {
  if (!kCanLimitAddressSpace) GTEST_SKIP();
  const std::string lines = "a IN (" + Repeated("a+a+a+a+a+a+a+a,", 12'000) + "a)\nb = 1\n";
  const std::string error = "{\"error\":\"there is not enough memory for this condition\",\"line\":1,\"column\":1}\n";
  for (std::size_t nMegabytes = 32; nMegabytes <= 96; nMegabytes += 16) {
    SCOPED_TRACE(nMegabytes);
    const auto run = [&] {
      LeaveAddressSpace(nMegabytes << 20);
      const std::string out = RunRq({"normalize", "--format", "json"}, lines).m_out;
      const bool bEachLineIsThere = std::ranges::count(out, '\n') == 2;
      _exit(bEachLineIsThere && (out.starts_with(error) || out.starts_with("{\"input\":\"a in")) ? 0 : 3);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// The command line itself

TEST(CommandLine, NothingGivenOnATerminalIsMisuse) {
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  CommandStreams streams{in, out, err, true, true, true};
  EXPECT_EQ(RunCommandLine({"normalize"}, streams), 2);
  EXPECT_EQ(RunCommandLine({"normalize", "-"}, streams), 0);
}

TEST(BigStack, PassesErrorsOn) {
  EXPECT_THROW(RunOnBigStack([] { throw std::runtime_error("x"); }), std::runtime_error);
}

TEST(BigStackDeathTest, LeavesTheTaskAsMuchAsItTakes) {
  if (!kCanLimitAddressSpace) GTEST_SKIP();
  const auto run = [] {
    LeaveAddressSpace(100 << 20);
    RunOnBigStack([] { ::operator delete(::operator new(48 << 20)); });
    _exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace
