#include "rq/sql/ScalarFunctions.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "Host/KXDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlSpelling.h"
#include "rq/sql/SqlText.h"

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Fields and units

template <class Value>
struct NamedValue {
  std::string_view m_name;
  Value m_value;
};

// What PostgreSQL names week, dow and isodow counts otherwise, so those are not among them.
constexpr auto kFields = std::to_array<NamedValue<KXDateTime::ExtractOpcode>>({
    {"year", KXDateTime::kExtractYear},
    {"quarter", KXDateTime::kExtractQuarterOfYear},
    {"month", KXDateTime::kExtractMonth},
    {"day", KXDateTime::kExtractDay},
    {"hour", KXDateTime::kExtractHour},
    {"minute", KXDateTime::kExtractMinute},
    {"second", KXDateTime::kExtractSecond},
    {"quarter_of_year", KXDateTime::kExtractQuarterOfYear},
    {"month_of_quarter", KXDateTime::kExtractMonthOfQuarter},
    {"week_of_year", KXDateTime::kExtractWeekOfYear},
    {"week_of_quarter", KXDateTime::kExtractWeekOfQuarter},
    {"week_of_month", KXDateTime::kExtractWeekOfMonth},
    {"day_of_year", KXDateTime::kExtractDayOfYear},
    {"doy", KXDateTime::kExtractDayOfYear},
    {"day_of_quarter", KXDateTime::kExtractDayOfQuarter},
    {"day_of_week", KXDateTime::kExtractDayOfWeek},
    {"name_of_month", KXDateTime::kExtractNameOfMonth},
    {"name_of_day", KXDateTime::kExtractNameOfDay},
});

constexpr std::string_view kUnitPrefix = "sql_tsi_";
constexpr auto kUnits = std::to_array<NamedValue<KXDateTime::UnitOfTime>>({
    {"frac_second", KXDateTime::kMillisecond},
    {"second", KXDateTime::kSecond},
    {"minute", KXDateTime::kMinute},
    {"hour", KXDateTime::kHour},
    {"day", KXDateTime::kDay},
    {"week", KXDateTime::kWeek},
    {"month", KXDateTime::kMonth},
    {"quarter", KXDateTime::kQuarter},
    {"year", KXDateTime::kYear},
});

std::string InLowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lower;
}

template <class Table>
auto ValueOf(const Table& table, std::string_view name, const SqlWord& word, const std::string& what) {
  if (const auto* const pEntry = FindByName(table, name)) return pEntry->m_value;
  std::string message = what;
  for (const auto& entry : table) message.append(&entry == &table.front() ? " " : ", ").append(entry.m_name);
  throw SqlError(word.m_offset, message);
}

KXDateTime::ExtractOpcode FieldOf(const SqlWord& word) {
  return ValueOf(kFields, InLowerCase(word.m_text), word, "the field is one of");
}

KXDateTime::UnitOfTime UnitOf(const SqlWord& word) {
  std::string name = InLowerCase(word.m_text);
  if (name.starts_with(kUnitPrefix)) name.erase(0, kUnitPrefix.size());
  return ValueOf(kUnits, name, word, "the unit of time is, with or without SQL_TSI_, one of");
}

// ---------------------------------------------------------------------------------------------------------------------
// Makers

/// An operand that is always left out.
constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

RqExpr* Take(ScalarArguments& arguments, std::size_t i) {
  return i < arguments.m_operands.size() ? std::exchange(arguments.m_operands[i], nullptr) : nullptr;
}

/// The node whose operands are those arguments, in the order of its slots.
template <class Function, std::size_t... kArguments>
OwnedRqExprPtr Make([[maybe_unused]] ScalarArguments& arguments) {
  return OwnedRqExprPtr(new Function(Take(arguments, kArguments)...));
}

template <RqExprTrim::TrimOperation kOperation>
OwnedRqExprPtr MakeTrim(ScalarArguments& arguments) {
  return OwnedRqExprPtr(new RqExprTrim(Take(arguments, 1), Take(arguments, 0), kOperation));
}

OwnedRqExprPtr MakeCalendarExtract(ScalarArguments& arguments) {
  const auto field = FieldOf(arguments.m_word);
  return OwnedRqExprPtr(new RqExprCalendarExtract(Take(arguments, 0), field));
}

