#include "Query/Optimizer/Request/PlanCache/SQORRequestKeyRqDumpOut.h"

#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/PlanCache/SQORCacheUtils.h"

RequestKeyRqDumpOut::RequestKeyRqDumpOut(bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty,
                                         bool displayNodeIDs, ARpGateway* pRpSessionVars, bool displayChildIDs)
    : RqDumpout(displayTargetMarks, newLineMode, pRpPretty, displayNodeIDs, pRpSessionVars, displayChildIDs, false,
                true) {}

bool RequestKeyRqDumpOut::Visit(RqDerivedTable& table) {
  Append(L"(");
  PrintDeeper(table.GetInnerList());
  NewLine();
  Append(L") as ");
  AppendTableNumber(RqDerivedTable::kTablePrefix, table);
  return true;
}

bool RequestKeyRqDumpOut::Visit(RqExprPhysicalSubquery& expr) {
  Append(L"Subquery(");
  if (RqAbstractList* const pBlock = expr.GetSubqueryRqAbstractList()) {
    pBlock->Tour(*this);
  } else {
    Append(expr.GetSubqueryDumpout());
  }
  Append(L")");
  return true;
}

KXString CacheUtils::Dumpout(const RqNode& node, bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty,
                             bool displayNodeIDs, ARpGateway* pRpSessionVars, bool displayChildIDs, bool,
                             const KXString&, bool) {
  RequestKeyRqDumpOut dumpout(displayTargetMarks, newLineMode, pRpPretty, displayNodeIDs, pRpSessionVars,
                              displayChildIDs);
  const_cast<RqNode&>(node).Tour(dumpout);
  return dumpout.GetString();
}
