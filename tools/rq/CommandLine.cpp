#include "rq/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <ostream>
#include <sstream>

#include "Host/ErrorMessage.h"
#include "rq/BigStack.h"
#include "rq/Command.h"
#include "rq/io/BlockWriter.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr const char* kProgram = "rq";
constexpr const char* kDescription = "The workbench of the logical request library.";
constexpr std::size_t kMaxQuotedCharacters = 40;

int Fail(CommandStreams& streams, const std::string& message) {
  streams.m_err << kProgram << ": " << message << '\n';
  return kExitError;
}

int FailUsage(CommandStreams& streams, const std::string& command, const std::string& message) {
  Fail(streams, message);
  streams.m_err << "See \"" << kProgram << (command.empty() ? "" : " ") << command << " --help\".\n";
  return kExitError;
}

/// The command line's grammar and the commands behind it.
class CommandLine {
 public:
  CommandLine() : m_app(kDescription, kProgram), m_commands(MakeCommands()) {
    m_app.set_version_flag("--version", std::string(kProgram) + ' ' + RQ_VERSION, "Print the version and exit");
    m_app.set_help_flag("-h,--help", "Print this help and exit");
    m_app.require_subcommand(1);
    m_app.footer(std::string("See \"") + kProgram + " COMMAND --help\" for what a command takes.");
    for (const auto& pCommand : m_commands) {
      CLI::App* const pApp = m_app.add_subcommand(pCommand->GetName(), pCommand->GetDescription());
      pCommand->Define(*pApp);
    }
  }

  int Run(const std::vector<std::string>& arguments, CommandStreams& streams) {
    try {
      m_app.parse(
          std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // the parser takes them from the end
      return GetCommand()->Run(streams);
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        std::ostringstream help;
        m_app.exit(error, help, help);
        BlockWriter writer(streams.m_out);
        writer.Append(help.str());
        writer.Flush();
        return kExitSuccess;
      }
      return FailUsage(streams, GetCommandName(), WhatIsWrong(error, arguments));
    } catch (const UsageError& error) {
      return FailUsage(streams, GetCommandName(), error.what());
    }
  }

 private:
  /// The one that the line named; null before it was.
  Command* GetCommand() const {
    const auto it = std::ranges::find_if(
        m_commands, [this](const auto& pCommand) { return m_app.got_subcommand(pCommand->GetName()); });
    return it == m_commands.end() ? nullptr : it->get();
  }

  std::string GetCommandName() const {
    const Command* const pCommand = GetCommand();
    return pCommand ? pCommand->GetName() : "";
  }

  std::string WhatIsWrong(const CLI::ParseError& error, const std::vector<std::string>& arguments) const {
    const bool bLooksLikeCommand = !GetCommand() && !arguments.empty() && !arguments[0].starts_with('-');
    return bLooksLikeCommand ? "there is no command " + ForMessage(arguments[0], kMaxQuotedCharacters) : error.what();
  }

  CLI::App m_app;
  std::vector<std::unique_ptr<Command>> m_commands;
};

int RunGuarded(const std::vector<std::string>& arguments, CommandStreams& streams) {
  try {
    return CommandLine().Run(arguments, streams);
  } catch (const OutputError& error) {
    if (error.IsBrokenPipe()) return kExitBrokenPipe;
    return Fail(streams, error.what());
  } catch (const ErrorMessage& error) {
    return Fail(streams, error.GetText().ToUTF8());
  } catch (const std::bad_alloc&) {
    return Fail(streams, "there is not enough memory");
  } catch (const std::exception& error) {
    return Fail(streams, error.what());
  }
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments, CommandStreams& streams) {
  int status = kExitError;
  try {
    RunOnBigStack([&] { status = RunGuarded(arguments, streams); });
  } catch (const std::exception& error) {
    return Fail(streams, error.what());
  }
  return status;
}