OwnedRqExprPtr MakeFiscalExtract(ScalarArguments& arguments) {
  const auto field = FieldOf(arguments.m_word);
  return OwnedRqExprPtr(new RqExprFiscalExtract(Take(arguments, 0), Take(arguments, 1), Take(arguments, 2), field));
}

template <class Function>
OwnedRqExprPtr MakeOverUnit(ScalarArguments& arguments) {
  const auto unit = UnitOf(arguments.m_word);
  return OwnedRqExprPtr(new Function(Take(arguments, 0), Take(arguments, 1), unit));
}

OwnedRqExprPtr MakeIndexCol(ScalarArguments& arguments) {
  const Heap<RqExprIndexCol> node(new RqExprIndexCol);
  for (std::size_t i = 0; i < arguments.m_operands.size(); ++i) node->AddChild(Take(arguments, i));
  return node;
}

OwnedRqExprPtr MakeEvaluate(ScalarArguments& arguments) {
  if (!arguments.m_word.m_bIsString) {
    throw SqlError(arguments.m_word.m_offset, "the text of a function is needed here, such as 'f(%1)'");
  }
  return OwnedRqExprPtr(new RqExprEvaluate(ToText(arguments.m_word.m_text), arguments.m_operands));
}

// ---------------------------------------------------------------------------------------------------------------------
// The functions

constexpr std::size_t CountArguments(std::string_view arguments) {
  return arguments.empty() ? 0 : static_cast<std::size_t>(std::ranges::count(arguments, ',')) + 1;
}

constexpr ScalarFunction Row(std::string_view name, std::string_view arguments,
                             OwnedRqExprPtr (*make)(ScalarArguments&), bool bBeginsWithWord = false) {
  const bool bAnyNumber = arguments.ends_with("...]");
  return {name,
          arguments,
          CountArguments(arguments.substr(0, arguments.find('['))),
          bAnyNumber ? std::numeric_limits<std::size_t>::max() : CountArguments(arguments),
          bBeginsWithWord,
          make};
}

constexpr bool kBeginsWithWord = true;

