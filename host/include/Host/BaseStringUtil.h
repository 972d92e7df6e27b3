#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Host/KXString.h"
#include "Host/SystemUtility.h"

/// Conversions and comparisons of text. None of them depends on the locale of the process.
class BaseStringUtil {
 public:
  /// Decimal digits.
  static KXString StringFrom(int value);
  static KXString StringFrom(unsigned value);
  static KXString StringFrom(short value);
  static KXString StringFrom(unsigned short value);
  static KXString StringFrom(long value);
  static KXString StringFrom(unsigned long value);

  /// The shortest text that reads back as the same value and never reads as an integer: "10.0", "0.1", "1e+300". With
  /// `bFixed` never an exponent: 1e+21 is "1000000000000000000000.0". The values that no number stands for are "nan",
  /// "inf" and "-inf".
  static KXString StringFrom(double value, bool bFixed);

  static KXString StringFrom(std::string_view text, MultiByteCodePage codePage);

  /// Reads an optional sign (UIntFrom: no minus) and decimal digits with nothing around them. Empty if the text is
  /// something else or the number is out of range.
  static std::optional<int> IntFrom(std::wstring_view text);
  static std::optional<unsigned> UIntFrom(std::wstring_view text);
  /// Whether IntFrom reads the text.
  static bool IsInteger(std::wstring_view text) { return IntFrom(text).has_value(); }

  /// The case-insensitive family compares texts whose characters are each put in lower case, by Unicode's simple
  /// mapping, as unsigned numbers.
  static bool IsCaseInsensitiveMatch(std::wstring_view a, std::wstring_view b);
  static bool IsCaseInsensitiveLessThan(std::wstring_view a, std::wstring_view b) {
    return CaseInsensitiveCompare(a, b) < 0;
  }
  /// Negative, zero or positive.
  static int CaseInsensitiveCompare(std::wstring_view a, std::wstring_view b);
  /// Whether the text begins with the pattern, which is plain text.
  static bool CaseInsensitiveFindPatternAtStart(std::wstring_view text, std::wstring_view pattern);
  static wchar_t ToLower(wchar_t character);

  /// Without the blanks (U+0020 alone) at the end; the second form lends a part of its argument.
  static void TrimTrailingBlanks(KXString& text);
  static std::wstring_view TrimTrailingBlanks(std::wstring_view text);

  /// The text with `escape` put before each `character`. With both equal, the character is doubled.
  static KXString EscapeCharacter(std::wstring_view text, wchar_t character, wchar_t escape);

  /// To and from UTF-8, as KXString::ToUTF8 and FromUTF8.
  static std::string StringToStdString(const KXString& text) { return text.ToUTF8(); }
  static KXString StdStringToString(std::string_view text) { return KXString::FromUTF8(text); }
};
