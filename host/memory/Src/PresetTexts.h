#pragma once

#include <span>
#include <string_view>

/// A file of host/memory/presets as it stood when this was built.
struct PresetText {
  std::string_view m_file;
  std::string_view m_text;
};

/// In the order of the files' names.
std::span<const PresetText> GetPresetTexts();
