#pragma once

#include <string_view>

/// Zero as the text of a property.
inline constexpr std::wstring_view S_ZERO = L"0";
