#include "rq/FeatureReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"
#include "rq/sql/SqlText.h"

namespace {

using Json = nlohmann::ordered_json;
using FeatureId = SUFeaturesTable::FeatureId;

std::string NameOf(const FeatureAnswer& answer) { return SUFeaturesTable::GetFeatureNameFromId(answer.m_id).ToUTF8(); }

std::string TargetOf(const RefADatabase& database) {
  return ServerInfo::GetTargetNameFromEnum(database->GetTargetType()).ToUTF8();
}

/// On one line, whatever characters the model gives it.
std::string ShownName(const RefADatabase& database) { return ForMessage(database->GetName().ToUTF8(), 100); }

std::string Dumped(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

/// The types of a mask, and the bits that stand for none as a number.
std::string MaskText(std::uint32_t mask) {
  std::string text;
  const auto append = [&text](const std::string& word) { text += (text.empty() ? "" : " ") + word; };
  for (const std::wstring_view type : SUFeaturesTable::kConversionTypeNames) {
    if (mask & 1) append(KXString(type).ToUTF8());
    mask >>= 1;
  }
  if (mask != 0) append("and " + std::to_string(mask) + " beyond");
  return text.empty() ? "none" : text;
}

std::string ValueText(const FeatureAnswer& answer) {
  if (const bool* const pValue = std::get_if<bool>(&answer.m_value)) return *pValue ? "yes" : "no";
  if (const std::uint32_t* const pValue = std::get_if<std::uint32_t>(&answer.m_value)) {
    return SUFeaturesTable::IsConversionMask(answer.m_id) ? MaskText(*pValue) : std::to_string(*pValue);
  }
  return Dumped(std::get<KXString>(answer.m_value).ToUTF8());
}

Json ValueJson(const FeatureAnswer& answer) {
  if (const bool* const pValue = std::get_if<bool>(&answer.m_value)) return *pValue;
  if (const std::uint32_t* const pValue = std::get_if<std::uint32_t>(&answer.m_value)) return *pValue;
  return std::get<KXString>(answer.m_value).ToUTF8();
}

}  // namespace

FeatureAnswer AskFeature(const RefADatabase& database, FeatureId id, ARpGateway& gateway) {
  FeatureAnswer answer{id, false, FeaturesMgr::GetDecidingProperty(database, id, &gateway)};
  if (SUFeaturesTable::IsBoolean(id)) {
    answer.m_value = FeaturesMgr::IsSupportedFeature(database, id, &gateway);
  } else if (SUFeaturesTable::IsUInt32(id)) {
    answer.m_value = FeaturesMgr::GetIntegerFeatureValue(database, id, &gateway);
  } else {
    answer.m_value = FeaturesMgr::GetStringFeatureValue(database, id, &gateway);
  }
  return answer;
}

std::vector<FeatureAnswer> AskAllFeatures(const RefADatabase& database, ARpGateway& gateway) {
  std::vector<FeatureAnswer> answers;
  for (const FeatureId id : SUFeaturesTable::GetFeatureIds()) answers.push_back(AskFeature(database, id, gateway));
  return answers;
}

std::string FeatureText(const RefADatabase& database, const FeatureAnswer& answer) {
  std::string text = NameOf(answer) + " of " + ShownName(database) + ": " + ValueText(answer);
  if (!answer.m_property.empty()) {
    const ServerInfo::TargetType target = database->GetTargetType();
    const bool bGeneric = answer.m_property == FeaturesMgr::FormDBFeatureVariableName(target, answer.m_id, true);
    text += ", by " + answer.m_property.ToUTF8() +
            (bGeneric ? " (generic: for any kind of target)" : " (specific: for " + TargetOf(database) + ')');
  }
  return text + '\n';
}

std::string FeatureJson(const RefADatabase& database, const FeatureAnswer& answer) {
  Json object;
  object["database"] = database->GetName().ToUTF8();
  object["target"] = TargetOf(database);
  object["feature"] = NameOf(answer);
  object["value"] = ValueJson(answer);
  object["property"] = answer.m_property.empty() ? Json() : Json(answer.m_property.ToUTF8());
  return Dumped(object) + '\n';
}

std::string FeatureTableText(const RefADatabase& database, const std::vector<FeatureAnswer>& answers) {
  std::size_t width = 0;
  for (const FeatureAnswer& answer : answers) width = std::max(width, NameOf(answer).size());
  std::string text = ShownName(database) + ", of the kind " + TargetOf(database) + '\n';
  for (const FeatureAnswer& answer : answers) {
    const std::string name = NameOf(answer);
    text += name + std::string(width + 2 - name.size(), ' ') + ValueText(answer);
    if (!answer.m_property.empty()) text += ", by " + answer.m_property.ToUTF8();
    text += '\n';
  }
  return text;
}

std::string FeatureTableJson(const RefADatabase& database, const std::vector<FeatureAnswer>& answers) {
  Json features = Json::object();
  Json overrides = Json::object();
  for (const FeatureAnswer& answer : answers) {
    features[NameOf(answer)] = ValueJson(answer);
    if (!answer.m_property.empty()) overrides[NameOf(answer)] = answer.m_property.ToUTF8();
  }
  Json object;
  object["database"] = database->GetName().ToUTF8();
  object["target"] = TargetOf(database);
  object["features"] = std::move(features);
  object["overrides"] = std::move(overrides);
  return Dumped(object) + '\n';
}
