#include "Host/Ref.h"

#include <gtest/gtest.h>

#include "HostMemory/MemoryGateway.h"
#include "host/Threads.h"

namespace {

TEST(Ref, HoldsOneReferenceForEachHandle) {
  MemoryGateway gateway;
  const VoidID table = gateway.MakeObject<MemoryTable>(1u, L"table", VoidID::NullID, VoidID::NullID).GetID();
  const VoidID entity = gateway.MakeObject<MemoryEntity>(1u, L"entity").GetID();
  {
    const Ref<MemoryTable> first(&gateway, table);
    Ref<MemoryTable> copy(first);
    Ref<ARpObject> base(first);
    EXPECT_EQ(base->GetName(), L"table");
    EXPECT_EQ(gateway.GetObjectRefCount(table), 3u);

    const Ref<MemoryTable> moved(std::move(copy));
    EXPECT_TRUE(copy.IsNull());  // NOLINT(bugprone-use-after-move): a moved-from handle is null
    EXPECT_EQ(moved, first);
    EXPECT_EQ(gateway.GetObjectRefCount(table), 3u);

    base = Ref<ARpObject>(&gateway, entity);
    EXPECT_EQ(gateway.GetObjectRefCount(table), 2u);
    EXPECT_TRUE(RefCast<MemoryTable>(base).IsNull());
    EXPECT_EQ(RefCast<MemoryEntity>(base).GetID(), entity);
    EXPECT_EQ(gateway.GetObjectRefCount(entity), 1u);
    base.Null();
    base.Null();
    EXPECT_EQ(base.GetID(), VoidID::NullID);
    EXPECT_EQ(gateway.GetObjectRefCount(entity), 0u);
  }
  EXPECT_EQ(gateway.GetObjectRefCount(table), 0u);
  EXPECT_TRUE(Ref<MemoryTable>(&gateway, VoidID(kTIDATable, 99u)).IsNull());
  EXPECT_TRUE(Ref<MemoryTable>(&gateway, entity).IsNull());
  EXPECT_TRUE(Ref<MemoryTable>(nullptr, table).IsNull());
  const Ref<MemoryTable> null(&gateway, nullptr, table);
  EXPECT_TRUE(Ref<MemoryTable>(null).IsNull());
  EXPECT_EQ(gateway.GetObjectRefCount(table) + gateway.GetObjectRefCount(entity), 0u);
  EXPECT_DEATH(null->GetName(), "logic error: null repository handle");
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
  RunThreads(4, [own = std::move(shared)](int) {
    for (int i = 0; i < 10000; ++i) RefCnt<Counted>(own).Null();
  });
  EXPECT_EQ(destroyed, 1);
}

}  // namespace
