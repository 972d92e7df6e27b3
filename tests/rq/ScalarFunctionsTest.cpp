#include "rq/sql/ScalarFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "Host/DataBlobUtil.h"
#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
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

/// The same, once the value has gone through bytes that nobody vouches for.
std::string TextBehindBytes(const std::string& sql) {
  const OwnedRqExprCondPtr cond = ParseCondition("(" + sql + ") < 0");
  ByteVector bytes;
  RqTreeVector::ToByteVector(cond->GetIthOperand(RqExprCondLess::kLeftOperand), bytes);
  const BoundedRead bounds(bytes);
  RqNode* pNode = nullptr;
  const const_iterator end = RqTreeVector::FromByteVector(bytes.data(), &pNode);
  const Heap<RqNode> value(pNode);
  bounds.RequireAtEnd(end);
  return RqDumpout::StringFrom(*value).ToUTF8();
}

// ---------------------------------------------------------------------------------------------------------------------
// What is taken

struct Written {
  const char* m_sql;
  const char* m_text;  ///< Null if it is the SQL.
};

constexpr Written kTaken[] = {
    // Operators.
    {"b + a", "a + b"},
    {"b || 'x' || a", nullptr},
    {"-(a + b)", nullptr},
    {"a % 2", "mod(a , 2)"},
    {"a - b * c / d", nullptr},
    // Functions: aliases and special forms; the rest of their table is walked below.
    {"ceil(a)", "ceiling(a)"},
    {"ln(a)", "log(a)"},
    {"a ^ b", "power(a , b)"},
    {"pow(a, b)", "power(a , b)"},
    {"btrim(a, b)", "trim(both b from a)"},
    {"rtrim(a)", "trim(trailing  from a)"},
    {"ltrim(a, b)", "trim(leading b from a)"},
    {"concat(a, b)", "a || b"},
    {"character_length(a)", "char_length(a)"},
    {"substr(a, 1)", "substring(a from 1)"},
    {"trunc(a, 1)", "truncate(a , 1)"},
    {"random()", "rand()"},
    {"chr(65)", "char(65)"},
    {"CHAR ( a ) || cast(a as char(3))", "char(a) || cast(a as  CHARACTER ( 3 )) "},
    {"position(a in b)", nullptr},
    {"strpos(b, a)", "position(a in b)"},
    {"substring(a from 2 for 3)", nullptr},
    {"substring(a for 3 from 2)", "substring(a from 2 for 3)"},
    {"substring(a, 2, 3)", "substring(a from 2 for 3)"},
    {"substring(a extract first 2 token(s) delimited by ',')", nullptr},
    {"substring(substring(a, 2) EXTRACT FIRST b TOKEN ( S ) DELIMITED BY c)",
     "substring(substring(a from 2) extract first b token(s) delimited by c)"},
    {"trim(a)", "trim(both  from a)"},
    {"trim(leading from a)", "trim(leading  from a)"},
    {"trim(a, 'x')", "trim(both 'x' from a)"},
    {"overlay(a placing 'x' from 1 for 2)", "insert(a , 1 , 2 , 'x')"},
    {"current_user", "user()"},
    {"USER\n( ) || user", "user() || user()"},
    {"current_catalog", "database()"},
    {"evaluate('f(%1)', a)", "Evaluate( 'f(%1)', a) "},
    {"coalesce(b, a, 1)", "coalesce( b , a , 1)"},
    // Dates and times.
    {"EXTRACT(DOY FROM t.a)", "extract(day_of_year from T1.a)"},
    {"extract('month' from DATE '2024-01-31')", "extract(month from DATE '2024-01-31')"},
    {"FISCAL_EXTRACT(year FROM coalesce(a, extract(year from b)) FISCAL_YEAR_START 4, 6)",
     "fiscal_extract(year from coalesce( a , extract(year from b)) fiscal_year_start 4, 6)"},
    {"fiscal_extract(year, a.fiscal_year_start, 4)",
     "fiscal_extract(year from T1.fiscal_year_start fiscal_year_start 4)"},
    {"timestampadd(sql_tsi_frac_second, -1, a)", "TimestampAdd(SQL_TSI_FRAC_SECOND, -1, a)"},
    {"TIMESTAMPDIFF(QUARTER, a, CURRENT_TIMESTAMP)", "TimestampDiff(SQL_TSI_QUARTER, a, CURRENT_TIMESTAMP)"},
    // Choices.
    {"case a when 1 then 'x' when b then c else NULL end ", nullptr},
    {"CASE WHEN a = 1 OR NOT b LIKE 'x' THEN 1 WHEN c IS NULL THEN d END",
     "case  when a = 1 or not b like 'x' then 1 when c is null then d end "},
    // Casts.
    {"a::char", "cast(a as  CHARACTER ) "},
    {"a::national char(3)", "cast(a as  CHARACTER ( 3 )) "},
    {"a::bit varying(8)", "cast(a as  BIT VARYING ( 8 )) "},
    {"a::int::smallint", "cast(cast(a as  INTEGER )  as  SMALLINT ) "},
    {"a::real", "cast(a as  FLOAT ) "},
    {"a::float8", "cast(a as  DOUBLE PRECISION ) "},
    {"a::numeric(5,0)", "cast(a as  NUMERIC ( 5, 0 )) "},
    {"'2024-01-31'::date", "cast('2024-01-31' as  DATE ) "},
    {"CAST(a + b AS time(0))", "cast(a + b as  TIME ( 0 )) "},
    {"a::timestamp without time zone", "cast(a as  TIMESTAMP ) "}};

