#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

struct CatalogueEntry {
  int value;
  RqNodeType_e enumerator;
  const char* name;
};

const CatalogueEntry kCatalogue[] = {
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) {value, k##Class, #Class},
#define RQ_NODE_MARKER(value, Name)                                   {value, k##Name, #Name},
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
};

TEST(RqNodeTypeCatalogue, HasEachValueOnce) {
  std::set<int> values;
  std::set<std::string> names;
  for (const CatalogueEntry& entry : kCatalogue) {
    SCOPED_TRACE(entry.name);
    EXPECT_EQ(entry.enumerator, entry.value);
    EXPECT_EQ(GetRqNodeTypeName(entry.enumerator), entry.name);
    EXPECT_TRUE(values.insert(entry.value).second);
    EXPECT_TRUE(names.insert(entry.name).second);
  }
  EXPECT_EQ(values.size(), 253u);
  EXPECT_EQ(*values.rbegin(), kRqHighestNodeType);
  EXPECT_EQ(GetRqNodeTypeName(static_cast<RqNodeType_e>(253)), "");
  EXPECT_EQ(GetRqNodeTypeName(static_cast<RqNodeType_e>(-1)), "");
}

// Values are frozen. A kind put in or taken out anywhere moves those behind it.
static_assert(kRqInvalid == 0 && kRqHandleNode == 2 && kRqList == 23 && kRqCacheList == 38 && kRqAttribute == 40);
static_assert(kRqExpr == 44 && kRqExprMemberReference == 63 && kRqExprCondAnd == 73 && kRqExprCondExists == 95);
static_assert(kRqExprCharLength == 96 && kRqExprRand == 115 && kRqExprDepth == 160 && kRqExprAggrExternal == 187);
static_assert(kRqExprLiteral == 196 && kRqExprNullLiteral == 204 && kRqExprSessionVar == 205 && kRqStats == 213);
static_assert(kRqLastType == 214 && kRqExprIDOf == 215 && kRqProbeQuery == 235 && kRqExprDictLookup == 252);

}  // namespace
