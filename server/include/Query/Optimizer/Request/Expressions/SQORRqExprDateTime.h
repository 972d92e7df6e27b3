#pragma once

#include "Host/KXDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprScalar.h"

// Functions of dates, times and timestamps.

/// What the two extractions have in common: a part of a moment.
template <class Derived, RqNodeType_e kKind, class Slots>
class RqDateTimeExtract : public RqScalarWithFields<Derived, kKind, Slots, 1> {
  using Function = RqScalarWithFields<Derived, kKind, Slots, 1>;

 public:
  RqDateTimeExtract() = default;
  RqDateTimeExtract(const RqDateTimeExtract& rhs, bool bNewIDs, bool bDeepCopy)
      : Function(rhs, bNewIDs, bDeepCopy), m_operation(rhs.m_operation) {}

  KXDateTime::ExtractOpcode GetOperation() const { return m_operation; }

 protected:
  template <class... Operands>
  explicit RqDateTimeExtract(KXDateTime::ExtractOpcode operation, Operands... operands)
      : Function(operands...), m_operation(operation) {}

 private:
  friend Function;
  KXDateTime::ExtractOpcode m_operation = KXDateTime::kExtractDayOfWeek;

  static constexpr std::tuple kComparedFields{&RqDateTimeExtract::m_operation};
  static constexpr std::tuple kOrderedFields = kComparedFields;
  static constexpr std::tuple kWrittenFields{
      RqEnumField{&RqDateTimeExtract::m_operation, KXDateTime::kExtractQuarterOfYear}};
};

struct RqCalendarExtractOperands {
  enum { kDateTimeExpr, kNumOperands };
};
/// A part of a moment in the calendar year.
class RqExprCalendarExtract final
    : public RqDateTimeExtract<RqExprCalendarExtract, kRqExprCalendarExtract, RqCalendarExtractOperands> {
 public:
  using RqDateTimeExtract::RqDateTimeExtract;
  RqExprCalendarExtract(RqExpr* pDateTimeExpr, KXDateTime::ExtractOpcode operation)
      : RqDateTimeExtract(operation, pDateTimeExpr) {}
};

struct RqFiscalExtractOperands {
  enum { kDateTimeExpr, kStartMonth, kStartDay, kNumOperands };
};
/// A part of a moment in a fiscal year, which begins on a day of its own.
class RqExprFiscalExtract final
    : public RqDateTimeExtract<RqExprFiscalExtract, kRqExprFiscalExtract, RqFiscalExtractOperands> {
 public:
  using RqDateTimeExtract::RqDateTimeExtract;
  /// A null month or day is the first one.
  RqExprFiscalExtract(RqExpr* pDateTimeExpr, RqExpr* pStartMonth, RqExpr* pStartDay,
                      KXDateTime::ExtractOpcode operation)
      : RqDateTimeExtract(operation, pDateTimeExpr, pStartMonth, pStartDay) {}
};

/// What the two functions of timestamps have in common: a unit that they count in.
template <class Derived, RqNodeType_e kKind, class Slots>
class RqTimestampFunction : public RqScalarWithFields<Derived, kKind, Slots> {
  using Function = RqScalarWithFields<Derived, kKind, Slots>;

 public:
  RqTimestampFunction() = default;
  RqTimestampFunction(RqExpr* pFirst, RqExpr* pSecond, KXDateTime::UnitOfTime unitOfTime)
      : Function(pFirst, pSecond), m_UnitOfTime(unitOfTime) {}
  RqTimestampFunction(const RqTimestampFunction& rhs, bool bNewIDs, bool bDeepCopy)
      : Function(rhs, bNewIDs, bDeepCopy), m_UnitOfTime(rhs.m_UnitOfTime) {}

  KXDateTime::UnitOfTime GetUnitOfTime() const { return m_UnitOfTime; }

 private:
  friend Function;
  KXDateTime::UnitOfTime m_UnitOfTime = KXDateTime::kMillisecond;

  static constexpr std::tuple kComparedFields{&RqTimestampFunction::m_UnitOfTime};
  static constexpr std::tuple kOrderedFields = kComparedFields;
  static constexpr std::tuple kWrittenFields{RqEnumField{&RqTimestampFunction::m_UnitOfTime, KXDateTime::kYear}};
};

struct RqTimestampAddOperands {
  enum { kNumIntervals, kTimestamp, kNumOperands };
};
/// A timestamp so many units later.
class RqExprTimestampAdd final
    : public RqTimestampFunction<RqExprTimestampAdd, kRqExprTimestampAdd, RqTimestampAddOperands> {
 public:
  using RqTimestampFunction::RqTimestampFunction;
};

struct RqTimestampDiffOperands {
  enum { k1stTimestamp, k2ndTimestamp, kNumOperands };
};
/// The units from the first timestamp to the second.
class RqExprTimestampDiff final
    : public RqTimestampFunction<RqExprTimestampDiff, kRqExprTimestampDiff, RqTimestampDiffOperands> {
 public:
  using RqTimestampFunction::RqTimestampFunction;
};
