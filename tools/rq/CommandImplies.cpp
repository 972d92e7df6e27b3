#include "rq/CommandImplies.h"

#include <CLI/CLI.hpp>

#include "Host/ErrorMessage.h"
#include "rq/CommandLine.h"
#include "rq/ConditionStream.h"
#include "rq/SessionValues.h"
#include "rq/io/BlockWriter.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr const char* kStandardInput = "-";

/// Comparisons that the search for a row may evaluate: about a second.
constexpr std::uint64_t kMaxSteps = 2'000'000;

constexpr const char* kFooter =
    R"help(A implies B if every row that satisfies A satisfies B. "not shown" is less than
"not implied": the test works on conjunctive forms and knows comparisons of a
column with constants, and no more. A row that satisfies A and not B proves that
B is not implied; for text it is looked for among the values that occur in the
conditions, their neighbours and NULL. Parameters count as columns.

A column compared with itself, and a condition or its negation, count as true,
even where NULL makes them unknown; constants of one kind that are written
differently count as different, $1 and $2, 1 + 2 and 0 + 3, CURRENT_DATE and a
date among them; and texts that differ in blanks at the end count as the same.
In text a row shows it where that matters, or the reason stands alone where no
row can be tried.

A file has a pair on each line, with a tab between the two; blank lines and
lines that begin with -- are passed over, and - is the standard input. VALUEOF
reads a session variable; its VALUE in --set is a number, a 'text', a DATE, TIME
or TIMESTAMP '...', or any other text as it stands.

The exit status is 0 if B is implied (on every line), 1 if it was not shown, and
2 if there was an error.

Examples:
  rq implies "x = 5 AND y > 0" "x < 6"
  rq implies --set session.year=2024 "y = VALUEOF(session.year)" "y > 2020"
  rq implies --file pairs.txt)help";

/// The tab between the two conditions of a line: the one that stands in no text in quotes. Raises SqlError if it is not
/// exactly one.
std::size_t FindTab(std::string_view line) {
  std::optional<std::size_t> tab;
  SqlLexer lexer(line);
  std::size_t end = 0;
  for (SqlToken token = lexer.Next();; token = lexer.Next()) {
    for (std::size_t at = line.find('\t', end); at < token.m_begin; at = line.find('\t', at + 1)) {
      if (tab) throw SqlError(at, "there is a second tab here: a line is two conditions with a tab between them");
      tab = at;
    }
    if (token.m_kind == SqlToken::kEnd) break;
    end = token.m_end;
  }
  if (!tab) throw SqlError(line.size(), "a tab and a second condition are missing here");
  return *tab;
}

}  // namespace

void CommandImplies::Define(CLI::App& app) {
  app.add_option("CONDITIONS", CLI::callback_t(), "A and B, two conditions")->type_name("")->expected(0, -1);
  app.add_option("--file", m_file, "Read pairs from a file")->type_name("FILE");
  app.add_option("--format", m_format,
                 "text: to read, the default for two conditions; json: an object a pair, the default for a file")
      ->check(CLI::IsMember({"text", "json"}))
      ->type_name("FORMAT");
  app.add_option("--set", m_settings, "Give a session variable its value, as BLOCK.NAME=VALUE")
      ->type_name("SETTING")
      ->allow_extra_args(false);
  app.footer(kFooter);
}

bool CommandImplies::IsJson() const { return m_format ? *m_format == "json" : m_file.has_value(); }

int CommandImplies::Run(CommandStreams& streams) {
  SetSessionValues(m_settings, m_gateway);
  if (m_file) {
    if (!GetTexts().empty()) throw UsageError("conditions and --file do not go together");
    return RunLines(streams);
  }
  if (GetTexts().size() != std::tuple_size_v<Texts>)
    throw UsageError("two conditions are needed, A and B, or --file FILE");
  return RunArguments(streams);
}

int CommandImplies::RunArguments(CommandStreams& streams) {
  std::size_t current = 0;
  ImplicationAnswer answer;
  try {
    answer = Answer({GetTexts()[0], GetTexts()[1]}, current);
  } catch (const SqlError& error) {
    streams.m_err << MessageText(current == 0 ? "condition A, " : "condition B, ", error, GetTexts()[current]);
    return kExitError;
  }
  BlockWriter writer(streams.m_out);
  writer.Append(answer.m_text);
  writer.Flush();
  return answer.m_bImplied ? kExitSuccess : kExitNo;
}

int CommandImplies::RunLines(CommandStreams& streams) {
  bool bAllImplied = true;
  const bool bIsStream = *m_file == kStandardInput;
  const ConditionStreamOptions options{bIsStream ? "standard input" : *m_file, IsJson(), [&](const std::string& line) {
                                         const ImplicationAnswer answer = AnswerLine(line);
                                         bAllImplied &= answer.m_bImplied;
                                         return answer.m_text;
                                       }};
  const bool bAllGood =
      bIsStream ? RunConditionStream(streams.m_in, options, streams) : RunConditionFile(*m_file, options, streams);
  if (!bAllGood) return kExitError;
  return bAllImplied ? kExitSuccess : kExitNo;
}

ImplicationAnswer CommandImplies::AnswerLine(std::string_view line) {
  const std::size_t tab = FindTab(line);
  const Texts texts{line.substr(0, tab), line.substr(tab + 1)};
  std::size_t current = 0;
  try {
    return Answer(texts, current);
  } catch (const SqlError& error) {
    throw SqlError(error.GetOffset() + (current == 0 ? 0 : tab + 1), error.what());
  }
}

ImplicationAnswer CommandImplies::Answer(const Texts& texts, std::size_t& current) {
  const auto parse = [&](ARpGateway* pSession) {
    SqlContext context{{}, pSession};
    OwnedRqExprCondVector conditions;
    for (current = 0; current < texts.size(); ++current) {
      conditions.push_back(ParseCondition(texts[current], context));
    }
    return conditions;
  };
  OwnedRqExprCondVector conditions = parse(nullptr);
  try {
    if (IsJson()) return ImplicationAsJson(&m_gateway, conditions[0], conditions[1]);
    return ImplicationAsText(&m_gateway, conditions[0], conditions[1], kMaxSteps);
  } catch (const ErrorMessage& error) {
    // The place of the variable is only in the text.
    if (error.GetCode() == kMsgSessionVariableHasNoValue) parse(&m_gateway);
    throw;
  }
}
