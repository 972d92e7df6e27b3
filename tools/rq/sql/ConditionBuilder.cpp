#include "rq/sql/ConditionBuilder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>

#include "Host/KXDateTime.h"
#include "Host/KXString.h"
#include "Host/KXThread.h"
#include "Host/KorvelNumber.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::size_t kMaxQuotedCharacters = 40;
constexpr int kMaxFractionDigits = 9;

/// The parser cuts names to 63 bytes or, so as not to split a character, up to three bytes less.
constexpr std::size_t kLengthOfPossiblyCutName = 60;

std::size_t PlaceOfNode(SqlNode node) {
  std::size_t place = node.GetLocation();
  if (place == SqlNode::kNoLocation) place = node.GetStart();
  return place == SqlNode::kNoLocation ? 0 : place;
}

[[noreturn]] void RaiseUnsupported(SqlNode node, const std::string& what) {
  throw SqlError(PlaceOfNode(node), what + " is not supported");
}

KXString ToText(std::string_view utf8) { return KXString::FromUTF8(utf8); }

std::string Quoted(std::string_view text) { return '\'' + ForMessage(text, kMaxQuotedCharacters) + '\''; }

/// The elements of an array of String nodes.
std::vector<std::string_view> TextsOf(SqlNode array) {
  std::vector<std::string_view> texts;
  for (const SqlNode element : array.GetElements()) texts.push_back(element.Get("sval").GetText());
  return texts;
}

std::string JoinedByPoints(const std::vector<std::string_view>& parts) {
  std::string joined;
  for (const std::string_view part : parts) joined.append(joined.empty() ? "" : ".").append(part);
  return joined;
}

/// A name of the parser's own catalogue, without its schema; any other as it is.
std::string WithoutCatalogue(const std::vector<std::string_view>& name) {
  const bool bIsInCatalogue = name.size() == 2 && name[0] == "pg_catalog";
  return bIsInCatalogue ? std::string(name[1]) : JoinedByPoints(name);
}

const char* WhatItIs(const RqExpr& expr) {
  if (expr.IsCond()) return "a condition";
  if (expr.IsLiteral()) return "a constant";
  if (expr.IsColumnReference()) return "a column";
  if (expr.IsParam()) return "a parameter";
  return "a value";
}

bool IsNegatedIn(SqlNode node) { return TextsOf(node.Get("name")).at(0) == "<>"; }

bool IsRow(SqlNode node) { return node.GetKind() == "RowExpr"; }

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

/// The name that a word or a quoted name says; empty for a spelling that is not read here.
std::string NameOf(std::string_view token) {
  std::string name;
  if (token.starts_with('"')) {
    for (std::size_t i = 1; i + 1 < token.size(); ++i) {
      name += token[i];
      if (token[i] == '"') ++i;
    }
  } else if (!token.ends_with('"')) {
    for (const char c : token) name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return name;
}

template <class Constructs>
auto FindConstruct(const Constructs& constructs, std::string_view name) {
  const auto it = std::ranges::find_if(constructs, [name](const auto& construct) { return construct.m_name == name; });
  return it == std::ranges::end(constructs) ? nullptr : &*it;
}

}  // namespace

OwnedRqExprCondPtr ParseCondition(std::string_view text) {
  const SqlCondition condition(text);
  return ConditionBuilder(condition).Build();
}

