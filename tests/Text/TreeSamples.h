#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "Aggregates/AggrSamples.h"
#include "Conditions/SubquerySamples.h"
#include "Expressions/ExprSamples.h"
#include "Expressions/ScalarSamples.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

// Samples of every class of expressions and of references to the repository, for tests of the text form and of the byte
// form.

/// The repository and the session that the samples speak of.
struct SampleRepository {
  SampleRepository() { m_gateway.SetRepositoryUniqueID32(1).SetExternal(m_scratch); }

  template <class Object, class... Args>
  VoidID MakeObject(const Args&... args) {
    return m_gateway.MakeObject<Object>(args...).GetID();
  }

  MemoryGateway m_gateway;
  const VoidID m_sales = MakeObject<MemoryEntity>(10u, L"Sales");
  const VoidID m_amount = MakeObject<MemoryAttribute>(11u, L"Amount", m_sales);
  const VoidID m_time = MakeObject<MemoryDimension>(20u, L"Time");
  const VoidID m_quarter = MakeObject<MemoryLevel>(21u, L"Quarter", m_time);
  const VoidID m_fiscal = MakeObject<MemoryPresentationHierarchy>(22u, L"Fiscal");
  const VoidID m_warehouse = MakeObject<MemoryDatabase>(40u, L"Warehouse", ServerInfo::kDefault);
  const VoidID m_scratch = MakeObject<MemoryDatabase>(41u, L"Scratch", ServerInfo::kDefault);
  const VoidID m_facts = MakeObject<MemoryTable>(30u, L"FACTS", VoidID::NullID, m_warehouse);
  const VoidID m_amt = MakeObject<MemoryColumn>(31u, L"AMT", m_facts, KXTypeInfo());
};

/// An expression with any operands, null ones among them.
template <class Expr>
Expr* Make(std::initializer_list<RqExpr*> operands = {}) {
  auto* const pExpr = new Expr;
  for (RqExpr* const pOperand : operands) pExpr->AddChild(pOperand);
  return pExpr;
}

template <class Class>
Class* Negated(Class* pCond) {
  pCond->Negate();
  return pCond;
}

