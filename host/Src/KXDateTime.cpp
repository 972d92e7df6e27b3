#include "Host/KXDateTime.h"

#include <ctime>

#include <algorithm>
#include <chrono>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"

namespace {

constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;
constexpr int kNanosecondDigits = 9;

/// In decimal, filled up with zeros to the width.
void AppendNumber(KXString& text, int value, int width) {
  if (value < 0) text.append(L'-');
  const KXString digits = BaseStringUtil::StringFrom(std::abs(value));
  for (int missing = width - static_cast<int>(digits.size()); missing > 0; --missing) text.append(L'0');
  text.append(digits);
}

void AppendDate(KXString& text, const KXDate& date) {
  AppendNumber(text, date.year_, 4);
  text.append(L'-');
  AppendNumber(text, date.month_, 2);
  text.append(L'-');
  AppendNumber(text, date.day_, 2);
}

void AppendTime(KXString& text, const KXTime& time, int precision) {
  AppendNumber(text, time.hour_, 2);
  text.append(L':');
  AppendNumber(text, time.minute_, 2);
  text.append(L':');
  AppendNumber(text, time.second_, 2);
  if (precision <= 0) return;
  text.append(L'.');
  std::uint32_t unit = 100'000'000;
  for (int digit = 0; digit < std::min(precision, kNanosecondDigits); ++digit, unit /= 10) {
    text.append(static_cast<wchar_t>(L'0' + time.nanosecond_ / unit % 10));
  }
}

/// A cursor over text; each reading operation tells whether it found what it was asked for.
class TextCursor {
 public:
  explicit TextCursor(std::wstring_view text) : m_rest(text) {}

  bool AtEnd() const { return m_rest.empty(); }

  bool Accept(wchar_t character) {
    if (m_rest.empty() || m_rest.front() != character) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  /// The number of blanks skipped.
  int SkipBlanks() {
    int count = 0;
    while (Accept(L' ')) ++count;
    return count;
  }

  /// All digits that stand here; there must be from minDigits to maxDigits of them.
  bool Number(int minDigits, int maxDigits, int& value, int* pDigits = nullptr) {
    int digits = 0;
    int result = 0;
    for (; !m_rest.empty() && m_rest.front() >= L'0' && m_rest.front() <= L'9'; m_rest.remove_prefix(1)) {
      if (++digits > maxDigits) return false;
      result = result * 10 + (m_rest.front() - L'0');
    }
    if (digits < minDigits) return false;
    value = result;
    if (pDigits) *pDigits = digits;
    return true;
  }

 private:
  std::wstring_view m_rest;
};

bool ReadDate(TextCursor& cursor, KXDate& date) {
  int year;
  int month;
  int day;
  if (!cursor.Number(4, 4, year) || !cursor.Accept(L'-') || !cursor.Number(1, 2, month) || !cursor.Accept(L'-') ||
      !cursor.Number(1, 2, day)) {
    return false;
  }
  date = KXDate(static_cast<std::int16_t>(year), static_cast<std::uint16_t>(month), static_cast<std::uint16_t>(day));
  return date.IsValid();
}

bool ReadFraction(TextCursor& cursor, int& nanosecond) {
  int digits;
  if (!cursor.Number(1, kNanosecondDigits, nanosecond, &digits)) return false;
  for (; digits < kNanosecondDigits; ++digits) nanosecond *= 10;
  return true;
}

bool ReadTime(TextCursor& cursor, KXTime& time) {
  int hour;
  int minute;
  int second = 0;
  int nanosecond = 0;
  if (!cursor.Number(1, 2, hour) || !cursor.Accept(L':') || !cursor.Number(1, 2, minute)) return false;
  if (cursor.Accept(L':')) {
    if (!cursor.Number(1, 2, second)) return false;
    if (cursor.Accept(L'.') && !ReadFraction(cursor, nanosecond)) return false;
  }
  time = KXTime(static_cast<std::uint16_t>(hour), static_cast<std::uint16_t>(minute),
                static_cast<std::uint16_t>(second), static_cast<std::uint32_t>(nanosecond));
  return time.IsValid();
}

/// Reads the whole text, blanks around it aside, into `value` if `read` succeeds on it.
template <class Value>
bool ReadWhole(std::wstring_view text, Value& value, bool (*read)(TextCursor&, Value&)) {
  TextCursor cursor(text);
  cursor.SkipBlanks();
  Value result;
  if (!read(cursor, result)) return false;
  cursor.SkipBlanks();
  if (!cursor.AtEnd()) return false;
  value = result;
  return true;
}

bool ReadDateTime(TextCursor& cursor, KXDateTime& dateTime) {
  KXDate date;
  KXTime time;
  if (!ReadDate(cursor, date)) return false;
  const bool bBlanks = cursor.SkipBlanks() > 0;
  if (!cursor.AtEnd() && !((bBlanks || cursor.Accept(L'T')) && ReadTime(cursor, time))) return false;
  dateTime = KXDateTime(date, time);
  return true;
}

}  // namespace

int KXDate::GetDaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

bool KXDate::IsValid() const {
  return year_ >= kFirstYear && year_ <= kLastYear && day_ >= 1 && day_ <= GetDaysInMonth(year_, month_);
}

void KXDate::SetAsDynamicCurrDateToken() { *this = kxdatetime::kCurrentDate; }

KXString KXDate::ToString() const {
  if (IsCurrentDateToken()) return L"CURRENT_DATE";
  KXString text;
  AppendDate(text, *this);
  return text;
}

bool KXDate::FromString(std::wstring_view text, KXDate& date) { return ReadWhole(text, date, ReadDate); }

void KXDate::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, year_);
  DataBlobUtil::ToByteVector(bv, month_);
  DataBlobUtil::ToByteVector(bv, day_);
}

