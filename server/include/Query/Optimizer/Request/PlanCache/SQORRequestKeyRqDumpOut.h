#pragma once

#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

/// The text of a request as the key of its plan: requests that may share a plan have one text, and others have another.
/// What only names things, and the way a subquery came about, is left out.
class RequestKeyRqDumpOut final : public RqDumpout {
 public:
  RequestKeyRqDumpOut(bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty, bool displayNodeIDs,
                      ARpGateway* pRpSessionVars, bool displayChildIDs);

  using RqDumpout::Visit;
  /// The block and the number, and nothing else of the table.
  bool Visit(RqDerivedTable& table) override;
  /// The text of the block as it stands now; the one that was kept where there is no block any more.
  bool Visit(RqExprPhysicalSubquery& expr) override;
};
