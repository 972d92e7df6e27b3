#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/SqlTableRef.h"
#include "Query/Optimizer/Request/Blocks/SQORNodeInfo.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

class RqAtomicTable;
class RqDerivedTable;
class RqExprParam;

/// The side whose rows are read first and drive what is read of the other. The numbers travel in byte forms.
enum DrivingTableHint : std::uint16_t { kDriving_LeftTable, kDriving_RightTable, kDriving_UnknownTable };

/// The side that a hash table is built of.
enum HashTableHint : std::uint16_t { kHash_LeftTable, kHash_RightTable, kHash_UnknownTable, kHash_NoHashJoin };

/// Indexes of columns in a schema of rows.
using SchemaCountVector = Int32Vector;
using RqExprParamVector = KXNodeVector<RqExprParam*>;

/// A table of a FROM clause, alone or joined with a second one. A nest of references is a tree of joins, whose leaves
/// are identified tables. A right outer join is turned into a left one when the reference is made.
class RqTableReference final : public RqNodeImpl<RqTableReference, RqAbstractTable, kRqTableReference> {
 public:
  enum { kLeftTable, kSearchCond, kRightTable, kNumChildren };

  /// Target of FromByteVector: three empty slots.
  RqTableReference();
  /// Takes both tables and the condition. The right table and the condition may be null.
  RqTableReference(SqlTableRef::JoinType joinType, RqAbstractTable* pLeft, RqExprCond* pCond, RqAbstractTable* pRight,
                   DrivingTableHint drivingTableHint);
  /// The copy has execution records of its own. Columns, parameters and the pointers of the records stay aimed where
  /// the source's are.
  RqTableReference(const RqTableReference& rhs, bool bNewIDs, bool bDeepCopy);

  // The children. Each setter frees what stands in the slot.
  RqAbstractTable* GetLeftTable() { return static_cast<RqAbstractTable*>(GetIthChild(kLeftTable)); }
  const RqAbstractTable* GetLeftTable() const { return static_cast<const RqAbstractTable*>(GetIthChild(kLeftTable)); }
  void SetLeftTable(RqAbstractTable* pTable) { SetIthChild(kLeftTable, pTable); }
  RqExprCond* GetSearchCond() { return static_cast<RqExprCond*>(GetIthChild(kSearchCond)); }
  const RqExprCond* GetSearchCond() const { return static_cast<const RqExprCond*>(GetIthChild(kSearchCond)); }
  void SetSearchCond(RqExprCond* pCond) { SetIthChild(kSearchCond, pCond); }
  RqAbstractTable* GetRightTable() { return static_cast<RqAbstractTable*>(GetIthChild(kRightTable)); }
  const RqAbstractTable* GetRightTable() const { return static_cast<const RqAbstractTable*>(GetIthChild(kRightTable)); }
  void SetRightTable(RqAbstractTable* pTable) { SetIthChild(kRightTable, pTable); }

  SqlTableRef::JoinType GetJoinType() const { return m_joinTypeTag; }
  /// Wanted: takes a right outer join as it is; tables and hint stay where they are.
  void SetJoinType(SqlTableRef::JoinType joinType) { m_joinTypeTag = joinType; }
  SqlTableRef::JoinSubType GetJoinSubType() const { return m_joinSubTypeTag; }
  void SetJoinSubType(SqlTableRef::JoinSubType joinSubType) { m_joinSubTypeTag = joinSubType; }
  bool IsEagerJoin() const { return m_joinSubTypeTag == SqlTableRef::kEagerJoin; }
  bool IsIndexJoin() const { return m_joinSubTypeTag == SqlTableRef::kIndexJoin; }
  DrivingTableHint GetDrivingTableHint() const { return m_drivingTableHint; }
  void SetDrivingTableHint(DrivingTableHint hint) { m_drivingTableHint = hint; }

  // The columns that are joined, pair by pair: indexes in the rows of either side, and whether a null matches a null.
  const SchemaCountVector& GetLeftJoinColumnIndexes() const { return m_leftJoinColumnIndexes; }
  void SetLeftJoinColumnIndexes(const SchemaCountVector& indexes) { m_leftJoinColumnIndexes = indexes; }
  const SchemaCountVector& GetRightJoinColumnIndexes() const { return m_rightJoinColumnIndexes; }
  void SetRightJoinColumnIndexes(const SchemaCountVector& indexes) { m_rightJoinColumnIndexes = indexes; }
  const BooleanVector& GetNullsAreEqualFlags() const { return m_nullsAreEqualFlags; }
  void SetNullsAreEqualFlags(const BooleanVector& flags) { m_nullsAreEqualFlags = flags; }

