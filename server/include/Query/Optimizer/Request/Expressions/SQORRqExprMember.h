#pragma once

#include <cstdint>

#include "Host/KXDataType.h"
#include "Host/RpObjects.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// Functions of dimensions, their members and the grain of a block.

struct RqCalculatedMemberOperands {
  enum { kDimensionOperand, kMemberValueOperand, kMemberFormulaOperand, kNumOperands };
};
/// A member of a dimension that the query makes up, by its value and the formula over other members. Wanted: the solve
/// order takes no part in the order of expressions, so a set keeps the first of members that differ there alone.
class RqExprCalculatedMember final
    : public RqScalarWithFields<RqExprCalculatedMember, kRqExprCalculatedMember, RqCalculatedMemberOperands> {
 public:
  RqExprCalculatedMember() = default;
  RqExprCalculatedMember(RqExpr* pDimension, RqExpr* pMemberValue, RqExpr* pMemberFormula, std::int32_t solveOrder)
      : RqScalarWithFields(pDimension, pMemberValue, pMemberFormula), m_solveOrder(solveOrder) {}
  RqExprCalculatedMember(const RqExprCalculatedMember& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy), m_solveOrder(rhs.m_solveOrder) {}

  /// Where two calculated members meet in a cell, the one of the higher order is worked out last.
  std::int32_t GetSolveOrder() const { return m_solveOrder; }

 private:
  friend RqScalarWithFields;
  std::int32_t m_solveOrder = 0;

  static constexpr std::tuple kComparedFields{&RqExprCalculatedMember::m_solveOrder};
  static constexpr std::tuple kWrittenFields = kComparedFields;
};

struct RqKeyAttribute {
  enum { kKeyAttribute, kNumOperands };
};
/// The distance of a member from the root of its hierarchy. Wanted: the table source takes no part in the order of
/// expressions, as the solve order of RqExprCalculatedMember.
class RqExprDepth final : public RqScalarWithFields<RqExprDepth, kRqExprDepth, RqKeyAttribute> {
 public:
  using RqScalarWithFields::RqScalarWithFields;
  RqExprDepth(const RqExprDepth& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy), m_LTSVoidID(rhs.m_LTSVoidID) {}

  /// The table source that it is evaluated on; the null identifier when none is set.
  const VoidID& GetLTSVoidID() const { return m_LTSVoidID; }
  void SetLTSVoidID(const VoidID& ltsVoidID) { m_LTSVoidID = ltsVoidID; }

 private:
  friend RqScalarWithFields;
  VoidID m_LTSVoidID;

  static constexpr std::tuple kComparedFields{&RqExprDepth::m_LTSVoidID};
  static constexpr std::tuple kWrittenFields = kComparedFields;
};

/// The operand over all members, whatever the filter of the block.
class RqExprAllValues final : public RqScalarFunction<RqExprAllValues, kRqExprAllValues, RqOneOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

/// The descriptor identifier of a value. It does not travel in a tree.
class RqExprIDOf final : public RqScalarFunction<RqExprIDOf, kRqExprIDOf, RqOneOperand> {
 public:
  RqExprIDOf() = default;
  explicit RqExprIDOf(RqExpr* pOperand, bool bConstant = false) : RqScalarFunction(pOperand), m_bConstant(bConstant) {}
  RqExprIDOf(const RqExprIDOf& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarFunction(rhs, bNewIDs, bDeepCopy), m_bConstant(rhs.m_bConstant) {}

  void SetConstant(bool bConstant) { m_bConstant = bConstant; }

  /// True if it is marked so, whatever the operand.
  bool IsConstant() const override { return m_bConstant || RqScalarFunction::IsConstant(); }
  /// Wanted: one that is marked as constant is equivalent to the integer literal 1 and to nothing else, not even to
  /// itself.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;

 private:
  bool m_bConstant = false;
};

struct RqColumnListOperand {
  enum { kColumnListOperand, kNumOperands };
};
/// Which columns of the list a row is grouped by, as a number of as many bits.
class RqExprGroupingId final : public RqScalarFunction<RqExprGroupingId, kRqExprGroupingId, RqColumnListOperand> {
 public:
  using RqScalarFunction::RqScalarFunction;
};

struct RqTimeLevelExpr {
  enum { kTimeLevelExpr, kNumOperands };
};
/// The number of a period among those of its level. It does not travel in a tree. Wanted: the level takes part in the
/// order, by its identifier, and not in equivalence.
class RqExprTimeDimSeqNum final : public RqScalarFunction<RqExprTimeDimSeqNum, kRqExprTimeDimSeqNum, RqTimeLevelExpr> {
 public:
  RqExprTimeDimSeqNum() = default;
  RqExprTimeDimSeqNum(RqExpr* pTimeLevelExpr, const RefALevel& timeLevel)
      : RqScalarFunction(pTimeLevelExpr), m_timeLevel(timeLevel) {}
  RqExprTimeDimSeqNum(const RqExprTimeDimSeqNum& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarFunction(rhs, bNewIDs, bDeepCopy), m_timeLevel(rhs.m_timeLevel) {}

  const RefALevel& GetTimeLevel() const { return m_timeLevel; }

  bool IsShallowLessThan(const RqExpr& rhs) const override;

 private:
  RefALevel m_timeLevel;
};

struct RqDisplayExpr {
  enum { kDisplayExpr, kNumOperands };
};
/// What is shown of a column of external data whose grain is checked.
class RqExprGrainCheckDisplay final
    : public RqScalarFunction<RqExprGrainCheckDisplay, kRqExprGrainCheckDisplay, RqDisplayExpr> {
 public:
  using RqScalarFunction::RqScalarFunction;
  bool IsMashupsPinnedExpr() const override { return true; }
};

/// Stands where a bin's number will, until the bins are known. The sticky type, which the number will keep, takes part
/// in comparison and does not travel.
class RqExprBinPlaceHolder final
    : public RqScalarWithFields<RqExprBinPlaceHolder, kRqExprBinPlaceHolder, RqNoOperands> {
 public:
  RqExprBinPlaceHolder() = default;
  explicit RqExprBinPlaceHolder(const KXTypeInfo& stickyType) : m_stickyType(stickyType) {}
  RqExprBinPlaceHolder(const RqExprBinPlaceHolder& rhs, bool bNewIDs, bool bDeepCopy)
      : RqScalarWithFields(rhs, bNewIDs, bDeepCopy), m_stickyType(rhs.m_stickyType) {}

  const KXTypeInfo& GetStickyType() const { return m_stickyType; }
  void SetStickyType(const KXTypeInfo& stickyType) { m_stickyType = stickyType; }

 private:
  friend RqScalarWithFields;
  KXTypeInfo m_stickyType;

  static constexpr std::tuple kComparedFields{&RqExprBinPlaceHolder::m_stickyType};
  static constexpr std::tuple kOrderedFields = kComparedFields;
};

struct RqCanonicalOperands {
  enum { kOperand, kCanonicalMapQuery, kNumOperands };
};
/// The value that stands for the operand's in the map that a query gives.
class RqExprCanonical final : public RqScalarFunction<RqExprCanonical, kRqExprCanonical, RqCanonicalOperands> {
 public:
  using RqScalarFunction::RqScalarFunction;
};
