#include "SQORDistribute.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "CondLanguage.h"
#include "SQORRqExprCondToBitClause.h"

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

/// "ab, cd(ef)" as a set of clauses.
template <class Set>
Set ParseSet(const std::string& text) {
  using Element = std::remove_cvref_t<decltype(Clause(*std::declval<Set&>().begin()))>;
  Set set;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(", ", begin), text.size());
    PushBack(set, Parse<Element>(text.substr(begin, end - begin)));
    begin = end + 2;
  }
  return set;
}
template <class Set>
std::string SetText(const Set& set) {
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
    BitClauseConjunction conjunction = Conjunction(Mirrored(row.outer));
    conjunction.AddDisjunction(Disjunction(row.added));
    EXPECT_EQ(Text(conjunction), Mirrored(row.result));
  }

  BitClauseDisjunction disjunction = Disjunction("z");
  disjunction.AddUniqueNestedConjunctions(ParseSet<ConjunctionSet>("abc, yz, ab, de"));
  EXPECT_EQ(Text(disjunction), "z[ab][de]");
  BitClauseConjunction conjunction = Conjunction("z");
  conjunction.AddUniqueNestedDisjunctions(ParseSet<DisjunctionSet>("abc, yz, ab, de"));
  EXPECT_EQ(Text(conjunction), "z(ab)(de)");
}

TEST(BitClauseTest, ClausesAreEqualAsSetsUnlessTheirOwnKindIsInside) {
  const auto equal = [](const char* left, const char* right) { return Conjunction(left) == Conjunction(right); };
  EXPECT_TRUE(equal("a(bc)(de)", "a(de)(bc)"));
  EXPECT_TRUE(equal("a(bc)(bc)", "a(bc)"));
  EXPECT_FALSE(equal("a(bc)", "a(bc)(de)"));
  EXPECT_FALSE(equal("a(bc)", "(bc)"));
  EXPECT_FALSE(equal("(b[cd])", "(b[cd])"));
  EXPECT_FALSE(Conjunction("a") == BitClauseConjunction(BitVector(3, true))) << "other lengths";
  EXPECT_TRUE(Disjunction("ab") == Disjunction("ab"));
  EXPECT_FALSE(Disjunction("a[bc]") == Disjunction("a[bc]"));
}

