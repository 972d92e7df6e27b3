#include "Host/PropertyValue.h"

#include <algorithm>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"
#include "ScalarValue.h"

namespace {

constexpr wchar_t kElementSeparator = L';';

ScalarValue ScalarOf(const PropertyValueInteger& value) { return std::int64_t{value.GetInteger()}; }
ScalarValue ScalarOf(const PropertyValueString& value) { return value.GetString(); }
ScalarValue ScalarOf(const PropertyValueFloat& value) { return value.GetFloat(); }
ScalarValue ScalarOf(const PropertyValueDate& value) { return value.GetDate(); }
ScalarValue ScalarOf(const PropertyValueTime& value) { return value.GetTime(); }
ScalarValue ScalarOf(const PropertyValueDateTime& value) { return value.GetDateTime(); }
ScalarValue ScalarOf(const PropertyValueNumber& value) { return value.GetNumber(); }
/// A vector stands for its element if it has exactly one.
ScalarValue ScalarOf(const PropertyValueStringVector& value) {
  if (value.GetStrings().size() != 1) return std::monostate();
  return value.GetStrings().front();
}

/// Calls the function with the value as an object of its class.
template <class Function>
decltype(auto) Dispatch(const PropertyValue& value, Function function) {
  switch (value.GetType()) {
    case PropertyValue::Integer:
      return function(static_cast<const PropertyValueInteger&>(value));
    case PropertyValue::String:
      return function(static_cast<const PropertyValueString&>(value));
    case PropertyValue::Float:
      return function(static_cast<const PropertyValueFloat&>(value));
    case PropertyValue::Date:
      return function(static_cast<const PropertyValueDate&>(value));
    case PropertyValue::Time:
      return function(static_cast<const PropertyValueTime&>(value));
    case PropertyValue::DateTime:
      return function(static_cast<const PropertyValueDateTime&>(value));
    case PropertyValue::StringVector:
      return function(static_cast<const PropertyValueStringVector&>(value));
    case PropertyValue::Number:
      return function(static_cast<const PropertyValueNumber&>(value));
  }
  KX_LOGIC_ERROR(L"");
}

/// The value in another type by one of the conversions of ScalarConversion, or the error that it has none.
template <class Result>
Result Convert(const PropertyValue& value, std::optional<Result> (*convert)(const ScalarValue&), const wchar_t* pType) {
  const auto scalar = Dispatch(value, [](const auto& typed) { return ScalarOf(typed); });
  const auto result = convert(scalar);
  if (!result) KX_RAISE(kMsgValueNotConvertible, value.StringFrom(), pType);
  return *result;
}

void WriteValue(ByteVector& bv, const PropertyValueInteger& value) {
  DataBlobUtil::ToByteVector(bv, std::int32_t{value.GetInteger()});
}
void WriteValue(ByteVector& bv, const PropertyValueString& value) { DataBlobUtil::ToByteVector(bv, value.GetString()); }
void WriteValue(ByteVector& bv, const PropertyValueFloat& value) { DataBlobUtil::ToByteVector(bv, value.GetFloat()); }
void WriteValue(ByteVector& bv, const PropertyValueDate& value) { value.GetDate().ToByteVector(bv); }
void WriteValue(ByteVector& bv, const PropertyValueTime& value) { value.GetTime().ToByteVector(bv); }
void WriteValue(ByteVector& bv, const PropertyValueDateTime& value) { value.GetDateTime().ToByteVector(bv); }
void WriteValue(ByteVector& bv, const PropertyValueStringVector& value) {
  DataBlobUtil::ToByteVector(bv, value.GetStrings());
}
void WriteValue(ByteVector& bv, const PropertyValueNumber& value) { value.GetNumber().ToByteVector(bv); }

/// Reads what the property type holds, by DataBlobUtil or by its own operation, and makes the property.
template <class Property, class Content>
const_iterator ReadValue(const_iterator start, PropertyValue*& pValue) {
  Content content{};
  if constexpr (requires { content.FromByteVector(start); }) {
    start = content.FromByteVector(start);
  } else {
    start = DataBlobUtil::FromByteVector(start, content);
  }
  pValue = new Property(content);
  return start;
}

}  // namespace

PropertyValueInteger PropertyValue::ToIntegerValue() const {
  return PropertyValueInteger(Convert(*this, ScalarConversion::ToInteger, L"an integer"));
}
PropertyValueString PropertyValue::ToStringValue() const { return PropertyValueString(StringFrom()); }
PropertyValueFloat PropertyValue::ToFloatValue() const {
  return PropertyValueFloat(Convert(*this, ScalarConversion::ToFloat, L"a floating point number"));
}
PropertyValueDate PropertyValue::ToDateValue() const {
  return PropertyValueDate(Convert(*this, ScalarConversion::ToDate, L"a date"));
}
PropertyValueTime PropertyValue::ToTimeValue() const {
  return PropertyValueTime(Convert(*this, ScalarConversion::ToTime, L"a time"));
}
PropertyValueDateTime PropertyValue::ToDateTimeValue() const {
  return PropertyValueDateTime(Convert(*this, ScalarConversion::ToDateTime, L"a timestamp"));
}
PropertyValueStringVector PropertyValue::ToStringVectorValue() const {
  if (GetType() == StringVector) return static_cast<const PropertyValueStringVector&>(*this);
  return PropertyValueStringVector({StringFrom()});
}
PropertyValueNumber PropertyValue::ToNumberValue() const {
  return PropertyValueNumber(Convert(*this, ScalarConversion::ToNumber, L"a number"));
}

void PropertyValue::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint8_t>(GetType()));
  Dispatch(*this, [&bv](const auto& typed) { WriteValue(bv, typed); });
}

const_iterator PropertyValue::FromByteVector(const_iterator start, PropertyValue*& pValue) {
  const const_iterator typeStart = start;
  std::uint8_t type;
  start = DataBlobUtil::FromByteVector(start, type);
  switch (type) {
    case Integer:
      return ReadValue<PropertyValueInteger, std::int32_t>(start, pValue);
    case String:
      return ReadValue<PropertyValueString, KXString>(start, pValue);
    case Float:
      return ReadValue<PropertyValueFloat, double>(start, pValue);
    case Date:
      return ReadValue<PropertyValueDate, KXDate>(start, pValue);
    case Time:
      return ReadValue<PropertyValueTime, KXTime>(start, pValue);
    case DateTime:
      return ReadValue<PropertyValueDateTime, KXDateTime>(start, pValue);
    case StringVector:
      return ReadValue<PropertyValueStringVector, KXStringVector>(start, pValue);
    case Number:
      return ReadValue<PropertyValueNumber, KorvelNumber>(start, pValue);
  }
  DataBlobUtil::RaiseMalformed(typeStart, L"property value");
}

KXString PropertyValueInteger::StringFrom() const { return ScalarConversion::ToText(ScalarOf(*this)); }
KXString PropertyValueFloat::StringFrom() const { return ScalarConversion::ToText(ScalarOf(*this)); }
KXString PropertyValueTime::StringFrom() const { return ScalarConversion::ToText(ScalarOf(*this)); }
KXString PropertyValueDateTime::StringFrom() const { return ScalarConversion::ToText(ScalarOf(*this)); }

KXString PropertyValueStringVector::StringFrom() const {
  KXString text;
  for (std::size_t i = 0; i < m_values.size(); ++i) {
    if (i > 0) text.append(kElementSeparator);
    text.append(m_values[i]);
  }
  return text;
}

bool PropertyValueStringVector::IsNonZero() const {
  return std::ranges::any_of(m_values, [](const KXString& value) { return !value.empty(); });
}
