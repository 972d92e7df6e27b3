#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Expressions/ScalarSamples.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

using Owned = std::unique_ptr<RqExpr>;

const RqShallowLessThan kShallow;
const RqEquivalence kEquivalence;

std::string TextOf(const RqExpr& expr) { return RqDumpout::StringFrom(expr).ToUTF8(); }
RqExpr* Param(int number) { return new RqExprParam(number); }
RqExpr* Less(int left, int right) { return new RqExprCondLess(Int(left), Int(right)); }

ByteVector Payload(RqNode& node) {
  ByteVector bytes;
  node.ToByteVector(bytes);
  return bytes;
}

// ---------------------------------------------------------------------------------------------------------------------
// What all classes share

TEST(Scalar, CopiesEqualTheirSource) {
  for (const ScalarSample& sample : ScalarSamples()) {
    SCOPED_TRACE(sample.m_text);
    const Owned pSource(sample.m_make());
    for (const bool bNewIDs : {false, true}) {
      const Owned pCopy(pSource->DeepExprCopy(bNewIDs));
      EXPECT_EQ(pCopy->IsCopyOf(*pSource), !bNewIDs);
      EXPECT_TRUE(kEquivalence(*pSource, *pCopy));
      bool bTied = false;
      EXPECT_FALSE(pSource->IsDeepLessThan(*pCopy, kShallow, bTied));
      EXPECT_TRUE(bTied);
      EXPECT_EQ(TextOf(*pCopy), sample.m_text);
    }
    const Owned pShallow(pSource->ShallowCopy());
    EXPECT_EQ(Payload(*pShallow), Payload(*pSource));
    EXPECT_EQ(pShallow->GetNumOperands(), pSource->GetNumOperands());
    for (int i = 0; i < pShallow->GetNumOperands(); ++i) EXPECT_EQ(pShallow->GetIthOperand(i), nullptr);
  }
}

TEST(Scalar, CopiesKeepWhatDoesNotTravelToo) {
  class Table final : public ATELMNativeTable {
    const TableIdentifier& GetTableIdentifier() const override { return m_identifier; }
    TableIdentifier m_identifier;
  };
  const KXTypeInfo type(KXDateData, 1, 2, 0);
  const auto copy = []<class Class>(const Class& source) {
    return std::unique_ptr<Class>(static_cast<Class*>(source.DeepCopy(false)));
  };

  RqExprEvaluate evaluate;
  evaluate.SetMicroExpr(OwnedRqExprPtr(Param(1)));
  evaluate.SetStickyType(type);
  evaluate.SetUserDefinedFuncName(L"F");
  evaluate.SetTypingParams({L"a", L"b"});
  const auto pEvaluate = copy(evaluate);
  ASSERT_TRUE(pEvaluate->GetMicroExpr() && pEvaluate->GetMicroExpr() != evaluate.GetMicroExpr());
  EXPECT_TRUE(kEquivalence(*pEvaluate->GetMicroExpr(), *evaluate.GetMicroExpr()));
  EXPECT_EQ(pEvaluate->GetStickyType(), type);
  EXPECT_EQ(pEvaluate->GetUserDefinedFuncName(), L"F");
  EXPECT_EQ(pEvaluate->GetTypingParams(), evaluate.GetTypingParams());

  RqExprVector keys;
  const RqExprLookup lookup(true, Param(1), keys);
  EXPECT_NE(copy(lookup)->GetValueExpr(), lookup.GetValueExpr());

  RqExprCoalesce coalesce;
  coalesce.SetStickyType(type);
  EXPECT_EQ(copy(coalesce)->GetStickyType(), type);

  const RefCntTELMNativeTable table(new Table);
  EXPECT_EQ(copy(RqExprDictLookup(Int(1), table, {}, L"d"))->GetRefCntTELMNativeTable(), table);

  RqExprExternalData data;
  data.SetExternalScriptExecutionData(ScriptSample());
  EXPECT_EQ(copy(data)->GetExternalScriptExecutionData(), data.GetExternalScriptExecutionData());
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
    if (pExpr->GetNumOperands() > 0) {
      EXPECT_EQ(pExpr->IsNavigationConstant(), bOperandsConstant && type != kRqExprEvaluate);
    }
    EXPECT_EQ(pExpr->IsTargetOnlyExpr(), type == kRqExprEvaluate);
    EXPECT_EQ(pExpr->IsMashupsPinnedExpr(), type == kRqExprGrainCheckDisplay);
  }
  EXPECT_FALSE(RqExprIDOf(Col(L"a")).IsConstant());
  EXPECT_TRUE(RqExprIDOf(Col(L"a"), true).IsConstant());
  EXPECT_TRUE(RqExprCast(Null(), KXDateData, 0, 0).IsAlwaysNull());
  EXPECT_FALSE(RqExprCast(Int(1), KXDateData, 0, 0).IsAlwaysNull());
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison

