#include "Host/TypedFieldValue.h"

#include <algorithm>
#include <compare>
#include <cstring>
#include <optional>
#include <string>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"
#include "Host/SystemUtility.h"
#include "ScalarValue.h"

namespace {

constexpr int kMoneyFractionDigits = 4;

bool IsRawType(KXDataType type) {
  return type == KXBinaryData || type == KXVarBinaryData || type == KXLongVarBinaryData || type == KXObjectData;
}

KXString HexText(const std::uint8_t* pBytes, std::size_t length) {
  static constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  KXString text;
  text.reserve(2 * length);
  for (std::size_t i = 0; i < length; ++i) {
    text.append(kDigits[pBytes[i] >> 4]);
    text.append(kDigits[pBytes[i] & 0xf]);
  }
  return text;
}

KorvelNumber MoneyFrom(std::int64_t units) {
  KXString text = BaseStringUtil::StringFrom(static_cast<long>(units));
  text.append(L"E-").append(BaseStringUtil::StringFrom(kMoneyFractionDigits));
  KorvelNumber money;
  KorvelNumber::FromString(text, money);
  return money;
}

/// The value in another type, or the error that it has none.
template <class Result>
Result Convert(const TypedFieldValue& field, const ScalarValue& value,
               std::optional<Result> (*convert)(const ScalarValue&), const wchar_t* pType) {
  const auto result = convert(value);
  if (!result) KX_RAISE(kMsgValueNotConvertible, field.ToString(), pType);
  return *result;
}

}  // namespace

/// Reads the bytes of a field; every step makes sure that they are there.
class TypedFieldValue::Reader {
 public:
  explicit Reader(const TypedFieldValue& field) : m_field(field) {}

  /// The value; none for null, for the empty value and for raw bytes.
  ScalarValue Read() const {
    if (m_field.IsNull()) return std::monostate();
    switch (m_field.kxDataType_) {
      case KXBitData:
      case KXInt1Data:
      case KXBoolean:
        return std::int64_t{Record<std::int8_t>()};
      case KXUInt1Data:
        return std::int64_t{Record<std::uint8_t>()};
      case KXInt2Data:
        return std::int64_t{Record<std::int16_t>()};
      case KXUInt2Data:
        return std::int64_t{Record<std::uint16_t>()};
      case KXInt4Data:
        return std::int64_t{Record<std::int32_t>()};
      case KXUInt4Data:
        return std::int64_t{Record<std::uint32_t>()};
      case KXFloatData:
        return double{Record<float>()};
      case KXDoubleData:
        return Record<double>();
      case KXMoneyData:
        return MoneyFrom(Record<std::int64_t>());
      case KXNumericData:
      case KXDecimalData:
        return Number();
      case KXDateData:
        return Record<KXDate>();
      case KXTimeData:
        return Record<KXTime>();
      case KXDateTimeData:
      case KXTimeStampData:
        return Record<KXDateTime>();
      case KXCharData:
        return FixedText();
      case KXVarCharData:
      case KXLongVarCharData:
      case KXIntervalData:
        return VaryingText();
      case KXBinaryData:
      case KXVarBinaryData:
      case KXLongVarBinaryData:
      case KXObjectData:
      case KXUnknown:
      case KXMaxType:
        return std::monostate();
    }
    KX_LOGIC_ERROR(L"");
  }

 private:
  const std::uint8_t* Bytes() const { return m_field.byteVector_.data(); }

  void RequireLength(std::uint64_t length) const {
    if (length > m_field.length_) RaiseTooShort();
  }
  [[noreturn]] void RaiseTooShort() const {
    KXString type;
    SUKXDataTypeUtility::GetSingleWordKXDataTypeName(m_field.kxDataType_, type);
    KX_RAISE(kMsgFieldTooShort, type, BaseStringUtil::StringFrom(m_field.length_));
  }

  template <class T>
  T Record() const {
    RequireLength(sizeof(T));
    T value;
    std::memcpy(&value, Bytes(), sizeof(T));
    return value;
  }

  KorvelNumber Number() const {
    const BoundedRead bounds(Bytes(), Bytes() + m_field.length_);
    KorvelNumber number;
    number.FromByteVector(Bytes());
    return number;
  }

  /// Zero-ended, or as long as the field; the blanks that fill the field up are no part of the value.
  KXString FixedText() const {
    KXString text = m_field.isUnicode_ ? WideText(Bytes(), m_field.length_ / sizeof(wchar_t))
                                       : NarrowText(Bytes(), m_field.length_);
    const std::size_t end = text.find(L'\0');
    if (end != KXString::npos) text = text.substr(0, end);
    BaseStringUtil::TrimTrailingBlanks(text);
    return text;
  }

  KXString VaryingText() const {
    const auto count = Record<std::uint32_t>();
    const std::uint64_t characterSize = m_field.isUnicode_ ? sizeof(wchar_t) : 1;
    RequireLength(sizeof(count) + count * characterSize);
    const std::uint8_t* pText = Bytes() + sizeof(count);
    return m_field.isUnicode_ ? WideText(pText, count) : NarrowText(pText, count);
  }

  static KXString WideText(const std::uint8_t* pText, std::size_t count) {
    std::wstring text(count, L'\0');
    if (count > 0) std::memcpy(text.data(), pText, count * sizeof(wchar_t));
    return KXString(std::wstring_view(text));
  }
  static KXString NarrowText(const std::uint8_t* pText, std::size_t count) {
    return BaseStringUtil::StringFrom(std::string_view(reinterpret_cast<const char*>(pText), count),
                                      SystemUtility::GetMultiByteCodePage());
  }

  const TypedFieldValue& m_field;
};

