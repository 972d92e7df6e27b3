#pragma once

#include "Host/KXString.h"
#include "Host/RpObjects.h"
#include "HostMemory/MemoryGateway.h"

/// A database of the gateway by its name, or a preset, of which the gateway gets one. Raises std::runtime_error, with
/// the names there are, if there is neither.
RefADatabase FindTargetDatabase(const KXString& name, MemoryGateway& gateway);
