#include "Host/BaseStringUtil.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

KXString Widen(std::string_view ascii) { return KXString::FromUTF8(ascii); }

template <class Integer>
KXString DigitsOf(Integer value) {
  char buffer[std::numeric_limits<Integer>::digits10 + 3];
  return Widen({buffer, std::to_chars(std::begin(buffer), std::end(buffer), value).ptr});
}

/// The character as the unsigned number that it is ordered by.
constexpr std::uint32_t ToCode(wchar_t character) { return static_cast<std::uint32_t>(character); }

/// The power of ten of the first digit of a finite value.
int DecimalExponent(double value) {
  char buffer[32];
  const char* const end = std::to_chars(std::begin(buffer), std::end(buffer), value, std::chars_format::scientific).ptr;
  const char* sign = std::find(buffer, buffer + (end - buffer), 'e') + 1;
  if (*sign == '+') ++sign;
  int exponent = 0;
  std::from_chars(sign, end, exponent);
  return exponent;
}

template <class Integer>
std::optional<Integer> ReadInteger(std::wstring_view text) {
  // from_chars knows no plus sign; a second sign behind it is none of a number either.
  if (text.starts_with(L'+')) {
    text.remove_prefix(1);
    if (text.starts_with(L'-')) return std::nullopt;
  }
  std::string narrow;
  narrow.reserve(text.size());
  for (const wchar_t c : text) {
    if (static_cast<std::uint32_t>(c) >= 0x80) return std::nullopt;
    narrow.push_back(static_cast<char>(c));
  }
  Integer value{};
  const auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
  if (error != std::errc() || end != narrow.data() + narrow.size()) return std::nullopt;
  return value;
}

}  // namespace

KXString BaseStringUtil::StringFrom(int value) { return DigitsOf(value); }
KXString BaseStringUtil::StringFrom(unsigned value) { return DigitsOf(value); }
KXString BaseStringUtil::StringFrom(short value) { return DigitsOf(value); }
KXString BaseStringUtil::StringFrom(unsigned short value) { return DigitsOf(value); }
KXString BaseStringUtil::StringFrom(long value) { return DigitsOf(value); }
KXString BaseStringUtil::StringFrom(unsigned long value) { return DigitsOf(value); }

KXString BaseStringUtil::StringFrom(double value, bool bFixed) {
  if (std::isnan(value)) return L"nan";
  if (std::isinf(value)) return value < 0 ? L"-inf" : L"inf";
  const int exponent = DecimalExponent(value);
  const bool bExponent = !bFixed && (exponent < -5 || exponent > 15);
  char buffer[400];  // the smallest value has 324 digits behind the point, the largest 309 before it
  const auto format = bExponent ? std::chars_format::scientific : std::chars_format::fixed;
  const std::string_view text(buffer, std::to_chars(std::begin(buffer), std::end(buffer), value, format).ptr);
  const bool bReadsAsInteger = !bExponent && text.find('.') == std::string_view::npos;
  return Widen(text) + (bReadsAsInteger ? L".0" : L"");
}

KXString BaseStringUtil::StringFrom(std::string_view text, MultiByteCodePage codePage) {
  if (codePage == kCodePageUtf8) return KXString::FromUTF8(text);
  KXString wide;
  wide.reserve(text.size());
  for (const char c : text) wide.append(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  return wide;
}

std::optional<int> BaseStringUtil::IntFrom(std::wstring_view text) { return ReadInteger<int>(text); }
std::optional<unsigned> BaseStringUtil::UIntFrom(std::wstring_view text) { return ReadInteger<unsigned>(text); }

wchar_t BaseStringUtil::ToLower(wchar_t character) {
  if (character >= L'A' && character <= L'Z') return character + (L'a' - L'A');
  if (static_cast<std::uint32_t>(character) < 0x80) return character;
  // A locale of its own, since the process's may know ASCII alone. Without it, ASCII is what is left.
  static const locale_t s_unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return s_unicode ? static_cast<wchar_t>(towlower_l(static_cast<wint_t>(character), s_unicode)) : character;
}

int BaseStringUtil::CaseInsensitiveCompare(std::wstring_view a, std::wstring_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] == b[i]) continue;
    const std::uint32_t lowerA = ToCode(ToLower(a[i]));
    const std::uint32_t lowerB = ToCode(ToLower(b[i]));
    if (lowerA != lowerB) return lowerA < lowerB ? -1 : 1;
  }
  return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

bool BaseStringUtil::IsCaseInsensitiveMatch(std::wstring_view a, std::wstring_view b) {
  return a.size() == b.size() && CaseInsensitiveCompare(a, b) == 0;
}

bool BaseStringUtil::CaseInsensitiveFindPatternAtStart(std::wstring_view text, std::wstring_view pattern) {
  return IsCaseInsensitiveMatch(text.substr(0, pattern.size()), pattern);
}

std::wstring_view BaseStringUtil::TrimTrailingBlanks(std::wstring_view text) {
  return text.substr(0, text.find_last_not_of(L' ') + 1);
}

void BaseStringUtil::TrimTrailingBlanks(KXString& text) {
  const std::wstring_view trimmed = TrimTrailingBlanks(text.view());
  if (trimmed.size() != text.size()) text.assign(trimmed);
}

KXString BaseStringUtil::EscapeCharacter(std::wstring_view text, wchar_t character, wchar_t escape) {
  KXString escaped;
  escaped.reserve(text.size());
  for (const wchar_t c : text) {
    if (c == character) escaped.append(escape);
    escaped.append(c);
  }
  return escaped;
}
