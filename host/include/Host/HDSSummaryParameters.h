#pragma once

#include <cstdint>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

/// A column that the engine for external data is to sum up.
struct HDSSummaryColumn {
  std::int32_t m_InputColumnIndex = -1;  ///< Among the columns of its input.
  KXString m_AggregationRule;            ///< The name of the rule; empty for a column that the rows are grouped by.

  friend bool operator==(const HDSSummaryColumn&, const HDSSummaryColumn&) = default;
};

/// What the engine for external data is told of a request that sums up.
class HDSSummaryParameters {
 public:
  enum SummarizeComputeStrategy : std::uint8_t { kInternalCompute, kColumnarOptimized };

  std::vector<HDSSummaryColumn> m_HDSSummaryColumns;
  Int32Vector m_InputColumnIndexesHiddenFromOutput;
  Int32Vector m_InputColumnIndexesRemoved;
  SummarizeComputeStrategy m_SummarizeComputeStrategy = kInternalCompute;
  bool m_bIsLocked = false;  ///< Whether the strategy is settled.

  friend bool operator==(const HDSSummaryParameters&, const HDSSummaryParameters&) = default;

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);
};
