#include "HostMemory/FeaturePresets.h"

#include <algorithm>

#include "BuiltInTexts.h"
#include "FeatureModel.h"
#include "Host/BaseStringUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"

namespace {

std::vector<FeaturePreset> ReadPresets() {
  std::vector<FeaturePreset> presets;
  for (const BuiltInText& preset : GetPresetTexts()) {
    const KXString source = BaseStringUtil::StdStringToString(preset.m_file);
    const Json json = ParseJson(preset.m_text, source);
    ModelFaults faults(source);
    JsonCursor(json, faults).RequiredMember("databases", [&presets](const JsonCursor& databases) {
      databases.ForEachElement([&presets](const JsonCursor& database) {
        KX_ASSERT(!database.Has("preset"));  // presets do not stand on each other
        database.RequiredMember(
            "name", [&](const JsonCursor& name) { presets.push_back(ReadFeaturePreset(database, name.AsName())); });
      });
    });
    faults.RaiseIfAny();
  }
  return presets;
}

/// The files were built in, so an error in one of them is the programmer's.
std::vector<FeaturePreset> ReadPresetsOrAbort() {
  try {
    return ReadPresets();
  } catch (const ErrorMessage& error) {
    KX_LOGIC_ERROR(error.GetText());
  }
}

}  // namespace

const std::vector<FeaturePreset>& FeaturePresets::GetAll() {
  static const auto& presets = *new std::vector<FeaturePreset>(ReadPresetsOrAbort());  // never destroyed
  return presets;
}

KXStringVector FeaturePresets::GetNames() {
  KXStringVector names;
  for (const FeaturePreset& preset : GetAll()) names.push_back(preset.m_name);
  return names;
}

const FeaturePreset* FeaturePresets::Find(std::wstring_view name) {
  const auto found = std::ranges::find_if(GetAll(), [name](const FeaturePreset& preset) {
    return BaseStringUtil::IsCaseInsensitiveMatch(preset.m_name, name);
  });
  return found == GetAll().end() ? nullptr : &*found;
}
