#pragma once

#include <compare>
#include <cstdint>

#include "Host/HostTypes.h"
#include "Host/KXDataType.h"
#include "Host/KXDateTime.h"
#include "Host/KXString.h"
#include "Host/KorvelNumber.h"

/// A value in the byte layout of a row field, with the data type that says how to read it.
///
/// Layout: the value stands at the start, and at nullOffset_, if that is not 0, a byte that is not 0 for null. Numbers
/// stand as in memory, a decimal in its byte form, dates, times and timestamps as their records. Character text is
/// zero-ended; varying text is a 32-bit length and that many characters, of 32 bits each if isUnicode_, else narrow in
/// the server's code page. Bits, 1-byte integers and booleans are one byte. Money is a 64-bit count of ten-thousandths.
/// Binary types are raw bytes; an object is raw bytes that its own function compares.
///
/// Comparison is by family. All numbers are one family and compare exactly: integers and decimals as they are, a double
/// as the decimal that its shortest text says, so that 0.1 is 0.1 in either type. Text compares as the server's
/// configuration says, with case or without. A date compares with a timestamp as its midnight. Times and binary values
/// compare with their own kind. Across families, and between a calendar value and a dynamic token, values are neither
/// equal nor is one less: nothing can be concluded from such a pair. The same holds for NaN, even with itself, and for
/// null beside a value; null equals null, and the empty value equals the empty value.
class TypedFieldValue {
 public:
  /// Negative, zero or positive for two objects in their bytes.
  using ObjectCompareFunc = int (*)(const ByteVector& a, const ByteVector& b);

  /// The empty value: KXUnknown without bytes.
  TypedFieldValue() = default;
  // The types are KXVarCharData in Unicode, KXInt4Data, KXDoubleData, KXNumericData, KXDateData, KXTimeData and
  // KXDateTimeData. A nullable value has a null byte, which says that it is not null.
  TypedFieldValue(const KXString& value, bool bNullable);
  TypedFieldValue(const wchar_t* value, bool bNullable) : TypedFieldValue(KXString(value), bNullable) {}
  TypedFieldValue(int value, bool bNullable);
  TypedFieldValue(double value, bool bNullable);
  TypedFieldValue(const KorvelNumber& value, bool bNullable);
  TypedFieldValue(const KXDate& value, bool bNullable);
  TypedFieldValue(const KXTime& value, bool bNullable);
  TypedFieldValue(const KXDateTime& value, bool bNullable);

  /// A field as it stands in a row: the value's bytes, and behind them the null byte at nullOffset, if that is not 0.
  /// The function is that of an object type, else null. Reading raises an ErrorMessage if the bytes are too few for the
  /// type.
  TypedFieldValue(KXDataType type, ByteVector bytes, std::uint32_t nullOffset, bool bUnicode,
                  ObjectCompareFunc objectCompareFunc = nullptr);

  KXDataType GetKXDataType() const { return kxDataType_; }
  bool IsNull() const;
  const ByteVector& GetBytes() const { return byteVector_; }
  /// Bytes of the value, the null byte not counted.
  std::uint32_t GetLength() const { return length_; }
  std::uint32_t GetNullOffset() const { return nullOffset_; }
  bool IsUnicode() const { return isUnicode_; }

  // Conversions, as those of PropertyValue. Binary values and objects convert to text only, as hexadecimal digits. Null
  // and the empty value are the empty text and nothing else.
  KXString ToString() const;
  int ToInteger() const;
  double ToFloat() const;
  KXDate ToDate() const;
  KXTime ToTime() const;
  KXDateTime ToDateTime() const;
  KorvelNumber ToNumber() const;

  friend bool operator==(const TypedFieldValue& a, const TypedFieldValue& b) { return Compare(a, b) == 0; }
  friend bool operator<(const TypedFieldValue& a, const TypedFieldValue& b) { return Compare(a, b) < 0; }

 private:
  class Reader;

  static std::partial_ordering Compare(const TypedFieldValue& a, const TypedFieldValue& b);
  static std::partial_ordering CompareRaw(const TypedFieldValue& a, const TypedFieldValue& b);

  template <class T>
  void SetRecord(KXDataType type, const T& value, bool bNullable);
  void CloseValue(KXDataType type, bool bNullable);

  ByteVector byteVector_;
  KXDataType kxDataType_ = KXUnknown;
  std::uint32_t length_ = 0;
  std::uint32_t nullOffset_ = 0;
  bool isUnicode_ = false;
  ObjectCompareFunc objectCompareFunc_ = nullptr;
};
