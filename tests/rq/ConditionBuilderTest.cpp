#include "rq/sql/ConditionBuilder.h"

#include <gtest/gtest.h>

#include "Host/MemAlloc.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "RqTestUtil.h"
#include "rq/BigStack.h"
#include "rq/sql/SqlNesting.h"
#include "rq/sql/SqlText.h"

namespace {

std::string TextOf(const std::string& sql) { return RqDumpout::StringFrom(*ParseCondition(sql)).ToUTF8(); }

// ---------------------------------------------------------------------------------------------------------------------
// What is taken

struct Taken {
  const char* m_sql;
  const char* m_text;
};

void PrintTo(const Taken& taken, std::ostream* pOut) { *pOut << taken.m_sql; }

class ConditionText : public testing::TestWithParam<Taken> {};

TEST_P(ConditionText, IsThatOfTheTree) { EXPECT_EQ(TextOf(GetParam().m_sql), GetParam().m_text); }

INSTANTIATE_TEST_SUITE_P(Comparisons, ConditionText,
                         testing::Values(Taken{"a = 1", "a = 1"}, Taken{"1 = a", "a = 1"}, Taken{"b != a", "b <> a"},
                                         Taken{"a <= 1", "a <= 1"}, Taken{"a >= 1", "a >= 1"},
                                         Taken{"((a)) = ((1))", "a = 1"}));

INSTANTIATE_TEST_SUITE_P(Predicates, ConditionText,
                         testing::Values(Taken{"a BETWEEN 1 AND 2", "a between 1 and 2"},
                                         Taken{"a NOT BETWEEN 1 AND b", "a not between 1 and b"},
                                         Taken{"a BETWEEN ASYMMETRIC 2 AND 1", "a between 2 and 1"},
                                         Taken{"a LIKE 'x%'", "a like 'x%'"},
                                         Taken{"a LIKE 'x!%' ESCAPE '!'", "a like 'x!%' escape '!'"},
                                         Taken{"a NOT LIKE 'x' ESCAPE $1", "a not like 'x' escape ?1"},
                                         Taken{"a IS NOT NULL", "a is not null"},
                                         Taken{"a ISNULL AND NULL NOTNULL", "a is null and NULL is not null"},
                                         Taken{"a IN (3, 1, 3, NULL)", "a in ([ 3, 1, 3, NULL] )"},
                                         Taken{"(a, t.b) IN ((1, 'x'), (2, c))", "(a, T1.b) in ((1, 'x'), (2, c))"},
                                         Taken{"(a, b) NOT IN ((1, 2), (1, 2))", "(a, b) not in ((1, 2), (1, 2))"},
                                         Taken{"ROW(a) IN (ROW(1))", "(a) in ((1))"}));

INSTANTIATE_TEST_SUITE_P(Connectives, ConditionText,
                         testing::Values(Taken{"NOT NOT a = 1", "not not a = 1"},
                                         Taken{"NOT (a BETWEEN 1 AND 2)", "not a between 1 and 2"},
                                         Taken{"a = 1 AND b = 2 OR c = 3", "c = 3 or a = 1 and b = 2"},
                                         Taken{"a = 1 AND (b = 2 OR c = 3)", "a = 1 and (b = 2 or c = 3)"}));

INSTANTIATE_TEST_SUITE_P(
    Names, ConditionText,
    testing::Values(Taken{"Region = REGION", "region = region"}, Taken{"\"Net \"\"x\"\"\" = é", "Net \"x\" = é"},
                    Taken{"b.x = 1 AND a.x = 2 AND b.y = 3", "T1.x = 1 and T1.y = 3 and T2.x = 2"},
                    Taken{"s.t.a < t.a", "T1.a < T2.a"}, Taken{"\"s.t\".a < s.t.a", "T1.a < T2.a"},
                    Taken{"B.a < \"b\".a", "T1.a < T1.a"}, Taken{"\"B\".a < b.a", "T1.a < T2.a"},
                    Taken{"U&\"d\\0061ta\" < 1", "data < 1"},
                    Taken{"VALUEOF(\"NQ\".\"Region\") = a", "a = VALUEOF(NQ.Region)"},
                    Taken{"valueof(nq . region) = $2147483647", "VALUEOF(nq.region) = ?2147483647"}));

INSTANTIATE_TEST_SUITE_P(Numbers, ConditionText,
                         testing::Values(Taken{"a < -0", "a < 0"}, Taken{"a < +5", "a < 5"},
                                         Taken{"a < - - 5", "a < 5"}, Taken{"a < -(-(-5))", "a < -5"},
                                         Taken{"a < - /* - */ 5", "a < -5"}, Taken{"a < 007", "a < 7"}));

INSTANTIATE_TEST_SUITE_P(
    Texts, ConditionText,
    testing::Values(Taken{"a < 'it''s'", "a < 'it's'"}, Taken{"a < E'it\\'s\\n'", "a < 'it's\n'"},
                    Taken{"a < 'back\\slash'", "a < 'back\\slash'"}, Taken{"a < U&'\\+01F600'", "a < '😀'"},
                    Taken{"a < U&'!00e9' UESCAPE '!'", "a < 'é'"}, Taken{"a < $$it's$$", "a < 'it's'"},
                    Taken{"a < $q$$$ x $q$", "a < '$$ x '"}, Taken{"a < 'one'\n'two'", "a < 'onetwo'"},
                    Taken{"a < '-- no /* comment'", "a < '-- no /* comment'"}, Taken{"a < NULL", "a < NULL"}));

INSTANTIATE_TEST_SUITE_P(
    Moments, ConditionText,
    testing::Values(Taken{"a < DATE '2024-02-29'", "a < DATE '2024-02-29'"},
                    Taken{"a < TIME '23:59:59'", "a < TIME '23:59:59'"},
                    Taken{"a < TIME WITHOUT TIME ZONE '10:00'", "a < TIME '10:00:00'"},
                    Taken{"a < TIMESTAMP '2024-01-31 08:30:00'", "a < TIMESTAMP '2024-01-31 08:30:00'"},
                    Taken{"a < TIMESTAMP '2024-01-31 08:30:00.250'", "a < TIMESTAMP '2024-01-31 08:30:00.250'"},
                    Taken{"a < INTERVAL '1' DAY", "a < INTERVAL '1' DAY"},
                    Taken{"a < interval  '1-2'  year  to month", "a < INTERVAL '1-2' YEAR TO MONTH"},
                    Taken{"a < INTERVAL '1 day -2 hours'", "a < INTERVAL '1 day -2 hours'"},
                    Taken{"a < INTERVAL '10' MINUTE TO SECOND", "a < INTERVAL '10' MINUTE TO SECOND"},
                    Taken{"a < CURRENT_DATE", "a < CURRENT_DATE"}, Taken{"a < LOCALTIME", "a < CURRENT_TIME"},
                    Taken{"a < CURRENT_TIMESTAMP(3)", "a < CURRENT_TIMESTAMP"}));

INSTANTIATE_TEST_SUITE_P(Surroundings, ConditionText,
                         testing::Values(Taken{"  \t\r\n a\n=\n1  \n", "a = 1"}, Taken{"a = 1 -- the end", "a = 1"},
                                         Taken{"/* a /* nested */ one */ a = 1 -- THEN 0 END", "a = 1"}));

template <class Node>
const Node& TheOne(const OwnedRqExprCondPtr& cond, RqNodeType_e kind) {
  std::list<RqNode*> found;
  FindNodes(cond.Get(), RqNode::IsObjectType(kind), found, false);
  EXPECT_EQ(found.size(), 1u);
  return static_cast<const Node&>(*found.front());
}

TEST(ConditionBuilder, NumbersAreOfTheLeastKindThatKeepsThem) {
  const std::tuple<const char*, RqNodeType_e, const char*> cases[] = {
      {"-2147483648", kRqExprIntegerLiteral, "-2147483648"},
      {"2147483648", kRqExprNumberLiteral, "2147483648"},
      {"-(-2147483648)", kRqExprNumberLiteral, "2147483648"},
      {"-9223372036854775809", kRqExprNumberLiteral, "-9223372036854775809"},
      {"00000000000000000012", kRqExprIntegerLiteral, "12"},
      {"100000000000000000000000000000000000000", kRqExprNumberLiteral, "100000000000000000000000000000000000000"},
      {"1.0", kRqExprFloatLiteral, "1.0"},
      {"-1e3", kRqExprFloatLiteral, "-1000.0"},
      {".5", kRqExprFloatLiteral, "0.5"},
      {"5.", kRqExprFloatLiteral, "5.0"},
      {"0e9", kRqExprFloatLiteral, "0.0"},
  };
  for (const auto& [number, kind, text] : cases) {
    SCOPED_TRACE(number);
    const OwnedRqExprCondPtr cond = ParseCondition(std::string("a < ") + number);
    const RqExpr& literal = *cond->GetIthOperand(RqExprCondLess::kRightOperand);
    EXPECT_EQ(literal.GetObjectType(), kind);
    EXPECT_EQ(RqDumpout::StringFrom(literal).ToUTF8(), text);
  }
}

// What the text form does not show.
TEST(ConditionBuilder, NodesHoldWhatTheTextSays) {
  const auto column = ParseCondition("a < 1");
  EXPECT_EQ(TheOne<RqTargetColumn>(column, kRqTargetColumn).GetSourceTableNumber(), RqTargetColumn::kUnknownTableNum);
  const auto text = ParseCondition("a < 'x'");
  EXPECT_EQ(TheOne<RqExprStringLiteral>(text, kRqExprStringLiteral).GetStringWrapperSymbol(),
            RqExprStringLiteral::kSingleQuote);
  for (const short precision : {0, 9}) {
    const auto now = ParseCondition("a < LOCALTIMESTAMP(" + std::to_string(precision) + ")");
    const auto& token = TheOne<RqExprDateTimeLiteral>(now, kRqExprDateTimeLiteral);
    EXPECT_TRUE(token.GetDateTimeValue().IsCurrentDateTimeToken());
    EXPECT_EQ(token.GetPrecision(), precision);
  }
}

// The parser cuts names after 63 bytes; they are kept whole here.
TEST(ConditionBuilder, LongNamesAreKeptWhole) {
  const std::string name = std::string(70, 'x') + "ü";
  EXPECT_EQ(TextOf('"' + name + "A\" < " + name + "B"), name + "A < " + name + 'b');
  EXPECT_EQ(TextOf("\"" + name + "\"\"\" . a < " + name + " /* . */ . a"), "T1.a < T2.a");
  EXPECT_THROW(TextOf("U&\"" + name + "\" < 1"), SqlError);
}

// ---------------------------------------------------------------------------------------------------------------------
// What is not taken

constexpr const char* kValueOf = "VALUEOF takes the block and the name of a variable: VALUEOF(\"block\".\"name\")";
constexpr const char* kNoRow = "a row of values outside IN is not supported";

struct Refused {
  const char* m_sql;
  std::size_t m_line, m_column;
  const char* m_message;  ///< Its start.
};

void PrintTo(const Refused& refused, std::ostream* pOut) { *pOut << refused.m_sql; }

class ConditionError : public testing::TestWithParam<Refused> {};

TEST_P(ConditionError, NamesPlaceAndCause) {
  const std::string sql = GetParam().m_sql;
  const std::int64_t nNodes = MemoryDataCollector::GetRqNodeCount();
  try {
    ParseCondition(sql);
    FAIL() << "taken";
  } catch (const SqlError& error) {
    const SqlPlace place = PlaceOf(sql, error.GetOffset());
    EXPECT_EQ(place.m_line, GetParam().m_line);
    EXPECT_EQ(place.m_column, GetParam().m_column);
    EXPECT_TRUE(std::string(error.what()).starts_with(GetParam().m_message)) << error.what();
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nNodes) << "what was built of it is not freed";
}

INSTANTIATE_TEST_SUITE_P(
    NotOneExpression, ConditionError,
    testing::Values(Refused{"", 1, 1, "there is no condition here"},
                    Refused{"/* x", 1, 1, "there is no condition here"},
                    Refused{"a = ", 1, 5, "syntax error at end of input"},
                    Refused{"é = 'é' and )", 1, 13, "syntax error at or near \")\""},
                    Refused{"a = 1) OR (b = 2", 1, 6, "syntax error at or near \")\""},
                    Refused{"a = 1;", 1, 6, "syntax error at or near \";\""},
                    Refused{"a = 1 x", 1, 7, "syntax error at or near \"x\""},
                    Refused{"a = 1 FROM t", 1, 7, "syntax error at or near \"FROM\""},
                    Refused{"a = 1 ORDER BY a", 1, 7, "syntax error at or near \"ORDER\""},
                    Refused{"a THEN CASE WHEN b", 1, 3, "syntax error at or near \"THEN\""},
                    Refused{"a = 1 END + CASE WHEN b = 1", 1, 7, "syntax error at or near \"END\""},
                    Refused{"a = 'x", 1, 5, "unterminated quoted string at or near \"'x\""},
                    Refused{"a = 1abc", 1, 5, "trailing junk after numeric literal at or near \"1a\""},
                    Refused{"a = E'\\xff'", 1, 5, "invalid byte sequence for encoding \"UTF8\": 0xff"},
                    Refused{"a = '\xff'", 1, 6, "this is not UTF-8"}));

INSTANTIATE_TEST_SUITE_P(
    ConditionsAndValues, ConditionError,
    testing::Values(Refused{"a", 1, 1, "a condition is needed here, not a column"},
                    Refused{"NOT $1", 1, 5, "a condition is needed here, not a parameter"},
                    Refused{"valueof(a.b)", 1, 1, "a condition is needed here, not a value"},
                    Refused{"(a = 1) = (b = 2)", 1, 2, "a value is needed here, not a condition"},
                    Refused{"a IN (1, b IS NULL)", 1, 10, "a value is needed here, not a condition"},
                    Refused{"TRUE", 1, 1, "a constant TRUE or FALSE is not supported"},
                    Refused{"a IS TRUE", 1, 3, "a test for TRUE, FALSE or UNKNOWN is not supported"},
                    Refused{"a = 1 IS NOT UNKNOWN", 1, 7, "a test for TRUE, FALSE or UNKNOWN is not supported"}));

INSTANTIATE_TEST_SUITE_P(
    Constructs, ConditionError,
    testing::Values(Refused{"é = 'é' AND ü = soundex('x')", 1, 17,
                            "the function soundex is not supported; rq normalize"},
                    Refused{"a = 1 AND\n  b = \"S\".f(c)", 2, 7, "the function S.f is not supported; rq normalize"},
                    Refused{"a AT TIME ZONE 'x' = b", 1, 3, "the function timezone is not supported; rq normalize"},
                    Refused{"a = +b", 1, 5, "the operator + is not supported"},
                    Refused{"a ~ 'x'", 1, 3, "the operator ~ is not supported"},
                    Refused{"a OPERATOR(s.=) b", 1, 3, "the operator s.= is not supported"},
                    Refused{"a LIKE pg_catalog.like_escape('x', 'y')", 1, 8,
                            "the function like_escape is not supported; rq normalize"},
                    Refused{"a ILIKE 'x'", 1, 3, "ILIKE is not supported"},
                    Refused{"a NOT SIMILAR TO 'x'", 1, 3, "SIMILAR TO is not supported"},
                    Refused{"a IS DISTINCT FROM b", 1, 3, "IS DISTINCT FROM is not supported"},
                    Refused{"a BETWEEN SYMMETRIC 1 AND 2", 1, 3, "BETWEEN SYMMETRIC is not supported"},
                    Refused{"a = ANY (b)", 1, 3, "ANY over an array is not supported"},
                    Refused{"a IN (SELECT 1)", 1, 3, "a subquery is not supported"},
                    Refused{"EXISTS (SELECT 1)", 1, 1, "a subquery is not supported"},
                    Refused{"a = GREATEST(b, 1)", 1, 5, "GREATEST or LEAST is not supported"},
                    Refused{"a COLLATE \"C\" = b", 1, 3, "COLLATE is not supported"},
                    Refused{"a = ARRAY[1]", 1, 5, "an array is not supported"},
                    Refused{"a[1] = 2", 1, 1, "taking a part of a value is not supported"},
                    Refused{"t.* = 2", 1, 1, "the sign for all columns is not supported"},
                    Refused{"a = DEFAULT", 1, 5, "DEFAULT is not supported"},
                    Refused{"a = SESSION_USER", 1, 5, "SESSION_USER is not supported"},
                    Refused{"a IS DOCUMENT", 1, 3, "XML is not supported"}));

INSTANTIATE_TEST_SUITE_P(
    Rows, ConditionError,
    testing::Values(Refused{"(a, b) = (1, 2)", 1, 1, kNoRow}, Refused{"a IN (1, (2, 3))", 1, 10, kNoRow},
                    Refused{"(a, b) IN ((1, 2), (1, 2, 3))", 1, 20, "a row of 2 values is needed here"},
                    Refused{"(a, b) IN ((1, c = 2))", 1, 16, "a value is needed here, not a condition"},
                    Refused{"ROW() IN (ROW())", 1, 1, "an empty row is not supported"}));

INSTANTIATE_TEST_SUITE_P(
    Constants, ConditionError,
    testing::Values(
        Refused{"a = 1e400", 1, 5, "the number is out of the range of floating point numbers"},
        Refused{"a = 1e-400", 1, 5, "the number is out of the range of floating point numbers"},
        Refused{"a = 12345678901234567890123456789012345678901", 1, 5, "the number has more digits than can be kept"},
        Refused{"a = $0", 1, 5, "the number of a parameter is one from 1 to 2147483647"},
        Refused{"a = $4294967297", 1, 5, "the number of a parameter is one from 1 to 2147483647"},
        Refused{"a = B'01'", 1, 5, "a bit string is not supported"},
        Refused{"a = N'x'", 1, 5, "a literal of type bpchar is not supported"},
        Refused{"a = TIMESTAMP WITH TIME ZONE '2024-01-01'", 1, 5, "a literal of type timestamptz is not supported"},
        Refused{"a = date('2024-01-01')", 1, 5, "the function date is not supported; rq normalize"},
        Refused{"a = DATE '2023-02-29'", 1, 5, "'2023-02-29' is not a date of the form YYYY-MM-DD"},
        Refused{"a = TIME '24:00'", 1, 5, "'24:00' is not a time of the form HH:MM:SS.F"},
        Refused{"a = TIMESTAMP '2024-13-01 00:00:00'", 1, 5,
                "'2024-13-01 00:00:00' is not a timestamp of the form YYYY-MM-DD HH:MM:SS.F"},
        Refused{"a = TIMESTAMP(3) '2024-01-01 00:00:00'", 1, 15, "the precision of a literal is not supported"},
        Refused{"a = INTERVAL 'soon'", 1, 5, "'soon' is not an interval"},
        Refused{"a = INTERVAL '1'' OR 1' DAY", 1, 5, "'1' OR 1' is not an interval"},
        Refused{"a = INTERVAL '1' SECOND(3)", 1, 25, "the precision of a literal is not supported"},
        Refused{"a = CURRENT_TIME(3)", 1, 5, "the precision of CURRENT_TIME is not supported"},
        Refused{"a = CURRENT_TIMESTAMP(10)", 1, 5, "the precision of a timestamp is at most 9"}));

INSTANTIATE_TEST_SUITE_P(SessionVariables, ConditionError,
                         testing::Values(Refused{"a = VALUEOF(b)", 1, 5, kValueOf},
                                         Refused{"a = VALUEOF('b.c')", 1, 5, kValueOf},
                                         Refused{"a = VALUEOF(a.b, c)", 1, 5, kValueOf},
                                         Refused{"a = VALUEOF(DISTINCT a.b)", 1, 5, kValueOf}));

// ---------------------------------------------------------------------------------------------------------------------
// Size and depth

TEST(ConditionSize, WhatNestsTooDeeplyIsAnError) {
  constexpr int kMany = 100'000;
  const std::string texts[] = {
      Repeated("NOT ", kMany) + "a = 1",
      Repeated("(", kMany) + "a = 1" + Repeated(")", kMany),
      Repeated("(", kMany),
      "a" + Repeated("+a", kMany),
      "a" + Repeated("+t.or", kMany),
      "a" + Repeated(" IS NULL", kMany),
      "a = b" + Repeated("[1]", kMany),
      "a" + Repeated(" IS NULL BETWEEN a AND a", kMany),
      "a" + Repeated("+CASE WHEN a AND a THEN a END", kMany),
      "a" + Repeated("+(a OR a, a)", kMany),
      // What the parser's own stack cannot hold.
      Repeated("a = 1 AND NOT (", 4000) + "a = 1" + Repeated(")", 4000),
  };
  RunOnBigStack([&texts] {
    for (const std::string& text : texts) {
      try {
        ParseCondition(text);
        ADD_FAILURE() << text.substr(0, 50);
      } catch (const SqlError& error) {
        EXPECT_EQ(std::string(error.what()), kNestedTooDeeply) << text.substr(0, 50);
      }
    }
  });
}

TEST(ConditionSize, DeepTextIsTakenUpToTheLimit) {
  RunOnBigStack([] {
    const OwnedRqExprCondPtr cond = ParseCondition(Repeated("NOT ", 9'000) + "a = 1");
    EXPECT_EQ(RqDumpout::StringFrom(*cond).size(), 9'000u * 4 + 5);
    EXPECT_EQ(TextOf(Repeated("(", 9'000) + "a = 1" + Repeated(")", 9'000)), "a = 1");
  });
}

TEST(ConditionSize, LongListsAreTaken) {
  constexpr int kMany = 100'000;
  const OwnedRqExprCondPtr values = ParseCondition("a IN (" + Repeated("1, ", kMany) + "2)");
  const auto& list = static_cast<const RqExprColumnList&>(*values->GetIthOperand(RqExprCondIn::kInValues));
  EXPECT_EQ(list.GetNumColumns(), kMany + 1);
  const OwnedRqExprCondPtr terms = ParseCondition(Repeated("a=1 OR ", kMany) + "b=2");
  std::list<RqNode*> ors;
  FindNodes(terms.Get(), RqNode::IsObjectType(kRqExprCondOr), ors, false);
  EXPECT_EQ(ors.size(), static_cast<std::size_t>(kMany));
  EXPECT_LT(static_cast<const RqExprCondOr&>(*terms).GetHeight(), 30) << "the tree is balanced";
}

TEST(ConditionSize, TextThatIsTooLongIsAnErrorAtTheLimit) {
  try {
    ParseCondition(std::string(kMaxSqlBytes + 1, ' ') + "a = 1");
    FAIL() << "taken";
  } catch (const SqlError& error) {
    EXPECT_EQ(error.GetOffset(), kMaxSqlBytes);
  }
}

}  // namespace
