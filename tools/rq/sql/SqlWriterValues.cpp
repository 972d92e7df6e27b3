#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Host/KXThread.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"
#include "rq/sql/SqlWriter.h"
#include "rq/sql/SqlWriterScopes.h"

// Columns, literals, operators and choices.

/// A kind of value and what writes it. Kinds that are not in the table are functions.
struct SqlWriter::KindMethod {
  RqNodeType_e m_kind;
  Method m_method;
};

SqlExprText SqlWriter::Value(const RqExpr& expr) {
  static constexpr KindMethod kMethods[] = {
      {kRqTargetColumn, &SqlWriter::Column},
      {kRqDerivedColumnReference, &SqlWriter::Reference},
      {kRqExprParam, &SqlWriter::Parameter},
      {kRqExprSessionVar, &SqlWriter::SessionVariable},
      {kRqExprStringLiteral, &SqlWriter::Literal},
      {kRqExprIntegerLiteral, &SqlWriter::Literal},
      {kRqExprFloatLiteral, &SqlWriter::Literal},
      {kRqExprNumberLiteral, &SqlWriter::Literal},
      {kRqExprDateLiteral, &SqlWriter::Literal},
      {kRqExprTimeLiteral, &SqlWriter::Literal},
      {kRqExprDateTimeLiteral, &SqlWriter::Literal},
      {kRqExprIntervalLiteral, &SqlWriter::Literal},
      {kRqExprNullLiteral, &SqlWriter::Literal},
      {kRqExprAdd, &SqlWriter::Arithmetic},
      {kRqExprSubtract, &SqlWriter::Arithmetic},
      {kRqExprMultiply, &SqlWriter::Arithmetic},
      {kRqExprDivide, &SqlWriter::Division},
      {kRqExprConcat, &SqlWriter::Arithmetic},
      {kRqExprUnaryMinus, &SqlWriter::Minus},
      {kRqExprMod, &SqlWriter::Remainder},
      {kRqExprRound, &SqlWriter::Round},
      {kRqExprTrim, &SqlWriter::Trim},
      {kRqExprSubstring, &SqlWriter::Substring},
      {kRqExprLookupCase, &SqlWriter::LookupCase},
      {kRqExprIfCase, &SqlWriter::IfCase},
      {kRqExprCoalesce, &SqlWriter::Coalesce},
      {kRqExprNullIf, &SqlWriter::NullIf},
      {kRqExprCast, &SqlWriter::Cast},
      {kRqExprIndexCol, &SqlWriter::IndexCol},
      {kRqExprEvaluate, &SqlWriter::Evaluate},
      {kRqExprColumnListOrdered, &SqlWriter::Row},
      {kRqExprPhysicalSubquery, &SqlWriter::ScalarSubquery},
      {kRqExprLogicalSubquery, &SqlWriter::ScalarSubquery},
      {kRqExprPersistSubquery, &SqlWriter::ScalarSubquery},
      {kRqExprCalendarExtract, &SqlWriter::CalendarExtract},
      {kRqExprTimestampAdd, &SqlWriter::TimestampAdd},
      {kRqExprTimestampDiff, &SqlWriter::TimestampDiff},
      {kRqExprGroupingId, &SqlWriter::GroupingId},
  };
  KXThread::LowStackCheck(0);
  // What a grouping set has keeps its value even if it is computed from a column that the set does not have.
  const auto isExpr = [&expr](const RqExpr* pOther) { return RqEquivalence()(*pOther, expr); };
  for (const auto& [pNulls, pKept] : {std::pair(&m_nulls, &m_kept), std::pair(&m_outerNulls, &m_outerKept)}) {
    if (pNulls->empty()) continue;
    if (std::ranges::any_of(*pNulls, isExpr)) return {"NULL"};
    if (std::ranges::any_of(*pKept, isExpr)) {
      const ValueScope nulls(*pNulls, {});
      return Value(expr);
    }
  }
  if (expr.IsAttribute()) Refuse("a column of a logical table, for which no physical one is chosen,", &expr);
  if (expr.IsAggr() || expr.IsAggrWrapper()) return Aggregate(static_cast<const RqExprAggr&>(expr));
  const auto* const it = std::ranges::find(kMethods, expr.GetObjectType(), &KindMethod::m_kind);
  return it != std::end(kMethods) ? (this->*it->m_method)(expr) : Function(expr);
}

