#include "rq/ConditionStream.h"

#include <cerrno>
#include <fstream>
#include <new>
#include <optional>
#include <ostream>
#include <system_error>

#include "Host/ErrorMessage.h"
#include "rq/CommandLine.h"
#include "rq/NormalForm.h"
#include "rq/io/BlockWriter.h"
#include "rq/io/LineReader.h"
#include "rq/io/Progress.h"
#include "rq/sql/SqlParser.h"
#include "rq/sql/SqlText.h"

namespace {

bool IsPassedOver(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\f\v\r");
  return first == std::string_view::npos || line.substr(first).starts_with("--");
}

/// Reads conditions line by line and writes what becomes of them.
class ConditionStream {
 public:
  ConditionStream(std::istream& in, const ConditionStreamOptions& options, CommandStreams& streams)
      : m_reader(in, kMaxSqlBytes + 1),
        m_options(options),
        m_writer(streams.m_out),
        m_err(streams.m_err),
        // The results themselves show how far it has come, where they go to the same terminal.
        m_progress(streams.m_err, streams.m_bErrIsTerminal && !streams.m_bOutIsTerminal) {}

  /// Whether no line had an error.
  bool Run() {
    while (ReadLine()) {
      if (IsPassedOver(m_reader.GetLine())) continue;
      const bool bGood = TakeLine();
      m_bAllGood &= bGood;
      m_progress.Advance(!bGood);
    }
    m_writer.Flush();
    return m_bAllGood;
  }

 private:
  bool ReadLine() {
    // Whoever writes the lines may wait for the results of those that came.
    if (m_reader.MayWait()) m_writer.Flush();
    try {
      return m_reader.Next();
    } catch (const std::ios_base::failure& error) {
      m_writer.Flush();
      throw std::system_error(error.code(), "cannot read " + m_options.m_name);
    }
  }

  /// False if the line has an error.
  bool TakeLine() {
    const std::optional<std::string> text = Convert();
    if (!text) return false;
    if (m_bNeedsSeparator) m_writer.Append("\n");
    m_bNeedsSeparator = !m_options.m_bJson;
    m_writer.Append(*text);
    return true;
  }

  /// What goes wrong with one line ends in its place, whatever it is.
  std::optional<std::string> Convert() {
    try {
      return m_options.m_convert(m_reader.GetLine());
    } catch (const SqlError& error) {
      TakeError(error);
    } catch (const ErrorMessage& error) {
      TakeError(SqlError(0, error.GetText().ToUTF8()));
    } catch (const std::bad_alloc&) {
      TakeError(SqlError(0, "there is not enough memory for this condition"));
    } catch (const std::exception& error) {
      TakeError(SqlError(0, error.what()));
    }
    return std::nullopt;
  }

  void TakeError(const SqlError& error) {
    const std::string& line = m_reader.GetLine();
    const SqlPlace place{m_reader.GetLineNumber(), PlaceOf(line, error.GetOffset()).m_column};
    if (m_options.m_bJson) {
      m_writer.Append(ErrorObject(error.what(), place.m_line, place.m_column));
    } else {
      m_progress.Clear();
      m_err << MessageText(m_options.m_name + ", ", error, place, line);
    }
  }

  LineReader m_reader;
  const ConditionStreamOptions& m_options;
  BlockWriter m_writer;
  std::ostream& m_err;
  Progress m_progress;
  bool m_bNeedsSeparator = false;
  bool m_bAllGood = true;
};

}  // namespace

bool RunConditionStream(std::istream& in, const ConditionStreamOptions& options, CommandStreams& streams) {
  return ConditionStream(in, options, streams).Run();
}

bool RunConditionFile(const std::string& file, const ConditionStreamOptions& options, CommandStreams& streams) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw std::system_error(errno, std::generic_category(), "cannot read " + file);
  return RunConditionStream(in, options, streams);
}
