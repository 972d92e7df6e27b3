#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

/// A condition over numbered atoms, in negation normal form: the input of the mask program. An atom and its negation
/// are two bits, as they are in the library.
struct MaskTree {
  enum class Kind { kAtom, kAnd, kOr };
  Kind kind = Kind::kAtom;
  int bit = 0;
  std::vector<MaskTree> children;
};

struct CorpusEntry {
  OwnedRqExprCondPtr condition;
  MaskTree masks;
};

/// A balanced And and Or condition over `comparisons` comparisons of a column and a literal: 4 * comparisons - 1 nodes.
RqExprCond* MakeBalancedCondition(int comparisons);

/// 2,000 filters of 6 to 14 atoms, the same at every call: Ands and Ors in up to four levels, with comparisons of all
/// kinds, some of them negated and some repeated, as filters of reports are.
const std::vector<CorpusEntry>& Corpus();
