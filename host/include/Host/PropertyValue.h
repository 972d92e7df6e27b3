#pragma once

#include <cstdint>

#include "Host/HostTypes.h"
#include "Host/KXDateTime.h"
#include "Host/KXString.h"
#include "Host/KorvelNumber.h"

class PropertyValueInteger;
class PropertyValueString;
class PropertyValueFloat;
class PropertyValueDate;
class PropertyValueTime;
class PropertyValueDateTime;
class PropertyValueStringVector;
class PropertyValueNumber;

/// The typed value of a request property, a session property or a session variable. Immutable but for the string
/// vector, which its maker fills.
///
/// Conversions give the value as another type, or raise ErrorMessage kMsgValueNotConvertible when it has no such value:
///   to Integer    the whole part, cut off towards zero, of a number in range; of text that reads as one
///   to Float      the nearest one of any number, and of text that reads as one
///   to Number     any number in range; text that reads as one
///   to String     StringFrom()
///   to Date       the date of a timestamp; text that reads as a date or timestamp
///   to Time       the time of a timestamp; text that reads as a time or timestamp
///   to DateTime   the midnight of a date; text that reads as a date or timestamp. A dynamic date token has no such
///                 value: the midnight of the current date is not the current timestamp.
///   to StringVector   the one text StringFrom()
/// A string vector of one element converts as that element, any other only to String.
class PropertyValue {
 public:
  enum Type { Integer, String, Float, Date, Time, DateTime, StringVector, Number };

  virtual ~PropertyValue() = default;

  virtual Type GetType() const = 0;
  /// A copy that the caller owns.
  virtual PropertyValue* Clone() const = 0;
  /// The value as text. A string vector is its elements joined by ";".
  virtual KXString StringFrom() const = 0;
  /// Numbers: whether they are not zero (NaN is not). Text: whether it has characters; a vector: whether one of its
  /// elements has. Dates, times and timestamps: true.
  virtual bool IsNonZero() const = 0;

  PropertyValueInteger ToIntegerValue() const;
  PropertyValueString ToStringValue() const;
  PropertyValueFloat ToFloatValue() const;
  PropertyValueDate ToDateValue() const;
  PropertyValueTime ToTimeValue() const;
  PropertyValueDateTime ToDateTimeValue() const;
  PropertyValueStringVector ToStringVectorValue() const;
  PropertyValueNumber ToNumberValue() const;

  /// Byte form: the type as one byte, then the value.
  void ToByteVector(ByteVector& bv) const;
  /// Gives a new value that the caller owns. Raises an ErrorMessage if the bytes begin with no type.
  static const_iterator FromByteVector(const_iterator start, PropertyValue*& pValue);

 protected:
  PropertyValue() = default;
  PropertyValue(const PropertyValue&) = default;
  PropertyValue& operator=(const PropertyValue&) = default;
};

class PropertyValueInteger final : public PropertyValue {
 public:
  explicit PropertyValueInteger(int value) : m_value(value) {}
  int GetInteger() const { return m_value; }

  Type GetType() const override { return Integer; }
  PropertyValueInteger* Clone() const override { return new PropertyValueInteger(*this); }
  KXString StringFrom() const override;
  bool IsNonZero() const override { return m_value != 0; }

 private:
  std::int32_t m_value;
};

class PropertyValueString final : public PropertyValue {
 public:
  explicit PropertyValueString(const KXString& value) : m_value(value) {}
  const KXString& GetString() const { return m_value; }

  Type GetType() const override { return String; }
  PropertyValueString* Clone() const override { return new PropertyValueString(*this); }
  KXString StringFrom() const override { return m_value; }
  bool IsNonZero() const override { return !m_value.empty(); }

 private:
  KXString m_value;
};

class PropertyValueFloat final : public PropertyValue {
 public:
  explicit PropertyValueFloat(double value) : m_value(value) {}
  double GetFloat() const { return m_value; }

  Type GetType() const override { return Float; }
  PropertyValueFloat* Clone() const override { return new PropertyValueFloat(*this); }
  KXString StringFrom() const override;
  bool IsNonZero() const override { return m_value != 0.0; }

 private:
  double m_value;
};

class PropertyValueDate final : public PropertyValue {
 public:
  explicit PropertyValueDate(const KXDate& value) : m_value(value) {}
  const KXDate& GetDate() const { return m_value; }

  Type GetType() const override { return Date; }
  PropertyValueDate* Clone() const override { return new PropertyValueDate(*this); }
  KXString StringFrom() const override { return m_value.ToString(); }
  bool IsNonZero() const override { return true; }

 private:
  KXDate m_value;
};

class PropertyValueTime final : public PropertyValue {
 public:
  explicit PropertyValueTime(const KXTime& value) : m_value(value) {}
  const KXTime& GetTime() const { return m_value; }

  Type GetType() const override { return Time; }
  PropertyValueTime* Clone() const override { return new PropertyValueTime(*this); }
  /// With nine digits of fraction where the time has one, so that no value loses any.
  KXString StringFrom() const override;
  bool IsNonZero() const override { return true; }

 private:
  KXTime m_value;
};

class PropertyValueDateTime final : public PropertyValue {
 public:
  explicit PropertyValueDateTime(const KXDateTime& value) : m_value(value) {}
  const KXDateTime& GetDateTime() const { return m_value; }

  Type GetType() const override { return DateTime; }
  PropertyValueDateTime* Clone() const override { return new PropertyValueDateTime(*this); }
  /// As a time: nine digits of fraction where there is one.
  KXString StringFrom() const override;
  bool IsNonZero() const override { return true; }

 private:
  KXDateTime m_value;
};

/// The values of a multi-valued variable, in order.
class PropertyValueStringVector final : public PropertyValue {
 public:
  PropertyValueStringVector() = default;
  explicit PropertyValueStringVector(KXStringVector values) : m_values(std::move(values)) {}
  const KXStringVector& GetStrings() const { return m_values; }
  /// Replaces what `values` holds.
  void GetStrings(KXStringVector& values) const { values = m_values; }
  void AddString(const KXString& value) { m_values.push_back(value); }

  Type GetType() const override { return StringVector; }
  PropertyValueStringVector* Clone() const override { return new PropertyValueStringVector(*this); }
  KXString StringFrom() const override;
  bool IsNonZero() const override;

 private:
  KXStringVector m_values;
};

class PropertyValueNumber final : public PropertyValue {
 public:
  explicit PropertyValueNumber(const KorvelNumber& value) : m_value(value) {}
  const KorvelNumber& GetNumber() const { return m_value; }

  Type GetType() const override { return Number; }
  PropertyValueNumber* Clone() const override { return new PropertyValueNumber(*this); }
  KXString StringFrom() const override { return m_value.asString(); }
  bool IsNonZero() const override { return !m_value.IsZero(); }

 private:
  KorvelNumber m_value;
};