OwnedRqExprPtr ConditionBuilder::BuildExpr(SqlNode node) {
  static constexpr Construct kKinds[] = {
      {"A_Expr", &ConditionBuilder::BuildOperatorForm, nullptr},
      {"ColumnRef", &ConditionBuilder::BuildColumn, nullptr},
      {"A_Const", &ConditionBuilder::BuildConstant, nullptr},
      {"BoolExpr", &ConditionBuilder::BuildConnective, nullptr},
      {"NullTest", &ConditionBuilder::BuildNullTest, nullptr},
      {"TypeCast", &ConditionBuilder::BuildTypedLiteral, nullptr},
      {"ParamRef", &ConditionBuilder::BuildParameter, nullptr},
      {"FuncCall", &ConditionBuilder::BuildFunction, nullptr},
      {"SQLValueFunction", &ConditionBuilder::BuildMomentToken, nullptr},
      {"A_ArrayExpr", nullptr, "an array"},
      {"A_Indirection", nullptr, "taking a part of a value"},
      {"BooleanTest", nullptr, "a test for TRUE, FALSE or UNKNOWN"},
      {"CaseExpr", nullptr, "CASE"},
      {"CoalesceExpr", nullptr, "COALESCE"},
      {"CollateClause", nullptr, "COLLATE"},
      {"GroupingFunc", nullptr, "GROUPING"},
      {"MinMaxExpr", nullptr, "GREATEST or LEAST"},
      {"NamedArgExpr", nullptr, "a named argument"},
      {"RowExpr", nullptr, "a row of values outside IN"},
      {"SetToDefault", nullptr, "DEFAULT"},
      {"SubLink", nullptr, "a subquery"},
      {"XmlExpr", nullptr, "XML"},
      {"XmlSerialize", nullptr, "XML"},
  };
  KXThread::LowStackCheck(0);
  return BuildBy(FindConstruct(kKinds, node.GetKind()), node);
}

OwnedRqExprPtr ConditionBuilder::BuildBy(const Construct* pConstruct, SqlNode node) {
  if (!pConstruct) RaiseUnsupported(node, "this construct");
  if (!pConstruct->m_build) RaiseUnsupported(node, pConstruct->m_unsupported);
  return (this->*pConstruct->m_build)(node);
}

OwnedRqExprCondPtr ConditionBuilder::BuildCondition(SqlNode node) {
  const OwnedRqExprPtr expr = BuildExpr(node);
  if (!expr->IsCond()) {
    throw SqlError(node.GetStart(), std::string("a condition is needed here, not ") + WhatItIs(*expr));
  }
  return OwnedRqExprCondPtr(static_cast<RqExprCond*>(expr.Release()));
}

OwnedRqExprPtr ConditionBuilder::BuildValue(SqlNode node) {
  const OwnedRqExprPtr expr = BuildExpr(node);
  if (expr->IsCond()) throw SqlError(node.GetStart(), "a value is needed here, not a condition");
  return expr;
}

OwnedRqExprPtr ConditionBuilder::BuildOperatorForm(SqlNode node) {
  static constexpr Construct kForms[] = {
      {"AEXPR_OP", &ConditionBuilder::BuildOperator, nullptr},
      {"AEXPR_IN", &ConditionBuilder::BuildIn, nullptr},
      {"AEXPR_LIKE", &ConditionBuilder::BuildLike, nullptr},
      {"AEXPR_BETWEEN", &ConditionBuilder::BuildBetween, nullptr},
      {"AEXPR_NOT_BETWEEN", &ConditionBuilder::BuildBetween, nullptr},
      {"AEXPR_BETWEEN_SYM", nullptr, "BETWEEN SYMMETRIC"},
      {"AEXPR_NOT_BETWEEN_SYM", nullptr, "BETWEEN SYMMETRIC"},
      {"AEXPR_DISTINCT", nullptr, "IS DISTINCT FROM"},
      {"AEXPR_NOT_DISTINCT", nullptr, "IS NOT DISTINCT FROM"},
      {"AEXPR_ILIKE", nullptr, "ILIKE"},
      {"AEXPR_NULLIF", nullptr, "NULLIF"},
      {"AEXPR_OP_ALL", nullptr, "ALL over an array"},
      {"AEXPR_OP_ANY", nullptr, "ANY over an array"},
      {"AEXPR_SIMILAR", nullptr, "SIMILAR TO"},
  };
  return BuildBy(FindConstruct(kForms, node.Get("kind").GetText()), node);
}

template <class Comparison>
OwnedRqExprPtr ConditionBuilder::BuildComparison(SqlNode node) {
  const OwnedRqExprPtr left = BuildValue(node.Get("lexpr"));
  const OwnedRqExprPtr right = BuildValue(node.Get("rexpr"));
  if constexpr (std::is_same_v<Comparison, RqExprCondEquality>) {
    return OwnedRqExprPtr(new RqExprCondEquality(left.Release(), right.Release(), false));
  } else {
    return OwnedRqExprPtr(new Comparison(left.Release(), right.Release()));
  }
}

