#include <string_view>

#include "Host/ARpGateway.h"
#include "Host/KXAssert.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

// The text of scalar operators and functions. Each Visit prints the operands, too, and so ends the descent.

namespace {

constexpr std::wstring_view kBlankComma = L" , ";

/// The number of slots up to the last one that is not null.
int CountUpToLastOperand(const RqExpr& expr) {
  int count = expr.GetNumOperands();
  while (count > 0 && !expr.GetIthOperand(count - 1)) --count;
  return count;
}

}  // namespace

bool RqDumpout::PrintFunction(RqExpr& expr, std::wstring_view opening, std::wstring_view separator,
                              std::wstring_view closing) {
  Append(opening);
  const int count = CountUpToLastOperand(expr);
  for (int slot = 0; slot < count; ++slot) {
    if (slot > 0) Append(separator);
    PrintOperand(expr, slot);
  }
  Append(closing);
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Arithmetic

bool RqDumpout::Visit(RqExprAdd& expr) { return PrintBinary(expr, L" + "); }
bool RqDumpout::Visit(RqExprSubtract& expr) { return PrintBinary(expr, L" - "); }
bool RqDumpout::Visit(RqExprMultiply& expr) { return PrintBinary(expr, L" * "); }
bool RqDumpout::Visit(RqExprDivide& expr) { return PrintBinary(expr, L" / "); }

bool RqDumpout::Visit(RqExprUnaryMinus& expr) {
  Append(L"-");
  const RqExpr* const pOperand = expr.FindOperand(RqExprUnaryMinus::kOperand);
  const bool bParentheses = pOperand && pOperand->GetNumOperands() > 1;
  if (bParentheses) Append(L"(");
  PrintOperand(expr, RqExprUnaryMinus::kOperand);
  if (bParentheses) Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprExp& expr) { return PrintFunction(expr, L"exp("); }
bool RqDumpout::Visit(RqExprSquare& expr) { return PrintFunction(expr, L"square("); }
bool RqDumpout::Visit(RqExprSqrt& expr) { return PrintFunction(expr, L"sqrt("); }
bool RqDumpout::Visit(RqExprCeil& expr) { return PrintFunction(expr, L"ceiling("); }
bool RqDumpout::Visit(RqExprFloor& expr) { return PrintFunction(expr, L"floor("); }
bool RqDumpout::Visit(RqExprSign& expr) { return PrintFunction(expr, L"sign("); }
bool RqDumpout::Visit(RqExprAbs& expr) { return PrintFunction(expr, L"abs("); }
bool RqDumpout::Visit(RqExprLog& expr) { return PrintFunction(expr, L"log("); }
bool RqDumpout::Visit(RqExprLog10& expr) { return PrintFunction(expr, L"log10("); }
bool RqDumpout::Visit(RqExprDegrees& expr) { return PrintFunction(expr, L"degrees("); }
bool RqDumpout::Visit(RqExprRadians& expr) { return PrintFunction(expr, L"radians("); }
bool RqDumpout::Visit(RqExprSin& expr) { return PrintFunction(expr, L"sin("); }
bool RqDumpout::Visit(RqExprCos& expr) { return PrintFunction(expr, L"cos("); }
bool RqDumpout::Visit(RqExprTan& expr) { return PrintFunction(expr, L"tan("); }
bool RqDumpout::Visit(RqExprCot& expr) { return PrintFunction(expr, L"cot("); }
bool RqDumpout::Visit(RqExprAsin& expr) { return PrintFunction(expr, L"asin("); }
bool RqDumpout::Visit(RqExprAcos& expr) { return PrintFunction(expr, L"acos("); }
bool RqDumpout::Visit(RqExprAtan& expr) { return PrintFunction(expr, L"atan("); }
bool RqDumpout::Visit(RqExprSinh& expr) { return PrintFunction(expr, L"sinh("); }
bool RqDumpout::Visit(RqExprCosh& expr) { return PrintFunction(expr, L"cosh("); }
bool RqDumpout::Visit(RqExprTanh& expr) { return PrintFunction(expr, L"tanh("); }
bool RqDumpout::Visit(RqExprRand& expr) { return PrintFunction(expr, L"rand("); }
bool RqDumpout::Visit(RqExprPi& expr) { return PrintFunction(expr, L"pi("); }
bool RqDumpout::Visit(RqExprPow& expr) { return PrintFunction(expr, L"power(", kBlankComma); }
bool RqDumpout::Visit(RqExprRound& expr) { return PrintFunction(expr, L"round(", kBlankComma); }
bool RqDumpout::Visit(RqExprTruncate& expr) { return PrintFunction(expr, L"truncate(", kBlankComma); }
bool RqDumpout::Visit(RqExprMod& expr) { return PrintFunction(expr, L"mod(", kBlankComma); }
bool RqDumpout::Visit(RqExprModf& expr) { return PrintFunction(expr, L"modf(", kBlankComma); }
bool RqDumpout::Visit(RqExprAtan2& expr) { return PrintFunction(expr, L"atan2(", kBlankComma); }
bool RqDumpout::Visit(RqExprExtractBit& expr) { return PrintFunction(expr, L"ExtractBit(", kBlankComma); }

// ---------------------------------------------------------------------------------------------------------------------
// Text

bool RqDumpout::Visit(RqExprConcat& expr) { return PrintBinary(expr, L" || "); }
bool RqDumpout::Visit(RqExprCharLength& expr) { return PrintFunction(expr, L"char_length("); }
bool RqDumpout::Visit(RqExprOctetLength& expr) { return PrintFunction(expr, L"octet_length("); }
bool RqDumpout::Visit(RqExprBitLength& expr) { return PrintFunction(expr, L"bit_length("); }
bool RqDumpout::Visit(RqExprLength& expr) { return PrintFunction(expr, L"length("); }
bool RqDumpout::Visit(RqExprUpper& expr) { return PrintFunction(expr, L"upper("); }
bool RqDumpout::Visit(RqExprLower& expr) { return PrintFunction(expr, L"lower("); }
bool RqDumpout::Visit(RqExprAscii& expr) { return PrintFunction(expr, L"ascii("); }
bool RqDumpout::Visit(RqExprChar& expr) { return PrintFunction(expr, L"char("); }
bool RqDumpout::Visit(RqExprPosition& expr) { return PrintFunction(expr, L"position(", L" in "); }
bool RqDumpout::Visit(RqExprLocate& expr) { return PrintFunction(expr, L"locate("); }
bool RqDumpout::Visit(RqExprReplace& expr) { return PrintFunction(expr, L"replace(", kBlankComma); }
bool RqDumpout::Visit(RqExprInsert& expr) { return PrintFunction(expr, L"insert(", kBlankComma); }
bool RqDumpout::Visit(RqExprLeft& expr) { return PrintFunction(expr, L"left(", kBlankComma); }
bool RqDumpout::Visit(RqExprRight& expr) { return PrintFunction(expr, L"right(", kBlankComma); }
bool RqDumpout::Visit(RqExprRepeat& expr) { return PrintFunction(expr, L"repeat(", kBlankComma); }
bool RqDumpout::Visit(RqExprSpace& expr) { return PrintFunction(expr, L"space("); }
bool RqDumpout::Visit(RqExprNLSSort& expr) { return PrintFunction(expr, L"NLSSort("); }

bool RqDumpout::Visit(RqExprSubstring& expr) {
  constexpr std::pair<int, std::wstring_view> kOptions[] = {
      {RqExprSubstring::kStartOperand, L" from "},
      {RqExprSubstring::kLengthOperand, L" for "},
      {RqExprSubstring::kNumLeadingTokensOperand, L" extract first "},
      {RqExprSubstring::kDelimiterOperand, L" token(s) delimited by "}};
  Append(L"substring(");
  PrintOperand(expr, RqExprSubstring::kStringOperand);
  for (const auto& [slot, words] : kOptions) {
    if (!expr.FindOperand(slot)) continue;
    Append(words);
    PrintOperand(expr, slot);
  }
  Append(L")");
  return true;
}

namespace {

std::wstring_view TrimWord(RqExprTrim::TrimOperation operation) {
  switch (operation) {
    case RqExprTrim::kBoth:
      return L"both ";
    case RqExprTrim::kLeading:
      return L"leading ";
    case RqExprTrim::kTrailing:
      return L"trailing ";
  }
  KX_LOGIC_ERROR(L"");
}

}  // namespace

bool RqDumpout::Visit(RqExprTrim& expr) {
  Append(L"trim(");
  Append(TrimWord(expr.GetTrimOperation()));
  PrintOperand(expr, RqExprTrim::kCharToTrim);
  Append(L" from ");
  PrintOperand(expr, RqExprTrim::kFromString);
  Append(L")");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Dates and times

namespace {

std::wstring_view ExtractWord(KXDateTime::ExtractOpcode operation) {
  switch (operation) {
    case KXDateTime::kExtractDayOfWeek:
      return L"day_of_week";
    case KXDateTime::kExtractNameOfDay:
      return L"name_of_day";
    case KXDateTime::kExtractYear:
      return L"year";
    case KXDateTime::kExtractMonth:
      return L"month";
    case KXDateTime::kExtractDay:
      return L"day";
    case KXDateTime::kExtractHour:
      return L"hour";
    case KXDateTime::kExtractMinute:
      return L"minute";
    case KXDateTime::kExtractSecond:
      return L"second";
    case KXDateTime::kExtractWeekOfYear:
      return L"week_of_year";
    case KXDateTime::kExtractDayOfYear:
      return L"day_of_year";
    case KXDateTime::kExtractMonthOfQuarter:
      return L"month_of_quarter";
    case KXDateTime::kExtractWeekOfQuarter:
      return L"week_of_quarter";
    case KXDateTime::kExtractDayOfQuarter:
      return L"day_of_quarter";
    case KXDateTime::kExtractWeekOfMonth:
      return L"week_of_month";
    case KXDateTime::kExtractNameOfMonth:
      return L"name_of_month";
    case KXDateTime::kExtractQuarterOfYear:
      return L"quarter_of_year";
  }
  KX_LOGIC_ERROR(L"");
}

std::wstring_view UnitWord(KXDateTime::UnitOfTime unit) {
  switch (unit) {
    case KXDateTime::kMillisecond:
      return L"SQL_TSI_FRAC_SECOND";
    case KXDateTime::kSecond:
      return L"SQL_TSI_SECOND";
    case KXDateTime::kMinute:
      return L"SQL_TSI_MINUTE";
    case KXDateTime::kHour:
      return L"SQL_TSI_HOUR";
    case KXDateTime::kDay:
      return L"SQL_TSI_DAY";
    case KXDateTime::kWeek:
      return L"SQL_TSI_WEEK";
    case KXDateTime::kMonth:
      return L"SQL_TSI_MONTH";
    case KXDateTime::kQuarter:
      return L"SQL_TSI_QUARTER";
    case KXDateTime::kYear:
      return L"SQL_TSI_YEAR";
  }
  KX_LOGIC_ERROR(L"");
}

}  // namespace

bool RqDumpout::Visit(RqExprCalendarExtract& expr) {
  Append(L"extract(");
  Append(ExtractWord(expr.GetOperation()));
  return PrintFunction(expr, L" from ");
}

bool RqDumpout::Visit(RqExprFiscalExtract& expr) {
  Append(L"fiscal_extract(");
  Append(ExtractWord(expr.GetOperation()));
  Append(L" from ");
  PrintOperand(expr, RqExprFiscalExtract::kDateTimeExpr);
  if (CountUpToLastOperand(expr) > RqExprFiscalExtract::kStartMonth) {
    Append(L" fiscal_year_start ");
    PrintOperand(expr, RqExprFiscalExtract::kStartMonth);
    if (expr.FindOperand(RqExprFiscalExtract::kStartDay)) {
      Append(L", ");
      PrintOperand(expr, RqExprFiscalExtract::kStartDay);
    }
  }
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprTimestampAdd& expr) {
  Append(L"TimestampAdd(");
  Append(UnitWord(expr.GetUnitOfTime()));
  return PrintFunction(expr, L", ");
}

bool RqDumpout::Visit(RqExprTimestampDiff& expr) {
  Append(L"TimestampDiff(");
  Append(UnitWord(expr.GetUnitOfTime()));
  return PrintFunction(expr, L", ");
}

// ---------------------------------------------------------------------------------------------------------------------
// Choices and casts

/// The pairs from a slot on, the default if there is one, and the end.
void RqDumpout::PrintWhenThen(RqExpr& expr, int firstSlot, int defaultSlot) {
  for (int slot = firstSlot; slot < expr.GetNumOperands(); slot += 2) {
    Append(L" when ");
    PrintOperand(expr, slot);
    Append(L" then ");
    PrintOperand(expr, slot + 1);
  }
  if (expr.FindOperand(defaultSlot)) {
    Append(L" else ");
    PrintOperand(expr, defaultSlot);
  }
  Append(L" end ");
}

bool RqDumpout::Visit(RqExprLookupCase& expr) {
  Append(L"case ");
  PrintOperand(expr, RqExprLookupCase::kKey);
  PrintWhenThen(expr, RqExprLookupCase::kFirstLookupEntry, RqExprLookupCase::kDefaultReturnValue);
  return true;
}

bool RqDumpout::Visit(RqExprIfCase& expr) {
  Append(L"case ");
  PrintWhenThen(expr, RqExprIfCase::kFirstIfCond, RqExprIfCase::kDefaultReturnValue);
  return true;
}

bool RqDumpout::Visit(RqExprNullIf& expr) { return PrintFunction(expr, L"nullif( ", kBlankComma); }
bool RqDumpout::Visit(RqExprIfNull& expr) { return PrintFunction(expr, L"ifnull(", kBlankComma); }
bool RqDumpout::Visit(RqExprCoalesce& expr) { return PrintFunction(expr, L"coalesce( ", kBlankComma); }

namespace {

/// A type's words in a cast, and what follows them.
struct CastType {
  enum Dimensions {
    kLengthIfPositive,   // of a length: 0 is none
    kLength,             // always; the words open the parenthesis
    kPrecisionAndScale,  // as far as not negative
    kPrecision           // if not negative
  };
  std::wstring_view m_words;
  Dimensions m_dimensions;
};

CastType GetCastType(KXDataType type) {
  switch (type) {
    case KXCharData:
      return {L" CHARACTER ", CastType::kLengthIfPositive};
    case KXVarCharData:
    case KXLongVarCharData:
      return {L" VARCHAR ( ", CastType::kLength};
    case KXBitData:
    case KXBinaryData:
      return {L" BIT ", CastType::kLengthIfPositive};
    case KXVarBinaryData:
    case KXLongVarBinaryData:
      return {L" BIT VARYING ( ", CastType::kLength};
    case KXInt2Data:
      return {L" SMALLINT ", CastType::kLengthIfPositive};
    case KXInt4Data:
      return {L" INTEGER ", CastType::kLengthIfPositive};
    case KXFloatData:
      return {L" FLOAT ", CastType::kLengthIfPositive};
    case KXDoubleData:
      return {L" DOUBLE PRECISION ", CastType::kLengthIfPositive};
    case KXNumericData:
      return {L" NUMERIC ", CastType::kPrecisionAndScale};
    case KXDecimalData:
      return {L" DECIMAL ", CastType::kPrecisionAndScale};
    case KXDateData:
      return {L" DATE ", CastType::kLengthIfPositive};
    case KXTimeData:
      return {L" TIME ", CastType::kPrecision};
    case KXDateTimeData:
    case KXTimeStampData:
      return {L" TIMESTAMP ", CastType::kPrecision};
    default:
      KX_LOGIC_ERROR(L"");
  }
}

}  // namespace

void RqDumpout::PrintCastType(RqExprCast& expr) {
  const auto& [words, dimensions] = GetCastType(expr.GetToDataType());
  Append(words);
  if (dimensions != CastType::kLength) {
    if (expr.GetPrecision() < (dimensions == CastType::kLengthIfPositive ? 1 : 0)) return;
    Append(L"( ");
  }
  Append(expr.GetPrecision());
  if (dimensions == CastType::kPrecisionAndScale && expr.GetScale() >= 0) {
    Append(L", ");
    Append(expr.GetScale());
  }
  Append(L" )");
}

bool RqDumpout::Visit(RqExprCast& expr) {
  Append(L"cast(");
  PrintOperand(expr, RqExprCast::kOperand);
  Append(L" as ");
  PrintCastType(expr);
  if (!expr.GetDateTimeFormat().empty()) {
    Append(L" ");
    AppendStringText(expr.GetDateTimeFormat());
  }
  Append(L") ");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Session, row and database

bool RqDumpout::Visit(RqExprDatabase& expr) { return PrintFunction(expr, L"database("); }
bool RqDumpout::Visit(RqExprUser& expr) { return PrintFunction(expr, L"user("); }
bool RqDumpout::Visit(RqExprIndexCol& expr) { return PrintFunction(expr, L"indexcol( ", L", ", L") "); }

bool RqDumpout::Visit(RqExprRowID&) {
  Append(L"RowID");
  return true;
}

bool RqDumpout::Visit(RqExprExtract& expr) {
  Append(L"RqExprExtract [Column ");
  Append(expr.GetColumnNumber());
  Append(L"]");
  return true;
}

bool RqDumpout::Visit(RqExprEvaluate& expr) {
  Append(L"Evaluate( ");
  AppendStringText(expr.GetFunctionDef());
  if (expr.GetNumOperands() > 0) Append(L", ");
  PrintOperands(expr);
  Append(L") ");
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Dimensions and grain

bool RqDumpout::Visit(RqExprCalculatedMember& expr) {
  Append(L"CalculatedMember(");
  PrintOperands(expr);
  Append(L", ");
  Append(expr.GetSolveOrder());
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprDepth& expr) {
  Append(L"Depth(");
  PrintOperands(expr);
  if (!expr.GetLTSVoidID().IsNullID()) {
    Append(L", ");
    Append(expr.GetLTSVoidID());
  }
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprTimeDimSeqNum& expr) {
  Append(L"TimeDimSeqNum(");
  PrintOperands(expr);
  if (const RefALevel& level = expr.GetTimeLevel()) {
    Append(L", ");
    AppendObject(level.GetGateway()->GetRepositoryUniqueID32(), level.GetID());
  }
  Append(L" )");
  return true;
}

bool RqDumpout::Visit(RqExprAllValues& expr) { return PrintFunction(expr, L"ALL_VALUES("); }
bool RqDumpout::Visit(RqExprIDOf& expr) { return PrintFunction(expr, L"IDOF("); }
bool RqDumpout::Visit(RqExprGroupingId& expr) { return PrintFunction(expr, L"grouping_id("); }
bool RqDumpout::Visit(RqExprGrainCheckDisplay& expr) { return PrintFunction(expr, L"GrnChkDisp("); }
bool RqDumpout::Visit(RqExprBinPlaceHolder& expr) { return PrintFunction(expr, L"Binning(", L", ", L") "); }
bool RqDumpout::Visit(RqExprCanonical& expr) { return PrintFunction(expr, L"Canonical(", kBlankComma); }

// ---------------------------------------------------------------------------------------------------------------------
// Values from elsewhere

bool RqDumpout::Visit(RqExprLookup& expr) {
  Append(L"lookup( ");
  Append(expr.IsDenseLookup() ? std::wstring_view(L"DENSE ") : std::wstring_view(L"SPARSE "));
  if (RqExpr* const pValueExpr = expr.GetValueExpr()) {
    pValueExpr->TourExpr(*this);
    if (expr.GetNumOperands() > 0) Append(L", ");
  }
  PrintOperands(expr);
  Append(L") ");
  return true;
}

bool RqDumpout::Visit(RqExprHDSLookup& expr) {
  Append(L"HDS_LOOKUP( hds_grouping_entity: ");
  PrintOperand(expr, RqExprHDSLookup::kGroupingEntity);
  Append(L", input_binding_expression: ");
  PrintOperand(expr, RqExprHDSLookup::kBindingExpression);
  if (expr.FindOperand(RqExprHDSLookup::kOptionalNameValuePairs)) {
    Append(L", optional_name_value_pairs: ");
    PrintOperand(expr, RqExprHDSLookup::kOptionalNameValuePairs);
  }
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprDictLookup& expr) {
  Append(L"Dict_lookup(");
  PrintOperands(expr);
  Append(L", ");
  Append(expr.GetTableIdentifier().ToString());
  Append(L" (Dictionary for ");
  Append(expr.GetDictionaryName());
  Append(L"))");
  return true;
}

bool RqDumpout::Visit(RqExprJsonValue& expr) {
  PrintFunction(expr, L"JSON_VALUE(", L", ", L"");
  if (!expr.GetHDSPath().empty() || !expr.GetHDSTableName().empty()) {
    for (const KXString& text : {expr.GetHDSPath(), expr.GetHDSTableName()}) {
      Append(L", ");
      AppendStringText(text);
    }
  }
  Append(L")");
  return true;
}

namespace {

/// "name=value, name=value"
template <class Pairs>
KXString NamesAndValues(const Pairs& pairs) {
  KXString text;
  for (const auto& [name, value] : pairs) {
    if (!text.empty()) text += L", ";
    text.append(name).append(L'=').append(value);
  }
  return text;
}

}  // namespace

bool RqDumpout::Visit(RqExprPredict& expr) {
  Append(expr.IsEvaluateScript() ? std::wstring_view(L"EvaluateScript(") : std::wstring_view(L"Predict("));
  if (const RefARpObject source(m_pRp_ForPrettyColumnNames, expr.GetDatasourceID()); source) {
    AppendStringText(source->GetName());
  } else {
    Append(expr.GetDatasourceID());
  }
  if (expr.IsEvaluateScript()) {
    Append(L", scriptname=");
    Append(expr.GetScriptName());
  } else {
    Append(L", modelname=");
    Append(expr.GetModelName());
  }
  if (!expr.GetColumnType().empty()) {
    Append(L", ");
    Append(expr.GetColumnType());
  }
  for (const auto* const pPairs : {&expr.GetDataBindings(), &expr.GetOptions()}) {
    Append(L", [");
    Append(NamesAndValues(*pPairs));
    Append(L"]");
  }
  if (expr.GetNumOperands() > 0) Append(L", ");
  PrintOperands(expr);
  Append(L")");
  return true;
}

namespace {

std::wstring_view JoinFormWord(ExternalJoinForm joinForm) {
  switch (joinForm) {
    case kExternalInnerJoin:
      return L"IJ";
    case kExternalLeftOuterJoin:
      return L"LOJ";
    case kExternalRightOuterJoin:
      return L"ROJ";
    case kExternalFullOuterJoin:
      return L"FOJ";
    case kExternalFullOuterStitchJoin:
      return L"FOSJ";
    case kExternalNaturalJoin:
      return L"NJ";
    case kExternalUnion:
      return L"UN";
    case kExternalUnknownJoin:
      break;
  }
  return L"UNKNOWN";
}

}  // namespace

void RqDumpout::PrintExternalScript(const ExternalScriptExecutionData& script) {
  Append(L", Script Path = ");
  Append(script.m_ScriptPath);
  Append(L", Output Column = ");
  Append(script.m_OutputColumn);
  Append(L", Data Bindings = ");
  for (const ExternalScriptDataBinding& binding : script.m_DataBindings) {
    const std::pair<std::wstring_view, const KXString&> fields[] = {
        {L" [BMM column: ", binding.m_BMMColumn},
        {L", Presentation column: ", binding.m_PresentationColumn},
        {L", Raw Datatype = ", binding.m_RawDatatype},
        {L", Sort Order = ", binding.m_SortOrder}};
    for (const auto& [words, value] : fields) {
      Append(words);
      Append(value);
    }
    Append(L" ]");
  }
  Append(L", Options = ");
  Append(NamesAndValues(script.m_Options));
}

bool RqDumpout::Visit(RqExprExternalData& expr) {
  const RqExternalColumn& column = expr.GetExternalColumn();
  Append(L"HDS(");
  Append(column.m_ExternalDataForm == RqExternalColumn::kCSVData ? std::wstring_view(L"CSV")
                                                                 : std::wstring_view(L"Unknown Form"));
  Append(L",");
  Append(column.m_ObjectReference.ToStringForQueryGeneration());
  Append(L",");
  AppendQuoted(column.m_ColumnName, L'"');
  if (!column.m_CacheSharedKey.empty()) {
    Append(L", Shared Cache Key  = ");
    Append(column.m_CacheSharedKey);
  }
  if (!column.m_AggrRule.empty()) {
    Append(L", Aggr:");
    Append(column.m_AggrRule);
  }
  const std::pair<bool, std::wstring_view> flags[] = {{column.m_bIsVirtual, L", virtual = true"},
                                                      {column.m_bIsForceVirtual, L", forcevirtual = true"},
                                                      {column.m_bIsOptionalVirtual, L", optionalvirtual = true"},
                                                      {column.m_bIsLookupJoinColumn, L", lookupjoincolumn = true"},
                                                      {column.m_bIsSortKeyColumn, L", sortkeycolumn = true"},
                                                      {column.m_bNeedsGrainCheck, L", grain check = true"}};
  for (const auto& [bSet, words] : flags) {
    if (bSet) Append(words);
  }
  for (const ExternalJoiningIndex& index : column.m_ExternalJoiningIndexVector) {
    Append(L" [");
    Append(index.m_index);
    Append(L" ");
    Append(JoinFormWord(index.m_joinForm));
    Append(L" ]");
  }
  if (const auto& script = expr.GetExternalScriptExecutionData()) PrintExternalScript(*script);
  if (CountUpToLastOperand(expr) > 0) PrintFunction(expr, L", Conforms to: ", L", ", L"");
  Append(L")");
  return true;
}
