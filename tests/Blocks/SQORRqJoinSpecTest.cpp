#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"

#include <gtest/gtest.h>

#include <tuple>

#include "Blocks/JoinGraphText.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "TestUtil.h"

namespace {

Heap<RqJoinSpec> Spec(const std::string& nodes, const std::string& links) {
  std::vector<RqJoinNode*> graph = Graph(nodes, links);
  return Heap(new RqJoinSpec(graph));
}

std::string SpecText(RqJoinSpec& spec) {
  std::vector<RqJoinNode*> nodes;
  for (int i = 0; i < spec.GetNumTableReferences(); ++i) nodes.push_back(spec.GetIthJoinNode(i));
  return GraphText(nodes);
}

Heap<RqJoinSpec> CopyOf(const RqJoinSpec& spec) { return Heap(static_cast<RqJoinSpec*>(spec.DeepCopy(false))); }

RqJoinLink* FirstLink(RqJoinNode* pNode) { return pNode->GetIncidentLinks().front(); }

/// A second link is added to "A inner B c1" of cardinality 0.
TEST(RqJoinNode, LinksThatMerge) {
  using Join = SqlTableRef;
  const std::tuple<char, char, const char*, SqlTableRef::JoinType, bool, const char*> kCases[] = {
      {'A', 'B', "c2", Join::kInnerJoin, false, "0 inner 1 c1&c2 #0"},
      {'B', 'A', "c2", Join::kInnerJoin, false, "0 inner 1 c1&c2 #0"},
      {'A', 'B', "-", Join::kInnerJoin, false, "0 inner 1 c1 #0"},
      {'A', 'B', "c1", Join::kLeftOuterJoin, true, "0 inner 1 c1 #0"},
      {'A', 'B', "c2", Join::kLeftOuterJoin, false, "0 inner 1 c1 #0, 0 left 1 c2 #0"},
      {'A', 'B', "c2", Join::kInnerJoin, true, "0 inner 1 c1 #0, 0 inner 1 c2 #0 !"},
      {'A', 'C', "c1", Join::kInnerJoin, false, "0 inner 1 c1 #0, 0 inner 2 c1 #0"},
      {'A', '.', "c1", Join::kInnerJoin, false, "0 inner 1 c1 #0, 0 inner . c1 #0"},
      {'B', 'B', "c2", Join::kInnerJoin, false, "0 inner 1 c1&c2 #0"},
  };
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  for (const auto& [in, out, cond, type, bAttached, expected] : kCases) {
    const Heap<RqJoinSpec> spec = Spec("A B C", "A inner B c1");
    RqJoinNode* const pOut = out == '.' ? nullptr : spec->GetIthJoinNode(out - 'A');
    spec->GetIthJoinNode(in - 'A')->AddLink(pOut, Cond(cond), type, k_One_To_One, nullptr, bAttached);
    EXPECT_EQ(SpecText(*spec), std::string("(A) (B) (C), ") + expected);
  }
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
}

TEST(RqJoinSpec, InnerJoinConditionsGoToTableReferences) {
  const std::tuple<const char*, const char*, const char*, bool> kCases[] = {
      {"A/c2 B", "A inner B c1", "(A on c1&c2) (B), 0 inner 1 c1 #0 !", false},
      {"A/c1 B", "A inner B c1", "(A on c1) (B), 0 inner 1 c1 #0 !", false},
      {"[AX] B", "A inner B c1", "(A inner X) (B on c1), 0 inner 1 c1 #0 !", false},
      {"[AX] [BY]", "A inner B c1", "((A inner X) on c1) (B inner Y), 0 inner 1 c1 #0 !", false},
      {"[AX] [BY]", "A inner B c1", "(((A inner X) on c1) on c1) (B inner Y), 0 inner 1 c1 #0 !", true},
      {"A B", "A inner B c1 !", "(A) (B), 0 inner 1 c1 #0 !", false},
      {"A B", "A inner B c1 !", "(A on c1) (B), 0 inner 1 c1 #0 !", true},
      {"[AX]", "A inner . c1", "((A inner X) on c1), 0 inner . c1 #0 !", false},
      {"A B", "A inner B -", "(A) (B), 0 inner 1 - #0 !", false},
  };
  for (const auto& [nodes, links, expected, bForce] : kCases) {
    const Heap<RqJoinSpec> spec = Spec(nodes, links);
    spec->AttachInnerJoinLinkConditions(bForce);
    EXPECT_EQ(SpecText(*spec), expected);
  }
  std::vector<RqJoinNode*> nodes = Graph("A B C", "A inner B c1, B left C c2, C inner B c3");
  OwnedRqExprCondPtr residual(Cond("c0"));
  const Heap<RqJoinSpec> compiled(RqJoinSpec::CompileLinkGraph(nodes, residual, nullptr, true));
  EXPECT_EQ(SpecText(*compiled), "(A on c1) (B left C on c2), 0 inner 1 c1 #0 !");
  EXPECT_EQ(CondText(residual.Get()), "c0&c3");
}

TEST(RqJoinSpec, ACopyHasItsOwnGraph) {
  std::vector<RqJoinNode*> nodes = Graph("A B C", "C left A c1 <, A inner B c2 !, A full B - >, B inner . c4");
  const std::string text = GraphText(nodes);
  std::vector<RqJoinNode*> vectorCopy;
  RqJoinNode::CopyRqJoinNodeVector(nodes, vectorCopy);
  RqJoinSpec spec(nodes);
  spec.SetStarFact({SmartRqNodePtr(nodes[2]), SmartRqNodePtr(nodes[0])});
  const Heap<RqJoinSpec> copy = CopyOf(spec);
  EXPECT_EQ(GraphText(vectorCopy), text);
  EXPECT_EQ(SpecText(*copy), text);
  EXPECT_EQ(SpecText(spec), text);
  SmartRqJoinNodePtrVector facts;
  copy->GetStarFact(facts);
  EXPECT_EQ(facts, (SmartRqJoinNodePtrVector{SmartRqNodePtr(copy->GetIthJoinNode(2)),
                                             SmartRqNodePtr(copy->GetIthJoinNode(0))}));
  DeletePtrCollection(vectorCopy);
}

TEST(RqJoinLink, ANewConditionGoesInFront) {
  const Heap<RqJoinSpec> spec = Spec("A B", "A inner B c1");
  RqJoinLink* const pLink = FirstLink(spec->GetIthJoinNode(0));
  for (const char* const cond : {"c2", "c3"}) pLink->ConcatenateCond(Cond(cond));
  // The first operand is a leaf beside the conjunction that stood.
  const RqExpr* pOperand = pLink->GetJoinCond()->GetIthOperand(0);
  if (pOperand->GetObjectType() == kRqExprCondAnd) pOperand = pLink->GetJoinCond()->GetIthOperand(1);
  EXPECT_EQ(ColumnNames(pOperand), std::vector<std::string>{"c3"});
}

/// Table D1 of one column, and a link whose condition refers to that.
TEST(RqJoinSpec, ConditionsOfACopyReferToItsOwnColumns) {
  auto* const pBlock = new RqList(0);
  RqDerivedColumn* const pColumn = pBlock->GetProjection()->InsertDonatedColumnExpr(Int(1));
  const Heap<RqJoinSpec> spec = Spec("A B", "A inner B c1");
  spec->GetIthTableReference(0)->SetLeftTable(new RqDerivedTable(pBlock, 1));
  FirstLink(spec->GetIthJoinNode(0))
      ->SetNewJoinCond(new RqExprCondIsNull(new RqDerivedColumnReference(pColumn), false));
  const Heap<RqJoinSpec> copy = CopyOf(*spec);
  auto& table = static_cast<RqDerivedTable&>(*copy->GetIthTableReference(0)->GetLeftTable());
  const RqExpr* const pOperand = FirstLink(copy->GetIthJoinNode(1))->GetJoinCond()->GetIthOperand(0);
  EXPECT_EQ(static_cast<const RqDerivedColumnReference*>(pOperand)->GetDerivedColumn(),
            table.GetInnerList()->GetProjection()->GetIthColumn(0));
  pBlock->GetProjection()->DeleteColumn(pColumn, nullptr);
  EXPECT_TRUE(CopyOf(*spec)->GetIthJoinNode(1)->IsStandAlone()) << "the column is gone";
}

TEST(RqJoinLink, FollowsItsEndsAndDiesWithEither) {
  RqHandleNode releaseContainer;
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  Heap<RqJoinSpec> spec = Spec("A B C D", "A inner B c1 !, B inner C c2 >, C left A c3");
  const auto node = [&](int i) { return spec->GetIthJoinNode(i); };
  RqJoinLink* const pLink = FirstLink(node(0));
  pLink->SetOutNode(node(1));
  EXPECT_EQ(SpecText(*spec), "(A) (B) (C) (D), 0 inner 1 c1 #0 !, 1 inner 2 c2 #1 >, 2 left 0 c3 #2") << "no change";
  pLink->SetOutNode(node(3));
  EXPECT_EQ(SpecText(*spec), "(A) (B) (C) (D), 0 inner 3 c1 #0, 1 inner 2 c2 #1 >, 2 left 0 c3 #2");
  pLink->InitLink(node(3), nullptr, Cond("c4"), SqlTableRef::kNaturalJoin, k_Many_To_Many, nullptr, true);
  node(2)->Replace(node(3), releaseContainer);
  EXPECT_EQ(SpecText(*spec), "(A) (B) (C) (D), 1 inner 3 c2 #1 >, 3 natural . c4 #8 !");
  spec->SetIthJoinNode(2, nullptr);
  spec->SetIthJoinNode(1, nullptr);
  EXPECT_TRUE(node(0)->IsStandAlone() && node(3)->IsLeaf());
  spec = nullptr;
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore);
}

