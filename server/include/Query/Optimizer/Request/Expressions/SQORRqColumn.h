#pragma once

#include <compare>
#include <cstdint>
#include <tuple>

#include "Host/ARpGateway.h"
#include "Host/KXString.h"
#include "Host/RpObjects.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

/// A column that an expression refers to. Logical columns are valid before navigation and physical ones after it.
class RqColumn : public RqExpr {
 public:
  using RqExpr::RqExpr;

  /// Whether the column is one of the table, which may be null. A column that names no table is one of none.
  virtual bool RefersTo([[maybe_unused]] const RqIdentifiedTable* pTable) const { return false; }

  RqNodeType_e GetObjectType() const override { return kRqColumn; }
};

/// A column of the business model.
class RqAttribute final : public RqNodeImpl<RqAttribute, RqColumn, kRqAttribute> {
 public:
  RqAttribute() = default;
  /// The attribute of that identifier in the repository of pRp, of the table that the repository says; without a table
  /// when the repository has no such attribute.
  RqAttribute(ARpGateway* pRp, const VoidID& objID);
  RqAttribute(const RqAttribute& rhs, bool bNewIDs, bool bDeepCopy);

  RefAAttribute GetAttribute(ARpGateway* pRp) const { return RefAAttribute(pRp, m_objID); }
  const VoidID& GetID() const { return m_objID; }
  const VoidID& GetTableID() const { return m_tableObjID; }
  std::uint32_t GetRepositoryUniqueID32() const { return m_repositoryUniqueID; }

  /// Whether its values are ordered by those of another attribute.
  bool HasAlternateSortOrder(ARpGateway* pRp) const { return !GetAlternateSortOrder(pRp).IsNull(); }
  /// That attribute; an empty handle when there is none.
  RefAAttribute GetAlternateSortOrder(ARpGateway* pRp) const;

  bool IsSourceContentMapExpr() const { return m_bSourceContentMapExpr; }
  void SetSourceContentMapExpr(bool bValue) { m_bSourceContentMapExpr = bValue; }
  const VoidID& GetCatalogFolderID() const { return m_catalogFolderID; }
  void SetCatalogFolderID(const VoidID& id) { m_catalogFolderID = id; }
  bool GetIsSortKeyAttribute() const { return m_bIsSortKeyAttribute; }
  void SetIsSortKeyAttribute(bool bValue) { m_bIsSortKeyAttribute = bValue; }
  const KXString& GetDescriptorAttributeName() const { return m_DescriptorAttributeName; }
  void SetDescriptorAttributeName(const KXString& name) { m_DescriptorAttributeName = name; }

  bool IsAttribute() const override { return true; }
  /// Attribute and repository; marks and folder take no part.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  /// The source content map mark and the folder are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  VoidID m_objID;
  VoidID m_tableObjID;
  std::uint32_t m_repositoryUniqueID = ARpGateway::INVALID_UNIQUE_ID_32;
  bool m_bSourceContentMapExpr = false;
  VoidID m_catalogFolderID;
  bool m_bIsSortKeyAttribute = false;
  KXString m_DescriptorAttributeName;

  static constexpr std::tuple kWrittenFields{&RqAttribute::m_repositoryUniqueID, &RqAttribute::m_bIsSortKeyAttribute,
                                             &RqAttribute::m_DescriptorAttributeName, &RqAttribute::m_objID,
                                             &RqAttribute::m_tableObjID};
};

/// A column of a database table: one of the repository, or one that has a name and no repository object. Its table is
/// known by the number that the table has in its block.
class RqTargetColumn : public RqNodeImpl<RqTargetColumn, RqColumn, kRqTargetColumn> {
 public:
  static constexpr int kUnknownTableNum = -1;

  RqTargetColumn() = default;
  /// The column of that identifier in the repository of pRp.
  RqTargetColumn(ARpGateway* pRp, const VoidID& columnID, int tableNum);
  /// A column without a repository object. Its repository ID is above any real one.
  RqTargetColumn(const KXString& name, int tableNum) : m_columnName(name), m_tableNum(tableNum) {}
  RqTargetColumn(const RqTargetColumn& rhs, bool bNewIDs, bool bDeepCopy);