// Those that stand for one another in a row below are the names of the text form and PostgreSQL's. The parser turns
// TRIM, POSITION, EXTRACT and OVERLAY into calls of btrim, position and so on, with the source in front.
constexpr auto kFunctions = std::to_array<ScalarFunction>({
    // Numbers.
    Row("abs", "number", Make<RqExprAbs, 0>),
    Row("acos", "number", Make<RqExprAcos, 0>),
    Row("asin", "number", Make<RqExprAsin, 0>),
    Row("atan", "number", Make<RqExprAtan, 0>),
    Row("atan2", "y, x", Make<RqExprAtan2, 0, 1>),
    Row("ceil", "number", Make<RqExprCeil, 0>),
    Row("ceiling", "number", Make<RqExprCeil, 0>),
    Row("cos", "angle", Make<RqExprCos, 0>),
    Row("cosh", "number", Make<RqExprCosh, 0>),
    Row("cot", "angle", Make<RqExprCot, 0>),
    Row("degrees", "radians", Make<RqExprDegrees, 0>),
    Row("exp", "number", Make<RqExprExp, 0>),
    Row("extractbit", "number, bit", Make<RqExprExtractBit, 0, 1>),
    Row("floor", "number", Make<RqExprFloor, 0>),
    // Wanted: the natural logarithm, as the text form has it. In PostgreSQL log is that to base 10.
    Row("ln", "number", Make<RqExprLog, 0>),
    Row("log", "number", Make<RqExprLog, 0>),
    Row("log10", "number", Make<RqExprLog10, 0>),
    Row("mod", "dividend, divisor", Make<RqExprMod, 0, 1>),
    Row("modf", "dividend, divisor", Make<RqExprModf, 0, 1>),
    Row("pi", "", Make<RqExprPi>),
    Row("pow", "base, exponent", Make<RqExprPow, 0, 1>),
    Row("power", "base, exponent", Make<RqExprPow, 0, 1>),
    Row("radians", "degrees", Make<RqExprRadians, 0>),
    Row("rand", "[seed]", Make<RqExprRand, 0>),
    Row("random", "", Make<RqExprRand, kNone>),
    Row("round", "number[, places]", Make<RqExprRound, 0, 1>),
    Row("sign", "number", Make<RqExprSign, 0>),
    Row("sin", "angle", Make<RqExprSin, 0>),
    Row("sinh", "number", Make<RqExprSinh, 0>),
    Row("sqrt", "number", Make<RqExprSqrt, 0>),
    Row("square", "number", Make<RqExprSquare, 0>),
    Row("tan", "angle", Make<RqExprTan, 0>),
    Row("tanh", "number", Make<RqExprTanh, 0>),
    Row("trunc", "number[, places]", Make<RqExprTruncate, 0, 1>),
    Row("truncate", "number[, places]", Make<RqExprTruncate, 0, 1>),
    // Text.
    Row("ascii", "text", Make<RqExprAscii, 0>),
    Row("bit_length", "text", Make<RqExprBitLength, 0>),
    Row("btrim", "text[, characters]", MakeTrim<RqExprTrim::kBoth>),
    Row("char", "code", Make<RqExprChar, 0>),
    Row("char_length", "text", Make<RqExprCharLength, 0>),
    Row("character_length", "text", Make<RqExprCharLength, 0>),
    Row("chr", "code", Make<RqExprChar, 0>),
    Row("concat", "left, right", Make<RqExprConcat, 0, 1>),
    Row("insert", "text, start, length, new", Make<RqExprInsert, 0, 1, 2, 3>),
    Row("left", "text, count", Make<RqExprLeft, 0, 1>),
    Row("length", "text", Make<RqExprLength, 0>),
    Row("locate", "part, text[, start]", Make<RqExprLocate, 0, 1, 2>),
    Row("lower", "text", Make<RqExprLower, 0>),
    Row("ltrim", "text[, characters]", MakeTrim<RqExprTrim::kLeading>),
    Row("nlssort", "text[, language]", Make<RqExprNLSSort, 0, 1>),
    Row("octet_length", "text", Make<RqExprOctetLength, 0>),
    Row("overlay", "text, new, start, length", Make<RqExprInsert, 0, 2, 3, 1>),
    Row("position", "text, part", Make<RqExprPosition, 1, 0>),
    Row("repeat", "text, count", Make<RqExprRepeat, 0, 1>),
    Row("replace", "text, old, new", Make<RqExprReplace, 0, 1, 2>),
    Row("right", "text, count", Make<RqExprRight, 0, 1>),
    Row("rtrim", "text[, characters]", MakeTrim<RqExprTrim::kTrailing>),
    Row("space", "count", Make<RqExprSpace, 0>),
    Row("strpos", "text, part", Make<RqExprPosition, 1, 0>),
    Row("substr", "text, start[, length]", Make<RqExprSubstring, 0, 1, 2, kNone, kNone>),
    Row("substring", "text, start[, length]", Make<RqExprSubstring, 0, 1, 2, kNone, kNone>),
    Row(kLeadingTokensFunction, "text, count, delimiter", Make<RqExprSubstring, 0, kNone, kNone, 1, 2>),
    Row("upper", "text", Make<RqExprUpper, 0>),
    // Dates and times.
    Row("date_part", "field, moment", MakeCalendarExtract, kBeginsWithWord),
    Row("extract", "field, moment", MakeCalendarExtract, kBeginsWithWord),
    Row("fiscal_extract", "field, moment[, month, day]", MakeFiscalExtract, kBeginsWithWord),
    Row("timestampadd", "unit, number, moment", MakeOverUnit<RqExprTimestampAdd>, kBeginsWithWord),
    Row("timestampdiff", "unit, from, to", MakeOverUnit<RqExprTimestampDiff>, kBeginsWithWord),
    // Others.
    Row("current_database", "", Make<RqExprDatabase>),
    Row("database", "", Make<RqExprDatabase>),
    Row("evaluate", "function[, value...]", MakeEvaluate, kBeginsWithWord),
    Row("ifnull", "value, default", Make<RqExprIfNull, 0, 1>),
    Row("indexcol", "index, column[, column...]", MakeIndexCol),
});

}  // namespace

const ScalarFunction* FindScalarFunction(std::string_view name) { return FindByName(kFunctions, name); }

std::span<const ScalarFunction> GetScalarFunctions() { return kFunctions; }
