#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string_view>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

/// An exact decimal number: zero, or 39 to 40 significant digits from 1E-126 to just below 1E+128 in magnitude.
///
/// The digits are pairs, base 100, around a point behind the first pair: m_aLnxnum[0] is the head, which holds sign and
/// exponent, and each byte behind it one pair from 0 to 99. The head is 128 for zero, 192 + e for a positive number
/// whose first pair counts 100^e, and 64 - e for a negative one, with e from -63 to 63. So heads are ordered as the
/// numbers are, and within one head the pairs decide.
///
/// Invariant: the first and the last pair are not 0, m_nLnxsize is the number of bytes used (1 to 21), unused bytes are
/// 0. So equal numbers have equal fields.
class KorvelNumber {
 public:
  static constexpr int kMaxBytes = 21;
  static constexpr int kMaxPairs = kMaxBytes - 1;
  static constexpr int kMaxExponent = 63;

  /// Zero.
  constexpr KorvelNumber() = default;

  static const KorvelNumber& zero();
  static KorvelNumber FromInteger(std::int64_t value);

  /// Reads an optional sign, digits with at most one point, and an optional exponent ("e", an optional sign, digits),
  /// with blanks allowed around the whole. Digits behind the last pair that fits are rounded, a half away from zero; a
  /// number too small for the range becomes zero. Text of any other form, and a number too large, give false and leave
  /// `number` as it was.
  static bool FromString(std::wstring_view text, KorvelNumber& number);

  /// The number that the shortest text of the double says: 0.1 becomes exactly 0.1. Rounding and range are those of
  /// FromString; NaN and the infinities give false.
  static bool FromDouble(double value, KorvelNumber& number);

  /// Negative, zero or positive, exactly: no step goes through a double.
  int compare(const KorvelNumber& rhs) const;

  bool IsZero() const { return m_aLnxnum[0] == kZeroHead; }
  bool IsNegative() const { return m_aLnxnum[0] < kZeroHead; }

  /// The nearest double.
  double asDouble() const;

  /// The whole part, cut off towards zero; false, with `value` as it was, if it does not fit.
  bool asInteger(std::int64_t& value) const;

  /// The number as text. The format is one of:
  ///   ""    exact; plain digits for a magnitude from 1E-20 to below 1E+40, else as "E"
  ///   "E"   exact, in the form "-1.25E+60"
  ///   "Fn"  plain, with n (0 to 126) digits behind the point, a half rounded away from zero
  /// The exact forms read back as the same number. Another format is a logic error.
  KXString asString(std::wstring_view format = {}) const;

  void ToByteVector(ByteVector& bv) const;
  /// Raises an ErrorMessage if the bytes are not those of a number in its one form.
  const_iterator FromByteVector(const_iterator start);

  friend bool operator==(const KorvelNumber&, const KorvelNumber&) = default;
  friend std::strong_ordering operator<=>(const KorvelNumber& a, const KorvelNumber& b) { return a.compare(b) <=> 0; }

 private:
  static constexpr std::uint8_t kZeroHead = 128;
  static constexpr int kHeadOfOne = 64;  ///< distance of the heads of 1 and -1 from that of zero

  class Decimal;

  /// Of a number that is not zero.
  int GetExponent() const {
    return IsNegative() ? kZeroHead - kHeadOfOne - m_aLnxnum[0] : m_aLnxnum[0] - kZeroHead - kHeadOfOne;
  }
  bool IsNormalised() const;

  std::int32_t m_nLnxsize = 1;
  std::array<std::uint8_t, kMaxBytes> m_aLnxnum{kZeroHead};
};
