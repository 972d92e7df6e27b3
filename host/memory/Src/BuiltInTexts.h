#pragma once

#include <span>
#include <string_view>

// Files of the repository as they stood when this was built.

struct BuiltInText {
  std::string_view m_file;  ///< Its name without directories.
  std::string_view m_text;
};

/// The files of host/memory/presets, in the order of their names.
std::span<const BuiltInText> GetPresetTexts();
/// examples/retail.json.
const BuiltInText& GetDefaultModelText();
