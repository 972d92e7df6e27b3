#pragma once

#include <cstdint>
#include <vector>

#include "Host/MemAlloc.h"

/// A marshalling target: byte forms are appended at its end.
using ByteVector = std::vector<std::uint8_t>;

/// The reading cursor of the byte form. Readers take it and return it advanced.
using const_iterator = const std::uint8_t*;

using Int32Vector = KXNodeVector<std::int32_t>;
using UInt32Vector = KXNodeVector<std::uint32_t>;
using UInt16Vector = KXNodeVector<std::uint16_t>;
using BooleanVector = KXNodeVector<bool>;
using ByteVectorVector = std::vector<ByteVector>;
