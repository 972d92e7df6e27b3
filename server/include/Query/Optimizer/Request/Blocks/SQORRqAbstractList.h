#pragma once

#include <cstdint>

#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

class KXAVirtualTableListStream;
class RqDerivedTable;
class RqProjection;

/// Whatever yields rows with a projection: a query block, a set operator, a wrapper, a statement.
class RqAbstractList : public RqAbstractTable {
 public:
  RqAbstractList() = default;
  /// The copy reads the same run-time stream.
  RqAbstractList(const RqAbstractList& rhs, bool bNewIDs, bool bDeepCopy);

  virtual bool IsRqCanonicalMap() const { return false; }
  virtual bool IsRqList() const { return false; }
  virtual bool IsRqUnion() const { return false; }
  virtual bool IsRqIntersect() const { return false; }
  virtual bool IsRqExcept() const { return false; }
  virtual bool IsRqSharedList() const { return false; }
  virtual bool IsRqBreakFilter() const { return false; }
  virtual bool IsRqCache() const { return false; }
  virtual bool IsRqStats() const { return false; }
  virtual bool IsRqHDSCache() const { return false; }
  virtual bool IsRqMolapStarJoin() const { return false; }
  virtual bool IsRqMolapFilterJoin() const { return false; }
  virtual bool IsRqSummaryAdvisorQuery() const { return false; }
  /// Whether it merges its branches in their order, so that they must come sorted.
  virtual bool IsSortDependentSetOperator() const { return false; }
  /// Whether all that it reads is evaluated in one place.
  virtual bool IsLeafCandidate() const { return false; }
  /// Lends the select list that the rows follow; null when there is none.
  virtual RqProjection* GetProjection() = 0;
  const RqProjection* GetProjection() const { return const_cast<RqAbstractList*>(this)->GetProjection(); }

  /// The derived table that this block stands in, at any depth; null if there is none.
  RqDerivedTable* GetRqDerivedTableContainer() const;

  /// Whether shared lists read it.
  bool IsShared() const { return m_bShared; }
  void SetShared(bool bShared) { m_bShared = bShared; }
  /// The stream through which the shared lists read it; lent by the execution layer.
  KXAVirtualTableListStream* GetSharedVirtualTableStream() const { return m_pSharedVirtualTableListStream; }
  void SetSharedVirtualTableStream(KXAVirtualTableListStream* pStream) { m_pSharedVirtualTableListStream = pStream; }
  /// Whether it may be sent to a database as a common table expression.
  bool IsWithSupported() const { return m_bWithSupported; }
  void SetWithSupported(bool bWithSupported) { m_bWithSupported = bWithSupported; }
  /// The most rows it yields; 0 means no limit.
  std::uint32_t GetRowNumLimit() const { return m_rowNumLimit; }
  void SetRowNumLimit(std::uint32_t rowNumLimit) { m_rowNumLimit = rowNumLimit; }
  /// The rows it passes over first.
  std::uint32_t GetRowNumOffset() const { return m_rowNumOffset; }
  void SetRowNumOffset(std::uint32_t rowNumOffset) { m_rowNumOffset = rowNumOffset; }

  /// Wanted: always false, so that only a class that says otherwise is ever held equal to another, and set operators
  /// are never merged.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  /// Limit, offset and stream are left out: a block that was read back has none.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;
  RqNodeType_e GetObjectType() const override { return kRqAbstractList; }

 private:
  bool m_bShared = false;
  std::uint32_t m_rowNumLimit = 0;
  std::uint32_t m_rowNumOffset = 0;
  KXAVirtualTableListStream* m_pSharedVirtualTableListStream = nullptr;
  bool m_bWithSupported = true;

  static constexpr std::tuple kWrittenFields{&RqAbstractList::m_bShared, &RqAbstractList::m_bWithSupported};
};
