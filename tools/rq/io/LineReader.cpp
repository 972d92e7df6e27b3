#include "rq/io/LineReader.h"

#include <istream>
#include <streambuf>

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

bool LineReader::Next() {
  using Traits = std::streambuf::traits_type;
  std::streambuf& buffer = *m_in.rdbuf();
  m_line.clear();
  auto next = buffer.sbumpc();
  if (Traits::eq_int_type(next, Traits::eof())) return false;
  ++m_lineNumber;
  for (; !Traits::eq_int_type(next, Traits::eof()); next = buffer.sbumpc()) {
    const char c = Traits::to_char_type(next);
    if (c == '\n') break;
    if (m_line.size() < m_maxBytes) m_line += c;
  }
  if (m_line.ends_with('\r')) m_line.pop_back();
  if (m_lineNumber == 1 && m_line.starts_with(kByteOrderMark)) m_line.erase(0, kByteOrderMark.size());
  return true;
}

bool LineReader::MayWait() const { return m_in.rdbuf()->in_avail() <= 0; }
