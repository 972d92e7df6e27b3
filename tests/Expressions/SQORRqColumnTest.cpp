#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"

#include <gtest/gtest.h>

#include <memory>

#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"

namespace {

const RqEquivalence kEquivalence;

/// A table of any sort. Its kind is borrowed.
class TestTable final : public RqIdentifiedTable {
 public:
  TestTable(int tableNumber, bool bAtomic) : RqIdentifiedTable(tableNumber), m_bAtomic(bAtomic) {}
  TestTable(const TestTable& rhs, bool bNewIDs, bool bDeepCopy)
      : RqIdentifiedTable(rhs, bNewIDs, bDeepCopy), m_bAtomic(rhs.m_bAtomic) {}
  bool IsLeafTable() const override { return true; }
  bool IsAtomicTable() const override { return m_bAtomic; }
  RqNode* DeepCopy(bool bNewIDs) const override { return new TestTable(*this, bNewIDs, true); }
  bool Accept(AVisitorRqNode&) override { return false; }

 private:
  bool m_bAtomic;
};

class Columns : public testing::Test {
 protected:
  Columns() {
    m_rp.SetRepositoryUniqueID32(7);
    m_rp.MakeObject<MemoryEntity>(1, L"Sales");
    m_rp.MakeObject<MemoryAttribute>(2, L"Month", VoidID(kTIDAEntity, 1u)).SetAlternateSortOrder(kMonthNumber);
    m_rp.MakeObject<MemoryAttribute>(3, L"MonthNumber", VoidID(kTIDAEntity, 1u));
    m_rp.MakeObject<MemoryDatabase>(10, L"Warehouse", ServerInfo::kDefault);
    m_rp.MakeObject<MemoryTable>(11, L"SALES", VoidID::NullID, VoidID(kTIDADatabase, 10u));
    m_rp.MakeObject<MemoryColumn>(12, L"MONTH_NAME", VoidID(kTIDATable, 11u), KXTypeInfo());
  }

  static constexpr VoidID kMonth{kTIDAAttribute, 2u};
  static constexpr VoidID kMonthNumber{kTIDAAttribute, 3u};
  static constexpr VoidID kMonthName{kTIDAColumn, 12u};