/// Two expressions: whether they are equivalent, and whether the first one sorts first; if not, they are tied.
struct Pair {
  const char* m_name;
  RqExpr* m_pFirst;
  RqExpr* m_pSecond;
  bool m_bEquivalent;
  bool m_bLess;
};

RqExpr* Evaluate(const wchar_t* functionDef) {
  RqExprVector none;
  return new RqExprEvaluate(functionDef, none);
}

RqExpr* Lookup(bool bDense, RqExpr* pValue) {
  RqExprVector none;
  return new RqExprLookup(bDense, pValue, none);
}

RqExpr* Predict(bool bScript, const wchar_t* name, const std::function<void(RqExprPredict&)>& fill = {},
                std::uint32_t source = 1) {
  RqExprVector none;
  return Filled<RqExprPredict>(
      fill ? fill : [](RqExprPredict&) {}, VoidID(kTIDADatabase, source), KXString(name), bScript, none);
}

RqExpr* Format(const wchar_t* format) {
  return Filled<RqExprCast>([&](RqExprCast& e) { e.SetDateTimeFormat(format); }, Param(1), KXDateData, 0, 0);
}

RqExpr* Json(const wchar_t* path, const wchar_t* table, KXDataType type) {
  return Filled<RqExprJsonValue>(
      [&](RqExprJsonValue& e) {
        e.SetHDSPath(path);
        e.SetHDSTableName(table);
      },
      Str(L"$"), Param(1), KXTypeInfo(type, 0, 0, 0));
}

RqExpr* External(const RqExternalColumn& column, const RefCnt<ExternalScriptExecutionData>& script = nullptr) {
  return Filled<RqExprExternalData>([&](RqExprExternalData& e) { e.SetExternalScriptExecutionData(script); }, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, column);
}

