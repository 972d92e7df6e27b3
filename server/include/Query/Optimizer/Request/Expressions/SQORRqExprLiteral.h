#pragma once

#include <cstdint>

#include "Host/KXDataType.h"
#include "Host/KXDateTime.h"
#include "Host/KXString.h"
#include "Host/KorvelNumber.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Utility/Generic/SUGObjMemPool.h"

class TypedFieldValue;

/// A constant of a request.
///
/// Comparison is by kind and value; what else a literal holds (precision, marks, quotes) takes no part in it.
class RqExprLiteral : public RqExpr {
 public:
  RqExprLiteral() = default;
  RqExprLiteral(const RqExprLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExpr(rhs, bNewIDs, bDeepCopy), m_bDescriptorIDOFValue(rhs.m_bDescriptorIDOFValue) {}

  virtual bool IsStringLiteral() const { return false; }
  virtual bool IsIntegerLiteral() const { return false; }
  virtual bool IsFloatLiteral() const { return false; }
  virtual bool IsDateLiteral() const { return false; }
  virtual bool IsTimeLiteral() const { return false; }
  virtual bool IsDateTimeLiteral() const { return false; }
  virtual bool IsNullLiteral() const { return false; }
  virtual bool IsNumberLiteral() const { return false; }
  /// The mark of a literal that stands for the descriptor identifier of a value.
  virtual void SetDescriptorIDOFValue(bool bValue = true) { m_bDescriptorIDOFValue = bValue; }
  virtual bool IsDescriptorIDOFValue() const { return m_bDescriptorIDOFValue; }
  /// The value as a field of comma-separated text. An interval has no such form: asking for it is a logic error.
  virtual KXString ToCanonicalCSVFormat() const;

  bool IsConstant() const override { return true; }
  bool IsLiteral() const override { return true; }
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;
  RqNodeType_e GetObjectType() const override { return kRqExprLiteral; }

  /// A new literal of the value, which the caller owns. Text, binary values, intervals and objects become strings,
  /// whole numbers integers, decimals numbers. Money is a logic error. Raises ErrorMessage when the value's bytes are
  /// too few or its number is out of range.
  static RqExprLiteral* MakeRqExprLiteral(const TypedFieldValue& rhs);
  /// A literal of the value, which owner owns. A vector becomes the string of its text.
  static RqExprLiteral* MakeRqExprLiteral(ObjPoolGuard<RqExprLiteral>& owner, PropertyValue* pPropertyValue);
  /// A literal of a field of a row record, which owner owns. nullOffset is the place of the null flag, 0 when there is
  /// none; a null field gives a null literal, whatever its type. bUnicode tells the characters of text: wide, or narrow
  /// in the server's code page. A type that a row cannot hold as a literal (binary, money, interval, object, unknown)
  /// is a logic error.
  static RqExprLiteral* MakeRqExprLiteral(ObjPoolGuard<RqExprLiteral>& owner, KXDataType dataType, int valueOffset,
                                          int nullOffset, const std::uint8_t* pKXListstreamRecord, bool bUnicode);

 private:
  bool m_bDescriptorIDOFValue = false;
};

/// What follows from the value of a literal that has one: equivalence, order and payload. Derived names the field by
/// the member pointer kValue.
template <class Derived, RqNodeType_e kKind>
class RqExprValueLiteral : public RqNodeImpl<Derived, RqExprLiteral, kKind> {
 public:
  RqExprValueLiteral() = default;
  RqExprValueLiteral(const RqExprValueLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl<Derived, RqExprLiteral, kKind>(rhs, bNewIDs, bDeepCopy) {}

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  std::weak_ordering CompareShallow(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  static const auto& ValueOf(const Derived& literal) { return literal.*Derived::kValue; }
};

/// Text. Trailing blanks do not count for equivalence, and they do for the order: wanted, so 'abc  ' and 'abc' are
/// equivalent and yet one sorts below the other. Whether case counts is read from the server's configuration at each
/// comparison.
class RqExprStringLiteral final : public RqExprValueLiteral<RqExprStringLiteral, kRqExprStringLiteral> {
 public:
  /// The quotes in which the parser saw the text.
  enum StringWrapperSymbol : std::int32_t { kUnknown = 500, kDoubleQuote = 501, kSingleQuote = 502 };

  RqExprStringLiteral() = default;
  explicit RqExprStringLiteral(const KXString& value) : m_value(value) {}
  /// Wanted: the wrapper symbol is not copied, so a copy is rendered as a text of unknown quotes.
  RqExprStringLiteral(const RqExprStringLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_value(rhs.m_value) {}

  const KXString& GetString() const { return m_value; }
  void SetString(const KXString& value) { m_value = value; }

  bool IsStringLiteral() const override { return true; }
  /// In double quotes when the parser saw such, else in single ones; a quote inside is doubled.
  KXString ToCanonicalCSVFormat() const override;
  virtual void SetStringWrapperSymbol(StringWrapperSymbol symbol) { m_stringWrapperSymbol = symbol; }
  virtual StringWrapperSymbol GetStringWrapperSymbol() const { return m_stringWrapperSymbol; }

  PropertyValue* MakePropertyValue() const override;
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  std::weak_ordering CompareShallow(const RqExpr& rhs) const override { return RqExpr::CompareShallow(rhs); }
  bool IsNonZeroValue(ARpGateway*) const override { return !m_value.empty(); }

 private:
  friend class RqExprValueLiteral;
  KXString m_value;
  StringWrapperSymbol m_stringWrapperSymbol = kUnknown;  // does not travel

  static constexpr auto kValue = &RqExprStringLiteral::m_value;
};

/// A 32-bit integer, or the placeholder for one.
class RqExprIntegerLiteral final : public RqExprValueLiteral<RqExprIntegerLiteral, kRqExprIntegerLiteral> {
 public:
  explicit RqExprIntegerLiteral(int value, bool bPlaceHolder = false)
      : m_numValue(value), m_bPlaceHolder(bPlaceHolder) {}
  RqExprIntegerLiteral(const RqExprIntegerLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_numValue(rhs.m_numValue), m_bPlaceHolder(rhs.m_bPlaceHolder) {}

  int GetValue() const { return m_numValue; }
  void SetValue(int value) { m_numValue = value; }
  bool IsPlaceHolder() const { return m_bPlaceHolder; }
  void SetPlaceHolder(bool bPlaceHolder) { m_bPlaceHolder = bPlaceHolder; }

  bool IsIntegerLiteral() const override { return true; }
  KXString ToCanonicalCSVFormat() const override;
  PropertyValue* MakePropertyValue() const override;
  bool IsNonZeroValue(ARpGateway*) const override { return m_numValue != 0; }

 private:
  friend class RqExprValueLiteral;
  std::int32_t m_numValue;
  bool m_bPlaceHolder;  // does not travel

  static constexpr auto kValue = &RqExprIntegerLiteral::m_numValue;
};

/// A floating point number. A NaN is equivalent to nothing, itself among it, below nothing, and counts as non-zero.
class RqExprFloatLiteral final : public RqExprValueLiteral<RqExprFloatLiteral, kRqExprFloatLiteral> {
 public:
  explicit RqExprFloatLiteral(double value) : m_numValue(value) {}
  RqExprFloatLiteral(const RqExprFloatLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_numValue(rhs.m_numValue) {}

  double GetValue() const { return m_numValue; }
  void SetValue(double value) { m_numValue = value; }

  bool IsFloatLiteral() const override { return true; }
  KXString ToCanonicalCSVFormat() const override;
  PropertyValue* MakePropertyValue() const override;
  bool IsNonZeroValue(ARpGateway*) const override { return m_numValue != 0.0; }

 private:
  friend class RqExprValueLiteral;
  double m_numValue;

  static constexpr auto kValue = &RqExprFloatLiteral::m_numValue;
};

/// A date, or the token of the current one.
class RqExprDateLiteral final : public RqExprValueLiteral<RqExprDateLiteral, kRqExprDateLiteral> {
 public:
  RqExprDateLiteral() = default;
  explicit RqExprDateLiteral(const KXDate& value) : m_dateValue(value) {}
  RqExprDateLiteral(const RqExprDateLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_dateValue(rhs.m_dateValue) {}

  const KXDate& GetDateValue() const { return m_dateValue; }
  void SetDateValue(const KXDate& value) { m_dateValue = value; }

  bool IsDateLiteral() const override { return true; }
  KXString ToCanonicalCSVFormat() const override;
  PropertyValue* MakePropertyValue() const override;

 private:
  friend class RqExprValueLiteral;
  KXDate m_dateValue;

  static constexpr auto kValue = &RqExprDateLiteral::m_dateValue;
};

/// A time of day, or the token of the current one.
class RqExprTimeLiteral final : public RqExprValueLiteral<RqExprTimeLiteral, kRqExprTimeLiteral> {
 public:
  RqExprTimeLiteral() = default;
  explicit RqExprTimeLiteral(const KXTime& value) : m_timeValue(value) {}
  RqExprTimeLiteral(const RqExprTimeLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_timeValue(rhs.m_timeValue) {}

  const KXTime& GetTimeValue() const { return m_timeValue; }
  void SetTimeValue(const KXTime& value) { m_timeValue = value; }

  bool IsTimeLiteral() const override { return true; }
  KXString ToCanonicalCSVFormat() const override;
  PropertyValue* MakePropertyValue() const override;

 private:
  friend class RqExprValueLiteral;
  KXTime m_timeValue;

  static constexpr auto kValue = &RqExprTimeLiteral::m_timeValue;
};

/// A timestamp, or the token of the current one. The precision is a number of digits of a second's fraction.
class RqExprDateTimeLiteral final : public RqExprValueLiteral<RqExprDateTimeLiteral, kRqExprDateTimeLiteral> {
 public:
  RqExprDateTimeLiteral() = default;
  explicit RqExprDateTimeLiteral(const KXDateTime& value, short precision = 0)
      : m_dateTimeValue(value), m_precision(precision) {}
  RqExprDateTimeLiteral(const RqExprDateTimeLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy),
        m_dateTimeValue(rhs.m_dateTimeValue),
        m_precision(rhs.m_precision) {}

  const KXDateTime& GetDateTimeValue() const { return m_dateTimeValue; }
  void SetDateTimeValue(const KXDateTime& value) { m_dateTimeValue = value; }
  short GetPrecision() const { return m_precision; }
  void SetPrecision(short precision) { m_precision = precision; }

  bool IsDateTimeLiteral() const override { return true; }
  KXString ToCanonicalCSVFormat() const override;
  PropertyValue* MakePropertyValue() const override;

 private:
  friend class RqExprValueLiteral;
  KXDateTime m_dateTimeValue;
  std::int16_t m_precision = 0;  // does not travel

  static constexpr auto kValue = &RqExprDateTimeLiteral::m_dateTimeValue;
};

/// An interval, as the text of its literal.
class RqExprIntervalLiteral final : public RqExprValueLiteral<RqExprIntervalLiteral, kRqExprIntervalLiteral> {
 public:
  RqExprIntervalLiteral() = default;
  explicit RqExprIntervalLiteral(const KXString& value) : m_intervalValue(value) {}
  RqExprIntervalLiteral(const RqExprIntervalLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_intervalValue(rhs.m_intervalValue) {}

  const KXString& GetIntervalValue() const { return m_intervalValue; }

 private:
  friend class RqExprValueLiteral;
  KXString m_intervalValue;

  static constexpr auto kValue = &RqExprIntervalLiteral::m_intervalValue;
};

/// Null. All null literals are equal.
class RqExprNullLiteral final : public RqNodeImpl<RqExprNullLiteral, RqExprLiteral, kRqExprNullLiteral> {
 public:
  RqExprNullLiteral() = default;
  using RqNodeImpl::RqNodeImpl;

  bool IsNullLiteral() const override { return true; }
  /// The empty text.
  KXString ToCanonicalCSVFormat() const override { return {}; }
  bool IsAlwaysNull() const override { return true; }
  bool IsNonZeroValue(ARpGateway*) const override { return false; }
};

/// An exact decimal number.
class RqExprNumberLiteral final : public RqExprValueLiteral<RqExprNumberLiteral, kRqExprNumberLiteral> {
 public:
  RqExprNumberLiteral() = default;
  explicit RqExprNumberLiteral(const KorvelNumber& value) : m_numValue(value) {}
  RqExprNumberLiteral(const RqExprNumberLiteral& rhs, bool bNewIDs, bool bDeepCopy)
      : RqExprValueLiteral(rhs, bNewIDs, bDeepCopy), m_numValue(rhs.m_numValue) {}

  const KorvelNumber& GetValue() const { return m_numValue; }
  void SetValue(const KorvelNumber& value) { m_numValue = value; }

  bool IsNumberLiteral() const override { return true; }
  /// Through the nearest double.
  KXString ToCanonicalCSVFormat() const override;
  PropertyValue* MakePropertyValue() const override;
  bool IsNonZeroValue(ARpGateway*) const override { return m_numValue.compare(KorvelNumber::zero()) != 0; }

 private:
  friend class RqExprValueLiteral;
  KorvelNumber m_numValue;

  static constexpr auto kValue = &RqExprNumberLiteral::m_numValue;
};

extern template class RqExprValueLiteral<RqExprStringLiteral, kRqExprStringLiteral>;
extern template class RqExprValueLiteral<RqExprIntegerLiteral, kRqExprIntegerLiteral>;
extern template class RqExprValueLiteral<RqExprFloatLiteral, kRqExprFloatLiteral>;
extern template class RqExprValueLiteral<RqExprDateLiteral, kRqExprDateLiteral>;
extern template class RqExprValueLiteral<RqExprTimeLiteral, kRqExprTimeLiteral>;
extern template class RqExprValueLiteral<RqExprDateTimeLiteral, kRqExprDateTimeLiteral>;
extern template class RqExprValueLiteral<RqExprIntervalLiteral, kRqExprIntervalLiteral>;
extern template class RqExprValueLiteral<RqExprNumberLiteral, kRqExprNumberLiteral>;

// The pools of transient literals, in being from load to exit of the process. A guard must not outlive them.
extern PartitionedPools<TypedObjPool<RqExprIntegerLiteral>> global_integerPools;
extern PartitionedPools<TypedObjPool<RqExprStringLiteral>> global_stringPools;
extern PartitionedPools<TypedObjPool<RqExprFloatLiteral>> global_floatPools;
extern PartitionedPools<TypedObjPool<RqExprDateLiteral>> global_datePools;
extern PartitionedPools<TypedObjPool<RqExprTimeLiteral>> global_timePools;
extern PartitionedPools<TypedObjPool<RqExprDateTimeLiteral>> global_dateTimePools;
extern PartitionedPools<TypedObjPool<RqExprNullLiteral>> global_nullPools;
extern PartitionedPools<TypedObjPool<RqExprNumberLiteral>> global_numberPools;

// A literal for as long as owner holds it, from the pools while they have room. Nothing but the value is set: identity,
// target marks, placeholder and precision may be those of an earlier use. Cost: one short lock each for taking and for
// giving back, and no allocation once the pools are warm.

inline RqExprIntegerLiteral* FastMakeIntegerLiteral(ObjPoolGuard<RqExprLiteral>& owner, int value) {
  return global_integerPools.Next().Make(
      owner, [](RqExprIntegerLiteral& e, int v) { e.SetValue(v); }, value);
}

inline RqExprStringLiteral* FastMakeStringLiteral(ObjPoolGuard<RqExprLiteral>& owner, const KXString& value) {
  return global_stringPools.Next().Make(
      owner, [](RqExprStringLiteral& e, const KXString& v) { e.SetString(v); }, value);
}

inline RqExprFloatLiteral* FastMakeFloatLiteral(ObjPoolGuard<RqExprLiteral>& owner, double value) {
  return global_floatPools.Next().Make(
      owner, [](RqExprFloatLiteral& e, double v) { e.SetValue(v); }, value);
}

inline RqExprDateLiteral* FastMakeDateLiteral(ObjPoolGuard<RqExprLiteral>& owner, const KXDate& value) {
  return global_datePools.Next().Make(
      owner, [](RqExprDateLiteral& e, const KXDate& v) { e.SetDateValue(v); }, value);
}

inline RqExprTimeLiteral* FastMakeTimeLiteral(ObjPoolGuard<RqExprLiteral>& owner, const KXTime& value) {
  return global_timePools.Next().Make(
      owner, [](RqExprTimeLiteral& e, const KXTime& v) { e.SetTimeValue(v); }, value);
}

inline RqExprDateTimeLiteral* FastMakeDateTimeLiteral(ObjPoolGuard<RqExprLiteral>& owner, const KXDateTime& value) {
  return global_dateTimePools.Next().Make(
      owner, [](RqExprDateTimeLiteral& e, const KXDateTime& v) { e.SetDateTimeValue(v); }, value);
}

inline RqExprNullLiteral* FastMakeNullLiteral(ObjPoolGuard<RqExprLiteral>& owner) {
  return global_nullPools.Next().Make(owner, [](RqExprNullLiteral&) {});
}

inline RqExprNumberLiteral* FastMakeNumberLiteral(ObjPoolGuard<RqExprLiteral>& owner, const KorvelNumber& value) {
  return global_numberPools.Next().Make(
      owner, [](RqExprNumberLiteral& e, const KorvelNumber& v) { e.SetValue(v); }, value);
}