  /// Whether this reference may go if nothing needs its columns.
  bool GetRemoveCandidacy() const { return m_bRemoveCandidate; }
  /// Sets it for the references below, too.
  void SetRemoveCandidacy(bool bRemoveCandidate);
  /// The place of the table among the fact tables of a join; -1 for a table that is none.
  int GetFactTableIndex() const { return m_factTableIndex; }
  void SetFactTableIndex(int index) { m_factTableIndex = index; }
  /// Whether a join above does this one's work.
  bool IsJoinAbsorbed() const { return m_bJoinAbsorbed; }
  void SetJoinAbsorbed(bool bAbsorbed) { m_bJoinAbsorbed = bAbsorbed; }
  /// Lends the execution records; null if there are none.
  NodeInfoVector* GetNodeInfoVector() const { return m_pNodeInfoVector.Get(); }
  /// Takes the records.
  void SetNodeInfoVector(NodeInfoVector* pNodeInfos) { m_pNodeInfoVector = pNodeInfos; }
  /// What a multi-way join yields; the columns are lent.
  const RqDerivedColumnVector& GetMultiJoinProjectedColumns() const { return m_multiJoinProjectedColumns; }
  void SetMultiJoinProjectedColumns(const RqDerivedColumnVector& columns) { m_multiJoinProjectedColumns = columns; }
  /// The parameters through which the driving side of an internal join gives its values to the other; lent.
  const RqExprParamVector& GetInternalDriveJoinParameters() const { return m_internalParamsVector; }
  void SetInternalDriveJoinParameters(const RqExprParamVector& params) { m_internalParamsVector = params; }
  bool IsMolapStarJoin() const { return m_bIsMolapStarJoin; }
  void SetMolapStarJoin(bool bIsMolapStarJoin) { m_bIsMolapStarJoin = bIsMolapStarJoin; }
  HashTableHint GetHashJoinHint() const { return m_bHashJoinHint; }
  void SetHashJoinHint(HashTableHint hint) { m_bHashJoinHint = hint; }
  /// In bytes; 0 when unknown.
  std::uint64_t GetEstimatedDictionarySize() const { return m_estimatedDictionarySize; }
  void SetEstimatedDictionarySize(std::uint64_t size) { m_estimatedDictionarySize = size; }
  /// -1 when unknown.
  std::int64_t GetDictionaryRowCount() const { return m_dictionaryRowCount; }
  void SetDictionaryRowCount(std::int64_t rowCount) { m_dictionaryRowCount = rowCount; }

  /// Whether it stands for one identified table.
  bool IsDeclarativeTableReference() const;
  /// Whether it stands for one derived table.
  bool IsDerivedTableReference() const;
  /// Lends that derived table. Asserts that there is one.
  RqDerivedTable* GetDerivedTable();
  const RqDerivedTable* GetDerivedTable() const { return const_cast<RqTableReference*>(this)->GetDerivedTable(); }
  /// Whether any reference of the nest is something else than an inner join; a table that is no reference, or null, has
  /// none such.
  bool HasOuterJoins() const;
  static bool HasOuterJoins(const RqAbstractTable* pTable);
  /// Whether columns of one name are joined without a condition that says so: a natural join, or an inner join without
  /// a condition over tables of a source that joins its tables itself.
  bool IsReallyNaturalJoin() const;
  /// Appends the identified tables of the nest, left to right. A leaf of another kind is a logic error.
  static void CollectIdentifiedTables(RqAbstractTable* pTable, std::list<RqIdentifiedTable*>& tables);

  bool IsTableReference() const override { return true; }
  /// Whether a database runs the join.
  bool IsLeafTable() const override;
  /// Join type, condition, and tables. Wanted: what the engine itself runs is equivalent to nothing, not even to
  /// itself.
  bool IsEquivalent(const RqAbstractTable& rhs) const override;
  /// The hash hint, the execution records, the columns of a multi-way join and the parameters are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  SqlTableRef::JoinType m_joinTypeTag = SqlTableRef::kInnerJoin;
  SqlTableRef::JoinSubType m_joinSubTypeTag = SqlTableRef::kUnknownJoinSubType;
  DrivingTableHint m_drivingTableHint = kDriving_UnknownTable;
  SchemaCountVector m_leftJoinColumnIndexes;
  SchemaCountVector m_rightJoinColumnIndexes;
  BooleanVector m_nullsAreEqualFlags;
  bool m_bRemoveCandidate = false;
  std::int32_t m_factTableIndex = -1;
  bool m_bJoinAbsorbed = false;
  Heap<NodeInfoVector> m_pNodeInfoVector;
  RqDerivedColumnVector m_multiJoinProjectedColumns;
  RqExprParamVector m_internalParamsVector;
  bool m_bIsMolapStarJoin = false;
  HashTableHint m_bHashJoinHint = kHash_NoHashJoin;
  std::uint64_t m_estimatedDictionarySize = 0;
  std::int64_t m_dictionaryRowCount = -1;

  static constexpr std::tuple kWrittenFields{
      RqEnumFieldAs<std::uint16_t>(&RqTableReference::m_joinTypeTag, SqlTableRef::kNaturalJoin),
      RqEnumFieldAs<std::uint16_t>(&RqTableReference::m_joinSubTypeTag, SqlTableRef::kIndexJoin),
      RqEnumFieldAs<std::uint16_t>(&RqTableReference::m_drivingTableHint, kDriving_UnknownTable),
      &RqTableReference::m_factTableIndex,
      &RqTableReference::m_bJoinAbsorbed,
      &RqTableReference::m_nullsAreEqualFlags,
      &RqTableReference::m_leftJoinColumnIndexes,
      &RqTableReference::m_rightJoinColumnIndexes,
      &RqTableReference::m_bRemoveCandidate,
      &RqTableReference::m_bIsMolapStarJoin,
      &RqTableReference::m_estimatedDictionarySize,
      &RqTableReference::m_dictionaryRowCount};
};

/// Appends the identified tables of the nest, left to right. A leaf of another kind, or a reference without a left
/// table, is a logic error.
void CollectIdentifiedTables(RqTableReference* pTableRef, std::list<RqIdentifiedTable*>& tables);

/// Appends the tables below and at pNode, which may be null, that are plain RqAtomicTable and no class derived from it,
/// left to right. Blocks of derived tables are searched, too.
void GetAllDescendentAtomicTables(RqNode* pNode, std::list<RqAtomicTable*>& tables);