TEST(Scalar, FieldsInComparison) {
  MemoryGateway rp;
  const RefALevel levels[] = {{&rp, rp.MakeObject<MemoryLevel>(1u, L"Year", VoidID::NullID).GetID()},
                              {&rp, rp.MakeObject<MemoryLevel>(2u, L"Month", VoidID::NullID).GetID()}};
  const auto cast = [](KXDataType type, int precision, int scale) {
    return new RqExprCast(Param(1), type, precision, scale);
  };
  const auto dictionary = [](const wchar_t* table, const wchar_t* name) {
    return new RqExprDictLookup(Int(1), nullptr, {L"u", table}, name);
  };
  const auto source = [](std::uint32_t number) {
    return Filled<RqExprDepth>([=](RqExprDepth& e) { e.SetLTSVoidID(VoidID(kTIDALogicalTable, number)); }, Int(1));
  };
  const auto otherScript = [](auto change) {
    const RefCnt<ExternalScriptExecutionData> script = ScriptSample();
    change(*script);
    return script;
  };
  using D = KXDateTime;
  const Pair pairs[] = {
      {"order of a sum", new RqExprAdd(Param(1), Int(1)), new RqExprAdd(Int(1), Param(1)), true, false},
      {"order of a product", new RqExprMultiply(Param(1), Int(1)), new RqExprMultiply(Int(1), Param(1)), true, false},
      {"order of a difference", new RqExprSubtract(Param(1), Int(1)), new RqExprSubtract(Int(1), Param(1)), false,
       true},
      {"order of a quotient", new RqExprDivide(Param(1), Int(1)), new RqExprDivide(Int(1), Param(1)), false, true},
      {"trim", new RqExprTrim(nullptr, Int(2), RqExprTrim::kBoth),
       new RqExprTrim(nullptr, Int(1), RqExprTrim::kLeading), false, true},
      {"calendar extract", new RqExprCalendarExtract(Int(2), D::kExtractDay),
       new RqExprCalendarExtract(Int(1), D::kExtractHour), false, true},
      {"fiscal extract", new RqExprFiscalExtract(Int(2), nullptr, nullptr, D::kExtractDay),
       new RqExprFiscalExtract(Int(1), nullptr, nullptr, D::kExtractHour), false, true},
      {"timestamp add", new RqExprTimestampAdd(Int(2), Int(2), D::kDay),
       new RqExprTimestampAdd(Int(1), Int(1), D::kWeek), false, true},
      {"timestamp diff", new RqExprTimestampDiff(Int(2), Int(2), D::kDay),
       new RqExprTimestampDiff(Int(1), Int(1), D::kWeek), false, true},
      {"cast type", cast(KXCharData, 2, 2), cast(KXDateData, 1, 1), false, true},
      {"cast precision", cast(KXDateData, 1, 2), cast(KXDateData, 2, 1), false, true},
      {"cast scale", cast(KXDateData, 1, 1), cast(KXDateData, 1, 2), true, true},
      {"cast format", Format(L"a"), Format(L"b"), false, true},
      {"column number", new RqExprExtract(-1), new RqExprExtract(1), false, true},
      {"definition in another case", Evaluate(L"F(%1)"), Evaluate(L"f(%1)"), true, false},
      {"definition", Evaluate(L"a"), Evaluate(L"B"), false, true},
      {"bin type", new RqExprBinPlaceHolder(KXTypeInfo(KXCharData, 1, 0, 0)),
       new RqExprBinPlaceHolder(KXTypeInfo(KXCharData, 2, 0, 0)), false, true},
      {"JSON type", Json(L"b", L"b", KXCharData), Json(L"a", L"a", KXDateData), false, true},
      {"JSON path", Json(L"a", L"b", KXCharData), Json(L"b", L"a", KXCharData), false, true},
      {"JSON table", Json(L"a", L"a", KXCharData), Json(L"a", L"b", KXCharData), false, true},
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
      {"flags of a coalesce", new RqExprCoalesce, Filled<RqExprCoalesce>([](RqExprCoalesce& e) {
         e.SetAddedInHDSRewrite(true);
         e.SetCreatedForJoin(true);
         e.SetStickyType(KXTypeInfo(KXDateData, 0, 0, 0));
       }),
       true, false},
      {"flag of a case", new RqExprIfCase, Filled<RqExprIfCase>([](RqExprIfCase& e) { e.SetAddedInHDSRewrite(true); }),
       true, false},
      {"data source", Predict(true, L"b", {}, 1), Predict(false, L"a", {}, 2), false, true},
      {"script", Predict(true, L"a"), Predict(true, L"b"), false, true},
      {"model", Predict(false, L"a"), Predict(false, L"b"), false, true},
      {"column type", Predict(false, L"", [](auto& e) { e.SetColumnType(L"a"); }),
       Predict(false, L"", [](auto& e) { e.SetColumnType(L"b"); }), false, true},
      {"bindings",
       Predict(false, L"",
               [](auto& e) {
                 e.SetDataBindings({{L"a", L"b"}});
               }),
       Predict(false, L"",
               [](auto& e) {
                 e.SetDataBindings({{L"a", L"c"}});
               }),
       false, true},
      {"options",
       Predict(false, L"",
               [](auto& e) {
                 e.SetOptions({{L"a", L"b"}});
               }),
       Predict(false, L"",
               [](auto& e) {
                 e.SetOptions({{L"a", L"b"}, {L"a", L"b"}});
               }),
       false, true},
      {"script or model", Predict(false, L""), Predict(true, L""), false, true},
      {"script missing", External({}), External({}, ScriptSample()), false, true},
      {"equal scripts", External({}, ScriptSample()), External({}, ScriptSample()), true, false},
      {"script's binding", External({}, ScriptSample()),
       External({}, otherScript([](auto& script) { script.m_DataBindings[1].m_SortOrder = L"x"; })), false, true},
      {"script's option", External({}, ScriptSample()),
       External({}, otherScript([](auto& script) { script.m_Options[1].second = L"x"; })), false, true},
  };
  for (const Pair& pair : pairs) {
    SCOPED_TRACE(pair.m_name);
    const Owned pFirst(pair.m_pFirst);
    const Owned pSecond(pair.m_pSecond);
    EXPECT_EQ(kEquivalence(*pFirst, *pSecond), pair.m_bEquivalent);
    EXPECT_EQ(kEquivalence(*pSecond, *pFirst), pair.m_bEquivalent);
    EXPECT_EQ(pFirst->IsLessThan(*pSecond, kShallow), pair.m_bLess);
    EXPECT_FALSE(pSecond->IsLessThan(*pFirst, kShallow));
  }
}

