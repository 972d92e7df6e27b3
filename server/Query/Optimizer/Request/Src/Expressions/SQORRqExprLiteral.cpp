#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/KXAssert.h"
#include "Host/PropertyValue.h"
#include "Host/SUSystemConfig.h"
#include "Host/SystemUtility.h"
#include "Host/TypedFieldValue.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

PartitionedPools<TypedObjPool<RqExprIntegerLiteral>> global_integerPools;
PartitionedPools<TypedObjPool<RqExprStringLiteral>> global_stringPools;
PartitionedPools<TypedObjPool<RqExprFloatLiteral>> global_floatPools;
PartitionedPools<TypedObjPool<RqExprDateLiteral>> global_datePools;
PartitionedPools<TypedObjPool<RqExprTimeLiteral>> global_timePools;
PartitionedPools<TypedObjPool<RqExprDateTimeLiteral>> global_dateTimePools;
PartitionedPools<TypedObjPool<RqExprNullLiteral>> global_nullPools;
PartitionedPools<TypedObjPool<RqExprNumberLiteral>> global_numberPools;

namespace {

KXString Quoted(std::wstring_view text, wchar_t quote) {
  return quote + BaseStringUtil::EscapeCharacter(text, quote, quote) + quote;
}

bool IsCaseSensitive() { return SUSystemConfig::GetSystemConfig().IsCaseSensitive(); }

// Fields of a row record. They are packed, so none is aligned.

template <class T>
T ReadAs(const std::uint8_t* pField) {
  T value;
  std::memcpy(&value, pField, sizeof(T));
  return value;
}

/// Wide text up to its zero, or up to maxLength characters.
std::wstring ReadWideText(const std::uint8_t* pText, std::size_t maxLength) {
  std::wstring text;
  for (std::size_t i = 0; i < maxLength; ++i) {
    const auto character = ReadAs<wchar_t>(pText + i * sizeof(wchar_t));
    if (character == L'\0') break;
    text.push_back(character);
  }
  return text;
}

KXString FromNarrowText(const std::uint8_t* pText, std::size_t length) {
  return BaseStringUtil::StringFrom(std::string_view(reinterpret_cast<const char*>(pText), length),
                                    SystemUtility::GetMultiByteCodePage());
}

KXString ReadFixedText(const std::uint8_t* pField, bool bUnicode) {
  if (!bUnicode) return FromNarrowText(pField, std::strlen(reinterpret_cast<const char*>(pField)));
  const std::wstring text = ReadWideText(pField, std::wstring::npos);
  return KXString(BaseStringUtil::TrimTrailingBlanks(std::wstring_view(text)));
}

/// Wanted: wide text ends at a zero inside it, and narrow text does not.
KXString ReadVaryingText(const std::uint8_t* pField, bool bUnicode) {
  const auto length = ReadAs<std::uint32_t>(pField);
  const std::uint8_t* const pText = pField + sizeof(length);
  return bUnicode ? KXString(ReadWideText(pText, length)) : FromNarrowText(pText, length);
}

}  // namespace

KXString RqExprLiteral::ToCanonicalCSVFormat() const { KX_LOGIC_ERROR(L""); }

void RqExprLiteral::ToByteVector(ByteVector& bv) {
  RqExpr::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bDescriptorIDOFValue);
}

const_iterator RqExprLiteral::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqExpr::FromByteVector(start), m_bDescriptorIDOFValue);
}

RqExprLiteral* RqExprLiteral::MakeRqExprLiteral(const TypedFieldValue& rhs) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(rhs.GetKXDataType())) {
    case KXTypeClass::kBit:
    case KXTypeClass::kText:
    case KXTypeClass::kBinary:
    case KXTypeClass::kInterval:
    case KXTypeClass::kObject:
    case KXTypeClass::kBoolean:
    case KXTypeClass::kUnknown:
      return new RqExprStringLiteral(rhs.ToString());
    case KXTypeClass::kInteger:
      return new RqExprIntegerLiteral(rhs.ToInteger(), false);
    case KXTypeClass::kFloat:
      return new RqExprFloatLiteral(rhs.ToFloat());
    case KXTypeClass::kDecimal:
      return new RqExprNumberLiteral(rhs.ToNumber());
    case KXTypeClass::kDate:
      return new RqExprDateLiteral(rhs.ToDate());
    case KXTypeClass::kTime:
      return new RqExprTimeLiteral(rhs.ToTime());
    case KXTypeClass::kDateTime:
      return new RqExprDateTimeLiteral(rhs.ToDateTime(), 0);
    case KXTypeClass::kMoney:
      break;
  }
  KX_LOGIC_ERROR(L"");
}

