#include "Host/TypedFieldValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "Host/ErrorMessage.h"
#include "Host/SUSystemConfig.h"

namespace {

TypedFieldValue Decimal(const wchar_t* text) {
  KorvelNumber number;
  EXPECT_TRUE(KorvelNumber::FromString(text, number));
  return TypedFieldValue(number, false);
}

template <class Record>
ByteVector BytesOf(const Record& record) {
  ByteVector bytes(sizeof(Record));
  std::memcpy(bytes.data(), &record, sizeof(Record));
  return bytes;
}

TypedFieldValue DateToken() {
  KXDate date;
  date.SetAsDynamicCurrDateToken();
  return TypedFieldValue(date, false);
}

TypedFieldValue DateTimeToken() {
  KXDateTime dateTime;
  dateTime.SetAsDynamicCurrDateTimeToken();
  return TypedFieldValue(dateTime, false);
}

/// Groups of equal values, each group below the next one.
void ExpectAscending(const std::vector<std::vector<TypedFieldValue>>& groups) {
  for (std::size_t a = 0; a < groups.size(); ++a) {
    for (std::size_t b = 0; b < groups.size(); ++b) {
      for (const TypedFieldValue& left : groups[a]) {
        for (const TypedFieldValue& right : groups[b]) {
          EXPECT_EQ(left == right, a == b) << left.ToString() << " == " << right.ToString();
          EXPECT_EQ(left < right, a < b) << left.ToString() << " < " << right.ToString();
        }
      }
    }
  }
}

TEST(TypedFieldValue, NumbersAreOneExactOrder) {
  ExpectAscending({
      {{-HUGE_VAL, false}},
      {{-1e200, false}},
      {Decimal(L"-9.9E127")},
      {{-2147483647 - 1, false}, {-2147483648.0, true}, Decimal(L"-2147483648")},
      {Decimal(L"-0.1000000000000000000001")},
      {{-0.1, false}, Decimal(L"-0.1")},
      {Decimal(L"-1E-126")},
      {{-5e-324, false}},
      {{0, false},
       {0, true},
       {0.0, false},
       {-0.0, false},
       Decimal(L"0"),
       TypedFieldValue(KXUInt1Data, {0}, 0, false),
       TypedFieldValue(KXMoneyData, ByteVector(8), 0, false)},
      {{5e-324, false}},
      {Decimal(L"1E-126")},
      {{0.1, false}, Decimal(L"0.1")},
      {Decimal(L"0.1000000000000000055")},
      {{1, false},
       {1.0, false},
       Decimal(L"1.00"),
       TypedFieldValue(KXFloatData, BytesOf(1.0f), 0, false),
       TypedFieldValue(KXMoneyData, BytesOf(std::int64_t{10000}), 0, false)},
      {TypedFieldValue(KXMoneyData, BytesOf(std::int64_t{10001}), 0, false), Decimal(L"1.0001"), {1.0001, false}},
      {{3000000000.0, false}, TypedFieldValue(KXUInt4Data, BytesOf(std::uint32_t{3000000000}), 0, false)},
      {{9007199254740992.0, false}, Decimal(L"9007199254740992")},
      {Decimal(L"9007199254740993")},  // the double next below it is the one above
      {Decimal(L"9.9E127")},
      {{1e128, false}},
      {{HUGE_VAL, false}},
  });
}

TEST(TypedFieldValue, DatesCompareWithTimestampsAndTimesWithTimes) {
  ExpectAscending({
      {{KXDateTime(2019, 12, 31, 23, 59, 59, 999999999), false}},
      {{KXDate(2020, 1, 1), false},
       {KXDateTime(2020, 1, 1, 0, 0, 0), true},
       TypedFieldValue(KXTimeStampData, BytesOf(KXDateTime(2020, 1, 1, 0, 0, 0)), 0, false)},
      {{KXDateTime(2020, 1, 1, 0, 0, 0, 1), false}},
      {{KXDate(2020, 1, 2), false}},
  });
  ExpectAscending({{{KXTime(1, 0, 0), false}}, {{KXTime(1, 0, 0, 1), false}}, {{KXTime(2, 0, 0), true}}});
}

TEST(TypedFieldValue, TextComparesAsConfigured) {
  SUSystemConfig& config = SUSystemConfig::GetSystemConfig();
  ASSERT_TRUE(config.IsCaseSensitive());
  ExpectAscending({{{L"", false}}, {{L"B", false}}, {{L"a", false}, {L"a", true}}, {{L"a ", false}}, {{L"b", false}}});
  config.SetCaseSensitive(false);
  ExpectAscending({{{L"", false}}, {{L"a", false}, {L"A", false}}, {{L"a ", false}}, {{L"B", false}, {L"b", false}}});
  config.SetCaseSensitive(true);
}

TEST(TypedFieldValue, NothingIsConcludedFromValuesThatDoNotCompare) {
  const TypedFieldValue null(KXInt4Data, ByteVector{0, 0, 0, 0, 1}, 4, false);
  const TypedFieldValue nan(std::nan(""), false);
  const TypedFieldValue object(KXObjectData, {1}, 0, false);  // without a function
  const std::pair<TypedFieldValue, TypedFieldValue> cases[] = {
      {{1, false}, {L"1", false}},
      {{L"2020-01-01", false}, {KXDate(2020, 1, 1), false}},
      {{KXDateTime(2020, 1, 1, 1, 0, 0), false}, {KXTime(1, 0, 0), false}},
      {{KXDate(2020, 1, 1), false}, DateToken()},
      {DateToken(), DateTimeToken()},
      {{0, false}, null},
      {{0, false}, TypedFieldValue()},
      {nan, {0, false}},
      {nan, Decimal(L"0")},
      {nan, nan},
      {object, object},
      {object, TypedFieldValue(KXBinaryData, {1}, 0, false)},
      {{L"01", false}, TypedFieldValue(KXBinaryData, {1}, 0, false)},
  };
  for (const auto& [a, b] : cases) {
    SCOPED_TRACE((a.ToString() + L" and " + b.ToString()).ToUTF8());
    EXPECT_FALSE(a == b || b == a || a < b || b < a);
  }
  EXPECT_EQ(null, null);
  EXPECT_EQ(TypedFieldValue(), TypedFieldValue());
  EXPECT_EQ(DateToken(), DateToken());
}

TEST(TypedFieldValue, BinaryAndObjectsCompareTheirBytes) {
  const auto binary = [](KXDataType type, ByteVector bytes) {
    return TypedFieldValue(type, std::move(bytes), 0, false);
  };
  ExpectAscending({{binary(KXBinaryData, {})},
                   {binary(KXBinaryData, {1, 2}), binary(KXVarBinaryData, {1, 2})},
                   {binary(KXLongVarBinaryData, {1, 2, 0})},
                   {binary(KXBinaryData, {2})}});
  const auto byLength = [](const ByteVector& a, const ByteVector& b) {
    return static_cast<int>(a.size()) - static_cast<int>(b.size());
  };
  const auto object = [byLength](ByteVector bytes) {
    return TypedFieldValue(KXObjectData, std::move(bytes), 0, false, byLength);
  };
  ExpectAscending({{object({9}), object({1})}, {object({0, 0})}});
}

TEST(TypedFieldValue, FieldsOfARowAreRead) {
  const std::uint32_t wideText[] = {2, 'h', 0x20ac};
  const std::uint32_t paddedText[] = {'h', 'i', ' ', ' ', 0, 'x'};
  struct Case {
    TypedFieldValue value;
    const wchar_t* text;
  };
  const Case cases[] = {
      {{KXBitData, {1}, 0, false}, L"1"},
      {{KXInt1Data, {0xff}, 0, false}, L"-1"},
      {{KXBoolean, {0}, 0, false}, L"0"},
      {{KXUInt1Data, {0xff}, 0, false}, L"255"},
      {{KXInt2Data, BytesOf(std::int16_t{-300}), 0, false}, L"-300"},
      {{KXUInt2Data, BytesOf(std::uint16_t{65535}), 0, false}, L"65535"},
      {{KXInt4Data, BytesOf(std::int32_t{-7}), 0, false}, L"-7"},
      {{KXUInt4Data, BytesOf(std::uint32_t{4000000000}), 0, false}, L"4000000000"},
      {{KXFloatData, BytesOf(0.5f), 0, false}, L"0.5"},
      {{KXDoubleData, BytesOf(-0.25), 0, false}, L"-0.25"},
      {{KXMoneyData, BytesOf(std::int64_t{-12345}), 0, false}, L"-1.2345"},
      {{KXDateData, BytesOf(KXDate(2020, 1, 2)), 0, false}, L"2020-01-02"},
      {{KXTimeData, BytesOf(KXTime(1, 2, 3)), 0, false}, L"01:02:03"},
      {{KXTimeStampData, BytesOf(KXDateTime(2020, 1, 2, 3, 4, 5)), 0, false}, L"2020-01-02 03:04:05"},
      {{KXVarCharData, BytesOf(wideText), 0, true}, L"h\u20ac"},
      {{KXLongVarCharData, {3, 0, 0, 0, 0xe2, 0x82, 0xac}, 0, false}, L"\u20ac"},
      {{KXIntervalData, {1, 0, 0, 0, '5'}, 0, false}, L"5"},
      {{KXCharData, BytesOf(paddedText), 0, true}, L"hi"},
      {{KXCharData, {'h', 'i', ' ', ' '}, 0, false}, L"hi"},
      {{KXVarBinaryData, {0x0f, 0xa0}, 0, false}, L"0FA0"},
      {{KXUnknown, {1, 2}, 0, false}, L""},
      {{KXInt1Data, {5, 1}, 1, false}, L""},   // null
      {{KXInt1Data, {5, 0}, 1, false}, L"5"},  // not null
      {{KXVarBinaryData, {5, 1}, 1, false}, L""},
      {{L"text", true}, L"text"},
      {Decimal(L"1.5"), L"1.5"},
      {DateTimeToken(), L"CURRENT_TIMESTAMP"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(value.ToString(), text);

  const TypedFieldValue nullable(7, true);
  EXPECT_EQ(nullable.GetLength(), 4u);
  EXPECT_EQ(nullable.GetNullOffset(), 4u);
  EXPECT_EQ(nullable.GetBytes().size(), 5u);
  EXPECT_FALSE(nullable.IsNull());
}

TEST(TypedFieldValue, ConvertsAsPropertiesDo) {
  EXPECT_EQ(TypedFieldValue(2.9, false).ToInteger(), 2);
  EXPECT_EQ(TypedFieldValue(L"2.5", false).ToFloat(), 2.5);
  EXPECT_EQ(TypedFieldValue(12, true).ToNumber(), KorvelNumber::FromInteger(12));
  EXPECT_EQ(TypedFieldValue(KXDateTime(2020, 1, 2, 3, 4, 5), false).ToDate(), KXDate(2020, 1, 2));
  EXPECT_EQ(TypedFieldValue(KXDateTime(2020, 1, 2, 3, 4, 5), false).ToTime(), KXTime(3, 4, 5));
  EXPECT_EQ(TypedFieldValue(KXDate(2020, 1, 2), false).ToDateTime(), KXDateTime(2020, 1, 2, 0, 0, 0));
  const TypedFieldValue unsignedValue(KXUInt4Data, BytesOf(std::uint32_t{3000000000}), 0, false);
  EXPECT_EQ(unsignedValue.ToFloat(), 3e9);
  EXPECT_THROW(unsignedValue.ToInteger(), ErrorMessage);
  EXPECT_THROW(TypedFieldValue().ToInteger(), ErrorMessage);
  EXPECT_THROW(TypedFieldValue(L"soon", false).ToDate(), ErrorMessage);
}

TEST(TypedFieldValue, FieldsThatAreTooShortAreRefused) {
  for (int number = 0; number < KXMaxType; ++number) {
    const auto type = static_cast<KXDataType>(number);
    const bool bAnyLength = type == KXUnknown || type == KXCharData || type == KXBinaryData ||
                            type == KXVarBinaryData || type == KXLongVarBinaryData || type == KXObjectData;
    const TypedFieldValue empty(type, {}, 0, false);
    if (bAnyLength) {
      EXPECT_EQ(empty.ToString(), L"") << number;
    } else {
      EXPECT_THROW(empty.ToString(), ErrorMessage) << number;
    }
  }
  EXPECT_THROW(TypedFieldValue(KXVarCharData, {2, 0, 0, 0, 'x'}, 0, false).ToString(), ErrorMessage);
  EXPECT_THROW(TypedFieldValue(KXVarCharData, {1, 0, 0, 0, 'x'}, 0, true).ToString(), ErrorMessage);
  EXPECT_THROW(TypedFieldValue(KXNumericData, {3, 193}, 0, false).ToString(), ErrorMessage);
}

}  // namespace
