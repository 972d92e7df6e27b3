#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprArithmetic.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprMember.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprString.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSystem.h"

/// A tree of scalar functions, by its text.
struct ScalarSample {
  std::string m_text;
  std::function<RqExpr*()> m_make;  ///< a new tree, the caller's
  bool m_bTravels = true;           ///< whether what is read back from its bytes equals it
};

inline RqExternalColumn ExternalColumnSample() {
  RqExternalColumn column;
  column.m_ExternalDataForm = RqExternalColumn::kCSVData;
  column.m_ObjectReference = ExternalObjectReference({L"Lake", L"2024"}, L"alias");
  column.m_CacheSharedKey = L"key";
  column.m_ColumnName = L"AMOUNT";
  column.m_AggrRule = L"sum";
  column.m_bIsVirtual = column.m_bIsForceVirtual = column.m_bIsOptionalVirtual = true;
  column.m_bIsSortKeyColumn = column.m_bIsDescriptorIDColumn = column.m_bScalarWithNoPath = true;
  column.m_bNeedsGrainCheck = column.m_bIsPrimaryKeyColumn = true;
  column.m_bIsLookupJoinColumn = column.m_bIsPresentWithIncomingQuery = true;
  column.m_ExternalJoiningIndexVector = {
      {0, kExternalInnerJoin},     {1, kExternalLeftOuterJoin},       {2, kExternalRightOuterJoin},
      {3, kExternalFullOuterJoin}, {4, kExternalFullOuterStitchJoin}, {5, kExternalNaturalJoin},
      {6, kExternalUnion},         {7, kExternalUnknownJoin}};
  return column;
}

inline RefCnt<ExternalScriptExecutionData> ScriptSample() {
  RefCnt<ExternalScriptExecutionData> script(new ExternalScriptExecutionData);
  script->m_ScriptPath = L"/scripts/s";
  script->m_OutputColumn = L"o";
  script->m_PAFOpCode = 7;
  script->m_isFloatingTimeGrain = script->m_bIsEvaluateScript = true;
  script->m_Target = L"t";
  script->m_ConnectionPool = L"c";
  script->m_DbTable = L"d";
  script->m_DataBindings = {{L"a", L"b", L"INTEGER", L"asc"}, {}};
  script->m_Options = {{L"x", L"1"}, {L"y", L""}};
  return script;
}

/// An empty expression, or one that is made of the arguments, filled further.
template <class Expr, class Fill, class... Args>
Expr* Filled(Fill fill, Args&&... args) {
  auto* const pExpr = new Expr(std::forward<Args>(args)...);
  fill(*pExpr);
  return pExpr;
}

/// One that is made of the arguments and, behind them, the expressions.
template <class Expr, class... Args>
Expr* MadeOf(RqExprVector exprs, Args&&... args) {
  return new Expr(std::forward<Args>(args)..., exprs);
}

/// Adds a sample of each class, of integers: its text is one of the names with what is to follow it.
template <class... Classes, class... Ints>
void AddSamples(std::vector<ScalarSample>& samples, const char* suffix, const char* names, Ints... operands) {
  std::istringstream words(names);
  std::string name;
  (samples.push_back({(words >> name, name + suffix), [=] { return new Classes(Int(operands)...); }}), ...);
}

