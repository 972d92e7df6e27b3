#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Host/ACacheStorage.h"
#include "Host/DataBlobUtil.h"
#include "Host/ExternalData.h"
#include "Host/GlobalRpVariables.h"
#include "Host/KXDataType.h"
#include "Host/MetadataUtil.h"
#include "Host/PerfmonInstances.h"
#include "Host/ServerInfo.h"
#include "Host/SqlTableRef.h"
#include "Host/TableIdentifier.h"
#include "Host/TrendlineParameter.h"
#include "Host/TypedFieldValue.h"

namespace {

static_assert(SqlTableRef::FlipJoinType(SqlTableRef::kLeftOuterJoin) == SqlTableRef::kRightOuterJoin);
static_assert(SqlTableRef::FlipJoinType(SqlTableRef::kRightOuterJoin) == SqlTableRef::kLeftOuterJoin);
static_assert(SqlTableRef::FlipJoinType(SqlTableRef::kFullOuterJoin) == SqlTableRef::kFullOuterJoin);

TEST(SUKXDataTypeUtility, SingleWordNamesMirrorTheTypes) {
  std::set<KXString> names;
  for (int number = 0; number < KXMaxType; ++number) {
    const auto type = static_cast<KXDataType>(number);
    KXString name;
    SUKXDataTypeUtility::GetSingleWordKXDataTypeName(type, name);
    SCOPED_TRACE(name);
    EXPECT_TRUE(!name.empty() && name.find(L' ') == KXString::npos && names.insert(name).second);
    EXPECT_EQ(SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(name), type);
    EXPECT_EQ(SUKXDataTypeUtility::IsKXTextType(type), name.view().ends_with(L"CHAR"));
  }
  KXString name;
  EXPECT_DEATH(SUKXDataTypeUtility::GetSingleWordKXDataTypeName(KXMaxType, name), "type < KXMaxType");
  EXPECT_EQ(SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(L"double"), KXDoubleData);
  EXPECT_EQ(SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(L"DOUBLE PRECISION"), KXUnknown);
}

TEST(KXTypeInfo, DescribesItself) {
  const std::pair<KXTypeInfo, const wchar_t*> cases[] = {{{}, L"UNKNOWN"},
                                                         {{KXVarCharData, 30, 0, 1}, L"CHARACTER VARYING(30)"},
                                                         {{KXVarCharData, 0, 0, 0}, L"CHARACTER VARYING NOT NULL"},
                                                         {{KXDecimalData, 5, -1, 1}, L"DECIMAL(5,-1)"},
                                                         {{KXDoubleData, 15, 2, 1}, L"DOUBLE PRECISION"}};
  for (const auto& [type, text] : cases) EXPECT_EQ(type.Describe(), text);
}

TEST(KXTypeInfo, OrderTakesAllFieldsInTurn) {
  const KXTypeInfo ascending[] = {{KXCharData, 1, 0, 0}, {KXCharData, 1, 0, 1}, {KXVarCharData, 1, 0, 0},
                                  {KXCharData, 1, 1, 0}, {KXCharData, 2, 0, 0}, {KXBitData, 2, 5, 0}};
  for (std::size_t a = 0; a < std::size(ascending); ++a) {
    for (std::size_t b = 0; b < std::size(ascending); ++b) EXPECT_EQ(ascending[a] <=> ascending[b], a <=> b);
  }
}

TEST(ServerInfo, TargetNamesMirrorTheKinds) {
  std::set<KXString> names;
  for (std::uint32_t number = 0; number <= ServerInfo::kVblData11g; ++number) {
    const auto type = static_cast<ServerInfo::TargetType>(number);
    const KXString name = ServerInfo::GetTargetNameFromEnum(type);
    EXPECT_TRUE(names.insert(name).second) << name;
    auto found = ServerInfo::kDefault;
    EXPECT_TRUE(ServerInfo::GetTargetEnumFromName(name, found));
    EXPECT_EQ(found, type);
    const bool bRowsReadHere = number <= ServerInfo::kDefault || type == ServerInfo::kInternalRawDataStorage;
    EXPECT_EQ(ServerInfo::IsRemoteTargetType(type), !bRowsReadHere) << name;
  }
  auto found = ServerInfo::kSQLite;
  EXPECT_FALSE(ServerInfo::GetTargetEnumFromName(L"NO TARGET", found));
  EXPECT_EQ(found, ServerInfo::kSQLite);
  const auto noKind = static_cast<ServerInfo::TargetType>(9999);
  EXPECT_EQ(ServerInfo::GetTargetNameFromEnum(noKind), L"UNKNOWN");
  EXPECT_FALSE(ServerInfo::IsRemoteTargetType(noKind));
}

TEST(TrendlineParameter, KindsHaveWords) {
  EXPECT_EQ(TrendlineParameter::ToString(TrendlineParameter::kLogarithmic), L"LOGARITHMIC");
  EXPECT_EQ(TrendlineParameter::ToString(TrendlineParameter::kSequence), L"SEQUENCE");
}

TEST(ExternalObjectReference, TextsAndComparison) {
  const ExternalObjectReference reference({L"Lake", L"a\"b/c"}, L"x");
  EXPECT_EQ(reference.ToString(), L"Lake.a\"b/c as x");
  EXPECT_EQ(reference.ToStringForQueryGeneration(), L"\"Lake\".\"a\"\"b/c\"");
  EXPECT_EQ(reference.GetObjectReferenceStringAsPath(), L"/Lake/a\"b\\/c");
  EXPECT_EQ(TableIdentifier({L"u", L"t"}).ToString(), L"u.t");
  EXPECT_EQ(TableIdentifier({L"", L"t"}).ToString(), L"t");
  const ExternalObjectReference plain({L"a"}), aliased({L"a"}, L"x");
  EXPECT_EQ(plain, aliased) << "the alias is no part of what is meant";
  EXPECT_FALSE(ExternalObjectReference::IsSameObjectReference_CompareAll(plain, aliased));
}

TEST(GenericCacheInstance, CountsEntriesInUseAndKeepsItsCapacityWhenReset) {
  GenericCacheInstance cache;
  const auto counters = [&cache] {
    return std::vector<std::int64_t>{cache.GetRequestCount(), cache.GetHitCount(),    cache.GetMissCount(),
                                     cache.GetAddCount(),     cache.GetUtilization(), cache.GetPurgeCount(),
                                     cache.GetCapacity()};
  };
  using Counters = decltype(counters());
  cache.UpdateGenericCacheCapacity(std::int64_t{1} << 40);
  for (int i = 0; i < 5; ++i) cache.IncGenericCacheAddCount();
  for (int i = 0; i < 3; ++i) cache.IncGenericCacheRequestCount();
  cache.IncGenericCacheHitCount();
  for (int i = 0; i < 2; ++i) cache.IncGenericCacheMissCount();
  cache.UpdateGenericCachePurgeCount(4);
  cache.UpdateGenericCacheUtilizationCnt(1 - 4);
  EXPECT_EQ(counters(), (Counters{3, 1, 2, 5, 2, 4, std::int64_t{1} << 40}));
  cache.ResetCounters();
  EXPECT_EQ(counters(), (Counters{0, 0, 0, 0, 0, 0, std::int64_t{1} << 40}));
}

/// What the process gives while one is set, and before and after.
template <class Service, class Implementation>
void CheckSetting() {
  Implementation service;
  EXPECT_EQ(Service::Get(), nullptr);
  Service::Set(&service);
  EXPECT_EQ(Service::Get(), &service);
  Service::Set(nullptr);
  EXPECT_EQ(Service::Get(), nullptr);
}

TEST(HostServices, TheProcessGivesTheOneThatIsSet) {
  struct Storage : ACacheStorage {
    std::uint64_t GetNextCacheSequence() override { return 0; }
  };
  struct Manager : APerfmonInstancesMgr {
    RefCnt<GenericCacheInstance> CreateInstance(InstanceKind, const KXString&) override { return nullptr; }
  };
  CheckSetting<ACacheStorage, Storage>();
  CheckSetting<APerfmonInstancesMgr, Manager>();
}

TEST(HostDeathTest, BrokenPromises) {
  const std::pair<void (*)(), const char*> rows[] = {
      {[] { TypedFieldValue(KXMaxType, {}, 0, false); }, "type < KXMaxType"},
      {[] { TypedFieldValue(KXInt1Data, {1}, 1, false); },
       "nullOffset == 0 \\|\\| nullOffset < byteVector_.size\\(\\)"},
      {[] { GlobalRpVariables::GetSecurityVariableName(GlobalRpVariables::GetNumberOfSecurityVariables()); },
       "index < variables.m_names.size\\(\\)"},
      {[] { CrcUtil::GenerateCRC32(nullptr, -1); }, "nLength >= 0"},
      {[] {
         const std::uint8_t bytes[2] = {};
         const BoundedRead bounds(bytes + 1, bytes);
       },
       "m_bounds.m_begin <= m_bounds.m_end"},
      {[] {
         ByteVector bytes{1};
         DataBlobUtil::ToByteVector(bytes, bytes);
       },
       "&bv != &value"},
      {[] { MetadataUtil::IsSessionVariablePopulated(nullptr, {}); }, "pRp"},
      {[] { MetadataUtil::GetStringAfterVBLBundlePrefix(L"VBL_BUNDLE"); }, "BeginsWithVBLBundlePrefix\\(name\\)"},
      {[] { TrendlineParameter::ToString(static_cast<TrendlineParameter::ResultType>(3)); },
       "no such kind of trend line"},
  };
  for (const auto& [action, assertion] : rows) EXPECT_DEATH(action(), std::string("assertion failed: ") + assertion);
}

}  // namespace
