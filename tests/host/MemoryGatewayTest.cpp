#include "HostMemory/MemoryGateway.h"

#include <gtest/gtest.h>

#include <tuple>

#include "Host/ErrorMessage.h"
#include "Host/MetadataUtil.h"

namespace {

constexpr int kNone = -1;

template <class Read>
int ValueUnlessRefused(Read read) {
  try {
    return read();
  } catch (const ErrorMessage& error) {
    EXPECT_TRUE(error.GetCode() == kMsgPropertyOfWrongType && error.GetArgs()[0] == L"name");
    return kNone;
  }
}

TEST(MemoryGateway, PropertiesAreReadInTheTypeAskedFor) {
  const KXStringVector both{L"1", L"2"};
  const KXDate day(2020, 1, 2);
  std::tuple<MemoryValue, int, int> cases[] = {
      {true, 1, 1},        {2.5, 1, 2},          {-0.0, 0, 0},         {L"12", 1, 12},      {L"0.0", 0, 0},
      {L"True", 1, kNone}, {L"FALSE", 0, kNone}, {L"a", kNone, kNone}, {day, kNone, kNone}, {both, kNone, kNone}};
  MemoryGateway gateway;
  for (auto& [value, boolean, integer] : cases) {
    SCOPED_TRACE(&value - &std::get<0>(cases[0]));
    gateway.SetRequestProperty(L"name", std::move(value));
    EXPECT_EQ(ValueUnlessRefused([&] { return gateway.GetBooleanRequestProperty(L"name", false); }), boolean);
    int read = 5;
    EXPECT_EQ(ValueUnlessRefused([&] { return gateway.GetIntegerRequestProperty(L"name", read) ? read : 5; }), integer);
  }
}

TEST(MemoryGateway, SessionAndRequestAreApart) {
  MemoryGateway gateway;
  gateway.SetSessionProperty(L"session", 7);
  gateway.SetRequestProperty({L"block", L"name"}, 7).SetRequestProperty(L"null", nullptr);
  int integer = 5;
  KXString text = L"5";
  for (const wchar_t* name : {L"session", L"name", L"null"}) {
    EXPECT_TRUE(gateway.GetBooleanRequestProperty(name, true) && !gateway.GetBooleanRequestProperty(name, false));
    EXPECT_FALSE(gateway.GetIntegerRequestProperty(name, integer) || gateway.GetStringRequestProperty(name, text));
  }
  EXPECT_TRUE(integer == 5 && text == L"5");
  EXPECT_TRUE(gateway.GetIntegerSessionProperty(L"session", integer) && integer == 7);
  gateway.SetRequestProperty(L"session", 8);
  EXPECT_TRUE(gateway.GetStringRequestProperty(L"session", text) && text == L"8");
}

TEST(MemoryGateway, ARequestHidesAVariableOfItsSessionEvenWithoutAValue) {
  MemoryGateway gateway;
  const KXStringPair region(L"block", L"REGION");
  gateway.SetSessionVariable(L"block", L"REGION", KXStringVector{L"east", L"west"}).SetRequestProperty(region, nullptr);
  EXPECT_FALSE(MetadataUtil::IsSessionVariablePopulated(&gateway, region));
  std::unique_ptr<PropertyValue> pValue = std::make_unique<PropertyValueInteger>(1);
  EXPECT_TRUE(gateway.GetRequestProperty(region, pValue));
  EXPECT_EQ(pValue, nullptr);
  gateway.RemoveRequestProperty(region);
  EXPECT_TRUE(MetadataUtil::IsSessionVariablePopulated(&gateway, region));
  EXPECT_TRUE(gateway.GetRequestProperty(region, pValue));
  EXPECT_EQ(pValue->StringFrom(), L"east;west");
  gateway.RemoveSessionVariable(L"block", L"REGION");
  EXPECT_FALSE(gateway.GetRequestProperty(region, pValue));
}

TEST(MemoryGateway, FeatureOverridesAreCounted) {
  MemoryGateway gateway;
  const KXStringPair first(L"*", L"TELM_DBFEATURES_IS_X");
  gateway.SetRequestProperty(L"TELM_DBFEATURE", 1).SetSessionProperty(L"TELM_DBFEATURES_IS_X", 1);
  EXPECT_FALSE(gateway.ContainDBFeatureRequestProperty());
  gateway.SetRequestProperty(L"TELM_DBFEATURES_", 1).SetRequestProperty(first, 1).SetRequestProperty(first, 0);
  gateway.RemoveRequestProperty(first).RemoveRequestProperty(first);
  EXPECT_TRUE(gateway.ContainDBFeatureRequestProperty());
  gateway.RemoveRequestProperty({L"*", L"TELM_DBFEATURES_"});
  EXPECT_FALSE(gateway.ContainDBFeatureRequestProperty());
}

TEST(MemoryGateway, RemovedObjectsLiveUntilTheirLastHandleGoes) {
  MemoryGateway gateway;
  const VoidID id = gateway.MakeObject<MemoryEntity>(1u, L"first").GetID();
  RefARpObject handle = gateway.GetObject(id);
  gateway.RemoveObject(id);
  EXPECT_TRUE(gateway.GetObject(id).IsNull());
  EXPECT_EQ(handle->GetName(), L"first");
  handle.Null();
  gateway.MakeObject<MemoryEntity>(1u, L"second");  // the identifier is free
  EXPECT_EQ(gateway.GetObject(id)->GetName(), L"second");
}

TEST(ARpObject, QualifiedNamesGoFromTheOutermostContainerDown) {
  MemoryGateway gateway;
  const auto& database = gateway.MakeObject<MemoryDatabase>(1u, L"sales \"db\"", ServerInfo::kSQLite);
  const auto& schema = gateway.MakeObject<MemorySchema>(1u, L"main", database.GetID());
  const auto& table = gateway.MakeObject<MemoryTable>(1u, L"orders", schema.GetID(), database.GetID());
  EXPECT_EQ(table.GetQualifiedName(&gateway), L"sales \"db\".main.orders");
  EXPECT_EQ(MetadataUtil::GenerateQualifiedName(gateway.GetObject(table.GetID())),
            L"\"sales \"\"db\"\"\".\"main\".\"orders\"");
  gateway.RemoveObject(database.GetID());
  EXPECT_EQ(table.GetQualifiedName(&gateway), L"main.orders");
  EXPECT_EQ(table.GetQualifiedName(nullptr), L"orders");

  const auto& lasso = gateway.MakeObject<MemorySchema>(8u, L"head", VoidID(kTIDASchema, 9));
  gateway.MakeObject<MemorySchema>(9u, L"loop", VoidID(kTIDASchema, 10));
  gateway.MakeObject<MemorySchema>(10u, L"back", VoidID(kTIDASchema, 9));
  EXPECT_THROW(lasso.GetQualifiedName(&gateway), ErrorMessage);
}

TEST(Expr, ObjectsAndTextAreThoseOfTheAttribute) {
  MemoryGateway gateway;
  const VoidID cost = gateway.MakeObject<MemoryAttribute>(1u, L"cost").GetID();
  const VoidID tax = gateway.MakeObject<MemoryAttribute>(2u, L"tax").SetExpr({cost}, L"cost / 5").GetID();
  const auto& total = gateway.MakeObject<MemoryAttribute>(3u, L"total").SetExpr({tax, cost}, L"tax + cost");
  for (const bool bRecursive : {false, true}) {
    VoidIDCollector collector(bRecursive);
    collector.Collect(&gateway, total.GetExpr());
    collector.Collect(&gateway, Expr());
    VoidIDVector ids;
    collector.GetVoidIDs(ids);
    EXPECT_EQ(ids, bRecursive ? (VoidIDVector{tax, cost, cost}) : (VoidIDVector{tax, cost}));
  }
  EXPECT_EQ(ToPrettyStringVisitor::StringFrom(total.GetExpr(), &gateway), L"tax + cost");
  EXPECT_EQ(ToPrettyStringVisitor::StringFrom(Expr(), &gateway), L"");
  const auto& self = gateway.MakeObject<MemoryAttribute>(4u, L"self").SetExpr({VoidID(cost.GetInterfaceTypeID(), 4u)});
  EXPECT_THROW(VoidIDCollector(true).Collect(&gateway, self.GetExpr()), ErrorMessage) << "it is in itself";
}

TEST(MemoryGatewayDeathTest, BrokenPromises) {
  MemoryGateway gateway;
  gateway.MakeObject<MemoryEntity>(1u, L"a");
  EXPECT_DEATH(gateway.MakeObject<MemoryEntity>(1u, L"b"), "!entry.m_pObject");
  EXPECT_DEATH(gateway.ReleaseObjectRef(VoidID(kTIDAEntity, 2)), "found != m_objects.end\\(\\)");
  EXPECT_DEATH(gateway.ReleaseObjectRef(VoidID(kTIDAEntity, 1)), "entry.m_refCount > 0");
  const auto leaveAHandle = [] {
    RefAEntity handle;
    MemoryGateway shortLived;
    shortLived.MakeObject<MemoryEntity>(1u, L"a");
    handle = RefAEntity(&shortLived, VoidID(kTIDAEntity, 1));
  };
  EXPECT_DEATH(leaveAHandle(), "no handle is left when the gateway goes");
}

TEST(ARpGateway, RepositoriesOpenByID) {
  ARpGateway::SetOpener({41}, [](bool bReadOnly) {
    EXPECT_TRUE(bReadOnly);
    return std::make_unique<MemoryGateway>();
  });
  EXPECT_TRUE(ARpGateway::OpenRpByID({41}, __FILE__, __LINE__, true));
  EXPECT_FALSE(ARpGateway::OpenRpByID({42}, __FILE__, __LINE__, true));
  ARpGateway::SetOpener({41}, nullptr);
  EXPECT_EQ(ARpGateway::OpenRpByID({41}, __FILE__, __LINE__, true), nullptr);
}

}  // namespace
