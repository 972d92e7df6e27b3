#include "Host/KXLock.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"

namespace {

/// Few: threads that fight for a lock without a pause slow each other down more than a nap does, after which the one
/// that stayed has had the lock and its caches to itself for a while.
constexpr int kSpins = 2;
constexpr std::chrono::microseconds kFirstNap(20);
constexpr std::chrono::microseconds kLongestNap(1000);

void Pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

[[noreturn]] void ReportLockMisuse(const wchar_t* what, const char* file, int line, const char* function) {
  KX_LOGIC_ERROR(L"lock of " + KXString::FromUTF8(function) + L" (" + KXString::FromUTF8(file) + L':' +
                 BaseStringUtil::StringFrom(line) + L") " + what);
}

}  // namespace

void KXCriticalSection::AcquireContended() {
  for (int i = 0; i < kSpins; ++i) {
    Pause();
    if (!m_bHeld.load(std::memory_order_relaxed) && TryAcquire()) return;
  }
  std::chrono::microseconds nap = kFirstNap;
  while (!TryAcquire()) {
    std::this_thread::sleep_for(nap);
    nap = std::min(2 * nap, kLongestNap);
  }
}

void KXCriticalSection::ReportMisuse(const wchar_t* what) const { ReportLockMisuse(what, m_file, m_line, m_function); }

KXReadersWriterLock::KXReadersWriterLock(const char* file, int line, const char* function)
    : m_file(file), m_function(function), m_line(line) {
  pthread_rwlockattr_t attributes;
  pthread_rwlockattr_init(&attributes);
  pthread_rwlockattr_setkind_np(&attributes, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
  Check(pthread_rwlock_init(&m_lock, &attributes), L"not initialised");
  pthread_rwlockattr_destroy(&attributes);
}

KXReadersWriterLock::~KXReadersWriterLock() { Check(pthread_rwlock_destroy(&m_lock), L"destroyed while held"); }

void KXReadersWriterLock::AcquireRead() { Check(pthread_rwlock_rdlock(&m_lock), L"not acquired for reading"); }

void KXReadersWriterLock::AcquireWrite() {
  Check(pthread_rwlock_wrlock(&m_lock), L"not acquired for writing");
  m_bWriting.store(true, std::memory_order_relaxed);
}

void KXReadersWriterLock::Release(KXLockMethod method) {
  const bool bWriting = m_bWriting.load(std::memory_order_relaxed);
  if (bWriting != (method == kKXLockWrite)) ReportLockMisuse(L"released the wrong way", m_file, m_line, m_function);
  m_bWriting.store(false, std::memory_order_relaxed);
  Check(pthread_rwlock_unlock(&m_lock), L"not released");
}

void KXReadersWriterLock::Check(int error, const wchar_t* operation) const {
  if (error != 0) ReportLockMisuse(operation, m_file, m_line, m_function);
}
