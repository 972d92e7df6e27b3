#include "rq/NormalForm.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/RowIns.h"

namespace {

using Json = nlohmann::ordered_json;
using Form = NormalizeOptions::Form;

std::string TextOf(const RqExprCond* pCond) { return RqDumpout::StringFrom(pCond).ToUTF8(); }

// ---------------------------------------------------------------------------------------------------------------------
// Conversion

/// What became of a condition. The texts are taken while what they are of lives.
struct NormalForm {
  std::string m_input;
  bool m_bTooComplicated = false;  ///< Above the limits.
  bool m_bSuccess = true;
  std::optional<std::string> m_result;  ///< Only of a form that is one condition.
  std::vector<std::string> m_clauses;
  std::vector<bool> m_clauseIsOr;

  void AddClause(const RqExprCond* pClause) {
    m_clauses.push_back(TextOf(pClause));
    m_clauseIsOr.push_back(pClause->IsOrCond());
  }
  void AddClauses(const OwnedRqExprCondVector& clauses) {
    for (const OwnedRqExprCondPtr& clause : clauses) AddClause(clause.Get());
  }
};

void Convert(const RqExprCond& cond, const NormalizeOptions& options, NormalForm& form) {
  const bool bConvertCondIn = !options.m_bKeepIn;
  switch (options.m_form) {
    case Form::kCnf: {
      ToCNF toCNF;
      toCNF.GenerateCNF(cond, options.m_bForce, bConvertCondIn, options.m_limit);
      form.m_bSuccess = toCNF.GetConversionSuccess();
      if (const RqExprCond* const pResult = toCNF.GetCNF()) form.m_result = TextOf(pResult);
      std::vector<const RqExprCond*> conjuncts;
      toCNF.GetConjuncts(conjuncts);
      for (const RqExprCond* const pConjunct : conjuncts) form.AddClause(pConjunct);
      return;
    }
    case Form::kCnfConjuncts: {
      ToCNFConjuncts toConjuncts;
      toConjuncts.GenerateOwnedCNFConjuncts(cond, bConvertCondIn);
      form.m_bSuccess = toConjuncts.GetConversionSuccess();
      OwnedRqExprCondVector conjuncts;
      toConjuncts.ReleaseConjuncts(conjuncts);
      return form.AddClauses(conjuncts);
    }
    case Form::kDnf: {
      form.m_bTooComplicated =
          !options.m_bForce && ToDNFDisjuncts::IsCondTooComplicatedToConvert(cond, options.m_limit);
      form.m_bSuccess = !form.m_bTooComplicated;
      if (form.m_bTooComplicated) return;
      ToDNFDisjuncts toDisjuncts;
      toDisjuncts.GenerateOwnedDNFDisjuncts(cond, bConvertCondIn);
      OwnedRqExprCondVector disjuncts;
      toDisjuncts.ReleaseDisjuncts(disjuncts);
      return form.AddClauses(disjuncts);
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// JSON

/// One line. Text that is not UTF-8 cannot come up, and would show as U+FFFD.
std::string LineOf(const Json& object) { return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n'; }

std::string JsonOf(const NormalForm& form, Form kind) {
  Json object;
  object["input"] = form.m_input;
  switch (kind) {
    case Form::kCnf:
      object["success"] = form.m_bSuccess;
      object["result"] = form.m_result ? Json(*form.m_result) : Json();
      object["conjuncts"] = form.m_clauses;
      break;
    case Form::kCnfConjuncts:
      object["success"] = form.m_bSuccess;
      object["conjuncts"] = form.m_clauses;
      break;
    case Form::kDnf:
      object["tooComplicated"] = form.m_bTooComplicated;
      object["disjuncts"] = form.m_clauses;
      break;
  }
  return LineOf(object);
}

// ---------------------------------------------------------------------------------------------------------------------
// Text to read

/// How many different atoms the rewriting finds: those that get a bit each.
std::size_t CountAtoms(RqExprCond& cond, bool bConvertCondIn) {
  InwardNegationForm inward(bConvertCondIn);
  cond.TourExpr(inward);
  RqExprVector occurrences;
  inward.GetLiteralExprs(occurrences);
  return RqExprSet(occurrences.begin(), occurrences.end()).size();
}

std::string Counted(std::size_t count, const char* pNoun) {
  return std::to_string(count) + ' ' + pNoun + (count == 1 ? "" : "s");
}

/// Whether it was given up, and why.
std::string Outcome(const NormalForm& form, Form kind) {
  if (form.m_bSuccess) {
    return form.m_bTooComplicated ? "left as it stands: too complicated to convert, and in conjunctive form already"
                                  : "converted";
  }
  if (!form.m_bTooComplicated) {
    return std::string("given up: more than 8 terms of several factors to multiply out") +
           (kind == Form::kCnf ? " (--force does so for a disjunction at the top)" : "");
  }
  switch (kind) {
    case Form::kCnf:
      return "given up: too complicated, with more clauses estimated and more atoms than the limits allow "
             "(--limit 0 tries it)";
    case Form::kCnfConjuncts:
      return "given up: too complicated, with more clauses estimated and more atoms than the limits allow";
    case Form::kDnf:
      return "given up: too complicated, with more clauses estimated than the limit allows (--force tries it)";
  }
  return {};
}

/// A clause a line, with the word between them in front, so that the lines are one condition.
std::string LinesOf(const NormalForm& form, Form kind) {
  const bool bDisjunction = kind == Form::kDnf;
  std::string lines;
  for (std::size_t i = 0; i < form.m_clauses.size(); ++i) {
    const bool bInParentheses = !bDisjunction && form.m_clauseIsOr[i] && form.m_clauses.size() > 1;
    lines += i == 0 ? "    " : bDisjunction ? " or " : "and ";
    lines += bInParentheses ? '(' + form.m_clauses[i] + ')' : form.m_clauses[i];
    lines += '\n';
  }
  return lines;
}

/// Wanted: where a conjunctive form was given up, what there is of it may lack a part of the condition. It is not
/// shown; the condition is, as it stands.
std::string ReadableTextOf(const NormalForm& form, Form kind, std::size_t nAtoms) {
  const bool bHasForm = form.m_bSuccess || kind == Form::kCnfConjuncts;
  const std::size_t nClauses = bHasForm ? form.m_clauses.size() : 0;
  std::string text = nClauses > 0 ? LinesOf(form, kind)
                     : bHasForm   ? std::string("    always true\n")
                                  : "    " + form.m_input + '\n';
  return text + Counted(nAtoms, "atom") + ", " + Counted(nClauses, "clause") + ", " + Outcome(form, kind) + '\n';
}

}  // namespace

std::string NormalFormText(RqExprCond& condition, const NormalizeOptions& options) {
  NormalForm form;
  form.m_input = TextOf(&condition);
  ExpandRowInsToNegate(condition);
  Convert(condition, options, form);
  if (options.m_format == NormalizeOptions::Format::kJson) return JsonOf(form, options.m_form);
  if (options.m_form != Form::kDnf) {
    const int limit = options.m_form == Form::kCnf ? options.m_limit : -1;
    form.m_bTooComplicated = ToCNF::IsCondTooComplicated(condition, limit);
  }
  return ReadableTextOf(form, options.m_form, CountAtoms(condition, !options.m_bKeepIn));
}

std::string ErrorObject(const std::string& message, std::size_t line, std::size_t column) {
  return LineOf(Json{{"error", message}, {"line", line}, {"column", column}});
}