RqExprLiteral* RqExprLiteral::MakeRqExprLiteral(ObjPoolGuard<RqExprLiteral>& owner, PropertyValue* pPropertyValue) {
  KX_ASSERT(pPropertyValue);
  switch (pPropertyValue->GetType()) {
    case PropertyValue::Integer:
      return FastMakeIntegerLiteral(owner, static_cast<const PropertyValueInteger&>(*pPropertyValue).GetInteger());
    case PropertyValue::Float:
      return FastMakeFloatLiteral(owner, static_cast<const PropertyValueFloat&>(*pPropertyValue).GetFloat());
    case PropertyValue::Date:
      return FastMakeDateLiteral(owner, static_cast<const PropertyValueDate&>(*pPropertyValue).GetDate());
    case PropertyValue::Time:
      return FastMakeTimeLiteral(owner, static_cast<const PropertyValueTime&>(*pPropertyValue).GetTime());
    case PropertyValue::DateTime:
      return FastMakeDateTimeLiteral(owner, static_cast<const PropertyValueDateTime&>(*pPropertyValue).GetDateTime());
    case PropertyValue::Number:
      return FastMakeNumberLiteral(owner, static_cast<const PropertyValueNumber&>(*pPropertyValue).GetNumber());
    case PropertyValue::String:
    case PropertyValue::StringVector:
      return FastMakeStringLiteral(owner, pPropertyValue->StringFrom());
  }
  KX_LOGIC_ERROR(L"");
}

RqExprLiteral* RqExprLiteral::MakeRqExprLiteral(ObjPoolGuard<RqExprLiteral>& owner, KXDataType dataType,
                                                int valueOffset, int nullOffset,
                                                const std::uint8_t* pKXListstreamRecord, bool bUnicode) {
  KX_ASSERT(pKXListstreamRecord);
  if (nullOffset != 0 && pKXListstreamRecord[nullOffset] != 0) return FastMakeNullLiteral(owner);

  const std::uint8_t* const pField = pKXListstreamRecord + valueOffset;
  switch (dataType) {
    case KXBitData:
    case KXInt1Data:
    case KXBoolean:
      return FastMakeIntegerLiteral(owner, ReadAs<std::int8_t>(pField));
    case KXUInt1Data:
      return FastMakeIntegerLiteral(owner, ReadAs<std::uint8_t>(pField));
    case KXInt2Data:
      return FastMakeIntegerLiteral(owner, ReadAs<std::int16_t>(pField));
    case KXUInt2Data:
      return FastMakeIntegerLiteral(owner, ReadAs<std::uint16_t>(pField));
    case KXInt4Data:
      return FastMakeIntegerLiteral(owner, ReadAs<std::int32_t>(pField));
    case KXUInt4Data: {
      const auto value = ReadAs<std::uint32_t>(pField);
      if (value <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) {
        return FastMakeIntegerLiteral(owner, static_cast<std::int32_t>(value));
      }
      return FastMakeFloatLiteral(owner, value);
    }
    case KXFloatData:
      return FastMakeFloatLiteral(owner, ReadAs<float>(pField));
    case KXDoubleData:
      return FastMakeFloatLiteral(owner, ReadAs<double>(pField));
    case KXCharData:
      return FastMakeStringLiteral(owner, ReadFixedText(pField, bUnicode));
    case KXVarCharData:
    case KXLongVarCharData:
      return FastMakeStringLiteral(owner, ReadVaryingText(pField, bUnicode));
    case KXNumericData:
    case KXDecimalData: {
      KorvelNumber number;
      number.FromByteVector(pField);
      return FastMakeNumberLiteral(owner, number);
    }
    case KXDateData:
      return FastMakeDateLiteral(owner, ReadAs<KXDate>(pField));
    case KXTimeData:
      return FastMakeTimeLiteral(owner, ReadAs<KXTime>(pField));
    case KXDateTimeData:
    case KXTimeStampData:
      return FastMakeDateTimeLiteral(owner, ReadAs<KXDateTime>(pField));
    case KXBinaryData:
    case KXVarBinaryData:
    case KXLongVarBinaryData:
    case KXMoneyData:
    case KXIntervalData:
    case KXObjectData:
    case KXUnknown:
    case KXMaxType:
      break;
  }
  KX_LOGIC_ERROR(L"");
}

// What follows from the value

template <class Derived, RqNodeType_e kKind>
bool RqExprValueLiteral<Derived, kKind>::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqExpr::IsEquivalent(rhs, pred) &&
         ValueOf(static_cast<const Derived&>(*this)) == ValueOf(static_cast<const Derived&>(rhs));
}

