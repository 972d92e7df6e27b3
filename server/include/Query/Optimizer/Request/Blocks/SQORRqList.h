#pragma once

#include <cstdint>
#include <vector>

#include "Host/HDSSummaryParameters.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqFilter.h"
#include "Query/Optimizer/Request/Blocks/SQORRqGroupBy.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOrderBy.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"

class RqJoinSpec;
class RqTableReference;

/// A statement that is run ahead of a block, to learn what the block will meet.
struct ProbeQuery {
  enum ProbeQueryType : std::uint8_t {
    kVBLProbeQuery,
    kFactProbeQuery,
    kDimensionProbeQuery,
    kFactDimensionProbeQuery,
    kUnknownProbeQuery
  };

  KXString m_MeasureName;
  ProbeQueryType m_ProbeQueryType = kUnknownProbeQuery;
  KXString m_ProbeSql;
  KXStringVector m_PresentationColumns;
  VoidID m_VBLConnectionPoolID;

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);
};

/// A query block: one SELECT. Its seven clauses stand in slots of their own and are null where the block has none; only
/// the select list is there from the start. A setter takes the clause and deletes the one that stood there.
///
/// DISTINCT is dropped as soon as the grouping alone makes the rows distinct: SetDistinct and SetGroupBy see to it.
/// Wanted: SetProjection does not.
class RqList final : public RqNodeImpl<RqList, RqAbstractList, kRqList> {
 public:
  enum { kProjection, kJoinSpec, kDetailFilter, kSummaryFilter, kGroupBy, kHaving, kOrderBy, kNumChildren };

  /// An empty select list, whose columns are numbered behind startingNumber.
  explicit RqList(int startingNumber);
  /// Wanted: the copy is in no catalog folder.
  RqList(const RqList& rhs, bool bNewIDs, bool bDeepCopy);

  RqProjection* GetProjection() override { return static_cast<RqProjection*>(GetIthChild(kProjection)); }
  using RqAbstractList::GetProjection;
  void SetProjection(RqProjection* pProjection) { SetIthChild(kProjection, pProjection); }
  RqJoinSpec* GetJoinSpec();
  const RqJoinSpec* GetJoinSpec() const { return const_cast<RqList*>(this)->GetJoinSpec(); }
  void SetJoinSpec(RqJoinSpec* pJoinSpec);
  RqDetailFilter* GetDetailFilter() { return static_cast<RqDetailFilter*>(GetIthChild(kDetailFilter)); }
  const RqDetailFilter* GetDetailFilter() const { return const_cast<RqList*>(this)->GetDetailFilter(); }
  void SetDetailFilter(RqDetailFilter* pFilter) { SetIthChild(kDetailFilter, pFilter); }
  RqSummaryFilter* GetSummaryFilter() { return static_cast<RqSummaryFilter*>(GetIthChild(kSummaryFilter)); }
  const RqSummaryFilter* GetSummaryFilter() const { return const_cast<RqList*>(this)->GetSummaryFilter(); }
  void SetSummaryFilter(RqSummaryFilter* pFilter) { SetIthChild(kSummaryFilter, pFilter); }
  RqGroupBy* GetGroupBy() { return static_cast<RqGroupBy*>(GetIthChild(kGroupBy)); }
  const RqGroupBy* GetGroupBy() const { return const_cast<RqList*>(this)->GetGroupBy(); }
  void SetGroupBy(RqGroupBy* pGroupBy);
  RqHaving* GetHaving() { return static_cast<RqHaving*>(GetIthChild(kHaving)); }
  const RqHaving* GetHaving() const { return const_cast<RqList*>(this)->GetHaving(); }
  void SetHaving(RqHaving* pHaving) { SetIthChild(kHaving, pHaving); }
  RqOrderBy* GetOrderBy() { return static_cast<RqOrderBy*>(GetIthChild(kOrderBy)); }
  const RqOrderBy* GetOrderBy() const { return const_cast<RqList*>(this)->GetOrderBy(); }
  void SetOrderBy(RqOrderBy* pOrderBy) { SetIthChild(kOrderBy, pOrderBy); }

  /// Takes a condition that every row must satisfy too.
  void ConcatenateToDetailFilter(RqExprCond* pCond);

