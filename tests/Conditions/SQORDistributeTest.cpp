#include "SQORDistribute.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "ClauseTruth.h"
#include "Host/KXThread.h"
#include "TestUtil.h"

namespace {

// Clauses as text: a letter is an atom, "(..)" a nested disjunction, "[..]" a nested conjunction. "ab(cd)" as a
// conjunction is a & b & (c | d), "ab[cd]" as a disjunction is a | b | (c & d).
constexpr int kWidth = 26;

template <class ClauseType>
constexpr char kOpen = std::is_same_v<ClauseType, BitClauseDisjunction> ? '(' : '[';
template <class ClauseType>
constexpr char kClose = std::is_same_v<ClauseType, BitClauseDisjunction> ? ')' : ']';

template <class ClauseType>
ClauseType Parse(const std::string& text, std::size_t& at) {
  using Nested = typename ClauseType::Nested;
  ClauseType clause(kWidth);
  for (; at < text.size() && text[at] != kClose<ClauseType>; ++at) {
    if (text[at] == kOpen<Nested>) {
      Nested nested = Parse<Nested>(text, ++at);
      PushBack(clause.GetNested(), std::move(nested));
    } else {
      clause.GetLiterals().set(static_cast<std::size_t>(text[at] - 'a'));
    }
  }
  return clause;
}

template <class ClauseType>
ClauseType Parse(const std::string& text) {
  std::size_t at = 0;
  return Parse<ClauseType>(text, at);
}
BitClauseConjunction Conjunction(const std::string& text) { return Parse<BitClauseConjunction>(text); }
BitClauseDisjunction Disjunction(const std::string& text) { return Parse<BitClauseDisjunction>(text); }

template <class ClauseType>
std::string Text(const ClauseType& clause) {
  std::string text;
  clause.GetLiterals().ForEachSetBit([&text](std::size_t i) { text += static_cast<char>('a' + i); });
  for (const auto& element : clause.GetNested()) {
    text += kOpen<typename ClauseType::Nested> + Text(Clause(element)) + kClose<typename ClauseType::Nested>;
  }
  return text;
}

/// The text with the two kinds exchanged.
std::string Mirrored(std::string text) {
  for (char& letter : text) {
    const std::size_t i = std::string("()[]").find(letter);
    if (i != std::string::npos) letter = "[]()"[i];
  }
  return text;
}

/// "ab, cd(ef)" as a set of conjunctions.
ConjunctionSet ParseSet(const std::string& text) {
  ConjunctionSet set;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(", ", begin), text.size());
    PushBack(set, Conjunction(text.substr(begin, end - begin)));
    begin = end + 2;
  }
  return set;
}
/// The Or of the set.
BitClauseDisjunction OrOf(const ConjunctionSet& set) { return BitClauseDisjunction(BitVector(kWidth), set); }
std::string SetText(const ConjunctionSet& set) {
  std::string text;
  for (const auto& element : set) text += (text.empty() ? "" : ", ") + Text(Clause(element));
  return text;
}

TEST(BitClauseTest, AbsorptionKeepsTheShortest) {
  struct {
    std::string outer, added, result;  // as disjunctions of conjunctions
  } const rows[] = {
      {"", "ab", "[ab]"},
      {"a", "ab", "a"},
      {"a", "bc", "a[bc]"},
      {"[abc]", "ab", "[ab]"},
      {"[ab]", "abc", "[ab]"},
      {"[abc][de][abf]", "ab", "[de][ab]"},
      {"[abc][ab]", "abd", "[abc][ab]"},  // those that stand are not compared with each other
      {"[ab][abcd]", "abc", "[ab]"},      // the walk from the end removes before it finds what makes the new one idle
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.outer + " + " + row.added);
    BitClauseDisjunction disjunction = Disjunction(row.outer);
    disjunction.AddConjunction(Conjunction(row.added));
    EXPECT_EQ(Text(disjunction), row.result);
    EXPECT_EQ(ClauseTruth::FirstDifference(Disjunction(row.outer + "[" + row.added + "]"), disjunction), "");
    BitClauseConjunction conjunction = Conjunction(Mirrored(row.outer));
    conjunction.AddDisjunction(Disjunction(row.added));
    EXPECT_EQ(Text(conjunction), Mirrored(row.result));
    EXPECT_EQ(ClauseTruth::FirstDifference(Conjunction(Mirrored(row.outer) + "(" + row.added + ")"), conjunction), "");
  }

  BitClauseDisjunction disjunction = Disjunction("z");
  disjunction.AddUniqueNestedConjunctions(ParseSet("abc, yz, ab, de"));
  EXPECT_EQ(Text(disjunction), "z[ab][de]");
  EXPECT_EQ(ClauseTruth::FirstDifference(Disjunction("z[abc][yz][ab][de]"), disjunction), "");
}

