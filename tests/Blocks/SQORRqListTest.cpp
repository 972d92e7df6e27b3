#include "Query/Optimizer/Request/Blocks/SQORRqList.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "Blocks/BlockSamples.h"
#include "Host/SUSystemConfig.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Conditions/SQORExprSubsumption.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprUtility.h"
#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"
#include "TestUtil.h"

namespace {

constexpr const char* kRemoveDistinct = "TELM_Remove_Distinct_Based_On_GroupBy";

RqGroupBy* GroupBy(RqExprVector columns) { return new RqGroupBy(columns, RqGroupBy::kUnknown); }

/// SELECT the first column FROM (list) AS a table of that number.
Heap<RqList> Wrap(RqAbstractList* pInner, int number) {
  RqDerivedColumn* const pColumn = pInner->GetProjection()->GetIthColumn(0);
  return Heap<RqList>(List({new RqDerivedColumnReference(pColumn)}, {new RqDerivedTable(pInner, number)}));
}

RqDerivedColumn& InnerColumn(RqList& list, int table, int column) {
  RqDerivedTable* const pTable = list.GetJoinSpec()->GetIthTableReference(table)->GetDerivedTable();
  return *pTable->GetInnerList()->GetProjection()->GetIthColumn(column);
}

TEST(Projection, NumbersAreGivenOnce) {
  RqProjection projection(0);
  bool bInserted = false;
  for (const wchar_t* const name : {L"a", L"b", L"c", L"b"}) {
    const Heap<RqExpr> expr(Col(name));
    projection.InsertColumnExpr(expr.Get(), bInserted, false);
  }
  EXPECT_FALSE(bInserted);
  EXPECT_EQ(projection.GetNumColumns(), 3);
  projection.DeleteColumn(projection.GetIthColumn(1), nullptr);
  EXPECT_EQ(projection.InsertDonatedColumnExpr(Col(L"b"))->GetColumnNum(), 4);
  EXPECT_EQ(projection.InsertDonatedColumnExpr(Col(L"b"))->GetColumnNum(), 4);
  const Heap<RqExpr> c(Col(L"c"));
  EXPECT_EQ(projection.InsertColumnExpr(c.Get(), bInserted, true)->GetColumnNum(), 5);
  EXPECT_EQ(projection.GetMatchingColumn(c.Get())->GetColumnNum(), 3);
  RqDerivedColumnVector matching;
  projection.GetMatchingColumns(c.Get(), matching);
  EXPECT_EQ(matching.size(), 2u);
  const Heap<RqExpr> stranger(Col(L"z"));
  EXPECT_EQ(projection.GetMatchingColumnIndex(stranger.Get()), projection.GetNumColumns());
  EXPECT_EQ(projection.FindColumnIndex(99), RqProjection::kColumnNotFound);
  // One that comes before it in the order counts as a match.
  EXPECT_EQ(projection.InsertColumnExprShareBase(stranger.Get(), bInserted)->GetColumnNum(), 1);
  EXPECT_FALSE(bInserted);
  projection.ReSyncColumnNumGenerator(20);
  EXPECT_EQ(projection.GetNextColumnNum(), 21);

  RqProjection behind(0);
  for (int i = 0; i < 5; ++i) behind.AddChild(new RqDerivedColumn(Int(i), i + 1));
  EXPECT_EQ(behind.GetNextColumnNum(), 6);
}

TEST(List, DistinctYieldsToTheGrouping) {
  const Heap<RqList> list(List({Col(L"a"), Col(L"b")}));
  list->SetGroupBy(GroupBy({Col(L"a")}));
  list->SetDistinct(true);
  EXPECT_FALSE(list->IsDistinct());
  setenv(kRemoveDistinct, "no", 1);
  list->SetDistinct(true);
  EXPECT_TRUE(list->IsDistinct());
  unsetenv(kRemoveDistinct);
  list->SetGroupBy(GroupBy({Col(L"z")}));
  EXPECT_TRUE(list->IsDistinct());
  list->SetGroupBy(GroupBy({Int(1)}));  // constants are dropped
  EXPECT_FALSE(list->IsDistinct());
}

TEST(List, CopiesAndBytesKeepWhatTheyShould) {
  const Heap<RqList> list(FullList());
  list->SetRowNumLimit(10);
  list->SetRowNumOffset(3);
  list->MarkBypassNavigation(true);
  list->SetCatalogFolderID(VoidID(3003, 5U));
  const Heap<RqList> copy(static_cast<RqList*>(list->DeepCopy(false)));
  EXPECT_EQ(TextOf(*copy), TextOf(*list));
  EXPECT_TRUE(copy->IsBypassNavigation());
  EXPECT_TRUE(copy->GetCatalogFolderID().IsNullID());
}

TEST(List, NestedCopiesAreSelfContained) {
  const Heap<RqList> list(FullList());
  RqDerivedColumn& column = InnerColumn(*list, 1, 0);
  RqExprVector columns{Col(L"b")}, grain{new RqDerivedColumnReference(&column)};
  list->SetGroupBy(new RqGroupBy(columns, grain, RqGroupBy::kUnknown));
  const std::string text = TextOf(*list);
  const int references = column.GetSmartPtrReferencesCount();
  Heap<RqNode> shallow(list->DeepCopy(true));
  EXPECT_GT(column.GetSmartPtrReferencesCount(), references);
  shallow = nullptr;
  for (const bool bNewIDs : {false, true}) {
    SCOPED_TRACE(bNewIDs);
    const Heap<RqList> nested(static_cast<RqList*>(list->NestedDeepCopy(bNewIDs)));
    EXPECT_EQ(nested->IsCopyOf(*list), !bNewIDs);
    EXPECT_EQ(column.GetSmartPtrReferencesCount(), references);
    std::vector<RqDerivedColumnReference*> inCopy;
    RqExprUtility::GetAllDerivedColumnReferences(nested.Get(), inCopy);
    ASSERT_FALSE(inCopy.empty());
    inCopy.push_back(static_cast<RqDerivedColumnReference*>(nested->GetGroupBy()->GetGranularity()->GetIthColumn(0)));
    for (const RqDerivedColumnReference* const pReference : inCopy) {
      EXPECT_EQ(pReference->GetDerivedColumn(), &InnerColumn(*nested, 1, 0));
    }
    EXPECT_EQ(TextOf(*nested), text);
  }
}

TEST(List, EquivalenceLooksAtTheSummaryFilterOnlyBesideADetailFilter) {
  const Heap<RqList> a(List({Col(L"a")}));
  const Heap<RqList> b(List({Col(L"a")}));
  b->SetSummaryFilter(new RqSummaryFilter(Equal(Col(L"a"), Int(1))));
  b->SetOrderBy(new RqOrderBy);
  EXPECT_TRUE(a->IsEquivalent(*b));
  for (RqList* const pList : {a.Get(), b.Get()}) pList->ConcatenateToDetailFilter(Equal(Col(L"a"), Int(1)));
  EXPECT_FALSE(a->IsEquivalent(*b));
  a->SetSummaryFilter(new RqSummaryFilter(Equal(Col(L"a"), Int(1))));
  EXPECT_TRUE(a->IsEquivalent(*b));
  a->ConcatenateToDetailFilter(Equal(Col(L"b"), Int(2)));
  EXPECT_FALSE(a->IsEquivalent(*b));
  EXPECT_TRUE(a->GetDetailFilter()->GetCond()->IsAndCond());
  const Heap<RqList> other(List({Col(L"b")}));
  EXPECT_FALSE(other->IsEquivalent(*b));
  std::vector<RqAbstractList*> lists{List({Int(1)}), List({Int(1)})};
  const RqUnion unionAll(lists, true);
  EXPECT_FALSE(unionAll.IsEquivalent(unionAll));
}

TEST(List, AFilterThatWasReadWithoutAConditionTakesOne) {
  const Heap<RqList> list(List({Col(L"a")}));
  list->SetDetailFilter(new RqDetailFilter);
  for (int i = 1; i <= 2; ++i) list->ConcatenateToDetailFilter(Equal(Col(L"a"), Int(i)));
  EXPECT_EQ(TextOf(*list), " RqList   T1.a as c1 DetailFilter: T1.a = 1 and T1.a = 2");
}

TEST(List, TellsWhatItWraps) {
  RqList* const pInner = List({Col(L"a")}, {Table(1)});
  pInner->GetJoinSpec()->GetIthTableReference(0)->MarkTargetType(ServerInfo::kSQLite);
  const Heap<RqList> wrapper = Wrap(pInner, 2);
  EXPECT_TRUE(wrapper->IsArtifactListNode());
  EXPECT_FALSE(wrapper->IsOpaqueTableWrapper());
  EXPECT_FALSE(wrapper->IsLeafCandidate());
  EXPECT_TRUE(wrapper->IsLeafParent());
  EXPECT_TRUE(pInner->IsLeafCandidate());
  pInner->GetJoinSpec()->SetNumTableReferences(2);
  EXPECT_FALSE(pInner->IsLeafCandidate());
  const Heap<RqList> leaf(List({Col(L"a")}, {Table(1)}));
  EXPECT_FALSE(leaf->IsArtifactListNode());
  EXPECT_FALSE(leaf->IsLeafParent());
  const Heap<RqList> opaque(List({Col(L"a")}, {new RqOpaqueTable()}));
  EXPECT_TRUE(opaque->IsOpaqueTableWrapper());
  const Heap<RqList> noTables(List({Int(1)}));
  EXPECT_TRUE(noTables->IsLeafCandidate());
  EXPECT_DEATH(noTables->IsArtifactListNode(), "pJoinSpec");
  // Of a block only the tables are searched.
  std::list<RqNode*> found;
  FindTableNodes(wrapper.Get(), RqNode::IsObjectType({kRqTargetColumn, kRqDerivedColumn, kRqAtomicTable}), found, false,
                 false);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front()->GetObjectType(), kRqAtomicTable);
}

