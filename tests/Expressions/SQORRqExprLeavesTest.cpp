// The contract that all leaves of expressions share, over samples of each class.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "TestUtil.h"

namespace {

using Owned = std::unique_ptr<RqExpr>;

const RqShallowLessThan kShallow;
const RqEquivalence kEquivalence;

/// Gateways of two repositories. Samples keep nothing of them.
ARpGateway* Rp(std::uint32_t uniqueID) {
  static MemoryGateway gateways[2];
  gateways[uniqueID].SetRepositoryUniqueID32(uniqueID);
  return &gateways[uniqueID];
}

RqAttribute* Attribute(std::uint32_t number, std::uint32_t repository = 0) {
  return new RqAttribute(Rp(repository), VoidID(kTIDAAttribute, number));
}

RqTargetColumn* Column(int tableNum, std::uint32_t number, std::uint32_t repository = 0) {
  return new RqTargetColumn(Rp(repository), VoidID(kTIDAColumn, number), tableNum);
}

RqExprDimension* Dimension(std::uint32_t number, std::uint32_t repository = 0, std::uint32_t hierarchy = 0) {
  return new RqExprDimension(Rp(repository), VoidID(kTIDADimension, number),
                             VoidID(kTIDAPresentationHierarchy, hierarchy));
}

RqExprLevel* Level(std::uint32_t number, std::uint32_t repository = 0) {
  return new RqExprLevel(Rp(repository), VoidID(kTIDALevel, number));
}

RqExpr* Variable(const wchar_t* block, const wchar_t* name, int index = -1) {
  return new RqExprSessionVar(KXStringPair(block, name), index);
}

RqExpr* Member(RqExprLevel* pLevel, int value, RqExprVector keyCols = {}) {
  auto* const pMember = new RqExprMemberReference(pLevel, static_cast<RqExprLiteral*>(Int(value)));
  pMember->SetLogicalKeyCols(keyCols);
  return pMember;
}

/// The places of the order, each with samples that are equivalent: they differ in what takes no part in comparison.
using Places = std::vector<std::vector<RqExpr*>>;

Places MakePlaces() {
  static char block;
  auto* const pParamBlock = reinterpret_cast<ParameterControlBlock*>(&block);
  return {
      // Attribute: object, then repository.
      {Attribute(1), Changed(Attribute(1), [](RqAttribute& e) { e.SetDescriptorAttributeName(L"d"); })},
      {Attribute(1, 1)},
      {Attribute(2)},
      // Dimension: object, repository, hierarchy.
      {Dimension(1)},
      {Dimension(1, 0, 1)},
      {Dimension(1, 1)},
      {Dimension(2)},
      // Level: object, repository; not its type.
      {Level(1), new RqExprLevel(Rp(0), VoidID(kTIDALevel, 1u), RqExprLevel::kAWLevel)},
      {Level(1, 1)},
      {Level(2)},
      // Lists: their columns.
      {new RqExprColumnList()},
      {Row({})},
      {Row({Int(1), nullptr})},
      // Physical column: table, repository, object, name.
      {Column(-1, 1)},
      {Column(1, 1), Changed(Column(1, 1), [](RqTargetColumn& e) { e.SetDataMiningColumn(true); })},
      {Column(1, 2)},
      {Column(1, 1, 1)},
      {Col(L"A")},
      {Col(L"a")},
      {Column(2, 1)},
      {new RqTargetCubeColumn(KXString(L"a"), 1)},
      // Parameter: its number.
      {new RqExprParam(-1)},
      {new RqExprParam(1), Changed(new RqExprParam(1, pParamBlock),
                                   [](RqExprParam& e) { e.SetTypeInfo(KXTypeInfo(KXCharData, 3, 0, 1)); })},
      // Member: level, value, key columns.
      {new RqExprMemberReference(Level(1), nullptr)},
      {Member(Level(1), 1)},
      {Member(Level(1), 1, {Col(L"k")})},
      {Member(Level(1), 2)},
      // Literals: their values.
      {Str(L"")},
      {Str(L"A")},
      {Str(L"a"), Changed(new RqExprStringLiteral(L"a"), [](RqExprStringLiteral& e) { e.SetDescriptorIDOFValue(); })},
      {Int(-1), new RqExprIntegerLiteral(-1, true)},
      {Int(2147483647)},
      {new RqExprFloatLiteral(-std::numeric_limits<double>::infinity())},
      {new RqExprFloatLiteral(0.0), new RqExprFloatLiteral(-0.0)},
      {new RqExprDateLiteral(KXDate(1999, 12, 31))},
      {new RqExprDateLiteral(KXDate(2000, 1, 1))},
      {new RqExprDateLiteral(kxdatetime::kCurrentDate)},
      {new RqExprTimeLiteral(KXTime(1, 2, 3))},
      {new RqExprTimeLiteral(KXTime(1, 2, 3, 1))},
      {new RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 0), 3),
       new RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 0), 6)},
      {new RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 1))},
      {new RqExprIntervalLiteral(L"1 day")},
      {Null(), Null()},
      // Session variable: block, name, index.
      {Variable(L"a", L"z")},
      {Variable(L"a", L"z", 0)},
      {Variable(L"b", L"Y")},
      // The kinds that came later.
      {new RqTargetCacheColumn(KXString(L"a"), 1)},
      {new RqExprNumberLiteral(Number(L"-1e60"))},
      {new RqExprNumberLiteral(Number(L"0.1"))},
      {new RqExprNumberLiteral(Number(L"0.10000000000000000001"))},
  };
}

