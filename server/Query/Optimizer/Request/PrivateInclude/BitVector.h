#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "Host/MemAlloc.h"

/// A growable vector of bools, packed into words. Up to 128 bits lie in the object itself.
///
/// Operations on two vectors expect one length. Where the right one is shorter they leave the rest of the left one
/// alone; where it is longer they do not look at the rest of it.
/// Invariant: all bits beyond the length, up to the end of the last word there is room for, are clear.
class BitVector {
 public:
  BitVector() noexcept = default;
  explicit BitVector(std::size_t size, bool bValue = false) { resize(size, bValue); }
  BitVector(const BitVector& rhs) { *this = rhs; }
  BitVector(BitVector&& rhs) noexcept { Swap(rhs); }
  ~BitVector() { Free(); }

  BitVector& operator=(const BitVector& rhs) {
    if (IsInline() && rhs.IsInline()) {
      std::copy_n(rhs.m_inline, kInlineWords, m_inline);
    } else {
      CopyWords(rhs);
    }
    m_size = rhs.m_size;
    return *this;
  }
  BitVector& operator=(BitVector&& rhs) noexcept {
    Swap(rhs);
    return *this;
  }

  std::size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }
  /// Bits behind the old end get the value; bits behind the new end are lost.
  void resize(std::size_t size, bool bValue = false) {
    if (size < m_size) ClearFrom(size);
    Reserve(WordsFor(size));
    if (bValue) SetFrom(size);
    m_size = static_cast<std::uint32_t>(size);
  }
  void push_back(bool bValue) { resize(m_size + 1, bValue); }

  bool operator[](std::size_t i) const { return (Words()[i / kBitsPerWord] >> (i % kBitsPerWord) & 1U) != 0; }
  void set(std::size_t i) { Words()[i / kBitsPerWord] |= BitMask(i); }
  void reset(std::size_t i) { Words()[i / kBitsPerWord] &= ~BitMask(i); }
  /// Clears all bits and keeps the length.
  void reset() {
    if (IsInline()) {
      std::fill_n(m_inline, kInlineWords, Word{0});
    } else {
      std::fill_n(m_pWords, NumWords(), Word{0});
    }
  }

  BitVector& operator|=(const BitVector& rhs) {
    return Combine(rhs, [](Word left, Word right) { return left | right; });
  }
  BitVector& operator&=(const BitVector& rhs) {
    return Combine(rhs, [](Word left, Word right) { return left & right; });
  }
  BitVector& operator^=(const BitVector& rhs) {
    return Combine(rhs, [](Word left, Word right) { return left ^ right; });
  }
  /// Equal lengths and equal bits.
  friend bool operator==(const BitVector& lhs, const BitVector& rhs) {
    return lhs.m_size == rhs.m_size && std::equal(lhs.Words(), lhs.Words() + lhs.NumWords(), rhs.Words());
  }

  bool any() const {
    return AnyWord(*this, [](Word word, Word) { return word; });
  }
  bool none() const { return !any(); }
  /// The number of set bits.
  std::size_t count() const {
    const Word* const pWords = Words();
    const std::size_t numWords = NumWords();
    std::size_t bits = 0;
    for (std::size_t i = 0; i < numWords; ++i) bits += static_cast<std::size_t>(std::popcount(pWords[i]));
    return bits;
  }

  /// Whether some bit is set in both. Requires: one length.
  bool Intersects(const BitVector& rhs) const {
    return AnyWord(rhs, [](Word left, Word right) { return left & right; });
  }
  /// The order by inclusion: less if this is a proper subset of rhs. Requires: one length.
  std::partial_ordering CompareAsSets(const BitVector& rhs) const;
  /// Calls function(position) for each set bit, in ascending order.
  template <class Function>
  void ForEachSetBit(Function function) const {
    for (std::size_t i = 0; i < NumWords(); ++i) {
      for (Word word = Words()[i]; word != 0; word &= word - 1) {
        function(i * kBitsPerWord + static_cast<std::size_t>(std::countr_zero(word)));
      }
    }
  }

 private:
  using Word = std::uint32_t;
  static constexpr std::size_t kBitsPerWord = 32;
  static constexpr std::uint32_t kInlineWords = 4;

  static std::size_t WordsFor(std::size_t size) { return (size + kBitsPerWord - 1) / kBitsPerWord; }
  static Word BitMask(std::size_t i) { return Word{1} << (i % kBitsPerWord); }
  /// The positions below size in the word that holds position size.
  static Word TailMask(std::size_t size) { return BitMask(size) - 1; }

  std::size_t NumWords() const { return WordsFor(m_size); }
  bool IsInline() const { return m_capacity == kInlineWords; }
  Word* Words() { return IsInline() ? m_inline : m_pWords; }
  const Word* Words() const { return IsInline() ? m_inline : m_pWords; }
  /// All that lies in the object, whatever the length: two long words cost less than a loop over short ones.
  using TwoWords = std::array<std::uint64_t, 2>;
  TwoWords InlineWords() const {
    TwoWords words;
    static_assert(sizeof words == sizeof m_inline);
    std::memcpy(words.data(), m_inline, sizeof words);
    return words;
  }

  void CopyWords(const BitVector& rhs);
  void ClearFrom(std::size_t size);
  void SetFrom(std::size_t size);
  /// Room for that many words; those that stand are kept.
  void Reserve(std::size_t words) {
    if (words > m_capacity) Grow(words);
  }
  void Grow(std::size_t words);
  void Free() {
    if (!IsInline()) KXNodeAlloc::deallocate(m_pWords, m_capacity * sizeof(Word));
  }
  void Swap(BitVector& rhs) noexcept {
    std::swap(m_size, rhs.m_size);
    std::swap(m_capacity, rhs.m_capacity);
    std::swap(m_inline, rhs.m_inline);
  }

  /// Whether function(left, right) is not zero for some word.
  template <class Function>
  bool AnyWord(const BitVector& rhs, Function function) const {
    const Word* const pLeft = Words();
    const Word* const pRight = rhs.Words();
    const std::size_t numWords = NumWords();
    for (std::size_t i = 0; i < numWords; ++i) {
      if (function(pLeft[i], pRight[i]) != 0) return true;
    }
    return false;
  }
  /// left = function(left, right) on the positions that both have. Requires: function(0, 0) is 0.
  template <class Function>
  BitVector& Combine(const BitVector& rhs, Function function);

  std::uint32_t m_size = 0;
  std::uint32_t m_capacity = kInlineWords;
  union {
    Word m_inline[kInlineWords] = {};
    Word* m_pWords;
  };
};

