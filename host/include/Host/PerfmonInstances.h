#pragma once

#include <atomic>
#include <cstdint>

#include "Host/KXString.h"
#include "Host/Ref.h"

/// What the performance monitor shows of one cache. Whoever keeps the cache counts, on any thread; the monitor reads at
/// any time, each counter for itself.
class GenericCacheInstance : public RefCountable {
 public:
  void IncGenericCacheRequestCount() { Add(m_requests, 1); }
  void IncGenericCacheHitCount() { Add(m_hits, 1); }
  void IncGenericCacheMissCount() { Add(m_misses, 1); }
  /// One entry more, which is in use from now on.
  void IncGenericCacheAddCount() {
    Add(m_adds, 1);
    Add(m_utilization, 1);
  }
  /// Changes how many entries are in use.
  void UpdateGenericCacheUtilizationCnt(int change) { Add(m_utilization, change); }
  /// So many entries were purged. How many are in use is left as it is: that has an operation of its own.
  void UpdateGenericCachePurgeCount(std::uint32_t count) { Add(m_purges, count); }
  /// Sets how many entries there is room for.
  void UpdateGenericCacheCapacity(std::int64_t entries) { m_capacity.store(entries, std::memory_order_relaxed); }
  /// All to zero but the capacity, which the cache keeps when it is emptied.
  void ResetCounters() {
    for (Counter* const pCounter : {&m_requests, &m_hits, &m_misses, &m_adds, &m_utilization, &m_purges}) {
      pCounter->store(0, std::memory_order_relaxed);
    }
  }

  std::int64_t GetRequestCount() const { return m_requests.load(std::memory_order_relaxed); }
  std::int64_t GetHitCount() const { return m_hits.load(std::memory_order_relaxed); }
  std::int64_t GetMissCount() const { return m_misses.load(std::memory_order_relaxed); }
  std::int64_t GetAddCount() const { return m_adds.load(std::memory_order_relaxed); }
  std::int64_t GetUtilization() const { return m_utilization.load(std::memory_order_relaxed); }
  std::int64_t GetPurgeCount() const { return m_purges.load(std::memory_order_relaxed); }
  std::int64_t GetCapacity() const { return m_capacity.load(std::memory_order_relaxed); }

 private:
  using Counter = std::atomic<std::int64_t>;
  static void Add(Counter& counter, std::int64_t change) { counter.fetch_add(change, std::memory_order_relaxed); }

  Counter m_requests{0};
  Counter m_hits{0};
  Counter m_misses{0};
  Counter m_adds{0};
  Counter m_utilization{0};
  Counter m_purges{0};
  Counter m_capacity{0};
};

/// Makes the records of the performance monitor.
class APerfmonInstancesMgr {
 public:
  virtual ~APerfmonInstancesMgr() = default;

  /// Lends the one of the process; null until one is set. Any thread may call these two.
  static APerfmonInstancesMgr* Get();
  /// From now on Get gives this one, which stays the caller's; null takes it off again.
  static void Set(APerfmonInstancesMgr* pManager);

  enum InstanceKind { kGenericCache = 1 };
  /// A new record, shown under the name as long as somebody else counts on it. Any thread.
  virtual RefCnt<GenericCacheInstance> CreateInstance(InstanceKind kind, const KXString& name) = 0;

 protected:
  APerfmonInstancesMgr() = default;
  APerfmonInstancesMgr(const APerfmonInstancesMgr&) = default;
  APerfmonInstancesMgr& operator=(const APerfmonInstancesMgr&) = default;
};
