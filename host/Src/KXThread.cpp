#include "Host/KXThread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "Host/ErrorMessage.h"

thread_local constinit std::uintptr_t KXThread::t_stackLimit = KXThread::kStackUnknown;
thread_local constinit const std::atomic<bool>* KXThreadJobMgr::t_pCancelled = nullptr;

namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

/// What an unlimited stack counts as: a recursion that needs more is taken for an endless one.
constexpr std::size_t kMaxStackSize = 1024 * kMebibyte;

/// Room that the kernel keeps between a growing stack and the mapping below it.
constexpr std::size_t kStackGuardGap = kMebibyte;

/// The addresses that a thread's frames may take.
struct StackRange {
  std::uintptr_t m_low = 0;
  std::uintptr_t m_high = 0;

  bool Contains(std::uintptr_t address) const { return address >= m_low && address < m_high; }
  std::uintptr_t Limit() const {
    return m_low + std::clamp((m_high - m_low) / 4, KXThread::kMinStackReserve, KXThread::kMaxStackReserve);
  }
};

thread_local constinit StackRange t_stackRange;

bool IsMainThread() { return getpid() == gettid(); }

std::size_t GetStackResourceLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return SIZE_MAX;
  return limit.rlim_cur;
}

/// How far the main thread's stack can really grow, of what the resource limit and the mapping below leave it.
std::size_t GetMainStackSize(std::size_t size) {
  const bool bEndsAtMapping = size < GetStackResourceLimit() && size > 4 * kStackGuardGap;
  return std::min(bEndsAtMapping ? size - kStackGuardGap : size, kMaxStackSize);
}

StackRange FindStackRange(std::uintptr_t frame) {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
    // Without /proc the main thread's stack is not known; half of what it may have is taken to be left.
    return {frame - std::min(GetStackResourceLimit(), 8 * kMebibyte) / 2, frame + 1};
  }
  void* pLow = nullptr;
  std::size_t size = 0;
  pthread_attr_getstack(&attributes, &pLow, &size);
  pthread_attr_destroy(&attributes);
  const std::uintptr_t high = reinterpret_cast<std::uintptr_t>(pLow) + size;
  return {high - (IsMainThread() ? GetMainStackSize(size) : size), high};
}

}  // namespace

void KXThread::CheckStack(std::uintptr_t frame, int moreBytes) {
  // The main thread's resource limit may have changed since; other stacks keep their size.
  if (t_stackLimit == kStackUnknown || IsMainThread()) {
    const std::uintptr_t knownLow = t_stackLimit == kStackUnknown ? UINTPTR_MAX : t_stackRange.m_low;
    t_stackRange = FindStackRange(frame);
    t_stackLimit = t_stackRange.Limit();
    // A limit that was lowered does not take away what is in use already.
    t_stackRange.m_low = std::min(t_stackRange.m_low, knownLow);
  }
  const bool bIsLow = frame - static_cast<std::uintptr_t>(moreBytes) < t_stackLimit;
  if (bIsLow && t_stackRange.Contains(frame)) KX_RAISE(kMsgStackLow);
}

void KXThreadJobMgr::RaiseCancellation() { KX_RAISE(kMsgJobCancelled); }
