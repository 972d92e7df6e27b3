#pragma once

#include <cstdint>
#include <vector>

#include "Host/KXDataType.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

class RqList;

using KXTypeInfoVector = KXNodeVector<KXTypeInfo>;

/// A column that rows are sorted by, known by its number in the select list.
class RqSortSpec final : public RqNodeImpl<RqSortSpec, RqNode, kRqSortSpec> {
 public:
  static constexpr int kNoColumn = 0x7fffffff;
  enum SortDirection : std::uint8_t { kAsc, kDesc, kEitherDirection };
  enum NullSortDirection : std::uint8_t { kFirst, kLast, kNoCare };

  /// No column, in either direction.
  RqSortSpec() = default;
  RqSortSpec(int columnNumber, SortDirection direction, bool bNotInLogicalSelect, bool bConstantColumn,
             NullSortDirection nullDirection);
  RqSortSpec(const RqSortSpec& rhs, bool bNewIDs, bool bDeepCopy);
  /// As DeepCopy with a new identity: sort columns are handed around by value.
  RqSortSpec(const RqSortSpec& rhs) : RqSortSpec(rhs, true, true) {}

  int GetColumnNumber() const { return m_columnNumber; }
  void SetColumnNumber(int columnNumber) { m_columnNumber = columnNumber; }
  SortDirection GetSortDirection() const { return m_sortDirection; }
  void SetSortDirection(SortDirection direction) { m_sortDirection = direction; }
  NullSortDirection GetNullSortDirection() const { return m_nullSortDirection; }
  void SetNullSortDirection(NullSortDirection direction) { m_nullSortDirection = direction; }
  /// Whether the column is in the select list for the sort alone, and hidden from users.
  bool GetLogicalSelectListStatus() const { return m_bNotInLogicalSelect; }
  void SetLogicalSelectListStatus(bool bNotInLogicalSelect) { m_bNotInLogicalSelect = bNotInLogicalSelect; }
  /// Whether it has one value in all rows.
  bool IsConstantColumn() const { return m_bConstantColumn; }

  /// Whether the database puts nulls elsewhere in this sort than is wanted.
  bool IsNullSortDirectionIncompatibleWithDB(const RefADatabase& database, ARpGateway* pRp) const;

  /// Whether both sort alike; identities and marks take no part.
  friend bool operator==(const RqSortSpec& lhs, const RqSortSpec& rhs) {
    return lhs.m_columnNumber == rhs.m_columnNumber && lhs.m_sortDirection == rhs.m_sortDirection &&
           lhs.m_bNotInLogicalSelect == rhs.m_bNotInLogicalSelect &&
           lhs.m_nullSortDirection == rhs.m_nullSortDirection && lhs.m_bConstantColumn == rhs.m_bConstantColumn;
  }

  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::int32_t m_columnNumber = kNoColumn;
  SortDirection m_sortDirection = kEitherDirection;
  bool m_bNotInLogicalSelect = false;
  NullSortDirection m_nullSortDirection = kNoCare;
  bool m_bConstantColumn = false;

  static constexpr std::tuple kWrittenFields{
      &RqSortSpec::m_columnNumber, RqEnumFieldAs<std::uint16_t>(&RqSortSpec::m_sortDirection, kEitherDirection),
      &RqSortSpec::m_bNotInLogicalSelect, RqEnumFieldAs<std::uint16_t>(&RqSortSpec::m_nullSortDirection, kNoCare),
      &RqSortSpec::m_bConstantColumn};
};

/// ORDER BY: the columns sorted by, the first one decides first. Behind them stand the aggregates that are to be
/// computed together with the sort, if there are any.
class RqOrderBy final : public RqNodeImpl<RqOrderBy, RqNode, kRqOrderBy> {
 public:
  RqOrderBy() = default;
  /// Copies the sort columns, with their identities.
  RqOrderBy(const std::vector<RqSortSpec>& sortSpecs, bool bAddedForJoin);
  RqOrderBy(const std::vector<RqSortSpec>& sortSpecs, const KXTypeInfoVector& stickyTypes, bool bAddedForJoin);
  RqOrderBy(const RqOrderBy& rhs, bool bNewIDs, bool bDeepCopy);

  int GetNumSortSpecs() const { return m_numSortSpecs; }
  /// Deletes the children past the new end, or appends null ones. There must be no aggregates.
  void SetNumSortSpecs(int numSortSpecs);
  RqSortSpec* GetIthSortSpec(int i);
  const RqSortSpec* GetIthSortSpec(int i) const { return const_cast<RqOrderBy*>(this)->GetIthSortSpec(i); }
  /// Deletes what stands there and takes pSortSpec.
  void SetIthSortSpec(int i, RqSortSpec* pSortSpec) { SetIthChild(i, pSortSpec); }
  /// Appends a copy with the same identity. There must be no aggregates.
  void AddSortSpec(const RqSortSpec& sortSpec);

  /// The types that travel with the sort.
  const KXTypeInfoVector& GetStickyTypes() const { return m_stickyTypeVector; }
  void SetStickyTypes(const KXTypeInfoVector& stickyTypes) { m_stickyTypeVector = stickyTypes; }
  /// Whether a join needs the sort, and not the user.
  bool IsAddedForJoin() const { return m_bAddedForJoin; }
  /// Whether a column must be added to the select list so that the database puts nulls where a sort column wants
  /// them: there is one that the database is incompatible with.
  bool NeedHiddenColumnForNullSortOrder(const RefADatabase& database, ARpGateway* pRp) const;

  bool HasPushDownAggr() const { return GetNumChildren() > m_numSortSpecs; }
  /// Appends a copy, with the same identity, of the aggregate; null for null.
  void AppendPushDownAggr(const RqExpr* pExpr);
  /// Takes the aggregates and leaves the vector with null ones.
  void AppendPushDownAggrs(std::vector<Heap<RqExpr>>& exprs);
  /// Appends a copy of each aggregate.
  void GetPushDownAggrDeepCopy(std::vector<Heap<RqExpr>>& exprs) const;

  /// Gives dest the sort of source, or none if that has none. Columns of both select lists correspond by position. A
  /// column that is sorted by and not in dest is a logic error. Wanted: none counts as hidden in dest.
  static void CopyOrderBy(const RqList& source, RqList& dest);

  /// The types and the mark for a join are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  KXTypeInfoVector m_stickyTypeVector;
  bool m_bAddedForJoin = false;
  std::int32_t m_numSortSpecs = 0;
};
