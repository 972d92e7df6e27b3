#pragma once

#include <vector>

#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"

/// What UNION, INTERSECT and EXCEPT have in common: two or more branches, which are the children, and whether equal
/// rows stay as they are (ALL). The select list is the first branch's: there is no other, and its column numbers are
/// those of the result.
template <class Derived, RqNodeType_e kKind>
class RqSetOperator : public RqNodeImpl<Derived, RqAbstractList, kKind> {
 public:
  RqSetOperator() = default;  ///< No branches: the target of a read-back.
  /// Takes the branches, none of which may be null; the vector keeps its entries.
  RqSetOperator(std::vector<RqAbstractList*>& lists, bool bAll);
  RqSetOperator(const RqSetOperator& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl<Derived, RqAbstractList, kKind>(rhs, bNewIDs, bDeepCopy), m_bAll(rhs.m_bAll) {}

  int GetNumLists() const { return this->GetNumChildren(); }
  RqAbstractList* GetIthList(int i) { return static_cast<RqAbstractList*>(this->GetIthChild(i)); }
  const RqAbstractList* GetIthList(int i) const { return const_cast<RqSetOperator*>(this)->GetIthList(i); }
  /// Deletes the branch that stands there and takes pList.
  void SetIthList(int i, RqAbstractList* pList) {
    KX_ASSERT(i < GetNumLists());
    this->SetIthChild(i, pList);
  }

  RqProjection* GetProjection() override {
    return GetNumLists() && GetIthList(0) ? GetIthList(0)->GetProjection() : nullptr;
  }
  using RqAbstractList::GetProjection;
  /// Whether it is marked for a remote target.
  bool IsLeafTable() const override { return ServerInfo::IsRemoteTargetType(this->GetTargetType()); }
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 protected:
  bool IsAll() const { return m_bAll; }

 private:
  bool m_bAll = false;
};

/// The rows of any branch.
class RqUnion final : public RqSetOperator<RqUnion, kRqUnion> {
 public:
  using RqSetOperator::RqSetOperator;
  bool IsUnionAll() const { return IsAll(); }
  bool IsRqUnion() const override { return true; }
  /// To drop equal rows it merges sorted branches.
  bool IsSortDependentSetOperator() const override { return !IsUnionAll(); }
};

/// The rows that all branches have.
class RqIntersect final : public RqSetOperator<RqIntersect, kRqIntersect> {
 public:
  using RqSetOperator::RqSetOperator;
  bool IsIntersectAll() const { return IsAll(); }
  bool IsRqIntersect() const override { return true; }
  bool IsSortDependentSetOperator() const override { return true; }
};

/// The rows of the first branch that no other one has.
class RqExcept final : public RqSetOperator<RqExcept, kRqExcept> {
 public:
  using RqSetOperator::RqSetOperator;
  bool IsExceptAll() const { return IsAll(); }
  bool IsRqExcept() const override { return true; }
  bool IsSortDependentSetOperator() const override { return true; }
};

extern template class RqSetOperator<RqUnion, kRqUnion>;
extern template class RqSetOperator<RqIntersect, kRqIntersect>;
extern template class RqSetOperator<RqExcept, kRqExcept>;