TEST(DerivedColumn, BreakStatusGoesDownThroughReferences) {
  const Heap<RqList> middle = Wrap(List({Col(L"a")}, {Table(1)}), 2);
  RqDerivedColumn* const pInner =
      static_cast<RqDerivedColumnReference*>(middle->GetProjection()->GetIthColumn(0)->GetExpr())->GetDerivedColumn();
  RqDerivedColumn* const pOuter = middle->GetProjection()->GetIthColumn(0);
  pOuter->SetBreakStatus(RqDerivedColumn::kNoDuplicates);
  EXPECT_EQ(pInner->GetBreakStatus(), RqDerivedColumn::kNoDuplicates);
  pInner->SetBreakStatus(RqDerivedColumn::kAllowDuplicates);
  pOuter->SetBreakStatus(RqDerivedColumn::kNoDuplicates);
  EXPECT_EQ(pInner->GetBreakStatus(), RqDerivedColumn::kAllowDuplicates);
  // A reference that takes an expression's place hands the status down, too.
  pInner->SetBreakStatus(RqDerivedColumn::kUnknownBreakStatus);
  pOuter->SetExpr(Col(L"z"));
  RqHandleNode junk;
  pOuter->GetExpr()->Replace(new RqDerivedColumnReference(pInner), junk);
  EXPECT_EQ(pInner->GetBreakStatus(), RqDerivedColumn::kNoDuplicates);
  // References follow a column that is replaced, and know when it is gone.
  auto* const pNew = new RqDerivedColumn(Col(L"n"), 9);
  pInner->Replace(pNew, junk);
  auto& reference = static_cast<RqDerivedColumnReference&>(*pOuter->GetExpr());
  EXPECT_EQ(reference.GetDerivedColumn(), pNew);
  EXPECT_EQ(reference.GetSourceTableName() + L"." + reference.GetColumnName(), L"D2.c9");
  delete pNew;
  EXPECT_FALSE(reference.IsValidDerivedColumnReference());
  EXPECT_EQ(reference.GetSourceTableName(), g_danglingDerivedColumn);
  EXPECT_DEATH(reference.GetDerivedColumn(), "invalid derived column reference");

  std::vector<RqAbstractList*> lists{List({Col(L"a")}), List({Col(L"b")})};
  RqDerivedColumn* const pBranch = lists[0]->GetProjection()->GetIthColumn(0);
  const Heap<RqList> overUnion = Wrap(new RqUnion(lists, true), 3);
  overUnion->GetProjection()->GetIthColumn(0)->SetBreakStatus(RqDerivedColumn::kNoDuplicates);
  EXPECT_EQ(pBranch->GetBreakStatus(), RqDerivedColumn::kUnknownBreakStatus);
}

