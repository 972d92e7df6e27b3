#pragma once

#include <cstdlib>

#include "Host/KXString.h"

/// The end of a process whose own code is wrong. Both handlers write file, line and message in UTF-8 on the standard
/// error stream and abort; neither returns, in any build.
class KXAssert {
 public:
  /// Reports an assertion that failed, by the text of its expression.
  [[noreturn, gnu::cold]] static void handleAssert(const wchar_t* file, int line, const wchar_t* expression);

  /// Reports code that must not be reached. The message may be blank.
  [[noreturn, gnu::cold]] static void handleLogicError(const wchar_t* file, int line, const KXString& message);
};

#define KX_WIDEN_TEXT(text) L##text
#define KX_WIDEN(text)      KX_WIDEN_TEXT(text)

/// Ends the process unless `condition`; the report quotes `text`, a wide literal.
#define KX_ASSERT_TEXT(condition, text)                             \
  do {                                                              \
    if (!(condition)) [[unlikely]] {                                \
      KXAssert::handleAssert(KX_WIDEN(__FILE__), __LINE__, (text)); \
      std::abort();                                                 \
    }                                                               \
  } while (false)

/// Ends the process unless the expression holds; the report quotes the expression. Checked in every build.
#define KX_ASSERT(...) KX_ASSERT_TEXT((__VA_ARGS__), KX_WIDEN(#__VA_ARGS__))

/// Ends the process: this place must not be reached. `text` is a wide literal or a KXString.
#define KX_LOGIC_ERROR(text)                                        \
  do {                                                              \
    KXAssert::handleLogicError(KX_WIDEN(__FILE__), __LINE__, text); \
    std::abort();                                                   \
  } while (false)
