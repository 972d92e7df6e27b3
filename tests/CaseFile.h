#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

// Cases that are text stand in files of text: an input on a line of its own, and behind "=> " on the next lines what is
// to come of it. Lines that begin with "#" are comments.

struct TextCase {
  std::string m_input, m_expected;

  /// What stands in the input before and behind a separator; behind it nothing if it does not occur.
  std::pair<std::string, std::string> Split(const std::string& separator) const {
    const std::size_t at = m_input.find(separator);
    if (at == std::string::npos) return {m_input, {}};
    return {m_input.substr(0, at), m_input.substr(at + separator.size())};
  }
};

/// Those of a file below tests/.
inline std::vector<TextCase> CasesOf(const std::string& path) {
  std::ifstream file(std::string(RQ_SOURCE_DIR "/tests/") + path);
  std::vector<TextCase> cases;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.starts_with('#')) continue;
    if (line.starts_with("=> ")) {
      std::string& expected = cases.back().m_expected;
      expected += (expected.empty() ? "" : "\n") + line.substr(3);
    } else {
      cases.push_back({line, {}});
    }
  }
  EXPECT_FALSE(cases.empty()) << path;
  return cases;
}
