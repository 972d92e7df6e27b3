#pragma once

#include "Host/KXString.h"

class ARpGateway;

/// The switches that keep or undo changes of behaviour, for the whole process. Any thread may read and set them.
///
/// A flag is a named text; its boolean value is whether the text is "1" or "true" in any case. A flag that nobody set
/// is off and its text is empty.
class SUCompatFlag {
 public:
  static bool GetBool(const KXString& name);
  /// Gives false and an empty `out` if nobody set the flag.
  static bool GetString(KXString& out, const KXString& name);

  static void SetBool(const KXString& name, bool bValue);
  static void SetString(const KXString& name, const KXString& value);
  /// Back to the default.
  static void Reset(const KXString& name);

  /// Whether the variable has a name from before flags had their prefix. Names are compared ignoring case; none is
  /// legacy until it is added.
  static bool IsLegacyVariable(const KXString& name);
  static void AddLegacyVariable(const KXString& name);
};

/// The same switches for one request: the session property of the flag's name where the session has one, else the
/// process's value. A null gateway has no session. The session's value is read as any boolean property of it is, and
/// raises ErrorMessage as those do.
class SOCompatFlag {
 public:
  static bool GetBool(const KXString& name, ARpGateway* pRp);
  /// Gives false and an empty `out` if neither has the flag.
  static bool GetString(KXString& out, const KXString& name, ARpGateway* pRp);
};
