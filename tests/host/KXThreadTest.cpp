#include "Host/KXThread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <ucontext.h>

#include <functional>
#include <thread>
#include <vector>

#include "Host/ErrorMessage.h"
#include "Host/ServerLog.h"

namespace {

/// Runs the work on a stack of exactly that size, with a page below it that no one may touch. (A thread that merely
/// asks for a size may be given an old, larger stack.)
void RunOnStack(std::size_t size, std::function<void()> work) {
  constexpr std::size_t kPage = 4096;
  void* const pBlock = mmap(nullptr, kPage + size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(pBlock, MAP_FAILED);
  ASSERT_EQ(mprotect(pBlock, kPage, PROT_NONE), 0);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstack(&attributes, static_cast<char*>(pBlock) + kPage, size), 0);
  const auto run = [](void* pWork) -> void* {
    (*static_cast<std::function<void()>*>(pWork))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_attr_destroy(&attributes);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  munmap(pBlock, kPage + size);
}

/// A recursion that only the check ends before it has used a gigabyte. Counts its levels and the destructors that ran
/// on the way back.
struct Recursion {
  std::size_t m_depth = 0;
  std::size_t m_unwound = 0;

  __attribute__((noinline)) int Descend(int moreBytes) {
    struct Level {
      Recursion& m_recursion;
      ~Level() { ++m_recursion.m_unwound; }
    } level{*this};
    volatile char frame[200] = {};
    KXThread::LowStackCheck(moreBytes);
    if (++m_depth == 5'000'000) return 0;
    return Descend(moreBytes) + frame[m_depth % sizeof(frame)];
  }

  /// The code that ended it.
  unsigned long Run(int moreBytes = 0) {
    try {
      Descend(moreBytes);
    } catch (const ErrorMessage& message) {
      return message.GetCode();
    }
    return 0;
  }
};

#ifdef __SANITIZE_THREAD__  // whose own thread data must fit
constexpr std::size_t kStacks[] = {std::size_t{16} << 20};
#else
constexpr std::size_t kStacks[] = {std::size_t{64} << 10, std::size_t{16} << 20};
#endif

class LowStackCheck : public testing::TestWithParam<std::size_t> {};

TEST_P(LowStackCheck, EndsARecursionBeforeTheStackDoes) {
  Recursion first, second, careful;
  // A sink makes raising the error as dear as it gets.
  auto previous = ServerLog::SetSink([](bool, const KXString&) {});
  RunOnStack(GetParam(), [&] {
    EXPECT_EQ(first.Run(), kMsgStackLow);
    EXPECT_EQ(second.Run(), kMsgStackLow);
    EXPECT_EQ(careful.Run(static_cast<int>(GetParam() / 2)), kMsgStackLow);
  });
  ServerLog::SetSink(std::move(previous));
  EXPECT_EQ(first.m_unwound, first.m_depth + 1);
  EXPECT_EQ(second.m_depth, first.m_depth);
  // The greater part of the stack was there for use: each level took less than 1000 bytes.
  EXPECT_GT(first.m_depth, GetParam() / 2 / 1000);
  if (GetParam() < std::size_t{1} << 20) return;
  EXPECT_LT(careful.m_depth, first.m_depth * 6 / 10) << "as many more bytes as it asked for stay free";
  EXPECT_GT(careful.m_depth, first.m_depth * 3 / 10);
}

INSTANTIATE_TEST_SUITE_P(Stacks, LowStackCheck, testing::ValuesIn(kStacks));

TEST(LowStackCheckTest, FollowsTheMainThreadsLimit) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_STACK, &limit), 0);
  if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur > (std::size_t{64} << 20)) GTEST_SKIP() << "large stack";
  Recursion before;
  ASSERT_EQ(before.Run(), kMsgStackLow);
  const rlim_t raised = limit.rlim_cur * 2;
  if (limit.rlim_max != RLIM_INFINITY && limit.rlim_max < raised) GTEST_SKIP() << "limit cannot be raised";
  const rlimit wider{raised, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_STACK, &wider), 0);
  Recursion after;
  EXPECT_EQ(after.Run(), kMsgStackLow);
  EXPECT_GT(after.m_depth, before.m_depth * 3 / 2);
  // Lowered again, the limit takes nothing away: the pages stay mapped. The end of them is still found.
  ASSERT_EQ(setrlimit(RLIMIT_STACK, &limit), 0);
  Recursion lowered;
  EXPECT_EQ(lowered.Run(), kMsgStackLow);
}

// Seen from the thread, a fiber's frame on the heap lies far below the end of the stack.
TEST(LowStackCheckTest, RaisesNothingOnAStackThatIsNotTheThreadsOwn) {
  static bool s_bRan, s_bRaised;
  s_bRan = s_bRaised = false;
  std::vector<char> stack(std::size_t{256} << 10);
  ucontext_t here{}, fiber{};
  ASSERT_EQ(getcontext(&fiber), 0);
  fiber.uc_stack.ss_sp = stack.data();
  fiber.uc_stack.ss_size = stack.size();
  fiber.uc_link = &here;
  makecontext(
      &fiber,
      [] {
        try {
          KXThread::LowStackCheck(0);
        } catch (const ErrorMessage&) {
          s_bRaised = true;
        }
        s_bRan = true;
      },
      0);
  ASSERT_EQ(swapcontext(&here, &fiber), 0);
  EXPECT_TRUE(s_bRan);
  EXPECT_FALSE(s_bRaised);
}

bool IsCancelledHere() {
  try {
    KXThreadJobMgr::ServiceJobCancellation();
  } catch (const ErrorMessage& message) {
    EXPECT_EQ(message.GetCode(), kMsgJobCancelled);
    return true;
  }
  return false;
}

TEST(KXThreadJobMgr, OnlyTheCurrentJobIsCancelled) {
  const KXJobToken outer;
  const KXJobToken inner;
  {
    const KXJobScope outerScope(outer);
    outer.Cancel();
    EXPECT_TRUE(IsCancelledHere());
    {
      const KXJobScope innerScope(inner);
      EXPECT_FALSE(IsCancelledHere());
    }
    EXPECT_TRUE(IsCancelledHere());
  }
  EXPECT_FALSE(IsCancelledHere());
}

TEST(KXThreadJobMgr, AnotherThreadCancels) {
  const KXJobToken job;
  int prepared = 0;
  std::thread worker([&prepared, job] {
    const KXJobScope scope(job);
    while (!IsCancelledHere()) std::this_thread::yield();
    // What the canceller wrote before it cancelled is seen.
    EXPECT_EQ(prepared, 1);
  });
  prepared = 1;
  job.Cancel();
  worker.join();
}

}  // namespace
