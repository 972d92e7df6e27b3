#include "Host/KXLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "host/Threads.h"

namespace {

TEST(KXCriticalSection, LetsOneThreadInAtATime) {
  // Held not at all, spinning gets the lock; held so long, waiters go to sleep.
  for (const std::chrono::microseconds held : {std::chrono::microseconds(0), std::chrono::microseconds(100)}) {
    const int rounds = held.count() ? 50 : 20000;
    KXCriticalSection lock(__FILE__, __LINE__, __func__);
    long count = 0;  // not atomic: the lock is all that guards it
    RunThreads(6, [&](int) {
      for (int i = 0; i < rounds; ++i) {
        const KXCriticalSectionGuard guard(lock);
        const long seen = count;
        if (held.count()) std::this_thread::sleep_for(held);
        count = seen + 1;
      }
    });
    EXPECT_EQ(count, 6L * rounds);
  }
}

TEST(KXCriticalSection, TryAcquireDoesNotWait) {
  KXCriticalSection lock(__FILE__, __LINE__, __func__);
  ASSERT_TRUE(lock.TryAcquire());
  EXPECT_FALSE(lock.TryAcquire());
  lock.Release();
  EXPECT_TRUE(lock.TryAcquire());
  lock.Release();
}

TEST(KXReadersWriterLock, WritersAreAloneReadersAreNot) {
  KXReadersWriterLock lock(__FILE__, __LINE__, __func__);
  long a = 0, b = 0;  // written together
  RunThreads(4, [&](int thread) {
    for (int i = 0; i < 3000; ++i) {
      if (thread == 0 || i % 50 == 0) {
        const KXWriteGuard guard(lock);
        ++a;
        ++b;
      } else {
        const KXReadGuard guard(lock);
        ASSERT_EQ(a, b);
      }
    }
  });
  EXPECT_EQ(a, 3000 + 3 * 60);

  // Two readers meet inside.
  std::atomic<int> inside{0};
  RunThreads(2, [&](int) {
    const KXReadGuard guard(lock);
    ++inside;
    while (inside != 2) std::this_thread::yield();
  });
}

TEST(KXLockDeathTest, MisuseNamesTheLock) {
  EXPECT_DEATH(KXCriticalSection("a.cpp", 12, "Fill").Release(),
               "logic error: lock of Fill \\(a.cpp:12\\) released while free");
  EXPECT_DEATH(KXCriticalSection("a.cpp", 12, "Fill").Acquire(), "destroyed while held");
  EXPECT_DEATH(
      {
        KXReadersWriterLock lock("b.cpp", 3, "Read");
        lock.AcquireRead();
        lock.Release(kKXLockWrite);
      },
      "lock of Read \\(b.cpp:3\\) released the wrong way");
}

}  // namespace
