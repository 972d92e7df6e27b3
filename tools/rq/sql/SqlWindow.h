#pragma once

#include <vector>

#include "rq/sql/SqlTree.h"

/// The rows that a window function computes over, seen from one row.
struct SqlFrame {
  enum Kind {
    kPartition,         ///< All rows of the partition.
    kRunning,           ///< Those up to this one.
    kRunningWithPeers,  ///< Those up to this one, and those that the order does not tell from it.
    kMoving,            ///< This row and some before it.
  };
  Kind m_kind = kPartition;
  SqlNode m_numBefore;  ///< Of a moving frame, how many rows before this one; none for no row.
};

/// The window of a call, with what it takes over from a named one.
struct SqlWindow {
  std::vector<SqlNode> m_partition;
  std::vector<SqlNode> m_order;  ///< SortBy nodes.
  SqlFrame m_frame;
  bool m_bHasFrame = false;  ///< Whether the frame is written.
  SqlNode m_node;
};

/// Reads an OVER; the clause is the WINDOW of its block, or none. Raises SqlError for a name that is not there and for
/// a frame that is none of those above.
SqlWindow ReadWindow(SqlNode over, SqlNode windowClause);
