// The size of every node class that stands.

#include <cstdio>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrReport.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTELMNativeTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

void PrintNodeSizes() {
  std::printf("\n| Class | bytes |\n|---|---|\n");
#define SIZE_Stands(Class) std::printf("| %s | %zu |\n", #Class, sizeof(Class));
#define SIZE_Declared(Class)
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) SIZE_##state(Class)
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
}
