#pragma once

#include <atomic>

#include "Host/KXLock.h"
#include "Host/KXString.h"

/// The configuration of the server. Any thread may read and change it at any time; a change is seen by the next read.
class SUSystemConfig {
 public:
  static SUSystemConfig& GetSystemConfig();

  /// Whether dumps and logs carry what only a developer wants. Default no.
  bool IsExecutionDebugEnabled() const { return Get(m_bExecutionDebug); }
  void SetExecutionDebugEnabled(bool bValue) { Set(m_bExecutionDebug, bValue); }

  /// Whether comparisons of text tell upper from lower case. Default yes.
  bool IsCaseSensitive() const { return Get(m_bCaseSensitive); }
  void SetCaseSensitive(bool bValue) { Set(m_bCaseSensitive, bValue); }

  /// Whether null sorts before all values. Default yes.
  bool IsNullsSortFirst() const { return Get(m_bNullsSortFirst); }
  void SetNullsSortFirst(bool bValue) { Set(m_bNullsSortFirst, bValue); }

  /// The locale that text is sorted by. Default "binary": by code point.
  KXString GetSortOrderLocale() const;
  void SetSortOrderLocale(const KXString& locale);

  /// Most plans that a plan cache keeps; zero or less switches it off. Default 1024.
  int GetPlanCacheEntryLimit() const { return Get(m_planCacheEntryLimit); }
  void SetPlanCacheEntryLimit(int limit) { Set(m_planCacheEntryLimit, limit); }

  /// Whether results are cached at all. Default yes.
  bool IsCacheEnabled() const { return Get(m_bCacheEnabled); }
  void SetCacheEnabled(bool bValue) { Set(m_bCacheEnabled, bValue); }

  /// Whether a query may be answered from the cached result of a different one. Default yes.
  bool IsAdvancedCacheDetectionEnabled() const { return Get(m_bAdvancedCacheDetection); }
  void SetAdvancedCacheDetectionEnabled(bool bValue) { Set(m_bAdvancedCacheDetection, bValue); }

  /// Whether results of parts of a query are kept out of the cache. Default no.
  bool IsSubrequestCacheDisabled() const { return Get(m_bSubrequestCacheDisabled); }
  void SetSubrequestCacheDisabled(bool bValue) { Set(m_bSubrequestCacheDisabled, bValue); }

 private:
  SUSystemConfig();

  // Each setting stands for itself: no reader concludes from one to another, so no order between them is needed.
  template <class T>
  static T Get(const std::atomic<T>& setting) {
    return setting.load(std::memory_order_relaxed);
  }
  template <class T>
  static void Set(std::atomic<T>& setting, T value) {
    setting.store(value, std::memory_order_relaxed);
  }

  std::atomic<bool> m_bExecutionDebug{false};
  std::atomic<bool> m_bCaseSensitive{true};
  std::atomic<bool> m_bNullsSortFirst{true};
  std::atomic<bool> m_bCacheEnabled{true};
  std::atomic<bool> m_bAdvancedCacheDetection{true};
  std::atomic<bool> m_bSubrequestCacheDisabled{false};
  std::atomic<int> m_planCacheEntryLimit{1024};
  mutable KXCriticalSection m_localeLock;
  KXString m_sortOrderLocale;
};