std::string SqlWriter::Parenthesized(SqlExprText text, SqlPrecedence least) {
  return text.m_precedence >= least ? std::move(text.m_text) : '(' + text.m_text + ')';
}

std::string SqlWriter::Operand(const RqExpr& expr, SqlPrecedence least) { return Parenthesized(Value(expr), least); }

// ---------------------------------------------------------------------------------------------------------------------
// Columns and variables

SqlExprText SqlWriter::Column(const RqExpr& expr) {
  const auto& column = static_cast<const RqTargetColumn&>(expr);
  const std::string name = column.GetColumnName(&m_target.GetGateway()).ToUTF8();
  if (column.GetSourceTableNumber() == RqTargetColumn::kUnknownTableNum) return {m_target.Quote(name)};
  return {QualifiedName('T', column.GetSourceTableNumber(), name)};
}

SqlExprText SqlWriter::Reference(const RqExpr& expr) {
  const auto& reference = static_cast<const RqDerivedColumnReference&>(expr);
  if (!reference.IsValidDerivedColumnReference()) Refuse("a reference to a column that is not there", &expr);
  return {QualifiedName('D', reference.GetSourceTableNumber(), ColumnName(*reference.GetDerivedColumn()))};
}

SqlExprText SqlWriter::Parameter(const RqExpr& expr) {
  Require(SUFeaturesTable::kFeature_Parameter, &expr);
  const std::string number = std::to_string(static_cast<const RqExprParam&>(expr).GetParamNumber());
  return {(m_target.IsSqlite() ? '?' : '$') + number};
}

SqlExprText SqlWriter::SessionVariable(const RqExpr& expr) {
  const OwnedPropertyValue value = static_cast<const RqExprSessionVar&>(expr).GetValue(&m_target.GetGateway());
  return PropertyText(*value, expr);
}

SqlExprText SqlWriter::PropertyText(const PropertyValue& value, const RqExpr& expr) const {
  switch (value.GetType()) {
    case PropertyValue::Integer:
      return IntegerText(static_cast<const PropertyValueInteger&>(value).GetInteger());
    case PropertyValue::Float:
      return FloatText(static_cast<const PropertyValueFloat&>(value).GetFloat());
    case PropertyValue::Date:
      return DateText(static_cast<const PropertyValueDate&>(value).GetDate(), expr);
    case PropertyValue::Time:
      return TimeText(static_cast<const PropertyValueTime&>(value).GetTime(), expr);
    case PropertyValue::DateTime:
      return TimestampText(static_cast<const PropertyValueDateTime&>(value).GetDateTime(), expr);
    case PropertyValue::Number: {
      const std::string number = static_cast<const PropertyValueNumber&>(value).GetNumber().asString().ToUTF8();
      return {number, number.starts_with('-') ? SqlPrecedence::kUnary : SqlPrecedence::kPrimary};
    }
    case PropertyValue::String:
      return {Quoted(static_cast<const PropertyValueString&>(value).GetString())};
    case PropertyValue::StringVector:
      break;
  }
  const KXStringVector& texts = static_cast<const PropertyValueStringVector&>(value).GetStrings();
  if (texts.size() != 1) Refuse("a variable of several values outside of a comparison", &expr);
  return {Quoted(texts.front())};
}

// ---------------------------------------------------------------------------------------------------------------------
// Literals

