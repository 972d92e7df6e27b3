#pragma once

#include <list>

#include "Host/KXString.h"

class ARpGateway;
class RqJoinLink;

// Text for a debugger, names through pRp, which may be null.

/// "[(InNode:<<1>>) (OutNode:<<2>>) , ...]", with condition and " attached" or " not_attached" behind each if asked.
KXString ToString(const std::list<RqJoinLink*>& links, ARpGateway* pRp, bool bShowConditions);
