#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

/// Services of the running thread.
class KXThread {
 public:
  /// What LowStackCheck keeps free of a stack, for raising the error and for calls between two checks: a quarter of it,
  /// but at least what raising takes and at most what calls may need.
  static constexpr std::size_t kMinStackReserve = 8 * 1024;
  static constexpr std::size_t kMaxStackReserve = 128 * 1024;

  /// Raises ErrorMessage kMsgStackLow when the running thread's stack has less left than the reserve and `moreBytes`.
  /// To be called at each level of a recursion, which so ends in an error instead of a crash.
  ///
  /// It knows the stack of any thread by itself, whoever made it: the main thread's grows to its resource limit, looked
  /// up again before an error is raised on it, so that a limit that was lowered is noticed late; an unlimited one
  /// counts as 1 GiB. On a stack that is not the thread's own (a signal stack, a fiber) it cannot tell and raises
  /// nothing. Cost: a load and a compare, apart from the first call on a thread.
  static void LowStackCheck(int moreBytes) {
    const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (frame - static_cast<std::uintptr_t>(moreBytes) < t_stackLimit) [[unlikely]]
      CheckStack(frame, moreBytes);
  }

 private:
  static constexpr std::uintptr_t kStackUnknown = UINTPTR_MAX;

  [[gnu::cold, gnu::noinline]] static void CheckStack(std::uintptr_t frame, int moreBytes);

  /// The lowest address a frame may have without a closer look.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit std::uintptr_t t_stackLimit;
};

/// Stands for one job and says whether it is cancelled. Copies stand for the same job; any thread may hold and use one.
class KXJobToken {
 public:
  KXJobToken() : m_pCancelled(std::make_shared<std::atomic<bool>>(false)) {}

  /// Asks the job to end. It stays asked: each cancellation point of the job raises from now on.
  void Cancel() const { m_pCancelled->store(true, std::memory_order_release); }
  bool IsCancelled() const { return m_pCancelled->load(std::memory_order_acquire); }

 private:
  friend class KXJobScope;

  std::shared_ptr<std::atomic<bool>> m_pCancelled;
};

/// The cancellation points of jobs.
class KXThreadJobMgr {
 public:
  /// Raises ErrorMessage kMsgJobCancelled if the job that the running thread works for is cancelled. Cost: one load
  /// without a job, two with one.
  static void ServiceJobCancellation() {
    if (t_pCancelled != nullptr && t_pCancelled->load(std::memory_order_acquire)) [[unlikely]]
      RaiseCancellation();
  }

 private:
  friend class KXJobScope;

  [[noreturn, gnu::cold]] static void RaiseCancellation();

  /// Null while the thread works for no job.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit const std::atomic<bool>* t_pCancelled;
};

/// Lets the running thread work for a job until the scope ends. Scopes nest; only the innermost job is looked at.
class [[nodiscard]] KXJobScope {
 public:
  explicit KXJobScope(KXJobToken token) : m_token(std::move(token)), m_pOuter(KXThreadJobMgr::t_pCancelled) {
    KXThreadJobMgr::t_pCancelled = m_token.m_pCancelled.get();
  }
  KXJobScope(const KXJobScope&) = delete;
  KXJobScope& operator=(const KXJobScope&) = delete;
  ~KXJobScope() { KXThreadJobMgr::t_pCancelled = m_pOuter; }

 private:
  KXJobToken m_token;
  const std::atomic<bool>* m_pOuter;
};
