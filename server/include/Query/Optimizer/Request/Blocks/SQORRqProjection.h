#pragma once

#include <cstdint>
#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"

/// The select list of a block: its derived columns, in order. Their numbers are unique in it and given out once:
/// neither the number nor the order of columns tells the number of the next. Look-ups go through the columns one by
/// one, as a select list is short.
class RqProjection final : public RqNodeImpl<RqProjection, RqNode, kRqProjection> {
 public:
  /// What FindColumnIndex answers for a column that is not there.
  static constexpr int kColumnNotFound = 0x7fffffff;

  /// No columns. The first one that asks for a number gets the one behind startingNumber.
  explicit RqProjection(int startingNumber) : m_nextColumnNumber(startingNumber) {}
  RqProjection(const RqProjection& rhs, bool bNewIDs, bool bDeepCopy);

  int GetNumColumns() const { return GetNumChildren(); }
  /// Deletes the columns past the new end, or appends null ones, and gives out no number up to numColumns from now on.
  void SetNumColumns(int numColumns);
  RqDerivedColumn* GetIthColumn(int i) { return static_cast<RqDerivedColumn*>(GetIthChild(i)); }
  const RqDerivedColumn* GetIthColumn(int i) const { return static_cast<const RqDerivedColumn*>(GetIthChild(i)); }
  /// Deletes the column that stands there and takes pNewColumn, which must have a number.
  void SetIthColumn(int i, RqDerivedColumn* pNewColumn);
  /// Takes pColumn as the last one and gives it a number if it has none.
  void AddColumn(RqDerivedColumn* pColumn);
  /// Removes the column; see CompositeNode::DeleteChild.
  void DeleteColumn(RqDerivedColumn* pColumn, RqNode* pReleaseContainer) { DeleteChild(pColumn, pReleaseContainer); }

  /// The first column that computes a value expression, or a new one of a copy of it; inserted tells which. pExpr stays
  /// the caller's. bForceInsert makes a new one in any case.
  RqDerivedColumn* InsertColumnExpr(const RqExpr* pExpr, bool& inserted, bool bForceInsert);
  RqDerivedColumn* InsertColumnExpr(const RqExpr* pExpr);
  /// As InsertColumnExpr. Wanted: the column that counts as the match is the first one whose expression comes before
  /// pExpr in the total order under the share base rule, and not one that equals it.
  RqDerivedColumn* InsertColumnExprShareBase(const RqExpr* pExpr, bool& inserted);
  /// As InsertColumnExpr, for an expression of the caller's that becomes the column's, or is deleted if there is one
  /// already.
  RqDerivedColumn* InsertDonatedColumnExpr(RqExpr* pExpr);

  /// The first column that computes an equivalent of pExpr; null if there is none.
  const RqDerivedColumn* GetMatchingColumn(const RqExpr* pExpr) const;
  RqDerivedColumn* GetMatchingColumn(const RqExpr* pExpr);
  /// The column of that number; null if there is none.
  RqDerivedColumn* GetMatchingColumn(int columnNumber);
  /// Appends all columns that compute an equivalent of pExpr.
  void GetMatchingColumns(const RqExpr* pExpr, RqDerivedColumnVector& columns);
  /// The index of GetMatchingColumn; the number of columns if there is none.
  int GetMatchingColumnIndex(const RqExpr* pExpr) const;
  /// Stores the subexpressions of columns, at any depth, that equal pExpr.
  void GetMatchingColumnReferences(const RqExpr* pExpr, RqExprVector& exprs, const RqEquivalence& equivalence);
  int FindColumnIndex(const RqDerivedColumn* pColumn) const;
  int FindColumnIndex(int columnNumber) const;

  /// Draws a number.
  int GetNextColumnNum();
  /// Gives out no number up to columnNum from now on.
  void ReSyncColumnNumGenerator(int columnNum);

  /// Column by column; numbers take no part.
  virtual bool IsEquivalent(const RqProjection& rhs) const;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  RqDerivedColumn* AddNewColumn(RqExpr* pDonated);

  std::int32_t m_nextColumnNumber;
};
