#pragma once

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"

// Conditions over the rows of a subquery. There is no class for = ANY and <> ALL: they are RqExprCondIn with a subquery
// for its values, plain and negated.

/// What the ten quantified comparisons have in common: a value, and the subquery whose rows it is compared to. The
/// rewriters carry them through whole; a Not of one stays a Not, and is not turned into the opposite of the other
/// quantifier.
template <class Derived, RqNodeType_e kKind>
class RqExprCondQuantified : public RqNodeImpl<Derived, RqExprCond, kKind> {
 public:
  enum { kSearchExpr, kSubquery, kNumOperands };

  using RqNodeImpl<Derived, RqExprCond, kKind>::RqNodeImpl;
  RqExprCondQuantified() = default;
  /// Takes both.
  RqExprCondQuantified(RqExpr* search, RqExprSubquery* subquery) {
    KX_ASSERT(search);
    KX_ASSERT(subquery);
    this->AddChild(search);
    this->AddChild(subquery);
  }

  bool IsCanonicalAtomicPredicate() const override { return true; }
};

// ---------------------------------------------------------------------------------------------------------------------
// True of at least one row

/// x < ANY (q)
class RqExprCondAnyLessThan final : public RqExprCondQuantified<RqExprCondAnyLessThan, kRqExprCondAnyLessThan> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x <= ANY (q)
class RqExprCondAnyLessEqual final : public RqExprCondQuantified<RqExprCondAnyLessEqual, kRqExprCondAnyLessEqual> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x > ANY (q)
class RqExprCondAnyGreaterThan final
    : public RqExprCondQuantified<RqExprCondAnyGreaterThan, kRqExprCondAnyGreaterThan> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x >= ANY (q)
class RqExprCondAnyGreaterEqual final
    : public RqExprCondQuantified<RqExprCondAnyGreaterEqual, kRqExprCondAnyGreaterEqual> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x <> ANY (q)
class RqExprCondAnyNotEqual final : public RqExprCondQuantified<RqExprCondAnyNotEqual, kRqExprCondAnyNotEqual> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

// ---------------------------------------------------------------------------------------------------------------------
// True of every row, and so of none

/// x < ALL (q)
class RqExprCondAllLessThan final : public RqExprCondQuantified<RqExprCondAllLessThan, kRqExprCondAllLessThan> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x <= ALL (q)
class RqExprCondAllLessEqual final : public RqExprCondQuantified<RqExprCondAllLessEqual, kRqExprCondAllLessEqual> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x = ALL (q)
class RqExprCondAllEqual final : public RqExprCondQuantified<RqExprCondAllEqual, kRqExprCondAllEqual> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x > ALL (q)
class RqExprCondAllGreaterThan final
    : public RqExprCondQuantified<RqExprCondAllGreaterThan, kRqExprCondAllGreaterThan> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

/// x >= ALL (q)
class RqExprCondAllGreaterEqual final
    : public RqExprCondQuantified<RqExprCondAllGreaterEqual, kRqExprCondAllGreaterEqual> {
 public:
  using RqExprCondQuantified::RqExprCondQuantified;
};

// ---------------------------------------------------------------------------------------------------------------------
// True if there is a row

/// EXISTS (q)
class RqExprCondExists final : public RqNodeImpl<RqExprCondExists, RqExprCond, kRqExprCondExists> {
 public:
  enum { kSubquery, kNumOperands };

  RqExprCondExists() = default;
  /// Takes it.
  explicit RqExprCondExists(RqExprSubquery* subquery);
  using RqNodeImpl::RqNodeImpl;

  bool IsCanonicalAtomicPredicate() const override { return true; }
};
