#include "Query/Optimizer/Request/Node/SQORHeap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> s_deleted;

struct Base {
  virtual ~Base() = default;
};

struct Thing : Base {
  explicit Thing(int number) : m_number(number) {}
  ~Thing() override { s_deleted.push_back(m_number); }
  int m_number;
};

struct ByNumber {
  bool operator()(const Thing* pLhs, const Thing* pRhs) const { return pLhs->m_number < pRhs->m_number; }
};

class HeapTest : public testing::Test {
 protected:
  HeapTest() { s_deleted.clear(); }
};

TEST_F(HeapTest, OwnsOneObject) {
  {
    Heap<Thing> first(new Thing(1));
    const Heap<Thing> second = first;
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(second->m_number, 1);
    Heap<Base> base = second;
    EXPECT_EQ(second.Get(), nullptr);
    EXPECT_TRUE(base);
    Heap<Thing> third(new Thing(2));
    Thing* const pRaw = third.Get();
    third = pRaw;
    EXPECT_THAT(s_deleted, IsEmpty()) << "the very pointer held is left alone";
    third = new Thing(3);
    EXPECT_THAT(s_deleted, ElementsAre(2));
    first = third;
    EXPECT_EQ(third.Get(), nullptr);
    delete first.Release();
    EXPECT_THAT(s_deleted, ElementsAre(2, 3));
  }
  EXPECT_THAT(s_deleted, ElementsAre(2, 3, 1));
}

TEST_F(HeapTest, StaysInAVectorThatGrows) {
  {
    std::vector<Heap<Thing>> things;
    for (int i = 0; i < 100; ++i) things.push_back(Heap(new Thing(i)));
    things.erase(things.begin() + 1);
    EXPECT_THAT(s_deleted, ElementsAre(1));
    std::vector<Heap<Thing>> copy(things);
    EXPECT_EQ(things[50].Get(), nullptr);
    EXPECT_EQ(copy[50]->m_number, 51);
  }
  EXPECT_EQ(s_deleted.size(), 100u);
}

TEST_F(HeapTest, VectorDeletesItsElements) {
  {
    OwnedRqPtrVector<std::vector<Thing*>> things;
    things.push_back(new Thing(1));
    things.push_back(nullptr);
    OwnedRqPtrVector<std::vector<Thing*>> moved(std::move(things));
    EXPECT_THAT(things, IsEmpty());
    things.push_back(new Thing(2));
    things = std::move(moved);
    EXPECT_THAT(s_deleted, ElementsAre(2));
    moved.push_back(new Thing(3));
    DeletePtrCollection(moved);
    EXPECT_THAT(moved, IsEmpty());
    EXPECT_THAT(s_deleted, ElementsAre(2, 3));
  }
  EXPECT_THAT(s_deleted, ElementsAre(2, 3, 1));
}

TEST_F(HeapTest, SetDeletesItsElements) {
  using ThingSet = OwnedEquivRqPtrSet<std::set<Thing*, ByNumber>>;
  Thing twin(1);
  Thing* pKept = nullptr;
  {
    ThingSet things;
    for (int i = 1; i <= 4; ++i) EXPECT_TRUE(things.insert(new Thing(i)).second);
    EXPECT_FALSE(things.insert(&twin).second);
    pKept = things.erase_no_delete(things.begin());
    things.erase(things.begin());
    EXPECT_THAT(s_deleted, ElementsAre(2));
    ThingSet other;
    other.insert(new Thing(3));
    things.move_to(other);
    EXPECT_THAT(s_deleted, ElementsAre(2, 3)) << "what has an equivalent in the other set is deleted";
    EXPECT_EQ(things.size() + other.size(), 2u);
    other.move_to(other);
    EXPECT_EQ(other.size(), 2u);
    things.insert(&twin);
    things.clear_no_delete();
  }
  EXPECT_THAT(s_deleted, ElementsAre(2, 3, 3, 4));
  EXPECT_EQ(pKept->m_number, 1);
  delete pKept;
}

}  // namespace