OwnedRqExprPtr ConditionBuilder::BuildOperator(SqlNode node) {
  static constexpr Construct kComparisons[] = {
      {"=", &ConditionBuilder::BuildComparison<RqExprCondEquality>, nullptr},
      {"<>", &ConditionBuilder::BuildComparison<RqExprCondNotEqual>, nullptr},
      {"<", &ConditionBuilder::BuildComparison<RqExprCondLess>, nullptr},
      {"<=", &ConditionBuilder::BuildComparison<RqExprCondLessEqual>, nullptr},
      {">", &ConditionBuilder::BuildComparison<RqExprCondGreater>, nullptr},
      {">=", &ConditionBuilder::BuildComparison<RqExprCondGreaterEqual>, nullptr},
  };
  const std::string name = JoinedByPoints(TextsOf(node.Get("name")));
  const bool bIsBinary = !node.Get("lexpr").IsNone() && !node.Get("rexpr").IsNone();
  if (const Construct* const pComparison = FindConstruct(kComparisons, name); bIsBinary && pComparison) {
    return BuildBy(pComparison, node);
  }
  // The parser folds a minus into the number behind it, but leaves a plus.
  const SqlNode operand = node.Get("rexpr");
  const bool bIsNumber = !operand.Get("ival").IsNone() || !operand.Get("fval").IsNone();
  if (!bIsBinary && name == "+" && bIsNumber) return BuildConstant(operand);
  RaiseUnsupported(node, "the operator " + ForMessage(name, kMaxQuotedCharacters));
}

OwnedRqExprPtr ConditionBuilder::BuildConnective(SqlNode node) {
  const std::string_view connective = node.Get("boolop").GetText();
  if (connective == "AND_EXPR") return BuildJunction<RqExprCondAnd>(node);
  if (connective == "OR_EXPR") return BuildJunction<RqExprCondOr>(node);
  const std::vector<SqlNode> operands = node.Get("args").GetElements();
  return OwnedRqExprPtr(new RqExprCondNot(BuildCondition(operands.at(0)).Release()));
}

template <class Junction>
OwnedRqExprPtr ConditionBuilder::BuildJunction(SqlNode node) {
  OwnedRqExprCondPtr folded;
  for (const SqlNode operand : node.Get("args").GetElements()) {
    const OwnedRqExprCondPtr next = BuildCondition(operand);
    folded = Junction::Concatenate(folded.Release(), next.Release());
  }
  return folded;
}

OwnedRqExprPtr ConditionBuilder::BuildNullTest(SqlNode node) {
  const bool bNegated = node.Get("nulltesttype").GetText() == "IS_NOT_NULL";
  return OwnedRqExprPtr(new RqExprCondIsNull(BuildValue(node.Get("arg")).Release(), bNegated));
}

OwnedRqExprPtr ConditionBuilder::BuildBetween(SqlNode node) {
  const std::vector<SqlNode> bounds = node.Get("rexpr", "items").GetElements();
  const OwnedRqExprPtr value = BuildValue(node.Get("lexpr"));
  const OwnedRqExprPtr low = BuildValue(bounds.at(0));
  const OwnedRqExprPtr high = BuildValue(bounds.at(1));
  const bool bNegated = node.Get("kind").GetText() == "AEXPR_NOT_BETWEEN";
  return OwnedRqExprPtr(new RqExprCondBetween(value.Release(), low.Release(), high.Release(), bNegated));
}

OwnedRqExprPtr ConditionBuilder::BuildLike(SqlNode node) {
  // An ESCAPE comes as a call around the pattern, which stands where the LIKE stands; one that the text itself makes
  // has a place of its own.
  SqlNode pattern = node.Get("rexpr");
  SqlNode escape;
  if (pattern.GetKind() == "FuncCall" && pattern.GetLocation() == node.GetLocation()) {
    const std::vector<SqlNode> arguments = pattern.Get("args").GetElements();
    pattern = arguments.at(0);
    escape = arguments.at(1);
  }
  const OwnedRqExprPtr value = BuildValue(node.Get("lexpr"));
  const OwnedRqExprPtr patternValue = BuildValue(pattern);
  const OwnedRqExprPtr escapeValue = escape.IsNone() ? OwnedRqExprPtr() : BuildValue(escape);
  const bool bNegated = TextsOf(node.Get("name")).at(0) == "!~~";
  return OwnedRqExprPtr(new RqExprCondLike(value.Release(), patternValue.Release(), bNegated, escapeValue.Release()));
}

