#include "rq/sql/ConditionBuilder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Host/KXDateTime.h"
#include "Host/KorvelNumber.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

// Constants, typed literals and what stands for the moment or the session.

namespace {

constexpr int kMaxFractionDigits = 9;

std::string Quoted(std::string_view text) { return '\'' + ForMessage(text, kMaxQuotedCharacters) + '\''; }

bool HasDigitOtherThanZero(std::string_view mantissa) {
  return mantissa.substr(0, mantissa.find_first_of("eE")).find_first_of("123456789") != std::string_view::npos;
}

/// How many digits stand behind the point of a second.
short FractionDigitsOf(std::string_view moment) {
  const std::size_t point = moment.find('.');
  if (point == std::string_view::npos) return 0;
  const std::size_t end = moment.find_first_not_of("0123456789", point + 1);
  return static_cast<short>(std::min(end, moment.size()) - point - 1);
}

struct IntervalUnit {
  std::int64_t m_mask;
  const char* m_words;
};

/// The unit of an interval, as the parser packs it: a bit for each field.
const char* WordsOfIntervalUnit(std::int64_t mask) {
  static constexpr std::array<IntervalUnit, 13> kUnits{{{1 << 2, "YEAR"},
                                                        {1 << 1, "MONTH"},
                                                        {1 << 3, "DAY"},
                                                        {1 << 10, "HOUR"},
                                                        {1 << 11, "MINUTE"},
                                                        {1 << 12, "SECOND"},
                                                        {1 << 2 | 1 << 1, "YEAR TO MONTH"},
                                                        {1 << 3 | 1 << 10, "DAY TO HOUR"},
                                                        {1 << 3 | 1 << 10 | 1 << 11, "DAY TO MINUTE"},
                                                        {1 << 3 | 1 << 10 | 1 << 11 | 1 << 12, "DAY TO SECOND"},
                                                        {1 << 10 | 1 << 11, "HOUR TO MINUTE"},
                                                        {1 << 10 | 1 << 11 | 1 << 12, "HOUR TO SECOND"},
                                                        {1 << 11 | 1 << 12, "MINUTE TO SECOND"}}};
  const auto it = std::ranges::find(kUnits, mask, &IntervalUnit::m_mask);
  return it == kUnits.end() ? nullptr : it->m_words;
}

/// Whether a text may say an interval: an amount in figures, with signs and words for units. Which ones is left to the
/// database.
bool MayBeInterval(std::string_view text) {
  static constexpr std::string_view kOtherCharacters = " \t+-.,:";
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  return std::ranges::any_of(text, isDigit) && std::ranges::all_of(text, [&](char c) {
           const bool bIsLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
           return isDigit(c) || bIsLetter || kOtherCharacters.find(c) != std::string_view::npos;
         });
}

}  // namespace

OwnedRqExprPtr ConditionBuilder::BuildConstant(SqlNode node) {
  const std::size_t place = node.GetLocation();
  if (const SqlNode text = node.Get("sval"); !text.IsNone()) {
    Heap<RqExprStringLiteral> literal(new RqExprStringLiteral(ToText(text.Get("sval").GetText())));
    literal->SetStringWrapperSymbol(RqExprStringLiteral::kSingleQuote);
    return literal;
  }
  if (const SqlNode integer = node.Get("ival"); !integer.IsNone()) {
    const SqlNode value = integer.Get("ival");
    return OwnedRqExprPtr(new RqExprIntegerLiteral(value.IsNone() ? ReadFoldedInteger(place)
                                                                  : static_cast<std::int32_t>(value.GetNumber())));
  }
  if (const SqlNode number = node.Get("fval"); !number.IsNone()) {
    return BuildDecimal(number.Get("fval").GetText(), place);
  }
  if (node.Get("isnull").IsTrue()) return OwnedRqExprPtr(new RqExprNullLiteral);
  RaiseUnsupported(node, node.Get("boolval").IsNone() ? "a bit string" : "a constant TRUE or FALSE");
}

