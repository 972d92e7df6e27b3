#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <utility>

/// The sole owner of an object: the destructor deletes it. Copying and assigning hand the object over and leave the
/// source null, from a const source too, so that a vector of Heap grows and is assigned without deleting anything; a
/// Heap taken from a container by value has emptied its slot there.
template <class T>
class Heap {
 public:
  constexpr Heap() noexcept = default;
  constexpr Heap(std::nullptr_t) noexcept {}
  explicit Heap(T* pDonated) noexcept : m_pObj(pDonated) {}
  Heap(const Heap& rhs) noexcept : m_pObj(rhs.Release()) {}
  Heap(Heap&& rhs) noexcept : m_pObj(rhs.Release()) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> Heap(Heap<U> rhs)
  noexcept : m_pObj(rhs.Release()) {}
  ~Heap() { delete m_pObj; }

  Heap& operator=(const Heap& rhs) noexcept { return *this = rhs.Release(); }
  Heap& operator=(Heap&& rhs) noexcept { return *this = rhs.Release(); }
  /// Deletes what is held and takes pDonated; the very pointer held is left alone.
  Heap& operator=(T* pDonated) noexcept {
    if (m_pObj != pDonated) delete std::exchange(m_pObj, pDonated);
    return *this;
  }

  /// Lends the object; null when empty.
  T* Get() const noexcept { return m_pObj; }
  /// Hands the object to the caller.
  T* Release() const noexcept { return std::exchange(m_pObj, nullptr); }

  T& operator*() const noexcept { return *m_pObj; }
  T* operator->() const noexcept { return m_pObj; }
  explicit operator bool() const noexcept { return m_pObj != nullptr; }

  /// Order and equality of the pointers held.
  friend bool operator==(const Heap& lhs, const Heap& rhs) noexcept { return lhs.m_pObj == rhs.m_pObj; }
  friend bool operator==(const Heap& lhs, const T* rhs) noexcept { return lhs.m_pObj == rhs; }
  friend std::strong_ordering operator<=>(const Heap& lhs, const Heap& rhs) noexcept {
    return std::compare_three_way{}(lhs.m_pObj, rhs.m_pObj);
  }

 private:
  mutable T* m_pObj = nullptr;
};

/// Deletes every element of a collection of raw pointers and leaves the collection empty.
template <class Collection>
void DeletePtrCollection(Collection& collection) {
  Collection doomed;
  doomed.swap(collection);
  for (auto* pElement : doomed) delete pElement;
  doomed.clear();  // a collection that owns its elements would delete them again
}

/// A vector of raw pointers that owns what they point at. It moves, and does not copy.
template <class Vector>
class OwnedRqPtrVector : public Vector {
 public:
  OwnedRqPtrVector() = default;
  OwnedRqPtrVector(OwnedRqPtrVector&& rhs) noexcept { this->swap(rhs); }
  OwnedRqPtrVector& operator=(OwnedRqPtrVector&& rhs) noexcept {
    if (this != &rhs) {
      DeletePtrCollection(static_cast<Vector&>(*this));
      this->swap(rhs);
    }
    return *this;
  }
  OwnedRqPtrVector(const OwnedRqPtrVector&) = delete;
  OwnedRqPtrVector& operator=(const OwnedRqPtrVector&) = delete;
  ~OwnedRqPtrVector() { DeletePtrCollection(static_cast<Vector&>(*this)); }
};

/// A set of raw pointers that owns its elements.
template <class Set>
class OwnedEquivRqPtrSet {
 public:
  using value_type = typename Set::value_type;
  using iterator = typename Set::iterator;
  using const_iterator = typename Set::const_iterator;

  OwnedEquivRqPtrSet() = default;
  OwnedEquivRqPtrSet(const OwnedEquivRqPtrSet&) = delete;
  OwnedEquivRqPtrSet& operator=(const OwnedEquivRqPtrSet&) = delete;
  ~OwnedEquivRqPtrSet() { clear(); }

  /// Takes pElement when no equivalent element stands; otherwise the answer's second is false and pElement stays the
  /// caller's.
  std::pair<iterator, bool> insert(value_type pElement) { return m_set.insert(pElement); }

  /// Removes and deletes the element.
  iterator erase(iterator it) {
    Heap doomed(*it);
    return m_set.erase(it);
  }
  void clear() { DeletePtrCollection(m_set); }

  /// Removes the element and hands it to the caller.
  value_type erase_no_delete(iterator it) {
    const value_type pElement = *it;
    m_set.erase(it);
    return pElement;
  }
  /// Forgets all elements without deleting them.
  void clear_no_delete() { m_set.clear(); }
  /// Hands every element that has no equivalent in other over to it, and deletes the rest.
  void move_to(OwnedEquivRqPtrSet& other) {
    if (this == &other) return;
    other.m_set.merge(m_set);
    clear();
  }

  iterator find(const value_type& pElement) const { return m_set.find(pElement); }
  iterator begin() const { return m_set.begin(); }
  iterator end() const { return m_set.end(); }
  std::size_t size() const { return m_set.size(); }
  bool empty() const { return m_set.empty(); }

 private:
  Set m_set;
};
