#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOpaqueTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTELMNativeTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "TestUtil.h"

namespace {

using Ref = SqlTableRef;
using OwnedTable = std::unique_ptr<RqAbstractTable>;

constexpr VoidID kWarehouse{kTIDADatabase, 1u};
constexpr VoidID kMart{kTIDADatabase, 2u};
constexpr VoidID kSales{kTIDATable, 10u};
constexpr VoidID kTime{kTIDATable, 11u};
constexpr VoidID kAlias{kTIDATable, 12u};

/// A table of one field, which has a dictionary of one field.
class TestStorage final : public ATELMNativeTable {
 public:
  const TableIdentifier& GetTableIdentifier() const override { return m_identifier; }
  const KXFieldDescriptor* GetFieldDescriptor(const KXString& name) const override { return m_fields.FindField(name); }
  const ATELMDictionary* GetDictionary(const KXString& name) const override {
    return name == L"CITY" ? &m_dictionary : nullptr;
  }

 private:
  struct Fields final : ATELMDictionary, KXRecordMetaData {
    explicit Fields(const wchar_t* name) { AddField(name, KXTypeInfo()); }
    const KXFieldDescriptor* GetFieldDescriptor(const KXString& name) const override { return FindField(name); }
  };
  TableIdentifier m_identifier{L"user", L"SALES"};
  Fields m_fields{L"CITY"};
  Fields m_dictionary{L"CODE"};
};

class TestCacheEntry final : public CachePhysicalSeedEntry {
 public:
  void GetRecordMetaData(KXRecordMetaData& metaData) const override { metaData.AddField(L"c1", KXTypeInfo()); }
};

RqAtomicTable* Atomic(unsigned number, ServerInfo::TargetType target = ServerInfo::kSQLite) {
  auto* const pTable = new RqAtomicTable(nullptr, static_cast<int>(number), VoidID(kTIDATable, number));
  pTable->MarkTargetType(target);
  return pTable;
}
RqExprCond* AEquals(int value) { return new RqExprCondEquality(Col(L"a"), Int(value), false); }
/// Of a block that is filtered by a = value.
RqDerivedTable* Derived(int number, int value = 0) {
  auto* const pBlock = new RqList(0);
  pBlock->SetDetailFilter(new RqDetailFilter(AEquals(value)));
  return new RqDerivedTable(pBlock, number);
}
RqTableReference* Join(Ref::JoinType type, RqAbstractTable* pLeft, RqAbstractTable* pRight,
                       RqExprCond* pCond = nullptr) {
  auto* const pRef = new RqTableReference(type, pLeft, pCond, pRight, kDriving_UnknownTable);
  pRef->MarkTargetType(ServerInfo::kSQLite);
  return pRef;
}
RqTableReference* One(RqAbstractTable* pTable) { return Join(Ref::kInnerJoin, pTable, nullptr); }

/// Reads the payload of source into target, to the last byte, and writes it again.
void ReadInto(RqNode& source, RqNode& target) {
  const ByteVector bytes = Payload(source);
  const BoundedRead bounds(bytes);
  bounds.RequireAtEnd(target.FromByteVector(bytes.data()));
  EXPECT_EQ(Payload(target), bytes);
}

/// A repository of two databases with a table, its alias and its joins.
class Tables : public testing::Test {
 protected:
  Tables() {
    m_rp.MakeObject<MemoryDatabase>(1, L"Warehouse", ServerInfo::kSQLite);
    m_rp.MakeObject<MemoryDatabase>(2, L"Mart", ServerInfo::kDuckDB);
    auto& sales = m_rp.MakeObject<MemoryTable>(10, L"SALES", kWarehouse, kWarehouse);
    m_rp.MakeObject<MemoryTable>(11, L"TIME", kWarehouse, kWarehouse);
    m_rp.MakeObject<MemoryTable>(12, L"S2", kWarehouse, kWarehouse).SetAliasOf(kSales);
    sales.AddDynamicName({kTime, kMart}, L"NO_DATABASE_IN_FRONT");
    sales.AddDynamicName({kMart}, L"SALES_MART");
    sales.AddDynamicName({kWarehouse}, L"");
    sales.AddDynamicName({kWarehouse}, L"TOO_LATE");
    unsigned number = 20;
    for (const VoidIDVector& joined : {VoidIDVector{kSales, kTime, kAlias}, {kSales, kSales}, {kTime, kSales}}) {
      sales.AddComplexJoin(m_rp.MakeObject<MemoryComplexJoin>(number++, L"J", kWarehouse, joined).GetID());
    }
  }

