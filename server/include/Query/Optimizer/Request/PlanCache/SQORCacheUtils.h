#pragma once

#include "Host/KXString.h"

class ARpGateway;
class RqNode;

/// What the plan cache asks of requests.
class CacheUtils {
 public:
  /// The key text of a request, or of a part of one; the settings are those of RqDumpout, and whatever differs between
  /// runs of one request is left out. The text of the whole request and whether the node is the block of a subquery
  /// make a difference for blocks that read a cached result, of which there are none as long as no result is cached.
  /// Raises what RqDumpout raises.
  static KXString Dumpout(const RqNode& node, bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty,
                          bool displayNodeIDs, ARpGateway* pRpSessionVars, bool displayChildIDs, bool,
                          const KXString& logicalRequestStr, bool bDumpoutForSubQuery);
};
