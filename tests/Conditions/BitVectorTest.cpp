#include "BitVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using Model = std::vector<bool>;

template <class Bits>
std::string Text(const Bits& bits) {
  std::string text;
  for (std::size_t i = 0; i < bits.size(); ++i) text += bits[i] ? '1' : '0';
  return text;
}

/// A vector and its model, which take the same steps.
class Pair {
 public:
  void Resize(std::size_t size, bool bValue) {
    m_bits.resize(size, bValue);
    m_model.resize(size, bValue);
  }
  void PushBack(bool bValue) {
    m_bits.push_back(bValue);
    m_model.push_back(bValue);
  }
  void Put(std::size_t i, bool bValue) {
    bValue ? m_bits.set(i) : m_bits.reset(i);
    m_model[i] = bValue;
  }
  /// Bit by bit over the shorter length.
  void Combine(const Pair& rhs, int operation) {
    if (operation == 0) m_bits |= rhs.m_bits;
    if (operation == 1) m_bits &= rhs.m_bits;
    if (operation == 2) m_bits ^= rhs.m_bits;
    for (std::size_t i = 0; i < std::min(m_model.size(), rhs.m_model.size()); ++i) {
      const bool bLeft = m_model[i];
      const bool bRight = rhs.m_model[i];
      m_model[i] = operation == 0 ? bLeft || bRight : operation == 1 ? bLeft && bRight : bLeft != bRight;
    }
  }
  void Clear() {
    m_bits.reset();
    m_model.assign(m_model.size(), false);
  }

  void Check(const Pair& other) const {
    ASSERT_EQ(Text(m_bits), Text(m_model));
    std::vector<std::size_t> positions;
    m_bits.ForEachSetBit([&positions](std::size_t i) { positions.push_back(i); });
    std::vector<std::size_t> expected;
    bool bIntersects = false;
    bool bSubset = true;
    for (std::size_t i = 0; i < m_model.size(); ++i) {
      if (!m_model[i]) continue;
      expected.push_back(i);
      const bool bOther = i < other.m_model.size() && other.m_model[i];
      bIntersects = bIntersects || bOther;
      bSubset = bSubset && bOther;
    }
    EXPECT_EQ(positions, expected);
    EXPECT_EQ(m_bits.count(), expected.size());
    EXPECT_EQ(m_bits.any(), !expected.empty());
    EXPECT_EQ(m_bits == other.m_bits, m_model == other.m_model);
    if (m_model.size() != other.m_model.size()) return;
    EXPECT_EQ(m_bits.Intersects(other.m_bits), bIntersects);
    EXPECT_EQ(m_bits.CompareAsSets(other.m_bits) <= 0, bSubset);
    EXPECT_EQ(other.m_bits.CompareAsSets(m_bits) >= 0, bSubset);
  }

 private:
  BitVector m_bits;
  Model m_model;
};

// Lengths around the words and around what lies in the object itself.
constexpr std::size_t kLengths[] = {0, 1, 31, 32, 33, 64, 100, 127, 128, 129, 160, 300};

TEST(BitVectorTest, RandomStepsGiveWhatAVectorOfBoolGives) {
  constexpr unsigned kSeed = 20261122;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  const auto upTo = [&random](std::size_t last) { return std::uniform_int_distribution<std::size_t>(0, last)(random); };
  for (int round = 0; round < 300; ++round) {
    std::vector<Pair> pairs(3);
    for (int step = 0; step < 60; ++step) {
      Pair& pair = pairs[upTo(2)];
      const Pair& other = pairs[upTo(2)];
      const std::size_t size = kLengths[upTo(std::size(kLengths) - 1)];
      const std::size_t choice = upTo(6);
      if (choice == 0 || choice > 4) pair.Resize(size, upTo(1) == 0);
      if (choice == 1) pair.PushBack(upTo(1) == 0);
      if (choice == 2) pair = other;
      if (choice == 3) pair.Clear();
      if (choice == 4) pair.Combine(other, static_cast<int>(upTo(2)));
      for (std::size_t i = 0; choice > 4 && i < size / 3; ++i) pair.Put(upTo(size - 1), upTo(3) != 0);
      ASSERT_NO_FATAL_FAILURE(pair.Check(other)) << "round " << round << " step " << step;
    }
  }
}

}  // namespace
