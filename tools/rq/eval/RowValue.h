#pragma once

#include <compare>
#include <memory>
#include <string>

#include "Host/TypedFieldValue.h"

/// The value of a column in a row: null, or a typed one. Copies share the value, which never changes.
class RowValue {
 public:
  RowValue() = default;  // null
  explicit RowValue(TypedFieldValue value) : m_pValue(std::make_shared<const TypedFieldValue>(std::move(value))) {}

  bool IsNull() const { return !m_pValue; }
  /// Requires a value.
  const TypedFieldValue& Get() const { return *m_pValue; }
  bool IsText() const;

  /// As a literal of SQL.
  std::string ToText() const;

  /// The order of two values that are not null; none for values that do not compare.
  static std::partial_ordering Compare(const RowValue& a, const RowValue& b);

 private:
  std::shared_ptr<const TypedFieldValue> m_pValue;
};
