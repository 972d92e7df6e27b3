#include "rq/sql/SqlText.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>

#include "Host/KXString.h"

namespace {

// How much of a long line is shown around the caret.
constexpr std::size_t kMaxCharactersBefore = 60;
constexpr std::size_t kMaxCharactersBehind = 40;

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "...";
constexpr std::string_view kIndentation = "  ";

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

bool IsControl(char32_t character) { return character < 0x20 || character == 0x7F; }

std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char byte) { return !IsContinuation(byte); }));
}

/// Bytes of the character that begins at an offset; 1 where none does.
std::size_t CharacterLength(std::string_view text, std::size_t offset) {
  const auto lead = static_cast<unsigned char>(text[offset]);
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 1;
  if (offset + length > text.size()) return 1;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text[offset + i])) return 1;
  }
  return length;
}

/// One character as it is shown: its bytes, or the replacement for what a terminal must not get, and its width in
/// cells.
struct ShownCharacter {
  std::string_view m_bytes;
  std::size_t m_width;
};

/// The cells of a terminal that a character fills, as the C library knows them; 1 for those that it does not know.
std::size_t WidthOf(wchar_t character) {
  static const locale_t s_utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (s_utf8 == nullptr) return 1;
  const locale_t previous = uselocale(s_utf8);
  const int width = wcwidth(character);
  uselocale(previous);
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

ShownCharacter Show(std::string_view bytes) {
  if (bytes == "\t") return {bytes, 1};
  KXString decoded;
  if (!KXString::FromUTF8Strict(bytes, decoded)) return {kReplacement, 1};
  const auto character = static_cast<char32_t>(decoded[0]);
  const bool bIsLatin1Control = character >= 0x80 && character < 0xA0;
  if (IsControl(character) || bIsLatin1Control) return {kReplacement, 1};
  return {bytes, WidthOf(decoded[0])};
}

std::size_t StepBack(std::string_view text, std::size_t offset, std::size_t nCharacters) {
  for (; offset > 0 && nCharacters > 0; --nCharacters) {
    --offset;
    while (offset > 0 && IsContinuation(text[offset])) --offset;
  }
  return offset;
}

std::size_t StepForward(std::string_view text, std::size_t offset, std::size_t nCharacters) {
  for (; offset < text.size() && nCharacters > 0; --nCharacters) offset += CharacterLength(text, offset);
  return offset;
}

}  // namespace

SqlPlace PlaceOf(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 without a line feed
  return {1 + static_cast<std::size_t>(std::ranges::count(before, '\n')),
          1 + CountCharacters(before.substr(lineStart))};
}

std::string CaretText(std::string_view text, std::size_t offset) {
  offset = std::min(offset, text.size());
  const std::size_t lineStart = text.substr(0, offset).rfind('\n') + 1;
  std::string_view line = text.substr(lineStart, text.find('\n', offset) - lineStart);
  if (line.ends_with('\r')) line.remove_suffix(1);
  const std::size_t caret = std::min(offset - lineStart, line.size());

  const std::size_t first = StepBack(line, caret, kMaxCharactersBefore);
  const std::size_t last = StepForward(line, caret, kMaxCharactersBehind);
  std::string shown(kIndentation);
  std::string marker(kIndentation);
  if (first > 0) {
    shown += kEllipsis;
    marker.append(kEllipsis.size(), ' ');
  }
  for (std::size_t at = first; at < last;) {
    const std::size_t length = CharacterLength(line, at);
    const ShownCharacter character = Show(line.substr(at, length));
    shown += character.m_bytes;
    if (at < caret) marker.append(character.m_width, line[at] == '\t' ? '\t' : ' ');
    at += length;
  }
  if (last < line.size()) shown += kEllipsis;
  return shown + '\n' + marker + "^\n";
}

std::string MessageText(const std::string& where, const SqlError& error, SqlPlace place, std::string_view text) {
  return "rq: " + where + "line " + std::to_string(place.m_line) + ", column " + std::to_string(place.m_column) + ": " +
         error.what() + '\n' + CaretText(text, error.GetOffset());
}

std::string MessageText(const std::string& where, const SqlError& error, std::string_view text) {
  return MessageText(where, error, PlaceOf(text, error.GetOffset()), text);
}

void CheckIsText(std::string_view text) {
  if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) {
    throw SqlError(zero, "a zero byte is not text");
  }
  if (std::ranges::all_of(text, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; })) return;
  KXString decoded;
  std::size_t errorOffset = 0;
  if (!KXString::FromUTF8Strict(text, decoded, &errorOffset)) throw SqlError(errorOffset, "this is not UTF-8");
}

std::string_view WithoutCutCharacter(std::string_view text) {
  if (text.empty()) return text;
  const std::size_t last = StepBack(text, text.size(), 1);
  const bool bIsCut = static_cast<unsigned char>(text[last]) >= 0xC0 && CharacterLength(text, last) == 1;
  return bIsCut ? text.substr(0, last) : text;
}

std::string ForMessage(std::string_view text, std::size_t maxCharacters) {
  const std::size_t end = StepForward(text, 0, maxCharacters);
  std::string shown(text.substr(0, end));
  std::ranges::replace_if(
      shown, [](char c) { return IsControl(static_cast<unsigned char>(c)); }, ' ');
  return end < text.size() ? shown.append(kEllipsis) : shown;
}
