#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "Host/ErrorMessage.h"
#include "HostMemory/MemoryGateway.h"
#include "HostMemory/MemoryObjects.h"

namespace {

using Table = SUFeaturesTable;

const wchar_t* const kSpecific = L"TELM_DBFEATURES_SQLITE_IS_UNION";
const wchar_t* const kGeneric = L"TELM_DBFEATURES_IS_UNION";

/// A request on a database of SQLite's kind.
class FeaturesMgrTest : public testing::Test {
 protected:
  MemoryGateway m_rp;
  MemoryDatabase& m_database = m_rp.MakeObject<MemoryDatabase>(1u, L"db", ServerInfo::kSQLite);
  const RefADatabase m_ref{&m_rp, m_database.GetID()};
};

// ---------------------------------------------------------------------------------------------------------------------
// Overrides

/// What properties make of a feature; kOwn: what the database says, whichever that is.
enum Answer { kNo, kYes, kOwn };

TEST_F(FeaturesMgrTest, OverridesOfABooleanFeature) {
  // A request property or two, and which of them decides if any.
  std::tuple<const wchar_t*, MemoryValue, const wchar_t*, MemoryValue, Answer, const wchar_t*> rows[] = {
      {kSpecific, 0, L"", 0, kNo, kSpecific},
      {kSpecific, -1, L"", 0, kYes, kSpecific},
      {kSpecific, L"", L"", 0, kNo, kSpecific},
      {kSpecific, L"0", L"", 0, kNo, kSpecific},
      {kSpecific, L"0.0", L"", 0, kYes, kSpecific},
      {kSpecific, -0.0, L"", 0, kNo, kSpecific},
      {kSpecific, std::nan(""), L"", 0, kYes, kSpecific},
      {kSpecific, KorvelNumber::zero(), L"", 0, kNo, kSpecific},
      {kSpecific, KorvelNumber::FromInteger(7), L"", 0, kYes, kSpecific},
      {kGeneric, L"0", L"", 0, kNo, kGeneric},
      {kGeneric, 1, L"", 0, kYes, kGeneric},
      {kSpecific, 1, kGeneric, 0, kYes, kSpecific},
      // A specific one of another type is ignored, and keeps the generic one away.
      {kSpecific, KXDate(2024, 1, 1), kGeneric, 0, kOwn, L""},
      {kSpecific, KXStringVector{L"0", L"0"}, L"", 0, kOwn, L""},
      {kSpecific, nullptr, L"", 0, kOwn, L""},
      {L"TELM_DBFEATURES_DUCKDB_IS_UNION", 0, L"TELM_DBFEATURES_IS_UNION_ALL", 0, kOwn, L""},
  };
  int row = 0;
  for (auto& [firstName, firstValue, secondName, secondValue, answer, property] : rows) {
    SCOPED_TRACE(testing::Message() << "row " << row++);
    MemoryGateway rp;
    rp.SetRequestProperty(KXStringPair(L"block", kSpecific), 0);
    rp.SetRequestProperty(firstName, std::move(firstValue)).SetRequestProperty(secondName, std::move(secondValue));
    for (const bool bOwn : {false, true}) {
      m_database.SetBooleanFeature(Table::kFeature_Union, bOwn);
      EXPECT_EQ(FeaturesMgr::IsSupportedFeature(m_ref, Table::kFeature_Union, &rp),
                answer == kOwn ? bOwn : answer == kYes);
      EXPECT_EQ(FeaturesMgr::GetDecidingProperty(m_ref, Table::kFeature_Union, &rp), property);
      EXPECT_EQ(FeaturesMgr::IsSupportedFeature(m_ref, Table::kFeature_Union, nullptr), bOwn);
    }
  }
}

TEST_F(FeaturesMgrTest, IntegersAndTextAskForTheSpecificPropertyAlone) {
  const auto kTables = Table::kFeature_MaxTablesInSelect;
  const auto kQuote = Table::kFeature_IdentifierQuoteChar;
  m_database.SetIntegerFeature(kTables, 64).SetStringFeature(kQuote, L"\"");
  m_rp.SetRequestProperty(L"TELM_DBFEATURES_IS_MAX_TABLES_IN_SELECT", 1)
      .SetRequestProperty(L"TELM_DBFEATURES_IS_IDENTIFIER_QUOTE_CHAR", L"'");
  EXPECT_EQ(FeaturesMgr::GetIntegerFeatureValue(m_ref, kTables, &m_rp), 64u);
  EXPECT_EQ(FeaturesMgr::GetStringFeatureValue(m_ref, kQuote, &m_rp), L"\"");
  m_rp.SetRequestProperty(L"TELM_DBFEATURES_SQLITE_IS_MAX_TABLES_IN_SELECT", L"8")
      .SetRequestProperty(L"TELM_DBFEATURES_SQLITE_IS_IDENTIFIER_QUOTE_CHAR", L"");
  EXPECT_EQ(FeaturesMgr::GetIntegerFeatureValue(m_ref, kTables, &m_rp), 8u);
  EXPECT_EQ(FeaturesMgr::GetIntegerFeatureValue(m_ref, kTables, nullptr), 64u);
  EXPECT_EQ(FeaturesMgr::GetStringFeatureValue(m_ref, kQuote, &m_rp), L"");
  EXPECT_EQ(FeaturesMgr::GetDecidingProperty(m_ref, kQuote, &m_rp), L"TELM_DBFEATURES_SQLITE_IS_IDENTIFIER_QUOTE_CHAR");
  m_rp.SetRequestProperty(L"TELM_DBFEATURES_SQLITE_IS_MAX_TABLES_IN_SELECT", -1);
  EXPECT_EQ(FeaturesMgr::GetMaxTablesPerQuery(m_ref, &m_rp), 0xFFFFFFFFu);
  m_rp.SetRequestProperty(L"TELM_DBFEATURES_SQLITE_IS_MAX_TABLES_IN_SELECT", L"many");
  EXPECT_THROW(FeaturesMgr::GetMaxTablesPerQuery(m_ref, &m_rp), ErrorMessage);
}

TEST_F(FeaturesMgrTest, XmlSupportsNothingWhateverIsOverridden) {
  auto& xml = m_rp.MakeObject<MemoryDatabase>(2u, L"xml", ServerInfo::kXML_Direct);
  xml.SetBooleanFeature(Table::kFeature_Union, true).SetIntegerFeature(Table::kFeature_MaxColumnsInGroupBy, 5);
  m_rp.SetRequestProperty(kGeneric, 1);
  const RefADatabase ref(&m_rp, xml.GetID());
  EXPECT_FALSE(FeaturesMgr::IsSupportedFeature(ref, Table::kFeature_Union, &m_rp));
  EXPECT_EQ(FeaturesMgr::GetDecidingProperty(ref, Table::kFeature_Union, &m_rp), L"");
  EXPECT_EQ(FeaturesMgr::GetMaxGroupByExprs(ref, &m_rp), 5u);
}

TEST_F(FeaturesMgrTest, WithoutADatabase) {
  const RefADatabase none;
  m_rp.SetRequestProperty(kGeneric, 1);
  EXPECT_FALSE(FeaturesMgr::IsSupportedFeature(none, Table::kFeature_Union, &m_rp));
  EXPECT_EQ(FeaturesMgr::GetIntegerFeatureValue(none, Table::kFeature_MaxTablesInSelect, &m_rp), 0u);
  EXPECT_EQ(FeaturesMgr::GetStringFeatureValue(none, Table::kFeature_DateFormat, &m_rp), L"");
  EXPECT_EQ(FeaturesMgr::GetMaxTablesPerQuery(none, &m_rp), 1u);
  EXPECT_EQ(FeaturesMgr::GetMaxGroupByExprs(none, &m_rp), 256u);
  EXPECT_FALSE(FeaturesMgr::IsConversionSupported(none, KXCharData, KXCharData, &m_rp));
  EXPECT_DEATH(FeaturesMgr::GetMaxOrderByColumns(none, &m_rp), "!refDatabase.IsNull\\(\\)");
}

// ---------------------------------------------------------------------------------------------------------------------
// Types

/// What stands of a type, one of each class and some more; the feature Invalid stands for none.
struct TypeRow {
  KXDataType type;
  bool bGroupBy;
  Table::FeatureId literal;
  Table::FeatureId sourceMask;
  int targetBit;  ///< -1: none.
};

constexpr auto kNone = Table::kFeature_Invalid;
constexpr TypeRow kTypeRows[] = {
    {KXBitData, true, kNone, Table::kFeature_ConvertBitBitmask, 12},
    {KXVarCharData, true, Table::kFeature_StringLiteral, Table::kFeature_ConvertVarCharBitmask, 8},
    {KXLongVarBinaryData, false, kNone, Table::kFeature_ConvertLongVarBinaryBitmask, 18},
    {KXInt1Data, true, Table::kFeature_IntegerLiteral, Table::kFeature_ConvertTinyIntBitmask, 13},
    {KXUInt1Data, true, Table::kFeature_IntegerLiteral, kNone, -1},
    {KXMoneyData, true, Table::kFeature_FloatLiteral, kNone, -1},
    {KXDecimalData, true, Table::kFeature_FloatLiteral, Table::kFeature_ConvertDecimalBitmask, 2},
    {KXDateData, true, Table::kFeature_DateLiteral, kNone, 15},
    {KXTimeData, true, Table::kFeature_TimeLiteral, kNone, 16},
    {KXTimeStampData, true, Table::kFeature_DateTimeLiteral, kNone, 17},
    {KXIntervalData, true, kNone, kNone, -1},
    {KXObjectData, false, kNone, kNone, -1},
};

TEST_F(FeaturesMgrTest, GroupByLiteralsAndConversionsOfTypes) {
  for (const TypeRow& row : kTypeRows) {
    SCOPED_TRACE(row.type);
    m_database.SetFeatures({});
    EXPECT_EQ(FeaturesMgr::IsTypeGroupByCompatible(ServerInfo::kSQLite, row.type), row.bGroupBy);
    EXPECT_FALSE(FeaturesMgr::IsTypedLiteralSupported(m_ref, row.type, &m_rp));
    if (row.literal != kNone) m_database.SetBooleanFeature(row.literal, true);
    EXPECT_EQ(FeaturesMgr::IsTypedLiteralSupported(m_ref, row.type, &m_rp), row.literal != kNone);

    const std::uint32_t bit = row.targetBit < 0 ? 0 : 1u << row.targetBit;
    EXPECT_EQ(FeaturesMgr::IsConversionBitOn(bit, row.type), bit != 0);
    EXPECT_FALSE(FeaturesMgr::IsConversionBitOn(~bit, row.type));
    EXPECT_FALSE(FeaturesMgr::IsConversionSupported(m_ref, row.type, KXTimeStampData, &m_rp));
    if (row.sourceMask != kNone) m_database.SetIntegerFeature(row.sourceMask, 1u << 17);
    EXPECT_EQ(FeaturesMgr::IsConversionSupported(m_ref, row.type, KXTimeStampData, &m_rp), row.sourceMask != kNone);
    EXPECT_FALSE(FeaturesMgr::IsConversionSupported(m_ref, row.type, KXDateData, &m_rp));
  }
  EXPECT_DEATH(FeaturesMgr::IsTypeGroupByCompatible(ServerInfo::kSQLite, KXUnknown), "SQORFeaturesMgr.*logic error");
}

}  // namespace
