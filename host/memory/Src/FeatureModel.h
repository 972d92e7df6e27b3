#pragma once

#include "HostMemory/FeaturePresets.h"
#include "JsonCursor.h"

/// What the keys "preset", "target" and "features" of a database say together. One of the first two must be there:
/// without a preset nothing is set, without a target it is the preset's. Faults are reported.
FeaturePreset ReadFeaturePreset(const JsonCursor& database, const KXString& name);
