#include "rq/eval/LikePattern.h"

#include <cwctype>

#include "Host/SUSystemConfig.h"

std::optional<LikePattern> LikePattern::Make(std::wstring_view pattern, std::optional<wchar_t> escape) {
  LikePattern made;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t character = pattern[i];
    if (escape && character == *escape) {
      if (++i == pattern.size()) return std::nullopt;
      if (pattern[i] != L'%' && pattern[i] != L'_' && pattern[i] != *escape) return std::nullopt;
      made.m_parts.push_back({Part::kCharacter, pattern[i]});
    } else if (character == L'%') {
      made.m_parts.push_back({Part::kAnyText});
    } else if (character == L'_') {
      made.m_parts.push_back({Part::kAnyCharacter});
    } else {
      made.m_parts.push_back({Part::kCharacter, character});
    }
  }
  return made;
}

/// Keeps, character by character, which parts the text so far may end before.
bool LikePattern::Matches(std::wstring_view text) const {
  const bool bCase = SUSystemConfig::GetSystemConfig().IsCaseSensitive();
  const auto fold = [bCase](wchar_t c) {
    return bCase ? c : static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  };
  const auto skipAnyText = [this](std::vector<bool>& reached) {
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
      if (reached[i] && m_parts[i].m_kind == Part::kAnyText) reached[i + 1] = true;
    }
  };
  std::vector<bool> reached(m_parts.size() + 1);
  reached[0] = true;
  skipAnyText(reached);
  for (const wchar_t character : text) {
    std::vector<bool> next(m_parts.size() + 1);
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
      if (!reached[i]) continue;
      const Part& part = m_parts[i];
      if (part.m_kind == Part::kAnyText) {
        next[i] = true;
      } else if (part.m_kind == Part::kAnyCharacter || fold(part.m_character) == fold(character)) {
        next[i + 1] = true;
      }
    }
    skipAnyText(next);
    reached.swap(next);
  }
  return reached.back();
}

KXString LikePattern::MakeMatch(std::wstring_view filling) const {
  KXString text;
  for (const Part& part : m_parts) {
    if (part.m_kind == Part::kAnyText) {
      text.append(filling);
    } else {
      text.append(part.m_kind == Part::kCharacter ? part.m_character : L'a');
    }
  }
  return text;
}
