#pragma once

#include <utility>
#include <vector>

#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Node/SQORHeap.h"

class RqAbstractList;
class RqDerivedTable;
class RqTableReference;

enum SortOrder_t { kDescendingSortOrder = -1, kAscendingSortOrder = 1 };

/// A key column of a join: a column of a derived table by its index, and how its rows come.
class ColumnInfo {
 public:
  ColumnInfo() = default;
  /// The table is lent.
  ColumnInfo(RqDerivedTable* pDerivedTable, int columnIndex, SortOrder_t sortOrderType, bool bNullsAreEqual)
      : m_pDerivedTable(pDerivedTable),
        m_columnIndex(columnIndex),
        m_sortOrderType(sortOrderType),
        m_nullsAreEqualFlag(bNullsAreEqual) {}

  RqDerivedTable* GetDerivedTable() const { return m_pDerivedTable; }
  int GetColumnIndex() const { return m_columnIndex; }
  SortOrder_t GetSortOrderType() const { return m_sortOrderType; }
  /// Whether a null matches a null.
  bool GetNullsAreEqualFlag() const { return m_nullsAreEqualFlag; }

  // Wanted: always true. They are there so that a vector of columns can be instantiated whole; whoever sorts or
  // searches by them gets nonsense.
  friend bool operator<(const ColumnInfo&, const ColumnInfo&) { return true; }
  friend bool operator==(const ColumnInfo&, const ColumnInfo&) { return true; }

 private:
  RqDerivedTable* m_pDerivedTable = nullptr;
  int m_columnIndex = -1;
  SortOrder_t m_sortOrderType = kAscendingSortOrder;
  bool m_nullsAreEqualFlag = false;
};

using ColumnInfoVector = KXNodeVector<ColumnInfo>;

/// What the code generator has to know of a join in a nest of joins: its block, its reference, and its two inputs. All
/// pointers are lent, and a copy is lent the same ones.
class NodeInfo : public memalloc::MemAllocNewdel {
 public:
  NodeInfo() = default;
  NodeInfo(RqAbstractList* pAbstractList, RqTableReference* pJoinRef)
      : m_pAbstractList(pAbstractList), m_pJoinRef(pJoinRef) {}

  RqAbstractList* GetAbstractList() const { return m_pAbstractList; }
  void SetAbstractList(RqAbstractList* pAbstractList) { m_pAbstractList = pAbstractList; }
  RqTableReference* GetJoinRef() const { return m_pJoinRef; }
  void SetJoinRef(RqTableReference* pJoinRef) { m_pJoinRef = pJoinRef; }
  bool GetLeftChildIsLeaf() const { return m_leftChildIsLeaf; }
  void SetLeftChildIsLeaf(bool bIsLeaf) { m_leftChildIsLeaf = bIsLeaf; }
  bool GetRightChildIsLeaf() const { return m_rightChildIsLeaf; }
  void SetRightChildIsLeaf(bool bIsLeaf) { m_rightChildIsLeaf = bIsLeaf; }
  const ColumnInfoVector& GetColumnInfoVector() const { return m_columnInfoVector; }
  void SetColumnInfoVector(ColumnInfoVector columnInfos) { m_columnInfoVector = std::move(columnInfos); }
  /// Whether the join becomes part of the one above it.
  bool GetAbsorbJoin() const { return m_bAbsorbJoin; }
  void SetAbsorbJoin(bool bAbsorb) { m_bAbsorbJoin = bAbsorb; }
  /// How many parameters the input is given from outside the join.
  int GetLeftExternalParamCount() const { return m_leftExternalParamCount; }
  void SetLeftExternalParamCount(int count) { m_leftExternalParamCount = count; }
  int GetRightExternalParamCount() const { return m_rightExternalParamCount; }
  void SetRightExternalParamCount(int count) { m_rightExternalParamCount = count; }

 private:
  RqAbstractList* m_pAbstractList = nullptr;
  RqTableReference* m_pJoinRef = nullptr;
  bool m_leftChildIsLeaf = false;
  bool m_rightChildIsLeaf = false;
  ColumnInfoVector m_columnInfoVector;
  bool m_bAbsorbJoin = false;
  int m_leftExternalParamCount = 0;
  int m_rightExternalParamCount = 0;
};

/// Owns its records.
using NodeInfoVector = OwnedRqPtrVector<KXNodeVector<NodeInfo*>>;
