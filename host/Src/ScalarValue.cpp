#include "ScalarValue.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "Host/BaseStringUtil.h"
#include "Host/SUSystemConfig.h"

namespace {

template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

/// A visitor for std::visit: the given functions, and "empty" for every type that none of them takes as it is.
template <class Result, class... Functions>
auto WithEmptyElse(Functions... functions) {
  return Overloaded{functions..., [](const auto&) -> std::optional<Result> { return std::nullopt; }};
}

template <class Value>
std::optional<Value> Parse(const KXString& text) {
  Value value;
  if (!Value::FromString(text, value)) return std::nullopt;
  return value;
}

std::optional<std::int32_t> NarrowToInteger(std::int64_t value) {
  if (value < INT32_MIN || value > INT32_MAX) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

std::optional<std::int32_t> TruncateToInteger(const KorvelNumber& number) {
  std::int64_t whole;
  if (!number.asInteger(whole)) return std::nullopt;
  return NarrowToInteger(whole);
}

std::optional<std::int32_t> TruncateToInteger(double value) {
  const double whole = std::trunc(value);
  if (!(whole >= INT32_MIN && whole <= INT32_MAX)) return std::nullopt;  // NaN too
  return static_cast<std::int32_t>(whole);
}

/// The nearest double of text in the form that KorvelNumber reads, but in the range of doubles.
std::optional<double> ParseFloat(const KXString& text) {
  std::string narrow = text.ToUTF8();
  narrow.erase(0, std::min(narrow.find_first_not_of(' '), narrow.size()));
  narrow.erase(narrow.find_last_not_of(' ') + 1);
  if (narrow.starts_with('+') && !narrow.starts_with("+-")) narrow.erase(0, 1);
  if (narrow.find_first_not_of("+-.0123456789eE") != narrow.npos) return std::nullopt;  // no names of infinities
  double value = 0;
  const auto [pEnd, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
  if (error == std::errc() && pEnd == narrow.data() + narrow.size()) return value;
  const auto number = Parse<KorvelNumber>(text);  // has the values too near to zero for a double
  if (!number) return std::nullopt;
  return number->asDouble();
}

std::optional<KXDate> ParseDate(const KXString& text) {
  const auto dateTime = Parse<KXDateTime>(text);
  if (!dateTime) return std::nullopt;
  return dateTime->GetDate();
}

std::optional<KXTime> ParseTime(const KXString& text) {
  if (const auto time = Parse<KXTime>(text)) return time;
  const auto dateTime = Parse<KXDateTime>(text);
  if (!dateTime) return std::nullopt;
  return dateTime->GetTime();
}

constexpr short kFullPrecision = 9;

template <class Value>
short PrecisionFor(const Value& value) {
  return value.nanosecond_ != 0 ? kFullPrecision : 0;
}

bool IsNumber(const ScalarValue& value) {
  return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value) ||
         std::holds_alternative<KorvelNumber>(value);
}

/// A double against a decimal, as the decimal that its shortest text says.
std::partial_ordering CompareDouble(double a, const KorvelNumber& b) {
  if (std::isnan(a)) return std::partial_ordering::unordered;
  KorvelNumber aAsNumber;
  if (!KorvelNumber::FromDouble(a, aAsNumber)) {  // beyond all decimals
    return a < 0 ? std::partial_ordering::less : std::partial_ordering::greater;
  }
  const int order = aAsNumber.compare(b);
  if (order != 0) return order <=> 0;
  // A double nearer to zero than any decimal became zero, but is not.
  return aAsNumber.IsZero() ? a <=> 0.0 : std::partial_ordering::equivalent;
}

std::partial_ordering CompareNumbers(const ScalarValue& a, const ScalarValue& b) {
  const auto* pA = std::get_if<double>(&a);
  const auto* pB = std::get_if<double>(&b);
  if (pA && pB) return *pA <=> *pB;
  if (pA) return CompareDouble(*pA, *ScalarConversion::ToNumber(b));
  if (pB) return 0 <=> CompareDouble(*pB, *ScalarConversion::ToNumber(a));
  return ScalarConversion::ToNumber(a)->compare(*ScalarConversion::ToNumber(b)) <=> 0;
}

std::partial_ordering CompareText(const KXString& a, const KXString& b) {
  if (SUSystemConfig::GetSystemConfig().IsCaseSensitive()) return a.compare(b) <=> 0;
  return BaseStringUtil::CaseInsensitiveCompare(a, b) <=> 0;
}

bool IsToken(const ScalarValue& value) {
  return std::visit(Overloaded{[](const KXDate& date) { return date.IsCurrentDateToken(); },
                               [](const KXTime& time) { return time.IsCurrentTimeToken(); },
                               [](const KXDateTime& dateTime) { return dateTime.IsCurrentDateTimeToken(); },
                               [](const auto&) { return false; }},
                    value);
}

/// Whether the value has a place among timestamps.
bool IsCalendar(const ScalarValue& value) {
  return std::holds_alternative<KXDate>(value) || std::holds_alternative<KXDateTime>(value);
}

}  // namespace

std::optional<std::int32_t> ScalarConversion::ToInteger(const ScalarValue& value) {
  return std::visit(WithEmptyElse<std::int32_t>([](std::int64_t integer) { return NarrowToInteger(integer); },
                                                [](double number) { return TruncateToInteger(number); },
                                                [](const KorvelNumber& number) { return TruncateToInteger(number); },
                                                [](const KXString& text) -> std::optional<std::int32_t> {
                                                  const auto number = Parse<KorvelNumber>(text);
                                                  return number ? TruncateToInteger(*number) : std::nullopt;
                                                }),
                    value);
}

std::optional<double> ScalarConversion::ToFloat(const ScalarValue& value) {
  return std::visit(
      WithEmptyElse<double>([](std::int64_t integer) { return std::optional(static_cast<double>(integer)); },
                            [](double number) { return std::optional(number); },
                            [](const KorvelNumber& number) { return std::optional(number.asDouble()); },
                            [](const KXString& text) { return ParseFloat(text); }),
      value);
}

std::optional<KorvelNumber> ScalarConversion::ToNumber(const ScalarValue& value) {
  return std::visit(WithEmptyElse<KorvelNumber>(
                        [](std::int64_t integer) { return std::optional(KorvelNumber::FromInteger(integer)); },
                        [](double number) -> std::optional<KorvelNumber> {
                          KorvelNumber result;
                          if (!KorvelNumber::FromDouble(number, result)) return std::nullopt;
                          return result;
                        },
                        [](const KorvelNumber& number) { return std::optional(number); },
                        [](const KXString& text) { return Parse<KorvelNumber>(text); }),
                    value);
}

std::optional<KXDate> ScalarConversion::ToDate(const ScalarValue& value) {
  return std::visit(WithEmptyElse<KXDate>([](const KXDate& date) { return std::optional(date); },
                                          [](const KXDateTime& dateTime) { return std::optional(dateTime.GetDate()); },
                                          [](const KXString& text) { return ParseDate(text); }),
                    value);
}

std::optional<KXTime> ScalarConversion::ToTime(const ScalarValue& value) {
  return std::visit(WithEmptyElse<KXTime>([](const KXTime& time) { return std::optional(time); },
                                          [](const KXDateTime& dateTime) { return std::optional(dateTime.GetTime()); },
                                          [](const KXString& text) { return ParseTime(text); }),
                    value);
}

std::optional<KXDateTime> ScalarConversion::ToDateTime(const ScalarValue& value) {
  return std::visit(WithEmptyElse<KXDateTime>(
                        [](const KXDate& date) {
                          return date.IsCurrentDateToken() ? std::nullopt : std::optional(KXDateTime(date, KXTime()));
                        },
                        [](const KXDateTime& dateTime) { return std::optional(dateTime); },
                        [](const KXString& text) { return Parse<KXDateTime>(text); }),
                    value);
}

KXString ScalarConversion::ToText(const ScalarValue& value) {
  return std::visit(
      Overloaded{[](std::monostate) { return KXString(); },
                 [](std::int64_t integer) { return BaseStringUtil::StringFrom(static_cast<long>(integer)); },
                 [](double number) { return BaseStringUtil::StringFrom(number, false); },
                 [](const KorvelNumber& number) { return number.asString(); },
                 [](const KXString& text) { return text; }, [](const KXDate& date) { return date.ToString(); },
                 [](const KXTime& time) { return time.ToString(PrecisionFor(time)); },
                 [](const KXDateTime& dateTime) { return dateTime.ToString(PrecisionFor(dateTime)); }},
      value);
}

std::partial_ordering ScalarConversion::Compare(const ScalarValue& a, const ScalarValue& b) {
  if (IsNumber(a) && IsNumber(b)) return CompareNumbers(a, b);
  if (IsToken(a) || IsToken(b)) {
    return a == b ? std::partial_ordering::equivalent : std::partial_ordering::unordered;
  }
  if (IsCalendar(a) && IsCalendar(b)) return *ToDateTime(a) <=> *ToDateTime(b);
  if (a.index() != b.index()) return std::partial_ordering::unordered;
  if (const auto* pText = std::get_if<KXString>(&a)) return CompareText(*pText, std::get<KXString>(b));
  if (const auto* pTime = std::get_if<KXTime>(&a)) return *pTime <=> std::get<KXTime>(b);
  return std::partial_ordering::equivalent;  // no value beside no value
}
