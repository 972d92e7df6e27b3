#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "Host/KXAssert.h"
#include "Host/MemAlloc.h"
#include "Host/VoidID.h"

class ARpGateway;
class ARpObject;

/// The steps from a handle to the gateway behind it. A null gateway holds no objects: nothing is counted, nothing
/// found.
class RefHelper {
 public:
  static void AddRef(ARpGateway* pRp, const VoidID& id);
  static void ReleaseRef(ARpGateway* pRp, const VoidID& id);
  /// Lends the object, or null if the gateway has none of that identifier. Takes no reference.
  static ARpObject* GetObjectPointerFromGatway(ARpGateway* pRp, const VoidID& id);
};

/// Base of all handles on repository objects.
class VoidRef {
 public:
  virtual ~VoidRef() = default;
  virtual bool IsNullRef() const = 0;

 protected:
  VoidRef() = default;
  VoidRef(const VoidRef&) = default;
  VoidRef& operator=(const VoidRef&) = default;
};

/// What a handle lends: a pointer through which the object may be changed.
template <class T>
struct NonConstPointer {
  using Pointer = T*;
  using Reference = T&;
};

/// A handle on the repository object `m_ID` of the gateway `m_pRp`.
///
/// Every non-null handle holds one reference with its gateway, taken when it is made or copied and given back when it
/// is destroyed, re-aimed or nulled; the gateway must outlive it. A null handle has no gateway, no object and the null
/// identifier. Handles belong to the thread that owns the request.
template <class T, class PointerKind = NonConstPointer<T>>
class Ref final : public VoidRef {
 public:
  using Pointer = typename PointerKind::Pointer;
  using Reference = typename PointerKind::Reference;

  Ref() = default;

  /// Takes a reference on an object at hand. A null object gives a null handle.
  Ref(ARpGateway* pRp, Pointer pObj, const VoidID& id) {
    if (pObj) Aim(pRp, pObj, id);
  }

  /// Looks the object up. An object that is missing or not a T gives a null handle.
  Ref(ARpGateway* pRp, const VoidID& id) {
    if (auto* pObj = dynamic_cast<Pointer>(RefHelper::GetObjectPointerFromGatway(pRp, id))) Aim(pRp, pObj, id);
  }

  Ref(const Ref& rhs) : VoidRef() {
    if (rhs.m_pObj) Aim(rhs.m_pRp, rhs.m_pObj, rhs.m_ID);
  }
  Ref(Ref&& rhs) noexcept : VoidRef() { swap(rhs); }

  /// A handle on a derived class is a handle on its base.
  template <class U, class UPointerKind>
  requires(!std::is_same_v<T, U> && std::is_convertible_v<typename UPointerKind::Pointer, Pointer>)
      Ref(const Ref<U, UPointerKind>& rhs)
      : Ref(rhs.GetGateway(), rhs.Get(), rhs.GetID()) {}

  ~Ref() override { Null(); }

  Ref& operator=(const Ref& rhs) {
    Ref(rhs).swap(*this);
    return *this;
  }
  Ref& operator=(Ref&& rhs) noexcept {
    Ref(std::move(rhs)).swap(*this);
    return *this;
  }

  void swap(Ref& rhs) noexcept {
    std::swap(m_pRp, rhs.m_pRp);
    std::swap(m_pObj, rhs.m_pObj);
    std::swap(m_ID, rhs.m_ID);
  }

  /// Gives the reference back.
  void Null() {
    if (!m_pObj) return;
    m_pObj = nullptr;
    RefHelper::ReleaseRef(std::exchange(m_pRp, nullptr), std::exchange(m_ID, VoidID()));
  }

  bool IsNull() const { return m_pObj == nullptr; }
  bool IsNullRef() const override { return IsNull(); }
  explicit operator bool() const { return !IsNull(); }

  /// Reaching through a null handle is a logic error.
  Pointer operator->() const {
    CheckNotNull();
    return m_pObj;
  }
  Reference operator*() const {
    CheckNotNull();
    return *m_pObj;
  }
  /// Lends the object; null for a null handle.
  Pointer Get() const { return m_pObj; }
  ARpGateway* GetGateway() const { return m_pRp; }
  const VoidID& GetID() const { return m_ID; }

