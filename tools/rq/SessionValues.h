#pragma once

#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"

/// Gives session variables their values, each written BLOCK.NAME=VALUE: up to the first point the block, up to the
/// first equals sign the name. VALUE is a number, a text in single quotes, or a DATE, TIME or TIMESTAMP with its text
/// in quotes, as SQL writes them; anything else is a text as it stands. Raises UsageError for another form, for a value
/// that the calendar has not, and for a variable that is set twice.
void SetSessionValues(const std::vector<std::string>& settings, MemoryGateway& gateway);
