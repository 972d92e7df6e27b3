#include "rq/sql/ScalarFunctions.h"

#include <gtest/gtest.h>

#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlSpelling.h"
#include "rq/sql/SqlText.h"

namespace {

/// The text of a value, taken from the condition that it is less than a number.
std::string ValueText(const std::string& sql) {
  const OwnedRqExprCondPtr cond = ParseCondition("(" + sql + ") < 0");
  return RqDumpout::StringFrom(*cond->GetIthOperand(RqExprCondLess::kLeftOperand)).ToUTF8();
}

// ---------------------------------------------------------------------------------------------------------------------
// What is taken

struct Written {
  const char* m_sql;
  const char* m_text;  ///< Null if it is the SQL.
};

void PrintTo(const Written& written, std::ostream* pOut) { *pOut << written.m_sql; }

class ScalarText : public testing::TestWithParam<Written> {};

TEST_P(ScalarText, IsThatOfTheTreeAndReadsAsTheSameTree) {
  const auto [sql, text] = GetParam();
  EXPECT_EQ(ValueText(sql), text ? text : sql);
  EXPECT_EQ(ValueText(ValueText(sql)), ValueText(sql));
}

INSTANTIATE_TEST_SUITE_P(Operators, ScalarText,
                         testing::Values(Written{"a + b", nullptr}, Written{"b + a", "a + b"},
                                         Written{"b - a", nullptr}, Written{"b * a", "a * b"},
                                         Written{"b / a", nullptr}, Written{"b || 'x' || a", nullptr},
                                         Written{"a - -b", nullptr}, Written{"-(a + b)", nullptr},
                                         Written{"-a", nullptr}, Written{"a % 2", "mod(a , 2)"},
                                         Written{"a - b * c / d", nullptr}, Written{"a - -5", nullptr}));

// Where the standard has a form of its own, with it; for the rest the table of functions is walked below.
INSTANTIATE_TEST_SUITE_P(
    Functions, ScalarText,
    testing::Values(
        Written{"ceil(a)", "ceiling(a)"}, Written{"ln(a)", "log(a)"}, Written{"log10(a)", nullptr},
        Written{"round(a)", nullptr}, Written{"round(a , 2)", nullptr}, Written{"trunc(a, 1)", "truncate(a , 1)"},
        Written{"rand(7)", nullptr}, Written{"random()", "rand()"}, Written{"atan2(a , b)", nullptr},
        Written{"character_length(a)", "char_length(a)"}, Written{"chr(65)", "char(65)"},
        Written{"CHAR ( a ) || cast(a as char(3))", "char(a) || cast(a as  CHARACTER ( 3 )) "},
        Written{"position(a in b)", nullptr}, Written{"strpos(b, a)", "position(a in b)"},
        Written{"locate(a, b)", nullptr}, Written{"locate(a, b, 3)", nullptr}, Written{"substring(a from 2)", nullptr},
        Written{"substring(a from 2 for 3)", nullptr},
        Written{"substring(a for 3 from 2)", "substring(a from 2 for 3)"}, Written{"substring(a for 3)", nullptr},
        Written{"substring(a for (3))", "substring(a for 3)"},
        Written{"substring(a, 2, 3)", "substring(a from 2 for 3)"},
        Written{"substring(a extract first 2 token(s) delimited by ',')", nullptr},
        Written{"substring(substring(a, 2) EXTRACT FIRST b TOKEN ( S ) DELIMITED BY c)",
                "substring(substring(a from 2) extract first b token(s) delimited by c)"},
        Written{"trim(a)", "trim(both  from a)"}, Written{"trim(both 'x' from a)", nullptr},
        Written{"trim(leading from a)", "trim(leading  from a)"}, Written{"trim(trailing b from a)", nullptr},
        Written{"trim(a, 'x')", "trim(both 'x' from a)"}, Written{"trim(from a)", "trim(both  from a)"},
        Written{"ltrim(a, 'x')", "trim(leading 'x' from a)"}, Written{"insert(a , 1 , 2 , 'x')", nullptr},
        Written{"overlay(a placing 'x' from 1 for 2)", "insert(a , 1 , 2 , 'x')"}, Written{"left(a , 2)", nullptr},
        Written{"concat(a, b)", "a || b"}, Written{"current_user", "user()"},
        Written{"USER\n( ) || user", "user() || user()"}, Written{"current_catalog", "database()"},
        Written{"evaluate('f(%1)', a)", "Evaluate( 'f(%1)', a) "}, Written{"indexcol(1, a, b)", "indexcol( 1, a, b) "},
        Written{"nullif(a, b)", "nullif( a , b)"}, Written{"coalesce(a)", "coalesce( a)"},
        Written{"coalesce(b, a, 1)", "coalesce( b , a , 1)"}, Written{"ifnull(a , 0)", nullptr}));

INSTANTIATE_TEST_SUITE_P(
    Moments, ScalarText,
    testing::Values(Written{"extract(year from a)", nullptr},
                    Written{"EXTRACT(DOY FROM t.a)", "extract(day_of_year from T1.a)"},
                    Written{"extract('month' from DATE '2024-01-31')", "extract(month from DATE '2024-01-31')"},
                    Written{"date_part('quarter', a)", "extract(quarter_of_year from a)"},
                    Written{"fiscal_extract(week_of_year from a)", nullptr},
                    Written{"fiscal_extract(day from a fiscal_year_start 4)", nullptr},
                    Written{"FISCAL_EXTRACT(year FROM coalesce(a, extract(year from b)) FISCAL_YEAR_START 4, 6)",
                            "fiscal_extract(year from coalesce( a , extract(year from b)) fiscal_year_start 4, 6)"},
                    Written{"fiscal_extract(year, a.fiscal_year_start, 4)",
                            "fiscal_extract(year from T1.fiscal_year_start fiscal_year_start 4)"},
                    Written{"timestampadd(sql_tsi_frac_second, -1, a)", "TimestampAdd(SQL_TSI_FRAC_SECOND, -1, a)"},
                    Written{"TIMESTAMPDIFF(QUARTER, a, CURRENT_TIMESTAMP)",
                            "TimestampDiff(SQL_TSI_QUARTER, a, CURRENT_TIMESTAMP)"}));

INSTANTIATE_TEST_SUITE_P(Choices, ScalarText,
                         testing::Values(Written{"case a when 1 then 'x' when b then c else NULL end ", nullptr},
                                         Written{"case a when 1 then 2 end", "case a when 1 then 2 end "},
                                         Written{
                                             "CASE WHEN a = 1 OR NOT b LIKE 'x' THEN 1 WHEN c IS NULL THEN d END",
                                             "case  when a = 1 or not b like 'x' then 1 when c is null then d end "},
                                         Written{"case when a < 1 then case b when 2 then 3 end else 4 end",
                                                 "case  when a < 1 then case b when 2 then 3 end  else 4 end "}));

INSTANTIATE_TEST_SUITE_P(
    Casts, ScalarText,
    testing::Values(
        Written{"a::char", "cast(a as  CHARACTER ) "}, Written{"a::national char(3)", "cast(a as  CHARACTER ( 3 )) "},
        Written{"a::varchar(30)", "cast(a as  VARCHAR ( 30 )) "},
        Written{"a::char varying(30)", "cast(a as  VARCHAR ( 30 )) "}, Written{"a::bit", "cast(a as  BIT ) "},
        Written{"a::bit(8)", "cast(a as  BIT ( 8 )) "}, Written{"a::bit varying(8)", "cast(a as  BIT VARYING ( 8 )) "},
        Written{"a::int2", "cast(a as  SMALLINT ) "},
        Written{"a::int::smallint", "cast(cast(a as  INTEGER )  as  SMALLINT ) "},
        Written{"a::real", "cast(a as  FLOAT ) "}, Written{"a::float", "cast(a as  FLOAT ) "},
        Written{"a::FLOAT ( 53 )", "cast(a as  FLOAT ( 53 )) "}, Written{"a::float8", "cast(a as  DOUBLE PRECISION ) "},
        Written{"a::double precision", "cast(a as  DOUBLE PRECISION ) "},
        Written{"a::numeric", "cast(a as  NUMERIC ) "}, Written{"a::numeric(5)", "cast(a as  NUMERIC ( 5 )) "},
        Written{"a::numeric(5,0)", "cast(a as  NUMERIC ( 5, 0 )) "},
        Written{"a::dec(5,2)", "cast(a as  DECIMAL ( 5, 2 )) "},
        Written{"'2024-01-31'::date", "cast('2024-01-31' as  DATE ) "},
        Written{"CAST(a + b AS time(0))", "cast(a + b as  TIME ( 0 )) "},
        Written{"a::timestamp without time zone", "cast(a as  TIMESTAMP ) "},
        Written{"a::timestamp(9)", "cast(a as  TIMESTAMP ( 9 )) "}));

TEST(ScalarFunctions, NamesOfOneFunctionMakeOneTree) {
  const std::pair<const char*, const char*> cases[] = {{"a ^ b", "power(a, b)"},
                                                       {"pow(a, b)", "power(a, b)"},
                                                       {"a::decimal(5)", "CAST(a AS DEC(5))"},
                                                       {"user", "current_user"},
                                                       {"btrim(a, b)", "trim(both b from a)"},
                                                       {"rtrim(a)", "trim(trailing from a)"},
                                                       {"substr(a, 1)", "substring(a from 1)"},
                                                       {"current_database()", "database()"}};
  for (const auto& [one, other] : cases) {
    SCOPED_TRACE(one);
    EXPECT_EQ(ValueText(one), ValueText(other));
  }
}

// Each function with the fewest and the most arguments, columns all of them.
TEST(ScalarFunctions, EveryRowOfTheTableMakesANodeOfItsArguments) {
  for (const ScalarFunction& function : GetScalarFunctions()) {
    const bool bAnyNumber = function.m_maxArguments > 9;
    for (const std::size_t count : {function.m_minArguments, bAnyNumber ? 5 : function.m_maxArguments}) {
      std::string call = '"' + std::string(function.m_name) + "\"(";
      for (std::size_t i = 0; i < count; ++i) {
        const bool bIsWord = i == 0 && function.m_bBeginsWithWord;
        call.append(i > 0 ? ", " : "").append(bIsWord ? "'day'" : "operand" + std::to_string(i));
      }
      SCOPED_TRACE(call);
      const std::string text = ValueText(call + ')');
      for (std::size_t i = function.m_bBeginsWithWord ? 1 : 0; i < count; ++i) {
        EXPECT_NE(text.find("operand" + std::to_string(i)), std::string::npos) << text;
      }
      EXPECT_EQ(ValueText(text), text);
    }
  }
}

TEST(ScalarFunctions, CastsHoldWhatIsNotGiven) {
  const std::tuple<const char*, KXDataType, int, int> cases[] = {
      {"a::char", KXCharData, 0, -1},        {"a::int", KXInt4Data, 0, -1},
      {"a::numeric", KXNumericData, -1, -1}, {"a::decimal(7)", KXDecimalData, 7, -1},
      {"a::float(24)", KXFloatData, 24, -1}, {"a::timestamp", KXTimeStampData, -1, -1}};
  for (const auto& [sql, type, precision, scale] : cases) {
    SCOPED_TRACE(sql);
    const OwnedRqExprCondPtr cond = ParseCondition(std::string(sql) + " < b");
    const auto& cast = static_cast<const RqExprCast&>(*cond->GetIthOperand(RqExprCondLess::kLeftOperand));
    EXPECT_EQ(cast.GetToDataType(), type);
    EXPECT_EQ(cast.GetPrecision(), precision);
    EXPECT_EQ(cast.GetScale(), scale);
  }
}

// Everything keeps its place, and what only looks like such a form is left alone.
TEST(SqlSpelling, WritesWhatTheGrammarDoesNotTakeInItsPlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"char(65)", "chr (65)"},
      {"cast(char(1) as char(2))", "cast(chr (1) as char(2))"},
      {"a::char(2)", "a::char(2)"},
      {"user /* ( */ ( ) x", "user               x"},
      {"user(1), s.user(), \"user\"()", "user(1), s.user(), \"user\"()"},
      {"fiscal_extract(day from f(a from b))", "fiscal_extract(day ,    f(a from b))"},
      {"extract(day from fiscal_year_start)", "extract(day from fiscal_year_start)"},
      {"substring(a extract first 1 token(s) delimited by b)",
       "\"#tokens\"(a ,             1 ,                     b)"},
      {"substring(extract(day from a), 'similar')", "substring(extract(day from a), 'similar')"},
      {"'char(1)' token(s) \"substring\"(a extract first", "'char(1)' token(s) \"substring\"(a extract first"}};
  for (const auto& [written, respelled] : cases) EXPECT_EQ(RespellSql(written), respelled);
}