/// The value of an integer that the parser's tree does not show because it is not above zero: signs, brackets and the
/// figures, as they stand in the text.
std::int32_t ConditionBuilder::ReadFoldedInteger(std::size_t offset) const {
  SqlLexer lexer(m_text, offset);
  SqlToken token = lexer.Next();
  bool bNegative = false;
  for (; token.m_kind == SqlToken::kPunctuation; token = lexer.Next()) bNegative ^= m_text[token.m_begin] == '-';
  std::int32_t value = 0;
  std::from_chars(m_text.data() + token.m_begin, m_text.data() + token.m_end, value);
  return bNegative ? -value : value;
}

/// A number whose text the parser kept: an integer of more than 32 bits, or one with a point or an exponent. The least
/// integer of 32 bits is among them, since its figures alone are too many.
OwnedRqExprPtr ConditionBuilder::BuildDecimal(std::string_view number, std::size_t offset) {
  if (number.find_first_of(".eE") != std::string_view::npos) {
    double value = 0;
    std::from_chars(number.data(), number.data() + number.size(), value);
    if (!std::isfinite(value) || (value == 0 && HasDigitOtherThanZero(number))) {
      throw SqlError(offset, "the number is out of the range of floating point numbers");
    }
    return OwnedRqExprPtr(new RqExprFloatLiteral(value));
  }
  std::int32_t integer = 0;
  if (std::from_chars(number.data(), number.data() + number.size(), integer).ec == std::errc()) {
    return OwnedRqExprPtr(new RqExprIntegerLiteral(integer));
  }
  const KXString text = ToText(number);
  const bool bNegative = number.starts_with('-');
  std::string_view digits = number.substr(bNegative ? 1 : 0);
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  KorvelNumber value;
  if (!KorvelNumber::FromString(text, value) ||
      value.asString(L"F0").ToUTF8() != (bNegative ? "-" : "") + std::string(digits)) {
    throw SqlError(offset, "the number has more digits than can be kept");
  }
  return OwnedRqExprPtr(new RqExprNumberLiteral(value));
}

OwnedRqExprPtr ConditionBuilder::BuildTypedLiteral(SqlNode node) {
  static constexpr Construct kTypes[] = {
      {"date", &ConditionBuilder::BuildDate, nullptr},
      {"time", &ConditionBuilder::BuildTime, nullptr},
      {"timestamp", &ConditionBuilder::BuildTimestamp, nullptr},
      {"interval", &ConditionBuilder::BuildInterval, nullptr},
  };
  const std::string type = WithoutCatalogue(TextsOf(node.Get("typeName", "names")));
  const Construct* const pType = FindByName(kTypes, type);
  if (!pType) RaiseUnsupported(node, "a literal of type " + ForMessage(type, kMaxQuotedCharacters));
  return BuildBy(pType, node);
}

/// The value of a literal. Raises at the literal if the calendar has none such.
template <class Value>
Value ConditionBuilder::ReadMoment(SqlNode node, const char* whatItIsNot) {
  if (const auto precision = node.Get("typeName", "typmods").GetElements(); !precision.empty()) {
    RaiseUnsupported(precision.front(), "the precision of a literal");
  }
  const std::string_view text = node.Get("arg", "sval").Get("sval").GetText();
  Value value;
  if (!Value::FromString(ToText(text), value)) {
    throw SqlError(node.GetStart(), Quoted(text) + " is not " + whatItIsNot);
  }
  return value;
}

OwnedRqExprPtr ConditionBuilder::BuildDate(SqlNode node) {
  return OwnedRqExprPtr(new RqExprDateLiteral(ReadMoment<KXDate>(node, "a date of the form YYYY-MM-DD")));
}

OwnedRqExprPtr ConditionBuilder::BuildTime(SqlNode node) {
  return OwnedRqExprPtr(new RqExprTimeLiteral(ReadMoment<KXTime>(node, "a time of the form HH:MM:SS.F")));
}