TEST(BitClauseTest, MatchesAreFoundByPosition) {
  BitClauseConjunction conjunction = Conjunction("a(bc)(de)");
  DisjunctionSet::iterator disjunction;
  EXPECT_TRUE(conjunction.HasMatchingDisjunction(Disjunction("de"), disjunction));
  EXPECT_EQ(disjunction, conjunction.GetNested().begin() + 1);
  EXPECT_FALSE(conjunction.HasMatchingDisjunction(Disjunction("d"), disjunction));
  EXPECT_EQ(disjunction, conjunction.GetNested().end());
  BitClauseDisjunction outer = Disjunction("a[bc][d(ef)]");
  ConjunctionSet::iterator nested;
  EXPECT_TRUE(outer.HasMatchingConjunction(Conjunction("d(ef)"), nested));
  EXPECT_EQ(nested, outer.GetNested().begin() + 1);
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
    const auto set = ParseSet<ConjunctionSet>(row.set);
    BitClauseConjunction common(kWidth);
    BitClauseConjunction held = Conjunction("z");
    ConjunctionSet remainder;
    remainder.PushBackConjunction(&held);
    EXPECT_EQ(Distribute::FactorCommonSubexpression(set, common, remainder), row.bFound);
    EXPECT_EQ(Text(common), row.common);
    EXPECT_EQ(SetText(remainder), row.remainder);
    EXPECT_EQ(SetText(set), row.set);
    if (!row.bFound) remainder.clear_no_delete();
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

struct DistributeRow {
  std::string clause, result;
};

template <class ClauseType>
void CheckDistribute(const DistributeRow& row) {
  SCOPED_TRACE(row.clause);
  bool bSuccess = false;
  EXPECT_EQ(DistributeText<ClauseType>(row.clause, false, bSuccess), row.result);
  EXPECT_TRUE(bSuccess);
  EXPECT_EQ(DistributeMirrored<typename ClauseType::Nested>(row.clause), row.result);
}

TEST(DistributeTest, ADisjunctionIsMultipliedOutAndAConjunctionJoinsItsTerms) {
  const DistributeRow disjunctions[] = {
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
  for (const DistributeRow& row : disjunctions) CheckDistribute<BitClauseDisjunction>(row);
  const DistributeRow conjunctions[] = {
      {"a(bc)", "a(bc)"},
      {"a(ab)", "a"},
      {"(ab)(abc)", "(ab)"},
      {"(abc)(ab)", "(ab)"},
      {"(c[ab])(ac)", "(ac)(bc)"},
      {"(ab)([ac][ad])", "a(ab)(cd)"},  // an atom that comes late does not absorb what came before
      {"([ac][ad])(ab)", "a(cd)"},
  };
  for (const DistributeRow& row : conjunctions) CheckDistribute<BitClauseConjunction>(row);
}

TEST(DistributeTest, TooManyTermsAreRefusedUnlessForcedAtTheTop) {
  struct {
    std::string what, clause;
    bool bConjunction, bForce, bSuccess;
    std::size_t clauses;  // flat disjunctions in the result
  } const rows[] = {
      {"8 terms of two and single atoms", "wxyz" + Pairs(8), false, false, true, 256},
      {"9 terms of two", Pairs(9), false, false, false, 0},
      {"9 terms of two, forced", Pairs(9), false, true, true, 512},
      {"9 terms that share an atom", "[az][bz][cz][dz][ez][fz][gz][hz][iz]", false, false, true, 1},
      {"9 terms, below a conjunction, forced", "y(" + Pairs(9) + ")(wx)", true, true, false, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    bool bSuccess = !row.bSuccess;
    const std::string result = row.bConjunction
                                   ? DistributeText<BitClauseConjunction>(row.clause, row.bForce, bSuccess)
                                   : DistributeText<BitClauseDisjunction>(row.clause, row.bForce, bSuccess);
    EXPECT_EQ(bSuccess, row.bSuccess);
    if (row.bSuccess) {
      EXPECT_EQ(std::count(result.begin(), result.end(), '('), row.clauses);
    }
  }
  bool bSuccess = true;
  EXPECT_EQ(DistributeText<BitClauseDisjunction>(Pairs(9), false, bSuccess), "(" + Pairs(9) + ")") << "kept nested";
  EXPECT_EQ(DistributeText<BitClauseDisjunction>("s" + Pairs(9), false, bSuccess), "(s" + Pairs(9) + "[s])");
  EXPECT_EQ(DistributeText<BitClauseConjunction>("y(tu)(" + Pairs(9) + ")(wx)", false, bSuccess), "y(tu)")
      << "what was refused and what is behind it is missing";
  const std::string disjunctive = DistributeMirrored<BitClauseConjunction>(Pairs(9));
  EXPECT_EQ(std::count(disjunctive.begin(), disjunctive.end(), '('), 512) << "the disjunctive form refuses nothing";
}

/// The truth of a clause where the atoms of the mask are true.
template <class ClauseType>
bool IsTrue(const ClauseType& clause, unsigned mask) {
  constexpr bool bAnd = std::is_same_v<ClauseType, BitClauseConjunction>;
  bool bTruth = bAnd;
  clause.GetLiterals().ForEachSetBit([&](std::size_t i) {
    const bool bAtom = (mask >> i & 1U) != 0;
    bTruth = bAnd ? bTruth && bAtom : bTruth || bAtom;
  });
  for (const auto& element : clause.GetNested()) {
    const bool bNested = IsTrue(Clause(element), mask);
    bTruth = bAnd ? bTruth && bNested : bTruth || bNested;
  }
  return bTruth;
}

constexpr int kRandomAtoms = 6;

/// A clause as conversion makes them: nothing empty is nested.
template <class ClauseType>
ClauseType RandomClause(std::mt19937& random, int depth) {
  using Nested = typename ClauseType::Nested;
  const auto upTo = [&random](int last) { return std::uniform_int_distribution<int>(0, last)(random); };
  ClauseType clause(kRandomAtoms);
  const int nested = depth > 0 ? upTo(3) : 0;
  for (int i = 0; i < nested; ++i) PushBack(clause.GetNested(), RandomClause<Nested>(random, depth - 1));
  const int atoms = upTo(2) + (nested == 0 ? 1 : 0);
  for (int i = 0; i < atoms; ++i) clause.GetLiterals().set(static_cast<std::size_t>(upTo(kRandomAtoms - 1)));
  return clause;
}

template <class ClauseType>
void CheckRandomClause(std::mt19937& random) {
  auto clause = RandomClause<ClauseType>(random, 3);
  SCOPED_TRACE(Text(clause));
  Distribute distribute(false);
  clause.Accept(distribute);
  ASSERT_TRUE(distribute.GetConversionSuccess());
  BitClauseConjunction conjunctive(0);
  distribute.GetCNFConjunction(conjunctive);
  DistributeDNF distributeDNF;
  clause.Accept(distributeDNF);
  BitClauseDisjunction disjunctive(0);
  distributeDNF.GetDNFDisjunction(disjunctive);
  for (unsigned mask = 0; mask < 1U << kRandomAtoms; ++mask) {
    const bool bTrue = IsTrue(clause, mask);
    ASSERT_EQ(IsTrue(conjunctive, mask), bTrue) << Text(conjunctive) << " at " << mask;
    ASSERT_EQ(IsTrue(disjunctive, mask), bTrue) << Text(disjunctive) << " at " << mask;
  }
  for (const BitClauseDisjunction& disjunction : conjunctive.GetNested()) EXPECT_TRUE(disjunction.GetNested().empty());
  for (const BitClauseConjunction* const pConjunction : disjunctive.GetNested()) {
    EXPECT_TRUE(pConjunction->GetNested().empty());
  }
}

TEST(DistributeTest, RandomClausesKeepTheirMeaningAndBecomeFlat) {
  constexpr unsigned kSeed = 35;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  for (int i = 0; i < 1000; ++i) {
    ASSERT_NO_FATAL_FAILURE(CheckRandomClause<BitClauseConjunction>(random));
    ASSERT_NO_FATAL_FAILURE(CheckRandomClause<BitClauseDisjunction>(random));
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// From conditions to clauses

/// Gives atoms their letters in the order of their first occurrence in `atoms`, and the text of cond's clause.
std::string ClauseText(const std::string& atoms, const std::string& cond) {
  std::vector<OwnedRqExprCondPtr> owned;
  LiteralIndexMap literalIndexMap;
  RqExprCondVector literals;
  BuildLiteralIndexMap build(literalIndexMap, literals);
  for (std::size_t begin = 0; begin < atoms.size();) {
    const std::size_t end = std::min(atoms.find("; ", begin), atoms.size());
    owned.push_back(ParseCond(atoms.substr(begin, end - begin)));
    build(owned.back().Get());
    begin = end + 2;
  }
  RqExprCondToBitClause visitor(literalIndexMap);
  const OwnedRqExprCondPtr parsed = ParseCond(cond);
  parsed->TourExpr(visitor);
  if (const auto* const pConjunction = dynamic_cast<const BitClauseConjunction*>(visitor.GetBitClause())) {
    return "[" + Text(*pConjunction) + "]";
  }
  return "(" + Text(dynamic_cast<const BitClauseDisjunction&>(*visitor.GetBitClause())) + ")";
}

TEST(RqExprCondToBitClauseTest, AtomsAreBitsAndConnectivesAreClauses) {
  struct {
    std::string atoms, cond, clause;
  } const rows[] = {
      {"x=1", "x=1", "[a]"},
      {"x=1; y=1; x=1; !x=1", "x=1 | !x=1 | y=1", "(abc)"},  // an atom and its negation have nothing in common
      {"x=y; z=1", "y=x | z=1", "(ab)"},
      {"x=1; x==1", "x=1 | x==1", "(ab)"},
      {"x=1; y=1; z=1", "x=1 & (y=1 | z=1)", "[a(bc)]"},
      {"x=1; y=1; z=1", "x=1 | y=1 & z=1", "(a[bc])"},
      {"x=1; y=1; z=1", "(x=1 | y=1) & (z=1 | x=1)", "[(ab)(ac)]"},
      {"x=1; y=1; z=1; a=1", "x=1 & (y=1 & (z=1 | a=1))", "[ab(cd)]"},
      {"x=1; y=1; z=1; a=1", "x=1 | (y=1 | (z=1 & a=1))", "(ab[cd])"},
      // Folding. A conjunction of one atom is the atom, a disjunction of one stays a clause.
      {"1=1; x=1; y=1", "y=1 | (1=1 & x=1)", "(bc)"},
      {"1=2; x=1; y=1", "y=1 & (1=2 | x=1)", "[c(b)]"},
      {"1=1; 2=2", "1=1 & 2=2", "[]"},
      {"1=2; 1=3", "1=2 | 1=3", "(a)"},
      // Leaves
      {"In(x,1,2); MultiIn(x,y;1,2)", "In(x,1,2) | MultiIn(x,y;1,2)", "(ab)"},
      {"IsNull(x); Like(x,1); Pred(x)", "IsNull(x) | Like(x,1) | Pred(x)", "(abc)"},
      {"IsRoot(x); IsSibling(x,y,z); IsLeaf(x)", "IsRoot(x) & IsSibling(x,y,z) & IsLeaf(x)", "[abc]"},
      {"Wrap(x=1 & y>1); GroupBy(x)", "Wrap(x=1 & y>1) & GroupBy(x)", "[ab]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.cond);
    EXPECT_EQ(ClauseText(row.atoms, row.cond), row.clause);
  }
}

}  // namespace