TEST(BitClauseTest, ClausesAreEqualAsSetsUnlessTheirOwnKindIsInside) {
  struct {
    const char *left, *right;
    bool bEqual;
  } const rows[] = {
      {"a(bc)(de)", "a(de)(bc)", true}, {"a(bc)(bc)", "a(bc)", true},  {"a(bc)", "a(bc)(de)", false},
      {"a(bc)", "(bc)", false},         {"(b[cd])", "(b[cd])", false},
  };
  for (const auto& [left, right, bEqual] : rows) {
    EXPECT_EQ(Conjunction(left) == Conjunction(right), bEqual) << left << " and " << right;
  }
  EXPECT_FALSE(Conjunction("a") == BitClauseConjunction(BitVector(3, true))) << "other lengths";
  EXPECT_TRUE(Disjunction("ab") == Disjunction("ab"));
  EXPECT_FALSE(Disjunction("a[bc]") == Disjunction("a[bc]"));
}

TEST(DistributeTest, FactoringTakesOutWhatAllTermsShare) {
  struct {
    std::string set;
    bool bFound;
    std::string common, remainder;
  } const rows[] = {
      {"", true, "", ""},         {"ab", true, "ab", ""},       {"ab, ac", true, "a", "b, c"},
      {"ab, cd", false, "", "z"}, {"ab, a, ac", true, "a", ""}, {"a(bc)(de), f(bc)", true, "(bc)", "a(de), f"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.set);
    const auto set = ParseSet(row.set);
    BitClauseConjunction common(kWidth);
    BitClauseConjunction held = Conjunction("z");
    ConjunctionSet remainder;
    remainder.PushBackConjunction(&held);
    EXPECT_EQ(Distribute::FactorCommonSubexpression(set, common, remainder), row.bFound);
    EXPECT_EQ(Text(common), row.common);
    EXPECT_EQ(SetText(remainder), row.remainder);
    EXPECT_EQ(SetText(set), row.set);
    if (!row.bFound) {
      remainder.clear_no_delete();
      continue;
    }
    if (!remainder.empty()) PushBack(common.GetNested(), OrOf(remainder));
    EXPECT_EQ(ClauseTruth::FirstDifference(OrOf(set), common), "");
  }
}

/// "[ab][cd]...", that many pairs of neighbouring letters.
std::string Pairs(int count) {
  std::string text;
  for (char letter = 'a'; count > 0; --count, letter = static_cast<char>(letter + 2)) {
    text += std::string("[") + letter + static_cast<char>(letter + 1) + "]";
  }
  return text;
}

template <class ClauseType>
std::string DistributeText(const std::string& text, bool bForce, bool& bSuccess) {
  auto clause = Parse<ClauseType>(text);
  Distribute distribute(bForce);
  clause.Accept(distribute);
  EXPECT_EQ(Text(clause), text) << "the clause changed";
  bSuccess = distribute.GetConversionSuccess();
  BitClauseConjunction result(0);
  distribute.GetCNFConjunction(result);
  EXPECT_EQ(result.GetLiterals().size(), static_cast<std::size_t>(kWidth));
  return Text(result);
}

/// The mirror: a clause with all kinds exchanged, to disjunctive form, exchanged back.
template <class ClauseType>
std::string DistributeMirrored(const std::string& text) {
  auto clause = Parse<ClauseType>(Mirrored(text));
  DistributeDNF distribute;
  clause.Accept(distribute);
  BitClauseDisjunction result(0);
  distribute.GetDNFDisjunction(result);
  return Mirrored(Text(result));
}

template <class ClauseType>
void CheckDistribute(const std::string& text, const std::string& result) {
  SCOPED_TRACE(text);
  bool bSuccess = false;
  const std::string conjunctive = DistributeText<ClauseType>(text, false, bSuccess);
  EXPECT_EQ(conjunctive, result);
  EXPECT_TRUE(bSuccess);
  EXPECT_EQ(ClauseTruth::FirstDifference(Parse<ClauseType>(text), Conjunction(conjunctive)), "");
  EXPECT_EQ(DistributeMirrored<typename ClauseType::Nested>(text), result);
}

