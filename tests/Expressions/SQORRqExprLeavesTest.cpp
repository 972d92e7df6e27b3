// The contract that all leaves of expressions share, over samples of each class.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Host/DataBlobUtil.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"

namespace {

using Owned = std::unique_ptr<RqExpr>;

const RqShallowLessThan kShallow;
const RqEquivalence kEquivalence;

KorvelNumber Number(const wchar_t* text) {
  KorvelNumber number;
  EXPECT_TRUE(KorvelNumber::FromString(text, number));
  return number;
}

/// Gateways of two repositories. Samples keep nothing of them.
ARpGateway* Rp(std::uint32_t uniqueID) {
  static MemoryGateway gateways[2];
  gateways[uniqueID].SetRepositoryUniqueID32(uniqueID);
  return &gateways[uniqueID];
}

/// The expression, changed.
template <class Class, class Change>
Class* Changed(Class* pExpr, Change change) {
  change(*pExpr);
  return pExpr;
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
  KXDate currentDate;
  currentDate.SetAsDynamicCurrDateToken();
  static char block;
  auto* const pParamBlock = reinterpret_cast<ParameterControlBlock*>(&block);
  return {
      // Attribute: object, then repository.
      {Attribute(1), Changed(Attribute(1),
                             [](RqAttribute& e) {
                               e.SetSourceContentMapExpr(true);
                               e.SetIsSortKeyAttribute(true);
                               e.SetCatalogFolderID(VoidID(1, 2u));
                               e.SetDescriptorAttributeName(L"descriptor");
                               e.MarkTargetID(VoidID(kTIDADatabase, 1u));
                             })},
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
      {Column(1, 1), Changed(Column(1, 1),
                             [](RqTargetColumn& e) {
                               e.AddRelatedAttrId(VoidID(kTIDAAttribute, 1u));
                               e.SetDataMiningColumn(true);
                               e.SetRelatedRqListPtr(&e);
                               e.MarkTargetType(ServerInfo::kDefault);
                             })},
      {Column(1, 2)},
      {Column(1, 1, 1)},
      {Col(L"A")},
      {Col(L"a")},
      {Column(2, 1)},
      {new RqTargetCubeColumn(KXString(L"a"), 1),
       Changed(new RqTargetCubeColumn(KXString(L"a"), 1),
               [](RqTargetCubeColumn& e) { e.SetMatchParentAggrType(true); })},
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
      {Str(L"a"), Changed(new RqExprStringLiteral(L"a"),
                          [](RqExprStringLiteral& e) {
                            e.SetStringWrapperSymbol(RqExprStringLiteral::kDoubleQuote);
                            e.SetDescriptorIDOFValue();
                          })},
      {Int(-1), new RqExprIntegerLiteral(-1, true)},
      {Int(2147483647)},
      {new RqExprFloatLiteral(-std::numeric_limits<double>::infinity())},
      {new RqExprFloatLiteral(0.0), new RqExprFloatLiteral(-0.0)},
      {new RqExprDateLiteral(KXDate(1999, 12, 31))},
      {new RqExprDateLiteral(KXDate(2000, 1, 1))},
      {new RqExprDateLiteral(currentDate)},
      {new RqExprTimeLiteral(KXTime(1, 2, 3))},
      {new RqExprTimeLiteral(KXTime(1, 2, 3, 1))},
      {new RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 0), 3),
       new RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 0), 6)},
      {new RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 1))},
      {new RqExprIntervalLiteral(L"1 day")},
      {Null(), Changed(new RqExprNullLiteral(), [](RqExprNullLiteral& e) { e.SetDescriptorIDOFValue(); })},
      // Session variable: block, name, index.
      {Variable(L"a", L"z")},
      {Variable(L"a", L"z", 0)},
      {Variable(L"b", L"Y")},
      // The kinds that came later.
      {new RqTargetCacheColumn(KXString(L"a"), 1),
       Changed(new RqTargetCacheColumn(KXString(L"a"), 1),
               [](RqTargetCacheColumn& e) { e.SetIsMashupsPinnedExpr(true); })},
      {new RqExprNumberLiteral(Number(L"-1e60"))},
      {new RqExprNumberLiteral(Number(L"0.1"))},
      {new RqExprNumberLiteral(Number(L"0.10000000000000000001"))},
  };
}