  virtual int GetSourceTableNumber() const { return m_tableNum; }
  virtual void SetSourceTableNumber(int tableNum) { m_tableNum = tableNum; }
  /// IsEquivalent, which with bIgnoreDerivedTypes holds across this class and the classes derived from it.
  virtual bool IsEquivalentIgnoreDerivedTypes(const RqExpr& rhs, const RqEquivalence& pred,
                                              bool bIgnoreDerivedTypes) const;

  const VoidID& GetColumnID() const { return m_columnID; }
  void SetColumnID(const VoidID& columnID) { m_columnID = columnID; }
  std::uint32_t GetRepositoryUniqueID32() const { return m_repositoryUniqueID; }
  /// The name that the repository gives it, and its own when it has no repository object or there is no gateway.
  KXString GetColumnName(ARpGateway* pRp) const;
  /// The logical attributes that the column serves; one that is there already is not added again.
  const VoidIDVector& GetRelatedAttrIds() const { return m_attrIds; }
  void AddRelatedAttrId(const VoidID& attrId);
  bool IsDataMiningColumn() const { return m_bDataMiningColumn; }
  void SetDataMiningColumn(bool bValue) { m_bDataMiningColumn = bValue; }
  /// Lent, and never deleted here; a copy is lent the same one.
  RqNode* GetRelatedRqListPtr() const { return m_relatedRqListPtr; }
  void SetRelatedRqListPtr(RqNode* pRqList) { m_relatedRqListPtr = pRqList; }

  /// Whether the table is an atomic one of this column's number.
  bool RefersTo(const RqIdentifiedTable* pTable) const override;
  bool IsTargetColumn() const override { return true; }
  /// The database of the column's table; of a column without a repository object, that of the target mark.
  RefADatabase GetRpDatabaseObj(ARpGateway* pRp) const override;
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override {
    return IsEquivalentIgnoreDerivedTypes(rhs, pred, false);
  }
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  std::weak_ordering CompareShallow(const RqExpr& rhs) const override;
  /// The related attributes and the related list are left out.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  static std::tuple<int, std::uint32_t, const VoidID&, const KXString&> OrderKey(const RqTargetColumn& column);

  KXString m_columnName;
  std::int32_t m_tableNum = kUnknownTableNum;
  VoidID m_columnID;
  std::uint32_t m_repositoryUniqueID = ARpGateway::INVALID_UNIQUE_ID_32;
  VoidIDVector m_attrIds;
  bool m_bDataMiningColumn = false;
  RqNode* m_relatedRqListPtr = nullptr;

  static constexpr std::tuple kWrittenFields{&RqTargetColumn::m_columnName, &RqTargetColumn::m_repositoryUniqueID,
                                             &RqTargetColumn::m_tableNum, &RqTargetColumn::m_bDataMiningColumn,
                                             &RqTargetColumn::m_columnID};
};

/// A measure of a cube.
class RqTargetCubeColumn final : public RqNodeImpl<RqTargetCubeColumn, RqTargetColumn, kRqTargetCubeColumn> {
 public:
  RqTargetCubeColumn() = default;
  using RqNodeImpl::RqNodeImpl;
  RqTargetCubeColumn(const RqTargetCubeColumn& rhs, bool bNewIDs, bool bDeepCopy);

  /// Whether the cube aggregates the measure as the expression above it does, so that its values need no second
  /// aggregation. The navigator sees it and says it; the mark takes no part in comparison and does not travel.
  bool IsMatchParentAggrType() const { return m_bMatchParentAggrType; }
  void SetMatchParentAggrType(bool bValue) { m_bMatchParentAggrType = bValue; }

 private:
  bool m_bMatchParentAggrType = false;
};

/// A column of a cached result.
class RqTargetCacheColumn final : public RqNodeImpl<RqTargetCacheColumn, RqTargetColumn, kRqTargetCacheColumn> {
 public:
  RqTargetCacheColumn() = default;
  using RqNodeImpl::RqNodeImpl;
  RqTargetCacheColumn(const RqTargetCacheColumn& rhs, bool bNewIDs, bool bDeepCopy);

  bool IsMashupsPinnedExpr() const override { return m_bIsMashupsPinnedExpr; }
  void SetIsMashupsPinnedExpr(bool bValue) { m_bIsMashupsPinnedExpr = bValue; }
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  bool m_bIsMashupsPinnedExpr = false;
};
