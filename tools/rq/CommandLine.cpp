#include "rq/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <new>
#include <ostream>
#include <span>
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

/// The arguments of a command, told apart.
struct Arguments {
  std::vector<std::string> m_options;  ///< The options, each value an argument of its own.
  std::vector<std::string> m_texts;    ///< All else.
};

/// Whether the parser would take an argument for an option.
bool IsOption(const std::string& argument) {
  std::string name;
  std::string rest;
  return CLI::detail::split_long(argument, name, rest) ||
         (CLI::detail::split_short(argument, name, rest) && !(name[0] >= '0' && name[0] <= '9'));
}

/// The parser is not shown the texts, because it does not take all of them as they are: it would take "[a,b]" for two,
/// and "++" for the end of the command. Of "--name=value" it would take the next argument for a value that is empty,
/// and for a flag whatever stands there.
Arguments TellApart(const CLI::App& app, std::span<const std::string> arguments) {
  Arguments told;
  for (auto it = arguments.begin(); it != arguments.end(); ++it) {
    if (*it == "--") {
      told.m_texts.insert(told.m_texts.end(), it + 1, arguments.end());
      break;
    }
    if (!IsOption(*it)) {
      told.m_texts.push_back(*it);
      continue;
    }
    const std::size_t equals = it->find('=');
    const std::string name = it->substr(0, equals);
    const CLI::Option* const pOption = name.starts_with("--") ? app.get_option_no_throw(name) : nullptr;
    const bool bTakesValue = pOption && pOption->get_items_expected_max() > 0;
    if (!pOption || equals == std::string::npos) {
      told.m_options.push_back(*it);
      if (bTakesValue && it + 1 != arguments.end()) told.m_options.push_back(*++it);
      continue;
    }
    if (!bTakesValue) throw UsageError(name + " takes no value");
    told.m_options.push_back(name);
    told.m_options.push_back(it->substr(equals + 1));
  }
  return told;
}

/// Raises UsageError if there are more texts than the command's positional takes.
void CheckNumber(const CLI::App& app, const std::vector<std::string>& texts) {
  const auto positionals = app.get_options([](const CLI::Option* pOption) { return pOption->get_positional(); });
  const auto most = positionals.empty() ? 0 : static_cast<std::size_t>(positionals[0]->get_items_expected_max());
  if (texts.size() > most) throw UsageError("The following argument was not expected: " + texts[most]);
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
      pCommand->Define(*m_app.add_subcommand(pCommand->GetName(), pCommand->GetDescription()));
    }
  }

  int Run(const std::vector<std::string>& arguments, CommandStreams& streams) {
    // Options of rq itself may stand in front.
    const auto first =
        std::ranges::find_if_not(arguments, [](const std::string& argument) { return IsOption(argument); });
    Command* const pCommand = first == arguments.end() ? nullptr : FindCommand(*first);
    const std::string name = pCommand ? pCommand->GetName() : "";
    try {
      Parse({arguments.begin(), first}, {first, arguments.end()}, pCommand);
      return pCommand->Run(streams);
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        std::ostringstream help;
        m_app.exit(error, help, help);
        BlockWriter writer(streams.m_out);
        writer.Append(help.str());
        writer.Flush();
        return kExitSuccess;
      }
      const bool bLooksLikeCommand = !pCommand && !arguments.empty() && !arguments[0].starts_with('-');
      return FailUsage(
          streams, name,
          bLooksLikeCommand ? "there is no command " + ForMessage(arguments[0], kMaxQuotedCharacters) : error.what());
    } catch (const UsageError& error) {
      return FailUsage(streams, name, error.what());
    }
  }

 private:
  /// Null if there is none of that name.
  Command* FindCommand(const std::string& name) const {
    const auto it = std::ranges::find(m_commands, name, [](const auto& pCommand) { return pCommand->GetName(); });
    return it == m_commands.end() ? nullptr : it->get();
  }

  /// Takes the options in front of the command, and the command, if there is one, with what follows. Without a command
  /// the line has an error or asks for what is no command's, and this raises CLI::ParseError.
  void Parse(std::span<const std::string> front, std::span<const std::string> arguments, Command* pCommand) {
    std::vector<std::string> line = TellApart(m_app, front).m_options;
    Arguments told;
    if (pCommand) {
      told = TellApart(*m_app.get_subcommand(pCommand->GetName()), arguments.subspan(1));
      line.push_back(pCommand->GetName());
      std::ranges::copy(told.m_options, std::back_inserter(line));
    }
    std::ranges::reverse(line);  // the parser takes them from the end
    m_app.parse(std::move(line));
    CheckNumber(*m_app.get_subcommand(pCommand->GetName()), told.m_texts);
    pCommand->SetTexts(std::move(told.m_texts));
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
