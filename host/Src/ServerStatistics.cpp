#include "Host/ServerStatistics.h"

void LogicalRequestStats::GetOperatorStatistics(const KXString& name, KXStringVector& lines) const {
  const auto it = m_lines.find(name);
  lines = it == m_lines.end() ? KXStringVector() : it->second;
}
