#include "FeatureModel.h"

#include <algorithm>
#include <set>

#include "Host/BaseStringUtil.h"
#include "HostMemory/NearestNames.h"

namespace {

using FeatureId = SUFeaturesTable::FeatureId;

KXStringVector TargetNames() {
  return {
#define HOST_TARGET_TYPE(enumerator, number, name, bRemote) KXString(L##name),
#include "Host/TargetTypes.def"
#undef HOST_TARGET_TYPE
  };
}

/// A mask is a number, or a list of the types whose bits it has.
std::uint32_t ReadConversionMask(const JsonCursor& cursor) {
  if (!cursor.IsArray()) return cursor.AsUInt32();
  std::uint32_t mask = 0;
  cursor.ForEachElement([&mask](const JsonCursor& element) {
    const KXString name = element.AsText();
    const auto& types = SUFeaturesTable::kConversionTypeNames;
    const auto* const pType = std::ranges::find(types, name.view());
    if (pType == std::end(types)) {
      element.Throw(L"no such type" + DidYouMean(name, KXStringVector(std::begin(types), std::end(types))));
    }
    mask |= 1u << (pType - std::begin(types));
  });
  return mask;
}

void ReadFeature(const JsonCursor& cursor, FeatureId id, SUFeaturesTable& features) {
  if (SUFeaturesTable::IsBoolean(id)) {
    features.SetBoolean(id, cursor.AsBoolean());
  } else if (SUFeaturesTable::IsString(id)) {
    features.SetString(id, cursor.AsText());
  } else {
    features.SetUInt32(id, SUFeaturesTable::IsConversionMask(id) ? ReadConversionMask(cursor) : cursor.AsUInt32());
  }
}

void ReadFeatures(const JsonCursor& cursor, SUFeaturesTable& features) {
  std::set<FeatureId> seen;
  cursor.ForEachMember([&](const std::string& key, const JsonCursor& member) {
    const KXString name = BaseStringUtil::StdStringToString(key);
    const FeatureId id = SUFeaturesTable::GetFeatureIDFromName(name);
    if (id == SUFeaturesTable::kFeature_Invalid) {
      member.Throw(L"no such feature" + DidYouMean(name, SUFeaturesTable::GetFeatureNames()));
    }
    if (!seen.insert(id).second) {
      member.Throw(L"the feature " + SUFeaturesTable::GetFeatureNameFromId(id) + L" stands here twice");
    }
    ReadFeature(member, id, features);
  });
}

FeaturePreset CopyOfPreset(const JsonCursor& cursor) {
  const KXString name = cursor.AsText();
  const FeaturePreset* const pPreset = FeaturePresets::Find(name);
  if (!pPreset) cursor.Throw(L"no such preset" + DidYouMean(name, FeaturePresets::GetNames()));
  return *pPreset;
}

ServerInfo::TargetType ReadTarget(const JsonCursor& cursor) {
  const KXString name = cursor.AsText();
  ServerInfo::TargetType target = ServerInfo::kUnknown;
  if (!ServerInfo::GetTargetEnumFromName(name, target)) {
    cursor.Throw(L"no such kind of target" + DidYouMean(name, TargetNames()));
  }
  return target;
}

}  // namespace

FeaturePreset ReadFeaturePreset(const JsonCursor& database, const KXString& name) {
  FeaturePreset described{name, ServerInfo::kUnknown, {}};
  if (!database.Has("preset") && !database.Has("target")) database.Report(L"the key preset or target is missing");
  database.Member("preset", [&](const JsonCursor& preset) {
    described = CopyOfPreset(preset);
    described.m_name = name;
  });
  database.Member("target", [&](const JsonCursor& target) { described.m_targetType = ReadTarget(target); });
  database.Member("features", [&](const JsonCursor& features) { ReadFeatures(features, described.m_features); });
  return described;
}