  bool IsDistinct() const { return m_bDistinct; }
  void SetDistinct(bool bDistinct) { m_bDistinct = bDistinct && !GroupByCoveredByProjection(); }
  /// Whether rows are kept that hold nothing but nulls.
  bool IsUnsuppressed() const { return m_bUnsuppressed; }
  void SetUnsuppressed(bool bUnsuppressed) { m_bUnsuppressed = bUnsuppressed; }
  /// Whether it goes to the engine without navigation.
  bool IsBypassNavigation() const { return m_bBypassNavigation; }
  void MarkBypassNavigation(bool bBypassNavigation) { m_bBypassNavigation = bBypassNavigation; }
  /// Indexes of the columns on which the rows break.
  void GetBreakColumns(UInt16Vector& breakColumns) const { breakColumns = m_breakColumns; }
  void SetBreakColumns(const UInt16Vector& breakColumns) { m_breakColumns = breakColumns; }
  const VoidID& GetCatalogFolderID() const { return m_catalogFolderID; }
  void SetCatalogFolderID(const VoidID& catalogFolderID) { m_catalogFolderID = catalogFolderID; }
  /// How far the database may sample when it plans the block.
  std::uint32_t GetDynamicSamplingLevel() const { return m_DynamicSamplingLevel; }
  void SetDynamicSamplingLevel(std::uint32_t level) { m_DynamicSamplingLevel = level; }
  /// Whether a rewriting of predicates made it.
  bool IsPredicateRewrite() const { return m_bPredicateRewrite; }
  void SetPredicateRewrite(bool bPredicateRewrite) { m_bPredicateRewrite = bPredicateRewrite; }
  void GetProbeSqls(KXNodeVector<ProbeQuery>& probeSqls) const { probeSqls = m_ProbeSqls; }
  void SetProbeSqls(const KXNodeVector<ProbeQuery>& probeSqls) { m_ProbeSqls = probeSqls; }
  bool HasProbeSqls() const { return !m_ProbeSqls.empty(); }
  bool IsHdsEvaluateBreakFilter() const { return m_bHdsEvaluateBreakFilter; }
  void SetHdsEvaluateBreakFilter(bool bEvaluate) { m_bHdsEvaluateBreakFilter = bEvaluate; }
  bool IsHdsSimulateUserDistinct() const { return m_bHdsSimulateUserDistinct; }
  void SetHdsSimulateUserDistinct(bool bSimulate) { m_bHdsSimulateUserDistinct = bSimulate; }
  void GetHDSSummaryParameters(HDSSummaryParameters& parameters) const { parameters = m_HDSSummaryParameters; }
  void SetHDSSummaryParameters(const HDSSummaryParameters& parameters) { m_HDSSummaryParameters = parameters; }
  bool IsMarkedForRemoteRPD() const { return m_bIsMarkedForRemoteRPD; }
  void SetIsMarkedForRemoteRPD(bool bIsMarked) { m_bIsMarkedForRemoteRPD = bIsMarked; }

  /// Whether the select list has every column that the block is grouped by, so that the grouping alone makes its rows
  /// distinct. False without a grouping, and while the environment variable TELM_Remove_Distinct_Based_On_GroupBy is
  /// "NO".
  bool GroupByCoveredByProjection() const;
  /// Whether every table it reads is evaluated in one place, and it is not one itself.
  bool IsLeafParent() const;
  /// Whether it does no more than wrap another block, as rewritings leave it. It must have a FROM clause.
  bool IsArtifactListNode() const;
  /// Whether it does no more than wrap an opaque table. It must have a FROM clause.
  bool IsOpaqueTableWrapper() const;

  bool IsRqList() const override { return true; }
  /// Whether it is marked for a remote target.
  bool IsLeafTable() const override;
  bool IsLeafCandidate() const override;
  /// Select list, tables and filters. Wanted: grouping, group filter, sort and marks take no part, and of blocks that
  /// have no detail filter the summary filters do not either.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  /// The marks for suppression, navigation and predicate rewriting and the folder are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  const RqTableReference* GetSoleTableReference() const;

  bool m_bDistinct = false;
  bool m_bUnsuppressed = false;
  bool m_bBypassNavigation = false;
  UInt16Vector m_breakColumns;
  VoidID m_catalogFolderID;
  std::uint32_t m_DynamicSamplingLevel = 0;
  bool m_bPredicateRewrite = false;
  KXNodeVector<ProbeQuery> m_ProbeSqls;
  bool m_bHdsEvaluateBreakFilter = false;
  bool m_bHdsSimulateUserDistinct = false;
  HDSSummaryParameters m_HDSSummaryParameters;
  bool m_bIsMarkedForRemoteRPD = false;
};
