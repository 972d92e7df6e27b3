#include "BitVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using Model = std::vector<bool>;

std::string Text(const BitVector& bits) {
  std::string text;
  for (std::size_t i = 0; i < bits.size(); ++i) text += bits[i] ? '1' : '0';
  return text;
}

std::string Text(const Model& bits) {
  std::string text;
  for (const bool bit : bits) text += bit ? '1' : '0';
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
    const auto count = static_cast<std::size_t>(std::count(m_model.begin(), m_model.end(), true));
    EXPECT_EQ(m_bits.count(), count);
    EXPECT_EQ(m_bits.any(), count > 0);
    EXPECT_EQ(m_bits.none(), count == 0);
    EXPECT_EQ(m_bits == other.m_bits, m_model == other.m_model);
    std::vector<std::size_t> positions;
    m_bits.ForEachSetBit([&positions](std::size_t i) { positions.push_back(i); });
    EXPECT_EQ(positions.size(), count);
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    for (const std::size_t i : positions) EXPECT_TRUE(m_model[i]);
    if (m_model.size() != other.m_model.size()) return;
    bool bIntersects = false;
    bool bSubset = true;
    for (std::size_t i = 0; i < m_model.size(); ++i) {
      bIntersects = bIntersects || (m_model[i] && other.m_model[i]);
      bSubset = bSubset && (!m_model[i] || other.m_model[i]);
    }
    EXPECT_EQ(m_bits.Intersects(other.m_bits), bIntersects);
    EXPECT_EQ(m_bits.IsSubsetOf(other.m_bits), bSubset);
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
      switch (upTo(8)) {
        case 0:
          pair.Resize(size, upTo(1) == 0);
          break;
        case 1:
          pair.PushBack(upTo(1) == 0);
          break;
        case 2:
          pair = other;
          break;
        case 3:
          pair = Pair(other);
          break;
        case 4:
          pair.Clear();
          break;
        case 5:
        case 6:
          pair.Combine(other, static_cast<int>(upTo(2)));
          break;
        default:
          pair.Resize(size, false);
          for (std::size_t i = 0; i < size / 3; ++i) pair.Put(upTo(size - 1), upTo(3) != 0);
      }
      ASSERT_NO_FATAL_FAILURE(pair.Check(other)) << "round " << round << " step " << step;
    }
  }
}

TEST(BitVectorTest, AShorterRightOperandLeavesTheTailAlone) {
  for (const std::size_t size : {std::size_t{40}, std::size_t{200}}) {
    const BitVector ones(size, true);
    const BitVector zeros(size - 7);
    BitVector bits = ones;
    bits &= zeros;
    EXPECT_EQ(Text(bits), std::string(size - 7, '0') + "1111111");
    bits |= BitVector(3, true);
    EXPECT_EQ(Text(bits), "111" + std::string(size - 10, '0') + "1111111");
    bits ^= BitVector(size - 3, true);
    EXPECT_EQ(Text(bits), "000" + std::string(size - 10, '1') + "0000111");
  }
}

TEST(BitVectorTest, BitsBehindTheEndDoNotComeBack) {
  for (const std::size_t size : kLengths) {
    BitVector bits(size, true);
    bits.resize(size / 2);
    bits.resize(size);
    EXPECT_EQ(Text(bits), std::string(size / 2, '1') + std::string(size - size / 2, '0'));
    EXPECT_EQ(bits.count(), size / 2);
  }
}

}  // namespace