TEST(DistributeTest, ADisjunctionIsMultipliedOutAndAConjunctionJoinsItsTerms) {
  const std::pair<const char*, const char*> disjunctions[] = {
      {"", ""},
      {"[a(bc)]", "a(bc)"},
      {"abc", "(abc)"},
      {"ab[cd]", "(abc)(abd)"},
      {"ab[ac]", "(ab)"},
      {"[ab][cd]", "(ac)(bc)(ad)(bd)"},
      {"[ab][ac]", "a(bc)"},
      {"a[ab]", "a"},
      {"[ab][cd][ab]", "(ac)(bc)(ad)(bd)"},
      {"[ab][bc][ac]", "(ab)(ac)(bc)"},
      {"[a(bc)][d(bc)]", "(bc)(ad)"},
      {"d[a(bc)]", "(bcd)(ad)"},
      {"[a(b[cd])]", "a(bc)(bd)"},
      {"x[(ab)(cd)]", "(abx)(cdx)"},
  };
  for (const auto& [clause, result] : disjunctions) CheckDistribute<BitClauseDisjunction>(clause, result);
  const std::pair<const char*, const char*> conjunctions[] = {
      {"a(bc)", "a(bc)"},
      {"a(ab)", "a"},
      {"(ab)(abc)", "(ab)"},
      {"(abc)(ab)", "(ab)"},
      {"(c[ab])(ac)", "(ac)(bc)"},
      {"(ab)([ac][ad])", "a(ab)(cd)"},  // an atom that comes late does not absorb what came before
      {"([ac][ad])(ab)", "a(cd)"},
  };
  for (const auto& [clause, result] : conjunctions) CheckDistribute<BitClauseConjunction>(clause, result);
}

template <class ClauseType>
void CheckRefused(const std::string& text, const std::string& result, bool bMeaningKept) {
  SCOPED_TRACE(text);
  bool bSuccess = true;
  const std::string actual = DistributeText<ClauseType>(text, false, bSuccess);
  EXPECT_EQ(actual, result);
  EXPECT_FALSE(bSuccess);
  EXPECT_EQ(ClauseTruth::FirstDifference(Parse<ClauseType>(text), Conjunction(actual)).empty(), bMeaningKept);
}

TEST(DistributeTest, TooManyTermsAreRefusedUnlessForcedAtTheTop) {
  struct {
    std::string clause;
    bool bForce, bSuccess;
    std::size_t clauses;  // flat disjunctions in the result
  } const rows[] = {
      {"wxyz" + Pairs(8), false, true, 256},
      {Pairs(9), true, true, 512},
      {"[az][bz][cz][dz][ez][fz][gz][hz][iz]", false, true, 1},
      {"[y(" + Pairs(9) + ")(wx)]", true, false, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.clause);
    bool bSuccess = !row.bSuccess;
    const std::string result = DistributeText<BitClauseDisjunction>(row.clause, row.bForce, bSuccess);
    EXPECT_EQ(bSuccess, row.bSuccess);
    EXPECT_EQ(std::count(result.begin(), result.end(), '('), row.clauses);
    // Wanted: what was refused below the top is missing.
    EXPECT_EQ(ClauseTruth::FirstDifference(Disjunction(row.clause), Conjunction(result)).empty(), row.bSuccess);
  }
  CheckRefused<BitClauseDisjunction>(Pairs(9), "(" + Pairs(9) + ")", true);  // kept nested
  CheckRefused<BitClauseDisjunction>("s" + Pairs(9), "(s" + Pairs(9) + "[s])", true);
  CheckRefused<BitClauseDisjunction>("st" + Pairs(9), "(st" + Pairs(9) + "[s][t])", true);
  // What was refused and what is behind it is missing.
  CheckRefused<BitClauseConjunction>("y(tu)(" + Pairs(9) + ")(wx)", "y(tu)", false);
  // The disjunctive form refuses nothing.
  const std::string disjunctive = DistributeMirrored<BitClauseConjunction>(Pairs(9));
  EXPECT_EQ(std::count(disjunctive.begin(), disjunctive.end(), '('), 512);
  EXPECT_EQ(ClauseTruth::FirstDifference(Disjunction(Pairs(9)), Conjunction(disjunctive)), "");
}

TEST(DistributeTest, MultiplyingOutEndsWhenTheJobIsCancelled) {
  const KXJobToken token;
  token.Cancel();
  const KXJobScope scope(token);
  const auto codeOf = [](auto clause, auto visitor) { return CodeRaisedBy([&] { clause.Accept(visitor); }); };
  EXPECT_EQ(codeOf(Disjunction("[ab][cd]"), Distribute(false)), kMsgJobCancelled);
  EXPECT_EQ(codeOf(Conjunction("x([ab][cd])"), Distribute(false)), kMsgJobCancelled);
  EXPECT_EQ(codeOf(Conjunction("(ab)(cd)"), DistributeDNF()), kMsgJobCancelled);
}

}  // namespace