SqlExprText SqlWriter::Literal(const RqExpr& expr) {
  using F = SUFeaturesTable;
  switch (expr.GetObjectType()) {
    case kRqExprStringLiteral:
      Require(F::kFeature_StringLiteral, &expr);
      return {Quoted(static_cast<const RqExprStringLiteral&>(expr).GetString())};
    case kRqExprIntegerLiteral:
      Require(F::kFeature_IntegerLiteral, &expr);
      return IntegerText(static_cast<const RqExprIntegerLiteral&>(expr).GetValue());
    case kRqExprFloatLiteral:
      Require(F::kFeature_FloatLiteral, &expr);
      return FloatText(static_cast<const RqExprFloatLiteral&>(expr).GetValue());
    case kRqExprNumberLiteral: {
      const std::string number = static_cast<const RqExprNumberLiteral&>(expr).GetValue().asString().ToUTF8();
      return {number, number.starts_with('-') ? SqlPrecedence::kUnary : SqlPrecedence::kPrimary};
    }
    case kRqExprDateLiteral:
      return DateText(static_cast<const RqExprDateLiteral&>(expr).GetDateValue(), expr);
    case kRqExprTimeLiteral:
      return TimeText(static_cast<const RqExprTimeLiteral&>(expr).GetTimeValue(), expr);
    case kRqExprDateTimeLiteral:
      return TimestampText(static_cast<const RqExprDateTimeLiteral&>(expr).GetDateTimeValue(), expr);
    case kRqExprIntervalLiteral:
      Require(F::kFeature_IntervalLiteral, &expr);
      return {static_cast<const RqExprIntervalLiteral&>(expr).GetIntervalValue().ToUTF8()};
    default:
      return {"NULL"};
  }
}

SqlExprText SqlWriter::IntegerText(std::int64_t value) {
  return {std::to_string(value), value < 0 ? SqlPrecedence::kUnary : SqlPrecedence::kPrimary};
}

/// The shortest text that reads as the same number, and not as an integer.
SqlExprText SqlWriter::FloatText(double value) {
  std::array<char, 32> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  std::string text(buffer.data(), end);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return {text, std::signbit(value) ? SqlPrecedence::kUnary : SqlPrecedence::kPrimary};
}

std::string SqlWriter::Quoted(const KXString& text) {
  std::string quoted = "'";
  for (const char c : text.ToUTF8()) {
    quoted += c;
    if (c == '\'') quoted += c;
  }
  return quoted + '\'';
}

// ---------------------------------------------------------------------------------------------------------------------
// Operators

SqlExprText SqlWriter::Arithmetic(const RqExpr& expr) {
  struct Operator {
    RqNodeType_e m_kind;
    FeatureId m_feature;
    const char* m_sign;
    SqlPrecedence m_precedence;
    SqlPrecedence m_left;
    SqlPrecedence m_right;
  };
  using enum SqlPrecedence;
  // How tightly || binds is another matter in each database, so only the tightest operands go without brackets.
  static constexpr Operator kOperators[] = {
      {kRqExprAdd, SUFeaturesTable::kFeature_Add, " + ", kAdd, kAdd, kMultiply},
      {kRqExprSubtract, SUFeaturesTable::kFeature_Subtract, " - ", kAdd, kAdd, kMultiply},
      {kRqExprMultiply, SUFeaturesTable::kFeature_Multiply, " * ", kMultiply, kMultiply, kUnary},
      {kRqExprDivide, SUFeaturesTable::kFeature_Divide, " / ", kMultiply, kMultiply, kUnary},
      {kRqExprConcat, SUFeaturesTable::kFeature_Concat, " || ", kConcat, kConcat, kUnary},
  };
  const Operator& op = *std::ranges::find(kOperators, expr.GetObjectType(), &Operator::m_kind);
  Require(op.m_feature, &expr);
  const RqExpr& left = *expr.GetIthOperand(0);
  const RqExpr& right = *expr.GetIthOperand(1);
  if (op.m_kind == kRqExprAdd || op.m_kind == kRqExprSubtract) {
    const bool bSubtract = op.m_kind == kRqExprSubtract;
    const SqlValueClass leftClass = Class(left);
    const SqlValueClass rightClass = Class(right);
    if (IsMoment(leftClass)) return MomentArithmetic(expr, left, right, bSubtract);
    if (IsMoment(rightClass) && !bSubtract) return MomentArithmetic(expr, right, left, false);
  }
  if (op.m_kind == kRqExprConcat) {
    const auto operand = [&](const RqExpr& part, bool bLeft) {
      const SqlExprText text = Value(part);
      // Other operators that bind as loosely bind less tightly than || in SQLite.
      const bool bBare = bLeft && part.GetObjectType() == kRqExprConcat;
      return bBare ? text.m_text : Parenthesized(text, op.m_right);
    };
    std::string text = operand(left, true) + op.m_sign;
    return {text + operand(right, false), kConcat};
  }
  std::string text = Operand(left, op.m_left) + op.m_sign;
  // Two signs in a row would begin a comment.
  return {text + Operand(right, op.m_right), op.m_precedence};
}