TEST(RqJoinSpec, WhatTravels) {
  const std::pair<const char*, const char*> kCases[] = {
      {"", "(A) (B) (C)"},
      {"C left A c1 <, A inner B -", "(A) (B) (C), 0 inner 1 - #1, 2 inner 0 c1 #0"},
      {"A inner B c1 !, B inner C c2 !", "(A) (B) (C)"},
      {"A inner B c1 !, A inner C c2", "(A) (B) (C), 0 inner 1 - #9 !, 0 inner 2 c2 #1"},
  };
  for (const auto& [links, expected] : kCases) {
    // What was read can be written at once.
    const Heap<RqJoinSpec> read = ReadBack(*ReadBack(*Spec("A B C", links)));
    read->ReattachLinksAfterMarshal();
    EXPECT_EQ(SpecText(*read), expected);
  }
}

TEST(RqJoinSpec, DamagedLinksAreFound) {
  ByteVector good;
  Spec("A B C", "B inner C -")->GetIthJoinNode(1)->ToByteVector(good);
  constexpr std::size_t kFlags = 2, kType = 4, kCardinality = 4, kPlaces = 8;
  const std::size_t link = good.size() - kFlags - kType - kCardinality - kPlaces;
  const std::tuple<std::size_t, std::uint8_t, bool> kCases[] = {
      {link - 7, 1, false}, {link - 7, 2, true},    {link - 6, 200, true}, {link - 2, 7, true},  {link + 1, 1, true},
      {link + 2, 6, true},  {link + 2, 5, false},   {link + 6, 10, true},  {link + 10, 0, true}, {link + 14, 1, true},
      {link + 14, 3, true}, {link + 17, 255, true}, {link + 14, 0, false},
  };
  for (const auto& [offset, byte, bDamage] : kCases) {
    SCOPED_TRACE(static_cast<std::ptrdiff_t>(offset - link));
    ByteVector bytes = good;
    bytes[offset] = byte;
    const Heap<RqJoinSpec> read = Spec("A B C", "");
    const BoundedRead bounds(bytes);
    const unsigned long code = CodeRaisedBy([&] {
      bounds.RequireAtEnd(read->GetIthJoinNode(1)->FromByteVector(bytes.data()));
      read->RequireReattachableLinks(bytes.data());
    });
    EXPECT_EQ(code != 0, bDamage);
  }
}