OwnedRqExprPtr ConditionBuilder::BuildTimestamp(SqlNode node) {
  const auto value = ReadMoment<KXDateTime>(node, "a timestamp of the form YYYY-MM-DD HH:MM:SS.F");
  return OwnedRqExprPtr(
      new RqExprDateTimeLiteral(value, FractionDigitsOf(node.Get("arg", "sval").Get("sval").GetText())));
}

OwnedRqExprPtr ConditionBuilder::BuildInterval(SqlNode node) {
  const std::string_view text = node.Get("arg", "sval").Get("sval").GetText();
  if (!MayBeInterval(text)) throw SqlError(node.GetStart(), Quoted(text) + " is not an interval");
  std::string literal = "INTERVAL '" + std::string(text) + '\'';
  const std::vector<SqlNode> modifiers = node.Get("typeName", "typmods").GetElements();
  if (modifiers.size() > 1) RaiseUnsupported(modifiers.back(), "the precision of a literal");
  if (!modifiers.empty()) {
    const char* const pWords = WordsOfIntervalUnit(modifiers[0].Get("ival").Get("ival").GetNumber());
    if (!pWords) RaiseUnsupported(modifiers[0], "this unit of an interval");
    literal.append(1, ' ').append(pWords);
  }
  return OwnedRqExprPtr(new RqExprIntervalLiteral(ToText(literal)));
}

template <class Node>
OwnedRqExprPtr ConditionBuilder::BuildNode(SqlNode) {
  return OwnedRqExprPtr(new Node);
}

OwnedRqExprPtr ConditionBuilder::BuildValueFunction(SqlNode node) {
  static constexpr Construct kTokens[] = {
      {"CURRENT_DATE", &ConditionBuilder::BuildCurrentDate, nullptr},
      {"CURRENT_TIME", &ConditionBuilder::BuildCurrentTime, nullptr},
      {"LOCALTIME", &ConditionBuilder::BuildCurrentTime, nullptr},
      {"CURRENT_TIMESTAMP", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"CURRENT_TIMESTAMP_N", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"LOCALTIMESTAMP", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"LOCALTIMESTAMP_N", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"USER", &ConditionBuilder::BuildNode<RqExprUser>, nullptr},
      {"CURRENT_USER", &ConditionBuilder::BuildNode<RqExprUser>, nullptr},
      {"CURRENT_CATALOG", &ConditionBuilder::BuildNode<RqExprDatabase>, nullptr},
      {"CURRENT_TIME_N", nullptr, "the precision of CURRENT_TIME"},
      {"LOCALTIME_N", nullptr, "the precision of LOCALTIME"},
  };
  static constexpr std::string_view kPrefix = "SVFOP_";
  std::string_view name = node.Get("op").GetText();
  if (name.starts_with(kPrefix)) name.remove_prefix(kPrefix.size());
  const Construct* const pToken = FindByName(kTokens, name);
  if (!pToken) RaiseUnsupported(node, std::string(name));
  return BuildBy(pToken, node);
}

OwnedRqExprPtr ConditionBuilder::BuildCurrentDate(SqlNode) {
  KXDate date;
  date.SetAsDynamicCurrDateToken();
  return OwnedRqExprPtr(new RqExprDateLiteral(date));
}

OwnedRqExprPtr ConditionBuilder::BuildCurrentTime(SqlNode) {
  KXTime time;
  time.SetAsDynamicCurrTimeToken();
  return OwnedRqExprPtr(new RqExprTimeLiteral(time));
}

OwnedRqExprPtr ConditionBuilder::BuildCurrentTimestamp(SqlNode node) {
  const std::int64_t precision = std::max<std::int64_t>(node.Get("typmod").GetNumber(), 0);  // -1 without one
  if (precision > kMaxFractionDigits) {
    throw SqlError(node.GetLocation(), "the precision of a timestamp is at most " + std::to_string(kMaxFractionDigits));
  }
  KXDateTime dateTime;
  dateTime.SetAsDynamicCurrDateTimeToken();
  return OwnedRqExprPtr(new RqExprDateTimeLiteral(dateTime, static_cast<short>(precision)));
}
