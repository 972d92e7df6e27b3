#include <algorithm>
#include <array>

#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "rq/sql/SqlWriter.h"

// Functions of numbers and texts, and casts.

namespace {

using F = SUFeaturesTable;

/// What a function is in each dialect: $1 is the first operand as an argument, #1 as an operand of the tightest
/// operator. A spelling that begins with "=" says the function by other means, and so asks for no feature. Null: there
/// is none. The standard's spelling is PostgreSQL's.
struct Spelling {
  RqNodeType_e m_kind;
  int m_numOperands;
  SqlTarget::FeatureId m_feature;
  const char* m_sqlite;
  const char* m_postgresql;
  const char* m_duckdb;
  SqlPrecedence m_precedence = SqlPrecedence::kPrimary;
};

using enum SqlPrecedence;

constexpr auto kSpellings = std::to_array<Spelling>({
    // Numbers.
    {kRqExprAbs, 1, F::kFeature_Abs, "abs($1)", "abs($1)", "abs($1)"},
    {kRqExprSign, 1, F::kFeature_Sign, "sign($1)", "sign($1)", "sign($1)"},
    {kRqExprCeil, 1, F::kFeature_Ceiling, "ceil($1)", "ceil($1)", "ceil($1)"},
    {kRqExprFloor, 1, F::kFeature_Floor, "floor($1)", "floor($1)", "floor($1)"},
    {kRqExprTruncate, 1, F::kFeature_Truncate, "=trunc($1)", "trunc($1)", "trunc($1)"},
    {kRqExprTruncate, 2, F::kFeature_Truncate, nullptr, "trunc(CAST($1 AS numeric), $2)", nullptr},
    {kRqExprSquare, 1, F::kFeature_Multiply, "=#1 * #1", "=#1 * #1", "=#1 * #1", kMultiply},
    {kRqExprSqrt, 1, F::kFeature_Sqrt, "sqrt($1)", "sqrt($1)", "sqrt($1)"},
    {kRqExprExp, 1, F::kFeature_Exp, "exp($1)", "exp($1)", "exp($1)"},
    {kRqExprPow, 2, F::kFeature_Power, "power($1, $2)", "power($1, $2)", "power($1, $2)"},
    {kRqExprLog, 1, F::kFeature_Log, "ln($1)", "ln($1)", "ln($1)"},
    {kRqExprLog10, 1, F::kFeature_Log10, "log10($1)", "log($1)", "log10($1)"},
    {kRqExprModf, 2, F::kFeature_Modf, "=mod($1, $2)", "=mod(CAST($1 AS numeric), CAST($2 AS numeric))",
     "=fmod($1, $2)"},
    {kRqExprPi, 0, F::kFeature_Pi, "pi()", "pi()", "pi()"},
    {kRqExprRand, 0, F::kFeature_Rand, "=random() / 18446744073709551616.0 + 0.5", "random()", "random()", kAdd},
    {kRqExprDegrees, 1, F::kFeature_Degrees, "degrees($1)", "degrees($1)", "degrees($1)"},
    {kRqExprRadians, 1, F::kFeature_Radians, "radians($1)", "radians($1)", "radians($1)"},
    {kRqExprSin, 1, F::kFeature_Sin, "sin($1)", "sin($1)", "sin($1)"},
    {kRqExprCos, 1, F::kFeature_Cos, "cos($1)", "cos($1)", "cos($1)"},
    {kRqExprTan, 1, F::kFeature_Tan, "tan($1)", "tan($1)", "tan($1)"},
    {kRqExprCot, 1, F::kFeature_Cot, "=1.0 / tan($1)", "cot($1)", "cot($1)", kMultiply},
    {kRqExprAsin, 1, F::kFeature_Asin, "asin($1)", "asin($1)", "asin($1)"},
    {kRqExprAcos, 1, F::kFeature_Acos, "acos($1)", "acos($1)", "acos($1)"},
    {kRqExprAtan, 1, F::kFeature_Atan, "atan($1)", "atan($1)", "atan($1)"},
    {kRqExprAtan2, 2, F::kFeature_Atan2, "atan2($1, $2)", "atan2($1, $2)", "atan2($1, $2)"},
    {kRqExprSinh, 1, F::kFeature_Sinh, "sinh($1)", "sinh($1)", "sinh($1)"},
    {kRqExprCosh, 1, F::kFeature_Cosh, "cosh($1)", "cosh($1)", "cosh($1)"},
    {kRqExprTanh, 1, F::kFeature_Tanh, "tanh($1)", "tanh($1)", "tanh($1)"},
    // Bits are numbered from 0, the lowest.
    {kRqExprExtractBit, 2, F::kFeature_Invalid, "=(#1 >> #2) & 1", "=(#1 >> #2) & 1", "=(#1 >> #2) & 1", kConcat},
    // Text.
    {kRqExprUpper, 1, F::kFeature_Upper, "upper($1)", "upper($1)", "upper($1)"},
    {kRqExprLower, 1, F::kFeature_Lower, "lower($1)", "lower($1)", "lower($1)"},
    {kRqExprCharLength, 1, F::kFeature_CharLength, "length($1)", "char_length($1)", "length($1)"},
    {kRqExprLength, 1, F::kFeature_Length, "length(rtrim($1))", "length(rtrim($1))", "length(rtrim($1, ' '))"},
    {kRqExprOctetLength, 1, F::kFeature_OctetLength, "=length(CAST($1 AS BLOB))", "octet_length($1)", "strlen($1)"},
    {kRqExprBitLength, 1, F::kFeature_BitLength, "=length(CAST($1 AS BLOB)) * 8", "bit_length($1)", "bit_length($1)",
     kMultiply},
    {kRqExprAscii, 1, F::kFeature_Ascii, "unicode($1)", "ascii($1)", "ascii($1)"},
    {kRqExprChar, 1, F::kFeature_Char, "char($1)", "chr($1)", "chr($1)"},
    {kRqExprPosition, 2, F::kFeature_Position, "instr($2, $1)", "position($1 IN $2)", "instr($2, $1)"},
    {kRqExprLocate, 2, F::kFeature_Locate, "=instr($2, $1)", "=position($1 IN $2)", "=instr($2, $1)"},
    {kRqExprLocate, 3, F::kFeature_Locate, "=instr(substr($2, $3), $1) + (#3 - 1) * sign(instr(substr($2, $3), $1))",
     "=strpos(substr($2, $3), $1) + (#3 - 1) * sign(strpos(substr($2, $3), $1))",
     "=instr(substr($2, $3), $1) + (#3 - 1) * sign(instr(substr($2, $3), $1))", kAdd},
    {kRqExprReplace, 3, F::kFeature_Replace, "replace($1, $2, $3)", "replace($1, $2, $3)", "replace($1, $2, $3)"},
    {kRqExprInsert, 4, F::kFeature_Insert, "=substr($1, 1, #2 - 1) || #4 || substr($1, #2 + #3)",
     "overlay($1 PLACING $4 FROM $2 FOR $3)", "=substr($1, 1, #2 - 1) || #4 || substr($1, #2 + #3)", kConcat},
    {kRqExprLeft, 2, F::kFeature_Left, "=substr($1, 1, $2)", "left($1, $2)", "left($1, $2)"},
    // From the start if the text is shorter, and behind its end for no characters.
    {kRqExprRight, 2, F::kFeature_Right, "=substr($1, max(length($1) - #2 + 1, 1))", "right($1, $2)", "right($1, $2)"},
    {kRqExprSpace, 1, F::kFeature_Space, "=replace(hex(zeroblob($1)), '00', ' ')", "repeat(' ', $1)",
     "repeat(' ', $1)"},
    {kRqExprRepeat, 2, F::kFeature_Repeat, "=replace(hex(zeroblob($2)), '00', $1)", "repeat($1, $2)", "repeat($1, $2)"},
    {kRqExprNLSSort, 1, F::kFeature_NLSSort, nullptr, nullptr, nullptr},
    {kRqExprNLSSort, 2, F::kFeature_NLSSort, nullptr, nullptr, nullptr},
    // Others.
    {kRqExprIfNull, 2, F::kFeature_Ifnull, "ifnull($1, $2)", "=coalesce($1, $2)", "ifnull($1, $2)"},
    {kRqExprNullIf, 2, F::kFeature_NullIf, "nullif($1, $2)", "nullif($1, $2)", "nullif($1, $2)"},
    {kRqExprDatabase, 0, F::kFeature_Database, nullptr, "current_database()", "current_database()"},
    {kRqExprUser, 0, F::kFeature_User, nullptr, "CURRENT_USER", "current_user"},
});

const char* SpellingFor(const Spelling& spelling, SqlTarget::Dialect dialect) {
  switch (dialect) {
    case SqlTarget::kSqlite:
      return spelling.m_sqlite;
    case SqlTarget::kDuckdb:
      return spelling.m_duckdb;
    case SqlTarget::kPostgresql:
    case SqlTarget::kStandard:
      return spelling.m_postgresql;
  }
  return nullptr;
}

bool IsLiteralZero(const RqExpr* pExpr) {
  const auto* const pLiteral = dynamic_cast<const RqExprIntegerLiteral*>(pExpr);
  return pLiteral && pLiteral->GetValue() == 0;
}

}  // namespace

