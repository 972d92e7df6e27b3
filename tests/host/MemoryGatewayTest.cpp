#include "HostMemory/MemoryGateway.h"

#include <gtest/gtest.h>

#include "Host/ErrorMessage.h"
#include "Host/GlobalRpVariables.h"
#include "Host/MetadataUtil.h"

namespace {

using OwnedValue = std::unique_ptr<PropertyValue>;

TEST(MemoryGateway, PropertiesAreReadInTheTypeAskedFor) {
  struct Case {
    MemoryValue m_value;
    const wchar_t* m_pText;  // null: counts as not there
    int m_boolean;           // kRefused: not of that type
    int m_integer;
  };
  constexpr int kRefused = INT_MIN;
  const auto cases = [] {
    std::vector<Case> rows;
    rows.push_back({1, L"1", 1, 1});
    rows.push_back({0, L"0", 0, 0});
    rows.push_back({true, L"1", 1, 1});
    rows.push_back({2.5, L"2.5", 1, 2});
    rows.push_back({L"True", L"True", 1, kRefused});
    rows.push_back({L"FALSE", L"FALSE", 0, kRefused});
    rows.push_back({L"12", L"12", 1, 12});
    rows.push_back({L"0.0", L"0.0", 0, 0});
    rows.push_back({L"maybe", L"maybe", kRefused, kRefused});
    rows.push_back({KorvelNumber(), L"0", 0, 0});
    rows.push_back({KXDate(2020, 1, 2), L"2020-01-02", kRefused, kRefused});
    rows.push_back({KXStringVector{L"a", L"b"}, L"a;b", kRefused, kRefused});
    rows.push_back({nullptr, nullptr, -1, -1});
    return rows;
  };
  const auto valueOrRefused = [](auto read) {
    try {
      return static_cast<int>(read());
    } catch (const ErrorMessage& error) {
      EXPECT_EQ(error.GetCode(), kMsgPropertyOfWrongType);
      EXPECT_EQ(error.GetArgs()[0], L"name");
      return kRefused;
    }
  };
  for (const bool bSession : {false, true}) {
    for (Case& row : cases()) {
      SCOPED_TRACE(row.m_pText ? KXString(row.m_pText).ToUTF8() : "no value");
      MemoryGateway gateway;
      if (bSession) {
        gateway.SetSessionProperty(L"name", std::move(row.m_value));
      } else {
        gateway.SetRequestProperty(L"name", std::move(row.m_value));
      }
      for (const bool bDefault : {false, true}) {
        const int expected = row.m_boolean == -1 ? bDefault : row.m_boolean;
        EXPECT_EQ(valueOrRefused([&] {
                    return bSession ? gateway.GetBooleanSessionProperty(L"name", bDefault)
                                    : gateway.GetBooleanRequestProperty(L"name", bDefault);
                  }),
                  expected);
      }
      KXString text = L"before";
      EXPECT_EQ(
          bSession ? gateway.GetStringSessionProperty(L"name", text) : gateway.GetStringRequestProperty(L"name", text),
          row.m_pText != nullptr);
      EXPECT_EQ(text, row.m_pText ? row.m_pText : L"before");
      EXPECT_EQ(valueOrRefused([&] {
                  int value = -1;
                  const bool bThere = bSession ? gateway.GetIntegerSessionProperty(L"name", value)
                                               : gateway.GetIntegerRequestProperty(L"name", value);
                  EXPECT_EQ(bThere, row.m_integer != -1);
                  return value;
                }),
                row.m_integer);
    }
  }
}

TEST(MemoryGateway, WhatNobodySetIsNotThere) {
  MemoryGateway gateway;
  gateway.SetSessionProperty(L"session", 1)
      .SetRequestProperty(L"request", 1)
      .SetRequestProperty({L"block", L"name"}, 1);
  EXPECT_TRUE(gateway.GetBooleanSessionProperty(L"request", true));
  EXPECT_FALSE(gateway.GetBooleanSessionProperty(L"request", false));
  EXPECT_FALSE(gateway.GetBooleanRequestProperty(L"session", false));
  EXPECT_FALSE(gateway.GetBooleanRequestProperty(L"name", false));     // it stands in a block
  EXPECT_FALSE(gateway.GetBooleanRequestProperty(L"REQUEST", false));  // letter by letter
  int integer = 5;
  KXString text = L"5";
  EXPECT_FALSE(gateway.GetIntegerRequestProperty(L"other", integer) ||
               gateway.GetStringRequestProperty(L"other", text));
  EXPECT_EQ(integer, 5);
  EXPECT_EQ(text, L"5");
}

KXString TextOf(MemoryGateway& gateway, const KXStringPair& key) {
  const OwnedValue pValue(gateway.GetSessionVariable(key));
  return pValue ? pValue->StringFrom() : L"(none)";
}

TEST(MemoryGateway, ARequestSeesTheVariablesOfItsSessionUnlessItHidesThem) {
  MemoryGateway gateway;
  const KXStringPair region(L"block", L"REGION");
  EXPECT_EQ(TextOf(gateway, region), L"(none)");
  gateway.SetSessionVariable(L"block", L"REGION", KXStringVector{L"east", L"west"});
  EXPECT_EQ(TextOf(gateway, region), L"east;west");
  OwnedValue pValue;
  EXPECT_TRUE(gateway.GetRequestProperty(region, pValue));
  EXPECT_EQ(pValue->GetType(), PropertyValue::StringVector);

  gateway.SetRequestProperty(region, L"north");
  EXPECT_EQ(TextOf(gateway, region), L"north");
  gateway.SetRequestProperty(region, nullptr);
  EXPECT_EQ(TextOf(gateway, region), L"(none)");
  EXPECT_TRUE(gateway.GetRequestProperty(region, pValue));
  EXPECT_EQ(pValue, nullptr);
  EXPECT_FALSE(MetadataUtil::IsSessionVariablePopulated(&gateway, region));

  gateway.RemoveRequestProperty(region);
  EXPECT_EQ(TextOf(gateway, region), L"east;west");
  EXPECT_TRUE(MetadataUtil::IsSessionVariablePopulated(&gateway, region));
  gateway.RemoveSessionVariable(L"block", L"REGION");
  EXPECT_FALSE(gateway.GetRequestProperty(region, pValue));

  gateway.SetRequestProperty({GlobalRpVariables::global_SessionBlockWildcard, L"LIMIT"}, 7);
  int limit = 0;
  EXPECT_TRUE(gateway.GetIntegerRequestProperty(L"LIMIT", limit));
  EXPECT_EQ(limit, 7);
}

/// An owner that is assigned a raw pointer, as a Heap is.
struct AssignedOwner {
  std::unique_ptr<PropertyValue> m_pValue;
  AssignedOwner& operator=(PropertyValue* pValue) {
    m_pValue.reset(pValue);
    return *this;
  }
};

TEST(MemoryGateway, ValuesGoIntoAnyOwner) {
  MemoryGateway gateway;
  gateway.SetRequestProperty(L"name", 3);
  AssignedOwner owner;
  EXPECT_TRUE(gateway.GetRequestProperty(KXStringPair(L"*", L"name"), owner));
  EXPECT_EQ(owner.m_pValue->StringFrom(), L"3");
}

TEST(MemoryGateway, FeatureOverridesAreCounted) {
  MemoryGateway gateway;
  const KXStringPair first(L"*", L"TELM_DBFEATURES_IS_X");
  gateway.SetRequestProperty(L"TELM_DBFEATURE", 1).SetSessionProperty(L"TELM_DBFEATURES_IS_X", 1);
  EXPECT_FALSE(gateway.ContainDBFeatureRequestProperty());
  gateway.SetRequestProperty(first, 1).SetRequestProperty(first, 0);
  gateway.SetRequestProperty(L"TELM_DBFEATURES_SQLITE_IS_X", 1);
  EXPECT_TRUE(gateway.ContainDBFeatureRequestProperty());
  gateway.RemoveRequestProperty(first).RemoveRequestProperty(first);
  EXPECT_TRUE(gateway.ContainDBFeatureRequestProperty());
  gateway.RemoveRequestProperty({L"*", L"TELM_DBFEATURES_SQLITE_IS_X"});
  EXPECT_FALSE(gateway.ContainDBFeatureRequestProperty());
}

TEST(MemoryGateway, IsWhatItsSettersMakeIt) {
  MemoryGateway gateway;
  EXPECT_FALSE(gateway.IsOfflineMode());
  EXPECT_EQ(gateway.GetGatewayType(), ARpGateway::kRpGatewayType_Memory);
  const VoidID external(kTIDATable, 5);
  gateway.SetOfflineMode(true)
      .SetGatewayType(ARpGateway::kRpGatewayType_Secure)
      .SetRepositoryUniqueID32(77)
      .SetRepositoryID({3})
      .SetExternal(external);
  EXPECT_TRUE(gateway.IsOfflineMode());
  EXPECT_EQ(gateway.GetGatewayType(), ARpGateway::kRpGatewayType_Secure);
  EXPECT_EQ(gateway.GetRepositoryUniqueID32(), 77u);
  EXPECT_EQ(gateway.GetRepositoryID(), ARpGateway::RepositoryID{3});
  EXPECT_TRUE(gateway.IsExternalARpObject(external));
  EXPECT_FALSE(gateway.IsExternalARpObject(VoidID(kTIDATable, 6)));
  EXPECT_GT(std::uint32_t{ARpGateway::INVALID_UNIQUE_ID_32}, gateway.GetRepositoryUniqueID32());
}

class MetadataTest : public testing::Test {
 protected:
  MemoryGateway m_gateway;
  MemoryDatabase& m_database = m_gateway.MakeObject<MemoryDatabase>(1u, L"sales \"db\"", ServerInfo::kSQLite);
  MemorySchema& m_schema = m_gateway.MakeObject<MemorySchema>(1u, L"main", m_database.GetID());
  MemoryTable& m_table = m_gateway.MakeObject<MemoryTable>(1u, L"orders", m_schema.GetID(), m_database.GetID());
  MemoryColumn& m_column =
      m_gateway.MakeObject<MemoryColumn>(1u, L"amount", m_table.GetID(), KXTypeInfo(KXDoubleData, 15, 0, 1));
};

TEST_F(MetadataTest, ObjectsAreReachedByIdentifier) {
  const RefATable table(&m_gateway, m_column.GetTableID());
  ASSERT_FALSE(table.IsNull());
  EXPECT_EQ(table->GetName(), L"orders");
  const RefADatabase database(&m_gateway, table->GetDatabaseID());
  EXPECT_EQ(database->GetTargetType(), ServerInfo::kSQLite);
  EXPECT_EQ(m_gateway.GetObject(m_column.GetID()).Get(), &m_column);
  EXPECT_TRUE(RefADatabase(&m_gateway, m_table.GetID()).IsNull());
  EXPECT_TRUE(m_gateway.GetObject(VoidID(kTIDATable, 99)).IsNull());
  EXPECT_TRUE(m_gateway.GetObject(VoidID::NullID).IsNull());

  const auto feature = static_cast<SUFeaturesTable::FeatureId>(3);
  EXPECT_FALSE(database->GetBooleanFeatureValue(feature));
  m_database.SetBooleanFeature(feature, true).SetIntegerFeature(feature, 9).SetStringFeature(feature, L"x");
  EXPECT_TRUE(database->GetBooleanFeatureValue(feature));
  EXPECT_EQ(database->GetIntegerFeatureValue(feature), 9u);
  EXPECT_EQ(database->GetStringFeatureValue(feature), L"x");
}

TEST_F(MetadataTest, RemovedObjectsLiveUntilTheirLastHandleGoes) {
  const VoidID id = m_column.GetID();
  EXPECT_EQ(m_gateway.GetObjectRefCount(id), 0u);
  RefARpObject handle = m_gateway.GetObject(id);
  {
    const RefARpObject second = handle;
    EXPECT_EQ(m_gateway.GetObjectRefCount(id), 2u);
    m_gateway.RemoveObject(id);
  }
  EXPECT_TRUE(m_gateway.GetObject(id).IsNull());
  EXPECT_EQ(handle->GetName(), L"amount");
  EXPECT_EQ(m_gateway.GetObjectRefCount(id), 1u);
  handle.Null();
  EXPECT_EQ(m_gateway.GetObjectRefCount(id), 0u);
  m_gateway.MakeObject<MemoryColumn>(1u, L"again", m_table.GetID(), KXTypeInfo());  // the identifier is free
  EXPECT_EQ(m_gateway.GetObject(id)->GetName(), L"again");
}

TEST_F(MetadataTest, QualifiedNamesGoFromTheOutermostContainerDown) {
  EXPECT_EQ(m_column.GetQualifiedName(&m_gateway), L"sales \"db\".main.orders.amount");
  EXPECT_EQ(MetadataUtil::GenerateQualifiedName(m_gateway.GetObject(m_column.GetID())),
            L"\"sales \"\"db\"\"\".\"main\".\"orders\".\"amount\"");
  EXPECT_EQ(m_column.GetQualifiedName(nullptr), L"amount");
  EXPECT_EQ(MetadataUtil::GenerateQualifiedName(RefARpObject()), L"");
  m_gateway.RemoveObject(m_schema.GetID());
  EXPECT_EQ(m_column.GetQualifiedName(&m_gateway), L"orders.amount");

  const auto& lasso = m_gateway.MakeObject<MemorySchema>(8u, L"head", VoidID(kTIDASchema, 9));
  m_gateway.MakeObject<MemorySchema>(9u, L"loop", VoidID(kTIDASchema, 10));
  m_gateway.MakeObject<MemorySchema>(10u, L"back", VoidID(kTIDASchema, 9));
  try {
    lasso.GetQualifiedName(&m_gateway);
    ADD_FAILURE() << "no end was noticed";
  } catch (const ErrorMessage& error) {
    EXPECT_EQ(error.GetCode(), kMsgObjectContainsItself);
  }
}

TEST(MemoryGatewayDeathTest, BrokenPromises) {
  EXPECT_DEATH(
      {
        MemoryGateway gateway;
        gateway.MakeObject<MemoryEntity>(1u, L"a");
        gateway.MakeObject<MemoryEntity>(1u, L"b");
      },
      "!entry.m_pObject");
  EXPECT_DEATH(
      {
        RefAEntity handle;
        MemoryGateway gateway;
        gateway.MakeObject<MemoryEntity>(1u, L"a");
        handle = RefAEntity(&gateway, VoidID(kTIDAEntity, 1));
      },
      "no handle is left when the gateway goes");
  EXPECT_DEATH(MemoryGateway().ReleaseObjectRef(VoidID(kTIDAEntity, 1)), "found != m_objects.end\\(\\)");
}

TEST(ARpGateway, RepositoriesOpenByID) {
  const ARpGateway::RepositoryID id{41};
  EXPECT_EQ(ARpGateway::OpenRpByID(id, __FILE__, __LINE__, true), nullptr);
  bool bReadOnlySeen = false;
  ARpGateway::SetOpener(id, [&bReadOnlySeen, id](bool bReadOnly) {
    bReadOnlySeen = bReadOnly;
    auto pGateway = std::make_unique<MemoryGateway>();
    pGateway->SetRepositoryID(id);
    return pGateway;
  });
  const auto pGateway = ARpGateway::OpenRpByID(id, __FILE__, __LINE__, true);
  ASSERT_NE(pGateway, nullptr);
  EXPECT_EQ(pGateway->GetRepositoryID(), id);
  EXPECT_TRUE(bReadOnlySeen);
  EXPECT_EQ(ARpGateway::OpenRpByID({42}, __FILE__, __LINE__, true), nullptr);
  ARpGateway::SetOpener(id, nullptr);
  EXPECT_EQ(ARpGateway::OpenRpByID(id, __FILE__, __LINE__, false), nullptr);
}

TEST(MetadataUtil, BundlePrefix) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {{L"VBL_BUNDLE_RATE", L"RATE"},   {L"vbl_Bundle_x", L"x"},
                                                             {L"VBL_BUNDLE_", L""},           {L"VBL_BUNDLE", nullptr},
                                                             {L"X_VBL_BUNDLE_RATE", nullptr}, {L"", nullptr}};
  for (const auto& [name, rest] : cases) {
    EXPECT_EQ(MetadataUtil::BeginsWithVBLBundlePrefix(name), rest != nullptr);
    if (rest) {
      EXPECT_EQ(MetadataUtil::GetStringAfterVBLBundlePrefix(name), rest);
    }
  }
}

}  // namespace