TEST(ExprLeaves, StandInTheirOrder) {
  std::vector<std::pair<std::size_t, Owned>> samples;
  const Places places = MakePlaces();
  for (std::size_t place = 0; place < places.size(); ++place) {
    for (RqExpr* const pExpr : places[place]) samples.emplace_back(place, pExpr);
  }
  for (const auto& [left, pLeft] : samples) {
    for (const auto& [right, pRight] : samples) {
      SCOPED_TRACE(std::to_string(left) + " and " + std::to_string(right));
      bool bTied = false;
      EXPECT_EQ(pLeft->IsDeepLessThan(*pRight, kShallow, bTied), left < right);
      EXPECT_EQ(bTied, left == right);
      EXPECT_EQ(kEquivalence(*pLeft, *pRight), left == right);
    }
  }
}

TEST(ExprLeaves, LeaveOutOfThePayloadWhatACopyKeeps) {
  EXPECT_TRUE(Copy(RqExprIntegerLiteral(1, true))->IsPlaceHolder());
  RqExprDateTimeLiteral dateTime(KXDateTime(2000, 1, 1, 0, 0, 0), 6);
  EXPECT_TRUE(Copy(dateTime)->GetPrecision() == 6 && ReadBack(dateTime)->GetPrecision() != 6);

  RqExprStringLiteral quoted(L"a");
  quoted.SetStringWrapperSymbol(RqExprStringLiteral::kDoubleQuote);
  quoted.SetDescriptorIDOFValue();
  EXPECT_EQ(Copy(quoted)->GetStringWrapperSymbol(), RqExprStringLiteral::kUnknown) << "nor does a copy keep this";
  EXPECT_TRUE(Copy(quoted)->IsDescriptorIDOFValue() && ReadBack(quoted)->IsDescriptorIDOFValue());

  RqExprParam param(1, reinterpret_cast<ParameterControlBlock*>(&quoted));
  param.SetTypeInfo(KXTypeInfo(KXDateData, 1, 2, 0));
  EXPECT_EQ(Copy(param)->GetTypeInfo(), param.GetTypeInfo());
  EXPECT_EQ(Copy(param)->GetParamControlBlock(), param.GetParamControlBlock());

  const std::unique_ptr<RqTargetColumn> pColumn(Column(1, 1));
  pColumn->AddRelatedAttrId(VoidID(kTIDAAttribute, 1u));
  pColumn->SetRelatedRqListPtr(&quoted);
  EXPECT_EQ(Copy(*pColumn)->GetRelatedAttrIds(), pColumn->GetRelatedAttrIds());
  EXPECT_EQ(Copy(*pColumn)->GetRelatedRqListPtr(), &quoted);
  EXPECT_EQ(ReadBack(*pColumn)->GetRelatedRqListPtr(), nullptr);

  const std::unique_ptr<RqAttribute> pAttribute(Attribute(1));
  pAttribute->SetSourceContentMapExpr(true);
  pAttribute->SetCatalogFolderID(VoidID(1, 2u));
  EXPECT_TRUE(Copy(*pAttribute)->IsSourceContentMapExpr() && !ReadBack(*pAttribute)->IsSourceContentMapExpr());
  EXPECT_EQ(Copy(*pAttribute)->GetCatalogFolderID(), VoidID(1, 2u));

  RqTargetCubeColumn cube(KXString(L"a"), 1);
  cube.SetMatchParentAggrType(true);
  EXPECT_TRUE(Copy(cube)->IsMatchParentAggrType() && !ReadBack(cube)->IsMatchParentAggrType());
}

TEST(Entity, IsEquivalentByItsNumber) {
  RqEntity entity(Rp(1), VoidID(kTIDALogicalTable, 5u));
  entity.SetTableNumber(7);
  const auto pRead = ReadBack(entity);
  EXPECT_EQ(pRead->GetRepositoryUniqueID32(), 1u);
  EXPECT_TRUE(entity.IsEquivalent(*pRead) && entity.IsEquivalent(*Copy(entity)));
  pRead->SetTableNumber(8);
  EXPECT_FALSE(entity.IsEquivalent(*pRead));
}

}  // namespace
