#include "Query/Optimizer/Request/Text/SQORPlanChecker.h"

#include <gtest/gtest.h>

#include <list>
#include <string>
#include <utility>
#include <vector>

#include "Blocks/BlockSamples.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrPlain.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrWrapper.h"
#include "Query/Optimizer/Request/Text/SQORToString.h"
#include "TestUtil.h"
#include "Text/TreeSamples.h"

namespace {

RqExpr* Columns() { return Make<RqExprColumnList>({Col(L"b"), Col(L"a")}); }

std::vector<RqNode*> Samples(SampleRepository& repository) {
  std::vector<RqNode*> samples{
      Make<RqExprAggrSum>({Col(L"a"), Columns(), Columns()}),
      Make<RqExprAggrCountStar>({Str(L"*"), Columns(), nullptr}),
      Make<RqExprAggrNtile>({Col(L"a"), Columns(), nullptr, Int(4)}),
      Make<RqExprAggrBottomN>({Col(L"a"), Columns(), Columns(), Int(3)}),
      Make<RqExprAggrIf>({Make<RqExprAggrSum>({Col(L"a"), Columns(), nullptr}), nullptr, nullptr,
                          new RqExprCondLess(Col(L"a"), Int(1))}),
      Make<RqExprVariableReplace>({Col(L"a"), nullptr, nullptr, Str(L"name"), Int(1), Str(L"name"), Int(2)}),
  };
  for (const TreeSample& sample : TreeSamples(repository)) samples.push_back(sample.m_pNode);
  for (const auto& make : BlockSamples()) samples.push_back(make());
  return samples;
}

std::string IdOf(const RqNode* pNode) { return pNode->GetNodeID().ToString().ToUTF8(); }

/// What is written of a tree.
std::string Report(RqNode& node, int numFaults) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(PlanChecker::CheckPlan(nullptr, node), numFaults);
  return testing::internal::GetCapturedStderr();
}

std::string DuplicateReport(const RqNode* pNode, const RqNode* pOwner, const RqNode* pList, const std::string& text) {
  return "Plan Checker found duplicate nodeid " + IdOf(pNode) + ", owner id " + IdOf(pOwner) + ", containing list id " +
         IdOf(pList) + "\n ** local node " + text + " ** \n";
}

int CountSilently(RqNode& node) {
  PlanChecker checker(nullptr, false);
  node.Tour(checker);
  return checker.GetNumFaults();
}

