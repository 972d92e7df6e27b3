#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

#include <gtest/gtest.h>

namespace {

// Values are frozen. A kind put in or taken out anywhere moves those behind it.
static_assert(kRqInvalid == 0 && kRqHandleNode == 2 && kRqList == 23 && kRqCacheList == 38 && kRqAttribute == 40);
static_assert(kRqExpr == 44 && kRqExprMemberReference == 63 && kRqExprCondAnd == 73 && kRqExprCondExists == 95);
static_assert(kRqExprCharLength == 96 && kRqExprRand == 115 && kRqExprDepth == 160 && kRqExprAggrExternal == 187);
static_assert(kRqExprLiteral == 196 && kRqExprNullLiteral == 204 && kRqExprSessionVar == 205 && kRqStats == 213);
static_assert(kRqLastType == 214 && kRqExprIDOf == 215 && kRqProbeQuery == 235 && kRqExprDictLookup == 252);

TEST(RqNodeTypeCatalogue, NamesEachKindAndNothingElse) {
  EXPECT_EQ(GetRqNodeTypeName(kRqExprDictLookup), "RqExprDictLookup");
  for (int value = 0; value <= kRqHighestNodeType; ++value)
    EXPECT_NE(GetRqNodeTypeName(static_cast<RqNodeType_e>(value)), "");
  for (const int value : {-1, kRqHighestNodeType + 1})
    EXPECT_EQ(GetRqNodeTypeName(static_cast<RqNodeType_e>(value)), "");
}

}  // namespace
