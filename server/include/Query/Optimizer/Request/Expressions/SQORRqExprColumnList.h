#pragma once

#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORSmartRqNodePtr.h"

/// Expressions in a row: a row value, the arguments of a ranking. Its columns are its operands; it keeps their order
/// and their repeats, and a column may be null.
class RqExprColumnListOrdered : public RqNodeImpl<RqExprColumnListOrdered, RqExpr, kRqExprColumnListOrdered> {
 public:
  RqExprColumnListOrdered() = default;
  /// Takes the columns and leaves the vector empty.
  explicit RqExprColumnListOrdered(RqExprVector& columns);
  using RqNodeImpl::RqNodeImpl;

  int GetNumColumns() const { return GetNumOperands(); }
  /// Deletes the columns past the new end, or appends null ones.
  void SetNumColumns(int numColumns) { SetNumOperands(numColumns); }
  RqExpr* GetIthColumn(int i) { return GetIthOperand(i); }
  const RqExpr* GetIthColumn(int i) const { return GetIthOperand(i); }
  /// Deletes the column that stands there and takes pNewColumn.
  void SetIthColumn(int i, RqExpr* pNewColumn) { SetIthOperand(i, pNewColumn); }
  /// Whether some column is equivalent to expr, share bases aside.
  bool HasEquivalentMember(const RqExpr& expr) const;

  bool IsValueExpr() const override { return false; }
  /// Whether there are columns and each one that is not null is always null.
  bool IsAlwaysNull() const override;
  bool IsMultiExpr() const override { return true; }
};

/// A list of columns as a grouping or a break has it: without duplicates, and mostly in the order of expressions. That
/// is so once Init has made it; a list that is filled column by column keeps what it is given, which is how the values
/// of an IN stand.
///
/// Others may point at it without owning it, and follow when another list takes its place.
class RqExprColumnList : public RqNodeImpl<RqExprColumnList, RqExprColumnListOrdered, kRqExprColumnList>,
                         public SmartRqNodeContainer {
 public:
  RqExprColumnList() = default;
  /// Init on a new list.
  RqExprColumnList(RqExprVector& columns, bool dropConstants, bool sortColumns);
  /// Nothing points at the copy.
  RqExprColumnList(const RqExprColumnList& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl(rhs, bNewIDs, bDeepCopy), SmartRqNodeContainer() {}

  /// Takes the columns behind those that stand, and leaves the vector empty. A constant is deleted if dropConstants
  /// says so; of columns that are equal in the total order the first one stays and the others are deleted. What is
  /// taken stands in that order if sortColumns says so, else as it came. Cost: n log n comparisons.
  void Init(RqExprVector& columns, bool dropConstants, bool sortColumns);

  /// When the replacement is of exactly this kind, every pointer at this list is aimed at it.
  void Replace(RqNode* pReplacement, RqNode& releaseContainer) override;
};
