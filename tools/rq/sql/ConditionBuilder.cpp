#include "rq/sql/ConditionBuilder.h"

#include <algorithm>
#include <charconv>
#include <span>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

// Conditions, operators, names and parameters.

namespace {

/// The parser cuts names to 63 bytes or, so as not to split a character, up to three bytes less.
constexpr std::size_t kLengthOfPossiblyCutName = 60;

const char* WhatItIs(const RqExpr& expr) {
  if (expr.IsCond()) return "a condition";
  if (expr.IsLiteral()) return "a constant";
  if (expr.IsColumnReference()) return "a column";
  if (expr.IsParam()) return "a parameter";
  return "a value";
}

bool IsNegatedIn(SqlNode node) { return TextsOf(node.Get("name")).at(0) == "<>"; }

/// Whether the parser's negation of a test is the NOT of x NOT IN (SELECT ...), which stands behind the x.
bool IsNotIn(SqlNode negation, SqlNode operand) {
  return operand.GetKind() == "SubLink" && operand.Get("subLinkType").GetText() == "ANY_SUBLINK" &&
         operand.Get("operName").IsNone() && negation.GetLocation() > operand.Get("testexpr").GetStart();
}

bool IsRow(SqlNode node) { return node.GetKind() == "RowExpr"; }

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

}  // namespace

OwnedRqExprCondPtr ParseCondition(std::string_view text) {
  SqlContext context;
  return ParseCondition(text, context);
}

OwnedRqExprCondPtr ParseCondition(std::string_view text, SqlContext& context) {
  const SqlCondition condition(text);
  return ConditionBuilder(text, context).BuildCondition(condition.GetExpression());
}

int SqlTables::GetNumber(std::span<const std::string> qualifier) {
  std::string key;
  for (const std::string& name : qualifier) key.append(name).push_back('\0');
  const int next = static_cast<int>(m_numbers.size()) + 1;
  return m_numbers.try_emplace(key, next).first->second;
}

OwnedRqExprPtr ConditionBuilder::BuildExpr(SqlNode node) {
  static constexpr Construct kKinds[] = {
      {"A_Expr", &ConditionBuilder::BuildOperatorForm, nullptr},
      {"ColumnRef", &ConditionBuilder::BuildColumn, nullptr},
      {"A_Const", &ConditionBuilder::BuildConstant, nullptr},
      {"BoolExpr", &ConditionBuilder::BuildConnective, nullptr},
      {"NullTest", &ConditionBuilder::BuildNullTest, nullptr},
      {"TypeCast", &ConditionBuilder::BuildTypeCast, nullptr},
      {"CaseExpr", &ConditionBuilder::BuildCase, nullptr},
      {"CoalesceExpr", &ConditionBuilder::BuildCoalesce, nullptr},
      {"ParamRef", &ConditionBuilder::BuildParameter, nullptr},
      {"FuncCall", &ConditionBuilder::BuildFunction, nullptr},
      {"SQLValueFunction", &ConditionBuilder::BuildValueFunction, nullptr},
      {"A_ArrayExpr", nullptr, "an array"},
      {"A_Indirection", nullptr, "taking a part of a value"},
      {"BooleanTest", nullptr, "a test for TRUE, FALSE or UNKNOWN"},
      {"CollateClause", nullptr, "COLLATE"},
      {"GroupingFunc", &ConditionBuilder::BuildGroupingId, nullptr},
      {"MinMaxExpr", nullptr, "GREATEST or LEAST"},
      {"NamedArgExpr", nullptr, "a named argument"},
      {"RowExpr", nullptr, "a row of values outside IN"},
      {"SetToDefault", nullptr, "DEFAULT"},
      {"SubLink", &ConditionBuilder::BuildSubquery, nullptr},
      {"XmlExpr", nullptr, "XML"},
      {"XmlSerialize", nullptr, "XML"},
  };
  KXThread::LowStackCheck(0);
  return BuildBy(FindByName(kKinds, node.GetKind()), node);
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
      {"AEXPR_NULLIF", &ConditionBuilder::BuildBinary<RqExprNullIf>, nullptr},
      {"AEXPR_BETWEEN_SYM", nullptr, "BETWEEN SYMMETRIC"},
      {"AEXPR_NOT_BETWEEN_SYM", nullptr, "BETWEEN SYMMETRIC"},
      {"AEXPR_DISTINCT", nullptr, "IS DISTINCT FROM"},
      {"AEXPR_NOT_DISTINCT", nullptr, "IS NOT DISTINCT FROM"},
      {"AEXPR_ILIKE", nullptr, "ILIKE"},
      {"AEXPR_OP_ALL", nullptr, "ALL over an array"},
      {"AEXPR_OP_ANY", nullptr, "ANY over an array"},
      {"AEXPR_SIMILAR", nullptr, "SIMILAR TO"},
  };
  return BuildBy(FindByName(kForms, node.Get("kind").GetText()), node);
}

