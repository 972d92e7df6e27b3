#include "Host/MemAlloc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "Host/UniqueIDGenerator.h"
#include "host/Threads.h"

// The sanitizers' malloc, too, is to answer an impossible request with null.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

namespace {

struct Plain : memalloc::MemAllocNewdel {
  int m_value = 7;
};

struct Mixin : memalloc::MemAllocNewdel {
  virtual ~Mixin() { ++s_destroyed; }
  static inline int s_destroyed = 0;
};
struct Both : Plain, Mixin {
  std::vector<int, KXNodeStdAlloc<int>> m_numbers{1, 2, 3};
};

TEST(MemAlloc, ObjectsLiveInNodeMemory) {
  static_assert(sizeof(Plain) == sizeof(int), "the base adds nothing to an object");
  // Deleted through the base that does not stand at the front of the object.
  std::unique_ptr<Mixin>(new Both).reset();
  EXPECT_EQ(Mixin::s_destroyed, 1);
  EXPECT_EQ(std::unique_ptr<Plain[]>(new Plain[100])[99].m_value, 7);
  alignas(Plain) unsigned char place[sizeof(Plain)];
  EXPECT_EQ(static_cast<void*>(new (place) Plain), place);
}

TEST(MemAlloc, FailureRaises) {
  constexpr std::size_t kTooMuch = std::numeric_limits<std::size_t>::max() / 4;
  EXPECT_THROW((void)KXNodeAlloc::allocate(kTooMuch, "test", 1), std::bad_alloc);
  EXPECT_EQ(memalloc::MemoryAllocatorGateway::tryAllocate(kTooMuch), nullptr);
  // The product of count and size wraps to a small number.
  EXPECT_THROW((void)KXNodeStdAlloc<std::uint64_t>().allocate((std::size_t{1} << 61) + 1), std::bad_alloc);
}

/// Deletes a node when its thread ends, as a pool of the thread's own would.
struct CountsOutAtThreadEnd {
  bool m_bArmed = false;
  ~CountsOutAtThreadEnd() {
    if (m_bArmed) MemoryDataCollector::DecrRqNodeCounter(1);
  }
};

TEST(MemoryDataCollector, CountsAcrossThreadsAndTheirEnds) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 10000;
  const std::int64_t before = MemoryDataCollector::GetRqNodeCount();
  RunThreads(kThreads, [](int t) {
    // Made before the thread counts for the first time, so destroyed behind the end of its counting.
    thread_local CountsOutAtThreadEnd t_atEnd;
    t_atEnd.m_bArmed = true;
    MemoryDataCollector::IncrRqNodeCounter(1);
    // Odd threads delete what even threads make, and a few of their own leave something behind.
    for (int i = 0; i < kRounds; ++i) {
      if (t % 2 == 0) {
        MemoryDataCollector::IncrRqNodeCounter(3);
      } else {
        MemoryDataCollector::DecrRqNodeCounter(3);
      }
      if (i % 1000 == 0) (void)MemoryDataCollector::GetRqNodeCount();
    }
    MemoryDataCollector::IncrRqNodeCounter(static_cast<unsigned>(t));
  });
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount() - before, kThreads * (kThreads - 1) / 2);
  MemoryDataCollector::DecrRqNodeCounter(kThreads * (kThreads - 1) / 2);
}

TEST(UniqueIDGenerator, GivesEachNumberOnce) {
  constexpr std::size_t kThreads = 8;
  constexpr std::size_t kNumbers = 5 * sug::UniqueIDGenerator::kBlockSize + 17;
  std::vector<std::vector<std::uint32_t>> drawn(kThreads);
  RunThreads(kThreads, [&drawn](int t) {
    for (std::size_t i = 0; i < kNumbers; ++i) drawn[t].push_back(sug::UniqueIDGenerator::generateProcessUniqueID32());
  });
  std::vector<std::uint32_t> all;
  for (const auto& own : drawn) {
    EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
    all.insert(all.end(), own.begin(), own.end());
  }
  std::sort(all.begin(), all.end());
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
  EXPECT_NE(all.front(), 0u);
  EXPECT_NE(all.back(), 0xffffffffu);
}

}  // namespace