template <class Derived, RqNodeType_e kKind>
bool RqExprValueLiteral<Derived, kKind>::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(static_cast<const Derived&>(*this), rhs, ValueOf);
}

template <class Derived, RqNodeType_e kKind>
std::weak_ordering RqExprValueLiteral<Derived, kKind>::CompareShallow(const RqExpr& rhs) const {
  return CompareShallowByKey(static_cast<const Derived&>(*this), rhs, ValueOf);
}

template <class Derived, RqNodeType_e kKind>
void RqExprValueLiteral<Derived, kKind>::ToByteVector(ByteVector& bv) {
  RqExprLiteral::ToByteVector(bv);
  RqFieldBytes::Write(bv, static_cast<const Derived&>(*this), Derived::kValue);
}

template <class Derived, RqNodeType_e kKind>
const_iterator RqExprValueLiteral<Derived, kKind>::FromByteVector(const_iterator start) {
  return RqFieldBytes::Read(RqExprLiteral::FromByteVector(start), static_cast<Derived&>(*this), Derived::kValue);
}

template class RqExprValueLiteral<RqExprStringLiteral, kRqExprStringLiteral>;
template class RqExprValueLiteral<RqExprIntegerLiteral, kRqExprIntegerLiteral>;
template class RqExprValueLiteral<RqExprFloatLiteral, kRqExprFloatLiteral>;
template class RqExprValueLiteral<RqExprDateLiteral, kRqExprDateLiteral>;
template class RqExprValueLiteral<RqExprTimeLiteral, kRqExprTimeLiteral>;
template class RqExprValueLiteral<RqExprDateTimeLiteral, kRqExprDateTimeLiteral>;
template class RqExprValueLiteral<RqExprIntervalLiteral, kRqExprIntervalLiteral>;
template class RqExprValueLiteral<RqExprNumberLiteral, kRqExprNumberLiteral>;

bool RqExprStringLiteral::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqExpr::IsEquivalent(rhs, pred)) return false;
  const std::wstring_view left = BaseStringUtil::TrimTrailingBlanks(m_value.view());
  const std::wstring_view right =
      BaseStringUtil::TrimTrailingBlanks(static_cast<const RqExprStringLiteral&>(rhs).m_value.view());
  return IsCaseSensitive() ? left == right : BaseStringUtil::IsCaseInsensitiveMatch(left, right);
}

bool RqExprStringLiteral::IsShallowLessThan(const RqExpr& rhs) const {
  if (IsCaseSensitive() || GetObjectType() != rhs.GetObjectType()) return RqExprValueLiteral::IsShallowLessThan(rhs);
  return BaseStringUtil::IsCaseInsensitiveLessThan(m_value, static_cast<const RqExprStringLiteral&>(rhs).m_value);
}

// The value as text

KXString RqExprStringLiteral::ToCanonicalCSVFormat() const {
  return Quoted(m_value, m_stringWrapperSymbol == kDoubleQuote ? L'"' : L'\'');
}

KXString RqExprIntegerLiteral::ToCanonicalCSVFormat() const { return BaseStringUtil::StringFrom(m_numValue); }

KXString RqExprFloatLiteral::ToCanonicalCSVFormat() const { return BaseStringUtil::StringFrom(m_numValue, false); }

KXString RqExprDateLiteral::ToCanonicalCSVFormat() const { return Quoted(m_dateValue.ToString(), L'\''); }

KXString RqExprTimeLiteral::ToCanonicalCSVFormat() const { return Quoted(m_timeValue.ToString(3), L'\''); }

KXString RqExprDateTimeLiteral::ToCanonicalCSVFormat() const { return Quoted(m_dateTimeValue.ToString(3), L'\''); }

KXString RqExprNumberLiteral::ToCanonicalCSVFormat() const {
  return BaseStringUtil::StringFrom(m_numValue.asDouble(), false);
}

// The value as a property value

PropertyValue* RqExprStringLiteral::MakePropertyValue() const { return new PropertyValueString(m_value); }

PropertyValue* RqExprIntegerLiteral::MakePropertyValue() const { return new PropertyValueInteger(m_numValue); }

PropertyValue* RqExprFloatLiteral::MakePropertyValue() const { return new PropertyValueFloat(m_numValue); }

PropertyValue* RqExprDateLiteral::MakePropertyValue() const { return new PropertyValueDate(m_dateValue); }

PropertyValue* RqExprTimeLiteral::MakePropertyValue() const { return new PropertyValueTime(m_timeValue); }

PropertyValue* RqExprDateTimeLiteral::MakePropertyValue() const { return new PropertyValueDateTime(m_dateTimeValue); }

PropertyValue* RqExprNumberLiteral::MakePropertyValue() const { return new PropertyValueNumber(m_numValue); }
