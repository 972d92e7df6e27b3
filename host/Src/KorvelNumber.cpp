#include "Host/KorvelNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"

namespace {

constexpr int kBase = 100;
constexpr int kMaxFixedDigits = 126;
/// Decimal exponents of the first digit from which to which the exact text is plain.
constexpr int kMinPlainExponent = -20;
constexpr int kMaxPlainExponent = 39;
/// Beyond every exponent that matters, and small enough that sums with text lengths cannot overflow.
constexpr std::int64_t kHugeExponent = 1'000'000'000'000;

bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

std::wstring_view TrimBlanks(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(L' ');
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

/// Takes a sign off the front; true if it is a minus.
bool TakeSign(std::wstring_view& text) {
  if (text.empty() || (text.front() != L'-' && text.front() != L'+')) return false;
  const bool bMinus = text.front() == L'-';
  text.remove_prefix(1);
  return bMinus;
}

/// Reads a sign and digits to the end of the text. Numbers beyond kHugeExponent are cut to it.
bool ReadExponent(std::wstring_view text, std::int64_t& exponent) {
  const bool bMinus = TakeSign(text);
  if (text.empty() || !std::ranges::all_of(text, IsDigit)) return false;
  std::int64_t magnitude = 0;
  for (const wchar_t digit : text) magnitude = std::min(magnitude * 10 + (digit - L'0'), kHugeExponent);
  exponent = bMinus ? -magnitude : magnitude;
  return true;
}

}  // namespace

/// A number on its way in or out: sign * 0.D * 10^E with the digits D, of any length, the first of them not 0. No
/// digits stand for zero.
class KorvelNumber::Decimal {
 public:
  Decimal() = default;
  explicit Decimal(const KorvelNumber& number);
  Decimal(bool bNegative, std::uint64_t magnitude)
      : m_bNegative(bNegative), m_digits(std::to_string(magnitude)), m_exponent(std::ssize(m_digits)) {
    StripZeros();
  }

  bool Read(std::wstring_view text);
  bool ToNumber(KorvelNumber& number) const;

  /// Exponent of the first digit, as in d.ddd * 10^x.
  std::int64_t FirstDigitExponent() const { return m_exponent - 1; }
  std::int64_t GetExponent() const { return m_exponent; }
  const std::string& GetDigits() const { return m_digits; }

  /// Keeps nDigits digits behind the point, a half rounded away from zero.
  void RoundToFraction(int nDigits);
  std::string ToPlainText(int minFractionDigits) const;
  std::string ToScientificText() const;

 private:
  void StripZeros();