/// The division of numbers: where the database divides integers as such, the dividend is cast.
SqlExprText SqlWriter::Division(const RqExpr& expr) {
  Require(SUFeaturesTable::kFeature_Divide, &expr);
  const RqExpr& left = *expr.GetIthOperand(0);
  const RqExpr& right = *expr.GetIthOperand(1);
  const auto isExact = [this](const RqExpr& operand) {
    // A column of SQLite may hold any number as an integer.
    if (m_target.IsSqlite()) return !IsAlwaysReal(operand, m_target.GetGateway());
    const SqlValueClass operandClass = Class(operand);
    return operandClass != SqlValueClass::kReal && operandClass != SqlValueClass::kDecimal;
  };
  const bool bCast = m_target.GetDialect() != SqlTarget::kDuckdb && isExact(left) && isExact(right);
  std::string text;
  if (bCast) {
    text = "CAST(" + Argument(left) + " AS " + (m_target.IsSqlite() ? "REAL" : "double precision") + ')';
  } else {
    text = Operand(left, SqlPrecedence::kMultiply);
  }
  return {text + " / " + Operand(right, SqlPrecedence::kUnary), SqlPrecedence::kMultiply};
}

SqlExprText SqlWriter::Minus(const RqExpr& expr) {
  Require(SUFeaturesTable::kFeature_UnaryMinus, &expr);
  return {'-' + Operand(*expr.GetIthOperand(0), SqlPrecedence::kPrimary), SqlPrecedence::kUnary};
}

// ---------------------------------------------------------------------------------------------------------------------
// Choices

SqlExprText SqlWriter::LookupCase(const RqExpr& expr) {
  const auto& choice = static_cast<const RqExprLookupCase&>(expr);
  Require(SUFeaturesTable::kFeature_CaseLookup, &expr);
  const ValueScope depth(m_caseDepth, m_caseDepth + 1);
  std::vector<const RqExpr*> keys{choice.GetKeyValue()};
  for (int i = 0; i < choice.GetNumLookupEntries(); ++i) keys.push_back(choice.GetIthEntryKey(i));
  const std::vector<std::string> texts = Comparable(keys);
  std::string text = "CASE " + texts[0];
  for (int i = 0; i < choice.GetNumLookupEntries(); ++i) {
    text += " WHEN " + texts[static_cast<std::size_t>(i) + 1] + " THEN " + Argument(*choice.GetIthEntryValue(i));
  }
  if (const RqExpr* const pDefault = choice.GetDefaultReturnValue()) text += " ELSE " + Argument(*pDefault);
  return {text + " END"};
}