TEST(RqJoinSpec, LinksThatNoWriterMakesAreFound) {
  ByteVector noCond{0, 1};  // not attached, and a condition follows
  const Heap<RqNode> value(Int(1));
  RqTreeVector::ToByteVector(value.Get(), noCond);
  noCond.resize(noCond.size() + 8);
  ByteVector tooMany;
  RqJoinNode node;
  node.RqNode::ToByteVector(tooMany);
  DataBlobUtil::ToByteVector(tooMany, std::uint32_t{RqJoinNode::kMaxReadLinks + 1});
  DataBlobUtil::ToByteVector(tooMany, true);
  for (std::uint32_t i = 0; i <= RqJoinNode::kMaxReadLinks; ++i) DataBlobUtil::ToByteVector(tooMany, std::int16_t{1});
  EXPECT_THROW((BoundedRead(noCond), RqJoinLink().FromByteVector(noCond.data())), ErrorMessage);
  EXPECT_THROW((BoundedRead(tooMany), node.FromByteVector(tooMany.data())), ErrorMessage);
}

TEST(RqJoinSpec, NodesAreEquivalentPlaceByPlace) {
  const std::tuple<const char*, const char*, const char*, const char*, bool> kCases[] = {
      {"", "", "", "", true},
      {"[AX] B", "A inner B c1", "A B/c", "B left A c2", true},
      {"A B", "", "B A", "", false},
      {"A B", "", "A", "", false},
      {"A B", "A inner B c1", "A B", "", false},
  };
  for (const auto& [nodes, links, rhsNodes, rhsLinks, bEquivalent] : kCases) {
    EXPECT_EQ(Spec(nodes, links)->IsEquivalent(*Spec(rhsNodes, rhsLinks)), bEquivalent) << nodes << " / " << rhsNodes;
  }
  const Heap<RqJoinSpec> gap = Spec("A B", "");
  gap->SetIthJoinNode(0, nullptr);
  EXPECT_TRUE(gap->IsEquivalent(*gap));
  EXPECT_FALSE(gap->IsEquivalent(*Spec("A B", "")));
  EXPECT_TRUE(RqJoinNode().GetRemoveCandidacy());
}

