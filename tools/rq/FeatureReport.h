#pragma once

#include <string>
#include <variant>
#include <vector>

#include "Host/ARpGateway.h"

/// The value of one feature of a database, as a request sees it.
struct FeatureAnswer {
  SUFeaturesTable::FeatureId m_id;
  std::variant<bool, std::uint32_t, KXString> m_value;
  KXString m_property;  ///< The request property that decided; empty if the database did.

  bool IsNo() const { return m_value == decltype(m_value)(false); }
};

FeatureAnswer AskFeature(const RefADatabase& database, SUFeaturesTable::FeatureId id, ARpGateway& gateway);
/// All features, in the order of their numbers.
std::vector<FeatureAnswer> AskAllFeatures(const RefADatabase& database, ARpGateway& gateway);

// As text to read, or as an object of JSON on one line; both end with a line feed.
std::string FeatureText(const RefADatabase& database, const FeatureAnswer& answer);
std::string FeatureJson(const RefADatabase& database, const FeatureAnswer& answer);
std::string FeatureTableText(const RefADatabase& database, const std::vector<FeatureAnswer>& answers);
std::string FeatureTableJson(const RefADatabase& database, const std::vector<FeatureAnswer>& answers);