TEST(DerivedColumn, AReferenceThatTakesAnExpressionsPlaceHandsTheStatusDown) {
  using Column = RqDerivedColumn;
  const auto listOf = [](Column* pColumn) {
    RqList* const pList = List({});
    pList->GetProjection()->AddColumn(pColumn);
    return pList;
  };
  const auto branchOf = [&](Column* pColumn) { return std::vector<RqAbstractList*>{listOf(pColumn), List({Int(2)})}; };
  // Each makes a tree that holds the column, and gives its root.
  using Place = std::function<RqNode*(Column*)>;
  const Place table = [&](Column* pColumn) { return new RqDerivedTable(listOf(pColumn), 1); };
  const Place intersect = [&](Column* pColumn) {
    auto lists = branchOf(pColumn);
    return new RqIntersect(lists, true);
  };
  const Place unionBranch = [&](Column* pColumn) {
    auto lists = branchOf(pColumn);
    return new RqUnion(lists, true);
  };
  const Place noQueryBlock = [](Column* pColumn) {
    auto* const pProjection = new RqProjection(0);
    pProjection->AddColumn(pColumn);
    return new RqDerivedTable(new RqSharedList(pProjection, nullptr), 1);
  };
  const Place noBlock = [](Column* pColumn) { return pColumn; };
  constexpr auto kUnknown = Column::kUnknownBreakStatus;
  constexpr auto kNone = Column::kNoDuplicates;
  constexpr auto kAllow = Column::kAllowDuplicates;
  const struct {
    Place m_place;
    Column::BreakStatus m_inner, m_outer, m_expected;
  } rows[] = {
      {table, kUnknown, kNone, kNone},
      {table, kUnknown, kAllow, kAllow},
      {table, kNone, kAllow, kAllow},
      {table, kNone, kUnknown, kNone},
      {table, kAllow, kNone, kAllow},
      {table, Column::kLobData, kNone, Column::kLobData},
      {intersect, kUnknown, kNone, kNone},
      {unionBranch, kUnknown, kNone, kUnknown},
      {listOf, kUnknown, kNone, kUnknown},  // a block without a parent
      {noQueryBlock, kUnknown, kNone, kUnknown},
      {noBlock, kUnknown, kNone, kUnknown},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    auto* const pInner = new Column(Int(1), 1);
    const Heap<RqNode> root(row.m_place(pInner));
    pInner->SetBreakStatus(row.m_inner);
    Column outer(Row({Int(1)}), 1);
    outer.SetBreakStatus(row.m_outer);
    RqHandleNode junk;
    outer.GetExpr()->GetIthOperand(0)->Replace(new RqDerivedColumnReference(pInner), junk);
    EXPECT_EQ(pInner->GetBreakStatus(), row.m_inner) << "part of an expression";
    outer.GetExpr()->Replace(new RqDerivedColumnReference(pInner), junk);
    EXPECT_EQ(pInner->GetBreakStatus(), row.m_expected);
    // Other replacements hand nothing down.
    for (RqExpr* const pReplacement : {Int(2), static_cast<RqExpr*>(nullptr)}) {
      outer.GetExpr()->Replace(pReplacement, junk);
      EXPECT_EQ(outer.GetExpr(), pReplacement);
    }
  }
}

