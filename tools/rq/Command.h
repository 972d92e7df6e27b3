#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}
struct CommandStreams;

/// The exit statuses of rq.
enum ExitStatus : int {
  kExitSuccess = 0,
  kExitNo = 1,            ///< The answer is no.
  kExitError = 2,         ///< A misuse of the command line, or an input that has an error.
  kExitBrokenPipe = 141,  ///< Nobody reads the output any more; as a shell shows the end by SIGPIPE.
};

/// A misuse of the command line that its grammar does not tell.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A command of rq. An object serves one command line.
class Command {
 public:
  virtual ~Command() = default;

  virtual const char* GetName() const = 0;
  /// One line for the list of commands.
  virtual const char* GetDescription() const = 0;
  /// Tells the parser of the command line what the command takes. What the parser is to fill lives in this object. A
  /// positional is filled by nobody: it tells how the texts are called in the help, and how many there may be.
  virtual void Define(CLI::App& app) = 0;
  /// Takes the texts of the line: what is neither an option nor the value of one, as it was given.
  void SetTexts(std::vector<std::string> texts) { m_texts = std::move(texts); }
  /// Does the work of the line that was parsed, and gives the exit status. May raise UsageError, ErrorMessage,
  /// OutputError and what the standard library raises.
  virtual int Run(CommandStreams& streams) = 0;

 protected:
  const std::vector<std::string>& GetTexts() const { return m_texts; }

 private:
  std::vector<std::string> m_texts;
};

/// All commands, in the order of the help text.
std::vector<std::unique_ptr<Command>> MakeCommands();
