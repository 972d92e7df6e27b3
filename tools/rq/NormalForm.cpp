#include "rq/NormalForm.h"

#include <nlohmann/json.hpp>

#include "Query/Optimizer/Request/Conditions/SQORInwardNegationForm.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/RowIns.h"

namespace {

using Json = nlohmann::ordered_json;
using Form = NormalizeOptions::Form;

std::string TextOf(const RqExprCond* pCond) { return RqDumpout::StringFrom(pCond).ToUTF8(); }

std::vector<std::string> TextsOf(const std::vector<const RqExprCond*>& clauses) {
  std::vector<std::string> texts;
  for (const RqExprCond* const pClause : clauses) texts.push_back(TextOf(pClause));
  return texts;
}

// ---------------------------------------------------------------------------------------------------------------------
// JSON

/// One line. Text that is not UTF-8 cannot come up, and would show as U+FFFD.
std::string LineOf(const Json& object) { return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n'; }

std::string JsonOf(const std::string& input, const NormalForm& form, Form kind) {
  const std::vector<std::string> clauses = TextsOf(form.m_clauses);
  Json object;
  object["input"] = input;
  switch (kind) {
    case Form::kCnf:
      object["success"] = form.m_bSuccess;
      object["result"] = form.m_cnf.GetCNF() ? Json(TextOf(form.m_cnf.GetCNF())) : Json();
      object["conjuncts"] = clauses;
      break;
    case Form::kCnfConjuncts:
      object["success"] = form.m_bSuccess;
      object["conjuncts"] = clauses;
      break;
    case Form::kDnf:
      object["tooComplicated"] = form.m_bTooComplicated;
      object["disjuncts"] = clauses;
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
std::string Outcome(bool bSuccess, bool bTooComplicated, Form kind) {
  if (bSuccess) {
    return bTooComplicated ? "left as it stands: too complicated to convert, and in conjunctive form already"
                           : "converted";
  }
  if (!bTooComplicated) {
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
  for (const RqExprCond* const pClause : form.m_clauses) {
    const bool bInParentheses = !bDisjunction && pClause->IsOrCond() && form.m_clauses.size() > 1;
    const std::string text = TextOf(pClause);
    lines += lines.empty() ? "    " : bDisjunction ? " or " : "and ";
    lines += bInParentheses ? '(' + text + ')' : text;
    lines += '\n';
  }
  return lines;
}

}  // namespace

NormalForm ConvertToNormalForm(RqExprCond& condition, const NormalizeOptions& options) {
  ExpandRowInsToNegate(condition);
  const bool bConvertCondIn = !options.m_bKeepIn;
  NormalForm form;
  switch (options.m_form) {
    case Form::kCnf:
      form.m_cnf.GenerateCNF(condition, options.m_bForce, bConvertCondIn, options.m_limit);
      form.m_bSuccess = form.m_cnf.GetConversionSuccess();
      form.m_cnf.GetConjuncts(form.m_clauses);
      return form;
    case Form::kCnfConjuncts: {
      ToCNFConjuncts toConjuncts;
      toConjuncts.GenerateOwnedCNFConjuncts(condition, bConvertCondIn);
      form.m_bSuccess = toConjuncts.GetConversionSuccess();
      toConjuncts.ReleaseConjuncts(form.m_ownedClauses);
      break;
    }
    case Form::kDnf: {
      form.m_bTooComplicated =
          !options.m_bForce && ToDNFDisjuncts::IsCondTooComplicatedToConvert(condition, options.m_limit);
      form.m_bSuccess = !form.m_bTooComplicated;
      if (form.m_bTooComplicated) return form;
      ToDNFDisjuncts toDisjuncts;
      toDisjuncts.GenerateOwnedDNFDisjuncts(condition, bConvertCondIn);
      toDisjuncts.ReleaseDisjuncts(form.m_ownedClauses);
      break;
    }
  }
  for (const OwnedRqExprCondPtr& clause : form.m_ownedClauses) form.m_clauses.push_back(clause.Get());
  return form;
}

std::string NormalFormText(RqExprCond& condition, const NormalizeOptions& options) {
  const std::string input = TextOf(&condition);
  const NormalForm form = ConvertToNormalForm(condition, options);
  if (options.m_format == NormalizeOptions::Format::kJson) return JsonOf(input, form, options.m_form);
  // Wanted: where a conjunctive form was given up, what there is of it may lack a part of the condition. It is not
  // shown; the condition is, as it stands.
  const bool bHasForm = form.m_bSuccess || options.m_form == Form::kCnfConjuncts;
  const std::size_t nClauses = bHasForm ? form.m_clauses.size() : 0;
  const std::string lines = nClauses > 0 ? LinesOf(form, options.m_form)
                            : bHasForm   ? std::string("    always true\n")
                                         : "    " + input + '\n';
  const bool bTooComplicated =
      options.m_form == Form::kDnf
          ? form.m_bTooComplicated
          : ToCNF::IsCondTooComplicated(condition, options.m_form == Form::kCnf ? options.m_limit : -1);
  return lines + Counted(CountAtoms(condition, !options.m_bKeepIn), "atom") + ", " + Counted(nClauses, "clause") +
         ", " + Outcome(form.m_bSuccess, bTooComplicated, options.m_form) + '\n';
}

std::string ErrorObject(const std::string& message, std::size_t line, std::size_t column) {
  return LineOf(Json{{"error", message}, {"line", line}, {"column", column}});
}
