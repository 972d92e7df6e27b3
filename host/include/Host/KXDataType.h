#pragma once

#include <compare>
#include <cstdint>

#include "Host/KXString.h"

/// The data type of a value, a column or an expression.
enum KXDataType : std::uint8_t {
#define KX_DATA_TYPE(enumerator, number, typeClass, singleWordName, sqlName) enumerator = number,
#include "Host/KXDataTypes.def"
#undef KX_DATA_TYPE
  KXMaxType  ///< the number of types; not a type itself
};
static_assert(KXMaxType == 26);

/// What values of a data type are, whatever their width, length or record.
enum class KXTypeClass : std::uint8_t {
  kBit,
  kText,
  kBinary,
  kInteger,
  kFloat,
  kMoney,
  kDecimal,
  kDate,
  kTime,
  kDateTime,
  kInterval,
  kObject,
  kBoolean,
  kUnknown
};

/// A data type with its dimensions. What precision and scale mean is the type's affair: digits for a decimal,
/// characters for text, digits of a second for a time.
struct KXTypeInfoBase {
  std::int32_t precision_ = 0;
  std::int16_t scale_ = 0;
  KXDataType type_ = KXUnknown;
  std::uint8_t nullable_ = 1;  ///< 0 if no value of the type is null

  /// Nothing is known; in particular, values may be null.
  KXTypeInfoBase() = default;
  KXTypeInfoBase(KXDataType type, int precision, short scale, std::uint8_t nullable)
      : precision_(precision), scale_(scale), type_(type), nullable_(nullable) {}

  /// All four fields, in their order.
  friend auto operator<=>(const KXTypeInfoBase&, const KXTypeInfoBase&) = default;
};

/// A type that can describe itself.
struct KXTypeInfo : KXTypeInfoBase {
  using KXTypeInfoBase::KXTypeInfoBase;

  /// The type as SQL would declare it, for logs and messages: "CHARACTER VARYING(30)", "NUMERIC(10,2) NOT NULL".
  KXString Describe() const;
};

/// Names and classes of data types. A number that is no type, KXMaxType among them, is a logic error.
class SUKXDataTypeUtility {
 public:
  /// The name under which a type travels in byte forms, without blanks: "DOUBLE".
  static void GetSingleWordKXDataTypeName(KXDataType type, KXString& name);
  /// The mirror of GetSingleWordKXDataTypeName; letter case does not matter. Any other text gives KXUnknown.
  static KXDataType GetKXDataTypeFromSingleWordName(const KXString& name);
  /// The name for people and for SQL: "DOUBLE PRECISION".
  static void GetKXDataTypeName(KXDataType type, KXString& name);
  static KXTypeClass GetKXTypeClass(KXDataType type);
  /// Whether values of the type are text: the three character types.
  static bool IsKXTextType(KXDataType type);
};
