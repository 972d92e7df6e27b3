#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "rq/eval/RowValue.h"
#include "rq/eval/TruthSet.h"

class RqExprSessionVar;

/// Evaluates conditions over rows, in SQL's three truth values. It shares nothing with the rewriting of conditions.
///
/// Columns and parameters are the variables; equal ones are one variable. A row gives them values by their numbers, or
/// leaves them open, and the truth of a condition is then a set that holds, if not only, the values that it may take.
/// The conditions are lent and must neither change nor go while this lives.
class ConditionEvaluator {
 public:
  /// A value for each variable; none where it is open.
  using Row = std::vector<std::optional<RowValue>>;

  /// Session variables are read through pRp, once.
  explicit ConditionEvaluator(ARpGateway* pRp) : m_pRp(pRp) {}
  ConditionEvaluator(const ConditionEvaluator&) = delete;
  ConditionEvaluator& operator=(const ConditionEvaluator&) = delete;

  /// Takes the condition in. False if it has a part that cannot be evaluated; the condition is then not to be
  /// evaluated.
  bool Learn(const RqExprCond& cond);
  /// The first part that could not be evaluated, lent; null if there was none.
  const RqExpr* GetUnsupported() const { return m_pUnsupported; }

  /// An occurrence of each variable, by number.
  const std::vector<const RqExpr*>& GetVariables() const { return m_variables; }
  /// The number of the variable that an expression of a condition learnt is; none if it is no variable.
  std::optional<std::size_t> FindVariable(const RqExpr& expr) const;
  /// The value of a constant of a condition learnt; none if it is no constant.
  std::optional<RowValue> FindConstant(const RqExpr& expr) const;

  /// Values that are compared with one another, and those that a LIKE matches against the others.
  struct Meeting {
    std::vector<const RqExpr*> m_exprs;
    bool m_bIsLike = false;
  };
  /// One a comparison; for an IN over rows one a column.
  const std::vector<Meeting>& GetMeetings() const { return m_meetings; }

  /// Requires a condition that was learnt, or a part of one that is a condition.
  TruthSet Evaluate(const RqExpr& cond, const Row& row) const;
  /// Comparisons evaluated so far: a measure of the work.
  std::uint64_t GetNumSteps() const { return m_nSteps; }

 private:
  bool LearnOperands(const RqExpr& cond);
  bool LearnValue(const RqExpr& expr);
  bool LearnValues(const RqExpr& cond, bool bIsLike = false);
  bool LearnList(const RqExpr& cond);
  bool LearnRows(const RqExpr& cond);
  bool LearnSessionVar(const RqExprSessionVar& variable);
  bool TakeConstant(const RqExpr& expr, RowValue value);
  bool TakeVariable(const RqExpr& expr);
  bool Refuse(const RqExpr& expr);

  const RowValue* FindValue(const RqExpr* pExpr, const Row& row) const;
  template <class Holds>
  TruthSet Compare(const RqExpr* pLeft, const RqExpr* pRight, const Row& row, Holds holds) const;
  TruthSet EvaluateEquality(const RqExprCondEquality& cond, const Row& row) const;
  TruthSet EvaluateIsNull(const RqExpr& cond, const Row& row) const;
  TruthSet EvaluateBetween(const RqExpr& cond, const Row& row) const;
  TruthSet EvaluateLike(const RqExpr& cond, const Row& row) const;
  TruthSet EvaluateIn(const RqExpr& cond, const Row& row) const;
  TruthSet EvaluateRowIn(const RqExpr& cond, const Row& row) const;

  /// What an operand is, found by its address.
  struct Operand {
    std::optional<std::size_t> m_variable;
    RowValue m_constant;
  };

  ARpGateway* m_pRp;
  const RqExpr* m_pUnsupported = nullptr;
  std::map<const RqExpr*, std::size_t, LessEquivalentRqExpr> m_numbers;
  std::vector<const RqExpr*> m_variables;
  std::unordered_map<const RqExpr*, Operand> m_operands;
  std::vector<Meeting> m_meetings;
  mutable std::uint64_t m_nSteps = 0;
};
