#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXAssert.h"
#include "Host/Ref.h"
#include "Host/StatsStruct.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

// Lists that add one thing to another list.

/// What the wrappers of one inner list have in common: the slot that holds it, and its select list for their own.
template <class Derived, RqNodeType_e kKind>
class RqWrapperList : public RqNodeImpl<Derived, RqAbstractList, kKind> {
 public:
  enum { kInnerRqAbstractList, kNumChildren };

  using RqNodeImpl<Derived, RqAbstractList, kKind>::RqNodeImpl;
  RqWrapperList() = default;
  /// Takes it.
  explicit RqWrapperList(RqAbstractList* pInnerRqAbstractList) {
    KX_ASSERT(pInnerRqAbstractList);
    this->AddChild(pInnerRqAbstractList);
  }

  RqAbstractList* GetInnerList() {
    return this->GetNumChildren() ? static_cast<RqAbstractList*>(this->GetIthChild(kInnerRqAbstractList)) : nullptr;
  }
  const RqAbstractList* GetInnerList() const { return const_cast<RqWrapperList*>(this)->GetInnerList(); }
  RqProjection* GetProjection() override { return GetInnerList() ? GetInnerList()->GetProjection() : nullptr; }
  using RqAbstractList::GetProjection;
  bool IsLeafTable() const override { return false; }
};

/// A further reader of a list that stands elsewhere in the request. It has a select list of its own and lends the list,
/// which must outlive it.
class RqSharedList final : public RqNodeImpl<RqSharedList, RqAbstractList, kRqSharedList> {
 public:
  enum { kProjection, kNumChildren };

  /// Takes the select list, which may be null, and marks the list, if there is one, as shared.
  RqSharedList(RqProjection* pProjection, RqAbstractList* pShared);
  /// Reads the same list.
  RqSharedList(const RqSharedList& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_pSharedRqList(rhs.m_pSharedRqList) {}

  /// Null after a read-back.
  RqAbstractList* GetSharedRqList() const { return m_pSharedRqList; }
  KXAVirtualTableListStream* GetInnerSharedVirtualTableStream() const {
    return m_pSharedRqList ? m_pSharedRqList->GetSharedVirtualTableStream() : nullptr;
  }

  RqProjection* GetProjection() override;
  using RqAbstractList::GetProjection;
  bool IsRqSharedList() const override { return true; }
  bool IsLeafTable() const override { return false; }

 private:
  RqAbstractList* m_pSharedRqList;
};

/// Shows equal values of successive rows once. It knows its columns by number, so that columns that the inner list gets
/// later do not matter.
class RqBreakFilter final : public RqWrapperList<RqBreakFilter, kRqBreakFilter> {
 public:
  RqBreakFilter() = default;
  /// Takes the inner list, which must have the columns of those indexes; there must be at least one.
  RqBreakFilter(RqAbstractList* pInner, const UInt16Vector& breakColumnIndexes);
  /// The rows need no order by those columns of the first vector that stand in the second one too.
  RqBreakFilter(RqAbstractList* pInner, const UInt16Vector& breakColumnIndexes, const UInt16Vector& noOrderByIndexes);
  RqBreakFilter(const RqBreakFilter& rhs, bool bNewIDs, bool bDeepCopy);

  void GetBreakColumnNumbers(UInt16Vector& numbers) const { numbers = m_breakColumnNumbers; }
  void GetNoOrderByBreakColumnNumbers(UInt16Vector& numbers) const { numbers = m_NoOrderByBreakColumnNumbers; }
  bool HasNoOrderByBreakColumnNumbers() const { return !m_NoOrderByBreakColumnNumbers.empty(); }
  /// Appends where the break columns stand now; with bDistinct none that is in the vector already. A column that is
  /// gone is a logic error.
  void GetBreakColumnIndexes(UInt16Vector& indexes, bool bDistinct) const { CollectIndexes(indexes, bDistinct, false); }
  /// As GetBreakColumnIndexes, without the columns that need no order.
  void GetBreakColumnIndexesAccountForNoOrderBy(UInt16Vector& indexes, bool bDistinct) const {
    CollectIndexes(indexes, bDistinct, true);
  }

  bool IsRqBreakFilter() const override { return true; }
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  void CollectIndexes(UInt16Vector& indexes, bool bDistinct, bool bAccountForNoOrderBy) const;

  UInt16Vector m_breakColumnNumbers;
  UInt16Vector m_NoOrderByBreakColumnNumbers;