/// Each class, and for one with fields a sample in which each of them has a value.
inline std::vector<ScalarSample> ScalarSamples() {
  std::vector<ScalarSample> samples = {
      {"-1", [] { return new RqExprUnaryMinus(Int(1)); }},
      {"1 + 2", [] { return new RqExprAdd(Int(1), Int(2)); }},
      {"1 - 2", [] { return new RqExprSubtract(Int(1), Int(2)); }},
      {"1 * 2", [] { return new RqExprMultiply(Int(1), Int(2)); }},
      {"1 / 2", [] { return new RqExprDivide(Int(1), Int(2)); }},
      {"1 || 2", [] { return new RqExprConcat(Int(1), Int(2)); }},
      {"position(1 in 2)", [] { return new RqExprPosition(Int(1), Int(2)); }},
      {"NLSSort(1, 2)", [] { return new RqExprNLSSort(Int(1), Int(2)); }},
      {"nullif( 1 , 2)", [] { return new RqExprNullIf(Int(1), Int(2)); }},
      {"JSON_VALUE(1, 2)", [] { return new RqExprJsonValue(Int(1), Int(2)); }},
      // Arithmetic
      {"-(1 + 2)", [] { return new RqExprUnaryMinus(new RqExprAdd(Int(1), Int(2))); }},
      {"-exp(1)", [] { return new RqExprUnaryMinus(new RqExprExp(Int(1))); }},
      {"rand()", [] { return new RqExprRand(nullptr); }},
      {"pi()", [] { return new RqExprPi; }},
      {"round(1)", [] { return new RqExprRound(Int(1), nullptr); }},
      // Text
      {"locate(1, 2)", [] { return new RqExprLocate(Int(1), Int(2), nullptr); }},
      {"locate(1, 2, 3)", [] { return new RqExprLocate(Int(1), Int(2), Int(3)); }},
      {"substring(?1 from 2)", [] { return new RqExprSubstring(Param(1), Int(2), nullptr, nullptr, nullptr); }},
      {"substring(?1 from 2 for 3)", [] { return new RqExprSubstring(Param(1), Int(2), Int(3), nullptr, nullptr); }},
      {"substring(?1 extract first 2 token(s) delimited by ',')",
       [] { return new RqExprSubstring(Param(1), nullptr, nullptr, Int(2), Str(L",")); }},
      {"trim(both 'x' from ?1)", [] { return new RqExprTrim(Str(L"x"), Param(1), RqExprTrim::kBoth); }},
      {"trim(leading 'x' from ?1)", [] { return new RqExprTrim(Str(L"x"), Param(1), RqExprTrim::kLeading); }},
      {"trim(trailing  from ?1)", [] { return new RqExprTrim(nullptr, Param(1), RqExprTrim::kTrailing); }},
      {"replace(1 , 2 , 3)", [] { return new RqExprReplace(Int(1), Int(2), Int(3)); }},
      {"insert(1 , 2 , 3 , 4)", [] { return new RqExprInsert(Int(1), Int(2), Int(3), Int(4)); }},
      {"NLSSort(1)", [] { return new RqExprNLSSort(Int(1), nullptr); }},
      // Dates and times
      {"extract(name_of_month from ?1)",
       [] { return new RqExprCalendarExtract(Param(1), KXDateTime::kExtractNameOfMonth); }},
      {"fiscal_extract(week_of_quarter from ?1 fiscal_year_start 4, 6)",
       [] { return new RqExprFiscalExtract(Param(1), Int(4), Int(6), KXDateTime::kExtractWeekOfQuarter); }},
      {"fiscal_extract(year from ?1 fiscal_year_start 4)",
       [] { return new RqExprFiscalExtract(Param(1), Int(4), nullptr, KXDateTime::kExtractYear); }},
      {"fiscal_extract(year from ?1)",
       [] { return new RqExprFiscalExtract(Param(1), nullptr, nullptr, KXDateTime::kExtractYear); }},
      {"TimestampAdd(SQL_TSI_QUARTER, 3, ?1)",
       [] { return new RqExprTimestampAdd(Int(3), Param(1), KXDateTime::kQuarter); }},
      {"TimestampDiff(SQL_TSI_FRAC_SECOND, ?1, ?2)",
       [] { return new RqExprTimestampDiff(Param(1), Param(2), KXDateTime::kMillisecond); }},
      // Choices and casts
      {"case ?1 when 1 then 'a' when 2 then 'b' else 'c' end ",
       [] {
         RqExprPairVector entries{{Int(1), Str(L"a")}, {Int(2), Str(L"b")}};
         return new RqExprLookupCase(Param(1), Str(L"c"), entries);
       }},
      {"case  when 1 < 2 then 3 when 4 < 5 then 6 else 7 end ",
       [] {
         RqExprPairVector pairs{{new RqExprCondLess(Int(1), Int(2)), Int(3)},
                                {new RqExprCondLess(Int(4), Int(5)), Int(6)}};
         return Filled<RqExprIfCase>([](RqExprIfCase& e) { e.SetAddedInHDSRewrite(true); }, Int(7), pairs);
       }},
      {"case  when 1 < 2 then 3 end ",
       [] {
         RqExprPairVector pairs{{new RqExprCondLess(Int(1), Int(2)), Int(3)}};
         return new RqExprIfCase(nullptr, pairs);
       }},
      {"coalesce( 1 , 2 , 3)",
       [] {
         RqExprVector values{Int(1), Int(2), Int(3)};
         return Filled<RqExprCoalesce>([](RqExprCoalesce& e) { e.SetAddedInHDSRewrite(true); }, values, true);
       }},
      {"cast(?1 as  NUMERIC ( 10, 2 )) ", [] { return new RqExprCast(Param(1), KXNumericData, 10, 2); }},
      {"cast(?1 as  TIMESTAMP ( 3 ) 'yyyy') ",
       [] {
         return Filled<RqExprCast>([](RqExprCast& e) { e.SetDateTimeFormat(L"yyyy"); }, Param(1), KXTimeStampData, 3,
                                   5);
       }},
      // Session, row and database
      {"database()", [] { return new RqExprDatabase; }},
      {"user()", [] { return new RqExprUser; }},
      {"indexcol( ) ", [] { return new RqExprIndexCol; }},
      {"RowID", [] { return new RqExprRowID; }},
      {"RqExprExtract [Column 7]", [] { return new RqExprExtract(7); }},
      {"Evaluate( 'f(%1)', 1, 2) ", [] { return MadeOf<RqExprEvaluate>(Exprs(Int(1), Int(2)), L"f(%1)"); }},
      // Dimensions and grain
      {"CalculatedMember(1, 2, 3, 4)", [] { return new RqExprCalculatedMember(Int(1), Int(2), Int(3), 4); }},
      {"Depth(1, 3001:7)",
       [] {
         return Filled<RqExprDepth>([](RqExprDepth& e) { e.SetLTSVoidID(VoidID(kTIDALogicalTable, 7u)); }, Int(1));
       }},
      {"TimeDimSeqNum(1 )", [] { return new RqExprTimeDimSeqNum(Int(1), RefALevel()); }},
      {"Binning() ", [] { return new RqExprBinPlaceHolder; }},
      // Values from elsewhere
      {"lookup( DENSE ?3, 1, 2) ", [] { return MadeOf<RqExprLookup>(Exprs(Int(1), Int(2)), true, Param(3)); }},
      {"JSON_VALUE('$.a', ?1, '/p', 'T')",
       [] {
         return Filled<RqExprJsonValue>(
             [](RqExprJsonValue& e) {
               e.SetHDSPath(L"/p");
               e.SetHDSTableName(L"T");
             },
             Str(L"$.a"), Param(1), KXTypeInfo(KXDoubleData, 1, 2, 0));
       },
       false},
      {"HDS_LOOKUP( hds_grouping_entity: 1, input_binding_expression: 2)",
       [] { return new RqExprHDSLookup(Int(1), Int(2), nullptr); }},
      {"HDS_LOOKUP( hds_grouping_entity: 1, input_binding_expression: 2, optional_name_value_pairs: 3)",
       [] { return new RqExprHDSLookup(Int(1), Int(2), Int(3)); }},
      {"Dict_lookup(1, usr.tab (Dictionary for COL))",
       [] {
         return new RqExprDictLookup(Int(1), nullptr, {L"usr", L"tab"}, L"COL");
       }},
      {"Predict(3023:9, modelname=churn, [], [])",
       [] { return MadeOf<RqExprPredict>(Exprs(), VoidID(kTIDADatabase, 9u), L"churn", false); }},
      {"EvaluateScript(3023:9, scriptname=s.py, DOUBLE, [age=T1.AGE, sex=T1.SEX], [k=5], ?1, ?2)",
       [] {
         RqExprVector operands{Param(1), Param(2)};
         return Filled<RqExprPredict>(
             [](RqExprPredict& e) {
               e.SetModelName(L"m");
               e.SetColumnType(L"DOUBLE");
               e.SetDataBindings({{L"age", L"T1.AGE"}, {L"sex", L"T1.SEX"}});
               e.SetOptions({{L"k", L"5"}});
             },
             VoidID(kTIDADatabase, 9u), L"s.py", true, operands);
       }},
      {"HDS(Unknown Form,,\"\")",
       [] { return new RqExprExternalData(nullptr, nullptr, nullptr, nullptr, nullptr, {}); }},
      {"HDS(CSV,\"Lake\".\"2024\",\"AMOUNT\", Shared Cache Key  = key, Aggr:sum, virtual = true, forcevirtual = true,"
       " optionalvirtual = true, lookupjoincolumn = true, sortkeycolumn = true, grain check = true [0 IJ ] [1 LOJ ]"
       " [2 ROJ ] [3 FOJ ] [4 FOSJ ] [5 NJ ] [6 UN ] [7 UNKNOWN ], Conforms to: ?1, , ?2)",
       [] { return new RqExprExternalData(Param(1), nullptr, Param(2), nullptr, nullptr, ExternalColumnSample()); }},
      {"HDS(CSV,\"Lake\".\"2024\",\"S\", Script Path = /scripts/s, Output Column = o, Data Bindings ="
       "  [BMM column: a, Presentation column: b, Raw Datatype = INTEGER, Sort Order = asc ] [BMM column: ,"
       " Presentation column: , Raw Datatype = , Sort Order =  ], Options = x=1, y=)",
       [] {
         RqExternalColumn column;
         column.m_ExternalDataForm = RqExternalColumn::kCSVData;
         column.m_ObjectReference = ExternalObjectReference({L"Lake", L"2024"});
         column.m_ColumnName = L"S";
         return Filled<RqExprExternalData>(
             [](RqExprExternalData& e) { e.SetExternalScriptExecutionData(ScriptSample()); }, nullptr, nullptr, nullptr,
             nullptr, nullptr, column);
       },
       false},
  };
  AddSamples<RqExprExp, RqExprSquare, RqExprSqrt, RqExprCeil, RqExprFloor, RqExprSign, RqExprAbs, RqExprLog,
             RqExprLog10, RqExprDegrees, RqExprRadians, RqExprSin, RqExprCos, RqExprTan, RqExprCot, RqExprAsin,
             RqExprAcos, RqExprAtan, RqExprSinh, RqExprCosh, RqExprTanh, RqExprRand, RqExprCharLength,
             RqExprOctetLength, RqExprBitLength, RqExprLength, RqExprUpper, RqExprLower, RqExprAscii, RqExprChar,
             RqExprSpace, RqExprDepth, RqExprAllValues, RqExprIDOf, RqExprGroupingId, RqExprGrainCheckDisplay>(
      samples, "(1)",
      "exp square sqrt ceiling floor sign abs log log10 degrees radians sin cos tan cot asin acos atan "
      "sinh cosh tanh rand char_length octet_length bit_length length upper lower ascii char space "
      "Depth ALL_VALUES IDOF grouping_id GrnChkDisp",
      1);
  AddSamples<RqExprPow, RqExprRound, RqExprTruncate, RqExprMod, RqExprModf, RqExprAtan2, RqExprExtractBit, RqExprLeft,
             RqExprRight, RqExprRepeat, RqExprIfNull, RqExprCanonical>(
      samples, "(1 , 2)", "power round truncate mod modf atan2 ExtractBit left right repeat ifnull Canonical", 1, 2);
  return samples;
}
