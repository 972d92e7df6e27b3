#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

/// Reads a stream line by line, with one line in memory at a time and of that at most kMaxBytes: the rest of a longer
/// line is passed over. Line ends are line feeds, with or without a carriage return; the last line needs none. A byte
/// order mark at the beginning is no part of the first line.
class LineReader {
 public:
  /// The stream is lent. A line that is cut is maxBytes long.
  LineReader(std::istream& in, std::size_t maxBytes) : m_in(in), m_maxBytes(maxBytes) {}

  /// Reads the next line. False at the end. Raises std::system_error or std::ios_base::failure when the stream cannot
  /// be read.
  bool Next();

  const std::string& GetLine() const { return m_line; }
  /// From 1.
  std::size_t GetLineNumber() const { return m_lineNumber; }

  /// Whether reading on may wait for whoever writes the stream.
  bool MayWait() const;

 private:
  std::istream& m_in;
  std::size_t m_maxBytes;
  std::string m_line;
  std::size_t m_lineNumber = 0;
};
