#pragma once

#include <string>
#include <vector>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"

/// How conditions are normalized and shown.
struct NormalizeOptions {
  enum class Form {
    kCnf,           ///< ToCNF: one condition and its conjuncts.
    kCnfConjuncts,  ///< ToCNFConjuncts: conjuncts that stand alone, with their atoms sorted.
    kDnf,           ///< ToDNFDisjuncts: the same for disjuncts.
  };
  enum class Format { kText, kJson };

  Form m_form = Form::kCnf;
  Format m_format = Format::kText;
  bool m_bKeepIn = false;  ///< An IN over a list stays one atom.
  bool m_bForce = false;   ///< kCnf: a disjunction at the top may have any number of terms; kDnf: m_limit is none.
  int m_limit = -1;        ///< Of the estimated clauses; negative: the environment's, 0: none.
};

/// What became of a condition.
struct NormalForm {
  bool m_bTooComplicated = false;            ///< kDnf: above the limit, and so not tried.
  bool m_bSuccess = true;                    ///< Not given up.
  std::vector<const RqExprCond*> m_clauses;  ///< Lent. They live as long as this and the condition do.
  ToCNF m_cnf;                               ///< kCnf: has the form as one condition.
  OwnedRqExprCondVector m_ownedClauses;      ///< The others: the clauses.
};

/// Converts a condition, which is taken to pieces where that is needed: an IN over rows below a negated AND or OR is
/// expanded, because the library has no negation of it. Raises ErrorMessage when the stack runs low.
NormalForm ConvertToNormalForm(RqExprCond& condition, const NormalizeOptions& options);

/// ConvertToNormalForm as text that ends with a line feed: an object of JSON on one line, or lines to read.
std::string NormalFormText(RqExprCond& condition, const NormalizeOptions& options);

/// The object of JSON for a condition that has an error, as a line.
std::string ErrorObject(const std::string& message, std::size_t line, std::size_t column);
