#pragma once

#include <map>

#include "Host/KXString.h"

/// What the engine has counted for the operators of one logical request while it ran it.
class LogicalRequestStats {
 public:
  /// Stores the lines for an operator, by the text of its node identity; none if nothing was counted.
  void GetOperatorStatistics(const KXString& name, KXStringVector& lines) const;
  void SetOperatorStatistics(const KXString& name, const KXStringVector& lines) { m_lines[name] = lines; }

 private:
  std::map<KXString, KXStringVector> m_lines;
};

/// The statistics of one request. They belong to the thread that owns the request.
class ServerStatistics {
 public:
  LogicalRequestStats& GetLogicalRequestStats() { return m_logicalRequestStats; }

 private:
  LogicalRequestStats m_logicalRequestStats;
};
