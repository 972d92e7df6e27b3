#include "Host/MemAlloc.h"

#include <cstdlib>
#include <mutex>

#ifndef KX_SYSTEM_ALLOCATOR
#include <mimalloc.h>
#endif

namespace memalloc {

void* MemoryAllocatorGateway::tryAllocate(std::size_t size) noexcept {
#ifdef KX_SYSTEM_ALLOCATOR
  return std::malloc(size);
#else
  return mi_malloc(size);
#endif
}

void MemoryAllocatorGateway::RaiseBadAlloc() { throw std::bad_alloc(); }

void MemoryAllocatorGateway::readSizeAndDeallocate(void* ptr) noexcept {
#ifdef KX_SYSTEM_ALLOCATOR
  std::free(ptr);
#else
  mi_free(ptr);
#endif
}

}  // namespace memalloc

/// The shards of the living threads and what the ended ones have left. Never destroyed: static objects delete nodes
/// too.
struct MemoryDataCollector::Registry {
  std::mutex m_lock;
  Shard* m_pFirst = nullptr;
  std::int64_t m_countOfEndedThreads = 0;

  static Registry& Get() {
    static auto& registry = *new Registry();
    return registry;
  }
};

thread_local constinit MemoryDataCollector::Shard* MemoryDataCollector::t_pShard = nullptr;

namespace {

/// The thread is ending and has folded its shard already, but other thread_local objects may still delete nodes.
thread_local constinit bool t_bShardGone = false;

}  // namespace

MemoryDataCollector::Shard::Shard() {
  Registry& registry = Registry::Get();
  const std::lock_guard guard(registry.m_lock);
  m_pNext = registry.m_pFirst;
  if (m_pNext) m_pNext->m_pPrevious = this;
  registry.m_pFirst = this;
  t_pShard = this;
}

MemoryDataCollector::Shard::~Shard() {
  Registry& registry = Registry::Get();
  const std::lock_guard guard(registry.m_lock);
  registry.m_countOfEndedThreads += m_count.load(std::memory_order_relaxed);
  (m_pPrevious ? m_pPrevious->m_pNext : registry.m_pFirst) = m_pNext;
  if (m_pNext) m_pNext->m_pPrevious = m_pPrevious;
  t_pShard = nullptr;
  t_bShardGone = true;
}

void MemoryDataCollector::AddWithoutShard(std::int64_t difference) {
  if (t_bShardGone) {
    Registry& registry = Registry::Get();
    const std::lock_guard guard(registry.m_lock);
    registry.m_countOfEndedThreads += difference;
    return;
  }
  static thread_local Shard t_shard;
  t_shard.m_count.store(difference, std::memory_order_relaxed);
}

std::int64_t MemoryDataCollector::GetRqNodeCount() {
  Registry& registry = Registry::Get();
  const std::lock_guard guard(registry.m_lock);
  std::int64_t count = registry.m_countOfEndedThreads;
  for (const Shard* pShard = registry.m_pFirst; pShard; pShard = pShard->m_pNext) {
    count += pShard->m_count.load(std::memory_order_relaxed);
  }
  return count;
}
