// normal_form_truth ARGS: where ARGS are a command line of `rq normalize`, holds the normal form of each condition
// against the condition by a truth table over its atoms. Prints how many agree; the first row where one does not goes
// to standard error, and the exit status is 1. Conditions that were given up do not count, and those of the
// standard input or of a file are not read.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/BigStack.h"
#include "rq/RowIns.h"
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

/// The first row in which two formulas differ: the atoms that are true and those that are unknown there. All rows over
/// the three truth values are tried, and from kMaxAtoms on those of true and false.
std::optional<std::string> FindDifference(const Formula& a, const Formula& b, const Atoms& atoms) {
  constexpr std::size_t kMaxAtoms = 12;
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

struct Arguments {
  std::vector<std::string> m_conditions;
  std::string m_form = "cnf";
  int m_limit = -1;
  bool m_bKeepIn = false;
  bool m_bForce = false;
};

Arguments ReadArguments(const std::vector<std::string>& texts) {
  Arguments arguments;
  std::vector<std::string> options;
  bool bOptions = true;
  for (const std::string& text : texts) {
    const std::string option = options.empty() ? "" : options.back();
    if (option == "--form" || option == "--format" || option == "--limit" || option == "--file") {
      options.back() += '=' + text;
    } else if (bOptions && text == "--") {
      bOptions = false;
    } else if (bOptions && text.starts_with("--") && text.find(' ') == std::string::npos) {
      options.push_back(text);
    } else if (text != "-") {
      arguments.m_conditions.push_back(text);
    }
  }
  for (const std::string& option : options) {
    if (option.starts_with("--form=")) arguments.m_form = option.substr(option.find('=') + 1);
    if (option.starts_with("--limit=")) arguments.m_limit = std::atoi(option.c_str() + option.find('=') + 1);
    arguments.m_bKeepIn |= option == "--keep-in";
    arguments.m_bForce |= option == "--force";
  }
  return arguments;
}

/// The clauses of the normal form, joined, where no clause makes no demand; none where the conversion was given up.
std::optional<Formula> NormalFormOf(const RqExprCond& cond, const Arguments& arguments, Atoms& atoms) {
  Formula formula;
  OwnedRqExprCondVector clauses;
  if (arguments.m_form == "cnf") {
    ToCNF toCNF;
    toCNF.GenerateCNF(cond, arguments.m_bForce, !arguments.m_bKeepIn, arguments.m_limit);
    if (!toCNF.GetConversionSuccess()) return std::nullopt;
    std::vector<const RqExprCond*> conjuncts;
    toCNF.GetConjuncts(conjuncts);
    for (const RqExprCond* const pConjunct : conjuncts) formula.m_parts.push_back(atoms.FormulaOf(*pConjunct));
    return formula;
  }
  if (arguments.m_form == "dnf") {
    if (!arguments.m_bForce && ToDNFDisjuncts::IsCondTooComplicatedToConvert(cond, arguments.m_limit)) {
      return std::nullopt;
    }
    ToDNFDisjuncts toDisjuncts;
    toDisjuncts.GenerateOwnedDNFDisjuncts(cond, !arguments.m_bKeepIn);
    toDisjuncts.ReleaseDisjuncts(clauses);
    if (!clauses.empty()) formula.m_kind = Formula::kOr;
  } else {
    ToCNFConjuncts toConjuncts;
    toConjuncts.GenerateOwnedCNFConjuncts(cond, !arguments.m_bKeepIn);
    toConjuncts.ReleaseConjuncts(clauses);
  }
  for (const OwnedRqExprCondPtr& clause : clauses) formula.m_parts.push_back(atoms.FormulaOf(*clause));
  return formula;
}

enum class Verdict { kAgrees, kDiffers, kGivenUp };

/// Raises SqlError for what is no condition.
Verdict Compare(const std::string& sql, const Arguments& arguments) {
  const OwnedRqExprCondPtr cond = ParseCondition(sql);
  Atoms atoms;
  const Formula formula = atoms.FormulaOf(*cond);
  ExpandRowInsToNegate(*cond);
  const std::optional<Formula> normalForm = NormalFormOf(*cond, arguments, atoms);
  if (!normalForm) return Verdict::kGivenUp;
  const std::optional<std::string> difference = FindDifference(formula, *normalForm, atoms);
  if (!difference) return Verdict::kAgrees;
  std::cerr << "differs from its " << arguments.m_form << ": " << sql << "\n  where" << *difference << '\n';
  return Verdict::kDiffers;
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = ReadArguments({argv + (argc > 1 ? 2 : 1), argv + argc});
  int nAgree = 0;
  int nDiffer = 0;
  RunOnBigStack([&] {
    for (const std::string& condition : arguments.m_conditions) {
      const Verdict verdict = Compare(condition, arguments);
      nAgree += verdict == Verdict::kAgrees;
      nDiffer += verdict == Verdict::kDiffers;
    }
  });
  std::cout << nAgree << '\n';
  return nDiffer == 0 ? 0 : 1;
}
