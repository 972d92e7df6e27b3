#pragma once

#include <atomic>
#include <cstddef>
#include <forward_list>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "Host/KXLock.h"
#include "Host/MemAlloc.h"
#include "Host/SystemUtility.h"

// Pools of objects that are made in volume and for a moment: an object is taken from a free list, given its value, held
// by a guard, and goes back to the list it came from when the guard ends.
//
// A set of pools spreads its callers round-robin over partitions, each with a lock of its own. So a thread seldom
// waits, and what one thread makes another may give back.

/// Partitions of a set unless it is told otherwise: the processors and some more, so that two threads seldom meet.
inline const std::size_t kDefaultNumPartitions = static_cast<std::size_t>(SystemUtility::GetNumberOfProcessors()) + 4;

/// What threads write stands this far apart from what others use.
inline constexpr std::size_t kPoolAlignment = 64;

/// A pool whose objects' type the holder of an object need not know.
class alignas(kPoolAlignment) BaseObjPool : public memalloc::MemAllocNewdel {
 public:
  BaseObjPool() : m_lock(__FILE__, __LINE__, "BaseObjPool") {}
  BaseObjPool(const BaseObjPool&) = delete;
  BaseObjPool& operator=(const BaseObjPool&) = delete;
  virtual ~BaseObjPool() = default;

  /// Takes back an object that this pool made. pObj is the address of the whole object. Any thread may call it.
  virtual void ReturnToPool(void* pObj) = 0;

  /// One object less is owed to this pool: its holder keeps it.
  void DecrementPoolSize() {
    KXCriticalSectionGuard lock(m_lock);
    --m_poolSize;
  }

  /// The objects made for this pool and still owed to it, free ones among them.
  std::size_t GetPoolSize() {
    KXCriticalSectionGuard lock(m_lock);
    return m_poolSize;
  }

  // Node memory is not aligned this far.
  static void* operator new(std::size_t size, std::align_val_t alignment) { return ::operator new(size, alignment); }
  static void operator delete(void* ptr, std::align_val_t alignment) noexcept { ::operator delete(ptr, alignment); }

 protected:
  KXCriticalSection m_lock;
  std::size_t m_poolSize = 0;
};

/// Owns an object that is owed to a pool, or one that is not. At its end the first goes back and the second is deleted.
template <class T>
class [[nodiscard]] ObjPoolGuard {
 public:
  ObjPoolGuard() = default;
  ObjPoolGuard(const ObjPoolGuard&) = delete;
  ObjPoolGuard& operator=(const ObjPoolGuard&) = delete;
  ~ObjPoolGuard() { Drop(); }

  /// Takes pObj; what was held before goes where it belongs. A null pool says that pObj is owed to none.
  void GiveOwnership(BaseObjPool* pPool, T* pObj) {
    Drop();
    m_pPool = pPool;
    m_pObj = pObj;
  }
  /// Hands the object to the caller, who deletes it like any other; its pool no longer counts on it.
  [[nodiscard]] T* ReleaseOwnership() {
    if (BaseObjPool* const pPool = std::exchange(m_pPool, nullptr)) pPool->DecrementPoolSize();
    return std::exchange(m_pObj, nullptr);
  }
  void swap(ObjPoolGuard& rhs) noexcept {
    std::swap(m_pPool, rhs.m_pPool);
    std::swap(m_pObj, rhs.m_pObj);
  }
  /// Gives back or deletes the object; the guard is empty then.
  void Reset() { GiveOwnership(nullptr, nullptr); }

  T* Get() const { return m_pObj; }
  T& operator*() const { return *m_pObj; }
  T* operator->() const { return m_pObj; }
  explicit operator bool() const { return m_pObj != nullptr; }
  /// Whether the object goes back to a pool.
  bool IsPooled() const { return m_pPool != nullptr; }

 private:
  void Drop() {
    if (!m_pObj) return;
    if (m_pPool) {
      m_pPool->ReturnToPool(dynamic_cast<void*>(m_pObj));
    } else {
      delete m_pObj;
    }
  }

  BaseObjPool* m_pPool = nullptr;
  T* m_pObj = nullptr;
};

