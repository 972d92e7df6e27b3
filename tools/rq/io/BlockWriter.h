#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <system_error>

/// The output could not be written, as the operating system tells.
class OutputError : public std::system_error {
 public:
  explicit OutputError(int error) : std::system_error(error, std::generic_category(), "cannot write the output") {}

  /// Whether it is merely that nobody reads it any more.
  bool IsBrokenPipe() const { return code() == std::errc::broken_pipe; }
};

/// Collects output and writes it in blocks. What is left at its end is not written: the last Flush belongs to the work,
/// so that its error is seen.
class BlockWriter {
 public:
  /// The stream is lent.
  explicit BlockWriter(std::ostream& out) : m_out(out) {}

  /// Writes a block once it is full. Raises OutputError.
  void Append(std::string_view text);
  /// Writes what is collected and lets the stream write it on. Raises OutputError.
  void Flush();

 private:
  std::ostream& m_out;
  std::string m_block;
};
