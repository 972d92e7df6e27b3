#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

/// What a function takes in place of its first argument: the name of a unit or a field, or the text of a function.
struct SqlWord {
  std::string m_text;
  bool m_bIsString = false;  ///< Whether it is a string and no name.
  std::size_t m_offset = 0;
};

struct ScalarArguments {
  SqlWord m_word;                ///< Only for a function that begins with one.
  OwnedRqExprVector m_operands;  ///< The arguments behind it. Those that are left out are null or not there.
};

/// A scalar function that is written as a call, and what makes its node.
struct ScalarFunction {
  std::string_view m_name;       ///< In lower case, without a schema.
  std::string_view m_arguments;  ///< As one writes them down: "text, start[, length]"; [, value...] is any number.
  std::size_t m_minArguments;
  std::size_t m_maxArguments;
  bool m_bBeginsWithWord;
  /// Takes as many arguments as there may be. Raises SqlError at a word that the function does not know.
  OwnedRqExprPtr (*m_make)(ScalarArguments& arguments);
};

/// Null for a name that is none of a scalar function.
const ScalarFunction* FindScalarFunction(std::string_view name);

/// All of them, for help; a name may begin with #, which is then not to be shown.
std::span<const ScalarFunction> GetScalarFunctions();
