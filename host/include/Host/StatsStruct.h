#pragma once

#include <cstdint>

#include "Host/HostTypes.h"
#include "Host/KXDateTime.h"
#include "Host/KXString.h"
#include "Host/Ref.h"

/// What the server counts of a request while it runs, for its usage records.
class StatsStruct : public RefCountable {
 public:
  /// Whose request it is.
  struct Origin {
    KXString m_userName;
    KXString m_repositoryName;
    KXString m_subjectArea;
    std::uint32_t m_sessionID = 0;
  };
  struct Request {
    KXString m_statement;
    std::uint32_t m_hash = 0;  ///< Of the statement.
    bool m_bCacheHit = false;
  };
  struct Counts {
    std::uint64_t m_rowsFromDatabases = 0;
    std::uint64_t m_rowsToClient = 0;
    std::uint32_t m_physicalQueries = 0;
  };
  struct Times {
    KXDateTime m_start;
    std::uint64_t m_compileMicroseconds = 0;
    std::uint64_t m_executeMicroseconds = 0;
  };

  Origin m_origin;
  Request m_request;
  Counts m_counts;
  Times m_times;

  /// The four groups, in their order.
  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);
};
