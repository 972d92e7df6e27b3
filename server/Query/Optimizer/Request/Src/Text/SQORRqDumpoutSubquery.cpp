#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

// The text of subqueries and of the conditions over their rows.

// ---------------------------------------------------------------------------------------------------------------------
// Subqueries

bool RqDumpout::Visit(RqExprLogicalSubquery& expr) {
  Append(expr.GetSubquerySQLString());
  return true;
}

bool RqDumpout::Visit(RqExprPhysicalSubquery& expr) {
  Append(L"Subquery(");
  Append(expr.GetSubqueryDumpout());
  if (const VoidIDSet& targets = expr.GetShippableTargets(); !targets.empty()) {
    Append(L", Number of pushable sources: ");
    Append(targets.size());
  }
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprPersistSubquery& expr) {
  Append(L"select ");
  AppendName(expr.GetColumnName());
  Append(L" from ");
  AppendName(expr.GetTableName());
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conditions

/// The value, the opening of the quantifier, the subquery and the bracket that closes it.
bool RqDumpout::PrintQuantified(RqExpr& expr, std::wstring_view opening) {
  PrintBinary(expr, opening);
  Append(L")");
  return true;
}

bool RqDumpout::Visit(RqExprCondAnyLessThan& expr) { return PrintQuantified(expr, L" <ANY ("); }
bool RqDumpout::Visit(RqExprCondAnyLessEqual& expr) { return PrintQuantified(expr, L" <=ANY ("); }
bool RqDumpout::Visit(RqExprCondAnyGreaterThan& expr) { return PrintQuantified(expr, L" >ANY ("); }
bool RqDumpout::Visit(RqExprCondAnyGreaterEqual& expr) { return PrintQuantified(expr, L" >=ANY ("); }
bool RqDumpout::Visit(RqExprCondAnyNotEqual& expr) { return PrintQuantified(expr, L" <>ANY ("); }
bool RqDumpout::Visit(RqExprCondAllLessThan& expr) { return PrintQuantified(expr, L" <ALL ("); }
bool RqDumpout::Visit(RqExprCondAllLessEqual& expr) { return PrintQuantified(expr, L" <=ALL ("); }
bool RqDumpout::Visit(RqExprCondAllEqual& expr) { return PrintQuantified(expr, L" =ALL ("); }
bool RqDumpout::Visit(RqExprCondAllGreaterThan& expr) { return PrintQuantified(expr, L" >ALL ("); }
bool RqDumpout::Visit(RqExprCondAllGreaterEqual& expr) { return PrintQuantified(expr, L" >=ALL ("); }

bool RqDumpout::Visit(RqExprCondExists& expr) {
  Append(L" EXISTS (");
  PrintOperand(expr, RqExprCondExists::kSubquery);
  Append(L")");
  return true;
}
