#pragma once

#include <cstdint>

/// The truth values that a condition may have: one where all is given that it depends on, several where some of that is
/// open. SQL has three of them.
class TruthSet {
 public:
  static constexpr TruthSet False() { return TruthSet(kFalse); }
  static constexpr TruthSet Unknown() { return TruthSet(kUnknown); }
  static constexpr TruthSet True() { return TruthSet(kTrue); }
  static constexpr TruthSet Any() { return TruthSet(kFalse | kUnknown | kTrue); }
  static constexpr TruthSet Of(bool bValue) { return bValue ? True() : False(); }

  constexpr bool MayBeTrue() const { return (m_bits & kTrue) != 0; }
  constexpr bool MayBeOtherThanTrue() const { return (m_bits & (kFalse | kUnknown)) != 0; }
  constexpr bool IsTrue() const { return m_bits == kTrue; }
  constexpr bool IsFalse() const { return m_bits == kFalse; }

  // Of conditions that vary independently of each other; of others the result may hold too much.
  friend constexpr TruthSet operator!(TruthSet a) {
    return TruthSet((a.m_bits & kTrue ? kFalse : 0) | (a.m_bits & kUnknown) | (a.m_bits & kFalse ? kTrue : 0));
  }
  friend constexpr TruthSet operator&(TruthSet a, TruthSet b) {
    const int falses = (a.m_bits | b.m_bits) & kFalse;
    const int trues = a.m_bits & b.m_bits & kTrue;
    // Unknown with something that is not false.
    const bool bUnknown =
        ((a.m_bits & kUnknown) && (b.m_bits & ~kFalse)) || ((b.m_bits & kUnknown) && (a.m_bits & ~kFalse));
    return TruthSet(falses | trues | (bUnknown ? kUnknown : 0));
  }
  friend constexpr TruthSet operator|(TruthSet a, TruthSet b) { return !((!a) & (!b)); }
  friend constexpr bool operator==(TruthSet, TruthSet) = default;

 private:
  enum : int { kFalse = 1, kUnknown = 2, kTrue = 4 };

  explicit constexpr TruthSet(int bits) : m_bits(static_cast<std::uint8_t>(bits)) {}

  std::uint8_t m_bits;
};
