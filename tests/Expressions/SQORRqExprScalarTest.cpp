#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Expressions/ScalarSamples.h"
#include "Host/DataBlobUtil.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "TestUtil.h"

namespace {

using Owned = std::unique_ptr<RqExpr>;

const RqShallowLessThan kShallow;
const RqEquivalence kEquivalence;

RqExpr* Less(int left, int right) { return new RqExprCondLess(Int(left), Int(right)); }

// ---------------------------------------------------------------------------------------------------------------------
// What all classes share

TEST(Scalar, CopiesKeepWhatDoesNotTravelToo) {
  class Table final : public ATELMNativeTable {
    const TableIdentifier& GetTableIdentifier() const override { return m_identifier; }
    const KXFieldDescriptor* GetFieldDescriptor(const KXString&) const override { return nullptr; }
    const ATELMDictionary* GetDictionary(const KXString&) const override { return nullptr; }
    TableIdentifier m_identifier;
  };
  const KXTypeInfo type(KXDateData, 1, 2, 0);
  RqExprEvaluate evaluate;
  evaluate.SetMicroExpr(OwnedRqExprPtr(Param(1)));
  evaluate.SetStickyType(type);
  evaluate.SetUserDefinedFuncName(L"F");
  evaluate.SetTypingParams({L"a", L"b"});
  const auto pEvaluate = Copy(evaluate);
  ASSERT_TRUE(pEvaluate->GetMicroExpr() && pEvaluate->GetMicroExpr() != evaluate.GetMicroExpr());
  EXPECT_TRUE(kEquivalence(*pEvaluate->GetMicroExpr(), *evaluate.GetMicroExpr()));
  EXPECT_EQ(pEvaluate->GetStickyType(), type);
  EXPECT_EQ(pEvaluate->GetUserDefinedFuncName(), L"F");
  EXPECT_EQ(pEvaluate->GetTypingParams(), evaluate.GetTypingParams());

  RqExprCoalesce coalesce;
  coalesce.SetStickyType(type);
  EXPECT_EQ(Copy(coalesce)->GetStickyType(), type);

  const RefCntTELMNativeTable table(new Table);
  EXPECT_EQ(Copy(RqExprDictLookup(Int(1), table, {}, L"d"))->GetRefCntTELMNativeTable(), table);

  RqExprExternalData data;
  data.SetExternalScriptExecutionData(ScriptSample());
  EXPECT_EQ(Copy(data)->GetExternalScriptExecutionData(), data.GetExternalScriptExecutionData());
}

TEST(Scalar, IsConstantByItsOperandsUnlessTheClassSaysOtherwise) {
  for (const ScalarSample& sample : ScalarSamples()) {
    SCOPED_TRACE(sample.m_text);
    const Owned pExpr(sample.m_make());
    bool bOperandsConstant = pExpr->GetNumOperands() > 0;
    for (int i = 0; i < pExpr->GetNumOperands(); ++i) {
      if (const RqExpr* const pOperand = pExpr->GetIthOperand(i)) bOperandsConstant &= pOperand->IsConstant();
    }
    const RqNodeType_e type = pExpr->GetObjectType();
    const bool bAlways = type == kRqExprPi || type == kRqExprDatabase || type == kRqExprUser;
    const bool bNever =
        type == kRqExprRand || type == kRqExprEvaluate || type == kRqExprRowID || type == kRqExprExternalData;
    EXPECT_EQ(pExpr->IsConstant(), bAlways || (bOperandsConstant && !bNever));
    EXPECT_TRUE(pExpr->GetNumOperands() == 0 ||
                pExpr->IsNavigationConstant() == (bOperandsConstant && type != kRqExprEvaluate));
  }
  EXPECT_FALSE(RqExprIDOf(Col(L"a")).IsConstant());
  EXPECT_TRUE(RqExprIDOf(Col(L"a"), true).IsConstant());
  EXPECT_TRUE(RqExprCast(Null(), KXDateData, 0, 0).IsAlwaysNull());
  EXPECT_FALSE(RqExprCast(Int(1), KXDateData, 0, 0).IsAlwaysNull());
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison

RqExpr* Evaluate(const wchar_t* functionDef) { return MadeOf<RqExprEvaluate>(Exprs(), functionDef); }
RqExpr* Lookup(bool bDense, RqExpr* pValue) { return MadeOf<RqExprLookup>(Exprs(), bDense, pValue); }

RqExprPredict* Predict(bool bScript, const wchar_t* name, std::uint32_t source = 1) {
  return MadeOf<RqExprPredict>(Exprs(), VoidID(kTIDADatabase, source), KXString(name), bScript);
}

RqExpr* External(const RqExternalColumn& column, const RefCnt<ExternalScriptExecutionData>& script = nullptr) {
  return Filled<RqExprExternalData>([&](RqExprExternalData& e) { e.SetExternalScriptExecutionData(script); }, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, column);
}

TEST(Scalar, FieldsInComparison) {
  MemoryGateway rp;
  const RefALevel levels[] = {{&rp, rp.MakeObject<MemoryLevel>(1u, L"Year", VoidID::NullID).GetID()},
                              {&rp, rp.MakeObject<MemoryLevel>(2u, L"Month", VoidID::NullID).GetID()}};
  const auto cast = [](KXDataType type, int precision, int scale, const wchar_t* format = L"") {
    auto* const pCast = new RqExprCast(Param(1), type, precision, scale);
    pCast->SetDateTimeFormat(format);
    return pCast;
  };
  const auto json = [](const wchar_t* path, const wchar_t* table) {
    auto* const pJson = new RqExprJsonValue(Str(L"$"), Param(1));
    pJson->SetHDSPath(path);
    pJson->SetHDSTableName(table);
    return pJson;
  };
  const auto predict = [](const auto& change) {
    RqExprPredict* const pPredict = Predict(false, L"a");
    change(*pPredict);
    return pPredict;
  };
  using Options = KXNodeVector<KXStringPair>;
  const auto dictionary = [](const wchar_t* table, const wchar_t* name) {
    return new RqExprDictLookup(Int(1), nullptr, {L"u", table}, name);
  };
  const auto source = [](std::uint32_t number) {
    return Filled<RqExprDepth>([=](RqExprDepth& e) { e.SetLTSVoidID(VoidID(kTIDALogicalTable, number)); }, Int(1));
  };
  const RefCnt<ExternalScriptExecutionData> otherBinding = ScriptSample();
  otherBinding->m_DataBindings[1].m_SortOrder = L"x";
  const RefCnt<ExternalScriptExecutionData> otherOption = ScriptSample();
  otherOption->m_Options[1].second = L"x";
  using D = KXDateTime;
  // Whether both are equivalent, and whether the first one sorts first; if not, they are tied.
  const std::tuple<const char*, RqExpr*, RqExpr*, bool, bool> pairs[] = {
      {"order of a difference", new RqExprSubtract(Param(1), Int(1)), new RqExprSubtract(Int(1), Param(1)), false,
       true},
      {"trim", new RqExprTrim(nullptr, Int(2), RqExprTrim::kBoth),
       new RqExprTrim(nullptr, Int(1), RqExprTrim::kLeading), false, true},
      {"calendar extract", new RqExprCalendarExtract(Int(2), D::kExtractDay),
       new RqExprCalendarExtract(Int(1), D::kExtractHour), false, true},
      {"timestamp add", new RqExprTimestampAdd(Int(2), Int(2), D::kDay),
       new RqExprTimestampAdd(Int(1), Int(1), D::kWeek), false, true},
      {"cast type", cast(KXCharData, 2, 2), cast(KXDateData, 1, 1), false, true},
      {"cast precision", cast(KXDateData, 1, 2), cast(KXDateData, 2, 1), false, true},
      {"cast scale", cast(KXDateData, 1, 1), cast(KXDateData, 1, 2), true, true},
      {"cast format", cast(KXDateData, 1, 1, L"a"), cast(KXDateData, 1, 1, L"b"), false, true},
      {"column number", new RqExprExtract(-1), new RqExprExtract(1), false, true},
      {"definition in another case", Evaluate(L"F(%1)"), Evaluate(L"f(%1)"), true, false},
      {"definition", Evaluate(L"a"), Evaluate(L"B"), false, true},
      {"bin type", new RqExprBinPlaceHolder(KXTypeInfo(KXCharData, 1, 0, 0)),
       new RqExprBinPlaceHolder(KXTypeInfo(KXCharData, 2, 0, 0)), false, true},
      {"JSON type", new RqExprJsonValue(Str(L"b"), Param(1), KXTypeInfo(KXCharData, 0, 0, 0)),
       new RqExprJsonValue(Str(L"a"), Param(1), KXTypeInfo(KXDateData, 0, 0, 0)), false, true},
      {"JSON path", json(L"a", L"b"), json(L"b", L"a"), false, true},
      {"JSON table", json(L"a", L"a"), json(L"a", L"b"), false, true},
      {"time level", new RqExprTimeDimSeqNum(Int(2), levels[0]), new RqExprTimeDimSeqNum(Int(2), levels[1]), true,
       true},
      {"solve order", new RqExprCalculatedMember(Int(1), Int(2), Int(3), 1),
       new RqExprCalculatedMember(Int(1), Int(2), Int(3), 2), false, false},
      {"table source", source(1), source(2), false, false},
      {"dictionary", dictionary(L"t", L"a"), dictionary(L"t", L"b"), false, false},
      {"dictionary's table", dictionary(L"s", L"a"), dictionary(L"t", L"a"), false, false},
      {"lookup's form", Lookup(false, nullptr), Lookup(true, nullptr), false, false},
      {"lookup's value", Lookup(true, Int(1)), Lookup(true, Int(2)), false, false},
      {"lookup's value missing", Lookup(true, nullptr), Lookup(true, Int(2)), false, false},
      {"flag of a case", new RqExprIfCase, Filled<RqExprIfCase>([](RqExprIfCase& e) { e.SetAddedInHDSRewrite(true); }),
       true, false},
      {"data source", Predict(true, L"b", 1), Predict(false, L"a", 2), false, true},
      {"script", Predict(true, L"a"), Predict(true, L"b"), false, true},
      {"model", Predict(false, L"a"), Predict(false, L"b"), false, true},
      {"script or model", Predict(false, L""), Predict(true, L""), false, true},
      {"column type", Predict(false, L"a"), predict([](auto& e) { e.SetColumnType(L"b"); }), false, true},
      {"bindings", Predict(false, L"a"), predict([](auto& e) { e.SetDataBindings(Options(1)); }), false, true},
      {"options", Predict(false, L"a"), predict([](auto& e) { e.SetOptions(Options(1)); }), false, true},
      {"script missing", External({}), External({}, ScriptSample()), false, true},
      {"script's binding", External({}, ScriptSample()), External({}, otherBinding), false, true},
      {"script's option", External({}, ScriptSample()), External({}, otherOption), false, true},
  };
  for (const auto& [name, pFirstExpr, pSecondExpr, bEquivalent, bLess] : pairs) {
    SCOPED_TRACE(name);
    const Owned pFirst(pFirstExpr), pSecond(pSecondExpr);
    EXPECT_EQ(kEquivalence(*pFirst, *pSecond), bEquivalent);
    EXPECT_EQ(kEquivalence(*pSecond, *pFirst), bEquivalent);
    EXPECT_EQ(pFirst->IsLessThan(*pSecond, kShallow), bLess);
    EXPECT_FALSE(pSecond->IsLessThan(*pFirst, kShallow));
  }
}

/// Each change makes a column of external data greater, and takes no notice of what the later ones do.
TEST(Scalar, FieldsOfExternalDataInTheirOrder) {
  using Column = RqExternalColumn;
  std::vector<std::function<void(Column&)>> changes = {
      [](Column& c) { c.m_ExternalDataForm = Column::kUnknownData; },
      [](Column& c) { c.m_ObjectReference = ExternalObjectReference({L"a"}, L"z"); },
      [](Column& c) { c.m_CacheSharedKey = L"a"; },
      [](Column& c) { c.m_ColumnName = L"a"; },
      [](Column& c) { c.m_ColumnTypeInfo.precision_ = 1; },
      [](Column& c) { c.m_AggrRule = L"a"; },
  };
  for (bool Column::*pFlag :
       {&Column::m_bIsVirtual, &Column::m_bIsForceVirtual, &Column::m_bIsOptionalVirtual, &Column::m_bIsSortKeyColumn,
        &Column::m_bIsDescriptorIDColumn, &Column::m_bScalarWithNoPath, &Column::m_bNeedsGrainCheck,
        &Column::m_bIsPrimaryKeyColumn, &Column::m_bIsLookupJoinColumn, &Column::m_bIsPresentWithIncomingQuery}) {
    changes.push_back([pFlag](Column& c) { c.*pFlag = true; });
  }
  changes.push_back([](Column& c) { c.m_ExternalJoiningIndexVector.resize(1); });
  Column least;
  least.m_ExternalDataForm = Column::kCSVData;
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    SCOPED_TRACE(i);
    Column greater = least;
    changes[i](greater);
    Column smaller = least;
    for (std::size_t later = i + 1; later < std::size(changes); ++later) changes[later](smaller);
    const Owned pGreater(External(greater));
    const Owned pSmaller(External(smaller, ScriptSample()));
    EXPECT_FALSE(kEquivalence(*pGreater, *Owned(External(least))));
    EXPECT_TRUE(pSmaller->IsLessThan(*pGreater, kShallow));
    EXPECT_FALSE(pGreater->IsLessThan(*pSmaller, kShallow));
  }
}

TEST(Scalar, CommutativeOperandsStandInOrder) {
  EXPECT_EQ(TextOf(RqExprAdd(Int(2), Int(1))), "1 + 2");
  EXPECT_EQ(TextOf(RqExprMultiply(Int(2), Int(1))), "1 * 2");
  EXPECT_EQ(TextOf(RqExprConcat(Int(2), Int(1))), "2 || 1");
  RqExpr* const pFirst = Int(1);
  RqExprAdd equal(pFirst, Int(1));
  EXPECT_EQ(equal.GetIthOperand(RqExprAdd::kRightOperand), pFirst) << "equal operands change places";
}

TEST(IDOf, ThatIsConstantEqualsTheLiteralOneAlone) {
  const RqExprIDOf constant(Param(1), true);
  EXPECT_TRUE(kEquivalence(constant, RqExprIntegerLiteral(1, false)));
  EXPECT_FALSE(kEquivalence(constant, RqExprIntegerLiteral(2, false)));
  EXPECT_FALSE(kEquivalence(constant, constant));
  EXPECT_TRUE(kEquivalence(RqExprIDOf(Param(1)), RqExprIDOf(Param(1))));
  EXPECT_TRUE(kEquivalence(RqExprIDOf(Param(1)), constant));
}

// ---------------------------------------------------------------------------------------------------------------------
// Case forms

TEST(Case, PairsStandBehindTheDefault) {
  RqExprPairVector entries{{Int(1), Str(L"a")}, {Int(2), Str(L"b")}};
  RqExprLookupCase lookupCase(Param(1), nullptr, entries);
  EXPECT_TRUE(entries.empty());
  EXPECT_EQ(lookupCase.GetNumLookupEntries(), 2);
  EXPECT_EQ(lookupCase.GetDefaultReturnValue(), nullptr);
  EXPECT_EQ(TextOf(*lookupCase.GetIthEntryKey(1)), "2");
  lookupCase.SetIthEntryValue(1, Str(L"c"));
  EXPECT_EQ(TextOf(*lookupCase.GetIthEntryValue(1)), "'c'");
  EXPECT_EQ(TextOf(lookupCase), "case ?1 when 1 then 'a' when 2 then 'c' end ");

  RqExprIfCase ifCase;
  EXPECT_EQ(ifCase.GetNumWhenThenPairs(), 0);
  ifCase.AddNewWhenThenPair(OwnedRqExprPtr(Less(1, 2)), OwnedRqExprPtr(Int(3)));
  EXPECT_EQ(ifCase.GetNumWhenThenPairs(), 1);
  EXPECT_EQ(TextOf(*ifCase.GetIthEntryCond(0)), "1 < 2");
  EXPECT_EQ(TextOf(*ifCase.GetIthEntryValue(0)), "3");
  EXPECT_EQ(TextOf(ifCase), "case  when 1 < 2 then 3 end ");
}

TEST(ScalarDeathTest, OperandsThatMustNotBeMissing) {
  const auto ifCase = [](RqExpr* pCond, RqExpr* pValue) {
    RqExprPairVector pairs{{pCond, pValue}};
    RqExprIfCase(nullptr, pairs);
  };
  const auto lookupCase = [](RqExpr* pKey, RqExpr* pEntryKey, RqExpr* pEntryValue) {
    RqExprPairVector entries{{pEntryKey, pEntryValue}};
    RqExprLookupCase(pKey, nullptr, entries);
  };
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[] { RqExprAdd(nullptr, Int(1)); }, "pLeft"},
      {[] { RqExprDivide(Int(1), nullptr); }, "pRight"},
      {[] { RqExprUpper(nullptr); }, "pOperand"},
      {[] { RqExprPow(Int(1), nullptr); }, "pOperand"},
      {[] { RqExprTrim(Int(1), nullptr, RqExprTrim::kBoth); }, "pFromString"},
      {[] { RqExprCast(nullptr, KXDateData, 0, 0); }, "pOperand"},
      {[] { RqExprCoalesce().AddValueExpr(nullptr); }, "pValueExpr"},
      {[&] { lookupCase(nullptr, Int(1), Int(2)); }, "pKey"},
      {[&] { lookupCase(Int(1), nullptr, Int(2)); }, "pEntryKey"},
      {[&] { lookupCase(Int(1), Int(2), nullptr); }, "pEntryValue"},
      {[&] { ifCase(nullptr, Int(1)); }, "pCond"},
      {[&] { ifCase(Less(1, 2), nullptr); }, "pValue"},
      {[&] { ifCase(Int(1), Int(1)); }, "pCond->IsCond\\(\\)"},
  };
  for (const auto& [action, text] : cases) EXPECT_DEATH(action(), text);
}

