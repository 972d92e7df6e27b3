#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.h"

const KXString AVisitorRqNode::kNewLine(L"\n");
