#pragma once

#include <compare>
#include <cstdint>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

/// Identity of an object of the result cache that no other process and no later run gives again: when it was made, a
/// number drawn then, and where it stood in its process. All zero stands for none.
struct UniversallyUniqueID {
  std::uint32_t m_seconds = 0;
  std::int32_t m_milliSeconds = 0;
  std::uint32_t m_randNumber = 0;
  void* m_ptr = nullptr;  ///< an address as a number: it points at nothing

  /// For people: "17:-3:99:0x7f00". Wanted: all numbers are shown as signed ones, and no address as "(nil)".
  KXString ToString() const;
  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  /// Part by part, in their order; the address as an unsigned number.
  friend std::strong_ordering operator<=>(const UniversallyUniqueID& lhs, const UniversallyUniqueID& rhs);
  friend bool operator==(const UniversallyUniqueID&, const UniversallyUniqueID&) = default;
};