// ---------------------------------------------------------------------------------------------------------------------
// What is not taken

struct Refused {
  const char* m_sql;
  std::size_t m_offset;
  const char* m_message;  ///< Its start.
};

void PrintTo(const Refused& refused, std::ostream* pOut) { *pOut << refused.m_sql; }

class ScalarError : public testing::TestWithParam<Refused> {};

TEST_P(ScalarError, NamesPlaceAndWhatIsAccepted) {
  const std::int64_t nNodes = MemoryDataCollector::GetRqNodeCount();
  try {
    ParseCondition(std::string(GetParam().m_sql) + " = b");
    FAIL() << "taken";
  } catch (const SqlError& error) {
    EXPECT_EQ(error.GetOffset(), GetParam().m_offset);
    EXPECT_EQ(std::string(error.what()).substr(0, std::string(GetParam().m_message).size()), GetParam().m_message);
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nNodes) << "what was built of it is not freed";
}

constexpr const char* kField = "the field is one of year, quarter, month,";
constexpr const char* kUnit = "the unit of time is, with or without SQL_TSI_, one of frac_second, second,";
constexpr const char* kArgumentsOfLower = "the arguments of lower are (text)";

INSTANTIATE_TEST_SUITE_P(
    All, ScalarError,
    testing::Values(Refused{"a + lower()", 4, kArgumentsOfLower}, Refused{"lower(a, b)", 0, kArgumentsOfLower},
                    Refused{"lower(DISTINCT a)", 0, kArgumentsOfLower},
                    Refused{"lower(a) OVER ()", 0, kArgumentsOfLower},
                    Refused{"pi(a)", 0, "the arguments of pi are ()"},
                    Refused{"rand(a, b)", 0, "the arguments of rand are ([seed])"},
                    Refused{"char(1, 2)", 0, "the arguments of char are (code)"},
                    Refused{"TRIM(BOTH FROM a, c)", 0, "the arguments of TRIM are (text[, characters])"},
                    Refused{"substring(a)", 0, "the arguments of substring are (text, start[, length])"},
                    Refused{"substring(a, c extract first 1 token(s) delimited by d)", 0,
                            "the arguments of substring are (text, count, delimiter)"},
                    Refused{"timestampadd(day, a)", 0, "the arguments of timestampadd are (unit, number, moment)"},
                    Refused{"indexcol(1)", 0, "the arguments of indexcol are (index, column[, column...])"},
                    Refused{"greatest(a, b)", 0, "GREATEST or LEAST is not supported"},
                    Refused{"lower(a => 1)", 6, "a named argument is not supported"},
                    Refused{"lower(c = 1)", 6, "a value is needed here, not a condition"},
                    Refused{"substring(a similar 'x' escape '!')", 12, "SUBSTRING by a pattern is not supported"},
                    Refused{"extract(dow from a)", 8, kField}, Refused{"fiscal_extract(a.day from a)", 15, kField},
                    Refused{"date_part(1, a)", 10, kField}, Refused{"timestampadd(sql_tsi_eon, 1, a)", 13, kUnit},
                    Refused{"timestampdiff(1 + 2, a, c)", 16, kUnit},
                    Refused{"evaluate(a, 1)", 9, "the text of a function is needed here"},
                    Refused{"fiscal_extract(day from)", 23, "syntax error at or near \")\""},
                    Refused{"user(1)", 4, "syntax error at or near \"(\""},
                    Refused{"CASE WHEN a THEN 1 END", 10, "a condition is needed here, not a column"},
                    Refused{"CASE a WHEN c = 1 THEN 1 END", 12, "a value is needed here, not a condition"},
                    Refused{"CASE WHEN a = 1 THEN 2 ELSE c = 1 END", 28, "a value is needed here, not a condition"},
                    Refused{"coalesce(1, a = 1)", 12, "a value is needed here, not a condition"},
                    Refused{"a::text", 3, "a cast to text is not supported; the types are CHARACTER(n), VARCHAR(n),"},
                    Refused{"CAST(a AS s.t)", 10, "a cast to s.t is not supported; the types are"},
                    Refused{"a::int[]", 3, "a cast to int4[] is not supported; the types are"},
                    Refused{"a::interval", 3, "a cast to interval is not supported; the types are"},
                    Refused{"a::varchar", 3, "this type needs a length, such as VARCHAR(20)"},
                    Refused{"a::varchar(0)", 11, "a whole number from 1 to 2147483647 is needed here"},
                    Refused{"a::numeric(5,-2)", 13, "a whole number from 0 to 2147483647 is needed here"},
                    Refused{"a::numeric(c)", 11, "a whole number from 1 to 2147483647 is needed here"},
                    Refused{"a::numeric(5e1)", 11, "a whole number from 1 to 2147483647 is needed here"},
                    Refused{"a::numeric(1,2,3)", 15, "no number can stand here"},
                    Refused{"a::int4(2)", 8, "no number can stand here"},
                    Refused{"a::time(10)", 8, "a whole number from 0 to 9 is needed here"}));

}  // namespace
