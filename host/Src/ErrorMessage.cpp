#include "Host/ErrorMessage.h"

#include <algorithm>
#include <utility>

#include "Host/BaseStringUtil.h"
#include "Host/ServerLog.h"

struct ErrorMessage::Content {
  unsigned long m_code;
  KXStringVector m_args;
  KXString m_text;
  std::string m_what;
};

namespace {

/// Null if the catalogue lacks the code. Two entries of one code do not compile.
const wchar_t* FindInCatalogue(unsigned long code) {
  switch (code) {
#define KX_ERROR_MESSAGE(enumerator, number, text) \
  case number:                                     \
    return text;
#include "Host/ErrorMessage.def"
#undef KX_ERROR_MESSAGE
    default:
      return nullptr;
  }
}

KXString DescribeUnknownCode(unsigned long code, const KXStringVector& args) {
  KXString text = L"Unknown message code " + BaseStringUtil::StringFrom(code);
  const wchar_t* separator = L": ";
  for (const KXString& arg : args) {
    text.append(separator).append(L"\"").append(arg).append(L"\"");
    separator = L", ";
  }
  return text;
}

/// The pattern with its placeholders filled. Arguments are not searched for placeholders.
KXString FillPlaceholders(std::wstring_view pattern, const KXStringVector& args) {
  KXString text;
  while (!pattern.empty()) {
    const std::size_t percent = std::min(pattern.find(L'%'), pattern.size());
    text.append(pattern.substr(0, percent));
    if (percent + 1 >= pattern.size()) break;
    const wchar_t mark = pattern[percent + 1];
    const auto index = static_cast<std::size_t>(mark - L'1');
    if (mark == L'%') {
      text.append(mark);
    } else if (index < args.size()) {
      text.append(args[index]);
    }
    pattern.remove_prefix(percent + 2);
  }
  return text;
}

}  // namespace

KXString ErrorMessage::FormatText(unsigned long code, const KXStringVector& args) {
  const wchar_t* const pattern = FindInCatalogue(code);
  return pattern ? FillPlaceholders(pattern, args) : DescribeUnknownCode(code, args);
}

ErrorMessage::ErrorMessage(KXStringVector args, unsigned long code) {
  KXString text = FormatText(code, args);
  std::string what = std::to_string(code) + ": " + text.ToUTF8();
  m_pContent = std::make_shared<const Content>(Content{code, std::move(args), std::move(text), std::move(what)});
}

unsigned long ErrorMessage::GetCode() const noexcept { return m_pContent->m_code; }
const KXString& ErrorMessage::GetText() const noexcept { return m_pContent->m_text; }
const KXStringVector& ErrorMessage::GetArgs() const noexcept { return m_pContent->m_args; }
const char* ErrorMessage::what() const noexcept { return m_pContent->m_what.c_str(); }

void ErrorMessage::prethrowProcess(const ErrorMessage& message, bool bLog, const char* file, int line) {
  if (!bLog || !ServerLog::IsInformationLogged()) return;
  ServerLog::LogMessage(false, KXString::FromUTF8(file) + L':' + BaseStringUtil::StringFrom(line) + L": raises " +
                                   KXString::FromUTF8(message.what()));
}

void ErrorMessage::Raise(const ErrorMessage& message, const char* file, int line) {
  prethrowProcess(message, true, file, line);
  throw message;
}
