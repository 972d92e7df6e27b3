#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <tuple>

#include "Expressions/ExprSamples.h"
#include "Host/MemAlloc.h"

namespace {

using testing::IsEmpty;

TEST(ColumnList, TakesColumns) {
  // Columns; what is kept of them in their order, in the order of expressions, and without constants.
  const std::tuple<std::function<RqExprVector()>, const char*, const char*, const char*> rows[] = {
      {[] { return Exprs(); }, "[]", "[]", "[]"},
      {[] { return Exprs(Col(L"b"), Col(L"a"), Col(L"b"), Col(L"a"), Col(L"b")); }, "[b a]", "[a b]", "[b a]"},
      {[] { return Exprs(Int(2), Col(L"a"), Int(1), Int(2), Null()); }, "[2 a 1 null]", "[a 1 2 null]", "[a]"},
      {[] {
         return Exprs(Row({Int(1)}), Row({Int(1), Col(L"a")}), Row({}));
       },
       "[[1] [1 a] []]", "[[] [1] [1 a]]", "[[1 a] []]"},
      {[] { return Exprs(Col(L"a"), nullptr, nullptr); }, "[a -]", "[- a]", "[a -]"},
  };
  for (const auto& [make, kept, sorted, withoutConstants] : rows) {
    const auto init = [&make = make](bool dropConstants, bool sortColumns) {
      RqExprVector columns = make();
      const RqExprColumnList list(columns, dropConstants, sortColumns);
      EXPECT_THAT(columns, IsEmpty());
      return Text(&list);
    };
    const std::int64_t nodesBefore = MemoryDataCollector::GetRqNodeCount();
    EXPECT_EQ(init(false, false), kept);
    EXPECT_EQ(init(false, true), sorted);
    EXPECT_EQ(init(true, false), withoutConstants);
    EXPECT_EQ(MemoryDataCollector::GetRqNodeCount(), nodesBefore) << "what is dropped is deleted";
  }
}

TEST(ColumnList, KeepsTheFirstOfEqualColumns) {
  RqExpr* const pFirst = Col(L"a");
  RqExprVector columns{Col(L"b"), pFirst, Col(L"a")};
  RqExprColumnList list(columns, true, true);
  EXPECT_EQ(list.GetIthColumn(0), pFirst);
}

TEST(ColumnListOrdered, KeepsOrderRepeatsAndNulls) {
  RqExprVector columns{Col(L"b"), nullptr, Int(1), Col(L"a"), Int(1)};
  RqExprColumnListOrdered list(columns);
  EXPECT_THAT(columns, IsEmpty());
  EXPECT_EQ(Text(&list), "[b - 1 a 1]");
  EXPECT_TRUE(list.IsMultiExpr() && !list.IsValueExpr());
  const std::unique_ptr<RqExpr> pMember(Col(L"a"));
  const std::unique_ptr<RqExpr> pStranger(Col(L"a", 2));
  EXPECT_TRUE(list.HasEquivalentMember(*pMember));
  EXPECT_FALSE(list.HasEquivalentMember(*pStranger));
}

TEST(ColumnListOrdered, IsAlwaysNullWhenItsColumnsAre) {
  const std::pair<RqExpr*, bool> rows[] = {{Row({}), false},
                                           {Row({Null(), nullptr, Row({Null()})}), true},
                                           {Row({nullptr}), true},
                                           {Row({Null(), Col(L"a")}), false}};
  for (const auto& [pRow, bAlwaysNull] : rows) {
    EXPECT_EQ(std::unique_ptr<RqExpr>(pRow)->IsAlwaysNull(), bAlwaysNull);
  }
}

}  // namespace
