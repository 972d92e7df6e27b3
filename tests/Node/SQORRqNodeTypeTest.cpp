#include "Query/Optimizer/Request/Node/SQORRqNodeType.h"

#include <gtest/gtest.h>

#include <map>
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
  EXPECT_EQ(*values.begin(), 0);
  EXPECT_EQ(*values.rbegin(), kRqHighestNodeType);
  EXPECT_EQ(kRqHighestNodeType, 252);
}

TEST(RqNodeTypeCatalogue, KeepsTheFrozenValues) {
  // One kind of each group: a kind put in or taken out anywhere moves those behind it.
  const std::map<RqNodeType_e, int> frozen = {{kRqInvalid, 0},
                                              {kRqNullNode, 1},
                                              {kRqHandleNode, 2},
                                              {kRqList, 23},
                                              {kRqCacheList, 38},
                                              {kRqAttribute, 40},
                                              {kRqExpr, 44},
                                              {kRqExprMemberReference, 63},
                                              {kRqExprCondAnd, 73},
                                              {kRqExprCondExists, 95},
                                              {kRqExprCharLength, 96},
                                              {kRqExprRand, 115},
                                              {kRqExprDepth, 160},
                                              {kRqExprAggr, 161},
                                              {kRqExprAggrExternal, 187},
                                              {kRqExprPeriodRolling, 195},
                                              {kRqExprLiteral, 196},
                                              {kRqExprNullLiteral, 204},
                                              {kRqExprSessionVar, 205},
                                              {kRqStats, 213},
                                              {kRqLastType, 214},
                                              {kRqExprIDOf, 215},
                                              {kRqProbeQuery, 235},
                                              {kRqExprDictLookup, 252}};
  EXPECT_EQ(frozen.size(), 24u);
  for (const auto& [type, value] : frozen) EXPECT_EQ(type, value) << GetRqNodeTypeName(type);
}

TEST(RqNodeTypeCatalogue, NamesNothingOutside) {
  EXPECT_EQ(GetRqNodeTypeName(static_cast<RqNodeType_e>(253)), "");
  EXPECT_EQ(GetRqNodeTypeName(static_cast<RqNodeType_e>(-1)), "");
}

}  // namespace