TEST(PlanChecker, MeetsEveryNodeOnceAndEachNodeOfACopyASecondTime) {
  SampleRepository repository;
  for (RqNode* const pSample : Samples(repository)) {
    const Heap<RqHandleNode> root(new RqHandleNode(pSample));
    SCOPED_TRACE(TextOf(*root));
    const int numFaults = root->GetRqNode()->GetObjectType() == kRqSharedList ? 1 : 0;
    EXPECT_EQ(Report(*root, numFaults), numFaults == 0 ? "" : "ERROR: Dangling NULL ptr");

    std::list<RqNode*> nodes;
    root->GetRqNode()->GetObjects(nodes);
    root->AddChild(root->GetRqNode()->DeepCopy(false));
    testing::internal::CaptureStderr();
    EXPECT_EQ(CountSilently(*root), static_cast<int>(nodes.size()) + 2 * numFaults);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
}

TEST(PlanChecker, FiltersWithoutConditionsAndTheWalkGoesOn) {
  const Heap<RqList> list(List({Col(L"a")}));
  RqExpr* const pColumn = list->GetProjection()->GetIthColumn(0)->GetExpr();
  list->SetDetailFilter(new RqDetailFilter);
  list->SetSummaryFilter(new RqSummaryFilter);
  list->SetHaving(new RqHaving(Equal(pColumn->DeepExprCopy(false), Int(1))));
  EXPECT_EQ(Report(*list, 3),
            "*********** ERROR: RqDetailFilter node with no condition"
            "*********** ERROR: RqSummaryFilter node with no condition" +
                DuplicateReport(pColumn, pColumn->GetParent(), list.Get(), "T1.a"));
}

TEST(PlanChecker, TheContainingListIsThatOfTheTableReference) {
  RqList* const pInner = List({Col(L"a")});
  RqExpr* const pColumn = pInner->GetProjection()->GetIthColumn(0)->GetExpr();
  RqExprCond* const pCond = Equal(pColumn->DeepExprCopy(false), Int(1));
  auto* const pJoin = new RqTableReference(SqlTableRef::kLeftOuterJoin, new RqDerivedTable(pInner, 2), pCond, Table(1),
                                           kDriving_UnknownTable);
  std::vector<RqJoinNode*> nodes{new RqJoinNode(pJoin, false)};
  const Heap<RqList> list(List({}));
  list->SetJoinSpec(new RqJoinSpec(nodes));
  EXPECT_EQ(Report(*list, 1), DuplicateReport(pColumn, pColumn->GetParent(), list.Get(), "T1.a"));

  std::vector<RqAbstractList*> branches{List({Int(1)}), new RqSharedList(nullptr, list.Get())};
  branches[1]->SetNodeID(branches[0]->GetNodeID());
  RqUnion unionNode(branches, true);
  EXPECT_EQ(Report(unionNode, 1), DuplicateReport(unionNode.GetIthList(0), &unionNode, &unionNode,
                                                  "\nRqSharedList sharing " + IdOf(list.Get())));
}

TEST(PlanChecker, EmptyListsOfALimitedRankAreNotMet) {
  const Heap<RqExpr> topN(Make<RqExprAggrTopN>({Col(L"a"), new RqExprColumnList, new RqExprColumnList, Int(3)}));
  for (const int slot : {RqExprAggr::kControlBreak, RqExprAggr::kComputeBreak}) {
    topN->GetIthOperand(slot)->SetNodeID(topN->GetNodeID());
  }
  EXPECT_EQ(CountSilently(*topN), 0);
  topN->GetIthOperand(RqExprAggrTopN::kArgument)->SetNodeID(topN->GetNodeID());
  EXPECT_EQ(CountSilently(*topN), 1);
}

template <class Node>
Heap<RqNode> With(std::initializer_list<RqNode*> children) {
  Heap<RqNode> node(new Node);
  for (RqNode* const pChild : children) node->AddChild(pChild);
  return node;
}

TEST(PlanCheckerDeathTest, HalfANodeEndsTheProcess) {
  EXPECT_DEATH(CountSilently(*With<RqUnion>({List({})})), "unionNode\\.GetNumLists\\(\\) >= 2");
  EXPECT_DEATH(CountSilently(*With<RqIntersect>({List({})})), "intersectNode\\.GetNumLists\\(\\) >= 2");
  EXPECT_DEATH(CountSilently(*With<RqExcept>({List({})})), "exceptNode\\.GetNumLists\\(\\) >= 2");
  constexpr const char* kHalfAPair = "i \\+ 1 < expr\\.GetNumOperands\\(\\)";
  EXPECT_DEATH(CountSilently(*With<RqExprLookupCase>({Int(1), nullptr, Int(2)})), kHalfAPair);
  EXPECT_DEATH(CountSilently(*With<RqExprIfCase>({Int(1), Equal(Int(1), Int(1))})), kHalfAPair);
  EXPECT_DEATH(CountSilently(*With<RqExprAggrCountStar>({nullptr, nullptr, nullptr})), "expr\\.GetAggrExpr\\(\\)");
}

TEST(ToString, VectorsAndNodes) {
  const Heap<RqExpr> a(Col(L"a"));
  const Heap<RqExpr> one(Int(1));
  std::vector<Heap<RqExpr>> exprs;
  exprs.emplace_back(Col(L"b"));
  exprs.emplace_back(nullptr);
  KXNodeVector<Heap<RqExprCond>> conds;
  conds.emplace_back(new RqExprCondLess(Col(L"b"), Int(2)));
  const std::pair<KXString, const wchar_t*> rows[] = {
      {ToString(std::vector<int>{}, nullptr), L" [ ]"},
      {ToString(std::vector<int>{1, -2}, nullptr), L" [ 1 -2 ]"},
      {ToString(UInt16Vector{}, nullptr), L"[]"},
      {ToString(UInt16Vector{1, 65535}, nullptr), L"[1,65535]"},
      {ToString(std::vector<unsigned int>{4294967295U, 0}, nullptr), L"[4294967295,0]"},
      {ToString(static_cast<const RqNode*>(nullptr), nullptr), L""},
      {ToString(*a, nullptr), L"T1.a"},
      {ToString(a.Get(), nullptr), L"T1.a"},
      {ToString(ConstRqExprVector{}, nullptr), L"[]"},
      {ToString(ConstRqExprVector{a.Get(), one.Get()}, nullptr), L"[T1.a, 1]"},
      {ToString(RqExprVector{one.Get(), a.Get()}, nullptr), L"[1, T1.a]"},
      {ToString(exprs, nullptr), L"[T1.b, ]"},
      {ToString(conds, nullptr), L"[T1.b < 2]"},
      {ToString(RqExprPairVector{{a.Get(), one.Get()}, {one.Get(), nullptr}}, nullptr), L"[1 as T1.a,  as 1]"},
      {ToString(RqJoinLinkPtrList{}, nullptr, true), L"[]"},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(text, expected);
}

TEST(ToString, JoinLinks) {
  const Heap<RqList> list(FullList());
  RqJoinNode& in = *list->GetJoinSpec()->GetIthJoinNode(0);
  in.AddLink(nullptr, Equal(Col(L"a"), Int(5)), SqlTableRef::kInnerJoin, k_One_To_One, nullptr, true);
  const std::string inNode = "(InNode:" + IdOf(&in) + ") (OutNode:";
  const std::string outNode = IdOf(list->GetJoinSpec()->GetIthJoinNode(1));
  EXPECT_EQ(ToString(in.GetIncidentLinks(), nullptr, false).ToUTF8(), "[" + inNode + outNode + ") , " + inNode + ") ]");
  EXPECT_EQ(ToString(in.GetIncidentLinks(), nullptr, true).ToUTF8(),
            "[" + inNode + outNode + ") T1.b = D2.c1 not_attached, " + inNode + ") T1.a = 5 attached]");
}

}  // namespace
