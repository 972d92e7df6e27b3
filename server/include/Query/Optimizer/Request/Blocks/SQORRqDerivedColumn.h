#pragma once

#include <cstdint>

#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"
#include "Query/Optimizer/Request/Node/SQORSmartRqNodePtr.h"

class RqAbstractList;

/// A column of a select list. It is known by its number, which never changes while columns around it come and go, and
/// by its address: references point at it and follow when another column takes its place.
class RqDerivedColumn final : public RqNodeImpl<RqDerivedColumn, RqNode, kRqDerivedColumn>,
                              public SmartRqNodeContainer {
 public:
  enum { kExpr, kNumChildren };
  /// Whether equal values in successive rows are shown once.
  enum BreakStatus : std::uint8_t { kUnknownBreakStatus = 0, kNoDuplicates = 1, kAllowDuplicates = 2, kLobData = 4 };

  static const KXString kColumnPrefix;  ///< "c", in front of the number in the column's name.
  static constexpr int kUnknownColumnNum = 0;

  /// Takes the expression, which may be null.
  RqDerivedColumn(RqExpr* pDonated, int columnNum);
  /// Copies the expression, whatever bDeepCopy says. No reference points at the copy.
  RqDerivedColumn(const RqDerivedColumn& rhs, bool bNewIDs, bool bDeepCopy);

  RqExpr* GetExpr() { return static_cast<RqExpr*>(GetIthChild(kExpr)); }
  const RqExpr* GetExpr() const { return static_cast<const RqExpr*>(GetIthChild(kExpr)); }
  /// Deletes the expression that stands and takes pExpr.
  void SetExpr(RqExpr* pExpr) { SetIthChild(kExpr, pExpr); }
  int GetColumnNum() const { return m_columnNum; }
  void SetColumnNum(int columnNum) { m_columnNum = columnNum; }
  BreakStatus GetBreakStatus() const { return m_breakStatus; }
  /// Sets the status of this column and, as long as the column is nothing but a reference to one of an inner block, of
  /// that one. Ends at a branch of a union, and at a column whose status is stronger: one that allows duplicates or
  /// holds large objects.
  void SetBreakStatus(BreakStatus status);
  /// Aims every reference to this column at pTarget; at nothing if that is null.
  void SwitchDerivedColumnReferences(RqDerivedColumn* pTarget) { ReplaceSmartPtrReferences(pTarget); }
  /// The block whose select list holds the column; null for a column that is in none.
  RqAbstractList* GetRqAbstractListContainer() const;

  /// When the replacement is a derived column, every reference to this one is aimed at it.
  void Replace(RqNode* pReplacement, RqNode& releaseContainer) override;
  /// The references are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::int32_t m_columnNum;
  BreakStatus m_breakStatus = kUnknownBreakStatus;

  static constexpr std::tuple kWrittenFields{&RqDerivedColumn::m_columnNum,
                                             RqEnumFieldAs<std::uint16_t>(&RqDerivedColumn::m_breakStatus, kLobData)};
};

using RqDerivedColumnVector = KXNodeVector<RqDerivedColumn*>;

/// What GetSourceTableName answers for a reference whose column is gone.
extern const KXString g_danglingDerivedColumn;

/// A reference to a column of an inner block, which it does not own. It is aimed; or it was read back and only knows
/// the name and number of what it is to be aimed at; or it dangles, since the column is gone. Comparison by order and
/// everything that names the number of the table need one that is aimed.
class RqDerivedColumnReference final
    : public RqNodeImpl<RqDerivedColumnReference, RqColumn, kRqDerivedColumnReference> {
 public:
  RqDerivedColumnReference() = default;
  explicit RqDerivedColumnReference(RqDerivedColumn* pDerivedColumn);
  /// The copy is aimed at the same column. Wanted: it does not know the number that was read back, as nothing is copied
  /// before it is aimed.
  RqDerivedColumnReference(const RqDerivedColumnReference& rhs, bool bNewIDs, bool bDeepCopy);

  /// The number of the column, aimed or as it was read back.
  virtual int GetColumnNumber() const;
  /// Whether it has not been aimed since it was read back.
  virtual bool IsRqTreeVectorForm() const { return m_bTreeVectorForm; }

  bool IsValidDerivedColumnReference() const { return m_ptrDerivedColumn.Get() != nullptr; }
  /// Lends the column; a logic error if there is none.
  RqDerivedColumn* GetDerivedColumn() const;
  void SetDerivedColumn(RqDerivedColumn* pDerivedColumn) { m_ptrDerivedColumn = pDerivedColumn; }
  /// "D" and the number of the derived table that holds the column; empty if it is in none; the name that was read
  /// back; g_danglingDerivedColumn when the column is gone.
  KXString GetSourceTableName() const;
  /// The number of that table; 0 if it is in none.
  int GetSourceTableNumber() const;
  /// "c" and the number of the column; empty if there is none.
  KXString GetColumnName() const;
  /// Aims the reference at the column with the same identity in pTable, the copy of a derived table that it refers to.
  /// False, and nothing is changed, if there is none. pTable must be a derived table of the number referred to.
  bool AdjustDerivedColumnPtr(const RqIdentifiedTable* pTable);

  bool IsDerivedColumnReference() const override { return true; }
  /// Whether the table is a derived one of the source's number.
  bool RefersTo(const RqIdentifiedTable* pTable) const override;
  /// The same column, or one of the same number in a table of the same number.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  /// Own fields first: the names by which ReattachDerivedColumn finds the column again. A logic error for a reference
  /// that is not aimed.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  RqDerivedColumn* FindDerivedColumn() const { return static_cast<RqDerivedColumn*>(m_ptrDerivedColumn.Get()); }

  bool m_bTreeVectorForm = true;
  SmartRqNodePtr m_ptrDerivedColumn;
  // As read back.
  KXString m_tableName;
  std::int32_t m_columnNumber = RqDerivedColumn::kUnknownColumnNum;
};
