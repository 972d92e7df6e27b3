#pragma once

#include <cstddef>
#include <string_view>

/// A token of SQL: the bytes [m_begin, m_end) of the text.
struct SqlToken {
  enum Kind {
    kEnd,          ///< The end of the text.
    kWord,         ///< A key word or a name without quotes.
    kNumber,       ///< A number without a sign.
    kQuoted,       ///< A string or a quoted name, in any of their spellings, with its prefix.
    kParameter,    ///< $ and digits.
    kPunctuation,  ///< Any other character, alone.
  };

  Kind m_kind;
  std::size_t m_begin;
  std::size_t m_end;
};

/// Takes a text apart as PostgreSQL's scanner does, so far as strings, quoted names, comments and words go: enough to
/// tell what stands in quotes from what does not. Operators come character by character. It never fails: what is not
/// closed goes to the end of the text.
class SqlLexer {
 public:
  /// The text is lent.
  explicit SqlLexer(std::string_view text, std::size_t begin = 0) : m_text(text), m_at(begin) {}

  SqlToken Next();

 private:
  void SkipBlanksAndComments();
  void SkipBlockComment();
  std::size_t EndOfToken(SqlToken::Kind& kind) const;
  std::size_t EndOfQuoted(std::size_t quote, bool bBackslashEscapes) const;
  /// The end of a dollar-quoted string; npos if none begins there.
  std::size_t EndOfDollarQuoted(std::size_t begin) const;
  template <class Predicate>
  std::size_t EndOfRun(std::size_t begin, Predicate predicate) const;
  char At(std::size_t i) const { return i < m_text.size() ? m_text[i] : '\0'; }

  std::string_view m_text;
  std::size_t m_at;
};