OwnedRqExprPtr ConditionBuilder::BuildIn(SqlNode node) {
  if (IsRow(node.Get("lexpr"))) return BuildRowIn(node);
  const OwnedRqExprPtr search = BuildValue(node.Get("lexpr"));
  const std::vector<SqlNode> items = node.Get("rexpr", "items").GetElements();
  const Heap<RqExprColumnList> values(new RqExprColumnList);
  values->SetNumColumns(static_cast<int>(items.size()));
  for (int i = 0; const SqlNode item : items) values->SetIthColumn(i++, BuildValue(item).Release());
  return OwnedRqExprPtr(new RqExprCondIn(search.Release(), values.Release(), IsNegatedIn(node)));
}

OwnedRqExprPtr ConditionBuilder::BuildRowIn(SqlNode node) {
  const SqlNode search = node.Get("lexpr");
  const std::size_t nColumns = search.Get("args").GetElements().size();
  if (nColumns == 0) RaiseUnsupported(search, "an empty row");
  const Heap<RqExprColumnListOrdered> columns = BuildRow(search, nColumns);
  const std::vector<SqlNode> items = node.Get("rexpr", "items").GetElements();
  const Heap<RqExprColumnListOrdered> rows(new RqExprColumnListOrdered);
  rows->SetNumColumns(static_cast<int>(items.size()));
  for (int i = 0; const SqlNode item : items) rows->SetIthColumn(i++, BuildRow(item, nColumns).Release());
  return OwnedRqExprPtr(new RqExprCondMultiColumnIn(columns.Release(), rows.Release(), IsNegatedIn(node)));
}

Heap<RqExprColumnListOrdered> ConditionBuilder::BuildRow(SqlNode row, std::size_t nColumns) {
  const std::vector<SqlNode> values = row.Get("args").GetElements();
  if (!IsRow(row) || values.size() != nColumns) {
    throw SqlError(row.GetStart(), "a row of " + std::to_string(nColumns) + " values is needed here");
  }
  const Heap<RqExprColumnListOrdered> list(new RqExprColumnListOrdered);
  list->SetNumColumns(static_cast<int>(nColumns));
  for (int i = 0; const SqlNode value : values) list->SetIthColumn(i++, BuildValue(value).Release());
  return list;
}

// ---------------------------------------------------------------------------------------------------------------------
// Names

OwnedRqExprPtr ConditionBuilder::BuildColumn(SqlNode node) {
  const std::vector<std::string> names = ReadNames(node);
  return OwnedRqExprPtr(new RqTargetColumn(ToText(names.back()), TableNumberOf(names)));
}

std::vector<std::string> ConditionBuilder::ReadNames(SqlNode columnRef) const {
  std::vector<std::string> names;
  bool bMayBeCut = false;
  for (const SqlNode field : columnRef.Get("fields").GetElements()) {
    if (field.GetKind() != "String") RaiseUnsupported(columnRef, "the sign for all columns");
    names.emplace_back(field.Get("sval").GetText());
    bMayBeCut |= names.back().size() >= kLengthOfPossiblyCutName;
  }
  return bMayBeCut ? ReadNamesFromText(columnRef.GetLocation(), names.size()) : names;
}

std::vector<std::string> ConditionBuilder::ReadNamesFromText(std::size_t offset, std::size_t nNames) const {
  const std::string_view text = m_condition.GetText();
  SqlLexer lexer(text, offset);
  std::vector<std::string> names;
  while (names.size() < nNames) {
    if (!names.empty()) lexer.Next();  // the point
    const SqlToken token = lexer.Next();
    names.push_back(NameOf(text.substr(token.m_begin, token.m_end - token.m_begin)));
    if (names.back().empty()) throw SqlError(token.m_begin, "a long name in this spelling is not supported");
  }
  return names;
}

int ConditionBuilder::TableNumberOf(const std::vector<std::string>& names) {
  if (names.size() == 1) return RqTargetColumn::kUnknownTableNum;
  std::string qualifier;
  for (const std::string& name : std::span(names).first(names.size() - 1)) qualifier.append(name).push_back('\0');
  const int next = static_cast<int>(m_tableNumbers.size()) + 1;
  return m_tableNumbers.try_emplace(qualifier, next).first->second;
}

