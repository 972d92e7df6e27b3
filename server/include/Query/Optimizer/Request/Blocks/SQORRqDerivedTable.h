#pragma once

#include "Host/KXString.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"

class RqAbstractList;

/// A block that is read as a table.
class RqDerivedTable final : public RqNodeImpl<RqDerivedTable, RqIdentifiedTable, kRqDerivedTable> {
 public:
  enum { kInnerList, kNumChildren };
  static const KXString kTablePrefix;  ///< "D", in front of the table's number in the text form.

  /// Takes the block; null is for a node that is read back.
  RqDerivedTable(RqAbstractList* pInner, int tableNumber);
  RqDerivedTable(const RqDerivedTable& rhs, bool bNewIDs, bool bDeepCopy);

  /// The name of the common table expression that the block is sent as; empty if it is none.
  virtual const KXString& GetCommonExprName() const { return m_commonExprName; }
  virtual void SetCommonExprName(const KXString& commonExprName) { m_commonExprName = commonExprName; }

  /// Lends the block. Asserts that there is one.
  RqAbstractList* GetInnerList();
  const RqAbstractList* GetInnerList() const { return const_cast<RqDerivedTable*>(this)->GetInnerList(); }
  /// Frees the block that stands and takes the new one.
  void SetInnerList(RqAbstractList* pInner);
  /// Whether the engine itself runs the block.
  bool IsInternalExec() const { return m_bInternalExec; }
  void SetInternalExec(bool bInternalExec) { m_bInternalExec = bInternalExec; }

  bool IsDerivedTable() const override { return true; }
  /// Whether the block is a leaf.
  bool IsLeafTable() const override;
  /// Whether both have a block and these are equivalent. Wanted: neither numbers nor names take part.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  /// The mark of internal execution is left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  KXString m_commonExprName;
  bool m_bInternalExec = false;
};
