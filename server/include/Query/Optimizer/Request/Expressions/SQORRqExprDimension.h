#pragma once

#include <cstdint>
#include <tuple>

#include "Host/ARpGateway.h"
#include "Host/RpObjects.h"
#include "Host/VoidID.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqFieldBytes.h"

/// A dimension of the business model, seen through a hierarchy or through none.
class RqExprDimension final : public RqNodeImpl<RqExprDimension, RqExpr, kRqExprDimension> {
 public:
  RqExprDimension() = default;
  /// The dimension of that identifier in the repository of pRp.
  RqExprDimension(ARpGateway* pRp, const VoidID& objID, const VoidID& presentationHierarchyID = VoidID::NullID);
  RqExprDimension(const RqExprDimension& rhs, bool bNewIDs, bool bDeepCopy);

  RefADimension GetRpDimension(ARpGateway* pRp) const { return RefADimension(pRp, m_objID); }
  /// An empty handle when it is seen through none.
  RefAPresentationHierarchy GetPresentationHierarchy(ARpGateway* pRp) const {
    return RefAPresentationHierarchy(pRp, m_presentationHierarchyID);
  }
  const VoidID& GetID() const { return m_objID; }
  const VoidID& GetPresentationHierarchyID() const { return m_presentationHierarchyID; }
  std::uint32_t GetRepositoryUniqueID32() const { return m_repositoryUniqueID; }

  /// Negative, zero or positive: by identifier, then repository, then hierarchy.
  int Compare(const RqExprDimension& rhs) const;

  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  VoidID m_objID;
  std::uint32_t m_repositoryUniqueID = ARpGateway::INVALID_UNIQUE_ID_32;
  VoidID m_presentationHierarchyID;

  static constexpr std::tuple kWrittenFields{&RqExprDimension::m_objID, &RqExprDimension::m_repositoryUniqueID,
                                             &RqExprDimension::m_presentationHierarchyID};
};

/// A level: of a dimension of the business model, or one that a data source has itself.
class RqExprLevel final : public RqNodeImpl<RqExprLevel, RqExpr, kRqExprLevel> {
 public:
  enum LevelType : std::int32_t { kLogicalLevel, kPhysicalLevel, kAWLevel, kUnknown };

  RqExprLevel() = default;
  /// The level of that identifier in the repository of pRp.
  RqExprLevel(ARpGateway* pRp, const VoidID& objID, LevelType levelType = kLogicalLevel);
  RqExprLevel(const RqExprLevel& rhs, bool bNewIDs, bool bDeepCopy);

  LevelType GetLevelType() const { return m_levelType; }
  // Each gives an empty handle for a level of another type.
  RefALevel GetRpLevel(ARpGateway* pRp) const { return RefALevel(pRp, m_objID); }
  RefAPhysicalLevel GetPhysicalLevel(ARpGateway* pRp) const { return RefAPhysicalLevel(pRp, m_objID); }
  RefAAWLevel GetAWLevel(ARpGateway* pRp) const { return RefAAWLevel(pRp, m_objID); }
  const VoidID& GetID() const { return m_objID; }
  std::uint32_t GetRepositoryUniqueID32() const { return m_repositoryUniqueID; }

  /// Level and repository; the type takes no part.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  bool IsShallowLessThan(const RqExpr& rhs) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  VoidID m_objID;
  std::uint32_t m_repositoryUniqueID = ARpGateway::INVALID_UNIQUE_ID_32;
  LevelType m_levelType = kUnknown;

  static constexpr std::tuple kWrittenFields{&RqExprLevel::m_objID, &RqExprLevel::m_repositoryUniqueID,
                                             RqEnumFieldAs<std::int32_t>(&RqExprLevel::m_levelType, kUnknown)};
};

/// A member of a level, or all of them. The columns that make the member's logical key stand as further operands behind
/// the two named ones.
class RqExprMemberReference final : public RqNodeImpl<RqExprMemberReference, RqExpr, kRqExprMemberReference> {
 public:
  enum { kLevelOperand, kValueOperand, kNumOperands };

  RqExprMemberReference() = default;
  /// Takes both. A null value makes it the reference to all members.
  RqExprMemberReference(RqExprLevel* pLevel, RqExprLiteral* pMemberValue);
  using RqNodeImpl::RqNodeImpl;

  RqExprLevel* GetLevelExpr() { return static_cast<RqExprLevel*>(GetIthOperand(kLevelOperand)); }
  const RqExprLevel* GetLevelExpr() const { return static_cast<const RqExprLevel*>(GetIthOperand(kLevelOperand)); }
  /// Takes the level.
  void SetLevelExpr(RqExprLevel* pLevel) { SetIthOperand(kLevelOperand, pLevel); }
  RqExprLiteral* GetMemberValue() { return static_cast<RqExprLiteral*>(GetIthOperand(kValueOperand)); }
  const RqExprLiteral* GetMemberValue() const {
    return static_cast<const RqExprLiteral*>(GetIthOperand(kValueOperand));
  }
  bool IsAllMemberReference() const { return !GetIthOperand(kValueOperand); }

  /// Takes the columns in place of those that stand, and leaves the vector empty.
  void SetLogicalKeyCols(RqExprVector& columns);
  /// Appends the columns, which stay this node's.
  void GetLogicalKeyCols(ConstRqExprVector& columns) const;
  /// Deletes the columns.
  void RemoveLogicalKeyCols() { SetNumOperands(kNumOperands); }
};
