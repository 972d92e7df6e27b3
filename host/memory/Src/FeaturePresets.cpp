#include "HostMemory/FeaturePresets.h"

#include <algorithm>

#include "FeatureModel.h"
#include "Host/BaseStringUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"
#include "PresetTexts.h"

namespace {

std::vector<FeaturePreset> ReadPresets() {
  std::vector<FeaturePreset> presets;
  for (const PresetText& preset : GetPresetTexts()) {
    const KXString source = BaseStringUtil::StdStringToString(preset.m_file);
    const Json json = ParseJson(preset.m_text, source);
    JsonCursor(json, source).Member("databases", [&presets](const JsonCursor& databases) {
      databases.ForEachElement([&presets](const JsonCursor& database) {
        KX_ASSERT(!database.Has("preset"));  // presets do not stand on each other
        const KXString name = database.Member("name", [](const JsonCursor& cursor) { return cursor.AsName(); });
        presets.push_back(ReadFeaturePreset(database, name));
      });
    });
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
