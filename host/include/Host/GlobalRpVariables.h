#pragma once

#include <cstddef>

#include "Host/KXString.h"

/// Names that every repository knows.
class GlobalRpVariables {
 public:
  /// The block of variables and properties that belong to no block of their own: "*".
  static const KXString global_SessionBlockWildcard;

  // The session variables that row security of data sources goes by, for the whole process; none until the repository
  // at work names them. Any thread may ask. Who sets them does so before the first request: someone who counts through
  // them would not notice that they change.
  static std::size_t GetNumberOfSecurityVariables();
  /// The index must be below the number.
  static KXString GetSecurityVariableName(std::size_t index);
  static void SetSecurityVariableNames(KXStringVector names);
};