  MemoryGateway m_rp;
};

TEST_F(Columns, LogicalOnesReachTheRepository) {
  const RqAttribute month(&m_rp, kMonth);
  const RqAttribute number(&m_rp, kMonthNumber);
  const RqAttribute unknown(&m_rp, VoidID(kTIDAAttribute, 99u));
  EXPECT_EQ(month.GetRepositoryUniqueID32(), 7u);
  EXPECT_EQ(month.GetID(), kMonth);
  EXPECT_EQ(month.GetTableID(), VoidID(kTIDAEntity, 1u));
  EXPECT_EQ(month.GetAttribute(&m_rp)->GetName(), L"Month");
  EXPECT_TRUE(month.HasAlternateSortOrder(&m_rp));
  EXPECT_EQ(month.GetAlternateSortOrder(&m_rp).GetID(), kMonthNumber);
  EXPECT_FALSE(number.HasAlternateSortOrder(&m_rp));
  EXPECT_TRUE(unknown.GetTableID().IsNullID());
  EXPECT_TRUE(unknown.GetAttribute(&m_rp).IsNull());
  EXPECT_FALSE(unknown.HasAlternateSortOrder(&m_rp));
  EXPECT_EQ(RqEntity(&m_rp, month.GetTableID()).GetRpEntity(&m_rp)->GetName(), L"Sales");
  EXPECT_EQ(RqEntity(&m_rp, month.GetTableID()).GetTableID(), month.GetTableID());
}

TEST_F(Columns, PhysicalOnesReachTheRepository) {
  const RqTargetColumn column(&m_rp, kMonthName, 4);
  EXPECT_EQ(column.GetRepositoryUniqueID32(), 7u);
  EXPECT_EQ(column.GetSourceTableNumber(), 4);
  EXPECT_EQ(column.GetColumnName(&m_rp), L"MONTH_NAME");
  EXPECT_EQ(column.GetRpDatabaseObj(&m_rp)->GetName(), L"Warehouse");

  RqTargetColumn named(L"amount", RqTargetColumn::kUnknownTableNum);
  EXPECT_EQ(named.GetRepositoryUniqueID32(), 0xffffffffu);
  EXPECT_TRUE(named.GetColumnID().IsNullID());
  EXPECT_EQ(named.GetColumnName(&m_rp), L"amount");
  EXPECT_TRUE(named.GetRpDatabaseObj(&m_rp).IsNull());
  named.MarkTargetID(VoidID(kTIDADatabase, 10u));
  EXPECT_EQ(named.GetRpDatabaseObj(&m_rp)->GetName(), L"Warehouse") << "the mark tells where there is no object";
  EXPECT_TRUE(named.GetRpDatabaseObj(nullptr).IsNull());
  named.SetColumnID(kMonthName);
  EXPECT_EQ(named.GetColumnName(&m_rp), L"MONTH_NAME");
  EXPECT_EQ(named.GetColumnName(nullptr), L"amount");
}

TEST_F(Columns, LeaveNoHandleBehind) {
  { RqAttribute(&m_rp, kMonth).GetAlternateSortOrder(&m_rp); }
  RqTargetColumn(&m_rp, kMonthName, 1).GetRpDatabaseObj(&m_rp);
  for (const VoidID& id : {kMonth, kMonthNumber, kMonthName, VoidID(kTIDADatabase, 10u), VoidID(kTIDATable, 11u)}) {
    EXPECT_EQ(m_rp.GetObjectRefCount(id), 0u) << id.ToString();
  }
}

TEST_F(Columns, PhysicalOnesReferToTheAtomicTableOfTheirNumber) {
  RqTargetColumn column(L"a", 3);
  const TestTable same(3, true);
  const TestTable other(4, true);
  const TestTable derived(3, false);
  EXPECT_TRUE(column.RefersTo(&same));
  EXPECT_FALSE(column.RefersTo(&other));
  EXPECT_FALSE(column.RefersTo(&derived));
  EXPECT_FALSE(column.RefersTo(nullptr));
  EXPECT_FALSE(RqAttribute(&m_rp, kMonth).RefersTo(&same));
  column.SetSourceTableNumber(4);
  EXPECT_TRUE(column.RefersTo(&other));
}

TEST_F(Columns, RelateToEachAttributeOnce) {
  RqTargetColumn column(L"a", 1);
  for (const VoidID& id : {kMonth, kMonthNumber, kMonth}) column.AddRelatedAttrId(id);
  EXPECT_EQ(column.GetRelatedAttrIds(), (VoidIDVector{kMonth, kMonthNumber}));
}

TEST_F(Columns, AreEquivalentAcrossDerivedTypesOnDemand) {
  const RqTargetColumn plain(L"a", 1);
  const RqTargetCubeColumn cube(KXString(L"a"), 1);
  const RqTargetCacheColumn cache(KXString(L"a"), 1);
  const RqTargetCacheColumn otherTable(KXString(L"a"), 2);
  const RqTargetCubeColumn otherName(KXString(L"A"), 1);
  const RqAttribute attribute(&m_rp, kMonth);
  const struct {
    const RqTargetColumn& left;
    const RqExpr& right;
    bool bEquivalent;
    bool bIgnoringTypes;
  } rows[] = {{plain, plain, true, true},       {plain, cube, false, true},        {cube, plain, false, true},
              {cube, cache, false, true},       {plain, otherTable, false, false}, {cube, otherName, false, false},
              {plain, attribute, false, false}, {cache, otherTable, false, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(row.left.IsEquivalent(row.right, kEquivalence), row.bEquivalent);
    EXPECT_EQ(row.left.IsEquivalentIgnoreDerivedTypes(row.right, kEquivalence, false), row.bEquivalent);
    EXPECT_EQ(row.left.IsEquivalentIgnoreDerivedTypes(row.right, kEquivalence, true), row.bIgnoringTypes);
  }
}

TEST_F(Columns, DimensionsAndLevelsReachTheRepository) {
  m_rp.MakeObject<MemoryDimension>(20, L"Time");
  m_rp.MakeObject<MemoryPresentationHierarchy>(21, L"Calendar");
  m_rp.MakeObject<MemoryLevel>(22, L"Quarter", VoidID(kTIDADimension, 20u));
  m_rp.MakeObject<MemoryAWLevel>(23, L"AWQuarter");
  const RqExprDimension dimension(&m_rp, VoidID(kTIDADimension, 20u), VoidID(kTIDAPresentationHierarchy, 21u));
  EXPECT_EQ(dimension.GetRpDimension(&m_rp)->GetName(), L"Time");
  EXPECT_EQ(dimension.GetPresentationHierarchy(&m_rp)->GetName(), L"Calendar");
  const RqExprDimension bare(&m_rp, VoidID(kTIDADimension, 20u));
  EXPECT_TRUE(bare.GetPresentationHierarchy(&m_rp).IsNull());
  EXPECT_EQ(dimension.Compare(dimension), 0);
  EXPECT_GT(dimension.Compare(bare), 0);
  EXPECT_LT(bare.Compare(dimension), 0);

  const RqExprLevel quarter(&m_rp, VoidID(kTIDALevel, 22u));
  EXPECT_EQ(quarter.GetLevelType(), RqExprLevel::kLogicalLevel);
  EXPECT_EQ(quarter.GetRpLevel(&m_rp)->GetDimensionID(), VoidID(kTIDADimension, 20u));
  EXPECT_TRUE(quarter.GetPhysicalLevel(&m_rp).IsNull());
  const RqExprLevel awQuarter(&m_rp, VoidID(kTIDAAWLevel, 23u), RqExprLevel::kAWLevel);
  EXPECT_EQ(awQuarter.GetAWLevel(&m_rp)->GetName(), L"AWQuarter");
  EXPECT_TRUE(awQuarter.GetRpLevel(&m_rp).IsNull());
}

TEST_F(Columns, MembersStandWithTheirKeyColumns) {
  auto* const pLevel = new RqExprLevel(&m_rp, VoidID(kTIDALevel, 22u));
  auto* const pValue = new RqExprIntegerLiteral(3);
  RqExprMemberReference member(pLevel, pValue);
  EXPECT_EQ(member.GetLevelExpr(), pLevel);
  EXPECT_EQ(member.GetMemberValue(), pValue);
  EXPECT_FALSE(member.IsAllMemberReference());

  auto* const pYear = new RqAttribute(&m_rp, kMonth);
  auto* const pMonth = new RqAttribute(&m_rp, kMonthNumber);
  RqExprVector columns{new RqAttribute(&m_rp, kMonth)};
  member.SetLogicalKeyCols(columns);
  columns = {pYear, pMonth};
  member.SetLogicalKeyCols(columns);
  EXPECT_TRUE(columns.empty());
  ConstRqExprVector keyCols;
  member.GetLogicalKeyCols(keyCols);
  EXPECT_EQ(keyCols, (ConstRqExprVector{pYear, pMonth}));
  EXPECT_EQ(member.GetMemberValue(), pValue);
  member.RemoveLogicalKeyCols();
  EXPECT_EQ(member.GetNumOperands(), RqExprMemberReference::kNumOperands);

  auto* const pOtherLevel = new RqExprLevel(&m_rp, VoidID(kTIDALevel, 23u));
  member.SetLevelExpr(pOtherLevel);
  EXPECT_EQ(member.GetLevelExpr(), pOtherLevel);
  EXPECT_TRUE(RqExprMemberReference(nullptr, nullptr).IsAllMemberReference());
}

}  // namespace
