#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <variant>

#include "Host/KXDateTime.h"
#include "Host/KXString.h"
#include "Host/KorvelNumber.h"

/// A value of any scalar type, or none: the common ground on which properties and row fields convert and compare.
using ScalarValue =
    std::variant<std::monostate, std::int64_t, double, KorvelNumber, KXString, KXDate, KXTime, KXDateTime>;

/// The rules are told at PropertyValue. Empty if the value has no such form.
class ScalarConversion {
 public:
  static std::optional<std::int32_t> ToInteger(const ScalarValue& value);
  static std::optional<double> ToFloat(const ScalarValue& value);
  static std::optional<KorvelNumber> ToNumber(const ScalarValue& value);
  static std::optional<KXDate> ToDate(const ScalarValue& value);
  static std::optional<KXTime> ToTime(const ScalarValue& value);
  static std::optional<KXDateTime> ToDateTime(const ScalarValue& value);
  /// Times show nine digits of fraction if they have one, else none. No value is the empty text.
  static KXString ToText(const ScalarValue& value);

  /// The order told at TypedFieldValue; text is compared as the server's configuration says.
  static std::partial_ordering Compare(const ScalarValue& a, const ScalarValue& b);
};
