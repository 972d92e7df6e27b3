#pragma once

#include <functional>

#include "Host/KXString.h"

/// The server's log. Any thread may write to it.
class ServerLog {
 public:
  /// Takes one message without a line end; `bError` as in LogMessage. Calls come one at a time, from the thread that
  /// logs. It must not log or change the sink itself.
  using Sink = std::function<void(bool bError, const KXString& text)>;

  /// Writes an error (true) or information (false).
  static void LogMessage(bool bError, const wchar_t* text);
  static void LogMessage(bool bError, const KXString& text);

  /// Whether information goes anywhere, so that its text need not be made for nothing.
  static bool IsInformationLogged();

  /// Sends all later messages to `sink` and gives back the one before; null stands for the default sink, which writes
  /// errors as lines of UTF-8 on the standard error stream and drops information.
  static Sink SetSink(Sink sink);
};
