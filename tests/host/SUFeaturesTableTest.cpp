#include "Host/SUFeaturesTable.h"

#include <gtest/gtest.h>

namespace {

using Table = SUFeaturesTable;

// Numbers stand in repositories: the places where a shift would show.
static_assert(Table::kFeature_LeftOuterJoin == 0 && Table::kFeature_Not == 167 && Table::kFeature_Udf == 233);
static_assert(Table::kFeature_BooleanTypeEnd == 234 && Table::kFeature_MaxBinaryLiteralLen == 1000);
static_assert(Table::kFeature_MaxTablesInSelect == 1007 && Table::kFeature_ConvertBigIntBitmask == 1008);
static_assert(Table::kFeature_UInt32MaskTypeBegin == 1008 && Table::kFeature_ConvertVarCharBitmask == 1026);
static_assert(Table::kFeature_ExpressionSupportLevelInInList == 1038 && Table::kFeature_UInt32TypeEnd == 1039);
static_assert(Table::kFeature_DataSourceName == 2000 && Table::kFeature_SortType == 2016);
static_assert(Table::kFeature_StringTypeEnd == 2017 && std::size(Table::kConversionTypeNames) == 19);

TEST(SUFeaturesTable, NamesComeFromTheEnumerators) {
  const std::pair<Table::FeatureId, const wchar_t*> cases[] = {
      {Table::kFeature_LeftOuterJoin, L"LEFT_OUTER_JOIN"},
      {Table::kFeature_BooleanTypeBegin, L"LEFT_OUTER_JOIN"},  // a mark has the name of the feature of its number
      {Table::kFeature_NTile, L"N_TILE"},
      {Table::kFeature_Sql89ColumnAliasConformance, L"SQL89_COLUMN_ALIAS_CONFORMANCE"},
      {Table::kFeaturePerf_MinimalWith, L"PERF_MINIMAL_WITH"},
      {Table::kCastVarCharAsCharDefaultLen, L""},
      {Table::kFeature_Invalid, L""}};
  for (const auto& [id, name] : cases) EXPECT_EQ(Table::GetFeatureNameFromId(id), name) << id;
}

TEST(SUFeaturesTable, NamesAndNumbersAreOneToOne) {
  for (const Table::FeatureId id : Table::GetFeatureIds()) {
    const KXString name = Table::GetFeatureNameFromId(id);
    EXPECT_EQ(Table::GetFeatureIDFromName(name), id) << name;
    EXPECT_EQ(Table::IsBoolean(id) + Table::IsUInt32(id) + Table::IsString(id), 1) << name;
  }
  for (const wchar_t* name : {L"kFeature_LeftOuterJoin", L"LeftOuterJoin", L"left_outer_join"}) {
    EXPECT_EQ(Table::GetFeatureIDFromName(name), Table::kFeature_LeftOuterJoin) << KXString(name);
  }
  for (const wchar_t* name : {L"", L"_", L"kFeature", L"kFeature_Invalid", L"BOOLEAN_TYPE_END", L"LEFT OUTER JOIN"}) {
    EXPECT_EQ(Table::GetFeatureIDFromName(name), Table::kFeature_Invalid) << KXString(name);
  }
}

TEST(SUFeaturesTableDeathTest, FeatureOfAnotherType) {
  Table table;
  EXPECT_DEATH(table.GetBoolean(Table::kFeature_MaxNestedLevel), "IsBoolean\\(id\\)");
  EXPECT_DEATH(table.SetUInt32(Table::kFeature_UInt32TypeEnd, 1), "IsUInt32\\(id\\)");
}

}  // namespace
