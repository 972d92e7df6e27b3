#pragma once

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"

class RqExprCond;
class RqExprMemberReference;
class RqExprStringLiteral;

/// What stands around an aggregate, its kernel, and answers for it; the first argument may be a plain expression, too,
/// and the wrapper is then no aggregate. It is dissolved before aggregates are rewritten: rewriting it is a logic
/// error.
///
/// Wrappers nest. What is asked of the outermost is answered by the aggregate below all of them, which costs a step a
/// wrapper and no stack.
class RqExprAggrWrapper : public RqExprAggr {
 public:
  /// The first argument. Raises ErrorMessage kMsgAggregateExpected when that is no aggregate.
  virtual RqExprAggr* GetKernelExpr();
  const RqExprAggr* GetKernelExpr() const { return const_cast<RqExprAggrWrapper*>(this)->GetKernelExpr(); }
  /// Null, too, for a wrapper without operands, as before it is read.
  virtual RqExpr* GetFirstArg() { return GetNumOperands() > kAggrExpr ? GetIthOperand(kAggrExpr) : nullptr; }
  const RqExpr* GetFirstArg() const { return const_cast<RqExprAggrWrapper*>(this)->GetFirstArg(); }
  /// Takes the expression and deletes the one that stood.
  virtual void SetFirstArg(RqExpr* pFirstArg) { SetIthOperand(kAggrExpr, pFirstArg); }
  /// What messages call it.
  virtual KXString GetName() const = 0;

  using RqExprAggr::GetAggrExpr;
  using RqExprAggr::GetComputeBreak;
  using RqExprAggr::GetControlBreak;
  /// That of the kernel; the first argument if that is no aggregate.
  RqExpr* GetAggrExpr() override;
  /// Raises ErrorMessage kMsgAggregateExpected when there is no kernel.
  void SetAggrExpr(RqExpr* pAggrExpr) override;
  /// The breaks of the kernel; null if there is none.
  RqExprColumnList* GetControlBreak() override;
  RqExprColumnList* GetComputeBreak() override;
  /// Gives the kernel a copy first.
  void SetControlBreak(RqExprColumnList* pControlBreak) override;
  /// Wanted: the kernel keeps its own.
  void SetComputeBreak(RqExprColumnList* pComputeBreak) override { RqExprAggr::SetComputeBreak(pComputeBreak); }
  /// Nothing is kept without a kernel.
  void SetShareBase(const ShareBaseID& shareBaseID) override;
  const ShareBaseID& GetShareBase() const override;
  bool IsShareBase() const override { return !GetShareBase().empty(); }
  void InstantiateDistinctComputeBreak() override;
  bool IsConstant() const override;
  bool IsAggr() const override { return GetInnermostAggr() != nullptr; }
  bool IsAggrWrapper() const override { return true; }
  bool IsComplexRenderAggr() const override { return false; }
  bool SupportsAggrSplitting() const override { return true; }
  bool SupportsEquivalentAggrSplitting() const override { return true; }
  VoidID GetLogicalFactTableID(ARpGateway* pRp) const override { return GetKernelExpr()->GetLogicalFactTableID(pRp); }
  RqExpr* RenderOnSummaryList(RqList& inner) const override;
  RqExpr* RenderOntoMoreDetailedSources(ARpGateway* pRp, bool bPhysical, const SourceContentMap& map,
                                        Int32Vector& indexes) const override;
  RqExpr* RenderOntoEquivalentSource(ARpGateway* pRp, bool bPhysical, const LogicalToPhysical& mapping,
                                     const RqAttribute* pAttr) const override;
  /// Null: only what a dimension-based kernel totals by is a total of the wrapper. Raises ErrorMessage
  /// kMsgAggregateExpected when there is no kernel.
  RqExprAggr* CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                               const ReportAggrCompatFlags& flags) const override;

  /// wrapper(kernel(x)) becomes kernel(wrapper(x)); with bDeep the wrapper goes below all aggregates that stand in each
  /// other there. The wrapper must stand in a tree, and is deleted: a copy of it takes its new place. Raises
  /// ErrorMessage kMsgAggregateExpected, with the compute break of the wrapper gone, when there is no kernel.
  virtual void PullupAggr(bool bDeep);

 protected:
  RqExprAggrWrapper() = default;
  /// Takes the first argument.
  explicit RqExprAggrWrapper(RqExpr* pFirstArg) : RqExprAggr(pFirstArg, nullptr, nullptr, false) {}
  RqExprAggrWrapper(const RqExprAggrWrapper& rhs, bool bNewIDs, bool bDeepCopy) : RqExprAggr(rhs, bNewIDs, bDeepCopy) {}

  /// The aggregate below this wrapper and those that stand directly in it; null if that is none.
  RqExprAggr* GetInnermostAggr();
  const RqExprAggr* GetInnermostAggr() const { return const_cast<RqExprAggrWrapper*>(this)->GetInnermostAggr(); }
  /// Whether both first arguments are null, or equivalent.
  bool EquivalentFirstArgs(const RqExprAggrWrapper& rhs, const RqEquivalence& pred) const {
    return EquivalentOperands(GetFirstArg(), rhs.GetFirstArg(), pred);
  }
};

