#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "RqTestUtil.h"

namespace {

struct FeaturesCase {
  std::vector<std::string> m_arguments;
  int m_status;
  std::string m_out, m_err = {};
};

/// A model in a file, whose path it gives.
std::string ModelFile(const std::string& text) {
  const std::string path = testing::TempDir() + "features_model.json";
  std::ofstream(path) << text;
  return path;
}

RqRun Features(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "features");
  return RunRq(arguments);
}

TEST(Features, OneFeature) {
  const std::string model = ModelFile(R"({"databases": [{"name": "shop", "preset": "sqlite",
                                          "features": {"FULL_OUTER_JOIN": false}},
                                         {"name": "feed", "target": "XML_DIRECT", "features": {"UNION": true}}]})");
  const std::string generic = "TELM_DBFEATURES_IS_FULL_OUTER_JOIN";
  const std::string specific = "TELM_DBFEATURES_SQLITE_IS_FULL_OUTER_JOIN";
  const FeaturesCase cases[] = {
      {{"--database", "shop", "--model", model, "--feature", "kFeature_FullOuterJoin"},
       1,
       "FULL_OUTER_JOIN of shop: no\n"},
      {{"--database", "shop", "--model", model, "--feature", "FULL_OUTER_JOIN", "--set", generic + "=no"},
       0,
       "FULL_OUTER_JOIN of shop: yes, by " + generic + " (generic: for any kind of target)\n"},
      {{"--database=SQLITE", "--set", generic + "=1", "--set", specific + "=", "--feature=FULL_OUTER_JOIN"},
       1,
       "FULL_OUTER_JOIN of sqlite: no, by " + specific + " (specific: for SQLITE)\n"},
      {{"--database=sqlite", "--feature=MAX_TABLES_IN_SELECT", "--set", "TELM_DBFEATURES_IS_MAX_TABLES_IN_SELECT=1"},
       0,
       "MAX_TABLES_IN_SELECT of sqlite: 64\n",
       "rq: note: TELM_DBFEATURES_IS_MAX_TABLES_IN_SELECT has no effect: the value of this feature is set by kind: "
       "TELM_DBFEATURES_SQLITE_IS_MAX_TABLES_IN_SELECT\n"},
      {{"--database", "duckdb", "--feature", "FULL_OUTER_JOIN", "--set", specific + "=0"},
       0,
       "FULL_OUTER_JOIN of duckdb: yes\n",
       "rq: note: " + specific + " has no effect: duckdb is of the kind DUCKDB\n"},
      {{"--database", "feed", "--model", model, "--feature", "UNION"}, 1, "UNION of feed: no\n"},
      {{"--database=sqlite", "--feature=CONVERT_INTEGER_BITMASK", "--set",
        "TELM_DBFEATURES_SQLITE_IS_CONVERT_INTEGER_BITMASK=524296"},
       0,
       "CONVERT_INTEGER_BITMASK of sqlite: INTEGER and 1 beyond, by "
       "TELM_DBFEATURES_SQLITE_IS_CONVERT_INTEGER_BITMASK (specific: for SQLITE)\n"},
      {{"--database=postgresql", "--feature=SEARCH_PATTERN_ESCAPE", "--format=json"},
       0,
       R"({"database":"postgresql","target":"POSTGRESQL","feature":"SEARCH_PATTERN_ESCAPE","value":"\\",)"
       R"("property":null})"
       "\n"},
  };
  for (const FeaturesCase& c : cases) {
    SCOPED_TRACE(c.m_out);
    const RqRun run = Features(c.m_arguments);
    EXPECT_EQ(run.m_status, c.m_status);
    EXPECT_EQ(run.m_out, c.m_out);
    EXPECT_EQ(run.m_err, c.m_err);
  }
}

TEST(Features, AllFeatures) {
  const std::vector<std::string> arguments{"--database", "sqlite", "--set", "TELM_DBFEATURES_IS_UNION=0"};
  const RqRun text = Features(arguments);
  EXPECT_EQ(text.m_status, 0);
  EXPECT_TRUE(text.m_out.starts_with("sqlite, of the kind SQLITE\nLEFT_OUTER_JOIN   ")) << text.m_out;
  EXPECT_NE(text.m_out.find(" no, by TELM_DBFEATURES_IS_UNION\n"), std::string::npos);
  EXPECT_EQ(std::ranges::count(text.m_out, '\n'), 291);

  std::vector<std::string> asJson = arguments;
  asJson.push_back("--format=json");
  const RqRun json = Features(asJson);
  EXPECT_EQ(std::ranges::count(json.m_out, ':'), 5 + 290 + 4);  // the formats of times have four in them
  EXPECT_TRUE(json.m_out.starts_with(R"({"database":"sqlite","target":"SQLITE","features":{"LEFT_OUTER_JOIN":true,)"));
  for (const char* part : {R"("UNION":false)", R"("MAX_COLUMNS_IN_SELECT":2000,)", R"("IDENTIFIER_QUOTE_CHAR":"\"")",
                           R"(},"overrides":{"UNION":"TELM_DBFEATURES_IS_UNION"}})"}) {
    EXPECT_NE(json.m_out.find(part), std::string::npos) << part;
  }
}

TEST(Features, ErrorsAreOneMessage) {
  const std::string broken = ModelFile("{\n \"databases\": [}\n");
  const std::string tables = "TELM_DBFEATURES_SQLITE_IS_MAX_TABLES_IN_SELECT";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--database", "oracel"}, "rq: there is no database oracel; there are ansi, duckdb, postgresql, sqlite\n"},
      {{"--database", "sqlite", "--feature", "FULL_OUTER_JION"},
       "rq: there is no feature FULL_OUTER_JION; did you mean FULL_OUTER_JOIN"},
      {{"--database", "sqlite", "--feature", "subquery"}, "did you mean IN_SUBQUERY, "},
      {{"--database", "sqlite", "--model", broken}, "rq: " + broken + ": line 2, column 16: "},
      {{"--database", "sqlite", "--model", "/no/such"}, "rq: cannot read /no/such: No such file or directory\n"},
      {{"--database", "sqlite", "--set", "X"}, "rq: --set takes PROPERTY=VALUE, not X\n"},
      {{"--database", "sqlite", "--set", "X=1"}, "rq: --set X: no property of a feature; "},
      {{"--database", "sqlite", "--set", "TELM_DBFEATURES_ORA_IS_UNION=1"}, ": there is no kind of target ORA\n"},
      {{"--database", "sqlite", "--set", "TELM_DBFEATURES_IS_Union=1"},
       "the property is named TELM_DBFEATURES_IS_UNION\n"},
      {{"--database", "sqlite", "--set", tables + "=many"},
       "rq: The property " + tables + " has the value \"many\", which is not an integer.\n"},
  };
  for (const auto& [arguments, message] : cases) {
    SCOPED_TRACE(message);
    const RqRun run = Features(arguments);
    EXPECT_EQ(run.m_status, 2);
    EXPECT_EQ(run.m_out, "");
    EXPECT_NE(run.m_err.find(message), std::string::npos) << run.m_err;
  }
}

}  // namespace