  bool m_bNegative = false;
  std::string m_digits;
  std::int64_t m_exponent = 0;
};

KorvelNumber::Decimal::Decimal(const KorvelNumber& number) {
  if (number.IsZero()) return;
  m_bNegative = number.IsNegative();
  m_exponent = std::int64_t{2} * (number.GetExponent() + 1);
  for (int pair = 1; pair < number.m_nLnxsize; ++pair) {
    m_digits.push_back(static_cast<char>('0' + number.m_aLnxnum[pair] / 10));
    m_digits.push_back(static_cast<char>('0' + number.m_aLnxnum[pair] % 10));
  }
  StripZeros();
}

void KorvelNumber::Decimal::StripZeros() {
  const std::size_t leading = std::min(m_digits.find_first_not_of('0'), m_digits.size());
  m_digits.erase(0, leading);
  m_exponent -= static_cast<std::int64_t>(leading);
  m_digits.erase(m_digits.find_last_not_of('0') + 1);
  if (m_digits.empty()) *this = Decimal();
}

bool KorvelNumber::Decimal::Read(std::wstring_view text) {
  text = TrimBlanks(text);
  m_bNegative = TakeSign(text);
  bool bPoint = false;
  std::size_t place = 0;
  for (; place < text.size(); ++place) {
    if (IsDigit(text[place])) {
      m_digits.push_back(static_cast<char>(text[place]));
      if (!bPoint) ++m_exponent;
    } else if (text[place] == L'.' && !bPoint) {
      bPoint = true;
    } else {
      break;
    }
  }
  if (m_digits.empty()) return false;
  if (place < text.size()) {
    std::int64_t exponent;
    if (text[place] != L'e' && text[place] != L'E') return false;
    if (!ReadExponent(text.substr(place + 1), exponent)) return false;
    m_exponent += exponent;
  }
  StripZeros();
  return true;
}

/// Cuts the digits into pairs around the point and rounds behind the last pair that fits.
/// Ensures: a normalised number and true, or false with the number as it was if it is too large.
bool KorvelNumber::Decimal::ToNumber(KorvelNumber& number) const {
  KorvelNumber result;
  std::int64_t exponent = FirstDigitExponent() >> 1;  // towards minus infinity, also below zero
  std::string digits = (FirstDigitExponent() & 1) ? m_digits : "0" + m_digits;
  digits.resize(std::max(digits.size(), std::size_t{2} * (kMaxPairs + 1)), '0');
  const auto pairAt = [&digits](std::size_t pair) {
    return (digits[2 * pair] - '0') * 10 + (digits[2 * pair + 1] - '0');
  };

  std::array<std::uint8_t, kMaxPairs> pairs;
  bool bCarry = pairAt(kMaxPairs) >= kBase / 2;
  for (std::size_t pair = kMaxPairs; pair-- > 0;) {
    const int value = pairAt(pair) + (bCarry ? 1 : 0);
    bCarry = value == kBase;
    pairs[pair] = static_cast<std::uint8_t>(bCarry ? 0 : value);
  }
  if (bCarry) {  // all pairs were 99 and are 0 now
    pairs[0] = 1;
    ++exponent;
  }
  if (exponent > kMaxExponent && !m_digits.empty()) return false;
  if (exponent >= -kMaxExponent && !m_digits.empty()) {
    const int head = kHeadOfOne + static_cast<int>(exponent);
    result.m_aLnxnum[0] = static_cast<std::uint8_t>(m_bNegative ? kZeroHead - head : kZeroHead + head);
    std::ranges::copy(pairs, result.m_aLnxnum.begin() + 1);
    result.m_nLnxsize = kMaxBytes;
    while (result.m_aLnxnum[result.m_nLnxsize - 1] == 0) --result.m_nLnxsize;
  }
  number = result;
  return true;
}

void KorvelNumber::Decimal::RoundToFraction(int nDigits) {
  const std::int64_t kept = m_exponent + nDigits;
  if (kept >= std::ssize(m_digits)) return;
  const bool bUp = kept >= 0 && m_digits[kept] >= '5';
  m_digits.resize(std::max<std::int64_t>(kept, 0));
  if (bUp) {
    std::size_t place = m_digits.size();
    while (place > 0 && m_digits[place - 1] == '9') m_digits[--place] = '0';
    if (place > 0) {
      ++m_digits[place - 1];
    } else {
      m_digits.insert(0, 1, '1');
      ++m_exponent;
    }
  }
  StripZeros();
}

std::string KorvelNumber::Decimal::ToPlainText(int minFractionDigits) const {
  const auto wholeDigits = static_cast<std::size_t>(std::max<std::int64_t>(m_exponent, 0));
  const auto leadingZeros = static_cast<std::size_t>(std::max<std::int64_t>(-m_exponent, 0));
  std::string whole = m_digits.substr(0, wholeDigits);
  whole.resize(wholeDigits, '0');
  std::string fraction(leadingZeros, '0');
  if (m_digits.size() > wholeDigits) fraction += m_digits.substr(wholeDigits);
  fraction.resize(std::max<std::size_t>(fraction.size(), minFractionDigits), '0');

  std::string text = m_bNegative ? "-" : "";
  text += whole.empty() ? "0" : whole;
  if (!fraction.empty()) text += "." + fraction;
  return text;
}

std::string KorvelNumber::Decimal::ToScientificText() const {
  if (m_digits.empty()) return "0E+0";
  std::string text = m_bNegative ? "-" : "";
  text += m_digits.front();
  if (m_digits.size() > 1) text += "." + m_digits.substr(1);
  text += FirstDigitExponent() < 0 ? "E" : "E+";
  return text + std::to_string(FirstDigitExponent());
}

const KorvelNumber& KorvelNumber::zero() {
  static constexpr KorvelNumber kZero;
  return kZero;
}

KorvelNumber KorvelNumber::FromInteger(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  KorvelNumber number;
  Decimal(value < 0, value < 0 ? 0 - bits : bits).ToNumber(number);
  return number;
}

bool KorvelNumber::FromString(std::wstring_view text, KorvelNumber& number) {
  Decimal decimal;
  return decimal.Read(text) && decimal.ToNumber(number);
}

bool KorvelNumber::FromDouble(double value, KorvelNumber& number) {
  if (!std::isfinite(value)) return false;
  char shortest[32];
  const auto [pEnd, error] = std::to_chars(std::begin(shortest), std::end(shortest), value);
  KX_ASSERT(error == std::errc());
  return FromString(std::wstring(std::begin(shortest), pEnd), number);
}

int KorvelNumber::compare(const KorvelNumber& rhs) const {
  if (m_aLnxnum[0] != rhs.m_aLnxnum[0]) return m_aLnxnum[0] < rhs.m_aLnxnum[0] ? -1 : 1;
  // Under one head the digits decide, and of two negative numbers the one with the larger digits is less.
  const KorvelNumber& first = IsNegative() ? rhs : *this;
  const KorvelNumber& second = IsNegative() ? *this : rhs;
  return std::memcmp(first.m_aLnxnum.data(), second.m_aLnxnum.data(), kMaxBytes);
}

double KorvelNumber::asDouble() const {
  const std::string text = Decimal(*this).ToScientificText();
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

bool KorvelNumber::asInteger(std::int64_t& value) const {
  constexpr int kMaxDigits = 19;
  const Decimal decimal(*this);
  if (decimal.GetExponent() > kMaxDigits) return false;
  std::string digits = decimal.GetDigits();
  digits.resize(static_cast<std::size_t>(std::max<std::int64_t>(decimal.GetExponent(), 0)), '0');
  std::uint64_t magnitude = 0;
  for (const char digit : digits) magnitude = magnitude * 10 + static_cast<std::uint64_t>(digit - '0');
  const std::uint64_t limit = static_cast<std::uint64_t>(INT64_MAX) + (IsNegative() ? 1 : 0);
  if (magnitude > limit) return false;
  value = static_cast<std::int64_t>(IsNegative() ? 0 - magnitude : magnitude);
  return true;
}

KXString KorvelNumber::asString(std::wstring_view format) const {
  Decimal decimal(*this);
  if (format.empty()) {
    const std::int64_t exponent = decimal.FirstDigitExponent();
    const bool bPlain = IsZero() || (exponent >= kMinPlainExponent && exponent <= kMaxPlainExponent);
    return BaseStringUtil::StdStringToString(bPlain ? decimal.ToPlainText(0) : decimal.ToScientificText());
  }
  if (format == L"E") return BaseStringUtil::StdStringToString(decimal.ToScientificText());
  const auto digits = BaseStringUtil::UIntFrom(format.substr(1));
  KX_ASSERT_TEXT(format.front() == L'F' && digits && *digits <= kMaxFixedDigits, L"unknown number format");
  decimal.RoundToFraction(static_cast<int>(*digits));
  return BaseStringUtil::StdStringToString(decimal.ToPlainText(static_cast<int>(*digits)));
}

void KorvelNumber::ToByteVector(ByteVector& bv) const {
  bv.push_back(static_cast<std::uint8_t>(m_nLnxsize));
  bv.insert(bv.end(), m_aLnxnum.begin(), m_aLnxnum.begin() + m_nLnxsize);
}

bool KorvelNumber::IsNormalised() const {
  if (m_nLnxsize == 1) return IsZero();
  return m_aLnxnum[0] != 0 && !IsZero() && m_aLnxnum[1] != 0 && m_aLnxnum[m_nLnxsize - 1] != 0 &&
         std::all_of(m_aLnxnum.begin() + 1, m_aLnxnum.end(), [](std::uint8_t pair) { return pair < kBase; });
}

const_iterator KorvelNumber::FromByteVector(const_iterator start) {
  std::uint8_t size;
  start = DataBlobUtil::FromByteVector(start, size);
  KorvelNumber result;
  if (size >= 1 && size <= kMaxBytes) {
    DataBlobUtil::RequireReadable(start, size);
    std::copy_n(start, size, result.m_aLnxnum.begin());
    result.m_nLnxsize = size;
    if (result.IsNormalised()) {
      *this = result;
      return start + size;
    }
  }
  DataBlobUtil::RaiseMalformed(start, L"number");
}