/// The aggregate over the rows that satisfy a condition.
class RqExprAggrIf final : public RqNodeImpl<RqExprAggrIf, RqExprAggrWrapper, kRqExprAggrIf> {
 public:
  enum { kFilterExpr = RqExprAggr::kNumOperands, kNumOperands };

  RqExprAggrIf() = default;
  /// Takes both; the filter must be a condition.
  RqExprAggrIf(RqExpr* pFirstArg, RqExpr* pFilter, bool bSecurityFilter);
  RqExprAggrIf(const RqExprAggrIf& rhs, bool bNewIDs, bool bDeepCopy);

  RqExprCond* GetFilterExpr();
  const RqExprCond* GetFilterExpr() const { return const_cast<RqExprAggrIf*>(this)->GetFilterExpr(); }
  /// Whether the filter keeps rows from the user. Takes no part in comparison and does not travel.
  bool IsForSecurityFilter() const { return m_bSecurityFilter; }

  /// Wraps each aggregate of the list, in its place, in a copy of this filter; then the first argument takes this
  /// node's place. The node must stand in a tree, and is deleted.
  void Distribute(const std::vector<RqExprAggr*>& aggregates);
  /// filter(filter(x, a), b) becomes filter(x, b and a). Raises ErrorMessage when the stack runs low.
  void Unnest();

  KXString GetName() const override { return L"FILTER"; }
  bool IsTargetOnlyExpr() const override { return true; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;

 private:
  bool m_bSecurityFilter = false;
};

/// A value of the target that is not to be aggregated.
class RqExprNoAggregate final : public RqNodeImpl<RqExprNoAggregate, RqExprAggrWrapper, kRqExprNoAggregate> {
 public:
  RqExprNoAggregate() = default;
  explicit RqExprNoAggregate(RqExpr* pFirstArg);
  RqExprNoAggregate(const RqExprNoAggregate& rhs, bool bNewIDs, bool bDeepCopy) : RqNodeImpl(rhs, bNewIDs, bDeepCopy) {}