  static constexpr std::tuple kWrittenFields{&RqBreakFilter::m_breakColumnNumbers,
                                             &RqBreakFilter::m_NoOrderByBreakColumnNumbers};
};

/// Two lists, lent, the outer one first, and the indexes of the columns of each by which they are joined.
using MolapQueryAndJoinIndex =
    std::pair<std::pair<RqAbstractList*, RqAbstractList*>, std::pair<Int32Vector, Int32Vector>>;
using MolapQueryAndJoinIndexVector = std::vector<MolapQueryAndJoinIndex>;

using StarJoinQueryAndJoinIndex = MolapQueryAndJoinIndex;
using StarJoinQueryAndJoinIndexVector = MolapQueryAndJoinIndexVector;
using FilterJoinQueryAndJoinIndex = MolapQueryAndJoinIndex;
using FilterJoinQueryAndJoinIndexVector = MolapQueryAndJoinIndexVector;

/// What the two joins inside a cube have in common: the lists that the inner one is joined to, each once. They are
/// lent, copied as they are, and do not travel.
template <class Derived, RqNodeType_e kKind>
class RqMolapJoin : public RqWrapperList<Derived, kKind> {
 public:
  using RqWrapperList<Derived, kKind>::RqWrapperList;
  RqMolapJoin() = default;
  RqMolapJoin(const RqMolapJoin& rhs, bool bNewIDs, bool bDeepCopy)
      : RqWrapperList<Derived, kKind>(rhs, bNewIDs, bDeepCopy), m_entries(rhs.m_entries) {}

 protected:
  using Entries = MolapQueryAndJoinIndexVector;

  /// The entry that joins pList; the end if there is none.
  Entries::iterator Find(const RqAbstractList* pList) {
    return std::find_if(m_entries.begin(), m_entries.end(),
                        [pList](const MolapQueryAndJoinIndex& entry) { return entry.first.second == pList; });
  }
  bool Remove(const MolapQueryAndJoinIndex& entry) {
    const auto it = Find(entry.first.second);
    if (it == m_entries.end()) return false;
    m_entries.erase(it);
    return true;
  }
  void AppendLists(std::vector<RqAbstractList*>& lists) const {
    for (const MolapQueryAndJoinIndex& entry : m_entries) lists.push_back(entry.first.second);
  }

  Entries m_entries;
};

/// A list of a cube joined to the lists of its star.
class RqMolapStarJoin final : public RqMolapJoin<RqMolapStarJoin, kRqMolapStarJoin> {
 public:
  using RqMolapJoin::RqMolapJoin;

  void GetStarJoinQueriesAndJoinIndexes(StarJoinQueryAndJoinIndexVector& entries) const { entries = m_entries; }
  void SetStarJoinQueriesAndJoinIndexes(StarJoinQueryAndJoinIndexVector& entries) { m_entries = entries; }
  StarJoinQueryAndJoinIndexVector::iterator GetStarJoinQueryAndJoinIndexesForList(RqAbstractList* pList) {
    return Find(pList);
  }
  /// Whether there was an entry for the same list.
  bool RemoveStarJoinQueryAndJoinIndexes(const StarJoinQueryAndJoinIndex& entry) { return Remove(entry); }
  /// Appends the lists joined to.
  void GetStarJoinLists(std::vector<RqAbstractList*>& lists) const { AppendLists(lists); }

  bool IsRqMolapStarJoin() const override { return true; }
};

/// A list of a cube that lists of other cubes filter.
class RqMolapFilterJoin final : public RqMolapJoin<RqMolapFilterJoin, kRqMolapFilterJoin> {
 public:
  using RqMolapJoin::RqMolapJoin;

  void GetFilterJoinQueriesAndJoinIndexes(FilterJoinQueryAndJoinIndexVector& entries) const { entries = m_entries; }
  void SetFilterJoinQueriesAndJoinIndexes(FilterJoinQueryAndJoinIndexVector& entries) { m_entries = entries; }
  FilterJoinQueryAndJoinIndexVector::iterator GetFilterJoinQueryAndJoinIndexesForList(RqAbstractList* pList) {
    return Find(pList);
  }
  /// False, and nothing is added, if there is an entry for the same list.
  bool AddFilterJoinQueriesAndJoinIndex(const FilterJoinQueryAndJoinIndex& entry);
  bool RemoveFilterJoinQueryAndJoinIndexes(const FilterJoinQueryAndJoinIndex& entry) { return Remove(entry); }
  void GetFilterJoinLists(std::vector<RqAbstractList*>& lists) const { AppendLists(lists); }

  bool IsRqMolapFilterJoin() const override { return true; }
};

/// Marks the list over which a request has its canonical form.
class RqCanonicalMap final : public RqWrapperList<RqCanonicalMap, kRqCanonicalMap> {
 public:
  enum { kInnerList };
  using RqWrapperList::RqWrapperList;
  bool IsRqCanonicalMap() const override { return true; }
};

/// Counts what the inner list does.
class RqStats final : public RqWrapperList<RqStats, kRqStats> {
 public:
  enum { kInnerList };
  RqStats() = default;
  /// Takes the list and shares the record, which may be null.
  RqStats(RqAbstractList* pInner, RefCnt<StatsStruct> refCntStatsStruct)
      : RqWrapperList(pInner), m_refCntStatsStruct(std::move(refCntStatsStruct)) {}
  RqStats(const RqStats& rhs, bool bNewIDs, bool bDeepCopy)
      : RqWrapperList(rhs, bNewIDs, bDeepCopy), m_refCntStatsStruct(rhs.m_refCntStatsStruct) {}

  const RefCnt<StatsStruct>& GetStatsStruct() const { return m_refCntStatsStruct; }

  bool IsRqStats() const override { return true; }
  void ToByteVector(ByteVector& bv) override;
  /// Makes a record of its own.
  const_iterator FromByteVector(const_iterator start) override;

 private:
  RefCnt<StatsStruct> m_refCntStatsStruct;
};
