#include "rq/sql/ConditionBuilder.h"

#include <gtest/gtest.h>

#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "RqTestUtil.h"
#include "rq/BigStack.h"
#include "rq/sql/SqlNesting.h"

namespace {

std::string TextOf(const std::string& sql) { return RqDumpout::StringFrom(*ParseCondition(sql)).ToUTF8(); }

// ---------------------------------------------------------------------------------------------------------------------
// What is taken

TEST(ConditionBuilder, TextIsThatOfTheTree) {
  std::vector<TextCase> cases = CasesOf("rq/cases/conditions.txt");
  cases.push_back({"a < E'it\\'s\\n'", "a < 'it's\n'"});
  cases.push_back({"a < 'one'\n'two'", "a < 'onetwo'"});
  cases.push_back({"  \t\r\n a\n=\n1  \n", "a = 1"});
  for (const auto& [sql, text] : cases) EXPECT_EQ(TextOf(sql), text) << sql;
}

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

TEST(ConditionBuilder, ErrorNamesPlaceAndCause) {
  std::vector<TextCase> cases = CasesOf("rq/cases/condition_errors.txt");
  cases.push_back({"", "1:1 there is no condition here"});
  cases.push_back({"a = ", "1:5 syntax error at end of input"});
  cases.push_back({"a = '\xff'", "1:6 this is not UTF-8"});
  cases.push_back({"a = 1 AND\n  b = \"S\".f(c)", "2:7 the function S.f is not supported; rq normalize"});
  for (const auto& [sql, error] : cases) ExpectRefused(sql, error);
}

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

}  // namespace