struct Sample {
  std::size_t place;
  Owned pExpr;
};

std::vector<Sample> MakeSamples() {
  const Places places = MakePlaces();
  std::vector<Sample> samples;
  for (std::size_t place = 0; place < places.size(); ++place) {
    for (RqExpr* const pExpr : places[place]) samples.push_back({place, Owned(pExpr)});
  }
  return samples;
}

ByteVector Payload(RqNode& node) {
  ByteVector bytes;
  node.ToByteVector(bytes);
  return bytes;
}

TEST(ExprLeaves, StandInTheirOrder) {
  const std::vector<Sample> samples = MakeSamples();
  for (const Sample& left : samples) {
    for (const Sample& right : samples) {
      SCOPED_TRACE(std::to_string(left.place) + " and " + std::to_string(right.place));
      bool bTied = false;
      EXPECT_EQ(left.pExpr->IsDeepLessThan(*right.pExpr, kShallow, bTied), left.place < right.place);
      EXPECT_EQ(bTied, left.place == right.place);
      EXPECT_EQ(kEquivalence(*left.pExpr, *right.pExpr), left.place == right.place);
    }
  }
}

TEST(ExprLeaves, AreCopied) {
  for (const Sample& sample : MakeSamples()) {
    SCOPED_TRACE(sample.place);
    RqExpr& source = *sample.pExpr;
    for (const bool bNewIDs : {false, true}) {
      const Owned pCopy(source.DeepExprCopy(bNewIDs));
      EXPECT_EQ(pCopy->IsCopyOf(source), !bNewIDs);
      EXPECT_TRUE(kEquivalence(source, *pCopy));
      EXPECT_EQ(Payload(*pCopy), Payload(source));
    }
    const Owned pShallow(source.ShallowCopy());
    EXPECT_EQ(pShallow->GetObjectType(), source.GetObjectType());
    EXPECT_FALSE(pShallow->IsCopyOf(source));
    EXPECT_EQ(Payload(*pShallow), Payload(source));
    ASSERT_EQ(pShallow->GetNumOperands(), source.GetNumOperands());
    for (int i = 0; i < pShallow->GetNumOperands(); ++i) EXPECT_EQ(pShallow->GetIthOperand(i), nullptr);
  }
}

template <class Class>
std::unique_ptr<Class> ReadBack(Class& source) {
  auto pRead = std::make_unique<Class>();
  pRead->FromByteVector(Payload(source).data());
  return pRead;
}

template <class Class>
std::unique_ptr<Class> Copy(const Class& source) {
  return std::unique_ptr<Class>(static_cast<Class*>(source.DeepCopy(false)));
}