/// A pattern of a Spelling with the operands in it.
SqlExprText SqlWriter::Filled(std::string_view pattern, std::span<const RqExpr* const> operands,
                              SqlPrecedence precedence) {
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if ((c != '$' && c != '#') || i + 1 == pattern.size()) {
      text += c;
      continue;
    }
    const RqExpr& operand = *operands[static_cast<std::size_t>(pattern[++i] - '1')];
    text += c == '#' ? Operand(operand, SqlPrecedence::kPrimary) : Argument(operand);
  }
  return {text, precedence};
}

SqlExprText SqlWriter::Function(const RqExpr& expr) {
  std::vector<const RqExpr*> operands;
  for (int i = 0; i < expr.GetNumOperands(); ++i) {
    if (const RqExpr* const pOperand = expr.GetIthOperand(i)) operands.push_back(pOperand);
  }
  if (expr.GetObjectType() == kRqExprTruncate && operands.size() == 2 && IsLiteralZero(operands[1]))
    operands.pop_back();
  const auto it = std::ranges::find_if(kSpellings, [&](const Spelling& spelling) {
    return spelling.m_kind == expr.GetObjectType() && spelling.m_numOperands == static_cast<int>(operands.size());
  });
  if (it == kSpellings.end()) Refuse("a value of this kind", &expr);
  std::string_view pattern;
  if (const char* const pSpelling = SpellingFor(*it, m_target.GetDialect())) pattern = pSpelling;
  const bool bOtherMeans = pattern.starts_with('=');
  if (pattern.empty() || (!bOtherMeans && !m_target.Can(it->m_feature))) {
    Refuse(SqlTarget::NameOf(it->m_feature), &expr);
  }
  return Filled(bOtherMeans ? pattern.substr(1) : pattern, operands, it->m_precedence);
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions whose spelling depends on more

SqlExprText SqlWriter::Remainder(const RqExpr& expr) {
  Require(F::kFeature_Mod, &expr);
  const RqExpr& left = *expr.GetIthOperand(0);
  const RqExpr& right = *expr.GetIthOperand(1);
  // In SQLite the sign drops fractions.
  const bool bIntegers = Class(left) == SqlValueClass::kInteger && Class(right) == SqlValueClass::kInteger;
  if (m_target.IsSqlite() && !bIntegers) return {"mod(" + Argument(left) + ", " + Argument(right) + ')'};
  if (!bIntegers && m_target.GetDialect() == SqlTarget::kPostgresql) {
    return {"mod(CAST(" + Argument(left) + " AS numeric), CAST(" + Argument(right) + " AS numeric))"};
  }
  return {Operand(left, kMultiply) + " % " + Operand(right, kUnary), kMultiply};
}

SqlExprText SqlWriter::Round(const RqExpr& expr) {
  Require(F::kFeature_Round, &expr);
  const RqExpr& number = *expr.GetIthOperand(0);
  const RqExpr* const pPlaces = expr.GetNumOperands() > 1 ? expr.GetIthOperand(1) : nullptr;
  if (!pPlaces) return {"round(" + Argument(number) + ')'};
  const auto* const pLiteral = dynamic_cast<const RqExprIntegerLiteral*>(pPlaces);
  if (m_target.IsSqlite() && pLiteral && pLiteral->GetValue() < 0) Refuse("ROUND in front of the point", &expr);
  // PostgreSQL rounds exact numbers alone to places.
  const bool bCast = m_target.GetDialect() == SqlTarget::kPostgresql && Class(number) != SqlValueClass::kDecimal &&
                     Class(number) != SqlValueClass::kInteger;
  const std::string text = bCast ? "CAST(" + Argument(number) + " AS numeric)" : Argument(number);
  return {"round(" + text + ", " + Argument(*pPlaces) + ')'};
}

SqlExprText SqlWriter::Trim(const RqExpr& expr) {
  struct Side {
    RqExprTrim::TrimOperation m_operation;
    FeatureId m_feature;
    const char* m_function;
  };
  static constexpr Side kSides[] = {
      {RqExprTrim::kBoth, F::kFeature_Trim, "trim("},
      {RqExprTrim::kLeading, F::kFeature_LTrim, "ltrim("},
      {RqExprTrim::kTrailing, F::kFeature_RTrim, "rtrim("},
  };
  const Side& side =
      *std::ranges::find(kSides, static_cast<const RqExprTrim&>(expr).GetTrimOperation(), &Side::m_operation);
  Require(side.m_feature, &expr);
  const RqExpr* const pCharacters = expr.GetIthOperand(RqExprTrim::kCharToTrim);
  const bool bBoth = m_target.GetDialect() == SqlTarget::kPostgresql && side.m_operation == RqExprTrim::kBoth;
  std::string text = (bBoth ? "btrim(" : side.m_function) + Argument(*expr.GetIthOperand(RqExprTrim::kFromString));
  if (pCharacters) text += ", " + Argument(*pCharacters);
  return {text + ')'};
}

SqlExprText SqlWriter::Substring(const RqExpr& expr) {
  const auto operand = [&expr](int slot) { return slot < expr.GetNumOperands() ? expr.GetIthOperand(slot) : nullptr; };
  const RqExpr& text = *operand(RqExprSubstring::kStringOperand);
  const RqExpr* const pStart = operand(RqExprSubstring::kStartOperand);
  const RqExpr* const pLength = operand(RqExprSubstring::kLengthOperand);
  const RqExpr* const pTokens = operand(RqExprSubstring::kNumLeadingTokensOperand);
  const RqExpr* const pDelimiter = operand(RqExprSubstring::kDelimiterOperand);
  Require(F::kFeature_Substring, &expr);
  if (pTokens && pDelimiter) {
    const RqExpr* const operands[] = {&text, pTokens, pDelimiter};
    if (m_target.GetDialect() == SqlTarget::kPostgresql) {
      return Filled("array_to_string((string_to_array($1, $3))[1:$2], $3)", operands, kPrimary);
    }
    if (m_target.GetDialect() == SqlTarget::kDuckdb) {
      return Filled("array_to_string(string_split($1, $3)[1:$2], $3)", operands, kPrimary);
    }
    Refuse("the leading tokens of a text", &expr);
  }
  std::string written = "substr(" + Argument(text) + ", " + (pStart ? Argument(*pStart) : "1");
  if (pLength) written += ", " + Argument(*pLength);
  return {written + ')'};
}

/// SQLite has numbers and texts alone: dates and times are texts there, the digits of a number are not kept, and a text
/// is cut to its length.
SqlExprText SqlWriter::Cast(const RqExpr& expr) {
  const auto& cast = static_cast<const RqExprCast&>(expr);
  Require(F::kFeature_Cast, &expr);
  const RqExpr& operand = *cast.GetIthOperand(0);
  const auto as = [&](const std::string& type) {
    return SqlExprText{"CAST(" + Argument(operand) + " AS " + type + ')'};
  };
  const bool bSqlite = m_target.IsSqlite();
  const std::string precision = cast.GetPrecision() > 0 ? '(' + std::to_string(cast.GetPrecision()) + ')' : "";
  switch (cast.GetToDataType()) {
    case KXInt2Data:
      return as(bSqlite ? "INTEGER" : "smallint");
    case KXInt4Data:
      return as(bSqlite ? "INTEGER" : "integer");
    case KXFloatData:
    case KXDoubleData:
      return as(bSqlite ? "REAL" : "double precision");
    case KXNumericData:
    case KXDecimalData: {
      const std::string scale = cast.GetScale() >= 0 ? std::to_string(cast.GetScale()) : "";
      if (bSqlite) {
        if (cast.GetPrecision() < 0) return as("NUMERIC");
        return {"round(CAST(" + Argument(operand) + " AS REAL), " + (scale.empty() ? "0" : scale) + ')'};
      }
      if (cast.GetPrecision() < 0) return as("numeric");
      return as("numeric(" + std::to_string(cast.GetPrecision()) + (scale.empty() ? "" : ", " + scale) + ')');
    }
    case KXCharData:
    case KXVarCharData: {
      const bool bChar = cast.GetToDataType() == KXCharData;
      // SQLite and DuckDB keep the whole text, whatever the length.
      const bool bCuts = !bSqlite && m_target.GetDialect() != SqlTarget::kDuckdb;
      if (bCuts || (precision.empty() && !bSqlite)) return as((bChar ? "char" : "varchar") + precision);
      const SqlExprText whole = as(bSqlite ? "TEXT" : "varchar");
      if (precision.empty()) return whole;
      return {"substr(" + whole.m_text + ", 1, " + std::to_string(cast.GetPrecision()) + ')'};
    }
    case KXDateData:
      return bSqlite ? SqlExprText{"date(" + Argument(operand) + ')'} : as("date");
    case KXTimeData:
      return bSqlite ? SqlExprText{"time(" + Argument(operand) + ')'} : as("time" + precision);
    case KXDateTimeData:
    case KXTimeStampData:
      return bSqlite ? SqlExprText{"datetime(" + Argument(operand) + ')'} : as("timestamp" + precision);
    default:
      Refuse("a cast to this type", &expr);
  }
}
