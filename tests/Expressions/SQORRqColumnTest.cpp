#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"

#include <gtest/gtest.h>

#include <tuple>

#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"

namespace {

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
  EXPECT_EQ(month.GetTableID(), VoidID(kTIDAEntity, 1u));
  EXPECT_EQ(month.GetAlternateSortOrder(&m_rp).GetID(), kMonthNumber);
  EXPECT_TRUE(month.HasAlternateSortOrder(&m_rp) && !number.HasAlternateSortOrder(&m_rp));
  EXPECT_TRUE(unknown.GetTableID().IsNullID() && unknown.GetAttribute(&m_rp).IsNull());
  EXPECT_FALSE(unknown.HasAlternateSortOrder(&m_rp));
  EXPECT_EQ(RqEntity(&m_rp, month.GetTableID()).GetRpEntity(&m_rp)->GetName(), L"Sales");
}

TEST_F(Columns, PhysicalOnesReachTheRepository) {
  EXPECT_EQ(RqTargetColumn(&m_rp, kMonthName, 4).GetRpDatabaseObj(&m_rp)->GetName(), L"Warehouse");
  RqTargetColumn named(L"amount", RqTargetColumn::kUnknownTableNum);
  EXPECT_EQ(named.GetRepositoryUniqueID32(), 0xffffffffu);
  EXPECT_TRUE(named.GetRpDatabaseObj(&m_rp).IsNull());
  named.MarkTargetID(VoidID(kTIDADatabase, 10u));
  EXPECT_EQ(named.GetRpDatabaseObj(&m_rp)->GetName(), L"Warehouse") << "the mark tells where there is no object";
  EXPECT_TRUE(named.GetRpDatabaseObj(nullptr).IsNull());
  named.SetColumnID(kMonthName);
  EXPECT_EQ(named.GetColumnName(&m_rp), L"MONTH_NAME");
  EXPECT_EQ(named.GetColumnName(nullptr), L"amount");
}

TEST_F(Columns, PhysicalOnesReferToTheAtomicTableOfTheirNumber) {
  const RqTargetColumn column(L"a", 3);
  const TestTable same(3, true), other(4, true), derived(3, false);
  EXPECT_TRUE(column.RefersTo(&same));
  EXPECT_FALSE(column.RefersTo(&other) || column.RefersTo(&derived) || column.RefersTo(nullptr));
  EXPECT_FALSE(RqAttribute(&m_rp, kMonth).RefersTo(&same));
}

TEST_F(Columns, RelateToEachAttributeOnce) {
  RqTargetColumn column(L"a", 1);
  for (const VoidID& id : {kMonth, kMonthNumber, kMonth}) column.AddRelatedAttrId(id);
  EXPECT_EQ(column.GetRelatedAttrIds(), (VoidIDVector{kMonth, kMonthNumber}));
}

TEST_F(Columns, AreEquivalentAcrossDerivedTypesOnDemand) {
  const RqTargetColumn plain(L"a", 1);
  const RqTargetCubeColumn cube(KXString(L"a"), 1);
  const RqTargetCacheColumn otherTable(KXString(L"a"), 2);
  const RqTargetCubeColumn otherName(KXString(L"A"), 1);
  const RqAttribute attribute(&m_rp, kMonth);
  const std::tuple<const RqTargetColumn*, const RqExpr*, bool, bool> rows[] = {
      {&plain, &plain, true, true},        {&plain, &cube, false, true},      {&cube, &plain, false, true},
      {&plain, &otherTable, false, false}, {&cube, &otherName, false, false}, {&plain, &attribute, false, false}};
  for (const auto& [pLeft, pRight, bEquivalent, bIgnoringTypes] : rows) {
    EXPECT_EQ(pLeft->IsEquivalentIgnoreDerivedTypes(*pRight, RqEquivalence(), false), bEquivalent);
    EXPECT_EQ(pLeft->IsEquivalentIgnoreDerivedTypes(*pRight, RqEquivalence(), true), bIgnoringTypes);
  }
}

TEST_F(Columns, DimensionsAndLevelsReachTheRepository) {
  m_rp.MakeObject<MemoryLevel>(22, L"Quarter", VoidID(kTIDADimension, 20u));
  m_rp.MakeObject<MemoryAWLevel>(23, L"AWQuarter");
  EXPECT_TRUE(RqExprDimension(&m_rp, VoidID(kTIDADimension, 20u)).GetPresentationHierarchy(&m_rp).IsNull());
  const RqExprLevel quarter(&m_rp, VoidID(kTIDALevel, 22u));
  EXPECT_EQ(quarter.GetRpLevel(&m_rp)->GetDimensionID(), VoidID(kTIDADimension, 20u));
  EXPECT_TRUE(quarter.GetPhysicalLevel(&m_rp).IsNull());
  const RqExprLevel awQuarter(&m_rp, VoidID(kTIDAAWLevel, 23u), RqExprLevel::kAWLevel);
  EXPECT_EQ(awQuarter.GetAWLevel(&m_rp)->GetName(), L"AWQuarter");
  EXPECT_TRUE(awQuarter.GetRpLevel(&m_rp).IsNull());
}

TEST_F(Columns, MembersStandWithTheirKeyColumns) {
  auto* const pValue = new RqExprIntegerLiteral(3);
  RqExprMemberReference member(new RqExprLevel(&m_rp, VoidID(kTIDALevel, 22u)), pValue);
  EXPECT_FALSE(member.IsAllMemberReference());
  RqExprVector columns{new RqAttribute(&m_rp, kMonth)};
  member.SetLogicalKeyCols(columns);
  const RqExprVector replacing{new RqAttribute(&m_rp, kMonth), new RqAttribute(&m_rp, kMonthNumber)};
  columns = replacing;
  member.SetLogicalKeyCols(columns);
  EXPECT_TRUE(columns.empty());
  ConstRqExprVector keyCols;
  member.GetLogicalKeyCols(keyCols);
  EXPECT_EQ(keyCols, ConstRqExprVector(replacing.begin(), replacing.end()));
  EXPECT_EQ(member.GetMemberValue(), pValue);
  member.RemoveLogicalKeyCols();
  EXPECT_EQ(member.GetNumOperands(), RqExprMemberReference::kNumOperands);
  EXPECT_TRUE(RqExprMemberReference(nullptr, nullptr).IsAllMemberReference());
}

}  // namespace