SqlExprText SqlWriter::IfCase(const RqExpr& expr) {
  const auto& choice = static_cast<const RqExprIfCase&>(expr);
  Require(SUFeaturesTable::kFeature_CaseIf, &expr);
  const ValueScope depth(m_caseDepth, m_caseDepth + 1);
  std::string text = "CASE";
  for (int i = 0; i < choice.GetNumWhenThenPairs(); ++i) {
    text += " WHEN " + Condition(static_cast<const RqExprCond&>(*choice.GetIthEntryCond(i)), true).m_text + " THEN " +
            Argument(*choice.GetIthEntryValue(i));
  }
  if (const RqExpr* const pDefault = choice.GetDefaultReturnValue()) text += " ELSE " + Argument(*pDefault);
  return {text + " END"};
}

SqlExprText SqlWriter::Coalesce(const RqExpr& expr) {
  Require(SUFeaturesTable::kFeature_Coalesce, &expr);
  if (expr.GetNumOperands() == 1) return Value(*expr.GetIthOperand(0));
  std::string text;
  for (int i = 0; i < expr.GetNumOperands(); ++i) text += (i == 0 ? "" : ", ") + Argument(*expr.GetIthOperand(i));
  return {"coalesce(" + text + ')'};
}

/// A date that is compared with a timestamp stays a date.
SqlExprText SqlWriter::NullIf(const RqExpr& expr) {
  const RqExpr& value = *expr.GetIthOperand(0);
  const RqExpr& other = *expr.GetIthOperand(1);
  const SqlValueClass valueClass = Class(value);
  if (!m_target.IsSqlite() || !AreMixedMoments(valueClass, Class(other))) return Function(expr);
  Require(SUFeaturesTable::kFeature_NullIf, &expr);
  const std::vector<std::string> operands = Comparable({&value, &other});
  if (valueClass == SqlValueClass::kTimestamp) return {"nullif(" + operands[0] + ", " + operands[1] + ')'};
  return {"CASE WHEN " + operands[0] + " = " + operands[1] + " THEN NULL ELSE " + Argument(value) + " END"};
}

/// The column of the number that the index says, the first of number 0; null for any other number.
SqlExprText SqlWriter::IndexCol(const RqExpr& expr) {
  Require(SUFeaturesTable::kFeature_CaseLookup, &expr);
  std::string text = "CASE " + Operand(*expr.GetIthOperand(0), SqlPrecedence::kConcat);
  for (int i = 1; i < expr.GetNumOperands(); ++i) {
    text += " WHEN " + std::to_string(i - 1) + " THEN " + Argument(*expr.GetIthOperand(i));
  }
  return {text + " END"};
}

/// The function's text with the operands in the places of %1, %2 and so on.
SqlExprText SqlWriter::Evaluate(const RqExpr& expr) {
  const std::string text = static_cast<const RqExprEvaluate&>(expr).GetFunctionDef().ToUTF8();
  std::string written;
  for (std::size_t i = 0; i < text.size(); ++i) {
    int number = 0;
    const char* const begin = text.data() + i + 1;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), number);
    if (text[i] == '%' && end != begin && number >= 1 && number <= expr.GetNumOperands()) {
      written += Operand(*expr.GetIthOperand(number - 1), SqlPrecedence::kPrimary);
      i += static_cast<std::size_t>(end - begin);
    } else {
      written += text[i];
    }
  }
  return {'(' + written + ')'};
}

SqlExprText SqlWriter::Row(const RqExpr& expr) {
  std::string text;
  for (int i = 0; i < expr.GetNumOperands(); ++i) text += (i == 0 ? "" : ", ") + Argument(*expr.GetIthOperand(i));
  return {'(' + text + ')'};
}

SqlExprText SqlWriter::ScalarSubquery(const RqExpr& expr) {
  const bool bSelected = m_place == "the select list";
  if (m_caseDepth > 0) Require(SUFeaturesTable::kFeature_SubqueryInCase, &expr);
  return {SubqueryText(
      expr, bSelected ? SUFeaturesTable::kFeature_ValueSubquery : SUFeaturesTable::kFeature_ComparisonSubquery)};
}