TEST(ScalarFunctions, TextIsThatOfTheTreeAndReadsAsTheSameTree) {
  for (const auto& [sql, text] : kTaken) {
    SCOPED_TRACE(sql);
    EXPECT_EQ(ValueText(sql), text ? text : sql);
    EXPECT_EQ(ValueText(ValueText(sql)), ValueText(sql));
    EXPECT_EQ(TextBehindBytes(sql), ValueText(sql));
  }
}

/// The names that the text form does not use; each has a row of its own above.
const std::set<std::string_view> kAliases{"ceil",      "ln",
                                          "pow",       "power",
                                          "random",    "trunc",
                                          "btrim",     "ltrim",
                                          "rtrim",     "character_length",
                                          "chr",       "concat",
                                          "overlay",   "strpos",
                                          "substr",    "#tokens",
                                          "date_part", "current_database"};

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
      if (!kAliases.contains(function.m_name)) {
        const std::string_view name = std::string_view(text).substr(0, text.find('('));
        EXPECT_TRUE(std::ranges::equal(name, function.m_name, {}, [](char c) { return std::tolower(c); })) << text;
      }
      for (std::size_t i = function.m_bBeginsWithWord ? 1 : 0; i < count; ++i) {
        EXPECT_NE(text.find("operand" + std::to_string(i)), std::string::npos) << text;
      }
      EXPECT_EQ(ValueText(text), text);
      EXPECT_EQ(TextBehindBytes(text), text);
    }
  }
}

// Everything keeps its place, and what only looks like such a form is left alone.
TEST(SqlSpelling, WritesWhatTheGrammarDoesNotTakeInItsPlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"char(65)", "chr (65)"},
      {"cast(char(1) as char(2))", "cast(chr (1) as char(2))"},
      {"user /* ( */ ( ) x", "user             x"},
      {"user(1), s.user(), \"user\"()", "user(1), s.user(), \"user\"()"},
      {"fiscal_extract(day from f(a from b))", "fiscal_extract(day ,    f(a from b))"},
      {"fiscal_extract(day from a is distinct from b)", "fiscal_extract(day ,    a is distinct from b)"},
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

constexpr const char* kField = "the field is one of year, quarter, month,";
constexpr const char* kUnit = "the unit of time is, with or without SQL_TSI_, one of frac_second, second,";
constexpr const char* kArgumentsOfLower = "the arguments of lower are (text)";

constexpr Refused kRefused[] = {
    {"a + lower()", 4, kArgumentsOfLower},
    {"lower(DISTINCT a)", 0, kArgumentsOfLower},
    {"TRIM(BOTH 'x' FROM a, c)", 0, "the arguments of TRIM are (text[, characters])"},
    {"substring(a, c extract first 1 token(s) delimited by d)", 0,
     "the arguments of substring are (text, count, delimiter)"},
    {"lower(a => 1)", 6, "a named argument is not supported"},
    {"substring(a similar 'x' escape '!')", 12, "SUBSTRING by a pattern is not supported"},
    {"extract(dow from a)", 8, kField},
    {"fiscal_extract(a.day from a)", 15, kField},
    {"timestampadd(sql_tsi_eon, 1, a)", 13, kUnit},
    {"timestampdiff(1 + 2, a, c)", 16, kUnit},
    {"evaluate(a, 1)", 9, "the text of a function is needed here"},
    {"fiscal_extract(day from)", 23, "syntax error at or near \")\""},
    {"CASE WHEN a THEN 1 END", 10, "a condition is needed here, not a column"},
    {"coalesce(1, a = 1)", 12, "a value is needed here, not a condition"},
    {"a::text", 3, "a cast to text is not supported; the types are CHARACTER(n), VARCHAR(n),"},
    {"a::int[]", 3, "a cast to int4[] is not supported; the types are"},
    {"a::varchar", 3, "this type needs a length, such as VARCHAR(20)"},
    {"a::varchar(0)", 11, "a whole number from 1 to 2147483647 is needed here"},
    {"a::numeric(5,-2)", 13, "a whole number from 0 to 2147483647 is needed here"},
    {"a::numeric(1,2,3)", 15, "no number can stand here"},
    {"a::time(10)", 8, "a whole number from 0 to 9 is needed here"}};

TEST(ScalarFunctions, ErrorNamesPlaceAndWhatIsAccepted) {
  for (const auto& [sql, offset, message] : kRefused) {
    SCOPED_TRACE(sql);
    const std::int64_t nNodes = MemoryDataCollector::GetRqNodeCount();
    try {
      ParseCondition(std::string(sql) + " = b");
      ADD_FAILURE() << "taken";
    } catch (const SqlError& error) {
      EXPECT_EQ(error.GetOffset(), offset);
      EXPECT_TRUE(std::string(error.what()).starts_with(message)) << error.what();
    }
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nNodes) << "what was built of it is not freed";
  }
}

}  // namespace