/// Each change makes a column of external data greater, and takes no notice of what the later ones do.
TEST(Scalar, FieldsOfExternalDataInTheirOrder) {
  using Column = RqExternalColumn;
  const std::function<void(Column&)> changes[] = {
      [](Column& c) { c.m_ExternalDataForm = Column::kUnknownData; },
      [](Column& c) { c.m_ObjectReference = ExternalObjectReference({L"a"}, L"z"); },
      [](Column& c) { c.m_CacheSharedKey = L"a"; },
      [](Column& c) { c.m_ColumnName = L"a"; },
      [](Column& c) { c.m_ColumnTypeInfo.precision_ = 1; },
      [](Column& c) { c.m_AggrRule = L"a"; },
      [](Column& c) { c.m_bIsVirtual = true; },
      [](Column& c) { c.m_bIsForceVirtual = true; },
      [](Column& c) { c.m_bIsOptionalVirtual = true; },
      [](Column& c) { c.m_bIsSortKeyColumn = true; },
      [](Column& c) { c.m_bIsDescriptorIDColumn = true; },
      [](Column& c) { c.m_bScalarWithNoPath = true; },
      [](Column& c) { c.m_bNeedsGrainCheck = true; },
      [](Column& c) { c.m_bIsPrimaryKeyColumn = true; },
      [](Column& c) { c.m_bIsLookupJoinColumn = true; },
      [](Column& c) { c.m_bIsPresentWithIncomingQuery = true; },
      [](Column& c) {
        c.m_ExternalJoiningIndexVector = {{1, kExternalInnerJoin}};
      },
  };
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
  RqExprExternalData joined(nullptr, nullptr, nullptr, nullptr, nullptr, least);
  joined.AddExternalJoiningIndex({1, kExternalUnion});
  EXPECT_FALSE(kEquivalence(joined, *Owned(External(least))));
  joined.RemoveExternalJoiningIndexVector();
  EXPECT_TRUE(kEquivalence(joined, *Owned(External(least))));
}

