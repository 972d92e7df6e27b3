#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "Expressions/ExprSamples.h"
#include "Host/MemAlloc.h"

namespace {

using testing::IsEmpty;

struct InitRow {
  const char* name;
  std::function<RqExprVector()> columns;
  const char* kept;    // in input order, constants kept
  const char* sorted;  // in the order of expressions
  const char* withoutConstants;
};

void PrintTo(const InitRow& row, std::ostream* pOut) { *pOut << row.name; }

const InitRow kInitRows[] = {
    {"none", [] { return RqExprVector{}; }, "[]", "[]", "[]"},
    {"distinct",
     [] {
       return RqExprVector{Col(L"c"), Col(L"a"), Col(L"b")};
     },
     "[c a b]", "[a b c]", "[c a b]"},
    {"duplicates",
     [] {
       return RqExprVector{Col(L"b"), Col(L"a"), Col(L"b"), Col(L"a"), Col(L"b")};
     },
     "[b a]", "[a b]", "[b a]"},
    {"constants",
     [] {
       return RqExprVector{Int(2), Col(L"a"), Int(1), Int(2), Null()};
     },
     "[2 a 1 null]", "[a 1 2 null]", "[a]"},
    {"constant rows",
     [] {
       return RqExprVector{Row({Int(1)}), Row({Int(1), Col(L"a")}), Row({})};
     },
     "[[1] [1 a] []]", "[[] [1] [1 a]]", "[[1 a] []]"},
    {"only constants",
     [] {
       return RqExprVector{Int(1), Int(1)};
     },
     "[1]", "[1]", "[]"},
    {"null columns",
     [] {
       return RqExprVector{Col(L"a"), nullptr, nullptr};
     },
     "[a -]", "[- a]", "[a -]"},
};

class ColumnListInit : public testing::TestWithParam<InitRow> {};

TEST_P(ColumnListInit, TakesColumns) {
  const InitRow& row = GetParam();
  const auto init = [&row](bool dropConstants, bool sortColumns) {
    RqExprVector columns = row.columns();
    const RqExprColumnList list(columns, dropConstants, sortColumns);
    EXPECT_THAT(columns, IsEmpty());
    return Text(&list);
  };
  const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
  EXPECT_EQ(init(false, false), row.kept);
  EXPECT_EQ(init(false, true), row.sorted);
  EXPECT_EQ(init(true, false), row.withoutConstants);
  EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore) << "what is dropped is deleted";
}

INSTANTIATE_TEST_SUITE_P(Rows, ColumnListInit, testing::ValuesIn(kInitRows));

TEST(ColumnList, KeepsTheFirstOfEqualColumns) {
  RqExpr* const pFirst = Col(L"a");
  RqExprVector columns{Col(L"b"), pFirst, Col(L"a")};
  RqExprColumnList list(columns, true, true);
  EXPECT_EQ(list.GetIthColumn(0), pFirst);
}

TEST(ColumnList, KeepsRepeatsWhenFilledByHand) {
  RqExprColumnList list;
  list.SetNumColumns(2);
  list.SetIthColumn(0, Int(1));
  list.SetIthColumn(1, Int(1));
  list.AddChild(Int(1));
  EXPECT_EQ(Text(&list), "[1 1 1]");
  list.SetNumColumns(1);
  EXPECT_EQ(list.GetNumColumns(), 1);
}

TEST(ColumnListOrdered, KeepsOrderRepeatsAndNulls) {
  RqExprVector columns{Col(L"b"), nullptr, Int(1), Col(L"a"), Int(1)};
  RqExprColumnListOrdered list(columns);
  EXPECT_THAT(columns, IsEmpty());
  EXPECT_EQ(Text(&list), "[b - 1 a 1]");
  EXPECT_FALSE(list.IsValueExpr());
  EXPECT_TRUE(list.IsMultiExpr());

  const std::unique_ptr<RqExpr> pMember(Col(L"a"));
  const std::unique_ptr<RqExpr> pStranger(Col(L"a", 2));
  EXPECT_TRUE(list.HasEquivalentMember(*pMember));
  EXPECT_FALSE(list.HasEquivalentMember(*pStranger));
}

TEST(ColumnListOrdered, IsAlwaysNullWhenItsColumnsAre) {
  const struct {
    std::unique_ptr<RqExpr> pList;
    bool bAlwaysNull;
  } rows[] = {{std::unique_ptr<RqExpr>(Row({})), false},
              {std::unique_ptr<RqExpr>(Row({Null(), nullptr, Null()})), true},
              {std::unique_ptr<RqExpr>(Row({nullptr})), true},
              {std::unique_ptr<RqExpr>(Row({Null(), Col(L"a")})), false},
              {std::unique_ptr<RqExpr>(Row({Row({Null()}), Null()})), true}};
  for (const auto& row : rows) EXPECT_EQ(row.pList->IsAlwaysNull(), row.bAlwaysNull) << Text(row.pList);
}

}  // namespace