template <class Binary>
OwnedRqExprPtr ConditionBuilder::BuildBinary(SqlNode node) {
  const OwnedRqExprPtr left = BuildValue(node.Get("lexpr"));
  const OwnedRqExprPtr right = BuildValue(node.Get("rexpr"));
  if constexpr (std::is_same_v<Binary, RqExprCondEquality>) {
    return OwnedRqExprPtr(new RqExprCondEquality(left.Release(), right.Release(), false));
  } else {
    return OwnedRqExprPtr(new Binary(left.Release(), right.Release()));
  }
}

OwnedRqExprPtr ConditionBuilder::BuildOperator(SqlNode node) {
  static constexpr Construct kOperators[] = {
      {"=", &ConditionBuilder::BuildBinary<RqExprCondEquality>, nullptr},
      {"<>", &ConditionBuilder::BuildBinary<RqExprCondNotEqual>, nullptr},
      {"<", &ConditionBuilder::BuildBinary<RqExprCondLess>, nullptr},
      {"<=", &ConditionBuilder::BuildBinary<RqExprCondLessEqual>, nullptr},
      {">", &ConditionBuilder::BuildBinary<RqExprCondGreater>, nullptr},
      {">=", &ConditionBuilder::BuildBinary<RqExprCondGreaterEqual>, nullptr},
      {"+", &ConditionBuilder::BuildBinary<RqExprAdd>, nullptr},
      {"-", &ConditionBuilder::BuildBinary<RqExprSubtract>, nullptr},
      {"*", &ConditionBuilder::BuildBinary<RqExprMultiply>, nullptr},
      {"/", &ConditionBuilder::BuildBinary<RqExprDivide>, nullptr},
      {"%", &ConditionBuilder::BuildBinary<RqExprMod>, nullptr},
      {"^", &ConditionBuilder::BuildBinary<RqExprPow>, nullptr},
      {"||", &ConditionBuilder::BuildBinary<RqExprConcat>, nullptr},
  };
  const std::string name = JoinedByPoints(TextsOf(node.Get("name")));
  const SqlNode operand = node.Get("rexpr");
  const Construct* const pOperator = FindByName(kOperators, name);
  if (!node.Get("lexpr").IsNone()) {
    if (pOperator) return BuildBy(pOperator, node);
  } else if (name == "-") {
    return OwnedRqExprPtr(new RqExprUnaryMinus(BuildValue(operand).Release()));
  } else if (name == "+" && (!operand.Get("ival").IsNone() || !operand.Get("fval").IsNone())) {
    // The parser folds a minus into the number behind it, but leaves a plus.
    return BuildConstant(operand);
  }
  RaiseUnsupported(node, "the operator " + ForMessage(name, kMaxQuotedCharacters));
}

OwnedRqExprPtr ConditionBuilder::BuildConnective(SqlNode node) {
  const std::string_view connective = node.Get("boolop").GetText();
  if (connective == "AND_EXPR") return BuildJunction<RqExprCondAnd>(node);
  if (connective == "OR_EXPR") return BuildJunction<RqExprCondOr>(node);
  const SqlNode operand = node.Get("args").GetElements().at(0);
  if (IsNotIn(node, operand)) return BuildInSubquery(operand, true);
  return OwnedRqExprPtr(new RqExprCondNot(BuildCondition(operand).Release()));
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
  if (m_context.m_pScope) return m_context.m_pScope->MakeColumn(names, node);
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
  SqlLexer lexer(m_text, offset);
  std::vector<std::string> names;
  while (names.size() < nNames) {
    if (!names.empty()) lexer.Next();  // the point
    const SqlToken token = lexer.Next();
    names.push_back(NameOf(m_text.substr(token.m_begin, token.m_end - token.m_begin)));
    if (names.back().empty()) throw SqlError(token.m_begin, "a long name in this spelling is not supported");
  }
  return names;
}

int ConditionBuilder::TableNumberOf(const std::vector<std::string>& names) const {
  if (names.size() == 1) return RqTargetColumn::kUnknownTableNum;
  return m_context.m_tables.GetNumber(std::span(names).first(names.size() - 1));
}

OwnedRqExprPtr ConditionBuilder::BuildParameter(SqlNode node) {
  // The parser lets a number that is too large run over, so the text is read.
  const SqlToken token = SqlLexer(m_text, node.GetLocation()).Next();
  std::int32_t number = 0;
  const auto result = std::from_chars(m_text.data() + token.m_begin + 1, m_text.data() + token.m_end, number);
  if (result.ec != std::errc() || number < 1) {
    throw SqlError(token.m_begin, "the number of a parameter is one from 1 to 2147483647");
  }
  return OwnedRqExprPtr(new RqExprParam(number));
}
