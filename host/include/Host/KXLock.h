#pragma once

#include <pthread.h>

#include <atomic>

/// Mutual exclusion for short sections. Not recursive.
///
/// A thread that finds it taken spins for a moment, as the holder is likely to leave soon, and then looks again after
/// naps that grow to a millisecond. So nobody has to be woken and a release is a plain store: uncontended, the lock
/// costs one locked instruction, where one that wakes its waiters costs two. The price is paid by a waiter that naps
/// past the release, which is why the sections must be short. Waiters are not served in order. File, line and function
/// name the lock in the report of a misuse: releasing one that is free, or destroying one that is held, is a logic
/// error.
class KXCriticalSection {
 public:
  KXCriticalSection(const char* file, int line, const char* function)
      : m_file(file), m_function(function), m_line(line) {}
  KXCriticalSection(const KXCriticalSection&) = delete;
  KXCriticalSection& operator=(const KXCriticalSection&) = delete;
  ~KXCriticalSection() {
    if (m_bHeld.load(std::memory_order_relaxed)) [[unlikely]]
      ReportMisuse(L"destroyed while held");
  }

  void Acquire() {
    if (!TryAcquire()) [[unlikely]]
      AcquireContended();
  }
  bool TryAcquire() { return !m_bHeld.exchange(true, std::memory_order_acquire); }
  void Release() {
    if (!m_bHeld.load(std::memory_order_relaxed)) [[unlikely]]
      ReportMisuse(L"released while free");
    m_bHeld.store(false, std::memory_order_release);
  }

 private:
  [[gnu::cold, gnu::noinline]] void AcquireContended();
  [[noreturn, gnu::cold]] void ReportMisuse(const wchar_t* what) const;

  std::atomic<bool> m_bHeld{false};
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
