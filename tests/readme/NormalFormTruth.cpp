// normal_form_truth ARGS: where ARGS are a command line of `rq normalize`, holds the normal form of each condition
// against the condition by a truth table over its atoms. Prints how many agree; the first row where one does not goes
// to standard error, and the exit status is 1. A form that was given up does not count, and conditions of the standard
// input or of a file are not read.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/BigStack.h"
#include "rq/CommandNormalize.h"
#include "rq/NormalForm.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlText.h"

namespace {

/// The truth of something in 64 rows: true, false, or unknown where neither bit is set.
struct Truths {
  std::uint64_t m_true = 0;
  std::uint64_t m_false = 0;

  Truths operator!() const { return {m_false, m_true}; }
  friend Truths operator&(Truths a, Truths b) { return {a.m_true & b.m_true, a.m_false | b.m_false}; }
  friend Truths operator|(Truths a, Truths b) { return {a.m_true | b.m_true, a.m_false & b.m_false}; }
};

/// A condition as connectives over numbered atoms.
struct Formula {
  enum Kind { kAtom, kAnd, kOr, kNot } m_kind = kAnd;
  std::size_t m_atom = 0;
  std::vector<Formula> m_parts;  // of an And or Or any number

  static Formula Not(Formula part) {
    Formula formula{kNot, 0, {}};
    formula.m_parts.push_back(std::move(part));
    return formula;
  }

  bool HasNot() const { return m_kind == kNot || std::ranges::any_of(m_parts, &Formula::HasNot); }

  Truths Evaluate(const std::vector<Truths>& atoms) const {
    if (m_kind == kAtom) return atoms[m_atom];
    if (m_kind == kNot) return !m_parts[0].Evaluate(atoms);
    Truths truths = m_kind == kAnd ? Truths{~std::uint64_t{0}, 0} : Truths{0, ~std::uint64_t{0}};
    for (const Formula& part : m_parts) {
      const Truths partTruths = part.Evaluate(atoms);
      truths = m_kind == kAnd ? truths & partTruths : truths | partTruths;
    }
    return truths;
  }
};

/// Takes conditions to pieces down to atoms: whether one value is below another, whether two are equal, whether one is
/// null, and whatever else it does not look into. Two atoms are one if their texts are the same.
class Atoms {
 public:
  Formula FormulaOf(const RqExpr& cond) {
    const auto inner = [&](int i) { return FormulaOf(*cond.GetIthOperand(i)); };
    const auto text = [&](int i) { return TextOf(*cond.GetIthOperand(i)); };
    switch (cond.GetObjectType()) {
      case kRqExprCondAnd:
        return {Formula::kAnd, 0, {inner(0), inner(1)}};
      case kRqExprCondOr:
        return {Formula::kOr, 0, {inner(0), inner(1)}};
      case kRqExprCondNot:
        return Formula::Not(inner(0));
      case kRqExprCondEquality:
        return Equal(text(0), text(1));
      case kRqExprCondNotEqual:
        return Formula::Not(Equal(text(0), text(1)));
      case kRqExprCondLess:
        return Less(text(0), text(1));
      case kRqExprCondLessEqual:
        return Formula::Not(Less(text(1), text(0)));
      case kRqExprCondGreater:
        return Less(text(1), text(0));
      case kRqExprCondGreaterEqual:
        return Formula::Not(Less(text(0), text(1)));
      default:
        break;
    }
    const auto* const pNegatable = dynamic_cast<const RqExprCondNegatable*>(&cond);
    if (!pNegatable) return Atom(TextOf(cond));
    Formula plain = PlainFormulaOf(*pNegatable);
    return pNegatable->IsNegated() ? Formula::Not(std::move(plain)) : plain;
  }

  std::size_t GetCount() const { return m_numbers.size(); }
  bool IsNullTest(std::size_t atom) const { return m_bIsNullTest[atom]; }
  const std::map<std::string, std::size_t>& GetNumbers() const { return m_numbers; }

 private:
  static std::string TextOf(const RqExpr& expr) { return RqDumpout::StringFrom(expr).ToUTF8(); }

  Formula Atom(const std::string& text, bool bIsNullTest = false) {
    const auto [it, bIsNew] = m_numbers.emplace(text, m_numbers.size());
    if (bIsNew) m_bIsNullTest.push_back(bIsNullTest);
    return {Formula::kAtom, it->second, {}};
  }
  Formula Less(const std::string& left, const std::string& right) { return Atom(left + " < " + right); }
  /// Wanted in the rewriting: a value equals itself, null or not.
  Formula Equal(const std::string& left, const std::string& right) {
    if (left == right) return {};
    return Atom(std::min(left, right) + " = " + std::max(left, right));
  }