/// Objects of exactly the class T. At most kMaxPoolSize are owed to the pool at a time; what is made beyond that is
/// made and deleted as usual.
///
/// A returned object keeps all it was given: identity, marks and flags of earlier use are still there when it is taken
/// again, and only its value is set anew. Users of a pooled object must not rely on anything else.
template <class T>
class TypedObjPool final : public BaseObjPool {
 public:
  static constexpr std::size_t kMaxPoolSize = 100;

  ~TypedObjPool() override {
    for (T* pObj : m_objPool) delete pObj;
  }

  /// Fills owner with an object of the value given: a free one by setValue(object, value...), else a new T(value...).
  /// What owner held goes where it belongs, and goes last, as the value may be a part of it. Raises what the
  /// constructor raises, with owner as it was and nothing counted.
  template <class Owner, class SetValue, class... Value>
  T* Make(ObjPoolGuard<Owner>& owner, SetValue setValue, const Value&... value) {
    if (!owner) [[likely]]
      return Fill(owner, setValue, value...);
    ObjPoolGuard<Owner> made;
    T* const pObj = Fill(made, setValue, value...);
    owner.swap(made);
    return pObj;
  }

  void ReturnToPool(void* pObj) override {
    KXCriticalSectionGuard lock(m_lock);
    m_spareEntries.front() = static_cast<T*>(pObj);
    m_objPool.splice_after(m_objPool.cbefore_begin(), m_spareEntries, m_spareEntries.cbefore_begin());
  }

 private:
  using List = std::forward_list<T*, KXNodeStdAlloc<T*>>;

  /// Requires: owner empty.
  template <class Owner, class SetValue, class... Value>
  T* Fill(ObjPoolGuard<Owner>& owner, SetValue setValue, const Value&... value) {
    T* pObj = nullptr;
    {
      KXCriticalSectionGuard lock(m_lock);
      if (m_objPool.empty()) [[unlikely]]
        return MakeNew(owner, value...);
      pObj = m_objPool.front();
      m_spareEntries.splice_after(m_spareEntries.cbefore_begin(), m_objPool, m_objPool.cbefore_begin());
    }
    owner.GiveOwnership(this, pObj);
    setValue(*pObj, value...);
    return pObj;
  }

  /// Requires: owner empty, m_lock held.
  template <class Owner, class... Value>
  [[gnu::noinline]] T* MakeNew(ObjPoolGuard<Owner>& owner, const Value&... value) {
    const bool bPooled = m_poolSize < kMaxPoolSize;
    if (bPooled && m_numEntries == m_poolSize) {
      m_spareEntries.emplace_front();
      ++m_numEntries;
    }
    T* const pObj = new T(value...);
    owner.GiveOwnership(bPooled ? this : nullptr, pObj);
    if (bPooled) ++m_poolSize;
    return pObj;
  }

  List m_objPool;                // free objects, the last one returned first
  List m_spareEntries;           // list entries without an object, so that taking and returning allocate nothing
  std::size_t m_numEntries = 0;  // in both lists: at least one for each object that is owed to the pool
};

/// A set of pools, one of which serves each call.
template <class Pool>
class alignas(kPoolAlignment) PartitionedPools {
 public:
  explicit PartitionedPools(std::size_t numPartitions = kDefaultNumPartitions) {
    m_pools.reserve(numPartitions);
    for (std::size_t i = 0; i < numPartitions; ++i) m_pools.push_back(std::make_unique<Pool>());
  }

  std::size_t size() const { return m_pools.size(); }
  Pool& operator[](std::size_t i) { return *m_pools[i]; }

  /// The pool whose turn it is. Two threads that ask at once may get the same one and a turn may be lost: they share a
  /// partition for one call, which its lock allows, and an exact count would cost every call a locked instruction.
  Pool& Next() {
    const std::size_t next = m_poolIndex.load(std::memory_order_relaxed) + 1;
    const std::size_t index = next < m_pools.size() ? next : 0;
    m_poolIndex.store(index, std::memory_order_relaxed);
    return *m_pools[index];
  }

 private:
  std::vector<std::unique_ptr<Pool>> m_pools;
  std::atomic<std::size_t> m_poolIndex{0};  // below size()
};