TypedFieldValue::TypedFieldValue(const KXString& value, bool bNullable) : isUnicode_(true) {
  KX_ASSERT(value.size() <= UINT32_MAX / sizeof(wchar_t) - sizeof(std::uint32_t));
  const auto count = static_cast<std::uint32_t>(value.size());
  byteVector_.resize(sizeof(count) + count * sizeof(wchar_t));
  std::memcpy(byteVector_.data(), &count, sizeof(count));
  std::memcpy(byteVector_.data() + sizeof(count), value.data(), count * sizeof(wchar_t));
  CloseValue(KXVarCharData, bNullable);
}

TypedFieldValue::TypedFieldValue(int value, bool bNullable) { SetRecord(KXInt4Data, std::int32_t{value}, bNullable); }
TypedFieldValue::TypedFieldValue(double value, bool bNullable) { SetRecord(KXDoubleData, value, bNullable); }
TypedFieldValue::TypedFieldValue(const KXDate& value, bool bNullable) { SetRecord(KXDateData, value, bNullable); }
TypedFieldValue::TypedFieldValue(const KXTime& value, bool bNullable) { SetRecord(KXTimeData, value, bNullable); }
TypedFieldValue::TypedFieldValue(const KXDateTime& value, bool bNullable) {
  SetRecord(KXDateTimeData, value, bNullable);
}

TypedFieldValue::TypedFieldValue(const KorvelNumber& value, bool bNullable) {
  value.ToByteVector(byteVector_);
  CloseValue(KXNumericData, bNullable);
}

TypedFieldValue::TypedFieldValue(KXDataType type, ByteVector bytes, std::uint32_t nullOffset, bool bUnicode,
                                 ObjectCompareFunc objectCompareFunc)
    : byteVector_(std::move(bytes)),
      kxDataType_(type),
      length_(static_cast<std::uint32_t>(nullOffset != 0 ? nullOffset : byteVector_.size())),
      nullOffset_(nullOffset),
      isUnicode_(bUnicode),
      objectCompareFunc_(objectCompareFunc) {
  KX_ASSERT(type < KXMaxType);
  KX_ASSERT(nullOffset == 0 || nullOffset < byteVector_.size());
}

template <class T>
void TypedFieldValue::SetRecord(KXDataType type, const T& value, bool bNullable) {
  byteVector_.resize(sizeof(T));
  std::memcpy(byteVector_.data(), &value, sizeof(T));
  CloseValue(type, bNullable);
}

/// To be called when the bytes of the value, and no others, are there.
void TypedFieldValue::CloseValue(KXDataType type, bool bNullable) {
  kxDataType_ = type;
  length_ = static_cast<std::uint32_t>(byteVector_.size());
  if (!bNullable) return;
  nullOffset_ = length_;
  byteVector_.push_back(0);
}

bool TypedFieldValue::IsNull() const { return nullOffset_ != 0 && byteVector_[nullOffset_] != 0; }

KXString TypedFieldValue::ToString() const {
  if (IsRawType(kxDataType_)) return IsNull() ? KXString() : HexText(byteVector_.data(), length_);
  return ScalarConversion::ToText(Reader(*this).Read());
}

int TypedFieldValue::ToInteger() const {
  return Convert(*this, Reader(*this).Read(), ScalarConversion::ToInteger, L"an integer");
}
double TypedFieldValue::ToFloat() const {
  return Convert(*this, Reader(*this).Read(), ScalarConversion::ToFloat, L"a floating point number");
}
KXDate TypedFieldValue::ToDate() const {
  return Convert(*this, Reader(*this).Read(), ScalarConversion::ToDate, L"a date");
}
KXDateTime TypedFieldValue::ToDateTime() const {
  return Convert(*this, Reader(*this).Read(), ScalarConversion::ToDateTime, L"a timestamp");
}
KXTime TypedFieldValue::ToTime() const {
  return Convert(*this, Reader(*this).Read(), ScalarConversion::ToTime, L"a time");
}
KorvelNumber TypedFieldValue::ToNumber() const {
  return Convert(*this, Reader(*this).Read(), ScalarConversion::ToNumber, L"a number");
}

/// Order of two fields of raw bytes that are not null. Objects compare by their function, if both have the same one.
std::partial_ordering TypedFieldValue::CompareRaw(const TypedFieldValue& a, const TypedFieldValue& b) {
  const ByteVector aBytes(a.byteVector_.begin(), a.byteVector_.begin() + a.length_);
  const ByteVector bBytes(b.byteVector_.begin(), b.byteVector_.begin() + b.length_);
  const bool bObjects = a.kxDataType_ == KXObjectData;
  if (bObjects != (b.kxDataType_ == KXObjectData)) return std::partial_ordering::unordered;
  if (!bObjects) return aBytes <=> bBytes;
  if (a.objectCompareFunc_ == nullptr || a.objectCompareFunc_ != b.objectCompareFunc_) {
    return std::partial_ordering::unordered;
  }
  return a.objectCompareFunc_(aBytes, bBytes) <=> 0;
}

std::partial_ordering TypedFieldValue::Compare(const TypedFieldValue& a, const TypedFieldValue& b) {
  if (a.IsNull() || b.IsNull()) {
    return a.IsNull() == b.IsNull() ? std::partial_ordering::equivalent : std::partial_ordering::unordered;
  }
  const bool bRaw = IsRawType(a.kxDataType_);
  if (bRaw != IsRawType(b.kxDataType_)) return std::partial_ordering::unordered;
  return bRaw ? CompareRaw(a, b) : ScalarConversion::Compare(Reader(a).Read(), Reader(b).Read());
}