TEST(ExprLeaves, LeaveOutOfThePayloadWhatACopyKeeps) {
  EXPECT_TRUE(Copy(RqExprIntegerLiteral(1, true))->IsPlaceHolder());
  EXPECT_EQ(Copy(RqExprDateTimeLiteral(KXDateTime(2000, 1, 1, 0, 0, 0), 6))->GetPrecision(), 6);

  RqExprStringLiteral quoted(L"a");
  quoted.SetStringWrapperSymbol(RqExprStringLiteral::kDoubleQuote);
  quoted.SetDescriptorIDOFValue();
  EXPECT_EQ(Copy(quoted)->GetStringWrapperSymbol(), RqExprStringLiteral::kUnknown) << "nor does a copy keep this";
  EXPECT_TRUE(Copy(quoted)->IsDescriptorIDOFValue());
  EXPECT_TRUE(ReadBack(quoted)->IsDescriptorIDOFValue());

  RqExprParam param(1, reinterpret_cast<ParameterControlBlock*>(&quoted));
  param.SetTypeInfo(KXTypeInfo(KXDateData, 1, 2, 0));
  EXPECT_EQ(Copy(param)->GetTypeInfo(), param.GetTypeInfo());
  EXPECT_EQ(Copy(param)->GetParamControlBlock(), param.GetParamControlBlock());
  RqExprParam readParam(0);
  readParam.FromByteVector(Payload(param).data());
  EXPECT_EQ(readParam.GetTypeInfo(), KXTypeInfo());
  EXPECT_EQ(readParam.GetParamControlBlock(), nullptr);

  const std::unique_ptr<RqTargetColumn> pColumn(Column(1, 1));
  pColumn->AddRelatedAttrId(VoidID(kTIDAAttribute, 1u));
  pColumn->SetRelatedRqListPtr(&quoted);
  EXPECT_EQ(Copy(*pColumn)->GetRelatedAttrIds(), pColumn->GetRelatedAttrIds());
  EXPECT_EQ(Copy(*pColumn)->GetRelatedRqListPtr(), &quoted);
  EXPECT_TRUE(ReadBack(*pColumn)->GetRelatedAttrIds().empty());
  EXPECT_EQ(ReadBack(*pColumn)->GetRelatedRqListPtr(), nullptr);

  const std::unique_ptr<RqAttribute> pAttribute(Attribute(1));
  pAttribute->SetSourceContentMapExpr(true);
  pAttribute->SetCatalogFolderID(VoidID(1, 2u));
  EXPECT_TRUE(Copy(*pAttribute)->IsSourceContentMapExpr());
  EXPECT_EQ(Copy(*pAttribute)->GetCatalogFolderID(), VoidID(1, 2u));
  EXPECT_FALSE(ReadBack(*pAttribute)->IsSourceContentMapExpr());
  EXPECT_TRUE(ReadBack(*pAttribute)->GetCatalogFolderID().IsNullID());

  RqTargetCubeColumn cube(KXString(L"a"), 1);
  cube.SetMatchParentAggrType(true);
  EXPECT_TRUE(Copy(cube)->IsMatchParentAggrType());
  EXPECT_FALSE(ReadBack(cube)->IsMatchParentAggrType());
}

TEST(ExprLeaves, SayWhatTheyAre) {
  for (const Sample& sample : MakeSamples()) {
    const RqExpr& expr = *sample.pExpr;
    const RqNodeType_e type = expr.GetObjectType();
    SCOPED_TRACE(GetRqNodeTypeName(type));
    const bool bTargetColumn = type == kRqTargetColumn || type == kRqTargetCubeColumn || type == kRqTargetCacheColumn;
    const bool bList = type == kRqExprColumnList || type == kRqExprColumnListOrdered;
    EXPECT_EQ(expr.IsColumnReference(), bTargetColumn || type == kRqAttribute);
    EXPECT_EQ(expr.IsValueExpr(), !bList);
    EXPECT_EQ(expr.IsMultiExpr(), bList);
    EXPECT_EQ(expr.IsAlwaysNull(), type == kRqExprNullLiteral);
    if (expr.GetNumOperands() > 0) continue;
    EXPECT_EQ(expr.IsConstant(), expr.IsLiteral() || type == kRqExprParam || type == kRqExprSessionVar);
    EXPECT_EQ(expr.IsNavigationConstant(), expr.IsConstant());
  }
}

TEST(Entity, IsEquivalentByItsNumber) {
  RqEntity entity(Rp(1), VoidID(kTIDALogicalTable, 5u));
  entity.SetTableNumber(7);
  const auto pRead = ReadBack(entity);
  const auto pCopy = Copy(entity);
  for (const RqEntity* const pOther : {pCopy.get(), pRead.get()}) {
    EXPECT_EQ(pOther->GetTableNumber(), 7);
    EXPECT_EQ(pOther->GetRepositoryUniqueID32(), 1u);
    EXPECT_TRUE(entity.IsEquivalent(*pOther));
  }
  pRead->SetTableNumber(8);
  EXPECT_FALSE(entity.IsEquivalent(*pRead));
}

}  // namespace
