#include "Host/KXAssert.h"

#include <cstdio>

namespace {

[[noreturn]] void ReportAndAbort(const wchar_t* file, int line, const wchar_t* what, const KXString& message) {
  const std::string utf8 = (KXString(file) + L":").ToUTF8() + std::to_string(line) + (L": " + KXString(what)).ToUTF8() +
                           (message.empty() ? std::string() : ": " + message.ToUTF8()) + "\n";
  // One write, so that reports of several threads do not mix.
  (void)std::fwrite(utf8.data(), 1, utf8.size(), stderr);
  std::abort();
}

}  // namespace

void KXAssert::handleAssert(const wchar_t* file, int line, const wchar_t* expression) {
  ReportAndAbort(file, line, L"assertion failed", expression);
}

void KXAssert::handleLogicError(const wchar_t* file, int line, const KXString& message) {
  ReportAndAbort(file, line, L"logic error", message);
}
