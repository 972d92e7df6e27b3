#pragma once

#include <optional>
#include <string>

#include "HostMemory/MemoryGateway.h"

/// Reads the model of a file or, without one, the built-in one. Raises ErrorMessage or std::system_error.
void ReadModel(const std::optional<std::string>& file, MemoryGateway& gateway);
