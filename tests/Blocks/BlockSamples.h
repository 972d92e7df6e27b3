#pragma once

#include <functional>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTELMNativeTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"

// Query blocks for tests. What these give belongs to the caller, or to the node that takes it.

inline RqJoinNode* NodeOf(RqAbstractTable* pTable) {
  return new RqJoinNode(new RqTableReference(SqlTableRef::kInnerJoin, pTable, nullptr, nullptr, kDriving_UnknownTable),
                        false);
}

/// SELECT columns FROM tables; either may be none.
inline RqList* List(const RqExprVector& columns, const std::vector<RqAbstractTable*>& tables = {}) {
  auto* const pList = new RqList(0);
  for (RqExpr* const pExpr : columns) pList->GetProjection()->AddColumn(new RqDerivedColumn(pExpr, 0));
  std::vector<RqJoinNode*> nodes;
  for (RqAbstractTable* const pTable : tables) nodes.push_back(NodeOf(pTable));
  if (!nodes.empty()) pList->SetJoinSpec(new RqJoinSpec(nodes));
  return pList;
}

inline RqAbstractTable* Table(int number) {
  return new RqAtomicTable(nullptr, number, VoidID(kTIDATable, static_cast<unsigned>(number)));
}

inline RqExprCond* Equal(RqExpr* pLeft, RqExpr* pRight) { return new RqExprCondEquality(pLeft, pRight, false); }

/// A block over a table and a derived table that are linked, with every clause and field that travels.
inline RqList* FullList() {
  auto* const pInner = List({Col(L"x", 3), Col(L"y", 3)}, {Table(3)});
  auto* const pDerived = new RqDerivedTable(pInner, 2);
  pDerived->SetCommonExprName(L"q");
  RqDerivedColumn* const pX = pInner->GetProjection()->GetIthColumn(0);
  auto* const pList = List({Col(L"a"), new RqDerivedColumnReference(pX)}, {Table(1), pDerived});
  pList->GetProjection()->GetIthColumn(0)->SetBreakStatus(RqDerivedColumn::kNoDuplicates);
  RqJoinSpec& joinSpec = *pList->GetJoinSpec();
  joinSpec.GetIthJoinNode(0)->AddLink(joinSpec.GetIthJoinNode(1), Equal(Col(L"b"), new RqDerivedColumnReference(pX)),
                                      SqlTableRef::kInnerJoin, k_One_To_Many, nullptr, false);
  RqTableReference& reference = *joinSpec.GetIthTableReference(0);
  reference.SetLeftJoinColumnIndexes({0});
  reference.SetRightJoinColumnIndexes({1});
  reference.SetNullsAreEqualFlags({true});
  reference.SetFactTableIndex(4);
  reference.SetJoinAbsorbed(true);
  reference.SetRemoveCandidacy(true);
  reference.SetEstimatedDictionarySize(5);
  reference.SetDictionaryRowCount(6);
  pList->SetDetailFilter(new RqDetailFilter(Equal(new RqDerivedColumnReference(pX), Int(1))));
  pList->SetSummaryFilter(new RqSummaryFilter(Equal(Col(L"a"), Int(2))));
  RqExprVector columns{Col(L"b"), Col(L"a")};
  RqExprVector grain{Col(L"day")};
  auto* const pGroupBy = new RqGroupBy(columns, grain, RqGroupBy::kUnknown);
  pGroupBy->SetGroupingSet({0, 2});
  pList->SetGroupBy(pGroupBy);
  pList->SetHaving(new RqHaving(Equal(Col(L"a"), Int(3))));
  pList->SetOrderBy(new RqOrderBy({{1, RqSortSpec::kDesc, true, false, RqSortSpec::kLast}, RqSortSpec()}, false));
  pList->SetDistinct(true);
  pList->SetBreakColumns({1});
  pList->SetDynamicSamplingLevel(4);
  pList->SetProbeSqls({{L"m", ProbeQuery::kFactProbeQuery, L"select 1", {L"p"}, VoidID(3003, 1U)}});
  pList->SetHdsEvaluateBreakFilter(true);
  pList->SetIsMarkedForRemoteRPD(true);
  HDSSummaryParameters parameters;
  parameters.m_HDSSummaryColumns = {{1, L"sum"}};
  pList->SetHDSSummaryParameters(parameters);
  return pList;
}

/// A sample of every kind of block and table that travels.
inline std::vector<std::function<RqNode*()>> BlockSamples() {
  const auto branches = [] { return std::vector<RqAbstractList*>{List({Int(1)}), List({Int(2)}), List({Int(3)})}; };
  return {
      [] { return FullList(); },
      [=] {
        auto lists = branches();
        return new RqUnion(lists, true);
      },
      [=] {
        auto lists = branches();
        return new RqIntersect(lists, true);
      },
      [=] {
        auto lists = branches();
        return new RqExcept(lists, false);
      },
      [] {
        auto* const pShared = new RqSharedList(new RqProjection(7), nullptr);
        pShared->SetShared(true);
        pShared->SetWithSupported(false);
        return pShared;
      },
      [] {
        return new RqBreakFilter(List({Int(1), Int(2)}), {1, 0}, {0});
      },
      [] { return new RqCanonicalMap(List({Int(1)})); },
      [] {
        auto* const pStats = new StatsStruct;
        pStats->m_request.m_statement = L"select 1";
        return new RqStats(List({Int(1)}), pStats);
      },
      [] {
        return new RqOpaqueTable(nullptr, 1, VoidID(kTIDATable, 4U), VoidID(kTIDADatabase, 1U), kOpaqueTableTypeSelect);
      },
      [] {
        auto* const pTable =
            new RqTransientOpaqueTable(nullptr, 2, L"select 1", VoidID(kTIDADatabase, 1U), kOpaqueTableTypeSelect);
        pTable->AddTransientColumn(VoidID(kTIDAColumn, 5U));
        pTable->SetColumnTypeInfo(L"c", KXTypeInfo(KXDoubleData, 1, 2, 0));
        return pTable;
      },
      [] { return new RqExternalTable(nullptr, L"ext", VoidID(kTIDADatabase, 1U), ServerInfo::kSQLite); },
      [] { return new RqTELMNativeTable(); },
  };
}
