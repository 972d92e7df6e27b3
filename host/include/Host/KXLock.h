#pragma once

#include <pthread.h>

#include <atomic>

/// Mutual exclusion for short sections. Not recursive.
///
/// A thread that finds it taken spins for a moment, as the holder is likely to leave soon, and then sleeps until woken.
/// Waiters are not served in order. File, line and function name the lock in the report of a misuse: releasing one that
/// is free, or destroying one that is held, is a logic error. Cost without contention: one atomic operation each way.
class KXCriticalSection {
 public:
  KXCriticalSection(const char* file, int line, const char* function)
      : m_file(file), m_function(function), m_line(line) {}
  KXCriticalSection(const KXCriticalSection&) = delete;
  KXCriticalSection& operator=(const KXCriticalSection&) = delete;
  ~KXCriticalSection() {
    if (m_state.load(std::memory_order_relaxed) != kFree) [[unlikely]]
      ReportMisuse(L"destroyed while held");
  }

  void Acquire() {
    if (!TryAcquire()) [[unlikely]]
      AcquireContended();
  }
  bool TryAcquire() {
    int expected = kFree;
    return m_state.compare_exchange_strong(expected, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
  }
  void Release() {
    const int previous = m_state.exchange(kFree, std::memory_order_release);
    if (previous != kHeld) [[unlikely]]
      FinishRelease(previous);
  }

 private:
  enum : int {
    kFree,
    kHeld,
    kHeldWithSleepers  // someone may sleep on m_state, so the release must wake one
  };

  [[gnu::cold, gnu::noinline]] void AcquireContended();
  [[gnu::cold, gnu::noinline]] void FinishRelease(int previous);
  [[noreturn, gnu::cold]] void ReportMisuse(const wchar_t* what) const;

  std::atomic<int> m_state{kFree};
  const char* m_file;
  const char* m_function;
  int m_line;
};

/// How a KXReadersWriterLock is held.
enum KXLockMethod { kKXLockRead, kKXLockWrite };

/// Many readers or one writer. Not recursive, for readers either: a waiting writer goes before readers that come later.
class KXReadersWriterLock {
 public:
  /// File, line and function name the lock in the report of a misuse.
  KXReadersWriterLock(const char* file, int line, const char* function);
  KXReadersWriterLock(const KXReadersWriterLock&) = delete;
  KXReadersWriterLock& operator=(const KXReadersWriterLock&) = delete;
  ~KXReadersWriterLock();

  void AcquireRead();
  void AcquireWrite();
  /// `method` is how the calling thread acquired it.
  void Release(KXLockMethod method);

 private:
  void Check(int error, const wchar_t* operation) const;

  pthread_rwlock_t m_lock;
  std::atomic<bool> m_bWriting{false};
  const char* m_file;
  const char* m_function;
  int m_line;
};

/// Holds a critical section for a scope.
class [[nodiscard]] KXCriticalSectionGuard {
 public:
  explicit KXCriticalSectionGuard(KXCriticalSection& lock) : m_lock(lock) { m_lock.Acquire(); }
  KXCriticalSectionGuard(const KXCriticalSectionGuard&) = delete;
  KXCriticalSectionGuard& operator=(const KXCriticalSectionGuard&) = delete;
  ~KXCriticalSectionGuard() { m_lock.Release(); }

 private:
  KXCriticalSection& m_lock;
};

/// Holds a readers-writer lock for a scope, in one of its two ways.
template <KXLockMethod kMethod>
class [[nodiscard]] KXReadersWriterGuard {
 public:
  explicit KXReadersWriterGuard(KXReadersWriterLock& lock) : m_lock(lock) {
    if constexpr (kMethod == kKXLockRead) {
      m_lock.AcquireRead();
    } else {
      m_lock.AcquireWrite();
    }
  }
  KXReadersWriterGuard(const KXReadersWriterGuard&) = delete;
  KXReadersWriterGuard& operator=(const KXReadersWriterGuard&) = delete;
  ~KXReadersWriterGuard() { m_lock.Release(kMethod); }

 private:
  KXReadersWriterLock& m_lock;
};

using KXReadGuard = KXReadersWriterGuard<kKXLockRead>;
using KXWriteGuard = KXReadersWriterGuard<kKXLockWrite>;