  MemoryGateway m_rp;
};

TEST_F(Tables, NamesAndJoins) {
  const RqAtomicTable cached(UniversallyUniqueID{1, 2, 3}, nullptr, 1);
  const RqTransientOpaqueTable transient(&m_rp, 1, L"select 1", kMart, kOpaqueTableTypeSelect);
  RqAtomicTable inWarehouse(&m_rp, 1, kSales), inMart(&m_rp, 1, kSales), alias(&m_rp, 1, kAlias);
  inWarehouse.MarkTargetID(kWarehouse);
  inMart.MarkTargetID(kMart);
  alias.MarkTargetID(kMart);
  struct {
    const RqAtomicTable& m_table;
    bool m_bGateway, m_bBareName, m_bTargetSpecific;
    const wchar_t* m_name;
  } const rows[] = {{cached, true, true, true, L"CacheTable"}, {transient, false, false, false, L"select 1"},
                    {inMart, false, true, true, L"3024:10"},   {inMart, true, false, false, L"Warehouse.SALES"},
                    {inMart, true, true, false, L"SALES"},     {inMart, true, false, true, L"SALES_MART"},
                    {alias, true, true, true, L"SALES_MART"},  {inWarehouse, true, true, true, L"SALES"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.m_table.GetTableName(row.m_bGateway ? &m_rp : nullptr, row.m_bBareName, row.m_bTargetSpecific),
              row.m_name);
  }
  EXPECT_EQ(alias.GetAliasName(&m_rp), L"S2");
  EXPECT_EQ(inMart.GetAliasName(&m_rp), L"");
  EXPECT_EQ(inMart.GetRpDatabaseObj(&m_rp).GetID(), kWarehouse);
  EXPECT_TRUE(cached.GetRpDatabaseObj(&m_rp).IsNull());
  const RqAtomicTable sales(&m_rp, 1, kSales), same(&m_rp, 2, kSales), time(&m_rp, 3, kTime);
  EXPECT_EQ(sales.GetCommonComplexJoin(&m_rp, &time).GetID(), VoidID(kTIDAComplexJoin, 22u));
  EXPECT_TRUE(sales.GetCommonComplexJoin(&m_rp, &alias).IsNull());
  EXPECT_TRUE(sales.GetCommonComplexJoin(&m_rp, &same).IsNull());
}

TEST_F(Tables, MistakesEndTheProcess) {
  const RqAtomicTable sales(&m_rp, 1, kSales), unknown(&m_rp, 1, VoidID(kTIDATable, 99u));
  const RefCntTELMNativeTable storage(new TestStorage);
  RqTransientOpaqueTable nullColumn;
  nullColumn.AddTransientColumn(VoidID::NullID);
  const ByteVector bytes = Payload(nullColumn);
  std::list<RqIdentifiedTable*> tables;
  RqList block(0);
  const std::string failed = "assertion failed: ";
  struct {
    std::string m_text;
    std::function<void()> m_mistake;
  } const rows[] = {{failed + "pRp\n", [&] { sales.GetRpDatabaseObj(nullptr); }},
                    {failed + "pRp\n", [&] { sales.GetCommonComplexJoin(nullptr, &unknown); }},
                    {failed + "pOtherTable\n", [&] { sales.GetCommonComplexJoin(&m_rp, nullptr); }},
                    {failed + "!thisRpTable.IsNull()\n", [&] { unknown.GetCommonComplexJoin(&m_rp, &sales); }},
                    {failed + "!otherRpTable.IsNull()\n", [&] { sales.GetCommonComplexJoin(&m_rp, &unknown); }},
                    {failed + "GetIthChild(kInnerList)\n", [] { RqDerivedTable(nullptr, 1).GetInnerList(); }},
                    {failed + "IsDerivedTableReference()\n", [] { One(Atomic(1))->GetDerivedTable(); }},
                    {failed + "!colID.IsNullID()\n", [&] { nullColumn.FromByteVector(bytes.data()); }},
                    {failed, [] { RqTELMNativeTable().GetFieldDescriptor(L"CITY"); }},
                    {": ZIP is not dictionary-encoded\n", [&] { RqTELMNativeTable(storage, L"ZIP", 1); }},
                    {"logic error", [&] { unknown.GetTableName(&m_rp, true, true); }},
                    {"logic error", [&] { RqTableReference::CollectIdentifiedTables(&block, tables); }}};
  for (const auto& row : rows) EXPECT_DEATH(row.m_mistake(), testing::HasSubstr(row.m_text));
  const BoundedRead bounds(bytes);
  EXPECT_THROW(nullColumn.FromByteVector(bytes.data()), ErrorMessage);
}

TEST(AtomicTable, OrderAndEquality) {
  const auto cached = [](const UniversallyUniqueID& id, const RefCntCachePhysicalSeedEntry& entry) {
    return RqAtomicTable(id, entry, 0);
  };
  MemoryGateway rp;  // of repository 0
  const RefCntCachePhysicalSeedEntry entry(new TestCacheEntry);
  // clang-format off
  const RqAtomicTable sorted[] = {
      {&rp, 9, VoidID(-1, 5u)}, {&rp, 8, kSales}, {&rp, 7, VoidID(kTIDATable, 0xfffffff0u)},
      cached({9}, nullptr), cached({1, -1, 9}, entry), cached({1, 0, 8}, entry),
      cached({1, 0, 9, reinterpret_cast<void*>(-1)}, entry), cached({0xffffffffu}, entry)};
  // clang-format on
  for (std::size_t i = 0; i < std::size(sorted); ++i) {
    for (std::size_t j = 0; j < std::size(sorted); ++j) {
      SCOPED_TRACE(std::to_string(i) + " " + std::to_string(j));
      EXPECT_EQ(sorted[i] < sorted[j], i < j);
      EXPECT_EQ(sorted[i] == sorted[j], i == j);
    }
  }
  EXPECT_TRUE(cached({1, 2, 3}, nullptr) == cached({4, 5, 6}, nullptr));
  EXPECT_EQ((UniversallyUniqueID{0xffffffffu, -3, 2}).ToString(), L"-1:-3:2:(nil)");
}

TEST(AnyTable, Equivalence) {
  const auto make = [](auto* pTable, const auto& change) {
    change(*pTable);
    return OwnedTable(pTable);
  };
  const auto same = [](auto&) {};
  const auto atomic = [&](unsigned number, const auto& change) { return make(Atomic(number), change); };
  const auto opaque = [](OpaqueTableType t) { return OwnedTable(new RqOpaqueTable(nullptr, 1, kSales, kMart, t)); };
  const auto text = [&](const auto& change) {
    return make(new RqTransientOpaqueTable(nullptr, 1, L"Select 1", kMart, kOpaqueTableTypeSelect), change);
  };
  const auto script = [&](const wchar_t* path) {
    const RefCnt<ExternalScriptExecutionData> data(new ExternalScriptExecutionData);
    data->m_ScriptPath = path;
    return text([&](auto& table) { table.AddExternalScriptExecutionData(data); });
  };
  const auto derived = [](int number, int value) { return OwnedTable(Derived(number, value)); };
  const auto empty = [] { return OwnedTable(new RqDerivedTable(nullptr, 1)); };
  const auto join = [](int value, unsigned right, Ref::JoinType type = Ref::kInnerJoin) {
    return OwnedTable(Join(type, Atomic(1), right ? Atomic(right) : nullptr, value ? AEquals(value) : nullptr));
  };
  const auto local = [&] { return make(One(Atomic(1)), [](auto& t) { t.MarkTargetType(ServerInfo::kUnknown); }); };
  struct {
    const char* m_what;
    OwnedTable m_lhs, m_rhs;
    bool m_bEquivalent;
    // clang-format off
  } const rows[] = {
      {"number", atomic(1, same), atomic(1, [](auto& t) { t.SetTableNumber(5); }), true},
      {"target", atomic(1, same), atomic(1, [](auto& t) { t.MarkTargetID(kMart); }), false},
      {"table", atomic(1, same), atomic(2, same), false}, {"kinds", atomic(1, same), join(0, 0), false},
      {"opaque type", opaque(kOpaqueTableTypeSelect), opaque(kOpaqueTableTypeTableName), false},
      {"letter case", text(same), text([](auto& t) { t.SetQueryString(L"SELECT 1"); }), true},
      {"text", text(same), text([](auto& t) { t.SetQueryString(L"select 2"); }), false},
      {"connection", text(same), text([](auto& t) { t.SetTargetConnectionId(L"c"); }), false},
      {"column", text(same), text([](auto& t) { t.AddTransientColumn(kTime); }), false},
      {"type", text(same), text([](auto& t) { t.SetColumnTypeInfo(L"a", KXTypeInfo()); }), false},
      {"base is not asked", text(same), text([](auto& t) { t.MarkTargetID(kWarehouse); }), true},
      {"same script", script(L"s"), script(L"s"), true}, {"script", script(L"s"), script(L"t"), false},
      {"derived", derived(1, 3), derived(2, 3), true}, {"inner block", derived(1, 3), derived(1, 4), false},
      {"no inner block", empty(), empty(), false}, {"local join", local(), local(), false},
      {"join", join(1, 2), join(1, 2), true}, {"join type", join(1, 2), join(1, 2, Ref::kLeftOuterJoin), false},
      {"join condition", join(1, 2), join(2, 2), false}, {"one condition", join(1, 2), join(0, 2), false},
      {"right table", join(1, 2), join(1, 3), false}, {"one right table", join(1, 2), join(1, 0), false},
      {"no right table", join(0, 0), join(0, 0), true}};
  // clang-format on
  for (const auto& row : rows) {
    SCOPED_TRACE(row.m_what);
    EXPECT_EQ(row.m_lhs->IsEquivalent(*row.m_rhs), row.m_bEquivalent);
    EXPECT_EQ(row.m_rhs->IsEquivalent(*row.m_lhs), row.m_bEquivalent);
  }
  const OwnedTable pLocal = local();
  EXPECT_FALSE(pLocal->IsEquivalent(*pLocal));
}

TEST(AnyTable, CopiesAndBytes) {
  RqAtomicTable cached({1, -2, 3, &cached}, new TestCacheEntry, 4), readCached;
  ASSERT_TRUE(cached.GetMetaData());
  const auto pCached = Copy(cached);
  ASSERT_NE(pCached->GetMetaData(), cached.GetMetaData());
  EXPECT_EQ(*pCached->GetMetaData(), *cached.GetMetaData());
  EXPECT_FALSE(pCached->IsEquivalent(cached)) << "each has a description of its own";
  ReadInto(cached, readCached);
  EXPECT_EQ(readCached.GetCacheTableID(), cached.GetCacheTableID());
  EXPECT_EQ(readCached.GetMetaData(), nullptr);

  RqTransientOpaqueTable transient(nullptr, 1, L"call f", kMart, kOpaqueTableTypeStoredProc), readTransient;
  for (const VoidID& id : {kTime, kSales, kTime}) transient.AddTransientColumn(id);
  transient.SetColumnTypeInfo(L"a", KXTypeInfo(KXDateData, 1, 2, 0));
  transient.AddColumnTypeInfos({{L"a", KXTypeInfo()}, {L"b", KXTypeInfo(KXInt4Data, 0, 0, 1)}});
  transient.AddExternalScriptExecutionData(new ExternalScriptExecutionData);
  transient.SetExtTableDelimiter(L";");
  transient.SetTargetConnectionId(L"pool");
  transient.SetOpaqueTableName(L"T");
  transient.SetCacheSharedKey(L"key");
  EXPECT_EQ(transient.GetMySize(), 64 + 4 * (6 + 4 + 1 + 3 + 1) + 2 * 8 + 2 * (4 + 8) + 8)
      << "the node, texts, columns, names with their types, a script";
  readTransient.AddTransientColumn(kAlias);
  ReadInto(transient, readTransient);
  const auto pTransient = Copy(transient);
  EXPECT_EQ(Payload(*pTransient), Payload(transient));
  EXPECT_TRUE(readTransient.IsEquivalent(transient));
  VoidIDVector columns;
  readTransient.GetTransientColumns(columns);
  EXPECT_EQ(columns, (VoidIDVector{kTime, kSales}));
  KXTypeInfo type;
  EXPECT_TRUE(readTransient.GetColumnTypeInfo(L"a", type));
  EXPECT_FALSE(readTransient.GetColumnTypeInfo(L"c", type));
  EXPECT_EQ(type, KXTypeInfo(KXDateData, 1, 2, 0)) << "the first of a, untouched by c";

  const RefCntTELMNativeTable storage(new TestStorage);
  RqTELMNativeTable table(storage, 3), dictionary(storage, L"CITY", 3), readDictionary;
  dictionary.SetSampleSize(9);
  EXPECT_TRUE(table.GetFieldDescriptor(L"CITY"));
  EXPECT_FALSE(dictionary.GetColumnTypeInfo(L"CITY", type)) << "a field of the table";
  ReadInto(dictionary, readDictionary);
  EXPECT_EQ(readDictionary.GetTableIdentifier().ToString(), L"user.SALES");
  EXPECT_EQ(readDictionary.GetSampleSize(), 0u);
  EXPECT_TRUE(readDictionary.GetRefCntTELMNativeTable().IsNull());
  readDictionary.SetRefCntTELMNativeTable(storage);
  EXPECT_TRUE(readDictionary.GetColumnTypeInfo(L"CODE", type));

  RqDerivedTable derived(new RqList(0), 5), readDerived(nullptr, 0);
  derived.SetCommonExprName(L"W");
  derived.SetInternalExec(true);
  ReadInto(derived, readDerived);
  EXPECT_EQ(readDerived.GetCommonExprName(), L"W");
  EXPECT_FALSE(readDerived.IsInternalExec());
  EXPECT_TRUE(Copy(derived)->IsInternalExec());
}

TEST(TableReference, TurnsRightJoinsRound) {
  struct {
    Ref::JoinType m_type;
    DrivingTableHint m_hint;
    int m_left;
    DrivingTableHint m_newHint;
  } const rows[] = {{Ref::kRightOuterJoin, kDriving_LeftTable, 2, kDriving_RightTable},
                    {Ref::kRightOuterJoin, kDriving_RightTable, 2, kDriving_LeftTable},
                    {Ref::kRightOuterJoin, kDriving_UnknownTable, 2, kDriving_UnknownTable},
                    {Ref::kLeftOuterJoin, kDriving_LeftTable, 1, kDriving_LeftTable}};
  for (const auto& row : rows) {
    RqTableReference ref(row.m_type, Atomic(1), AEquals(1), Atomic(2), row.m_hint);
    EXPECT_EQ(ref.GetJoinType(), Ref::kLeftOuterJoin);
    EXPECT_EQ(ref.GetDrivingTableHint(), row.m_newHint);
    EXPECT_EQ(static_cast<RqAtomicTable*>(ref.GetLeftTable())->GetTableNumber(), row.m_left);
    EXPECT_EQ(static_cast<RqAtomicTable*>(ref.GetRightTable())->GetTableNumber(), 3 - row.m_left);
    ref.SetJoinType(Ref::kRightOuterJoin);
    EXPECT_EQ(ref.GetJoinType(), Ref::kRightOuterJoin);
  }
}

TEST(TableReference, CopyAndBytes) {
  const std::unique_ptr<RqTableReference> pSource(Join(Ref::kNaturalJoin, Atomic(1), One(Derived(2)), AEquals(1)));
  RqExprParam param(1);
  pSource->SetJoinSubType(Ref::kIndexJoin);
  pSource->SetLeftJoinColumnIndexes({1, 2});
  pSource->SetNullsAreEqualFlags({true, false});
  pSource->SetFactTableIndex(4);
  pSource->SetRemoveCandidacy(true);
  pSource->SetHashJoinHint(kHash_LeftTable);
  pSource->SetInternalDriveJoinParameters({&param});
  pSource->SetNodeInfoVector(new NodeInfoVector);
  pSource->GetNodeInfoVector()->push_back(new NodeInfo(nullptr, pSource.get()));
  EXPECT_TRUE(static_cast<RqTableReference*>(pSource->GetRightTable())->GetRemoveCandidacy()) << "passed down";

  const auto pCopy = Copy(*pSource);
  EXPECT_EQ(Payload(*pCopy), Payload(*pSource));
  EXPECT_NE(pCopy->GetLeftTable(), pSource->GetLeftTable());
  EXPECT_EQ(pCopy->GetHashJoinHint(), kHash_LeftTable);
  EXPECT_EQ(pCopy->GetInternalDriveJoinParameters(), (RqExprParamVector{&param}));
  ASSERT_EQ(pCopy->GetNodeInfoVector()->size(), 1u);
  EXPECT_NE(pCopy->GetNodeInfoVector()->front(), pSource->GetNodeInfoVector()->front());
  EXPECT_EQ(pCopy->GetNodeInfoVector()->front()->GetJoinRef(), pSource.get());

  RqTableReference read;
  ReadInto(*pSource, read);
  EXPECT_TRUE(read.IsIndexJoin());
  EXPECT_EQ(read.GetFactTableIndex(), 4);
  EXPECT_EQ(read.GetHashJoinHint(), kHash_NoHashJoin);
  EXPECT_EQ(read.GetNodeInfoVector(), nullptr);
}

TEST(TableReference, QuestionsAboutNests) {
  using Own = std::unique_ptr<RqTableReference>;
  using Numbers = std::vector<int>;
  const auto inner = Ref::kInnerJoin;
  const auto vbl = [] { return Atomic(1, ServerInfo::kVblData11g); };
  // clang-format off
  struct {
    Own m_ref;
    bool m_bOuter, m_bNatural, m_bJoinTree, m_bDeclarative;
    Numbers m_numbers, m_atomicNumbers;
  } const rows[] = {
      {Own(One(Derived(2))), false, false, false, true, {2}, {}},
      {Own(One(vbl())), false, false, false, true, {1}, {1}},
      {Own(Join(inner, vbl(), Atomic(2))), false, true, true, false, {1, 2}, {1, 2}},
      {Own(Join(inner, vbl(), Atomic(2), AEquals(1))), false, false, true, false, {1, 2}, {1, 2}},
      {Own(Join(inner, Atomic(3), Atomic(2))), false, false, true, false, {3, 2}, {3, 2}},
      {Own(Join(inner, vbl(), One(Derived(2)))), false, false, true, false, {1, 2}, {1}},
      {Own(Join(Ref::kNaturalJoin, Atomic(1), Atomic(2))), true, true, true, false, {1, 2}, {1, 2}},
      {Own(One(Join(inner, Atomic(1), Atomic(2)))), false, false, true, false, {1, 2}, {1, 2}},
      {Own(Join(inner, Atomic(1), Join(inner, One(Atomic(2)), Join(Ref::kLeftOuterJoin, Atomic(3), Derived(4))))),
       true, false, true, false, {1, 2, 3, 4}, {1, 2, 3}}};
  // clang-format on
  const auto numbers = [](const auto& tables) {
    Numbers result;
    for (const auto* const pTable : tables) result.push_back(pTable->GetTableNumber());
    return result;
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(row.m_ref->HasOuterJoins(), row.m_bOuter);
    EXPECT_EQ(row.m_ref->IsReallyNaturalJoin(), row.m_bNatural);
    EXPECT_EQ(row.m_ref->IsTableReferenceJoinTree(), row.m_bJoinTree);
    EXPECT_EQ(row.m_ref->IsDeclarativeTableReference(), row.m_bDeclarative);
    std::list<RqIdentifiedTable*> identified;
    RqTableReference::CollectIdentifiedTables(row.m_ref.get(), identified);
    EXPECT_EQ(numbers(identified), row.m_numbers);
    std::list<RqAtomicTable*> atomic;
    GetAllDescendentAtomicTables(row.m_ref.get(), atomic);
    EXPECT_EQ(numbers(atomic), row.m_atomicNumbers);
  }
  EXPECT_EQ(rows[0].m_ref->GetDerivedTable(), rows[0].m_ref->GetLeftTable());
}

}  // namespace
