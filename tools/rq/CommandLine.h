#pragma once

#include <iosfwd>
#include <string>
#include <vector>

/// What a command reads and writes, and which of it a person sits at.
struct CommandStreams {
  std::istream& m_in;
  std::ostream& m_out;
  std::ostream& m_err;
  bool m_bInIsTerminal = false;
  bool m_bOutIsTerminal = false;
  bool m_bErrIsTerminal = false;
};

/// Runs a command line, without the program's name, on a thread with a big stack, and gives the exit status. Raises
/// nothing: every error becomes a message on the error stream and kExitError, and the end of whoever reads the output
/// becomes kExitBrokenPipe without a word.
int RunCommandLine(const std::vector<std::string>& arguments, CommandStreams& streams);
