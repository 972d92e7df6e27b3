#include "Host/TypedFieldValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "Host/ErrorMessage.h"
#include "Host/SUSystemConfig.h"

namespace {

using Value = TypedFieldValue;

Value Decimal(const wchar_t* text) { return Value(Value(text, false).ToNumber(), false); }

Value Raw(KXDataType type, ByteVector bytes) { return Value(type, std::move(bytes), 0, false); }

/// A field of narrow characters, if any, that holds the record as it stands in memory.
template <class Record>
Value Field(KXDataType type, const Record& record, bool bUnicode = false) {
  ByteVector bytes(sizeof(Record));
  std::memcpy(bytes.data(), &record, sizeof(Record));
  return Value(type, std::move(bytes), 0, bUnicode);
}

/// Each group of equal values below the next one.
void ExpectAscending(const std::vector<std::vector<Value>>& groups) {
  std::vector<std::pair<std::size_t, Value>> values;
  for (const auto& group : groups) {
    for (const Value& value : group) values.emplace_back(&group - groups.data(), value);
  }
  for (const auto& [a, left] : values) {
    for (const auto& [b, right] : values) {
      EXPECT_EQ(left == right, a == b) << left.ToString() << " == " << right.ToString();
      EXPECT_EQ(left < right, a < b) << left.ToString() << " < " << right.ToString();
    }
  }
}

TEST(TypedFieldValue, EachFamilyIsOneOrder) {
  ExpectAscending(
      {{{-HUGE_VAL, false}},
       {{-2147483647 - 1, false}, {-2147483648.0, true}, Decimal(L"-2147483648")},
       {{-5e-324, false}},
       {{0, true}, {0.0, false}, {-0.0, false}, Decimal(L"0"), Raw(KXUInt1Data, {0}), Raw(KXMoneyData, ByteVector(8))},
       {{5e-324, false}},
       {{0.1, false}, Decimal(L"0.1")},
       {Decimal(L"0.1000000000000000055")},
       {{1, false}, {1.0, false}, Decimal(L"1.00"), Field(KXFloatData, 1.0f), Field(KXMoneyData, std::int64_t{10000})},
       {Field(KXMoneyData, std::int64_t{10001}), Decimal(L"1.0001"), {1.0001, false}},
       {{9007199254740992.0, false}, Decimal(L"9007199254740992")},
       {Decimal(L"9007199254740993")},  // the double next below it is the one above
       {Decimal(L"9.9E127")},
       {{1e128, false}}});
  ExpectAscending({{{KXDateTime(2019, 12, 31, 23, 59, 59, 999999999), false}},
                   {{KXDate(2020, 1, 1), false}, {KXDateTime(2020, 1, 1, 0, 0, 0), true}},
                   {Field(KXTimeStampData, KXDateTime(2020, 1, 1, 0, 0, 0, 1))},
                   {{KXDate(2020, 1, 2), false}}});
  ExpectAscending({{{KXTime(1, 0, 0), false}}, {{KXTime(1, 0, 0, 1), false}}, {{KXTime(2, 0, 0), true}}});
  ExpectAscending({{Raw(KXBinaryData, {})},
                   {Raw(KXBinaryData, {1, 2}), Raw(KXVarBinaryData, {1, 2})},
                   {Raw(KXLongVarBinaryData, {1, 2, 0})},
                   {Raw(KXBinaryData, {2})}});
  const auto object = [](ByteVector bytes) {
    return Value(KXObjectData, std::move(bytes), 0, false, [](const ByteVector& a, const ByteVector& b) {
      return static_cast<int>(a.size()) - static_cast<int>(b.size());
    });
  };
  ExpectAscending({{object({9}), object({1})}, {object({0, 0})}});

  ExpectAscending({{{L"", false}}, {{L"B", false}}, {{L"a", false}, {L"a", true}}, {{L"a ", false}}, {{L"b", false}}});
  SUSystemConfig::GetSystemConfig().SetCaseSensitive(false);
  ExpectAscending({{{L"", false}}, {{L"a", false}, {L"A", false}}, {{L"a ", false}}, {{L"B", false}, {L"b", false}}});
  SUSystemConfig::GetSystemConfig().SetCaseSensitive(true);
}

TEST(TypedFieldValue, NothingIsConcludedFromValuesThatDoNotCompare) {
  const Value values[] = {{std::nan(""), false},
                          Raw(KXObjectData, {1}),
                          Decimal(L"0"),
                          {L"01", false},
                          {KXDate(2020, 1, 1), false},
                          {KXTime(1, 0, 0), false},
                          {kxdatetime::kCurrentTime, false},
                          {kxdatetime::kCurrentDate, false},
                          {kxdatetime::kCurrentDateTime, false},
                          Raw(KXBinaryData, {1}),
                          {},
                          {KXInt4Data, {0, 0, 0, 0, 1}, 4, false}};
  for (std::size_t a = 0; a < std::size(values); ++a) {
    for (std::size_t b = 0; b < std::size(values); ++b) {
      // NaN and an object without a function are not even equal to themselves.
      EXPECT_EQ(values[a] == values[b], a == b && a > 1) << a << ' ' << b;
      EXPECT_FALSE(values[a] < values[b]) << a << ' ' << b;
    }
  }
}

template <class... Values>
std::string TextsOf(const Values&... values) {
  return (... + (values.ToString().ToUTF8() + "|"));
}

TEST(TypedFieldValue, FieldsOfARowAreRead) {
  const std::uint32_t wideText[] = {2, 'h', 0x20ac};
  const std::uint32_t paddedText[] = {'h', 'i', ' ', ' ', 0, 'x'};
  const Value nullable(7, true);
  EXPECT_TRUE(nullable.GetLength() == 4 && nullable.GetNullOffset() == 4 && nullable.GetBytes().size() == 5);
  EXPECT_EQ(TextsOf(nullable, Value(KXInt1Data, {5, 1}, 1, false), Value(KXInt1Data, {5, 0}, 1, false),
                    Value(KXBinaryData, {5, 1}, 1, false), Raw(KXBitData, {1}), Raw(KXInt1Data, {0xff}),
                    Raw(KXBoolean, {0}), Raw(KXUInt1Data, {0xff}), Field(KXInt2Data, std::int16_t{-300}),
                    Field(KXUInt2Data, std::uint16_t{65535}), Field(KXInt4Data, -7), Field(KXUInt4Data, 4000000000u),
                    Field(KXFloatData, 0.5f), Field(KXDoubleData, -0.25), Field(KXMoneyData, std::int64_t{-12345}),
                    Decimal(L"1.5"), Field(KXDateData, KXDate(2020, 1, 2)), Field(KXTimeData, KXTime(1, 2, 3)),
                    Field(KXTimeStampData, KXDateTime(2020, 1, 2, 3, 4, 5)), Field(KXVarCharData, wideText, true),
                    Raw(KXLongVarCharData, {3, 0, 0, 0, 0xe2, 0x82, 0xac}), Raw(KXIntervalData, {1, 0, 0, 0, '5'}),
                    Value(L"text", true), Field(KXCharData, paddedText, true), Raw(KXCharData, {'h', 'i', ' ', ' '}),
                    Raw(KXVarBinaryData, {0x0f, 0xa0}), Raw(KXUnknown, {1, 2})),
            "7||5||1|-1|0|255|-300|65535|-7|4000000000|0.5|-0.25|-1.2345|1.5|2020-01-02|01:02:03|2020-01-02 03:04:05|"
            "h\u20ac|\u20ac|5|text|hi|hi|0FA0||");
}

TEST(TypedFieldValue, ConvertsAsPropertiesDo) {
  const Value dateTime(KXDateTime(2020, 1, 2, 3, 4, 5), false);
  EXPECT_EQ(Value(2.9, false).ToInteger(), 2);
  EXPECT_TRUE(dateTime.ToDate() == KXDate(2020, 1, 2) && dateTime.ToTime() == KXTime(3, 4, 5));
  EXPECT_THROW(Field(KXUInt4Data, 3000000000u).ToInteger(), ErrorMessage);
}

TEST(TypedFieldValue, FieldsThatAreTooShortAreRefused) {
  for (const KXDataType type : {KXBitData, KXInt1Data, KXBoolean, KXUInt1Data, KXInt2Data, KXUInt2Data, KXInt4Data,
                                KXUInt4Data, KXFloatData, KXDoubleData, KXMoneyData, KXNumericData, KXDecimalData,
                                KXDateData, KXTimeData, KXDateTimeData, KXTimeStampData}) {
    EXPECT_THROW(Raw(type, {}).ToString(), ErrorMessage) << int{type};
  }
  EXPECT_EQ(Raw(KXCharData, {}).ToString(), L"");
  EXPECT_THROW(Raw(KXVarCharData, {2, 0, 0, 0, 'x'}).ToString(), ErrorMessage);
  EXPECT_THROW(Value(KXVarCharData, {1, 0, 0, 0, 'x'}, 0, true).ToString(), ErrorMessage);
  EXPECT_THROW(Raw(KXNumericData, {3, 193}).ToString(), ErrorMessage);
}

}  // namespace