TEST(DerivedColumn, ACopyHasItsExpressionEvenIfShallow) {
  const RqDerivedColumn source(Row({Col(L"a")}), 1);
  const RqDerivedColumn copy(source, true, false);
  EXPECT_EQ(TextOf(copy), TextOf(source));
  EXPECT_NE(copy.GetExpr(), source.GetExpr());
}

TEST(Reattach, ColumnsThatReferToOneAnotherInACircle) {
  for (int size = 1; size <= 6; ++size) {
    SCOPED_TRACE(size);
    std::vector<RqAbstractTable*> tables;
    for (int i = 0; i < size; ++i) tables.push_back(new RqDerivedTable(List({Int(i)}), i));
    const Heap<RqList> list(List({Int(0)}, tables));
    for (int i = 0; i < size; ++i) {
      RqDerivedColumn& column = InnerColumn(*list, i, 0);
      column.SetExpr(new RqDerivedColumnReference(&InnerColumn(*list, (i + 1) % size, 0)));
      column.SetBreakStatus(RqDerivedColumn::kNoDuplicates);
    }
    const Heap<RqList> read = ReadBack(*list);
    ReattachRqList(read.Get());
    EXPECT_EQ(TextOf(*read), TextOf(*list));
    InnerColumn(*read, 0, 0).SetBreakStatus(RqDerivedColumn::kUnknownBreakStatus);
    for (int i = 0; i < size; ++i) {
      EXPECT_EQ(InnerColumn(*read, i, 0).GetBreakStatus(), RqDerivedColumn::kUnknownBreakStatus);
    }
  }
}

