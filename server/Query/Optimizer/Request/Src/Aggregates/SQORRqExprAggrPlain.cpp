#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"

#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

namespace {

/// The partial value at a source, at the grain of breaks.
template <class Aggr>
RqExprAggr* SourceAggr(const RqExprAggr& aggr, const RqExprColumnList* pBreaks, bool bDistinct) {
  auto* const pCopy = pBreaks ? static_cast<RqExprColumnList*>(pBreaks->DeepCopy(false)) : nullptr;
  return new Aggr(aggr.GetAggrExpr()->DeepExprCopy(false), pCopy, nullptr, bDistinct);
}

/// The aggregate over the partial values of a column.
template <class Aggr>
RqExprAggr* PartialsAggr(const RqExprAggr& aggr, RqDerivedColumn* pColumn, RqList& list) {
  auto* const pReference = new RqDerivedColumnReference(pColumn);
  return new Aggr(pReference, RqExprAggr::RenderBreakList(aggr.GetControlBreak(), list), nullptr, false);
}

}  // namespace

RqExprAggr* RqExprAggrSum::CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                                            const ReportAggrCompatFlags&) const {
  if (IsDistinctAggregation()) return nullptr;
  return CreateReportAggrHelper<RqExprAggrSum, RqExprAggrReportSum>(columns, bAsDetail);
}
RqExpr* RqExprAggrSum::GetSourceAggregator(RqExprColumnList* pBreaks) const {
  return SourceAggr<RqExprAggrSum>(*this, pBreaks, IsDistinctAggregation());
}
RqExprAggr* RqExprAggrSum::GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const {
  return PartialsAggr<RqExprAggrSum>(*this, pColumn, list);
}

RqExprAggr* RqExprAggrCount::CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                                              const ReportAggrCompatFlags&) const {
  if (!IsDistinctAggregation()) {
    return CreateReportAggrHelper<RqExprAggrSum, RqExprAggrReportSum>(columns, bAsDetail);
  }
  return new RqExprAggrReportCount(GetAggrExpr()->DeepExprCopy(false),
                                   static_cast<RqExprColumnList*>(columns.DeepCopy(false)), nullptr, true);
}
RqExpr* RqExprAggrCount::GetSourceAggregator(RqExprColumnList* pBreaks) const {
  if (IsDistinctAggregation()) return GetAggrExpr()->DeepExprCopy(false);
  return SourceAggr<RqExprAggrCount>(*this, pBreaks, false);
}
RqExprAggr* RqExprAggrCount::GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const {
  if (!IsDistinctAggregation()) return PartialsAggr<RqExprAggrSum>(*this, pColumn, list);
  RqExprAggr* const pCount = PartialsAggr<RqExprAggrCount>(*this, pColumn, list);
  pCount->SetRewrittenDistinct(true);
  return pCount;
}

RqExprAggrCountStar::RqExprAggrCountStar(RqExprColumnList* pControlBreak, RqExprColumnList* pComputeBreak)
    : RqExprAggrCountStar(new RqExprStringLiteral(L"*"), pControlBreak, pComputeBreak) {}
RqExprAggrCountStar::RqExprAggrCountStar(RqExpr* pAggrExpr, RqExprColumnList* pControlBreak,
                                         RqExprColumnList* pComputeBreak)
    : RqAggrKind(pAggrExpr, pControlBreak, pComputeBreak, false) {}
RqExprAggr* RqExprAggrCountStar::CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                                                  const ReportAggrCompatFlags&) const {
  return CreateReportAggrHelper<RqExprAggrSum, RqExprAggrReportSum>(columns, bAsDetail);
}

RqExprAggr* RqExprAggrMin::CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                                            const ReportAggrCompatFlags&) const {
  return CreateReportAggrHelper<RqExprAggrMin, RqExprAggrReportMin>(columns, bAsDetail);
}
RqExpr* RqExprAggrMin::GetSourceAggregator(RqExprColumnList* pBreaks) const {
  return SourceAggr<RqExprAggrMin>(*this, pBreaks, false);
}
RqExprAggr* RqExprAggrMin::GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const {
  return PartialsAggr<RqExprAggrMin>(*this, pColumn, list);
}

RqExprAggr* RqExprAggrMax::CreateReportAggr(const RqExprColumnList& columns, bool bAsDetail,
                                            const ReportAggrCompatFlags&) const {
  return CreateReportAggrHelper<RqExprAggrMax, RqExprAggrReportMax>(columns, bAsDetail);
}
RqExpr* RqExprAggrMax::GetSourceAggregator(RqExprColumnList* pBreaks) const {
  return SourceAggr<RqExprAggrMax>(*this, pBreaks, false);
}
RqExprAggr* RqExprAggrMax::GetPartialsAggregator(RqDerivedColumn* pColumn, RqList& list) const {
  return PartialsAggr<RqExprAggrMax>(*this, pColumn, list);
}
void RqExprAggrMax::ToByteVector(ByteVector& bv) {
  RqCombiningAggr::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bForSubtotallingOnly);
}
const_iterator RqExprAggrMax::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqCombiningAggr::FromByteVector(start), m_bForSubtotallingOnly);
}

RqExprAggr* RqExprAggrNullIfNotUnique::CreateReportAggr(const RqExprColumnList&, bool,
                                                        const ReportAggrCompatFlags&) const {
  KX_LOGIC_ERROR(L"");
}

// ---------------------------------------------------------------------------------------------------------------------
// The standard deviation

bool RqExprAggrStddev::PrivateIsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  return RqAggrKind::PrivateIsEquivalent(rhs, pred) &&
         bIsSample_ == static_cast<const RqExprAggrStddev&>(rhs).bIsSample_;
}
bool RqExprAggrStddev::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs, [](const RqExprAggrStddev& aggr) {
    return std::pair(aggr.IsDistinctAggregation(), aggr.bIsSample_);
  });
}
void RqExprAggrStddev::ToByteVector(ByteVector& bv) {
  RqAggrKind::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, bIsSample_);
}
const_iterator RqExprAggrStddev::FromByteVector(const_iterator start) {
  return DataBlobUtil::FromByteVector(RqAggrKind::FromByteVector(start), bIsSample_);
}
