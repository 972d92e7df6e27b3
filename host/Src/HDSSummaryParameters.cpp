#include "Host/HDSSummaryParameters.h"

#include "Host/DataBlobUtil.h"

void HDSSummaryParameters::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_HDSSummaryColumns.size()));
  for (const HDSSummaryColumn& column : m_HDSSummaryColumns) {
    DataBlobUtil::ToByteVector(bv, column.m_InputColumnIndex);
    DataBlobUtil::ToByteVector(bv, column.m_AggregationRule);
  }
  DataBlobUtil::ToByteVector(bv, m_InputColumnIndexesHiddenFromOutput);
  DataBlobUtil::ToByteVector(bv, m_InputColumnIndexesRemoved);
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(m_SummarizeComputeStrategy));
  DataBlobUtil::ToByteVector(bv, m_bIsLocked);
}

const_iterator HDSSummaryParameters::FromByteVector(const_iterator start) {
  std::uint32_t numColumns;
  start = DataBlobUtil::FromByteVector(start, numColumns);
  m_HDSSummaryColumns.clear();
  for (std::uint32_t i = 0; i < numColumns; ++i) {
    HDSSummaryColumn& column = m_HDSSummaryColumns.emplace_back();
    start = DataBlobUtil::FromByteVector(start, column.m_InputColumnIndex);
    start = DataBlobUtil::FromByteVector(start, column.m_AggregationRule);
  }
  start = DataBlobUtil::FromByteVector(start, m_InputColumnIndexesHiddenFromOutput);
  start = DataBlobUtil::FromByteVector(start, m_InputColumnIndexesRemoved);
  start = DataBlobUtil::FromByteVector(start, m_SummarizeComputeStrategy, kColumnarOptimized);
  return DataBlobUtil::FromByteVector(start, m_bIsLocked);
}
