#include "Host/PropertyValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <tuple>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "HostMemory/MemoryGateway.h"

namespace {

KorvelNumber Number(const wchar_t* text) { return PropertyValueString(text).ToNumberValue().GetNumber(); }

/// The text of the value in another type; none where it has no such value.
template <class Result>
KXString In(Result (PropertyValue::*convert)() const, const PropertyValue& value) {
  try {
    return L"|" + (value.*convert)().StringFrom();
  } catch (const ErrorMessage& error) {
    EXPECT_EQ(error.GetCode(), kMsgValueNotConvertible);
    EXPECT_EQ(error.GetArgs()[0], value.StringFrom());
    return L"|";
  }
}

TEST(PropertyValue, ConversionsClonesAndByteForms) {
  // Whether it counts as more than zero; String|Integer|Float|Number|Date|Time|DateTime.
  std::tuple<MemoryValue, bool, const wchar_t*> cases[] = {
      {-2.75, true, L"-2.75|-2|-2.75|-2.75|||"},
      {-0.0, false, L"-0.0|0|-0.0|0|||"},
      {2147483647.9, true, L"2147483647.9|2147483647|2147483647.9|2147483647.9|||"},
      {2147483648.0, true, L"2147483648.0||2147483648.0|2147483648|||"},
      {std::nan(""), true, L"nan||nan||||"},
      {Number(L"12345678901234567.5"), true, L"12345678901234567.5||1.2345678901234568e+16|12345678901234567.5|||"},
      {L" 12.7 ", true, L" 12.7 |12|12.7|12.7|||"},
      {L"+1e200", true, L"+1e200||1e+200||||"},
      {L"1e-400", true, L"1e-400|0|0.0|0|||"},
      {L"inf", true, L"inf||||||"},
      {L"", false, L"||||||"},
      {L"2020-02-29", true, L"2020-02-29||||2020-02-29|00:00:00|2020-02-29 00:00:00"},
      {L"10:11:12.5", true, L"10:11:12.5|||||10:11:12.500000000|"},
      {KXDate(2020, 2, 29), true, L"2020-02-29||||2020-02-29||2020-02-29 00:00:00"},
      {kxdatetime::kCurrentDate, true, L"CURRENT_DATE||||CURRENT_DATE||"},
      {KXTime(0, 0, 0, 4), true, L"00:00:00.000000004|||||00:00:00.000000004|"},
      {KXDateTime(2020, 2, 29, 1, 2, 3), true, L"2020-02-29 01:02:03||||2020-02-29|01:02:03|2020-02-29 01:02:03"},
      {kxdatetime::kCurrentDateTime, true, L"CURRENT_TIMESTAMP||||CURRENT_DATE|CURRENT_TIME|CURRENT_TIMESTAMP"},
      {KXStringVector{L"7"}, true, L"7|7|7.0|7|||"},
      {KXStringVector{L"", L""}, false, L";||||||"},
  };
  for (auto& [memoryValue, bNonZero, conversions] : cases) {
    SCOPED_TRACE(conversions);
    const auto pValue = memoryValue.Release();
    const PropertyValue& value = *pValue;
    EXPECT_EQ(value.IsNonZero(), bNonZero);
    EXPECT_EQ(value.ToStringValue().StringFrom() + In(&PropertyValue::ToIntegerValue, value) +
                  In(&PropertyValue::ToFloatValue, value) + In(&PropertyValue::ToNumberValue, value) +
                  In(&PropertyValue::ToDateValue, value) + In(&PropertyValue::ToTimeValue, value) +
                  In(&PropertyValue::ToDateTimeValue, value),
              conversions);
    ByteVector bytes;
    value.ToByteVector(bytes);
    PropertyValue* pRead = nullptr;
    EXPECT_EQ(PropertyValue::FromByteVector(bytes.data(), pRead), bytes.data() + bytes.size());
    for (PropertyValue* pCopy : {pRead, value.Clone()}) {
      const std::unique_ptr<PropertyValue> owner(pCopy);
      EXPECT_EQ(pCopy->GetType(), value.GetType());
      ByteVector copyBytes;
      pCopy->ToByteVector(copyBytes);
      EXPECT_EQ(copyBytes, bytes);
    }
  }
  PropertyValue* pValue = nullptr;
  EXPECT_THROW(PropertyValue::FromByteVector(ByteVector{8, 0, 0, 0, 0, 0, 0, 0, 0}.data(), pValue), ErrorMessage);
  EXPECT_EQ(pValue, nullptr);
}

}  // namespace
