#pragma once

#include <concepts>
#include <exception>
#include <memory>

#include "Host/KXString.h"

/// The codes of the message catalogue.
enum ErrorCode : unsigned long {
#define KX_ERROR_MESSAGE(enumerator, code, text) enumerator = code,
#include "Host/ErrorMessage.def"
#undef KX_ERROR_MESSAGE
};

template <class T>
concept ErrorArgument = std::constructible_from<KXString, const T&>;

/// The one exception type: an error of the user or of the data, as a code and wide texts that fill the placeholders of
/// the code's catalogue text. Its text is made once; copies share it.
///
/// A placeholder without an argument is left empty, an argument without a placeholder is not shown. A code that the
/// catalogue lacks gives a text that says so and lists the arguments.
class ErrorMessage : public std::exception {
 public:
  template <ErrorArgument... Args>
  explicit ErrorMessage(unsigned long code, const Args&... args)
      : ErrorMessage(KXStringVector{KXString(args)...}, code) {}

  unsigned long GetCode() const noexcept;
  const KXString& GetText() const noexcept;
  const KXStringVector& GetArgs() const noexcept;
  /// "code: text" in UTF-8.
  const char* what() const noexcept override;

  /// To be called on a message before it is thrown. Notes it in the log as information, with its place, if `bLog`.
  static void prethrowProcess(const ErrorMessage& message, bool bLog, const char* file, int line);

  /// prethrowProcess and throw.
  [[noreturn, gnu::cold]] static void Raise(const ErrorMessage& message, const char* file, int line);

  /// The text of a code for use outside an exception.
  template <ErrorArgument... Args>
  static KXString LoadString(unsigned long code, const Args&... args) {
    return FormatText(code, KXStringVector{KXString(args)...});
  }

 private:
  struct Content;

  ErrorMessage(KXStringVector args, unsigned long code);

  static KXString FormatText(unsigned long code, const KXStringVector& args);

  std::shared_ptr<const Content> m_pContent;
};

/// Raises an ErrorMessage of a code and its arguments from here.
#define KX_RAISE(...) ErrorMessage::Raise(ErrorMessage(__VA_ARGS__), __FILE__, __LINE__)
