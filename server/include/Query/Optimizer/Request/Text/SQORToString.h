#pragma once

#include <list>
#include <utility>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprUtility.h"

class RqJoinLink;

// Text for a debugger, names through pRp, which may be null. SQORRqExprUtility.h has more of them.

/// The node as RqDumpout renders it, over several lines; the empty string for null.
KXString ToString(const RqNode& node, ARpGateway* pRp);
KXString ToString(const RqNode* pNode, ARpGateway* pRp);

/// " [ 1 2 ]"
KXString ToString(const std::vector<int>& numbers, ARpGateway* pRp);
/// "[1,2]"
KXString ToString(const UInt16Vector& numbers, ARpGateway* pRp);
KXString ToString(const std::vector<unsigned int>& numbers, ARpGateway* pRp);

/// "[a, b]"
KXString ToString(const ConstRqExprVector& exprs, ARpGateway* pRp);
KXString ToString(const RqExprVector& exprs, ARpGateway* pRp);
KXString ToString(const std::vector<Heap<RqExpr>>& exprs, ARpGateway* pRp);
KXString ToString(const KXNodeVector<Heap<RqExprCond>>& conds, ARpGateway* pRp);
/// "[second as first, ...]"
KXString ToString(const std::vector<std::pair<RqExpr*, RqExpr*>>& pairs, ARpGateway* pRp);

/// "[(InNode:<<1>>) (OutNode:<<2>>) , ...]", with condition and " attached" or " not_attached" behind each if asked.
KXString ToString(const std::list<RqJoinLink*, KXNodeStdAlloc<RqJoinLink*>>& links, ARpGateway* pRp,
                  bool bShowConditions);
