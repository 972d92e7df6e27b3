#pragma once

#include <compare>
#include <cstdint>
#include <string_view>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

// Dates, times and timestamps: plain records that may lie in a row buffer as they are.
//
// A value is either a calendar value or the dynamic token of its type, which stands for the current date, time or
// timestamp until execution resolves it. The fields may hold anything; IsValid tells whether they are a calendar value.
// The calendar is the Gregorian one, carried back to the year 1; years run from 1 to 9999. There is no year 0, there
// are no years before it and no leap seconds: neither SQL literals nor the target databases agree on any of them.
//
// Values are ordered field by field from the largest unit. A token equals only itself and is above every calendar
// value: an order for containers, which says nothing about the moment that the token will stand for.

/// A day.
struct KXDate {
  std::int16_t year_ = 0;
  std::uint16_t month_ = 0;  ///< from 1
  std::uint16_t day_ = 0;    ///< from 1

  /// No day: all fields zero.
  constexpr KXDate() = default;
  constexpr KXDate(std::int16_t year, std::uint16_t month, std::uint16_t day) : year_(year), month_(month), day_(day) {}

  bool IsValid() const;
  static bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }
  /// 28 to 31; 0 if the month is none.
  static int GetDaysInMonth(int year, int month);

  constexpr bool IsCurrentDateToken() const;
  void SetAsDynamicCurrDateToken();

  /// "yyyy-mm-dd"; the token is "CURRENT_DATE". Fields outside the calendar are printed as they are.
  KXString ToString() const;
  /// Reads "yyyy-mm-dd"; month and day may have one digit, blanks may stand around. Text that is no day of the calendar
  /// gives false and leaves `date` as it was; so does the text of the token.
  static bool FromString(std::wstring_view text, KXDate& date);

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend constexpr auto operator<=>(const KXDate&, const KXDate&) = default;
};

/// A time of day.
struct KXTime {
  std::uint16_t hour_ = 0;
  std::uint16_t minute_ = 0;
  std::uint16_t second_ = 0;
  std::uint32_t nanosecond_ = 0;

  /// Midnight.
  constexpr KXTime() = default;
  constexpr KXTime(std::uint16_t hour, std::uint16_t minute, std::uint16_t second, std::uint32_t nanosecond = 0)
      : hour_(hour), minute_(minute), second_(second), nanosecond_(nanosecond) {}

  bool IsValid() const;

  int GetHour() const { return hour_; }
  int GetMinute() const { return minute_; }
  int GetSecond() const { return second_; }

  constexpr bool IsCurrentTimeToken() const;
  void SetAsDynamicCurrTimeToken();

  /// "hh:mm:ss", and behind a point the first nPrecision digits of the second's fraction: none for 0 or less, at
  /// most 9. The fraction is cut off, not rounded, so that a time never turns into a later second. The token is
  /// "CURRENT_TIME".
  KXString ToString(short nPrecision = 0) const;
  /// Reads "hh:mm", "hh:mm:ss" or "hh:mm:ss.f" with one to nine digits of fraction; each other number may have one
  /// digit, blanks may stand around. Text that is no time of day gives false and leaves `time` as it was.
  static bool FromString(std::wstring_view text, KXTime& time);

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend constexpr auto operator<=>(const KXTime&, const KXTime&) = default;
};

/// A moment: a day and a time of day, in no particular time zone.
struct KXDateTime {
  /// The units in which timestamps are counted up and subtracted.
  enum UnitOfTime : std::uint32_t { kMillisecond, kSecond, kMinute, kHour, kDay, kWeek, kMonth, kQuarter, kYear };
  static constexpr std::uint32_t kNumUnitsOfTime = kYear + 1;

  /// What a calendar or fiscal extraction takes out of a timestamp.
  enum ExtractOpcode : std::uint32_t {
    kExtractDayOfWeek,
    kExtractNameOfDay,
    kExtractYear,
    kExtractMonth,
    kExtractDay,
    kExtractHour,
    kExtractMinute,
    kExtractSecond,
    kExtractWeekOfYear,
    kExtractDayOfYear,
    kExtractMonthOfQuarter,
    kExtractWeekOfQuarter,
    kExtractDayOfQuarter,
    kExtractWeekOfMonth,
    kExtractNameOfMonth,
    kExtractQuarterOfYear
  };
  static constexpr std::uint32_t kNumExtractOpcodes = kExtractQuarterOfYear + 1;

  std::int16_t year_ = 0;
  std::uint16_t month_ = 0;
  std::uint16_t day_ = 0;
  std::uint16_t hour_ = 0;
  std::uint16_t minute_ = 0;
  std::uint16_t second_ = 0;
  std::uint32_t nanosecond_ = 0;

  /// No moment: all fields zero.
  constexpr KXDateTime() = default;
  constexpr KXDateTime(std::int16_t year, std::uint16_t month, std::uint16_t day, std::uint16_t hour,
                       std::uint16_t minute, std::uint16_t second, std::uint32_t nanosecond = 0)
      : year_(year), month_(month), day_(day), hour_(hour), minute_(minute), second_(second), nanosecond_(nanosecond) {}
  constexpr KXDateTime(const KXDate& date, const KXTime& time)
      : KXDateTime(date.year_, date.month_, date.day_, time.hour_, time.minute_, time.second_, time.nanosecond_) {}

  /// The clock of this machine, in its local time.
  static void GetCurrDateTime(KXDateTime& now);

  bool IsValid() const;

  /// The parts; those of the token are the tokens of the parts.
  constexpr KXDate GetDate() const { return {year_, month_, day_}; }
  constexpr KXTime GetTime() const { return {hour_, minute_, second_, nanosecond_}; }
  int GetHour() const { return hour_; }
  int GetMinute() const { return minute_; }
  int GetSecond() const { return second_; }

  constexpr bool IsCurrentDateTimeToken() const;
  void SetAsDynamicCurrDateTimeToken();

  /// The date, a blank, the time in the given precision; the token is "CURRENT_TIMESTAMP".
  KXString ToString(short nPrecision = 0) const;
  /// Reads a date, or a date and a time with blanks or a "T" between them; a date alone is its midnight. Text that is
  /// no moment of the calendar gives false and leaves `dateTime` as it was.
  static bool FromString(std::wstring_view text, KXDateTime& dateTime);

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend constexpr auto operator<=>(const KXDateTime&, const KXDateTime&) = default;
};

static_assert(sizeof(KXDate) == 6 && sizeof(KXTime) == 12 && sizeof(KXDateTime) == 16);

namespace kxdatetime {
// Each field of a token is the largest value of its kind.
inline constexpr KXDate kCurrentDate{INT16_MAX, UINT16_MAX, UINT16_MAX};
inline constexpr KXTime kCurrentTime{UINT16_MAX, UINT16_MAX, UINT16_MAX, UINT32_MAX};
inline constexpr KXDateTime kCurrentDateTime{kCurrentDate, kCurrentTime};
}  // namespace kxdatetime

constexpr bool KXDate::IsCurrentDateToken() const { return *this == kxdatetime::kCurrentDate; }
constexpr bool KXTime::IsCurrentTimeToken() const { return *this == kxdatetime::kCurrentTime; }
constexpr bool KXDateTime::IsCurrentDateTimeToken() const { return *this == kxdatetime::kCurrentDateTime; }
