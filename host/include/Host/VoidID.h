#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string_view>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

/// Number of a metadata interface: which kind of object a VoidID names.
using TypeID = std::int32_t;

/// Number of an object among those of its interface type.
struct UniqueNum {
  static constexpr std::uint32_t kUndefined = 0xffffffff;

  std::uint32_t m_number = kUndefined;

  constexpr UniqueNum() = default;
  constexpr explicit UniqueNum(std::uint32_t number) : m_number(number) {}

  constexpr bool IsDefined() const { return m_number != kUndefined; }
  constexpr void Clear() { m_number = kUndefined; }

  /// Decimal digits.
  KXString ToString() const;
  void ToByteVector(ByteVector& bytes) const;
  const_iterator FromByteVector(const_iterator cursor);

  /// By number; the undefined one is last.
  friend constexpr auto operator<=>(const UniqueNum&, const UniqueNum&) = default;
};

/// Identifier of a metadata object. Ordered by interface type, then by number.
///
/// Text form: interface type and number in decimal with a colon between, as in "3001:42"; the null identifier is
/// "0:4294967295". Byte form: the interface type, then the number.
struct VoidID {
  static const VoidID NullID;

  TypeID m_interfaceTypeID = 0;
  UniqueNum m_uniqueNum;

  constexpr VoidID() = default;  // the null identifier
  constexpr VoidID(TypeID interfaceTypeID, UniqueNum uniqueNum)
      : m_interfaceTypeID(interfaceTypeID), m_uniqueNum(uniqueNum) {}
  constexpr VoidID(TypeID interfaceTypeID, std::uint32_t uniqueNum)
      : m_interfaceTypeID(interfaceTypeID), m_uniqueNum(uniqueNum) {}

  constexpr TypeID GetInterfaceTypeID() const { return m_interfaceTypeID; }
  constexpr UniqueNum GetUniqueNum() const { return m_uniqueNum; }
  constexpr bool IsNullID() const;

  KXString ToString() const;
  /// Reads the text form and nothing around it. On failure gives false and leaves `id` as it was.
  static bool StringToVoidID(std::wstring_view text, VoidID& id);
  static bool IsStringAVoidID(std::wstring_view text);

  void ToByteVector(ByteVector& bytes) const;
  const_iterator FromByteVector(const_iterator cursor);

  friend constexpr auto operator<=>(const VoidID&, const VoidID&) = default;
};

inline constexpr VoidID VoidID::NullID{};
constexpr bool VoidID::IsNullID() const { return *this == NullID; }

template <>
struct std::hash<VoidID> {
  std::size_t operator()(const VoidID& id) const noexcept {
    const auto type = static_cast<std::uint32_t>(id.m_interfaceTypeID);
    return std::hash<std::uint64_t>()(static_cast<std::uint64_t>(type) << 32 | id.m_uniqueNum.m_number);
  }
};

using VoidIDVector = KXNodeVector<VoidID>;
using VoidIDSet = std::set<VoidID, std::less<VoidID>, KXNodeStdAlloc<VoidID>>;

/// Byte form of a vector of identifiers: their number, then each in order.
class VoidIDVectorUtil {
 public:
  static void ToByteVector(ByteVector& bytes, const VoidIDVector& ids);
  /// Replaces what `ids` holds.
  static const_iterator FromByteVector(const_iterator cursor, VoidIDVector& ids);
};
