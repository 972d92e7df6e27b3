#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Blocks/BlockSamples.h"
#include "Host/ServerStatistics.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

std::string OneLine(const RqNode& node) { return RqDumpout::StringFrom(node).ToUTF8(); }

RqTableReference* Join(SqlTableRef::JoinType type, RqExprCond* pCond, DrivingTableHint hint = kDriving_UnknownTable) {
  return new RqTableReference(type, Table(1), pCond, Table(2), hint);
}

TEST(BlockText, ClausesOverSeveralLines) {
  const Heap<RqList> list(FullList());
  list->SetRowNumLimit(10);
  list->SetRowNumOffset(5);
  list->MarkTargetID(VoidID(3023, 7U));
  EXPECT_EQ(RqDumpout::StringFrom(*list, true, true).ToUTF8(), R"(
RqList [1] [for database 3023:7,1] distinct  /* OFFSET 5 ROWS */  /* FETCH FIRST 10 ROWS ONLY */ [HdsEvaluateBreakFilter][RemoteRPD]
    T1.a as c1 GB [for database 0:4294967295,1],
    D2.c1 as c2 [for database 0:4294967295,1]
Child Nodes (RqJoinSpec):  [for database 0:4294967295,1]
        3024:1 T1; actual join vectors: [0] = [1]
        (
            RqList  [for database 0:4294967295,1]
                T3.x as c1 [for database 0:4294967295,1],
                T3.y as c2 [for database 0:4294967295,1]
            Child Nodes (RqJoinSpec):  [for database 0:4294967295,1]
                    3024:3 T3
        ) as D2 aka q
DetailFilter: D2.c1 = 1 [for database 0:4294967295,1]
SummaryFilter: T1.a = 2
GroupBy GroupingSets: (
    (gid:0 T1.b, T1.a), 
    (gid:2 T1.b)) [for database 0:4294967295,1]
Having: T1.a = 3
OrderBy: c1 desc NULLS LAST, c2147483647 [for database 0:4294967295,1])");
}

TEST(BlockText, OneLineAndDamage) {
  struct Row {
    std::function<RqNode*()> m_make;
    const char* m_text;
  };
  const auto union3 = [](bool bAll) {
    std::vector<RqAbstractList*> lists{List({Int(1)}), List({Int(2)}), List({Int(3)})};
    return new RqUnion(lists, bAll);
  };
  using Ref = SqlTableRef;
  const Row rows[] = {
      {[&] { return union3(true); }, "( RqList   1 as c1 RqUnion All  RqList   2 as c1 RqUnion All  RqList   3 as c1)"},
      {[&] { return union3(false); }, "( RqList   1 as c1 RqUnion  RqList   2 as c1 RqUnion  RqList   3 as c1)"},
      {[] {
         return new RqBreakFilter(List({Int(1), Int(2)}), {1, 0}, {0});
       },
       " RqBreakFilter [2,1] nob[1] RqList   1 as c1,  2 as c2"},
      {[] { return new RqCanonicalMap(List({Int(1)})); }, " RqCanonicalMap  RqList   1 as c1"},
      {[] { return new RqSharedList(new RqProjection(0), nullptr); }, " RqSharedList sharing "},
      {[] { return new RqDetailFilter; }, " *********** ERROR: RqDetailFilter node with no condition"},
      {[] { return new RqSummaryFilter; }, " *********** ERROR: RqSummaryFilter node with no condition"},
      {[] { return Join(Ref::kInnerJoin, Equal(Col(L"a"), Col(L"b", 2))); },
       " 3024:1 T1 InnerJoin  On T1.a = T2.b 3024:2 T2"},
      {[] { return Join(Ref::kInnerJoin, nullptr); }, " 3024:1 T1 CrossProductJoin  3024:2 T2"},
      {[] { return Join(Ref::kRightOuterJoin, Equal(Col(L"a"), Int(1)), kDriving_LeftTable); },
       " 3024:2 T2 LeftOuterJoin  (right drive)  On T1.a = 1 3024:1 T1"},
      {[] {
         RqTableReference* const pJoin = Join(Ref::kFullOuterStitchJoin, nullptr);
         pJoin->SetJoinSubType(Ref::kEagerJoin);
         return pJoin;
       },
       " 3024:1 T1 FullOuterStitchJoin (Eager)  3024:2 T2"},
      {[] { return new RqOpaqueTable(nullptr, 3, VoidID(kTIDATable, 4U), VoidID(), kOpaqueTableTypeSelect); },
       "[3024:4] as T3"},
      {[] { return new RqExternalTable(nullptr, L"ext", VoidID(), ServerInfo::kSQLite); }, "External Table: ext"},
      {[] { return new RqSortSpec; }, "c2147483647"},
  };
  for (const Row& row : rows) {
    const Heap<RqNode> node(row.m_make());
    EXPECT_EQ(OneLine(*node), row.m_text);
  }
  EXPECT_DEATH(OneLine(RqUnion()), "unionNode.GetNumLists\\(\\) >= 2");
}

TEST(BlockText, IdentitiesShowLinksAndSharedLists) {
  const Heap<RqList> list(FullList());
  const std::string text = RqDumpout::StringFrom(*list, false, true, nullptr, true).ToUTF8();
  const RqJoinSpec& joinSpec = *list->GetJoinSpec();
  const auto idOf = [](const RqNode* pNode) { return pNode->GetNodeID().ToString().ToUTF8(); };
  const std::string link = "[(InNode:" + idOf(joinSpec.GetIthJoinNode(0)) +
                           ") (OutNode:" + idOf(joinSpec.GetIthJoinNode(1)) + ") T1.b = D2.c1 not_attached]";
  EXPECT_NE(text.find("RqJoinNode " + idOf(joinSpec.GetIthJoinNode(1)) + ' ' + link), std::string::npos) << text;
  const RqSharedList dangling(new RqProjection(0), nullptr);
  EXPECT_EQ(RqDumpout::StringFrom(dangling, false, false, nullptr, true).ToUTF8(),
            " RqSharedList sharing ERROR: Dangling NULL ptr");

  ServerStatistics statistics;
  statistics.GetLogicalRequestStats().SetOperatorStatistics(list->GetNodeID().ToString(), {L"first", L"second"});
  const KXString withStatistics = RqDumpout::StringFrom(*list, false, false, nullptr, false, nullptr, false, false,
                                                        false, false, false, &statistics, true);
  EXPECT_NE(withStatistics.ToUTF8().find("[RemoteRPD] second first "), std::string::npos);
}

}  // namespace
