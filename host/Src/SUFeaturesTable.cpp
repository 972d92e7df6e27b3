#include "Host/SUFeaturesTable.h"

#include <algorithm>
#include <map>
#include <string>

#include "Host/KXAssert.h"

namespace {

using FeatureId = SUFeaturesTable::FeatureId;

constexpr FeatureId kFeatureIds[] = {
#define HOST_FEATURE(enumerator, number) SUFeaturesTable::enumerator,
#define HOST_FEATURE_MARK(enumerator, number)
#include "Host/SUFeatures.def"
#undef HOST_FEATURE
#undef HOST_FEATURE_MARK
};

constexpr std::string_view kEnumerators[] = {
#define HOST_FEATURE(enumerator, number) #enumerator,
#define HOST_FEATURE_MARK(enumerator, number)
#include "Host/SUFeatures.def"
#undef HOST_FEATURE
#undef HOST_FEATURE_MARK
};

constexpr bool IsFull(FeatureId begin, FeatureId end) {
  return std::ranges::count_if(kFeatureIds, [=](FeatureId id) { return begin <= id && id < end; }) == end - begin;
}

// Numbers rise from line to line, and no range leaves one out.
static_assert(std::ranges::adjacent_find(kFeatureIds, std::ranges::greater_equal()) == std::end(kFeatureIds));
static_assert(IsFull(SUFeaturesTable::kFeature_BooleanTypeBegin, SUFeaturesTable::kFeature_BooleanTypeEnd));
static_assert(IsFull(SUFeaturesTable::kFeature_UInt32TypeBegin, SUFeaturesTable::kFeature_UInt32TypeEnd));
static_assert(IsFull(SUFeaturesTable::kFeature_StringTypeBegin, SUFeaturesTable::kFeature_StringTypeEnd));

constexpr std::string_view kPrefix = "kFeature";

// Not those of the locale, and for any character.
constexpr bool IsUpper(wchar_t c) { return L'A' <= c && c <= L'Z'; }
constexpr bool IsLower(wchar_t c) { return L'a' <= c && c <= L'z'; }
constexpr wchar_t ToUpper(wchar_t c) { return IsLower(c) ? static_cast<wchar_t>(c - L'a' + L'A') : c; }

std::string_view WithoutPrefix(std::string_view enumerator) {
  enumerator.remove_prefix(kPrefix.size());
  if (enumerator.starts_with('_')) enumerator.remove_prefix(1);
  return enumerator;
}

KXString NameOf(std::string_view enumerator) {
  const std::string_view text = WithoutPrefix(enumerator);
  KXString name;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool bInWord = i > 0 && text[i - 1] != '_';
    const bool bFollowsUpper = bInWord && IsUpper(text[i - 1]);
    const bool bLowerFollows = i + 1 < text.size() && IsLower(text[i + 1]);
    if (bInWord && IsUpper(text[i]) && (!bFollowsUpper || bLowerFollows)) name.append(L'_');
    name.append(ToUpper(text[i]));
  }
  return name;
}

/// What stays of a name when letter case, underscores and the prefix do not matter.
std::wstring Reduced(std::wstring_view name) {
  std::wstring reduced;
  for (const wchar_t c : name) {
    if (c != L'_') reduced += ToUpper(c);
  }
  static const std::wstring prefix = L"KFEATURE";
  return reduced.starts_with(prefix) ? reduced.substr(prefix.size()) : reduced;
}

/// Both directions between names and numbers. Made once, and from then on only read.
struct NameTables {
  std::map<FeatureId, KXString> m_names;
  std::map<std::wstring, FeatureId> m_ids;

  NameTables() {
    for (std::size_t i = 0; i < std::size(kFeatureIds); ++i) {
      const KXString name = NameOf(kEnumerators[i]);
      m_names.emplace(kFeatureIds[i], name);
      KX_ASSERT(m_ids.emplace(Reduced(name), kFeatureIds[i]).second);
    }
  }

  static const NameTables& Get() {
    static const auto& tables = *new NameTables();  // never destroyed: names may be asked for at any time
    return tables;
  }
};

template <class Vector>
typename Vector::value_type ValueAt(const Vector& values, std::size_t index) {
  return index < values.size() ? typename Vector::value_type(values[index]) : typename Vector::value_type();
}

template <class Vector, class Value>
void SetValueAt(Vector& values, std::size_t index, const Value& value) {
  if (index >= values.size()) values.resize(index + 1);
  values[index] = value;
}

}  // namespace

std::span<const SUFeaturesTable::FeatureId> SUFeaturesTable::GetFeatureIds() { return kFeatureIds; }

KXString SUFeaturesTable::GetFeatureNameFromId(FeatureId id) {
  const auto& names = NameTables::Get().m_names;
  const auto found = names.find(id);
  return found == names.end() ? KXString() : found->second;
}

SUFeaturesTable::FeatureId SUFeaturesTable::GetFeatureIDFromName(std::wstring_view name) {
  const auto& ids = NameTables::Get().m_ids;
  const auto found = ids.find(Reduced(name));
  return found == ids.end() ? kFeature_Invalid : found->second;
}

KXStringVector SUFeaturesTable::GetFeatureNames() {
  KXStringVector names;
  for (const auto& [id, name] : NameTables::Get().m_names) names.push_back(name);
  return names;
}

bool SUFeaturesTable::GetBoolean(FeatureId id) const {
  KX_ASSERT(IsBoolean(id));
  return ValueAt(booleanValuedFeatures_, id - kFeature_BooleanTypeBegin);
}

std::uint32_t SUFeaturesTable::GetUInt32(FeatureId id) const {
  KX_ASSERT(IsUInt32(id));
  return ValueAt(uint32ValuedFeatures_, id - kFeature_UInt32TypeBegin);
}

KXString SUFeaturesTable::GetString(FeatureId id) const {
  KX_ASSERT(IsString(id));
  return ValueAt(stringValuedFeatures_, id - kFeature_StringTypeBegin);
}

void SUFeaturesTable::SetBoolean(FeatureId id, bool bValue) {
  KX_ASSERT(IsBoolean(id));
  SetValueAt(booleanValuedFeatures_, id - kFeature_BooleanTypeBegin, bValue);
}

void SUFeaturesTable::SetUInt32(FeatureId id, std::uint32_t value) {
  KX_ASSERT(IsUInt32(id));
  SetValueAt(uint32ValuedFeatures_, id - kFeature_UInt32TypeBegin, value);
}

void SUFeaturesTable::SetString(FeatureId id, const KXString& value) {
  KX_ASSERT(IsString(id));
  SetValueAt(stringValuedFeatures_, id - kFeature_StringTypeBegin, value);
}
