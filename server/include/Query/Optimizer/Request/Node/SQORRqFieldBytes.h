#pragma once

#include <cstdint>
#include <tuple>
#include <type_traits>
#include <vector>

#include "Host/DataBlobUtil.h"

/// A field that is an enumeration, the last of its enumerators, by which damage in bytes is told, and the type of the
/// number that travels.
template <class Class, class Enum, class Written = std::uint32_t>
struct RqEnumField {
  Enum Class::*m_pField;
  Enum m_last;
};
template <class Class, class Enum>
RqEnumField(Enum Class::*, std::type_identity_t<Enum>) -> RqEnumField<Class, Enum>;

/// One that travels as another type of number than uint32.
template <class Written, class Class, class Enum>
constexpr RqEnumField<Class, Enum, Written> RqEnumFieldAs(Enum Class::*pField, std::type_identity_t<Enum> last) {
  return {pField, last};
}

/// The byte form of fields: an enumeration travels as a number, a vector that DataBlobUtil has no form for as an int32
/// count and its elements, all else in its own form. A class lists the fields that travel once, in a tuple of pointers
/// to them, and both directions follow from that.
class RqFieldBytes {
 public:
  template <class Class, class Field>
  static void Write(ByteVector& bv, const std::type_identity_t<Class>& object, Field Class::*pField) {
    WriteValue(bv, object.*pField);
  }
  template <class Class, class Enum, class Written>
  static void Write(ByteVector& bv, const std::type_identity_t<Class>& object,
                    const RqEnumField<Class, Enum, Written>& field) {
    DataBlobUtil::ToByteVector(bv, static_cast<Written>(object.*field.m_pField));
  }
  template <class Class, class Field>
  static const_iterator Read(const_iterator start, std::type_identity_t<Class>& object, Field Class::*pField) {
    return ReadValue(start, object.*pField);
  }
  template <class Class, class Enum, class Written>
  static const_iterator Read(const_iterator start, std::type_identity_t<Class>& object,
                             const RqEnumField<Class, Enum, Written>& field) {
    return DataBlobUtil::FromByteVector<Written>(start, object.*field.m_pField, field.m_last);
  }

  /// All fields of a tuple, in its order.
  template <class Object, class... Fields>
  static void Write(ByteVector& bv, [[maybe_unused]] const Object& object, const std::tuple<Fields...>& all) {
    std::apply([&](const auto&... fields) { (Write(bv, object, fields), ...); }, all);
  }
  template <class Object, class... Fields>
  static const_iterator Read(const_iterator start, [[maybe_unused]] Object& object, const std::tuple<Fields...>& all) {
    std::apply([&](const auto&... fields) { ((start = Read(start, object, fields)), ...); }, all);
    return start;
  }

 private:
  template <class Value>
  static void WriteValue(ByteVector& bv, const Value& value) {
    if constexpr (requires { value.ToByteVector(bv); }) {
      value.ToByteVector(bv);
    } else {
      DataBlobUtil::ToByteVector(bv, value);
    }
  }
  template <class Element, class Allocator>
  requires(!requires(ByteVector bv, std::vector<Element, Allocator> elements) {
    DataBlobUtil::ToByteVector(bv, elements);
  }) static void WriteValue(ByteVector& bv, const std::vector<Element, Allocator>& elements) {
    DataBlobUtil::ToByteVector(bv, static_cast<std::int32_t>(elements.size()));
    for (const Element& element : elements) WriteValue(bv, element);
  }
  template <class Value>
  static const_iterator ReadValue(const_iterator start, Value& value) {
    if constexpr (requires { value.FromByteVector(start); }) {
      return value.FromByteVector(start);
    } else {
      return DataBlobUtil::FromByteVector(start, value);
    }
  }
  template <class Element, class Allocator>
  requires(!requires(const_iterator start, std::vector<Element, Allocator> elements) {
    DataBlobUtil::FromByteVector(start, elements);
  }) static const_iterator ReadValue(const_iterator start, std::vector<Element, Allocator>& elements) {
    std::int32_t count = 0;
    start = DataBlobUtil::FromByteVector(start, count);
    elements.clear();
    for (std::int32_t i = 0; i < count; ++i) start = ReadValue(start, elements.emplace_back());
    return start;
  }
};
