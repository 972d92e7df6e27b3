#include "Host/Ref.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>
#include <vector>

#include "Host/ARpGateway.h"
#include "Host/SUCompatFlag.h"

namespace {

struct FakeObject : ARpObject {
  explicit FakeObject(const VoidID& id) : m_id(id) {}
  VoidID GetID() const override { return m_id; }
  KXString GetName() const override { return L"object"; }
  VoidID GetParentID() const override { return VoidID::NullID; }
  VoidID m_id;
};
struct Table : FakeObject {
  using FakeObject::FakeObject;
};
struct Column : FakeObject {
  using FakeObject::FakeObject;
};

/// Holds one table and one column and counts the references on each; its session has properties of text.
class CountingGateway final : public ARpGateway {
 public:
  Table m_table{VoidID(3001, 1)};
  Column m_column{VoidID(3003, 2)};
  std::map<VoidID, int> m_refs;
  std::map<KXString, KXString> m_session;

  int Refs(const FakeObject& object) { return m_refs[object.m_id]; }

  ARpObject* LookupObject(const VoidID& id) override {
    if (id == m_table.m_id) return &m_table;
    if (id == m_column.m_id) return &m_column;
    return nullptr;
  }
  void AddObjectRef(const VoidID& id) override { ++m_refs[id]; }
  void ReleaseObjectRef(const VoidID& id) override { --m_refs[id]; }

  bool ContainDBFeatureRequestProperty() override { return false; }
  bool IsOfflineMode() const override { return true; }
  GatewayType GetGatewayType() const override { return kRpGatewayType_Memory; }
  std::uint32_t GetRepositoryUniqueID32() const override { return INVALID_UNIQUE_ID_32; }
  RepositoryID GetRepositoryID() const override { return {}; }
  bool IsExternalARpObject(const VoidID&) override { return false; }

 protected:
  bool FindSessionProperty(const KXString& name, std::unique_ptr<PropertyValue>& pValue) override {
    const auto property = m_session.find(name);
    if (property == m_session.end()) return false;
    pValue = std::make_unique<PropertyValueString>(property->second);
    return true;
  }
  bool FindRequestProperty(const KXStringPair&, std::unique_ptr<PropertyValue>&) override { return false; }
};

TEST(Ref, HoldsOneReferenceForEachHandle) {
  CountingGateway gateway;
  {
    const Ref<Table> table(&gateway, gateway.m_table.m_id);
    ASSERT_FALSE(table.IsNullRef());
    EXPECT_EQ(table.Get(), &gateway.m_table);
    EXPECT_EQ(gateway.Refs(gateway.m_table), 1);

    Ref<Table> copy(table);
    Ref<ARpObject> base(table);
    EXPECT_EQ(base->GetID(), gateway.m_table.m_id);
    EXPECT_EQ(gateway.Refs(gateway.m_table), 3);

    const Ref<Table> moved(std::move(copy));
    EXPECT_TRUE(copy.IsNull());  // NOLINT(bugprone-use-after-move): a moved-from handle is null
    EXPECT_EQ(moved, table);
    EXPECT_EQ(gateway.Refs(gateway.m_table), 3);

    base = Ref<ARpObject>(&gateway, &gateway.m_column, gateway.m_column.m_id);
    EXPECT_EQ(gateway.Refs(gateway.m_table), 2);
    EXPECT_EQ(gateway.Refs(gateway.m_column), 1);
    EXPECT_TRUE(RefCast<Table>(base).IsNull());
    EXPECT_EQ(RefCast<Column>(base).Get(), &gateway.m_column);
    base.Null();
    base.Null();
    EXPECT_EQ(base.GetID(), VoidID::NullID);
    EXPECT_EQ(gateway.Refs(gateway.m_column), 0);
  }
  EXPECT_EQ(gateway.Refs(gateway.m_table), 0);
}

TEST(Ref, WhatIsNotThereGivesNullWithoutAReference) {
  CountingGateway gateway;
  EXPECT_TRUE(Ref<Table>(&gateway, VoidID(3001, 99)).IsNull());
  EXPECT_TRUE(Ref<Table>(&gateway, gateway.m_column.m_id).IsNull());
  EXPECT_TRUE(Ref<Table>(nullptr, gateway.m_table.m_id).IsNull());
  const Ref<Table> null(&gateway, nullptr, gateway.m_table.m_id);
  EXPECT_TRUE(Ref<Table>(null).IsNull());
  EXPECT_TRUE(gateway.m_refs.empty());
  EXPECT_DEATH(null->GetName(), "logic error: null repository handle");
}

TEST(SOCompatFlag, TheSessionGoesBeforeTheProcess) {
  CountingGateway gateway;
  const KXString name(L"TELM_REF_TEST");
  KXString text(L"before");
  EXPECT_FALSE(SOCompatFlag::GetBool(name, &gateway));
  EXPECT_FALSE(SOCompatFlag::GetString(text, name, &gateway));
  EXPECT_TRUE(text.empty());
  SUCompatFlag::SetString(name, L"1");
  EXPECT_TRUE(SOCompatFlag::GetBool(name, &gateway));
  EXPECT_TRUE(SOCompatFlag::GetString(text, name, &gateway));
  EXPECT_EQ(text, L"1");
  gateway.m_session[name] = L"0";
  EXPECT_FALSE(SOCompatFlag::GetBool(name, &gateway));
  EXPECT_TRUE(SOCompatFlag::GetString(text, name, &gateway));
  EXPECT_EQ(text, L"0");
  SUCompatFlag::Reset(name);
}

struct Counted : RefCountable {
  explicit Counted(int& destroyed) : m_destroyed(destroyed) {}
  ~Counted() override { ++m_destroyed; }
  int& m_destroyed;
};
struct DerivedCounted : Counted {
  using Counted::Counted;
};

TEST(RefCnt, DeletesWithTheLastPointer) {
  int destroyed = 0;
  RefCnt<DerivedCounted> first(new DerivedCounted(destroyed));
  RefCnt<Counted> second(first);
  RefCnt<Counted> third(std::move(second));
  EXPECT_TRUE(second.IsNull());  // NOLINT(bugprone-use-after-move): a moved-from pointer is null
  EXPECT_EQ(first->GetRefCount(), 2u);
  const Counted copyOfObject(*third);
  EXPECT_EQ(copyOfObject.GetRefCount(), 0u);
  third = third;
  first.Null();
  EXPECT_EQ(destroyed, 0);
  third = RefCnt<Counted>();
  EXPECT_EQ(destroyed, 1);
  EXPECT_DEATH((void)third->GetRefCount(), "assertion failed: m_pObj != nullptr");
}

TEST(RefCnt, CountsAcrossThreads) {
  int destroyed = 0;
  RefCnt<Counted> shared(new Counted(destroyed));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([own = shared] {
      for (int i = 0; i < 10000; ++i) RefCnt<Counted>(own).Null();
    });
  }
  shared.Null();
  for (std::thread& thread : threads) thread.join();
  threads.clear();
  EXPECT_EQ(destroyed, 1);
}

}  // namespace
