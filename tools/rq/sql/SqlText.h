#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

/// What is wrong with a text of SQL, and the byte at which it stands.
class SqlError : public std::runtime_error {
 public:
  SqlError(std::size_t offset, const std::string& message) : std::runtime_error(message), m_offset(offset) {}

  std::size_t GetOffset() const { return m_offset; }

 private:
  std::size_t m_offset;
};

/// A place as an editor counts it: from 1, columns in characters (code points).
struct SqlPlace {
  std::size_t m_line = 1;
  std::size_t m_column = 1;
};

/// The place of a byte; that of the end if the offset is behind it.
SqlPlace PlaceOf(std::string_view text, std::size_t offset);

/// The line of a byte, indented by two blanks, and under it a caret; each ends with a line feed. Of a long line only
/// the surroundings are shown. The caret stands under its character where tabs are kept and wide characters fill two
/// cells, as they do on terminals; bytes that a terminal must not get are shown as U+FFFD.
std::string CaretText(std::string_view text, std::size_t offset);

/// "rq: where line 1, column 2: what is wrong", and under the line it is about the caret. The place is given since the
/// text may be a line of a longer one; without it, it is the place in the text.
std::string MessageText(const std::string& where, const SqlError& error, SqlPlace place, std::string_view text);
std::string MessageText(const std::string& where, const SqlError& error, std::string_view text);

/// Raises SqlError at the first byte that cannot be text: a zero byte, or one that begins no UTF-8 character.
void CheckIsText(std::string_view text);

/// The text without a character of which its end has a part only.
std::string_view WithoutCutCharacter(std::string_view text);

/// The text on one line for a message: control characters are blanks, and behind maxCharacters characters stands "...".
std::string ForMessage(std::string_view text, std::size_t maxCharacters);
