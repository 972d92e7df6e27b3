// A program outside the tree: makes a filter, normalizes it and checks what comes out.

#include <cstdio>

#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

RqExprCond* Equals(const wchar_t* column, int value) {
  return new RqExprCondEquality(new RqTargetColumn(KXString(column), RqTargetColumn::kUnknownTableNum),
                                new RqExprIntegerLiteral(value, false), false);
}

}  // namespace

int main() {
  MemoryGateway gateway;
  const OwnedRqExprCondPtr filter(
      new RqExprCondOr(new RqExprCondAnd(Equals(L"a", 1), Equals(L"b", 2)), Equals(L"c", 3)));
  ToCNF toCNF;
  const OwnedRqExprCondPtr normal(toCNF(*filter));
  ConstRqExprVector conjuncts;
  toCNF.GetConjuncts(conjuncts);
  const std::string text = RqDumpout::StringFrom(normal.Get()).ToUTF8();
  std::puts(text.c_str());
  return toCNF.GetConversionSuccess() && conjuncts.size() == 2 && !text.empty() ? 0 : 1;
}
