#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

namespace memalloc {

/// Where nodes get their memory: mimalloc, or malloc if the host was built with KX_SYSTEM_ALLOCATOR. The allocator
/// knows the size of each block, so the release needs none. A block is aligned to std::max_align_t.
class MemoryAllocatorGateway {
 public:
  /// Never null. `file` and `line` name the allocation for a tracing allocator; neither of the two here keeps a trace.
  /// Raises std::bad_alloc.
  [[nodiscard, gnu::returns_nonnull]] static void* allocateAndRemeberSize(std::size_t size,
                                                                          [[maybe_unused]] const char* file,
                                                                          [[maybe_unused]] int line) {
    void* const ptr = tryAllocate(size);
    if (!ptr) [[unlikely]]
      RaiseBadAlloc();
    return ptr;
  }

  /// As above, with null in place of the exception.
  [[nodiscard, gnu::malloc]] static void* tryAllocate(std::size_t size) noexcept;

  /// Null does nothing.
  static void readSizeAndDeallocate(void* ptr) noexcept;

 private:
  [[noreturn, gnu::cold]] static void RaiseBadAlloc();
};

/// Base of every class whose objects live in node memory. It has no state and no virtual function: a derived class that
/// is deleted through a base brings the virtual destructor itself.
class MemAllocNewdel {
 public:
  static void* operator new(std::size_t size) {
    return MemoryAllocatorGateway::allocateAndRemeberSize(size, __FILE__, __LINE__);
  }
  static void* operator new[](std::size_t size) {
    return MemoryAllocatorGateway::allocateAndRemeberSize(size, __FILE__, __LINE__);
  }
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return MemoryAllocatorGateway::tryAllocate(size);
  }
  static void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return MemoryAllocatorGateway::tryAllocate(size);
  }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new[](std::size_t, void* place) noexcept { return place; }
  // Blocks are not aligned beyond std::max_align_t; an over-aligned class must not get one unnoticed.
  static void* operator new(std::size_t, std::align_val_t) = delete;
  static void* operator new[](std::size_t, std::align_val_t) = delete;

  static void operator delete(void* ptr) noexcept { MemoryAllocatorGateway::readSizeAndDeallocate(ptr); }
  static void operator delete[](void* ptr) noexcept { MemoryAllocatorGateway::readSizeAndDeallocate(ptr); }
  static void operator delete(void* ptr, const std::nothrow_t&) noexcept {
    MemoryAllocatorGateway::readSizeAndDeallocate(ptr);
  }
  static void operator delete[](void* ptr, const std::nothrow_t&) noexcept {
    MemoryAllocatorGateway::readSizeAndDeallocate(ptr);
  }
  static void operator delete(void*, void*) noexcept {}
  static void operator delete[](void*, void*) noexcept {}

 protected:
  MemAllocNewdel() = default;
  MemAllocNewdel(const MemAllocNewdel&) = default;
  MemAllocNewdel& operator=(const MemAllocNewdel&) = default;
  ~MemAllocNewdel() = default;
};

}  // namespace memalloc

/// The allocator behind the containers that nodes hold.
class KXNodeAlloc {
 public:
  /// Never null; `text` and `line` name the allocation as in MemoryAllocatorGateway. Raises std::bad_alloc.
  [[nodiscard]] static void* allocate(std::size_t size, const char* text, int line) {
    return memalloc::MemoryAllocatorGateway::allocateAndRemeberSize(size, text, line);
  }

  /// Takes back a block of `allocate`, of the size it was asked for. Null does nothing.
  static void deallocate(void* ptr, [[maybe_unused]] std::size_t size) noexcept {
    memalloc::MemoryAllocatorGateway::readSizeAndDeallocate(ptr);
  }
};

/// KXNodeAlloc for standard containers. Without state: all of them are equal.
template <class T>
class KXNodeStdAlloc {
 public:
  using value_type = T;

  static_assert(alignof(T) <= alignof(std::max_align_t));

  KXNodeStdAlloc() = default;
  template <class U>
  constexpr KXNodeStdAlloc(const KXNodeStdAlloc<U>&) noexcept {}

  [[nodiscard]] T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(KXNodeAlloc::allocate(count * sizeof(T), __FILE__, __LINE__));
  }
  void deallocate(T* ptr, std::size_t count) noexcept { KXNodeAlloc::deallocate(ptr, count * sizeof(T)); }

  friend constexpr bool operator==(const KXNodeStdAlloc&, const KXNodeStdAlloc&) noexcept { return true; }
};

/// A vector that may stand in a node.
template <class T>
using KXNodeVector = std::vector<T, KXNodeStdAlloc<T>>;

/// The count of live request nodes in the process.
///
/// Each thread counts in a shard of its own, so counting touches no shared cache line; a reader adds the shards up. A
/// node may be counted in by one thread and out by another: only the sum means something. A thread's shard is folded
/// into the total when the thread ends.
class MemoryDataCollector {
 public:
  static void IncrRqNodeCounter(unsigned count) { Add(static_cast<std::int64_t>(count)); }
  static void DecrRqNodeCounter(unsigned count) { Add(-static_cast<std::int64_t>(count)); }

  /// Exact while no other thread makes or deletes nodes, else a value of that moment. Cost: one step a thread.
  static std::int64_t GetRqNodeCount();

 private:
  struct Shard {
    std::atomic<std::int64_t> m_count{0};  // written by the owning thread alone
    Shard* m_pPrevious = nullptr;
    Shard* m_pNext = nullptr;

    Shard();
    ~Shard();
  };
  struct Registry;

  static void Add(std::int64_t difference) {
    if (Shard* pShard = t_pShard) [[likely]] {
      pShard->m_count.store(pShard->m_count.load(std::memory_order_relaxed) + difference, std::memory_order_relaxed);
    } else {
      AddWithoutShard(difference);
    }
  }
  static void AddWithoutShard(std::int64_t difference);

  /// Null before the thread's first use and again after its shard has gone.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit Shard* t_pShard;
};
