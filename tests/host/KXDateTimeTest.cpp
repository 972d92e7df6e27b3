#include "Host/KXDateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "Host/DataBlobUtil.h"

namespace {

KXDate Day(int year, int month, int day) {
  return {static_cast<std::int16_t>(year), static_cast<std::uint16_t>(month), static_cast<std::uint16_t>(day)};
}

TEST(KXDate, CalendarAgreesWithTheStandardLibrary) {
  using std::chrono::year_month_day;
  for (int year = -4; year <= 10003; ++year) {
    for (int month = 0; month <= 13; ++month) {
      for (const int day : {0, 1, 28, 29, 30, 31, 32}) {
        const bool bInCalendar =
            year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)).ok();
        ASSERT_EQ(Day(year, month, day).IsValid(), bInCalendar && year >= 1 && year <= 9999)
            << year << '-' << month << '-' << day;
      }
    }
  }
}

TEST(KXDate, ReadsDaysOfTheCalendarAndNothingElse) {
  struct Case {
    const wchar_t* text;
    bool bDate;
    KXDate date;
  };
  const Case cases[] = {
      {L"2024-02-29", true, {2024, 2, 29}},
      {L"2023-02-29", false, {}},
      {L"1900-02-29", false, {}},
      {L"2000-02-29", true, {2000, 2, 29}},
      {L"  2020-1-5 ", true, {2020, 1, 5}},
      {L"0001-01-01", true, {1, 1, 1}},
      {L"9999-12-31", true, {9999, 12, 31}},
      {L"0000-01-01", false, {}},
      {L"-0001-01-01", false, {}},
      {L"2020-04-31", false, {}},
      {L"2020-13-01", false, {}},
      {L"2020-00-10", false, {}},
      {L"2020-10-00", false, {}},
      {L"20-10-01", false, {}},
      {L"12020-10-01", false, {}},
      {L"2020-010-01", false, {}},
      {L"2020/10/01", false, {}},
      {L"2020-10-01x", false, {}},
      {L"2020-10", false, {}},
      {L"", false, {}},
      {L"2020- 10-01", false, {}},
      {L"CURRENT_DATE", false, {}},
      {L"2020-10-01 00:00:00", false, {}},
  };
  for (const auto& [text, bDate, expected] : cases) {
    SCOPED_TRACE(KXString(text).ToUTF8());
    KXDate date(7, 7, 7);
    EXPECT_EQ(KXDate::FromString(text, date), bDate);
    EXPECT_EQ(date, bDate ? expected : KXDate(7, 7, 7));
  }
}

TEST(KXDate, TextReadsBack) {
  EXPECT_EQ(Day(476, 9, 4).ToString(), L"0476-09-04");
  EXPECT_EQ(Day(-5, 0, 99).ToString(), L"-0005-00-99");  // no day, and its text shows why
  for (const KXDate& date : {Day(1, 1, 1), Day(1999, 12, 31), Day(9999, 10, 9)}) {
    KXDate read;
    EXPECT_TRUE(KXDate::FromString(date.ToString(), read));
    EXPECT_EQ(read, date);
  }
}

TEST(KXTime, ReadsTimesOfDayAndNothingElse) {
  struct Case {
    const wchar_t* text;
    bool bTime;
    KXTime time;
  };
  const Case cases[] = {
      {L"00:00:00", true, {0, 0, 0}},
      {L"23:59:59.999999999", true, {23, 59, 59, 999999999}},
      {L"7:05", true, {7, 5, 0}},
      {L" 12:30:15.5 ", true, {12, 30, 15, 500000000}},
      {L"12:30:15.000000001", true, {12, 30, 15, 1}},
      {L"24:00:00", false, {}},
      {L"12:60:00", false, {}},
      {L"23:59:60", false, {}},
      {L"12:30:15.", false, {}},
      {L"12:30:15.1234567890", false, {}},
      {L"12", false, {}},
      {L"12:30:", false, {}},
      {L"12:30:15 PM", false, {}},
      {L"123:30:15", false, {}},
      {L"-1:30:15", false, {}},
      {L"", false, {}},
  };
  for (const auto& [text, bTime, expected] : cases) {
    SCOPED_TRACE(KXString(text).ToUTF8());
    KXTime time(1, 2, 3, 4);
    EXPECT_EQ(KXTime::FromString(text, time), bTime);
    EXPECT_EQ(time, bTime ? expected : KXTime(1, 2, 3, 4));
  }
}

TEST(KXTime, PrecisionCutsTheFractionOff) {
  const std::pair<short, const wchar_t*> cases[] = {{-1, L"01:02:59"},          {0, L"01:02:59"},
                                                    {1, L"01:02:59.9"},         {3, L"01:02:59.999"},
                                                    {9, L"01:02:59.999600007"}, {12, L"01:02:59.999600007"}};
  for (const auto& [precision, expected] : cases) {
    EXPECT_EQ(KXTime(1, 2, 59, 999600007).ToString(precision), expected) << precision;
    EXPECT_EQ(KXDateTime(2021, 3, 4, 1, 2, 59, 999600007).ToString(precision), KXString(L"2021-03-04 ") + expected);
  }
}