/// Takes the words of rhs. The length is left to the caller.
inline void BitVector::CopyWords(const BitVector& rhs) {
  if (this == &rhs) return;
  Reserve(rhs.NumWords());
  std::fill(std::copy_n(rhs.Words(), rhs.NumWords(), Words()), Words() + m_capacity, Word{0});
}

/// Clears the bits from position size on. Requires: size is in range.
inline void BitVector::ClearFrom(std::size_t size) {
  Word* const pWords = Words();
  pWords[size / kBitsPerWord] &= TailMask(size);
  std::fill(pWords + size / kBitsPerWord + 1, pWords + NumWords(), Word{0});
}

/// Sets the bits behind the end, up to a later end at size, for which there is room.
inline void BitVector::SetFrom(std::size_t size) {
  for (std::size_t i = m_size; i < size; ++i) set(i);
}

inline std::partial_ordering BitVector::CompareAsSets(const BitVector& rhs) const {
  std::uint64_t leftOnly = 0;
  std::uint64_t rightOnly = 0;
  const auto compare = [&](std::uint64_t left, std::uint64_t right) {
    leftOnly |= left & ~right;
    rightOnly |= right & ~left;
  };
  if (IsInline() && rhs.IsInline()) {
    const TwoWords left = InlineWords();
    const TwoWords right = rhs.InlineWords();
    compare(left[0], right[0]);
    compare(left[1], right[1]);
  } else {
    for (std::size_t i = 0; i < NumWords(); ++i) compare(Words()[i], rhs.Words()[i]);
  }
  if (leftOnly == 0) return rightOnly == 0 ? std::partial_ordering::equivalent : std::partial_ordering::less;
  return rightOnly == 0 ? std::partial_ordering::greater : std::partial_ordering::unordered;
}

inline void BitVector::Grow(std::size_t words) {
  const std::size_t capacity = std::max(words, std::size_t{m_capacity} * 2);
  auto* const pWords = static_cast<Word*>(KXNodeAlloc::allocate(capacity * sizeof(Word), __FILE__, __LINE__));
  std::fill(std::copy_n(Words(), NumWords(), pWords), pWords + capacity, Word{0});
  Free();
  m_pWords = pWords;
  m_capacity = static_cast<std::uint32_t>(capacity);
}

template <class Function>
BitVector& BitVector::Combine(const BitVector& rhs, Function function) {
  Word* const pLeft = Words();
  const Word* const pRight = rhs.Words();
  if (m_size == rhs.m_size && IsInline() && rhs.IsInline()) {
    for (std::size_t i = 0; i < kInlineWords; ++i) m_inline[i] = function(m_inline[i], rhs.m_inline[i]);
    return *this;
  }
  const std::size_t size = std::min(m_size, rhs.m_size);
  const std::size_t wholeWords = size / kBitsPerWord;
  for (std::size_t i = 0; i < wholeWords; ++i) pLeft[i] = function(pLeft[i], pRight[i]);
  if (size % kBitsPerWord != 0) {
    const Word common = TailMask(size);
    Word& last = pLeft[wholeWords];
    last = (last & ~common) | (function(last, pRight[wholeWords]) & common);
  }
  return *this;
}
