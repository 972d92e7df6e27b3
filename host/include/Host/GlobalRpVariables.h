#pragma once

#include "Host/KXString.h"

/// Names that every repository knows.
class GlobalRpVariables {
 public:
  /// The block of variables and properties that belong to no block of their own: "*".
  static const KXString global_SessionBlockWildcard;
};