TEST(Reattach, TheFirstTableOfANumberThatHasTheColumnCounts) {
  const Heap<RqList> list(
      List({Int(1), Int(2)}, {new RqDerivedTable(List({Int(3)}), 2), new RqDerivedTable(List({Int(4), Int(5)}), 2)}));
  for (int i = 0; i < 2; ++i) {
    list->GetProjection()->GetIthColumn(i)->SetExpr(new RqDerivedColumnReference(&InnerColumn(*list, 1, i)));
  }
  const Heap<RqList> read = ReadBack(*list);
  ReattachRqList(read.Get());
  for (int i = 0; i < 2; ++i) {
    const RqExpr* const pExpr = read->GetProjection()->GetIthColumn(i)->GetExpr();
    EXPECT_EQ(static_cast<const RqDerivedColumnReference*>(pExpr)->GetDerivedColumn(), &InnerColumn(*read, i, i));
  }
}

TEST(GroupBy, ItsSizeCountsWhatIsNoChild) {
  RqExprVector columns{Col(L"a")}, grain{Col(L"b"), Col(L"c")};
  RqGroupBy groupBy(columns, grain, RqGroupBy::kUnknown);
  groupBy.SetGroupingSet({0, 1, 0});
  OwnedRqExprCondVector filters(3);
  filters[1] = Equal(Col(L"a"), Int(1));
  groupBy.SetGroupingSetFilters(filters);
  EXPECT_EQ(groupBy.GetMySize(), 64 * (2 + 3 + 3) + 4 * 3) << "columns, granularity, filter, numbers of the sets";
}

TEST(OrderBy, CopyMeansTheSameInAnotherBlock) {
  const Heap<RqList> source(List({Col(L"a"), Col(L"b")}));
  const Heap<RqList> dest(new RqList(10));
  for (const wchar_t* const name : {L"a", L"b", L"c"}) dest->GetProjection()->InsertDonatedColumnExpr(Col(name));
  source->SetOrderBy(new RqOrderBy({{2, RqSortSpec::kDesc, true, true, RqSortSpec::kFirst}}, {KXTypeInfo()}, true));
  source->GetOrderBy()->AppendPushDownAggr(nullptr);
  RqOrderBy::CopyOrderBy(*source, *dest);
  ASSERT_TRUE(dest->GetOrderBy() && dest->GetOrderBy()->HasPushDownAggr() && dest->GetOrderBy()->IsAddedForJoin());
  EXPECT_EQ(dest->GetOrderBy()->GetNumSortSpecs(), 1);
  EXPECT_TRUE(*dest->GetOrderBy()->GetIthSortSpec(0) ==
              RqSortSpec(12, RqSortSpec::kDesc, false, true, RqSortSpec::kFirst));
  source->SetOrderBy(new RqOrderBy({RqSortSpec()}, false));
  EXPECT_DEATH(RqOrderBy::CopyOrderBy(*source, *dest), "SQORRqOrderBy.*logic error");
  source->SetOrderBy(nullptr);
  RqOrderBy::CopyOrderBy(*source, *dest);
  EXPECT_FALSE(dest->GetOrderBy());
  EXPECT_DEATH(RqOrderBy::CopyOrderBy(*dest, *source), "pSourceProjection->GetNumColumns\\(\\) <= numDestColumns");
}

