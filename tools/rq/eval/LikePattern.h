#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Host/KXString.h"

/// A pattern of LIKE: % stands for any text, _ for any character, and a character behind the escape for itself.
class LikePattern {
 public:
  /// None if the escape stands last or before a character that needs none.
  static std::optional<LikePattern> Make(std::wstring_view pattern, std::optional<wchar_t> escape);

  /// Letter case counts where the server's configuration says so. Cost: the product of both lengths.
  bool Matches(std::wstring_view text) const;
  /// A text that it matches, with filling for each %.
  KXString MakeMatch(std::wstring_view filling) const;

 private:
  struct Part {
    enum Kind { kAnyText, kAnyCharacter, kCharacter } m_kind;
    wchar_t m_character = 0;
  };

  std::vector<Part> m_parts;
};