OwnedRqExprPtr ConditionBuilder::BuildParameter(SqlNode node) {
  // The parser lets a number that is too large run over, so the text is read.
  const std::string_view text = m_condition.GetText();
  const SqlToken token = SqlLexer(text, node.GetLocation()).Next();
  std::int32_t number = 0;
  const auto result = std::from_chars(text.data() + token.m_begin + 1, text.data() + token.m_end, number);
  if (result.ec != std::errc() || number < 1) {
    throw SqlError(token.m_begin, "the number of a parameter is one from 1 to 2147483647");
  }
  return OwnedRqExprPtr(new RqExprParam(number));
}

OwnedRqExprPtr ConditionBuilder::BuildFunction(SqlNode node) {
  static constexpr Construct kFunctions[] = {
      {"valueof", &ConditionBuilder::BuildSessionVariable, nullptr},
  };
  const std::string name = WithoutCatalogue(TextsOf(node.Get("funcname")));
  const Construct* const pFunction = FindConstruct(kFunctions, name);
  if (!pFunction) RaiseUnsupported(node, "the function " + ForMessage(name, kMaxQuotedCharacters));
  return BuildBy(pFunction, node);
}

OwnedRqExprPtr ConditionBuilder::BuildSessionVariable(SqlNode node) {
  static constexpr std::string_view kOptions[] = {"agg_order", "agg_filter",   "over",         "agg_within_group",
                                                  "agg_star",  "agg_distinct", "func_variadic"};
  const std::vector<SqlNode> arguments = node.Get("args").GetElements();
  const bool bIsPlain =
      std::ranges::all_of(kOptions, [node](std::string_view option) { return node.Get(option).IsNone(); });
  if (bIsPlain && arguments.size() == 1 && arguments[0].GetKind() == "ColumnRef") {
    const std::vector<std::string> names = ReadNames(arguments[0]);
    if (names.size() == 2) {
      return OwnedRqExprPtr(new RqExprSessionVar(KXStringPair(ToText(names[0]), ToText(names[1]))));
    }
  }
  throw SqlError(node.GetLocation(), "VALUEOF takes the block and the name of a variable: VALUEOF(\"block\".\"name\")");
}

// ---------------------------------------------------------------------------------------------------------------------
// Constants

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
  const std::string_view text = m_condition.GetText();
  SqlLexer lexer(text, offset);
  SqlToken token = lexer.Next();
  bool bNegative = false;
  for (; token.m_kind == SqlToken::kPunctuation; token = lexer.Next()) bNegative ^= text[token.m_begin] == '-';
  std::int32_t value = 0;
  std::from_chars(text.data() + token.m_begin, text.data() + token.m_end, value);
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
  // CAST and :: have a place of their own, a literal has not.
  if (node.GetLocation() != SqlNode::kNoLocation) RaiseUnsupported(node, "a cast");
  const std::string type = WithoutCatalogue(TextsOf(node.Get("typeName", "names")));
  const Construct* const pType = FindConstruct(kTypes, type);
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

OwnedRqExprPtr ConditionBuilder::BuildMomentToken(SqlNode node) {
  static constexpr Construct kTokens[] = {
      {"CURRENT_DATE", &ConditionBuilder::BuildCurrentDate, nullptr},
      {"CURRENT_TIME", &ConditionBuilder::BuildCurrentTime, nullptr},
      {"LOCALTIME", &ConditionBuilder::BuildCurrentTime, nullptr},
      {"CURRENT_TIMESTAMP", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"CURRENT_TIMESTAMP_N", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"LOCALTIMESTAMP", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"LOCALTIMESTAMP_N", &ConditionBuilder::BuildCurrentTimestamp, nullptr},
      {"CURRENT_TIME_N", nullptr, "the precision of CURRENT_TIME"},
      {"LOCALTIME_N", nullptr, "the precision of LOCALTIME"},
  };
  static constexpr std::string_view kPrefix = "SVFOP_";
  std::string_view name = node.Get("op").GetText();
  if (name.starts_with(kPrefix)) name.remove_prefix(kPrefix.size());
  const Construct* const pToken = FindConstruct(kTokens, name);
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