TEST(RqJoinDeathTest, WhatACallerMustNotDo) {
  const Heap<RqJoinSpec> spec = Spec("A B", "A left B c1, A inner B c2");
  const Heap<RqJoinSpec> other = Spec("C", "");
  RqJoinNode* const pA = spec->GetIthJoinNode(0);
  RqJoinLink* const pLink = FirstLink(pA);
  EXPECT_DEATH(RqJoinNode(nullptr, false), "pNewTableRef");
  EXPECT_DEATH(pLink->SetNewJoinCond(nullptr), "pNewJoinCond");
  EXPECT_DEATH(pLink->AttachLinkCond(false), "m_joinType == SqlTableRef::kInnerJoin");
  EXPECT_DEATH(pLink->AttachToNodes(), "SQORRqJoinNode.*logic error");
  EXPECT_DEATH(pA->AddLink(pA, nullptr, SqlTableRef::kInnerJoin, kUnknownCardinality, nullptr, false),
               "SQORRqJoinNode.*logic error");
  EXPECT_DEATH(static_cast<void>(*pLink == *pLink), "SQORRqJoinLink.*logic error");
  EXPECT_DEATH(static_cast<void>(*pLink < *pLink), "SQORRqJoinLink.*logic error");
  other->SetStarFact({SmartRqNodePtr(pA)});
  EXPECT_DEATH(CopyOf(*other), "mapElemIter != nodeMap.end\\(\\)");
  other->SetStarFact({});
  RqJoinNode* const pC = other->GetIthJoinNode(0);
  const auto init = [&](RqJoinNode* pIn, RqJoinNode* pOut, RqJoinNode* pDriving) {
    pLink->InitLink(pIn, pOut, nullptr, SqlTableRef::kInnerJoin, kUnknownCardinality, pDriving, false);
  };
  init(pA, pC, nullptr);
  EXPECT_DEATH(CopyOf(*spec), "outNodePos != nodeMap.end\\(\\)");
  EXPECT_DEATH(CopyOf(*other), "inNodePos != nodeMap.end\\(\\)");
  init(pA, nullptr, pC);
  EXPECT_DEATH(CopyOf(*spec), "drivingNodePos != nodeMap.end\\(\\)");
  EXPECT_DEATH(
      {
        auto* const pRead = new RqJoinLinkPersist;
        pRead->SetInNode(pC);
        other->ReattachLinksAfterMarshal();
      },
      "pOutNode != NULL");
  other->SetIthJoinNode(0, nullptr);
  EXPECT_DEATH(CopyOf(*other), "pRhsJoinNode");
}

}  // namespace