TEST(OrderBy, IsPushableWhereTheDatabaseSortsAlike) {
  MemoryGateway gateway;
  auto& database = gateway.MakeObject<MemoryDatabase>(1U, L"db", ServerInfo::kSQLite);
  using Table = SUFeaturesTable;
  database.SetBooleanFeature(Table::kFeature_OrderBy, true).SetIntegerFeature(Table::kFeature_MaxColumnsInOrderBy, 9U);
  const RefADatabase db(&gateway, database.GetID());
  const KXTypeInfo notNull(KXInt4Data, 0, 0, 0), nullable(KXInt4Data, 0, 0, 1), text(KXVarCharData, 9, 0, 0);
  struct Row {
    KXTypeInfoVector m_types;
    RqSortSpec::NullSortDirection m_nulls;
    bool m_bNullsFirst, m_bExpressions, m_bStrict, m_bPushable;
  };
  const Row rows[] = {
      {{notNull}, RqSortSpec::kLast, true, false, true, true},
      {{nullable}, RqSortSpec::kLast, true, false, true, false},
      {{nullable}, RqSortSpec::kFirst, true, false, true, true},
      {{nullable}, RqSortSpec::kLast, true, true, false, true},
      {{nullable}, RqSortSpec::kLast, true, true, true, false},
      {{text}, RqSortSpec::kFirst, true, false, true, false},
      {{}, RqSortSpec::kFirst, true, false, true, false},
  };
  SUSystemConfig::GetSystemConfig().SetSortOrderLocale(L"german");
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    database.SetBooleanFeature(Table::kFeature_NullValuesSortFirst, row.m_bNullsFirst)
        .SetBooleanFeature(Table::kFeature_ExpressionsInOrderBy, row.m_bExpressions)
        .SetStringFeature(Table::kFeature_SortOrderLocale, KXString(L"english"));
    const RqOrderBy orderBy({{1, RqSortSpec::kAsc, false, false, row.m_nulls}}, row.m_types, false);
    EXPECT_EQ(FeaturesMgr::IsSortPushable(db, orderBy, &gateway, row.m_bStrict), row.m_bPushable);
  }
  SUSystemConfig::GetSystemConfig().SetSortOrderLocale(L"ENGLISH");
  EXPECT_TRUE(FeaturesMgr::IsSortPushable(db, RqOrderBy({RqSortSpec()}, {text}, false), &gateway, true));
}

TEST(WrapperList, BreakFiltersFollowTheirColumns) {
  RqBreakFilter filter(List({Col(L"a"), Col(L"b"), Col(L"c")}), {2, 0, 2}, {0, 1});
  auto& projection = *filter.GetProjection();
  projection.AddColumn(new RqDerivedColumn(Col(L"d"), 0));
  RqHandleNode junk;
  projection.DeleteColumn(projection.GetIthColumn(1), &junk);
  UInt16Vector indexes;
  filter.GetBreakColumnIndexes(indexes, false);
  EXPECT_EQ(indexes, (UInt16Vector{1, 0, 1}));
  indexes.clear();
  filter.GetBreakColumnIndexes(indexes, true);
  EXPECT_EQ(indexes, (UInt16Vector{1, 0}));
  indexes.clear();
  filter.GetBreakColumnIndexesAccountForNoOrderBy(indexes, true);
  EXPECT_EQ(indexes, (UInt16Vector{1}));
  projection.DeleteColumn(projection.GetIthColumn(0), &junk);
  EXPECT_DEATH(filter.GetBreakColumnIndexes(indexes, false), "SQORRqWrapperList.*logic error");

  const Heap<RqList> shared(List({Int(1)}));
  const RqSharedList reader(new RqProjection(0), shared.Get());
  EXPECT_TRUE(shared->IsShared());
  RqMolapFilterJoin join(List({Int(1)}));
  const FilterJoinQueryAndJoinIndex entry{{nullptr, shared.Get()}, {{0}, {1}}};
  EXPECT_TRUE(join.AddFilterJoinQueriesAndJoinIndex(entry));
  EXPECT_FALSE(join.AddFilterJoinQueriesAndJoinIndex(entry));
  EXPECT_TRUE(join.RemoveFilterJoinQueryAndJoinIndexes(entry));
  EXPECT_FALSE(join.RemoveFilterJoinQueryAndJoinIndexes(entry));
  std::vector<RqAbstractList*> lists{List({Int(1)}), List({Int(2)})};
  const Heap<RqIntersect> intersect(new RqIntersect(lists, true));
  EXPECT_TRUE(intersect->IsSortDependentSetOperator());
  EXPECT_EQ(RqUnion().GetProjection(), nullptr);
  EXPECT_DEATH(intersect->SetIthList(2, nullptr), "i < GetNumLists\\(\\)");
}

