#include "Host/KXDateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "Host/DataBlobUtil.h"

namespace {

TEST(KXDate, CalendarAgreesWithTheStandardLibrary) {
  for (std::int16_t year = -4; year <= 10003; ++year) {
    for (std::uint16_t month = 0; month <= 13; ++month) {
      for (const std::uint16_t day : {0, 1, 28, 29, 30, 31, 32}) {
        const bool bInCalendar = (std::chrono::year(year) / month / day).ok();
        ASSERT_EQ(KXDate(year, month, day).IsValid(), bInCalendar && year >= 1 && year <= 9999)
            << year << '-' << month << '-' << day;
      }
    }
  }
}

/// The values that the texts read as. A text that is refused gives none and leaves the value as it was.
template <class Value>
KXString Readings(const Value& before, std::initializer_list<const wchar_t*> texts) {
  KXString readings;
  for (const wchar_t* text : texts) {
    Value value = before;
    if (Value::FromString(text, value)) {
      readings.append(value.ToString(9)).append(L'|');
    } else {
      EXPECT_EQ(value, before) << KXString(text);
    }
  }
  return readings;
}

TEST(KXDateTime, ReadsCalendarValuesAndNothingElse) {
  const KXTime time(1, 2, 3, 4);
  EXPECT_EQ(Readings(time, {L"23:59:59.999999999", L"7:05", L" 12:30:15.5 ", L"12:30:15.000000001", L"24:00:00",
                            L"12:60:00", L"23:59:60", L"12:30:15.", L"12:30:15.1234567890", L"12", L"12:30:",
                            L"12:30:15 PM", L"123:30:15", L"-1:30:15", L""}),
            L"23:59:59.999999999|07:05:00.000000000|12:30:15.500000000|12:30:15.000000001|");
  EXPECT_EQ(Readings(KXDateTime(KXDate(7, 7, 7), time),
                     {L"2020-02-29 04:05:06.7", L" 2020-02-03T04:05:06 ", L"2020-2-3   4:05", L"2020-12-03  ",
                      L"2020-02-03T", L"2020-02-03 T04:05:06", L"2020-02-0304:05:06", L"2020-02-03 24:00:00",
                      L"04:05:06", L"2023-02-29", L"20-10-01", L"12020-10-01", L"2020-010-01", L"2020/10/01",
                      L"2020-10-01x", L"2020-10", L"2020- 10-01", L"CURRENT_DATE"}),
            L"2020-02-29 04:05:06.700000000|2020-02-03 04:05:06.000000000|"
            L"2020-02-03 04:05:00.000000000|2020-12-03 00:00:00.000000000|");
  KXDate date(7, 7, 7);
  EXPECT_FALSE(KXDate::FromString(L"2020-10-01 00:00:00", date));
  EXPECT_TRUE(date == KXDate(7, 7, 7) && KXDate::FromString(L" 2020-10-1 ", date));
  EXPECT_EQ(date, KXDate(2020, 10, 1));
  EXPECT_FALSE(KXTime(1, 2, 3, 1'000'000'000).IsValid()) << "which no text says";
}

TEST(KXDateTime, PrecisionCutsTheFractionOff) {
  EXPECT_EQ(KXDate(-5, 0, 99).ToString(), L"-0005-00-99");  // no day, and its text shows why
  const std::pair<short, const wchar_t*> cases[] = {
      {-1, L"01:02:59"}, {0, L"01:02:59"}, {3, L"01:02:59.999"}, {12, L"01:02:59.999600007"}};
  for (const auto& [precision, expected] : cases) {
    EXPECT_EQ(KXTime(1, 2, 59, 999600007).ToString(precision), expected) << precision;
    EXPECT_EQ(KXDateTime(476, 3, 4, 1, 2, 59, 999600007).ToString(precision), KXString(L"0476-03-04 ") + expected);
  }
}

TEST(KXDateTime, OrderGoesFromTheLargestUnitDownAndByteFormsReadBack) {
  const KXDateTime ascending[] = {{-1, 12, 31, 23, 59, 59, 9}, {2020, 1, 1, 0, 0, 0, 0}, {2020, 1, 1, 0, 0, 0, 1},
                                  {2020, 1, 1, 0, 0, 1, 0},    {2020, 1, 1, 0, 1, 0, 0}, {2020, 1, 1, 1, 0, 0, 0},
                                  {2020, 1, 2, 0, 0, 0, 0},    {2020, 2, 1, 0, 0, 0, 0}, {9999, 1, 1, 0, 0, 0, 0},
                                  kxdatetime::kCurrentDateTime};
  for (std::size_t a = 0; a < std::size(ascending); ++a) {
    for (std::size_t b = 0; b < std::size(ascending); ++b) {
      EXPECT_EQ(ascending[a] <=> ascending[b], a <=> b) << a << ' ' << b;
      EXPECT_TRUE(a > b || ascending[a].GetDate() <= ascending[b].GetDate()) << a << ' ' << b;
    }
    ByteVector bytes;
    ascending[a].ToByteVector(bytes);
    KXDateTime read;
    EXPECT_EQ(read.FromByteVector(bytes.data()), bytes.data() + bytes.size());
    EXPECT_EQ(read, ascending[a]);
  }
}

TEST(KXDateTime, TokensAreNoCalendarValues) {
  KXDate date;
  KXTime time;
  KXDateTime dateTime;
  EXPECT_FALSE(date.IsCurrentDateToken() || time.IsCurrentTimeToken() || dateTime.IsCurrentDateTimeToken());
  date.SetAsDynamicCurrDateToken();
  time.SetAsDynamicCurrTimeToken();
  dateTime.SetAsDynamicCurrDateTimeToken();
  EXPECT_FALSE(date.IsValid() || time.IsValid() || dateTime.IsValid());
  EXPECT_EQ(date.ToString() + time.ToString(3) + dateTime.ToString(3), L"CURRENT_DATECURRENT_TIMECURRENT_TIMESTAMP");
  EXPECT_EQ(dateTime, KXDateTime(date, time));
}

TEST(KXDateTime, TheClockGoesInLocalTime) {
  setenv("TZ", "RQT-5:30", 1);
  tzset();
  const auto before = std::chrono::system_clock::now();
  KXDateTime now;
  KXDateTime::GetCurrDateTime(now);
  const auto day = std::chrono::sys_days(std::chrono::year(now.year_) / now.month_ / now.day_);
  const auto minute = day + std::chrono::hours(now.hour_) + std::chrono::minutes(now.minute_ - 330);
  const auto moment = minute + std::chrono::seconds(now.second_) + std::chrono::nanoseconds(now.nanosecond_);
  EXPECT_LE(before, moment);
  EXPECT_GE(std::chrono::system_clock::now(), moment);
  unsetenv("TZ");
  tzset();
}

}  // namespace