const_iterator KXDate::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, year_);
  start = DataBlobUtil::FromByteVector(start, month_);
  return DataBlobUtil::FromByteVector(start, day_);
}

bool KXTime::IsValid() const { return hour_ < 24 && minute_ < 60 && second_ < 60 && nanosecond_ < 1'000'000'000; }

void KXTime::SetAsDynamicCurrTimeToken() { *this = kxdatetime::kCurrentTime; }

KXString KXTime::ToString(short nPrecision) const {
  if (IsCurrentTimeToken()) return L"CURRENT_TIME";
  KXString text;
  AppendTime(text, *this, nPrecision);
  return text;
}

bool KXTime::FromString(std::wstring_view text, KXTime& time) { return ReadWhole(text, time, ReadTime); }

void KXTime::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, hour_);
  DataBlobUtil::ToByteVector(bv, minute_);
  DataBlobUtil::ToByteVector(bv, second_);
  DataBlobUtil::ToByteVector(bv, nanosecond_);
}

const_iterator KXTime::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, hour_);
  start = DataBlobUtil::FromByteVector(start, minute_);
  start = DataBlobUtil::FromByteVector(start, second_);
  return DataBlobUtil::FromByteVector(start, nanosecond_);
}

void KXDateTime::GetCurrDateTime(KXDateTime& now) {
  using std::chrono::system_clock;
  const auto sinceEpoch = system_clock::now().time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const std::time_t time = seconds.count();
  std::tm local{};
  localtime_r(&time, &local);
  now = KXDateTime(static_cast<std::int16_t>(local.tm_year + 1900), static_cast<std::uint16_t>(local.tm_mon + 1),
                   static_cast<std::uint16_t>(local.tm_mday), static_cast<std::uint16_t>(local.tm_hour),
                   static_cast<std::uint16_t>(local.tm_min),
                   static_cast<std::uint16_t>(std::min(local.tm_sec, 59)),  // a clock that shows leap seconds
                   static_cast<std::uint32_t>(std::chrono::nanoseconds(sinceEpoch - seconds).count()));
}

bool KXDateTime::IsValid() const { return GetDate().IsValid() && GetTime().IsValid(); }

void KXDateTime::SetAsDynamicCurrDateTimeToken() { *this = kxdatetime::kCurrentDateTime; }

KXString KXDateTime::ToString(short nPrecision) const {
  if (IsCurrentDateTimeToken()) return L"CURRENT_TIMESTAMP";
  KXString text;
  AppendDate(text, GetDate());
  text.append(L' ');
  AppendTime(text, GetTime(), nPrecision);
  return text;
}

bool KXDateTime::FromString(std::wstring_view text, KXDateTime& dateTime) {
  return ReadWhole(text, dateTime, ReadDateTime);
}

void KXDateTime::ToByteVector(ByteVector& bv) const {
  GetDate().ToByteVector(bv);
  GetTime().ToByteVector(bv);
}

const_iterator KXDateTime::FromByteVector(const_iterator start) {
  KXDate date;
  KXTime time;
  start = date.FromByteVector(start);
  start = time.FromByteVector(start);
  *this = KXDateTime(date, time);
  return start;
}
