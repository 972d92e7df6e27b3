#include "rq/sql/ScalarFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "RqTestUtil.h"
#include "TestUtil.h"
#include "rq/sql/SqlSpelling.h"

namespace {

/// The text of a value, taken from the condition that it is less than a number; once it has gone through bytes that
/// nobody vouches for, too.
std::string ValueText(const std::string& sql) {
  const OwnedRqExprCondPtr cond = ParseCondition("(" + sql + ") < 0");
  RqExpr& value = *cond->GetIthOperand(RqExprCondLess::kLeftOperand);
  const std::string text = TextOf(value);
  EXPECT_EQ(TextOf(*ReadBack(value)), text);
  return text;
}

// ---------------------------------------------------------------------------------------------------------------------
// What is taken

TEST(ScalarFunctions, TextIsThatOfTheTreeAndReadsAsTheSameTree) {
  std::vector<TextCase> cases = CasesOf("rq/cases/values.txt");
  cases.push_back({"USER\n( ) || user", "user() || user()"});
  cases.push_back(
      {"case a when 1 then 'x' when b then c else NULL end ", "case a when 1 then 'x' when b then c else NULL end"});
  for (const auto& [sql, expected] : cases) {
    SCOPED_TRACE(sql);
    const std::string text = ValueText(sql);
    EXPECT_EQ(text.substr(0, text.find_last_not_of(' ') + 1), expected);
    EXPECT_EQ(ValueText(text), text);
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
    }
  }
}

// Everything keeps its place, and what only looks like such a form is left alone.
TEST(SqlSpelling, WritesWhatTheGrammarDoesNotTakeInItsPlace) {
  for (const auto& [written, respelled] : CasesOf("rq/cases/spelling.txt")) EXPECT_EQ(RespellSql(written), respelled);
}

// ---------------------------------------------------------------------------------------------------------------------
// What is not taken

TEST(ScalarFunctions, ErrorNamesPlaceAndWhatIsAccepted) {
  for (const auto& [sql, error] : CasesOf("rq/cases/value_errors.txt")) ExpectRefused(sql, error);
}

}  // namespace