// ---------------------------------------------------------------------------------------------------------------------
// Bytes

TEST(ExternalScript, ReadsBackInPlaceOfWhatItHeld) {
  ByteVector bytes;
  ScriptSample()->ToByteVector(bytes);
  ExternalScriptExecutionData read;
  read.m_Options.resize(3);
  read.m_DataBindings.resize(3);
  EXPECT_EQ(read.FromByteVector(bytes.data()), bytes.data() + bytes.size());
  EXPECT_EQ(read, *ScriptSample());
}

TEST(Lookup, ValueInThePayloadIsAnExpression) {
  ByteVector damaged = Payload(*Owned(new RqExprPi));
  DataBlobUtil::ToByteVector(damaged, true);
  RqEntity entity;
  RqTreeVector::ToByteVector(&entity, damaged);
  EXPECT_THROW(RqExprLookup().FromByteVector(damaged.data()), ErrorMessage);
}

TEST(Cast, TypesThatNothingIsCastToAreRefusedFromForeignBytes) {
  for (int type = 0; type < KXMaxType; ++type) {
    SCOPED_TRACE(type);
    RqExprCast cast(Int(1), static_cast<KXDataType>(type), 1, 1);
    const ByteVector bytes = Payload(cast);
    const BoundedRead bound(bytes);
    RqExprCast read;
    if (RqExprCast::IsCastType(static_cast<KXDataType>(type))) {
      EXPECT_EQ(read.FromByteVector(bytes.data()), bytes.data() + bytes.size());
    } else {
      EXPECT_THROW(read.FromByteVector(bytes.data()), ErrorMessage);
      EXPECT_DEATH(TextOf(cast), "SQORRqDumpoutScalar");
    }
  }
}

}  // namespace