  KXString GetName() const override { return L"NOAGGREGATE"; }
  bool IsTargetOnlyExpr() const override { return true; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
};

/// A value of external data that is not to be aggregated. Wanted: it has no breaks of its own, and deletes those that
/// it is given.
class RqExprMashupsNoAggregate final
    : public RqNodeImpl<RqExprMashupsNoAggregate, RqExprAggrWrapper, kRqExprMashupsNoAggregate> {
 public:
  RqExprMashupsNoAggregate() = default;
  explicit RqExprMashupsNoAggregate(RqExpr* pFirstArg);
  RqExprMashupsNoAggregate(const RqExprMashupsNoAggregate& rhs, bool bNewIDs, bool bDeepCopy);

  std::uint32_t GetDimensionBasedAggrCount() const { return m_DimensionBasedAggrCount; }
  void SetDimensionBasedAggrCount(std::uint32_t count) { m_DimensionBasedAggrCount = count; }
  bool IsSplitInnerAggrForDimensionBasedAggr() const { return m_bSplitInnerAggrForDimensionBasedAggr; }
  void SetSplitInnerAggrForDimensionBasedAggr(bool bSplit) { m_bSplitInnerAggrForDimensionBasedAggr = bSplit; }

  void SetControlBreak(RqExprColumnList* pControlBreak) override { delete pControlBreak; }
  void SetComputeBreak(RqExprColumnList* pComputeBreak) override { delete pComputeBreak; }
  KXString GetName() const override { return L"MASHUPS_NOAGGREGATE"; }
  bool IsTargetOnlyExpr() const override { return true; }
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  std::uint32_t m_DimensionBasedAggrCount = 0;
  bool m_bSplitInnerAggrForDimensionBasedAggr = false;
};

/// A measure with other values of variables. Behind the breaks stand pairs: the name of a variable and its value.
class RqExprVariableReplace final
    : public RqNodeImpl<RqExprVariableReplace, RqExprAggrWrapper, kRqExprVariableReplace> {
 public:
  RqExprVariableReplace() = default;
  /// Takes the first argument, and the names and values in turn; leaves the vector empty.
  RqExprVariableReplace(RqExpr* pFirstArg, RqExprVector& nameValuePairs);
  RqExprVariableReplace(const RqExprVariableReplace& rhs, bool bNewIDs, bool bDeepCopy)
      : RqNodeImpl(rhs, bNewIDs, bDeepCopy) {}

  int GetNumberOfVariables() const { return (GetNumOperands() - kNumOperands) / 2; }
  const RqExprStringLiteral* GetIthVariableName(int i) const;
  const RqExpr* GetIthVariableValue(int i) const { return GetIthOperand(2 * i + kNumOperands + 1); }
  /// Stores names and values, lent, in their order.
  void GetVariables(std::vector<std::pair<const RqExprStringLiteral*, const RqExpr*>>& variables) const;

  KXString GetName() const override { return L"VARIABLE_REPLACE"; }
  /// Wanted: what rhs has behind the variables of this one takes no part.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
};

/// A measure for given members of dimensions.
class RqExprQualify final : public RqNodeImpl<RqExprQualify, RqExprAggrWrapper, kRqExprQualify> {
 public:
  RqExprQualify() = default;
  /// Takes the measure and the references, and leaves the vector empty.
  RqExprQualify(RqExpr* pFirstArg, std::vector<RqExprMemberReference*>& references);
  RqExprQualify(const RqExprQualify& rhs, bool bNewIDs, bool bDeepCopy) : RqNodeImpl(rhs, bNewIDs, bDeepCopy) {}

  RqExpr* GetQualifiedExpr() { return GetFirstArg(); }
  const RqExpr* GetQualifiedExpr() const { return GetFirstArg(); }
  int GetNumMemberReferences() const { return GetNumOperands() - kNumOperands; }
  RqExprMemberReference* GetIthMemberReference(int i);
  const RqExprMemberReference* GetIthMemberReference(int i) const {
    return const_cast<RqExprQualify*>(this)->GetIthMemberReference(i);
  }
  /// Stores the references, lent.
  void GetMemberReferences(std::vector<const RqExprMemberReference*>& references) const;
  /// Stores copies of the references, with the same identities, which the caller owns.
  void GetMemberReferencesCopies(std::vector<RqExprMemberReference*>& references) const;

  KXString GetName() const override { return L"Qualify"; }
  bool IsTargetOnlyExpr() const override { return true; }
  /// The references in any order.
  bool IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const override;
};
