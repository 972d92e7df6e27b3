#include "Host/GlobalRpVariables.h"

const KXString GlobalRpVariables::global_SessionBlockWildcard = L"*";