TEST(Scalar, CommutativeOperandsStandInOrder) {
  EXPECT_EQ(TextOf(RqExprAdd(Int(2), Int(1))), "1 + 2");
  EXPECT_EQ(TextOf(RqExprMultiply(Int(2), Int(1))), "1 * 2");
  EXPECT_EQ(TextOf(RqExprSubtract(Int(2), Int(1))), "2 - 1");
  EXPECT_EQ(TextOf(RqExprDivide(Int(2), Int(1))), "2 / 1");
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
  EXPECT_EQ(TextOf(*lookupCase.GetKeyValue()), "?1");
  EXPECT_EQ(lookupCase.GetDefaultReturnValue(), nullptr);
  EXPECT_EQ(TextOf(*lookupCase.GetIthEntryKey(1)), "2");
  lookupCase.SetIthEntryValue(1, Str(L"c"));
  EXPECT_EQ(TextOf(*lookupCase.GetIthEntryValue(1)), "'c'");
  EXPECT_EQ(TextOf(lookupCase), "case ?1 when 1 then 'a' when 2 then 'c' end ");

  RqExprPairVector pairs;
  RqExprIfCase ifCase(Int(9), pairs);
  EXPECT_EQ(ifCase.GetNumOperands(), 1);
  EXPECT_EQ(ifCase.GetNumWhenThenPairs(), 0);
  ifCase.AddNewWhenThenPair(OwnedRqExprPtr(Less(1, 2)), OwnedRqExprPtr(Int(3)));
  EXPECT_EQ(ifCase.GetNumWhenThenPairs(), 1);
  EXPECT_EQ(TextOf(*ifCase.GetIthEntryCond(0)), "1 < 2");
  EXPECT_EQ(TextOf(*ifCase.GetIthEntryValue(0)), "3");
  EXPECT_EQ(TextOf(*ifCase.GetDefaultReturnValue()), "9");
  RqExprIfCase empty;
  EXPECT_EQ(empty.GetNumWhenThenPairs(), 0);
  empty.AddNewWhenThenPair(OwnedRqExprPtr(Less(1, 2)), OwnedRqExprPtr(Int(3)));
  EXPECT_EQ(TextOf(empty), "case  when 1 < 2 then 3 end ");
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
      {[] { RqExprMultiply(Int(1), nullptr); }, "pRight"},
      {[] { RqExprSubtract(nullptr, Int(1)); }, "pLeft"},
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

template <class... Values>
ByteVector Bytes(const Values&... values) {
  ByteVector bytes;
  const auto write = [&bytes](const auto& value) {
    if constexpr (requires { value.ToByteVector(bytes); }) {
      value.ToByteVector(bytes);
    } else {
      DataBlobUtil::ToByteVector(bytes, value);
    }
  };
  (write(values), ...);
  return bytes;
}

TEST(Scalar, PayloadInItsOrder) {
  const auto u = [](std::uint32_t value) { return value; };
  const auto i = [](std::int32_t value) { return value; };
  const auto s = [](const wchar_t* text) { return KXString(text); };
  const std::pair<const char*, ByteVector> cases[] = {
      {"1 + 2", {}},
      {"trim(trailing  from ?1)", Bytes(u(2))},
      {"extract(name_of_month from ?1)", Bytes(u(14))},
      {"TimestampAdd(SQL_TSI_QUARTER, 3, ?1)", Bytes(u(7))},
      {"cast(?1 as  TIMESTAMP ( 3 ) 'yyyy') ", Bytes(u(KXTimeStampData), i(3), i(5), s(L"yyyy"))},
      {"coalesce( 1 , 2 , 3)", Bytes(true, true)},
      {"case  when 1 < 2 then 3 when 4 < 5 then 6 else 7 end ", Bytes(true)},
      {"RqExprExtract [Column 7]", Bytes(i(7))},
      {"CalculatedMember(1, 2, 3, 4)", Bytes(i(4))},
      {"Depth(1, 3001:7)", Bytes(VoidID(kTIDALogicalTable, 7u))},
      {"Dict_lookup(1, usr.tab (Dictionary for COL))", Bytes(s(L"usr"), s(L"tab"), s(L"COL"))},
      {"JSON_VALUE('$.a', ?1, '/p', 'T')", {}},
      {"EvaluateScript(3023:9, scriptname=s.py, DOUBLE, [age=T1.AGE, sex=T1.SEX], [k=5], ?1, ?2)",
       Bytes(VoidID(kTIDADatabase, 9u), s(L"s.py"), s(L"m"), s(L"DOUBLE"), true, i(2), s(L"age"), s(L"T1.AGE"),
             s(L"sex"), s(L"T1.SEX"), i(1), s(L"k"), s(L"5"))},
  };
  const std::vector<ScalarSample> samples = ScalarSamples();
  const ByteVector base = Payload(*Owned(new RqExprPi));
  for (const auto& [text, fields] : cases) {
    SCOPED_TRACE(text);
    const auto found = std::find_if(samples.begin(), samples.end(),
                                    [&](const ScalarSample& sample) { return sample.m_text == std::string(text); });
    ASSERT_NE(found, samples.end());
    ByteVector expected = base;
    expected.insert(expected.end(), fields.begin(), fields.end());
    EXPECT_EQ(Payload(*Owned(found->m_make())), expected);
  }

  ByteVector evaluate = Bytes(s(L"f"));
  evaluate.insert(evaluate.end(), base.begin(), base.end());
  EXPECT_EQ(Payload(*Owned(Evaluate(L"f"))), evaluate) << "the definition comes first";

  RqExternalColumn column = ExternalColumnSample();
  column.m_bIsOptionalVirtual = column.m_bIsDescriptorIDColumn = column.m_bNeedsGrainCheck = false;
  column.m_bIsLookupJoinColumn = false;
  column.m_ExternalJoiningIndexVector.resize(1);
  ByteVector external = base;
  for (const ByteVector& part : {Bytes(u(0), column.m_ObjectReference, s(L"key"), s(L"AMOUNT"), true, s(L"sum")),
                                 Bytes(true, true, false, true, false, true, false), Bytes(false, true),
                                 Bytes(i(1), column.m_ExternalJoiningIndexVector[0])}) {
    external.insert(external.end(), part.begin(), part.end());
  }
  EXPECT_EQ(Payload(*Owned(External(column, ScriptSample()))), external);
}

TEST(Lookup, ValueTravelsInsideThePayload) {
  const Owned pSource(Lookup(true, new RqExprAdd(Int(1), Int(2))));
  const ByteVector bytes = Payload(*pSource);
  RqExprLookup read;
  EXPECT_EQ(read.FromByteVector(bytes.data()), bytes.data() + bytes.size());
  EXPECT_TRUE(kEquivalence(*pSource, read));

  ByteVector damaged = Payload(*Owned(new RqExprPi));
  DataBlobUtil::ToByteVector(damaged, true);
  RqEntity entity;
  RqTreeVector::ToByteVector(&entity, damaged);
  EXPECT_THROW(read.FromByteVector(damaged.data()), ErrorMessage);
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
      EXPECT_NE(TextOf(cast), "");
    } else {
      EXPECT_THROW(read.FromByteVector(bytes.data()), ErrorMessage);
      EXPECT_DEATH(TextOf(cast), "SQORRqDumpoutScalar");
    }
  }
}

}  // namespace
