#include "HostMemory/ModelReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Host/ErrorMessage.h"
#include "HostMemory/FeaturePresets.h"

namespace {

using Table = SUFeaturesTable;

TEST(ModelReader, DatabasesHaveTheirPresetAndWhatTheyChangeOfIt) {
  MemoryGateway gateway;
  gateway.MakeObject<MemoryDatabase>(1u, L"old", ServerInfo::kDefault);
  ModelReader::ReadText(R"({"databases": [
      {"name": "shop", "preset": "SQLite",
       "features": {"kFeature_FullOuterJoin": false, "MAX_TABLES_IN_SELECT": 10, "DATE_FORMAT": "D",
                    "CONVERT_CHAR_BITMASK": ["INTEGER", "TIMESTAMP"], "CONVERT_DATE_BITMASK": 5}},
      {"name": "mart", "preset": "sqlite", "target": "duckdb"},
      {"name": "bare", "target": "DEFAULT"}]})",
                        L"m", gateway);
  const RefADatabase shop = gateway.FindObject<ADatabase>(L"shop");
  EXPECT_EQ(shop->GetTargetType(), ServerInfo::kSQLite);
  EXPECT_FALSE(shop->GetBooleanFeatureValue(Table::kFeature_FullOuterJoin));
  EXPECT_TRUE(shop->GetBooleanFeatureValue(Table::kFeature_RightOuterJoin));
  EXPECT_EQ(shop->GetIntegerFeatureValue(Table::kFeature_MaxTablesInSelect), 10u);
  EXPECT_EQ(shop->GetIntegerFeatureValue(Table::kFeature_ConvertCharBitmask), 1u << 3 | 1u << 17);
  EXPECT_EQ(shop->GetIntegerFeatureValue(Table::kFeature_ConvertDateBitmask), 5u);
  EXPECT_EQ(shop->GetStringFeatureValue(Table::kFeature_DateFormat), L"D");
  const RefADatabase mart = gateway.FindObject<ADatabase>(L"mart");
  EXPECT_EQ(mart->GetTargetType(), ServerInfo::kDuckDB);
  EXPECT_TRUE(mart->GetBooleanFeatureValue(Table::kFeature_FullOuterJoin));
  const RefADatabase bare = gateway.FindObject<ADatabase>(L"bare");
  EXPECT_FALSE(bare->GetBooleanFeatureValue(Table::kFeature_And));
  EXPECT_EQ(gateway.GetObjects<ADatabase>().size(), 4u);
  EXPECT_TRUE(gateway.FindObject<ADatabase>(L"SHOP").IsNull());
}

TEST(ModelReader, ErrorsTellTheirPlaceAndAddNothing) {
  const std::pair<std::string, const char*> cases[] = {
      {R"({"databases": [{"name": "a", "preset": "ansi"}, {"name": "b", "preset": "ansi",
           "features": {"kFeature_Foo": true}}]})",
       "m: databases[1].features.kFeature_Foo: no such feature"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"FULL_OUTR_JOIN": true}}]})",
       "m: databases[0].features.FULL_OUTR_JOIN: no such feature; did you mean FULL_OUTER_JOIN"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"UNION": 1}}]})",
       "m: databases[0].features.UNION: true or false must stand here, not 1"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"MAX_NESTED_LEVEL": -1}}]})",
       "m: databases[0].features.MAX_NESTED_LEVEL: a whole number from 0 to 4294967295 must stand here, not -1"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"MAX_NESTED_LEVEL": 4294967296}}]})",
       "not 4294967296"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"DATE_FORMAT": null}}]})",
       "m: databases[0].features.DATE_FORMAT: text must stand here, not null"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"CONVERT_CHAR_BITMASK": ["CHAR", "TEXT"]}}]})",
       "m: databases[0].features.CONVERT_CHAR_BITMASK[1]: no such type"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"UNION": true, "kFeature_Union": true}}]})",
       "m: databases[0].features.kFeature_Union: the feature UNION stands here twice"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "features": {"UNION": true, "UNION": true}}]})",
       "m: databases[0].features.UNION: the key stands here twice"},
      {R"({"databases": [{"name": "a", "preset": "ansi"}, {"name": "a", "preset": "ansi"}]})",
       "m: databases[1].name: there is a database of this name already"},
      {R"({"databases": [{"name": "old", "preset": "ansi"}]})",
       "m: databases[0].name: there is a database of this name already"},
      {R"({"databases": [{"name": "", "preset": "ansi"}]})", "m: databases[0].name: a name must have characters"},
      {R"({"databases": [{"preset": "ansi"}]})", "m: databases[0]: the key name is missing"},
      {R"({"databases": [{"name": "a"}]})", "m: databases[0]: the key preset or target is missing"},
      {R"({"databases": [{"name": "a", "preset": "sqllite"}]})",
       "m: databases[0].preset: no such preset; did you mean sqlite?"},
      {R"({"databases": [{"name": "a", "target": "postgres"}]})",
       "m: databases[0].target: no such kind of target; did you mean POSTGRESQL?"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "feature": {}}]})",
       "m: databases[0].feature: no such key; did you mean features?"},
      {R"({"databases": [{"name": "a", "preset": "ansi", "a b\n": {}}]})", R"(m: databases[0]["a b\n"]: no such key)"},
      {R"({"databases": {}})", "m: databases: an array must stand here, not object"},
      {"[]", "m: an object must stand here, not array"},
      {"", "m: line 1, column 1: "},
      {"{\n  \"ä\": x}", "m: line 2, column 8: "},
      {"{\"databases\": [{}, {\"a\": [1], \"b\": [[2], 1e999]}]}", "m: databases[1].b[1]: number overflow"},
      {std::string(100000, '['), "m: line 1, column 100001: "},
      {"{\"a\xff\": 1}", "m: line 1, column "},
  };
  MemoryGateway gateway;
  gateway.MakeObject<MemoryDatabase>(7u, L"old", ServerInfo::kDefault);
  for (const auto& [text, message] : cases) {
    SCOPED_TRACE(text.substr(0, 200));
    try {
      ModelReader::ReadText(text, L"m", gateway);
      ADD_FAILURE() << "no error";
    } catch (const ErrorMessage& error) {
      EXPECT_EQ(error.GetCode(), kMsgModel);
      EXPECT_NE(error.GetText().ToUTF8().find(message), std::string::npos) << error.GetText();
    }
    EXPECT_EQ(gateway.GetObjects<ADatabase>().size(), 1u);
  }
}

// A feature that a preset forgets would read as "no" without anybody having said so.
TEST(FeaturePresets, EachTellsEveryFeature) {
  ASSERT_EQ(FeaturePresets::GetNames(), (KXStringVector{L"ansi", L"duckdb", L"postgresql", L"sqlite"}));
  for (const KXString& name : FeaturePresets::GetNames()) {
    SCOPED_TRACE(name.ToUTF8());
    std::ostringstream text;
    text << std::ifstream(RQ_SOURCE_DIR "/host/memory/presets/" + name.ToUTF8() + ".json").rdbuf();
    for (const KXString& feature : Table::GetFeatureNames()) {
      EXPECT_NE(text.str().find("        \"" + feature.ToUTF8() + "\": "), std::string::npos) << feature;
    }
  }
}

}  // namespace
