#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "CaseFile.h"
#include "Host/MemAlloc.h"
#include "rq/CommandLine.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlText.h"

inline std::string Repeated(std::string_view text, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) repeated += text;
  return repeated;
}

/// With each run of blanks and line feeds as one blank.
inline std::string OneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const bool bBlank = c == ' ' || c == '\n';
    if (!bBlank) {
      line += c;
    } else if (!line.ends_with(' ')) {
      line += ' ';
    }
  }
  return line;
}

/// What a command line leaves behind.
struct RqRun {
  int m_status;
  std::string m_out;
  std::string m_err;
};

inline RqRun RunRq(const std::vector<std::string>& arguments, const std::string& input = {}) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  CommandStreams streams{in, out, err};
  const int status = RunCommandLine(arguments, streams);
  return {status, out.str(), err.str()};
}

/// The condition is refused with that place and message, or one that starts so, and what was built of it is freed.
inline void ExpectRefused(const std::string& sql, const std::string& expected) {
  SCOPED_TRACE(sql);
  const std::int64_t nNodes = MemoryDataCollector::GetRqNodeCount();
  try {
    ParseCondition(sql);
    ADD_FAILURE() << "taken";
  } catch (const SqlError& error) {
    const SqlPlace place = PlaceOf(sql, error.GetOffset());
    const std::string told = std::to_string(place.m_line) + ":" + std::to_string(place.m_column) + " " + error.what();
    EXPECT_EQ(told.substr(0, expected.size()), expected);
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nNodes);
}
