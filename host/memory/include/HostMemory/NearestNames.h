#pragma once

#include <cstddef>
#include <string_view>

#include "Host/KXString.h"

/// Those of the names that someone who wrote `text` may have meant, the likeliest first, at most `maxCount`. A name is
/// near that contains the text, or that a few changed, missing, additional or exchanged letters make of it; letter case
/// and underscores do not matter. Cost: the product of the lengths of text and name, for each name.
KXStringVector NearestNames(std::wstring_view text, const KXStringVector& names, std::size_t maxCount = 3);

/// The nearest names as the end of a message, "; did you mean A, B or C?", or empty if none is near.
KXString DidYouMean(std::wstring_view text, const KXStringVector& names);
