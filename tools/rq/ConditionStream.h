#pragma once

#include <functional>
#include <iosfwd>
#include <string>

struct CommandStreams;

/// How the lines of a stream are worked on.
struct ConditionStreamOptions {
  std::string m_name;                                        ///< Of the stream, for messages.
  bool m_bJson = false;                                      ///< Errors are objects among the results.
  std::function<std::string(const std::string&)> m_convert;  ///< Gives the result of a line, closed by a line feed.
};

/// Reads conditions line by line and writes what becomes of them. Blank lines and lines that begin with -- are passed
/// over; results to read have a blank line between them. What goes wrong with a line, a SqlError at an offset in it or
/// anything else, ends in its place as a message or an object, and the other lines go on. Whether no line had an error.
bool RunConditionStream(std::istream& in, const ConditionStreamOptions& options, CommandStreams& streams);

/// The same for a file. Raises std::system_error if it cannot be read.
bool RunConditionFile(const std::string& file, const ConditionStreamOptions& options, CommandStreams& streams);