TEST(KXDateTime, ReadsDateAndTime) {
  struct Case {
    const wchar_t* text;
    bool bDateTime;
    KXDateTime dateTime;
  };
  const Case cases[] = {
      {L"2020-02-03 04:05:06.7", true, {2020, 2, 3, 4, 5, 6, 700000000}},
      {L" 2020-02-03T04:05:06 ", true, {2020, 2, 3, 4, 5, 6}},
      {L"2020-02-03   4:05", true, {2020, 2, 3, 4, 5, 0}},
      {L"2020-02-03  ", true, {2020, 2, 3, 0, 0, 0}},
      {L"2020-02-03T", false, {}},
      {L"2020-02-03 T04:05:06", false, {}},
      {L"2020-02-0304:05:06", false, {}},
      {L"2021-02-29 04:05:06", false, {}},
      {L"2020-02-03 24:00:00", false, {}},
      {L"04:05:06", false, {}},
  };
  for (const auto& [text, bDateTime, expected] : cases) {
    SCOPED_TRACE(KXString(text).ToUTF8());
    KXDateTime dateTime;
    EXPECT_EQ(KXDateTime::FromString(text, dateTime), bDateTime);
    EXPECT_EQ(dateTime, expected);
  }
}

TEST(KXDateTime, TokensAreApartFromAllCalendarValues) {
  KXDate date;
  KXTime time;
  KXDateTime dateTime;
  date.SetAsDynamicCurrDateToken();
  time.SetAsDynamicCurrTimeToken();
  dateTime.SetAsDynamicCurrDateTimeToken();
  EXPECT_TRUE(date.IsCurrentDateToken() && time.IsCurrentTimeToken() && dateTime.IsCurrentDateTimeToken());
  EXPECT_FALSE(date.IsValid() || time.IsValid() || dateTime.IsValid());
  EXPECT_EQ(date.ToString(), L"CURRENT_DATE");
  EXPECT_EQ(time.ToString(3), L"CURRENT_TIME");
  EXPECT_EQ(dateTime.ToString(3), L"CURRENT_TIMESTAMP");
  EXPECT_LT(Day(9999, 12, 31), date);
  EXPECT_LT(KXTime(23, 59, 59, 999999999), time);
  EXPECT_LT(KXDateTime(9999, 12, 31, 23, 59, 59, 999999999), dateTime);
  EXPECT_EQ(dateTime.GetDate(), date);
  EXPECT_EQ(dateTime.GetTime(), time);
  EXPECT_FALSE(KXDate().IsCurrentDateToken() || KXTime().IsCurrentTimeToken() || KXDateTime().IsCurrentDateTimeToken());
}

TEST(KXDateTime, OrderGoesFromTheLargestUnitDown) {
  const KXDateTime ascending[] = {{-1, 12, 31, 23, 59, 59, 9}, {2020, 1, 1, 0, 0, 0, 0}, {2020, 1, 1, 0, 0, 0, 1},
                                  {2020, 1, 1, 0, 0, 1, 0},    {2020, 1, 1, 0, 1, 0, 0}, {2020, 1, 1, 1, 0, 0, 0},
                                  {2020, 1, 2, 0, 0, 0, 0},    {2020, 2, 1, 0, 0, 0, 0}, {2021, 1, 1, 0, 0, 0, 0}};
  for (std::size_t a = 0; a < std::size(ascending); ++a) {
    for (std::size_t b = 0; b < std::size(ascending); ++b) {
      EXPECT_EQ(ascending[a] < ascending[b], a < b) << a << ' ' << b;
      EXPECT_EQ(ascending[a] == ascending[b], a == b) << a << ' ' << b;
    }
  }
}

TEST(KXDateTime, ByteFormsReadBack) {
  KXDateTime token;
  token.SetAsDynamicCurrDateTimeToken();
  for (const KXDateTime& value : {KXDateTime(), KXDateTime(2020, 2, 29, 23, 59, 58, 123456789), token}) {
    ByteVector bytes;
    value.GetDate().ToByteVector(bytes);
    value.GetTime().ToByteVector(bytes);
    value.ToByteVector(bytes);
    KXDate date(1, 1, 1);
    KXTime time(1, 1, 1, 1);
    KXDateTime dateTime(1, 1, 1, 1, 1, 1, 1);
    const BoundedRead bounds(bytes);
    bounds.RequireAtEnd(dateTime.FromByteVector(time.FromByteVector(date.FromByteVector(bytes.data()))));
    EXPECT_EQ(date, value.GetDate());
    EXPECT_EQ(time, value.GetTime());
    EXPECT_EQ(dateTime, value);
  }
}

TEST(KXDateTime, TheClockGoesOnInLocalTime) {
  KXDateTime before;
  KXDateTime after;
  KXDateTime::GetCurrDateTime(before);
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  KXDateTime::GetCurrDateTime(after);
  EXPECT_TRUE(before.IsValid());
  EXPECT_LE(before, after);
  const KXDateTime second(static_cast<std::int16_t>(local.tm_year + 1900), static_cast<std::uint16_t>(local.tm_mon + 1),
                          static_cast<std::uint16_t>(local.tm_mday), static_cast<std::uint16_t>(local.tm_hour),
                          static_cast<std::uint16_t>(local.tm_min), static_cast<std::uint16_t>(local.tm_sec),
                          999999999);
  EXPECT_LE(before, second);
}

}  // namespace
