#include "Host/PropertyValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"

namespace {

using OwnedValue = std::shared_ptr<PropertyValue>;

OwnedValue Of(int value) { return std::make_shared<PropertyValueInteger>(value); }
OwnedValue Of(double value) { return std::make_shared<PropertyValueFloat>(value); }
OwnedValue Of(const wchar_t* value) { return std::make_shared<PropertyValueString>(value); }
OwnedValue Of(const KXDate& value) { return std::make_shared<PropertyValueDate>(value); }
OwnedValue Of(const KXTime& value) { return std::make_shared<PropertyValueTime>(value); }
OwnedValue Of(const KXDateTime& value) { return std::make_shared<PropertyValueDateTime>(value); }
OwnedValue Of(KXStringVector values) { return std::make_shared<PropertyValueStringVector>(std::move(values)); }
OwnedValue NumberOf(const wchar_t* text) {
  KorvelNumber number;
  EXPECT_TRUE(KorvelNumber::FromString(text, number));
  return std::make_shared<PropertyValueNumber>(number);
}

/// What a value is in each other type, as text; null where it has no such value.
struct Case {
  OwnedValue m_pValue;
  PropertyValue::Type m_type;
  const wchar_t* m_pString;
  bool m_bNonZero;
  const wchar_t* m_pInteger;
  const wchar_t* m_pFloat;
  const wchar_t* m_pNumber;
  const wchar_t* m_pDate;
  const wchar_t* m_pTime;
  const wchar_t* m_pDateTime;
};

std::vector<Case> Cases() {
  KXDate dateToken;
  dateToken.SetAsDynamicCurrDateToken();
  KXDateTime token;
  token.SetAsDynamicCurrDateTimeToken();
  using enum PropertyValue::Type;
  return {
      {Of(42), Integer, L"42", true, L"42", L"42.0", L"42", nullptr, nullptr, nullptr},
      {Of(0), Integer, L"0", false, L"0", L"0.0", L"0", nullptr, nullptr, nullptr},
      {Of(-2.75), Float, L"-2.75", true, L"-2", L"-2.75", L"-2.75", nullptr, nullptr, nullptr},
      {Of(-0.0), Float, L"-0.0", false, L"0", L"-0.0", L"0", nullptr, nullptr, nullptr},
      {Of(2147483647.9), Float, L"2147483647.9", true, L"2147483647", L"2147483647.9", L"2147483647.9", nullptr,
       nullptr, nullptr},
      {Of(2147483648.0), Float, L"2147483648.0", true, nullptr, L"2147483648.0", L"2147483648", nullptr, nullptr,
       nullptr},
      {Of(1e300), Float, L"1e+300", true, nullptr, L"1e+300", nullptr, nullptr, nullptr, nullptr},
      {Of(std::nan("")), Float, L"nan", true, nullptr, L"nan", nullptr, nullptr, nullptr, nullptr},
      {NumberOf(L"1234567890123456789.5"), Number, L"1234567890123456789.5", true, nullptr, L"1.2345678901234568e+18",
       L"1234567890123456789.5", nullptr, nullptr, nullptr},
      {NumberOf(L"0"), Number, L"0", false, L"0", L"0.0", L"0", nullptr, nullptr, nullptr},
      {Of(L" 12.7 "), String, L" 12.7 ", true, L"12", L"12.7", L"12.7", nullptr, nullptr, nullptr},
      {Of(L"0"), String, L"0", true, L"0", L"0.0", L"0", nullptr, nullptr, nullptr},
      {Of(L"+1e200"), String, L"+1e200", true, nullptr, L"1e+200", nullptr, nullptr, nullptr, nullptr},
      {Of(L"1e-400"), String, L"1e-400", true, L"0", L"0.0", L"0", nullptr, nullptr, nullptr},
      {Of(L"1e400"), String, L"1e400", true, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
      {Of(L"inf"), String, L"inf", true, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
      {Of(L"+-1"), String, L"+-1", true, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
      {Of(L"red"), String, L"red", true, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
      {Of(L""), String, L"", false, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
      {Of(L"2020-02-29"), String, L"2020-02-29", true, nullptr, nullptr, nullptr, L"2020-02-29", L"00:00:00",
       L"2020-02-29 00:00:00"},
      {Of(L"2020-02-29 10:11:12.5"), String, L"2020-02-29 10:11:12.5", true, nullptr, nullptr, nullptr, L"2020-02-29",
       L"10:11:12.500000000", L"2020-02-29 10:11:12.500000000"},
      {Of(L"10:11"), String, L"10:11", true, nullptr, nullptr, nullptr, nullptr, L"10:11:00", nullptr},
      {Of(KXDate(2020, 2, 29)), Date, L"2020-02-29", true, nullptr, nullptr, nullptr, L"2020-02-29", nullptr,
       L"2020-02-29 00:00:00"},
      {Of(dateToken), Date, L"CURRENT_DATE", true, nullptr, nullptr, nullptr, L"CURRENT_DATE", nullptr, nullptr},
      {Of(KXTime(1, 2, 3)), Time, L"01:02:03", true, nullptr, nullptr, nullptr, nullptr, L"01:02:03", nullptr},
      {Of(KXDateTime(2020, 2, 29, 1, 2, 3, 4)), DateTime, L"2020-02-29 01:02:03.000000004", true, nullptr, nullptr,
       nullptr, L"2020-02-29", L"01:02:03.000000004", L"2020-02-29 01:02:03.000000004"},
      {Of(token), DateTime, L"CURRENT_TIMESTAMP", true, nullptr, nullptr, nullptr, L"CURRENT_DATE", L"CURRENT_TIME",
       L"CURRENT_TIMESTAMP"},
      {Of(KXStringVector{L"7"}), StringVector, L"7", true, L"7", L"7.0", L"7", nullptr, nullptr, nullptr},
      {Of(KXStringVector{L"7", L"8"}), StringVector, L"7;8", true, nullptr, nullptr, nullptr, nullptr, nullptr,
       nullptr},
      {Of(KXStringVector{L"", L""}), StringVector, L";", false, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
      {Of(KXStringVector{}), StringVector, L"", false, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
  };
}

template <class Result>
void ExpectConversion(const PropertyValue& value, Result (PropertyValue::*convert)() const, PropertyValue::Type type,
                      const wchar_t* pExpected) {
  try {
    const Result result = (value.*convert)();
    ASSERT_NE(pExpected, nullptr) << result.StringFrom();
    EXPECT_EQ(result.GetType(), type);
    EXPECT_EQ(result.StringFrom(), pExpected);
  } catch (const ErrorMessage& error) {
    EXPECT_EQ(error.GetCode(), kMsgValueNotConvertible);
    EXPECT_EQ(error.GetArgs()[0], value.StringFrom());
    EXPECT_EQ(pExpected, nullptr) << error.what();
  }
}

TEST(PropertyValue, Conversions) {
  for (const Case& row : Cases()) {
    const PropertyValue& value = *row.m_pValue;
    SCOPED_TRACE(value.StringFrom().ToUTF8());
    EXPECT_EQ(value.GetType(), row.m_type);
    EXPECT_EQ(value.IsNonZero(), row.m_bNonZero);
    ExpectConversion(value, &PropertyValue::ToStringValue, PropertyValue::String, row.m_pString);
    ExpectConversion(value, &PropertyValue::ToIntegerValue, PropertyValue::Integer, row.m_pInteger);
    ExpectConversion(value, &PropertyValue::ToFloatValue, PropertyValue::Float, row.m_pFloat);
    ExpectConversion(value, &PropertyValue::ToNumberValue, PropertyValue::Number, row.m_pNumber);
    ExpectConversion(value, &PropertyValue::ToDateValue, PropertyValue::Date, row.m_pDate);
    ExpectConversion(value, &PropertyValue::ToTimeValue, PropertyValue::Time, row.m_pTime);
    ExpectConversion(value, &PropertyValue::ToDateTimeValue, PropertyValue::DateTime, row.m_pDateTime);
    ExpectConversion(value, &PropertyValue::ToStringVectorValue, PropertyValue::StringVector, row.m_pString);
  }
}

TEST(PropertyValue, VectorsKeepTheirElements) {
  KXStringVector strings{L"old"};
  Of(KXStringVector{L"a", L"b"})->ToStringVectorValue().GetStrings(strings);
  EXPECT_EQ(strings, (KXStringVector{L"a", L"b"}));
  Of(KXDate(2020, 1, 2))->ToStringVectorValue().GetStrings(strings);
  EXPECT_EQ(strings, (KXStringVector{L"2020-01-02"}));
}

TEST(PropertyValue, ClonesAndByteFormsAreTheSameValue) {
  for (const Case& row : Cases()) {
    SCOPED_TRACE(row.m_pValue->StringFrom().ToUTF8());
    ByteVector bytes;
    row.m_pValue->ToByteVector(bytes);
    const std::unique_ptr<PropertyValue> pClone(row.m_pValue->Clone());
    PropertyValue* pRaw = nullptr;
    const BoundedRead bounds(bytes);
    bounds.RequireAtEnd(PropertyValue::FromByteVector(bytes.data(), pRaw));
    const std::unique_ptr<PropertyValue> pRead(pRaw);
    for (const PropertyValue* pCopy : {pClone.get(), pRead.get()}) {
      EXPECT_EQ(pCopy->GetType(), row.m_type);
      ByteVector copyBytes;
      pCopy->ToByteVector(copyBytes);
      EXPECT_EQ(copyBytes, bytes);
    }
  }
  PropertyValue* pValue = nullptr;
  const ByteVector bytes{8, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_THROW(PropertyValue::FromByteVector(bytes.data(), pValue), ErrorMessage);
  EXPECT_EQ(pValue, nullptr);
}

}  // namespace
