#include <gtest/gtest.h>

#include <set>

#include "Host/KXDataType.h"
#include "Host/ServerInfo.h"
#include "Host/SqlTableRef.h"

namespace {

KXString SingleWordName(KXDataType type) {
  KXString name;
  SUKXDataTypeUtility::GetSingleWordKXDataTypeName(type, name);
  return name;
}

TEST(SUKXDataTypeUtility, SingleWordNamesMirrorTheTypes) {
  std::set<KXString> names;
  for (int number = 0; number < KXMaxType; ++number) {
    const auto type = static_cast<KXDataType>(number);
    const KXString name = SingleWordName(type);
    SCOPED_TRACE(name.ToUTF8());
    EXPECT_FALSE(name.empty());
    EXPECT_EQ(name.find(L' '), KXString::npos);
    EXPECT_TRUE(names.insert(name).second);
    EXPECT_EQ(SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(name), type);
  }
  EXPECT_EQ(SingleWordName(KXDoubleData), L"DOUBLE");
  EXPECT_EQ(SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(L"double"), KXDoubleData);
  for (const wchar_t* name : {L"", L"DOUBLE PRECISION", L"DOUBLE ", L"NO_TYPE"}) {
    EXPECT_EQ(SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(name), KXUnknown);
  }
}

TEST(SUKXDataTypeUtility, TextTypesAreTheCharacterTypes) {
  for (int number = 0; number < KXMaxType; ++number) {
    const auto type = static_cast<KXDataType>(number);
    const bool bText = type == KXCharData || type == KXVarCharData || type == KXLongVarCharData;
    EXPECT_EQ(SUKXDataTypeUtility::IsKXTextType(type), bText) << number;
  }
}

TEST(SUKXDataTypeUtilityDeathTest, NoType) {
  KXString name;
  EXPECT_DEATH(SUKXDataTypeUtility::GetSingleWordKXDataTypeName(KXMaxType, name), "type < KXMaxType");
  EXPECT_DEATH(SUKXDataTypeUtility::GetKXDataTypeName(KXMaxType, name), "type < KXMaxType");
}

TEST(KXTypeInfo, DescribesItself) {
  const std::pair<KXTypeInfo, const wchar_t*> cases[] = {
      {KXTypeInfo(), L"UNKNOWN"},
      {KXTypeInfo(KXVarCharData, 30, 0, 1), L"CHARACTER VARYING(30)"},
      {KXTypeInfo(KXVarCharData, 0, 0, 0), L"CHARACTER VARYING NOT NULL"},
      {KXTypeInfo(KXNumericData, 10, 2, 0), L"NUMERIC(10,2) NOT NULL"},
      {KXTypeInfo(KXDecimalData, 5, -1, 1), L"DECIMAL(5,-1)"},
      {KXTypeInfo(KXDoubleData, 15, 2, 1), L"DOUBLE PRECISION"},
  };
  for (const auto& [type, text] : cases) EXPECT_EQ(type.Describe(), text);
}

TEST(KXTypeInfo, OrderTakesAllFieldsInTurn) {
  const KXTypeInfo ascending[] = {{KXCharData, 1, 0, 0},    {KXCharData, 1, 0, 1}, {KXVarCharData, 1, 0, 0},
                                  {KXCharData, 1, 1, 0},    {KXCharData, 2, 0, 0}, {KXCharData, 2, 0, 1},
                                  {KXVarCharData, 2, 0, 1}, {KXBitData, 2, 5, 0}};
  for (std::size_t a = 0; a < std::size(ascending); ++a) {
    for (std::size_t b = 0; b < std::size(ascending); ++b) {
      EXPECT_EQ(ascending[a] < ascending[b], a < b) << a << ' ' << b;
      EXPECT_EQ(ascending[a] == ascending[b], a == b) << a << ' ' << b;
    }
  }
}

TEST(ServerInfo, TargetNamesMirrorTheKinds) {
  EXPECT_EQ(ServerInfo::kBuiltInExecutionEngine, 0u);
  EXPECT_EQ(ServerInfo::kUnknown, 1u);
  EXPECT_EQ(ServerInfo::kDefault, 2u);
  std::set<KXString> names;
  for (std::uint32_t number = 0; number <= ServerInfo::kVblData11g; ++number) {
    const auto type = static_cast<ServerInfo::TargetType>(number);
    const KXString name = ServerInfo::GetTargetNameFromEnum(type);
    EXPECT_TRUE(names.insert(name).second) << name;
    auto found = ServerInfo::kDefault;
    EXPECT_TRUE(ServerInfo::GetTargetEnumFromName(name, found));
    EXPECT_EQ(found, type);
  }
  auto found = ServerInfo::kDefault;
  EXPECT_FALSE(ServerInfo::GetTargetEnumFromName(L"NO TARGET", found));
  EXPECT_EQ(found, ServerInfo::kDefault);
  EXPECT_EQ(ServerInfo::GetTargetNameFromEnum(static_cast<ServerInfo::TargetType>(9999)), L"UNKNOWN");
}

TEST(ServerInfo, RemoteTargetsAreDatabasesOfTheirOwn) {
  using enum ServerInfo::TargetType;
  for (const auto type : {kBuiltInExecutionEngine, kUnknown, kDefault, kInternalRawDataStorage}) {
    EXPECT_FALSE(ServerInfo::IsRemoteTargetType(type)) << type;
  }
  for (const auto type : {kAnsiSQL, kSQLite, kPostgreSQL, kDuckDB, kXML_Direct, kVblData, kVblData11g}) {
    EXPECT_TRUE(ServerInfo::IsRemoteTargetType(type)) << type;
  }
  EXPECT_FALSE(ServerInfo::IsRemoteTargetType(static_cast<ServerInfo::TargetType>(9999)));
}

TEST(SqlTableRef, FlippingExchangesLeftAndRight) {
  using enum SqlTableRef::JoinType;
  EXPECT_EQ(SqlTableRef::FlipJoinType(kLeftOuterJoin), kRightOuterJoin);
  for (const auto type :
       {kInnerJoin, kLeftOuterJoin, kRightOuterJoin, kFullOuterJoin, kFullOuterStitchJoin, kNaturalJoin}) {
    const bool bOneSided = type == kLeftOuterJoin || type == kRightOuterJoin;
    EXPECT_EQ(SqlTableRef::FlipJoinType(type) == type, !bOneSided) << type;
    EXPECT_EQ(SqlTableRef::FlipJoinType(SqlTableRef::FlipJoinType(type)), type) << type;
  }
}

}  // namespace