  /// Of a condition that may be negated, without that.
  Formula PlainFormulaOf(const RqExprCondNegatable& cond) {
    const auto operand = [&](int i) -> const RqExpr& { return *cond.GetIthOperand(i); };
    Formula formula;
    switch (cond.GetObjectType()) {
      case kRqExprCondIsNull:
        return Atom(TextOf(operand(0)) + " is null", true);
      case kRqExprCondBetween:
        formula.m_parts = {Formula::Not(Less(TextOf(operand(0)), TextOf(operand(1)))),
                           Formula::Not(Less(TextOf(operand(2)), TextOf(operand(0))))};
        return formula;
      case kRqExprCondIn:
        if (operand(1).GetObjectType() != kRqExprColumnList) break;
        formula.m_kind = Formula::kOr;
        for (int i = 0; i < operand(1).GetNumOperands(); ++i) {
          formula.m_parts.push_back(Equal(TextOf(operand(0)), TextOf(*operand(1).GetIthOperand(i))));
        }
        return formula;
      case kRqExprCondMultiColumnIn:
        formula.m_kind = Formula::kOr;
        for (int i = 0; i < operand(1).GetNumOperands(); ++i) {
          formula.m_parts.push_back(RowEqual(operand(0), *operand(1).GetIthOperand(i)));
        }
        return formula;
      default:
        break;
    }
    const Heap<RqExpr> copy(cond.DeepExprCopy(false));
    auto& plain = dynamic_cast<RqExprCondNegatable&>(*copy);
    if (plain.IsNegated()) plain.Negate();
    return Atom(TextOf(plain));
  }
  Formula RowEqual(const RqExpr& columns, const RqExpr& row) {
    Formula formula;
    for (int i = 0; i < columns.GetNumOperands(); ++i) {
      formula.m_parts.push_back(Equal(TextOf(*columns.GetIthOperand(i)), TextOf(*row.GetIthOperand(i))));
    }
    return formula;
  }

  std::map<std::string, std::size_t> m_numbers;
  std::vector<bool> m_bIsNullTest;
};

constexpr std::size_t kMaxAtoms = 12;

/// The first row in which two formulas differ: the atoms that are true and those that are unknown there. All rows over
/// the three truth values are tried. From kMaxAtoms on those of true and false are, which tell all of formulas without
/// a Not: one is true where it is when the unknown are taken for false, and false where it is when they are taken for
/// true.
std::optional<std::string> FindDifference(const Formula& a, const Formula& b, const Atoms& atoms) {
  constexpr unsigned kRowsInWord = 64;
  const unsigned nValues = atoms.GetCount() < kMaxAtoms ? 3 : 2;
  std::uint64_t nRows = 1;
  for (std::size_t i = 0; i < atoms.GetCount(); ++i) nRows *= nValues;

  for (std::uint64_t first = 0; first < nRows; first += kRowsInWord) {
    std::vector<Truths> values(atoms.GetCount());
    for (unsigned bit = 0; bit < kRowsInWord; ++bit) {
      std::uint64_t row = first + bit;
      for (std::size_t i = 0; i < values.size(); ++i, row /= nValues) {
        const std::uint64_t value = row % nValues;
        if (value == 1) values[i].m_true |= std::uint64_t{1} << bit;
        if (value == 0 || (value == 2 && atoms.IsNullTest(i))) values[i].m_false |= std::uint64_t{1} << bit;
      }
    }
    const Truths truthsOfA = a.Evaluate(values);
    const Truths truthsOfB = b.Evaluate(values);
    const std::uint64_t differences = (truthsOfA.m_true ^ truthsOfB.m_true) | (truthsOfA.m_false ^ truthsOfB.m_false);
    if (differences == 0) continue;
    std::string text;
    for (const auto& [name, i] : atoms.GetNumbers()) {
      const std::uint64_t bit = differences & -differences;
      if (values[i].m_true & bit) text += " [" + name + ']';
      if (!((values[i].m_true | values[i].m_false) & bit)) text += " unknown [" + name + ']';
    }
    return text;
  }
  return std::nullopt;
}

/// The clauses, joined, where no clause makes no demand.
Formula FormulaOf(const NormalForm& form, NormalizeOptions::Form kind, Atoms& atoms) {
  Formula formula;
  if (kind == NormalizeOptions::Form::kDnf && !form.m_clauses.empty()) formula.m_kind = Formula::kOr;
  for (const RqExprCond* const pClause : form.m_clauses) formula.m_parts.push_back(atoms.FormulaOf(*pClause));
  return formula;
}

enum class Verdict { kAgrees, kFails, kGivenUp };

/// Raises SqlError for what is no condition.
Verdict Compare(const std::string& sql, const NormalizeOptions& options) {
  const OwnedRqExprCondPtr cond = ParseCondition(sql);
  Atoms atoms;
  const Formula formula = atoms.FormulaOf(*cond);
  const NormalForm form = ConvertToNormalForm(*cond, options);
  // The conjuncts by themselves stand for the condition in any case.
  if (!form.m_bSuccess && options.m_form != NormalizeOptions::Form::kCnfConjuncts) return Verdict::kGivenUp;
  const Formula normalForm = FormulaOf(form, options.m_form, atoms);
  if (atoms.GetCount() >= kMaxAtoms && (formula.HasNot() || normalForm.HasNot())) {
    std::cerr << "a negation, and too many atoms to try unknown ones: " << sql << '\n';
    return Verdict::kFails;
  }
  const std::optional<std::string> difference = FindDifference(formula, normalForm, atoms);
  if (!difference) return Verdict::kAgrees;
  std::cerr << "differs from its normal form: " << sql << "\n  where" << *difference << '\n';
  return Verdict::kFails;
}

}  // namespace

int main(int argc, char** argv) {
  CommandNormalize command;
  CLI::App app;
  command.Define(app);
  app.set_help_flag();
  CLI::Option* const pConditions = app.get_option("CONDITION")->allow_extra_args();
  if (argc > 1) CLI11_PARSE(app, argc - 1, argv + 1);  // argv[1] is the command's name
  int nAgree = 0;
  int nFail = 0;
  RunOnBigStack([&] {
    for (const std::string& condition : pConditions->results()) {
      if (condition == "-") continue;
      const Verdict verdict = Compare(condition, command.GetOptions());
      nAgree += verdict == Verdict::kAgrees;
      nFail += verdict == Verdict::kFails;
    }
  });
  std::cout << nAgree << '\n';
  return nFail == 0 ? 0 : 1;
}
