#include "Corpus.h"

#include <algorithm>
#include <map>
#include <random>
#include <string>

#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

namespace {

RqExpr* MakeColumn(int i) {
  return new RqTargetColumn(KXString((L"column" + std::to_wstring(i)).c_str()), RqTargetColumn::kUnknownTableNum);
}

RqExpr* MakeInteger(int value) { return new RqExprIntegerLiteral(value, false); }

RqExprCond* MakeBalanced(int first, int last, bool bAnd) {
  if (first == last) return new RqExprCondEquality(MakeColumn(first % 97), MakeInteger(first), false);
  const int middle = first + (last - first) / 2;
  RqExprCond* const pLeft = MakeBalanced(first, middle, !bAnd);
  RqExprCond* const pRight = MakeBalanced(middle + 1, last, !bAnd);
  if (bAnd) return new RqExprCondAnd(pLeft, pRight);
  return new RqExprCondOr(pLeft, pRight);
}

/// Makes a filter and its masks side by side from one stream of random numbers.
class Generator {
 public:
  explicit Generator(std::mt19937& random) : m_random(random) {}

  CorpusEntry Make() {
    m_atomsLeft = Uniform(6, 14);
    CorpusEntry entry;
    entry.condition = MakeLevel(entry.masks, Uniform(0, 3) == 0 ? MaskTree::Kind::kAnd : MaskTree::Kind::kOr, 0);
    return entry;
  }

 private:
  int Uniform(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

  RqExprCond* MakeLevel(MaskTree& masks, MaskTree::Kind kind, int depth) {
    masks.kind = kind;
    const MaskTree::Kind inner = kind == MaskTree::Kind::kAnd ? MaskTree::Kind::kOr : MaskTree::Kind::kAnd;
    RqExprCond* pCond = nullptr;
    const int terms = Uniform(2, 3);
    for (int i = 0; (i < terms || depth == 0) && (m_atomsLeft > 0 || !pCond); ++i) {
      MaskTree& child = masks.children.emplace_back();
      RqExprCond* const pTerm =
          depth < 3 && m_atomsLeft > 2 && Uniform(0, 2) > 0 ? MakeLevel(child, inner, depth + 1) : MakeAtom(child);
      pCond = kind == MaskTree::Kind::kAnd ? RqExprCondAnd::Concatenate(pCond, pTerm)
                                           : RqExprCondOr::Concatenate(pCond, pTerm);
    }
    return pCond;
  }

  RqExprCond* MakeAtom(MaskTree& masks) {
    --m_atomsLeft;
    const int column = Uniform(0, 5);
    const int value = Uniform(0, 3);
    const auto bit = [this](char kind, int c, int v) {
      return m_bits.try_emplace(std::to_string(c) + kind + std::to_string(v), static_cast<int>(m_bits.size()))
          .first->second;
    };
    switch (Uniform(0, 6)) {
      case 0:
        masks.bit = bit('l', column, value);
        return new RqExprCondLess(MakeColumn(column), MakeInteger(value));
      case 1:
        masks.bit = bit('g', column, value);
        return new RqExprCondGreater(MakeColumn(column), MakeInteger(value));
      case 2:
        masks.bit = bit('L', column, value);  // not (column < value)
        return new RqExprCondGreaterEqual(MakeColumn(column), MakeInteger(value));
      case 3:
        masks.bit = bit('n', column, value);
        return new RqExprCondNotEqual(MakeColumn(column), MakeInteger(value));
      case 4:
        masks.bit = bit('0', column, 0);
        return new RqExprCondIsNull(MakeColumn(column), false);
      default:
        masks.bit = bit('e', column, value);
        return new RqExprCondEquality(MakeColumn(column), MakeInteger(value), false);
    }
  }

  std::mt19937& m_random;
  int m_atomsLeft = 0;
  std::map<std::string, int> m_bits;
};

}  // namespace

RqExprCond* MakeBalancedCondition(int comparisons) { return MakeBalanced(0, comparisons - 1, true); }

const std::vector<CorpusEntry>& Corpus() {
  static const std::vector<CorpusEntry> corpus = [] {
    constexpr int kConditions = 2000;
    constexpr unsigned kSeed = 20260;
    std::mt19937 random(kSeed);
    std::vector<CorpusEntry> entries;
    for (int i = 0; i < kConditions; ++i) entries.push_back(Generator(random).Make());
    return entries;
  }();
  return corpus;
}