inline std::vector<TreeSample> TreeSamples(SampleRepository& repository) {
  MemoryGateway& gateway = repository.m_gateway;
  const auto less = [](int left, int right) -> RqExprCond* { return new RqExprCondLess(Int(left), Int(right)); };
  const auto either = [&] { return new RqExprCondOr(less(1, 2), less(3, 4)); };
  const auto both = [&] { return new RqExprCondAnd(less(1, 2), less(3, 4)); };
  const auto list = [](std::initializer_list<RqExpr*> columns) { return Make<RqExprColumnList>(columns); };
  const auto rowsIn = [&] {
    return Make<RqExprCondMultiColumnIn>(
        {Row({Param(1), Param(2)}), Row({Row({Int(1), Int(2)}), list({Int(3), Int(4)})})});
  };
  const auto evaluate = [] {
    auto* const pPredicate = Make<RqExprEvaluatePredicate>({Int(1), Int(2)});
    pPredicate->SetFunctionDef(L"f('%1', %2)");
    return pPredicate;
  };
  RqExprPhysicalSubquery* const pShippable = PhysicalSubquery(L"RqList q");
  pShippable->SetShippableTargets({VoidID(kTIDADatabase, 1u), VoidID(kTIDADatabase, 2u)});
  const KXDateTime moment(2024, 1, 2, 3, 4, 5);
  std::vector<TreeSample> samples = {
      // Literals
      {Str(L"it's"), "'it's'", "'it''s'"},
      {Int(-2147483647 - 1), "-2147483648"},
      {new RqExprIntegerLiteral(7, true), "%7", nullptr, nullptr, kDoesNotTravel},
      {new RqExprFloatLiteral(0.1), "0.1"},
      {new RqExprNumberLiteral(Number(L"12.50")), "12.5"},
      {new RqExprDateLiteral(KXDate(2024, 2, 29)), "DATE '2024-02-29'"},
      {new RqExprDateLiteral(kxdatetime::kCurrentDate), "CURRENT_DATE"},
      {new RqExprTimeLiteral(KXTime(3, 4, 5)), "TIME '03:04:05'"},
      {new RqExprTimeLiteral(KXTime(3, 4, 5, 500000000)), "TIME '03:04:05.500000000'"},
      {new RqExprTimeLiteral(kxdatetime::kCurrentTime), "CURRENT_TIME"},
      {new RqExprDateTimeLiteral(moment, 0), "TIMESTAMP '2024-01-02 03:04:05'"},
      {new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5, 120000000), 3), "TIMESTAMP '2024-01-02 03:04:05.120'",
       nullptr, nullptr, kDoesNotTravel},
      {new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5, 120000001), 3),
       "TIMESTAMP '2024-01-02 03:04:05.120000001'"},
      {new RqExprDateTimeLiteral(kxdatetime::kCurrentDateTime, 3), "CURRENT_TIMESTAMP"},
      {new RqExprIntervalLiteral(L"INTERVAL '1' DAY"), "INTERVAL '1' DAY"},
      {new RqExprNullLiteral, "NULL"},
      // References
      {Filled<RqAttribute>([](RqAttribute& e) { e.SetIsSortKeyAttribute(true), e.SetDescriptorAttributeName(L"name"); },
                           &gateway, repository.m_amount),
       "1.3003:11", "\"Sales\".\"Amount\"", "Sales.Amount"},
      {new RqEntity(&gateway, repository.m_sales), "1.3002:10", "\"Sales\"", "Sales"},
      {new RqExprDimension(&gateway, repository.m_time), "[Dimension 1.3004:20]", "[Dimension \"Time\"]",
       "[Dimension Time]"},
      {new RqExprDimension(&gateway, repository.m_time, repository.m_fiscal), "[Dimension 1.3004:20, 1.3008:22]",
       "[Dimension \"Time\", \"Fiscal\"]", "[Dimension Time, Fiscal]"},
      {new RqExprLevel(&gateway, repository.m_quarter), "[Level 1.3005:21]", "[Level \"Time\".\"Quarter\"]",
       "[Level Quarter]"},
      {new RqExprMemberReference(new RqExprLevel(&gateway, repository.m_quarter), new RqExprStringLiteral(L"Q1")),
       "[Level 1.3005:21].'Q1'", "[Level \"Time\".\"Quarter\"].'Q1'", "[Level Quarter].'Q1'"},
      {Make<RqExprMemberReference>({new RqExprLevel(&gateway, repository.m_quarter), nullptr, Param(1), Param(2)}),
       "[Level 1.3005:21].ALL (?1, ?2)", "[Level \"Time\".\"Quarter\"].ALL (?1, ?2)", "[Level Quarter].ALL (?1, ?2)"},
      {Filled<RqTargetColumn>([](RqTargetColumn& e) { e.SetDataMiningColumn(true); }, &gateway, repository.m_amt, 3),
       "T3.3025:31", "\"FACTS\".\"AMT\"", "FACTS.AMT"},
      {new RqTargetColumn(L"a\"b", 3), "T3.a\"b", "\"T3\".\"a\"\"b\""},
      {new RqTargetColumn(L"a", RqTargetColumn::kUnknownTableNum), "a", "\"T-1\".\"a\""},
      {new RqTargetCubeColumn(L"cube", 4), "T4.cube", "\"T4\".\"cube\""},
      {new RqTargetCacheColumn(L"hit", 5), "T5.hit", "\"T5\".\"hit\""},
      {new RqExprSessionVar({L"AUTH", L"REGION"}, 2), "VALUEOF(AUTH.REGION)"},
      {Param(3), "?3"},
      {new RqHandleNode(Param(4)), "?4"},
      // Lists
      {list({Int(1), Str(L"b")}), "[ 1, 'b'] ", "1, 'b'"},
      {Row({Int(2)}), "[ 2] ", "2"},
      {Row({}), "[ ] ", ""},
      // Comparisons and connectives
      {new RqExprCondEquality(Int(1), Param(2), false), "1 = ?2"},
      {new RqExprCondEquality(Int(1), Param(2), true), "1 =NullsEqual ?2"},
      {new RqExprCondNotEqual(Int(2), Int(1)), "2 <> 1"},
      {less(1, 2), "1 < 2"},
      {new RqExprCondLessEqual(Int(1), Int(2)), "1 <= 2"},
      {new RqExprCondGreater(Int(1), Int(2)), "1 > 2"},
      {new RqExprCondGreaterEqual(Int(1), Int(2)), "1 >= 2"},
      {both(), "1 < 2 and 3 < 4"},
      {either(), "1 < 2 or 3 < 4"},
      {Make<RqExprCondAnd>({either(), less(5, 6)}), "(1 < 2 or 3 < 4) and 5 < 6"},
      {Make<RqExprCondOr>({both(), either()}), "1 < 2 and 3 < 4 or 1 < 2 or 3 < 4"},
      {new RqExprCondNot(either()), "not (1 < 2 or 3 < 4)"},
      {new RqExprCondNot(both()), "not 1 < 2 and 3 < 4"},
      // Predicates
      {new RqExprCondIsNull(Param(1), false), "?1 is null"},
      {new RqExprCondIsNull(Param(1), true), "?1 is not null"},
      {new RqExprCondBetween(Param(1), Int(2), Int(3), false), "?1 between 2 and 3"},
      {new RqExprCondBetween(Param(1), Int(2), Int(3), true), "?1 not between 2 and 3"},
      {new RqExprCondLike(Param(1), Str(L"a%"), false, nullptr), "?1 like 'a%'"},
      {new RqExprCondLike(Param(1), Str(L"a%"), true, Str(L"!")), "?1 not like 'a%' escape '!'"},
      {new RqExprCondIn(Param(1), list({Int(1), Int(2)}), false), "?1 in ([ 1, 2] )", "?1 in (1, 2)"},
      {new RqExprCondIn(Param(1), list({Int(1)}), true), "?1 not in ([ 1] )", "?1 not in (1)"},
      {rowsIn(), "(?1, ?2) in ((1, 2), (3, 4))"},
      {Negated(rowsIn()), "(?1, ?2) not in ((1, 2), (3, 4))"},
      {Make<RqExprCondMultiColumnIn>({list({Param(1)}), list({new RqExprCondIn(Param(2), list({Int(1)}), false)})}),
       "(?1) in ((?2 in ([ 1] )))", "(?1) in ((?2 in (1)))"},
      // Special conditions
      {Make<RqExprCondGroupByContent>({Param(1), Int(2)}), "[GroupByContent ?1, 2]"},
      {new RqExprCondOuterJoinFilter(less(1, 2), SqlTableRef::kInnerJoin), "OuterJoinFilter[Inner join, 1 < 2]"},
      {new RqExprCondAtomicWrapper(either()), "Atomic[1 < 2 or 3 < 4]"},
      {evaluate(), "Evaluate_Predicate( 'f('%1', %2)', 1, 2) ", "Evaluate_Predicate( 'f(''%1'', %2)', 1, 2) "},
      {Negated(evaluate()), "not Evaluate_Predicate( 'f('%1', %2)', 1, 2) ",
       "not Evaluate_Predicate( 'f(''%1'', %2)', 1, 2) "},
      {Make<RqExprEvaluatePredicate>({}), "Evaluate_Predicate( '') "},
      // Subqueries; the others are shared samples
      {pShippable, "Subquery(RqList q, Number of pushable sources: 2)", nullptr, nullptr, kDoesNotTravel},
      {new RqExprCondIn(Param(1), LogicalSubquery(L"SELECT 1"), false), "?1 in (SELECT 1)"},
      // Functions whose text depends on the settings; the others are shared samples
      {MadeOf<RqExprEvaluate>(Exprs(Int(1)), L"f('%1')"), "Evaluate( 'f('%1')', 1) ", "Evaluate( 'f(''%1'')', 1) "},
      {MadeOf<RqExprPredict>(Exprs(), repository.m_warehouse, L"m", false), "Predict(3023:40, modelname=m, [], [])",
       "Predict('Warehouse', modelname=m, [], [])", "Predict('Warehouse', modelname=m, [], [])"},
      {new RqExprTimeDimSeqNum(Param(1), RefALevel(&gateway, repository.m_quarter)), "TimeDimSeqNum(?1, 1.3005:21 )",
       "TimeDimSeqNum(?1, \"Time\".\"Quarter\" )", "TimeDimSeqNum(?1, Quarter )", kDoesNotTravel},
      // Hierarchy predicates
      {new RqExprIsAncestor(Param(1), Param(2), Int(2), false), "IsAncestor(?1, ?2, 2)"},
      {Filled<RqExprIsAncestor>([](auto& e) { e.SetLTSVoidID(VoidID(kTIDALogicalTable, 7u)); }, Param(1), Param(2),
                                Int(2), false),
       "IsAncestor(?1, ?2, 2, 3001:7)"},
      {new RqExprIsAncestor(Param(1), Param(2), Int(2), true), " not IsAncestor(?1, ?2, 2)"},
      {new RqExprIsAncestor(Param(1), false), "IsLeaf(?1)"},
      {new RqExprIsAncestor(Param(1), true), " not IsLeaf(?1)"},
      {new RqExprIsRoot(Param(1)), "IsRoot(?1)"},
      {new RqExprIsSibling(Param(1), Param(2), Param(3), false), "IsSibling(?1, ?2, 1, ?3)"},
      {Negated(new RqExprIsSibling(Param(1), Param(2), Param(3), true)), " not IsSibling(?1, ?2, 1, ?3, include root)"},
      {Make<RqExprIsLeaf>({Param(1), Param(2)}), "IsLeaf(?1, ?2)"},
      {new RqExprIsLeaf(Param(1), true), " not IsLeaf(?1)"},
  };
  for (const ScalarSample& sample : ScalarSamples()) {
    samples.push_back({sample.m_make(), sample.m_text, nullptr, nullptr, sample.m_bTravels});
  }
  for (const TreeSample& sample : SubquerySamples()) samples.push_back(sample);
  for (const TreeSample& sample : AggrSamples()) samples.push_back(sample);
  return samples;
}
