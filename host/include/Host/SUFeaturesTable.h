#pragma once

#include <cstdint>

/// What a database can do, as numbered features.
class SUFeaturesTable {
 public:
  enum FeatureId : std::uint32_t;
};