/// How a implies b: "same" if it is equivalent, "yes" if not, "no" if it does not.
std::string Containment(const RqExpr* pA, const RqExpr* pB) {
  bool bEquivalent = true;
  if (!IsContainedBy(nullptr, pA, pB, bEquivalent)) return bEquivalent ? "no, equivalent" : "no";
  return bEquivalent ? "same" : "yes";
}

Heap<RqExprCond> InSubquery(RqAbstractList* pList) {
  return Heap<RqExprCond>(new RqExprCondIn(Col(L"k"), new RqExprPhysicalSubquery(pList, nullptr), false));
}

TEST(PhysicalSubquery, OnlyAMereWrapperStandsForTheBlockInIt) {
  const auto addColumn = [](RqList& list) {
    const RqExpr& first = *list.GetProjection()->GetIthColumn(0)->GetExpr();
    list.GetProjection()->AddColumn(new RqDerivedColumn(first.DeepExprCopy(true), 0));
  };
  struct {
    const char* m_name;
    std::function<void(RqList&)> m_change;  // of the wrapper SELECT x FROM (SELECT x FROM table)
    const char* m_answer;                   // whether to be in it implies to be in the block
    bool m_bOtherColumn = false;            // the block has a column more, before x
  } const rows[] = {
      {"mere", [](RqList&) {}, "same"},
      // Clauses that take rows away, put them together or in an order
      {"detail filter", [](RqList& list) { list.ConcatenateToDetailFilter(Equal(Int(1), Int(2))); }, "no"},
      {"summary filter", [](RqList& list) { list.SetSummaryFilter(new RqSummaryFilter(Equal(Int(1), Int(2)))); }, "no"},
      {"group by", [](RqList& list) { list.SetGroupBy(GroupBy({Col(L"x")})); }, "no"},
      {"having", [](RqList& list) { list.SetHaving(new RqHaving(Equal(Int(1), Int(2)))); }, "no"},
      {"order by", [](RqList& list) { list.SetOrderBy(new RqOrderBy({RqSortSpec()}, false)); }, "no"},
      {"distinct", [](RqList& list) { list.SetDistinct(true); }, "same"},
      // Wanted, though fewer rows are left.
      {"limit", [](RqList& list) { list.SetRowNumLimit(1); }, "same"},
      // Tables
      {"no table", [](RqList& list) { list.SetJoinSpec(nullptr); }, "no"},
      {"a plain table", [](RqList& list) { list.GetJoinSpec()->GetIthTableReference(0)->SetLeftTable(Table(3)); },
       "no"},
      {"two tables", [](RqList& list) { list.GetJoinSpec()->AddChild(NodeOf(Table(5))); }, "no"},
      {"outer join",
       [](RqList& list) { list.GetJoinSpec()->GetIthTableReference(0)->SetJoinType(SqlTableRef::kLeftOuterJoin); },
       "no"},
      // Columns. Wanted: the rows of the block count, whatever of them is selected.
      {"two columns", addColumn, "yes"},
      {"a computed column", [](RqList& list) { list.GetProjection()->GetIthColumn(0)->SetExpr(Int(1)); }, "yes"},
      {"another column than the block's first", [](RqList&) {}, "yes", true},
      {"as many columns as the block, but two", addColumn, "yes", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const auto makeInner = [&row] {
      return List(row.m_bOtherColumn ? Exprs(Col(L"w", 3), Col(L"x", 3)) : Exprs(Col(L"x", 3)), {Table(3)});
    };
    RqList* const pInner = makeInner();
    Heap<RqList> wrapper = Wrap(pInner, 4);
    RqProjection& columns = *pInner->GetProjection();
    wrapper->GetProjection()->GetIthColumn(0)->SetExpr(
        new RqDerivedColumnReference(columns.GetIthColumn(columns.GetNumColumns() - 1)));
    row.m_change(*wrapper);
    const Heap<RqExprCond> plain = InSubquery(makeInner());
    const Heap<RqExprCond> stranger = InSubquery(List({Col(L"x", 5)}, {Table(5)}));
    const Heap<RqExprCond> wrapped = InSubquery(wrapper.Release());
    EXPECT_EQ(Containment(wrapped.Get(), plain.Get()), row.m_answer);
    EXPECT_EQ(Containment(wrapped.Get(), stranger.Get()), "no") << "another block";
    EXPECT_EQ(Containment(plain.Get(), wrapped.Get()), "no") << "a block stands for no wrapper of it";
  }
}

TEST(DerivedColumn, IsComparedAsWhatItComputes) {
  const Heap<RqList> outer = Wrap(Wrap(List({Col(L"x"), Col(L"y")}, {Table(1)}), 2).Release(), 3);
  RqDerivedColumn& middle = InnerColumn(*outer, 0, 0);
  RqDerivedColumn& inner = *static_cast<RqDerivedColumnReference*>(middle.GetExpr())->GetDerivedColumn();
  const auto toX = [&inner] { return new RqDerivedColumnReference(&inner); };
  const auto toToX = [&middle] { return new RqDerivedColumnReference(&middle); };
  struct {
    const char* m_name;
    RqExpr *m_pEqual, *m_pLess;
    const char* m_answer;  // whether the one = 5 implies the other < 6
  } const rows[] = {
      {"a reference and its column", toX(), Col(L"x"), "yes"},
      {"a column and a reference to it", Col(L"x"), toX(), "yes"},
      {"two references", toX(), toX(), "yes"},
      {"a reference and another column", toX(), Col(L"y"), "no"},
      {"two references two blocks up", toToX(), toToX(), "yes"},
      // Only one reference is followed.
      {"a reference two blocks up and the column", toToX(), Col(L"x"), "no"},
      {"a reference two blocks up and one that is one up", toToX(), toX(), "no"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_name);
    const Heap<RqExprCond> equal(Equal(row.m_pEqual, Int(5)));
    const RqExprCondLess less(row.m_pLess, Int(6));
    EXPECT_EQ(Containment(equal.Get(), &less), row.m_answer);
    EXPECT_EQ(Containment(&less, equal.Get()), "no");
  }
  const Heap<RqExprCond> ofReference(Equal(toX(), Int(5)));
  const Heap<RqExprCond> ofColumn(Equal(Col(L"x"), Int(5)));
  EXPECT_EQ(Containment(ofReference.Get(), ofColumn.Get()), "yes") << "equivalent is what has one form";
}

TEST(PhysicalSubquery, IsKnownByItsText) {
  const Heap<RqExprCond> wrapped = InSubquery(Wrap(List({Col(L"x", 3)}, {Table(3)}), 4).Release());
  const Heap<RqNode> copy(wrapped->DeepCopy(true));
  EXPECT_EQ(TextOf(*copy), TextOf(*wrapped));
  auto& subquery = static_cast<RqExprPhysicalSubquery&>(*copy->GetIthChild(RqExprCondIn::kInValues));
  EXPECT_NE(subquery.GetSubqueryRqAbstractList(), nullptr);
  const Heap<RqAbstractList> old(subquery.GetSubqueryRqAbstractList());
  subquery.SetSubquery(nullptr, nullptr);
  EXPECT_TRUE(subquery.GetSubqueryDumpout().empty() && subquery.GetCRC() == 0);
}

}  // namespace