  /// Handles are equal if they reach the same object.
  friend bool operator==(const Ref& a, const Ref& b) { return a.m_pObj == b.m_pObj; }

 private:
  void Aim(ARpGateway* pRp, Pointer pObj, const VoidID& id) {
    RefHelper::AddRef(pRp, id);
    m_pRp = pRp;
    m_pObj = pObj;
    m_ID = id;
  }
  void CheckNotNull() const {
    if (!m_pObj) [[unlikely]]
      KX_LOGIC_ERROR(L"null repository handle");
  }

  ARpGateway* m_pRp = nullptr;
  Pointer m_pObj = nullptr;
  VoidID m_ID;
};

/// The same object as a T; null if it is not one.
template <class T, class U>
Ref<T> RefCast(const Ref<U>& ref) {
  return Ref<T>(ref.GetGateway(), dynamic_cast<T*>(ref.Get()), ref.GetID());
}

/// Base of objects that RefCnt pointers share. The count says how many of them there are; a copy of the object starts
/// with none.
class RefCountable : public memalloc::MemAllocNewdel {
 public:
  RefCountable() = default;
  RefCountable(const RefCountable&) : memalloc::MemAllocNewdel() {}
  RefCountable& operator=(const RefCountable&) { return *this; }
  virtual ~RefCountable() = default;

  void AddRef() const { m_refCount.fetch_add(1, std::memory_order_relaxed); }
  /// Deletes the object with its last reference.
  void Release() const {
    if (m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  std::uint32_t GetRefCount() const { return m_refCount.load(std::memory_order_relaxed); }

 private:
  mutable std::atomic<std::uint32_t> m_refCount{0};
};

/// A counted pointer on a T derived from Base, whose AddRef and Release it calls. The count may be shared between
/// threads, one pointer object may not.
template <class T, class Base = RefCountable>
class RefCnt {
 public:
  RefCnt() = default;
  RefCnt(std::nullptr_t) {}
  /// Takes a reference; a new object belongs to its pointers from here on.
  RefCnt(T* pObj) : m_pObj(pObj) { AddRef(); }
  RefCnt(const RefCnt& rhs) : m_pObj(rhs.m_pObj) { AddRef(); }
  RefCnt(RefCnt&& rhs) noexcept : m_pObj(std::exchange(rhs.m_pObj, nullptr)) {}
  template <class U>
  requires(!std::is_same_v<T, U> && std::is_convertible_v<U*, T*>) RefCnt(const RefCnt<U, Base>& rhs)
      : RefCnt(rhs.Get()) {}
  ~RefCnt() {
    if (m_pObj) static_cast<const Base*>(m_pObj)->Release();
  }

  RefCnt& operator=(const RefCnt& rhs) {
    RefCnt(rhs).swap(*this);
    return *this;
  }
  RefCnt& operator=(RefCnt&& rhs) noexcept {
    RefCnt(std::move(rhs)).swap(*this);
    return *this;
  }
  void swap(RefCnt& rhs) noexcept { std::swap(m_pObj, rhs.m_pObj); }

  void Null() { RefCnt().swap(*this); }
  bool IsNull() const { return m_pObj == nullptr; }
  explicit operator bool() const { return !IsNull(); }
  T* Get() const { return m_pObj; }

  T* operator->() const {
    checkDereference();
    return m_pObj;
  }
  T& operator*() const {
    checkDereference();
    return *m_pObj;
  }

  /// By address.
  friend auto operator<=>(const RefCnt& a, const RefCnt& b) { return std::compare_three_way()(a.m_pObj, b.m_pObj); }
  friend bool operator==(const RefCnt& a, const RefCnt& b) { return a.m_pObj == b.m_pObj; }

 private:
  void AddRef() const {
    if (m_pObj) static_cast<const Base*>(m_pObj)->AddRef();
  }
  void checkDereference() const { KX_ASSERT(m_pObj != nullptr); }

  T* m_pObj = nullptr;
};
