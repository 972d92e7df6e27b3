#include "rq/CommandFeatures.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <stdexcept>

#include "Host/BaseStringUtil.h"
#include "HostMemory/MemoryGateway.h"
#include "HostMemory/ModelReader.h"
#include "HostMemory/NearestNames.h"
#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"
#include "rq/CommandLine.h"
#include "rq/FeatureReport.h"
#include "rq/TargetDatabase.h"
#include "rq/io/BlockWriter.h"
#include "rq/sql/SqlText.h"

namespace {

using FeatureId = SUFeaturesTable::FeatureId;

constexpr const char* kFooter =
    R"help(NAME is a database of the model or, if the model has none of that name, a
preset: ansi, duckdb, postgresql or sqlite.

A property of the request overrides a feature for databases of one kind, or a
yes or no for all of them:
  TELM_DBFEATURES_SQLITE_IS_MAX_TABLES_IN_SELECT=10
  TELM_DBFEATURES_IS_FULL_OUTER_JOIN=0
The one of the kind goes first. Of values of a yes or no, 0 and nothing mean
no, and all others yes.

The exit status is 0; with --feature it is 1 if the answer is no; or 2 if there
was an error.

Examples:
  rq features --database sqlite
  rq features --database postgresql --feature MAX_COLUMNS_IN_SELECT
  rq features --database shop --model shop.json --feature FULL_OUTER_JOIN \
    --set TELM_DBFEATURES_IS_FULL_OUTER_JOIN=0)help";

KXString Wide(const std::string& text) { return BaseStringUtil::StdStringToString(text); }

constexpr std::size_t kMaxMessage = 1000;

[[noreturn]] void Fail(const KXString& message) { throw std::runtime_error(ForMessage(message.ToUTF8(), kMaxMessage)); }

// ---------------------------------------------------------------------------------------------------------------------
// Features and their properties

FeatureId FindFeature(std::wstring_view name) {
  const FeatureId id = SUFeaturesTable::GetFeatureIDFromName(name);
  if (id == SUFeaturesTable::kFeature_Invalid) {
    Fail(L"there is no feature " + KXString(name) + DidYouMean(name, SUFeaturesTable::GetFeatureNames()));
  }
  return id;
}

/// A property that may override a feature, as its name tells.
struct FeatureProperty {
  KXString m_name;
  FeatureId m_id = SUFeaturesTable::kFeature_Invalid;
  bool m_bGeneric = false;
  ServerInfo::TargetType m_target = ServerInfo::kUnknown;  ///< Unless generic.
};

/// "TELM_DBFEATURES_" [kind "_"] "IS_" feature. A name that nothing would ever ask for is the user's mistake.
FeatureProperty ParseProperty(const KXString& name) {
  constexpr std::wstring_view kIs = L"_IS_";
  const std::wstring_view text = name;
  const std::wstring_view prefix = ARpGateway::kDBFeaturePropertyPrefix;
  // The underscore before the feature may be the prefix's own.
  const std::size_t isPlace = text.starts_with(prefix) ? text.find(kIs, prefix.size() - 1) : text.npos;
  if (isPlace == text.npos) {
    Fail(L"--set " + name +
         L": no property of a feature; one is named TELM_DBFEATURES_IS_FEATURE or TELM_DBFEATURES_KIND_IS_FEATURE");
  }
  FeatureProperty property{.m_name = name, .m_bGeneric = isPlace < prefix.size()};
  if (!property.m_bGeneric) {
    const std::wstring_view kind = text.substr(prefix.size(), isPlace - prefix.size());
    if (!ServerInfo::GetTargetEnumFromName(kind, property.m_target)) {
      Fail(L"--set " + name + L": there is no kind of target " + KXString(kind));
    }
  }
  property.m_id = FindFeature(text.substr(isPlace + kIs.size()));
  const KXString exact = FeaturesMgr::FormDBFeatureVariableName(property.m_target, property.m_id, property.m_bGeneric);
  if (exact != name) Fail(L"--set " + name + L": the property is named " + exact);
  return property;
}

/// Why the property changes nothing for the database; empty if it may.
KXString WhyWithoutEffect(const FeatureProperty& property, const ADatabase& database) {
  const ServerInfo::TargetType target = database.GetTargetType();
  const bool bBoolean = SUFeaturesTable::IsBoolean(property.m_id);
  if (property.m_bGeneric && !bBoolean) {
    return L"the value of this feature is set by kind: " +
           FeaturesMgr::FormDBFeatureVariableName(target, property.m_id, false);
  }
  if (!property.m_bGeneric && property.m_target != target) {
    return database.GetName() + L" is of the kind " + ServerInfo::GetTargetNameFromEnum(target);
  }
  if (bBoolean && target == ServerInfo::kXML_Direct) return L"a database of the kind XML_DIRECT supports nothing";
  return {};
}

/// Sets "PROPERTY=VALUE" as text. Gives a note if that changes nothing, else nothing.
std::string Apply(const std::string& setting, const ADatabase& database, MemoryGateway& gateway) {
  const std::size_t equals = setting.find('=');
  if (equals == std::string::npos) throw UsageError("--set takes PROPERTY=VALUE, not " + setting);
  const FeatureProperty property = ParseProperty(Wide(setting.substr(0, equals)));
  gateway.SetRequestProperty(property.m_name, Wide(setting.substr(equals + 1)));
  const KXString why = WhyWithoutEffect(property, database);
  return why.empty() ? "" : "rq: note: " + (property.m_name + L" has no effect: " + why).ToUTF8() + '\n';
}

}  // namespace

void CommandFeatures::Define(CLI::App& app) {
  app.add_option("--database", m_database, "The database, or a preset")->required()->type_name("NAME");
  app.add_option("--model", m_model, "Read databases from a model, a file of JSON")->type_name("FILE");
  app.add_option("--set", m_settings, "Set a property of the request; may stand more than once")
      ->allow_extra_args(false)
      ->type_name("PROPERTY=VALUE");
  app.add_option("--feature", m_feature, "Tell this one only, and which property decided it")->type_name("NAME");
  app.add_option("--format", m_format, "text: to read; json: one object")
      ->check(CLI::IsMember({"text", "json"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  app.footer(kFooter);
}

int CommandFeatures::Run(CommandStreams& streams) {
  MemoryGateway gateway;
  if (m_model) ModelReader::ReadFile(*m_model, gateway);
  const RefADatabase database = FindTargetDatabase(Wide(m_database), gateway);
  std::string notes;
  for (const std::string& setting : m_settings) notes += Apply(setting, *database, gateway);

  const bool bJson = m_format == "json";
  std::string output;
  int status = kExitSuccess;
  if (m_feature) {
    const FeatureAnswer answer = AskFeature(database, FindFeature(Wide(*m_feature)), gateway);
    output = bJson ? FeatureJson(database, answer) : FeatureText(database, answer);
    if (answer.IsNo()) status = kExitNo;
  } else {
    const std::vector<FeatureAnswer> answers = AskAllFeatures(database, gateway);
    output = bJson ? FeatureTableJson(database, answers) : FeatureTableText(database, answers);
  }
  streams.m_err << notes;
  BlockWriter writer(streams.m_out);
  writer.Append(output);
  writer.Flush();
  return status;
}
