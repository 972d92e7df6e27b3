#pragma once

#include <cstdint>
#include <vector>

/// A marshalling target: byte forms are appended at its end.
using ByteVector = std::vector<std::uint8_t>;

/// The reading cursor of the byte form. Readers take it and return it advanced.
using const_iterator = const std::uint8_t*;

using Int32Vector = std::vector<std::int32_t>;
using UInt32Vector = std::vector<std::uint32_t>;
using UInt16Vector = std::vector<std::uint16_t>;
using BooleanVector = std::vector<bool>;
using ByteVectorVector = std::vector<ByteVector>;
