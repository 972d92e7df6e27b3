#pragma once

#include <string_view>
#include <vector>

#include "Host/KXString.h"
#include "Host/SUFeaturesTable.h"
#include "Host/ServerInfo.h"

/// What a well-known database can do, as a model with one database tells it (host/memory/presets).
struct FeaturePreset {
  KXString m_name;
  ServerInfo::TargetType m_targetType;
  SUFeaturesTable m_features;
};

/// The presets, made when the first one is asked for. Any thread may ask.
class FeaturePresets {
 public:
  static const std::vector<FeaturePreset>& GetAll();
  static KXStringVector GetNames();
  /// The preset of the name, letter case apart; null if there is none.
  static const FeaturePreset* Find(std::wstring_view name);
};
