#include "rq/sql/SqlLexer.h"

#include <algorithm>

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWordStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool IsTagPart(char c) { return IsWordStart(c) || IsDigit(c); }
bool IsWordPart(char c) { return IsTagPart(c) || c == '$'; }

}  // namespace

SqlToken SqlLexer::Next() {
  SkipBlanksAndComments();
  SqlToken token{SqlToken::kEnd, m_at, m_at};
  if (m_at < m_text.size()) token.m_end = m_at = EndOfToken(token.m_kind);
  return token;
}

void SqlLexer::SkipBlanksAndComments() {
  while (m_at < m_text.size()) {
    if (IsBlank(m_text[m_at])) {
      ++m_at;
    } else if (m_text.substr(m_at, 2) == "--") {
      m_at = std::min(m_text.find_first_of("\r\n", m_at), m_text.size());
    } else if (m_text.substr(m_at, 2) == "/*") {
      SkipBlockComment();
    } else {
      return;
    }
  }
}

void SqlLexer::SkipBlockComment() {
  std::size_t depth = 0;
  do {
    const std::string_view pair = m_text.substr(m_at, 2);
    if (pair == "/*") {
      ++depth;
      m_at += 2;
    } else if (pair == "*/") {
      --depth;
      m_at += 2;
    } else {
      ++m_at;
    }
  } while (depth > 0 && m_at < m_text.size());
}

std::size_t SqlLexer::EndOfToken(SqlToken::Kind& kind) const {
  const char c = m_text[m_at];
  const char next = At(m_at + 1);
  kind = SqlToken::kQuoted;
  if (c == '\'' || c == '"') return EndOfQuoted(m_at, false);
  if (next == '\'' && std::string_view("bBnNxX").find(c) != std::string_view::npos) return EndOfQuoted(m_at + 1, false);
  if (next == '\'' && (c == 'e' || c == 'E')) return EndOfQuoted(m_at + 1, true);
  if (next == '&' && (c == 'u' || c == 'U') && (At(m_at + 2) == '\'' || At(m_at + 2) == '"')) {
    return EndOfQuoted(m_at + 2, false);
  }
  if (c == '$') {
    if (const std::size_t end = EndOfDollarQuoted(m_at); end != std::string_view::npos) return end;
  }
  if (c == '$' && IsDigit(next)) {
    kind = SqlToken::kParameter;
    return EndOfRun(m_at + 1, IsDigit);
  }
  if (IsWordStart(c)) {
    kind = SqlToken::kWord;
    return EndOfRun(m_at, IsWordPart);
  }
  if (IsDigit(c) || (c == '.' && IsDigit(next))) {
    kind = SqlToken::kNumber;
    return EndOfRun(m_at, [](char digit) { return IsDigit(digit) || digit == '.'; });
  }
  kind = SqlToken::kPunctuation;
  return m_at + 1;
}

std::size_t SqlLexer::EndOfQuoted(std::size_t quote, bool bBackslashEscapes) const {
  std::size_t at = quote + 1;
  while (at < m_text.size()) {
    if (bBackslashEscapes && m_text[at] == '\\') {
      at += 2;
    } else if (m_text[at] != m_text[quote]) {
      ++at;
    } else if (At(at + 1) == m_text[quote]) {
      at += 2;
    } else {
      return at + 1;
    }
  }
  return m_text.size();
}

std::size_t SqlLexer::EndOfDollarQuoted(std::size_t begin) const {
  if (IsDigit(At(begin + 1))) return std::string_view::npos;
  const std::size_t tagEnd = EndOfRun(begin + 1, IsTagPart);
  if (At(tagEnd) != '$') return std::string_view::npos;
  const std::string_view tag = m_text.substr(begin, tagEnd + 1 - begin);
  const std::size_t closing = m_text.find(tag, tagEnd + 1);
  return closing == std::string_view::npos ? m_text.size() : closing + tag.size();
}

template <class Predicate>
std::size_t SqlLexer::EndOfRun(std::size_t begin, Predicate predicate) const {
  const auto end = std::find_if_not(m_text.begin() + static_cast<std::ptrdiff_t>(begin), m_text.end(), predicate);
  return static_cast<std::size_t>(end - m_text.begin());
}
