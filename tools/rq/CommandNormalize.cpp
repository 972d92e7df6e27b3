#include "rq/CommandNormalize.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <utility>

#include "rq/CommandLine.h"
#include "rq/ConditionStream.h"
#include "rq/io/BlockWriter.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/ScalarFunctions.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr const char* kStandardInput = "-";
constexpr std::size_t kMaxQuotedCharacters = 40;

constexpr const char* kConditionsHelp =
    R"help(Conditions come as arguments, one each, or one a line from a file or the
standard input; blank lines and lines that begin with -- are passed over.
Write -- before a condition that begins with a dash.

The exit status is 0, or 2 if there was an error: in an argument (nothing is
written then), on a line (the others are), or in the use of the command.

A conversion to cnf or cnf-conjuncts is given up if more clauses are estimated
than TELMA_CNF_COMPLEXITY_LIMIT (512) and there are more different atoms than
TELM_CNF_UNIQUE_CONDITION_LIMIT (16), or if a disjunction has more than 8 terms
of several factors to multiply out; one to dnf is, if more clauses are estimated
than TELMA_DNF_COMPLEXITY_LIMIT (1024). These are variables of the environment.

A condition is one of PostgreSQL's grammar. It may hold + - * / % ^ ||, CASE,
CAST, COALESCE, NULLIF, TRIM, USER and these functions, of which log is the
natural logarithm:
)help";

constexpr const char* kExamplesHelp =
    R"help(
Examples:
  rq normalize "NOT (status IN ('open', 'held') OR amount < 10)"
  rq normalize --form dnf --format json --file conditions.sql
  rq normalize "CASE WHEN EXTRACT(MONTH FROM d) < 4 THEN 'Q1' END = 'Q1'")help";

/// The names of the functions in lines of the help's width.
std::string FunctionsHelp() {
  constexpr std::size_t kWidth = 78;
  std::string lines;
  std::string line;
  for (const ScalarFunction& function : GetScalarFunctions()) {
    if (function.m_name.starts_with('#')) continue;
    if (line.size() + 1 + function.m_name.size() > kWidth) lines.append(std::exchange(line, {})).append(1, '\n');
    line.append(line.empty() ? "  " : " ").append(function.m_name);
  }
  return lines.append(line).append(1, '\n');
}

/// What is wrong with the text of a limit, which is to be as it would be printed; empty if nothing is.
std::string WhyNoLimit(const std::string& text) {
  int limit = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), limit);
  if (result.ec == std::errc() && limit >= -1 && std::to_string(limit) == text) return {};
  return '\'' + ForMessage(text, kMaxQuotedCharacters) + "' is no decimal integer from -1 to 2147483647";
}

}  // namespace

void CommandNormalize::Define(CLI::App& app) {
  app.add_option("CONDITION", CLI::callback_t(), "Conditions; - alone stands for the standard input")
      ->type_name("")
      ->expected(0, -1);
  app.add_option("--file", m_file, "Read the conditions from a file")->type_name("FILE");
  app.add_option("--form", m_form,
                 "cnf: the conjunctive form; cnf-conjuncts: its conjuncts, each by itself; dnf: the disjuncts")
      ->check(CLI::IsMember({"cnf", "cnf-conjuncts", "dnf"}))
      ->type_name("FORM")
      ->capture_default_str();
  app.add_option("--format", m_format, "text: to read; json: an object a line")
      ->check(CLI::IsMember({"text", "json"}))
      ->type_name("FORMAT")
      ->capture_default_str();
  app.add_flag("--keep-in", m_bKeepIn, "Leave an IN over a list as one atom");
  app.add_flag("--force", m_bForce,
               "cnf: multiply out a disjunction at the top of more\n"
               "than 8 terms, within --limit; dnf: convert whatever\n"
               "is estimated");
  app.add_option("--limit", m_limit,
                 "Estimated clauses above which dnf is given up, and\n"
                 "cnf if there are too many atoms as well; 0: no\n"
                 "limit, -1: the environment's")
      ->check(WhyNoLimit)
      ->type_name("N")
      ->capture_default_str();
  app.footer(kConditionsHelp + FunctionsHelp() + kExamplesHelp);
}

int CommandNormalize::Run(CommandStreams& streams) {
  const NormalizeOptions normalize = GetOptions();
  if (normalize.m_form == NormalizeOptions::Form::kCnfConjuncts && (m_bForce || m_limit >= 0)) {
    streams.m_err << "rq: note: --force and --limit have no effect on cnf-conjuncts\n";
  }
  const bool bIsDash = GetTexts().size() == 1 && GetTexts()[0] == kStandardInput;
  const bool bHasArguments = !GetTexts().empty() && !bIsDash;
  if (!GetTexts().empty() && m_file) throw UsageError("conditions and --file do not go together");
  if (bHasArguments) return RunArguments(normalize, streams);
  const ConditionStreamOptions options{
      m_file && *m_file != kStandardInput ? *m_file : "standard input",
      normalize.m_format == NormalizeOptions::Format::kJson,
      [&normalize](const std::string& line) { return NormalFormText(*ParseCondition(line), normalize); }};
  if (m_file && *m_file != kStandardInput) {
    return RunConditionFile(*m_file, options, streams) ? kExitSuccess : kExitError;
  }
  if (!bIsDash && !m_file && streams.m_bInIsTerminal) {
    throw UsageError("nothing to normalize: give conditions, --file FILE, or - for the standard input");
  }
  return RunConditionStream(streams.m_in, options, streams) ? kExitSuccess : kExitError;
}

NormalizeOptions CommandNormalize::GetOptions() const {
  using Form = NormalizeOptions::Form;
  using Format = NormalizeOptions::Format;
  return {.m_form = m_form == "cnf"   ? Form::kCnf
                    : m_form == "dnf" ? Form::kDnf
                                      : Form::kCnfConjuncts,
          .m_format = m_format == "json" ? Format::kJson : Format::kText,
          .m_bKeepIn = m_bKeepIn,
          .m_bForce = m_bForce,
          .m_limit = m_limit};
}

int CommandNormalize::RunArguments(const NormalizeOptions& options, CommandStreams& streams) const {
  OwnedRqExprCondVector conditions;
  bool bAllGood = true;
  for (std::size_t i = 0; i < GetTexts().size(); ++i) {
    const std::string& text = GetTexts()[i];
    try {
      conditions.push_back(ParseCondition(text));
    } catch (const SqlError& error) {
      bAllGood = false;
      const std::string where = GetTexts().size() > 1 ? "condition " + std::to_string(i + 1) + ", " : "";
      streams.m_err << MessageText(where, error, text);
    }
  }
  if (!bAllGood) return kExitError;

  const char* const pSeparator = options.m_format == NormalizeOptions::Format::kText ? "\n" : "";
  std::string output;
  for (const OwnedRqExprCondPtr& condition : conditions) {
    if (!output.empty()) output += pSeparator;
    output += NormalFormText(*condition, options);
  }
  BlockWriter writer(streams.m_out);
  writer.Append(output);
  writer.Flush();
  return kExitSuccess;
}
