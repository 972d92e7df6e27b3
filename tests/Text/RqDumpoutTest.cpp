#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Host/ErrorMessage.h"
#include "Host/KXThread.h"
#include "Host/SUSystemConfig.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

namespace {

constexpr VoidID kSales(kTIDAEntity, 10u);
constexpr VoidID kAmount(kTIDAAttribute, 11u);
constexpr VoidID kTime(kTIDADimension, 20u);
constexpr VoidID kQuarter(kTIDALevel, 21u);
constexpr VoidID kFiscal(kTIDAPresentationHierarchy, 22u);
constexpr VoidID kFacts(kTIDATable, 30u);
constexpr VoidID kAmt(kTIDAColumn, 31u);
constexpr VoidID kWarehouse(kTIDADatabase, 40u);
constexpr VoidID kScratch(kTIDADatabase, 41u);
constexpr VoidID kNobody(kTIDADatabase, 99u);

/// The repository and the session that the samples speak of.
class Model : public ::testing::Test {
 protected:
  Model() {
    m_gateway.SetRepositoryUniqueID32(1).SetExternal(kScratch);
    m_gateway.MakeObject<MemoryEntity>(10u, L"Sales");
    m_gateway.MakeObject<MemoryAttribute>(11u, L"Amount", kSales);
    m_gateway.MakeObject<MemoryDimension>(20u, L"Time");
    m_gateway.MakeObject<MemoryLevel>(21u, L"Quarter", kTime);
    m_gateway.MakeObject<MemoryPresentationHierarchy>(22u, L"Fiscal");
    m_gateway.MakeObject<MemoryTable>(30u, L"FACTS", VoidID::NullID, kWarehouse);
    m_gateway.MakeObject<MemoryColumn>(31u, L"AMT", kFacts, KXTypeInfo());
    m_gateway.MakeObject<MemoryDatabase>(40u, L"Warehouse", ServerInfo::kDefault);
    m_gateway.MakeObject<MemoryDatabase>(41u, L"Scratch", ServerInfo::kDefault);
  }

  std::string TextOf(const RqNode& node) const { return RqDumpout::StringFrom(node).ToUTF8(); }
  std::string NamedTextOf(const RqNode& node) { return RqDumpout::StringFrom(node, false, false, &m_gateway).ToUTF8(); }
  std::string ExternalTextOf(const RqNode& node) {
    return RqDumpout::StringFrom(node, false, false, &m_gateway, false, nullptr, false, true).ToUTF8();
  }
  /// Session variables as values, in external mode or not.
  std::string ValueTextOf(const RqNode& node, bool bExternal = false) {
    return RqDumpout::StringFrom(node, false, false, nullptr, false, &m_gateway, false, bExternal).ToUTF8();
  }

  MemoryGateway m_gateway;
};

// ---------------------------------------------------------------------------------------------------------------------
// Samples

RqExpr* Int(int value) { return new RqExprIntegerLiteral(value, false); }
RqExpr* Str(const wchar_t* text) { return new RqExprStringLiteral(text); }
RqExpr* Param(int number) { return new RqExprParam(number); }
RqExprCond* Less(int left, int right) { return new RqExprCondLess(Int(left), Int(right)); }
RqExprCond* Or() { return new RqExprCondOr(Less(1, 2), Less(3, 4)); }
RqExprCond* And() { return new RqExprCondAnd(Less(1, 2), Less(3, 4)); }

template <class Expr>
Expr* WithOperands(std::initializer_list<RqExpr*> operands) {
  Heap<Expr> expr(new Expr);
  for (RqExpr* const pOperand : operands) expr->AddChild(pOperand);
  return expr.Release();
}
RqExpr* List(std::initializer_list<RqExpr*> columns) { return WithOperands<RqExprColumnList>(columns); }
RqExpr* OrderedList(std::initializer_list<RqExpr*> columns) { return WithOperands<RqExprColumnListOrdered>(columns); }

RqExpr* MultiColumnIn(bool bNegated) {
  auto* const pIn = WithOperands<RqExprCondMultiColumnIn>(
      {OrderedList({Param(1), Param(2)}), OrderedList({OrderedList({Int(1), Int(2)}), List({Int(3), Int(4)})})});
  if (bNegated) pIn->Negate();
  return pIn;
}

template <class Class>
Class* Negated(Class* pCond) {
  pCond->Negate();
  return pCond;
}

template <class Literal, class Value>
Literal* Described(const Value& value) {
  Literal* const pLiteral = new Literal(value);
  pLiteral->SetDescriptorIDOFValue(true);
  return pLiteral;
}

KorvelNumber Number(const wchar_t* text) {
  KorvelNumber number;
  EXPECT_TRUE(KorvelNumber::FromString(text, number));
  return number;
}

template <class Value>
Value Token(void (Value::*setToken)()) {
  Value value;
  (value.*setToken)();
  return value;
}

RqExpr* Evaluate(bool bNegated) {
  RqExprVector operands{Int(1), Int(2)};
  auto* const pPredicate = new RqExprEvaluatePredicate(operands, bNegated);
  pPredicate->SetFunctionDef(L"f('%1', %2)");
  return pPredicate;
}

RqExpr* Ancestor(bool bWithSource) {
  auto* const pCond = new RqExprIsAncestor(Param(1), Param(2), Int(2), false);
  if (bWithSource) pCond->SetLTSVoidID(VoidID(kTIDALogicalTable, 7u));
  return pCond;
}

RqExpr* Member(ARpGateway& rp, RqExprLiteral* pValue, bool bWithKey = false) {
  auto* const pMember = new RqExprMemberReference(new RqExprLevel(&rp, kQuarter), pValue);
  RqExprVector key;
  if (bWithKey) key = {Param(1), Param(2)};
  if (bWithKey) pMember->SetLogicalKeyCols(key);
  return pMember;
}

RqExpr* GroupByContent() {
  RqExprVector exprs{Param(1), Int(2)};
  return new RqExprCondGroupByContent(exprs);
}

/// A tree and its text without a gateway, with one, and with one in external mode. A null text is as the one before it.
struct Sample {
  std::function<RqNode*(ARpGateway&)> m_make;
  const char* m_plain;
  const char* m_named = nullptr;
  const char* m_external = nullptr;

  const char* Named() const { return m_named ? m_named : m_plain; }
  const char* External() const { return m_external ? m_external : Named(); }
};

#define MAKE(expression) [](ARpGateway& rp) -> RqNode* { return (void)rp, (expression); }

const std::vector<Sample>& Samples() {
  static const std::vector<Sample> samples{
      // Literals
      {MAKE(Str(L"it's")), "'it's'", nullptr, "'it''s'"},
      {MAKE(Str(L"")), "''"},
      {MAKE(Described<RqExprStringLiteral>(KXString(L"k"))), "[DESCRIPTOR_IDOF]'k'", nullptr, "'k'"},
      {MAKE(Int(-2147483647 - 1)), "-2147483648"},
      {MAKE(new RqExprIntegerLiteral(7, true)), "%7"},
      {MAKE(Described<RqExprIntegerLiteral>(7)), "[DESCRIPTOR_IDOF]7", nullptr, "7"},
      {MAKE(new RqExprFloatLiteral(0.1)), "0.1"},
      {MAKE(new RqExprFloatLiteral(2.0)), "2.0"},
      {MAKE(Described<RqExprFloatLiteral>(0.5)), "[DESCRIPTOR_IDOF]0.5", nullptr, "0.5"},
      {MAKE(new RqExprNumberLiteral(Number(L"12.50"))), "12.5"},
      {MAKE(Described<RqExprNumberLiteral>(Number(L"3"))), "[DESCRIPTOR_IDOF]3", nullptr, "3"},
      {MAKE(new RqExprDateLiteral(KXDate(2024, 2, 29))), "DATE '2024-02-29'"},
      {MAKE(new RqExprDateLiteral(Token(&KXDate::SetAsDynamicCurrDateToken))), "CURRENT_DATE"},
      {MAKE(Described<RqExprDateLiteral>(KXDate(2024, 1, 2))), "[DESCRIPTOR_IDOF]DATE '2024-01-02'", nullptr,
       "DATE '2024-01-02'"},
      {MAKE(new RqExprTimeLiteral(KXTime(3, 4, 5))), "TIME '03:04:05'"},
      {MAKE(new RqExprTimeLiteral(KXTime(3, 4, 5, 500000000))), "TIME '03:04:05.500000000'"},
      {MAKE(new RqExprTimeLiteral(Token(&KXTime::SetAsDynamicCurrTimeToken))), "CURRENT_TIME"},
      {MAKE(Described<RqExprTimeLiteral>(KXTime(1, 2, 3))), "[DESCRIPTOR_IDOF]TIME '01:02:03'", nullptr,
       "TIME '01:02:03'"},
      {MAKE(new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5), 0)), "TIMESTAMP '2024-01-02 03:04:05'"},
      {MAKE(new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5, 120000000), 3)),
       "TIMESTAMP '2024-01-02 03:04:05.120'"},
      {MAKE(new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5, 120000001), 3)),
       "TIMESTAMP '2024-01-02 03:04:05.120000001'"},
      {MAKE(new RqExprDateTimeLiteral(Token(&KXDateTime::SetAsDynamicCurrDateTimeToken), 3)), "CURRENT_TIMESTAMP"},
      {MAKE(Described<RqExprDateTimeLiteral>(KXDateTime(2024, 1, 2, 3, 4, 5))),
       "[DESCRIPTOR_IDOF]TIMESTAMP '2024-01-02 03:04:05'", nullptr, "TIMESTAMP '2024-01-02 03:04:05'"},
      {MAKE(new RqExprIntervalLiteral(L"INTERVAL '1' DAY")), "INTERVAL '1' DAY"},
      {MAKE(Described<RqExprIntervalLiteral>(KXString(L"INTERVAL '2' DAY"))), "[DESCRIPTOR_IDOF]INTERVAL '2' DAY",
       nullptr, "INTERVAL '2' DAY"},
      {MAKE(new RqExprNullLiteral), "NULL"},

      // References
      {MAKE(new RqAttribute(&rp, kAmount)), "1.3003:11", "Sales.Amount", "\"Sales\".\"Amount\""},
      {MAKE(new RqEntity(&rp, kSales)), "1.3002:10", "Sales", "\"Sales\""},
      {MAKE(new RqExprDimension(&rp, kTime)), "[Dimension 1.3004:20]", "[Dimension Time]", "[Dimension \"Time\"]"},
      {MAKE(new RqExprDimension(&rp, kTime, kFiscal)), "[Dimension 1.3004:20, 1.3008:22]", "[Dimension Time, Fiscal]",
       "[Dimension \"Time\", \"Fiscal\"]"},
      {MAKE(new RqExprLevel(&rp, kQuarter)), "[Level 1.3005:21]", "[Level Quarter]", "[Level \"Time\".\"Quarter\"]"},
      {MAKE(Member(rp, new RqExprStringLiteral(L"Q1"))), "[Level 1.3005:21].'Q1'", "[Level Quarter].'Q1'",
       "[Level \"Time\".\"Quarter\"].'Q1'"},
      {MAKE(Member(rp, nullptr, true)), "[Level 1.3005:21].ALL (?1, ?2)", "[Level Quarter].ALL (?1, ?2)",
       "[Level \"Time\".\"Quarter\"].ALL (?1, ?2)"},
      {MAKE(new RqTargetColumn(&rp, kAmt, 3)), "T3.3025:31", "FACTS.AMT", "\"FACTS\".\"AMT\""},
      {MAKE(new RqTargetColumn(L"a\"b", 3)), "T3.a\"b", nullptr, "\"T3\".\"a\"\"b\""},
      {MAKE(new RqTargetColumn(L"a", RqTargetColumn::kUnknownTableNum)), "a", nullptr, "\"T-1\".\"a\""},
      {MAKE(new RqTargetCubeColumn(L"cube", 4)), "T4.cube", nullptr, "\"T4\".\"cube\""},
      {MAKE(new RqTargetCacheColumn(L"hit", 5)), "T5.hit", nullptr, "\"T5\".\"hit\""},
      {MAKE(new RqExprSessionVar({L"AUTH", L"REGION"})), "VALUEOF(AUTH.REGION)"},
      {MAKE(Param(3)), "?3"},
      {MAKE(new RqHandleNode(Param(4))), "?4"},

      // Lists
      {MAKE(List({Int(1), Str(L"b")})), "[ 1, 'b'] ", nullptr, "1, 'b'"},
      {MAKE(OrderedList({Int(2)})), "[ 2] ", nullptr, "2"},
      {MAKE(OrderedList({})), "[ ] ", nullptr, ""},

      // Comparisons and connectives
      {MAKE(new RqExprCondEquality(Int(1), Param(2), false)), "1 = ?2"},
      {MAKE(new RqExprCondEquality(Int(1), Param(2), true)), "1 =NullsEqual ?2"},
      {MAKE(new RqExprCondNotEqual(Int(2), Int(1))), "2 <> 1"},
      {MAKE(Less(1, 2)), "1 < 2"},
      {MAKE(new RqExprCondLessEqual(Int(1), Int(2))), "1 <= 2"},
      {MAKE(new RqExprCondGreater(Int(1), Int(2))), "1 > 2"},
      {MAKE(new RqExprCondGreaterEqual(Int(1), Int(2))), "1 >= 2"},
      {MAKE(And()), "1 < 2 and 3 < 4"},
      {MAKE(Or()), "1 < 2 or 3 < 4"},
      {MAKE(WithOperands<RqExprCondAnd>({Or(), Less(5, 6)})), "(1 < 2 or 3 < 4) and 5 < 6"},
      {MAKE(WithOperands<RqExprCondAnd>({Less(5, 6), Or()})), "5 < 6 and (1 < 2 or 3 < 4)"},
      {MAKE(WithOperands<RqExprCondAnd>({And(), And()})), "1 < 2 and 3 < 4 and 1 < 2 and 3 < 4"},
      {MAKE(WithOperands<RqExprCondOr>({And(), Or()})), "1 < 2 and 3 < 4 or 1 < 2 or 3 < 4"},
      {MAKE(new RqExprCondNot(Or())), "not (1 < 2 or 3 < 4)"},
      {MAKE(new RqExprCondNot(And())), "not 1 < 2 and 3 < 4"},

      // Predicates
      {MAKE(new RqExprCondIsNull(Param(1), false)), "?1 is null"},
      {MAKE(new RqExprCondIsNull(Param(1), true)), "?1 is not null"},
      {MAKE(new RqExprCondBetween(Param(1), Int(2), Int(3), false)), "?1 between 2 and 3"},
      {MAKE(new RqExprCondBetween(Param(1), Int(2), Int(3), true)), "?1 not between 2 and 3"},
      {MAKE(new RqExprCondLike(Param(1), Str(L"a%"), false, nullptr)), "?1 like 'a%'"},
      {MAKE(new RqExprCondLike(Param(1), Str(L"a%"), true, Str(L"!"))), "?1 not like 'a%' escape '!'"},
      {MAKE(new RqExprCondIn(Param(1), List({Int(1), Int(2)}), false)), "?1 in ([ 1, 2] )", nullptr, "?1 in (1, 2)"},
      {MAKE(new RqExprCondIn(Param(1), List({Int(1)}), true)), "?1 not in ([ 1] )", nullptr, "?1 not in (1)"},
      {MAKE(MultiColumnIn(false)), "(?1, ?2) in ((1, 2), (3, 4))"},
      {MAKE(MultiColumnIn(true)), "(?1, ?2) not in ((1, 2), (3, 4))"},
      {MAKE(WithOperands<RqExprCondMultiColumnIn>(
           {List({Param(1)}), List({new RqExprCondIn(Param(2), List({Int(1)}), false)})})),
       "(?1) in ((?2 in ([ 1] )))", nullptr, "(?1) in ((?2 in (1)))"},

      // Special conditions
      {MAKE(GroupByContent()), "[GroupByContent ?1, 2]"},
      {MAKE(new RqExprCondAtomicWrapper(Or())), "Atomic[1 < 2 or 3 < 4]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kInnerJoin)), "OuterJoinFilter[Inner join, 1 < 2]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kLeftOuterJoin)),
       "OuterJoinFilter[Left outer join, 1 < 2]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kRightOuterJoin)),
       "OuterJoinFilter[Right outer join, 1 < 2]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kFullOuterJoin)),
       "OuterJoinFilter[Full outer join, 1 < 2]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kFullOuterStitchJoin)),
       "OuterJoinFilter[Full outer stitch join, 1 < 2]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kNaturalJoin)),
       "OuterJoinFilter[Natural join, 1 < 2]"},
      {MAKE(new RqExprCondOuterJoinFilter(Less(1, 2), static_cast<SqlTableRef::JoinType>(6))),
       "OuterJoinFilter[Unknown join type, 1 < 2]"},
      {MAKE(Evaluate(false)), "Evaluate_Predicate( 'f('%1', %2)', 1, 2) ", nullptr,
       "Evaluate_Predicate( 'f(''%1'', %2)', 1, 2) "},
      {MAKE(Evaluate(true)), "not Evaluate_Predicate( 'f('%1', %2)', 1, 2) ", nullptr,
       "not Evaluate_Predicate( 'f(''%1'', %2)', 1, 2) "},
      {MAKE(WithOperands<RqExprEvaluatePredicate>({})), "Evaluate_Predicate( '') "},

      // Hierarchy predicates
      {MAKE(Ancestor(false)), "IsAncestor(?1, ?2, 2)"},
      {MAKE(Ancestor(true)), "IsAncestor(?1, ?2, 2, 3001:7)"},
      {MAKE(new RqExprIsAncestor(Param(1), Param(2), Int(2), true)), " not IsAncestor(?1, ?2, 2)"},
      {MAKE(new RqExprIsAncestor(Param(1), false)), "IsLeaf(?1)"},
      {MAKE(new RqExprIsAncestor(Param(1), true)), " not IsLeaf(?1)"},
      {MAKE(new RqExprIsRoot(Param(1))), "IsRoot(?1)"},
      {MAKE(new RqExprIsSibling(Param(1), Param(2), Param(3), false)), "IsSibling(?1, ?2, 1, ?3)"},
      {MAKE(Negated(new RqExprIsSibling(Param(1), Param(2), Param(3), true))),
       " not IsSibling(?1, ?2, 1, ?3, include root)"},
      {MAKE(WithOperands<RqExprIsLeaf>({Param(1), Param(2)})), "IsLeaf(?1, ?2)"},
      {MAKE(new RqExprIsLeaf(Param(1), true)), " not IsLeaf(?1)"},
  };
  return samples;
}

// ---------------------------------------------------------------------------------------------------------------------
// Texts of trees

class RqDumpoutTest : public Model {};

TEST_F(RqDumpoutTest, TextOfEachSample) {
  for (const Sample& sample : Samples()) {
    SCOPED_TRACE(sample.m_plain);
    const Heap<RqNode> node(sample.m_make(m_gateway));
    EXPECT_EQ(TextOf(*node), sample.m_plain);
    EXPECT_EQ(NamedTextOf(*node), sample.Named());
    EXPECT_EQ(ExternalTextOf(*node), sample.External());
  }
}

// Marks, lines and identities belong to blocks; an expression is one text in all of these settings.
TEST_F(RqDumpoutTest, ExpressionsHaveNoMarksLinesOrIdentities) {
  for (const Sample& sample : Samples()) {
    const Heap<RqNode> node(sample.m_make(m_gateway));
    node->MarkTargetID(kWarehouse);
    EXPECT_EQ(RqDumpout::StringFrom(*node, true, true, nullptr, true, nullptr, true).ToUTF8(), sample.m_plain);
    EXPECT_EQ(RqDumpout::StringFrom(*node, true, true, nullptr, true, nullptr, true, false, true).ToUTF8(),
              sample.m_plain);
  }
}

TEST_F(RqDumpoutTest, CopyHasTheSameText) {
  for (const Sample& sample : Samples()) {
    const Heap<RqNode> node(sample.m_make(m_gateway));
    const Heap<RqNode> copy(node->DeepCopy(true));
    EXPECT_EQ(TextOf(*copy), sample.m_plain);
  }
}

TEST_F(RqDumpoutTest, EveryClassThatStandsHasASample) {
  const std::pair<RqNodeType_e, bool> kinds[] = {
#define HAS_OBJECTS_Stands(Class)                                     !std::is_abstract_v<Class>
#define HAS_OBJECTS_Declared(Class)                                   false
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) {k##Class, HAS_OBJECTS_##state(Class)},
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
  };
  std::set<RqNodeType_e> sampled;
  for (const Sample& sample : Samples()) {
    sampled.insert(Heap<RqNode>(sample.m_make(m_gateway))->GetObjectType());
  }
  for (const auto& [type, bHasObjects] : kinds) {
    EXPECT_TRUE(!bHasObjects || sampled.contains(type)) << GetRqNodeTypeName(type);
  }
}

// What readers are told is what they get.
TEST_F(RqDumpoutTest, TheDescriptionShowsEverySample) {
  const auto path = std::filesystem::path(RQ_SOURCE_DIR) / "docs/text-form.md";
  std::ifstream file(path);
  ASSERT_TRUE(file) << path;
  const std::string page(std::istreambuf_iterator<char>(file), {});
  for (const Sample& sample : Samples()) {
    for (const char* const text : {sample.m_plain, sample.Named(), sample.External()}) {
      EXPECT_TRUE(!*text || page.find("`" + std::string(text) + "`") != page.npos) << text;
    }
  }
}

TEST_F(RqDumpoutTest, NullIsTheEmptyText) { EXPECT_TRUE(RqDumpout::StringFrom(nullptr, true, true).empty()); }

TEST_F(RqDumpoutTest, ObjectThatTheGatewayLacksPrintsByNumber) {
  m_gateway.RemoveObject(kSales).RemoveObject(kFacts).RemoveObject(kQuarter);
  const RqEntity entity(&m_gateway, kSales);
  const RqAttribute attribute(&m_gateway, kAmount);
  const RqTargetColumn column(&m_gateway, kAmt, 2);
  EXPECT_EQ(NamedTextOf(entity), "1.3002:10");
  EXPECT_EQ(NamedTextOf(attribute), "Amount");
  EXPECT_EQ(NamedTextOf(column), "T2.AMT");
  EXPECT_EQ(ExternalTextOf(RqExprLevel(&m_gateway, kQuarter)), "[Level 1.3005:21]");
}

TEST_F(RqDumpoutTest, DamagedTreeHasAText) {
  const auto hollow = [](RqExpr* pExpr) { return Heap<RqExpr>(pExpr); };
  const std::pair<Heap<RqExpr>, const char*> cases[] = {
      {hollow(new RqExprCondEquality), " = "},
      {hollow(new RqExprCondAnd), " and "},
      {hollow(WithOperands<RqExprCondOr>({nullptr, Int(1)})), " or 1"},
      {hollow(new RqExprCondNot), "not "},
      {hollow(new RqExprCondIsNull), " is null"},
      {hollow(new RqExprCondBetween(Int(1), nullptr, nullptr, false)), "1 between  and "},
      {hollow(new RqExprCondLike), " like "},
      {hollow(new RqExprCondIn), " in ()"},
      {hollow(new RqExprCondMultiColumnIn), "() in ()"},
      {hollow(WithOperands<RqExprCondMultiColumnIn>({Param(1), Param(2)})), "(?1) in (?2)"},
      {hollow(new RqExprCondGroupByContent), "[GroupByContent ]"},
      {hollow(new RqExprCondAtomicWrapper), "Atomic[]"},
      {hollow(new RqExprCondOuterJoinFilter), "OuterJoinFilter[Inner join, ]"},
      {hollow(WithOperands<RqExprIsAncestor>({nullptr, Int(1), nullptr})), "IsAncestor(, 1, )"},
      {hollow(new RqExprMemberReference), ".ALL"},
  };
  for (const auto& [expr, text] : cases) EXPECT_EQ(TextOf(*expr), text);
}

using RqDumpoutDeathTest = RqDumpoutTest;

TEST_F(RqDumpoutDeathTest, NullColumnInAList) {
  const Heap<RqExpr> list(OrderedList({Int(1), nullptr}));
  EXPECT_DEATH(TextOf(*list), "columnList\\.GetIthColumn\\(i\\)");
  const Heap<RqExpr> rows(WithOperands<RqExprCondMultiColumnIn>({Param(1), List({nullptr})}));
  EXPECT_DEATH(TextOf(*rows), "columnList\\.GetIthColumn\\(i\\)");
}

// ---------------------------------------------------------------------------------------------------------------------
// Session variables as values

TEST_F(RqDumpoutTest, SessionVariableAsValue) {
  struct Case {
    MemoryValue m_value;
    const char* m_plain;
    const char* m_external;
  };
  Case cases[] = {
      {L"O'Hara", "'O'Hara'", "'O''Hara'"},
      {42, "42", "42"},
      {2.5, "2.5", "2.5"},
      {Number(L"1.25"), "1.25", "1.25"},
      {KXDate(2024, 2, 29), "DATE '2024-02-29'", "DATE '2024-02-29'"},
      {Token(&KXDate::SetAsDynamicCurrDateToken), "CURRENT_DATE", "CURRENT_DATE"},
      {KXTime(3, 4, 5), "TIME '03:04:05'", "TIME '03:04:05'"},
      {KXDateTime(2024, 1, 2, 3, 4, 5, 250000000), "TIMESTAMP '2024-01-02 03:04:05.250000000'",
       "TIMESTAMP '2024-01-02 03:04:05.250000000'"},
      {KXStringVector{L"a", L"b"}, "'a;b'", "'a;b'"},
  };
  const RqExprCondLess cond(new RqExprSessionVar({L"AUTH", L"V"}), Int(1));
  for (Case& testCase : cases) {
    SCOPED_TRACE(testCase.m_plain);
    m_gateway.SetSessionVariable(L"AUTH", L"V", std::move(testCase.m_value));
    EXPECT_EQ(ValueTextOf(cond), testCase.m_plain + std::string(" < 1"));
    EXPECT_EQ(ValueTextOf(cond, true), testCase.m_external + std::string(" < 1"));
  }
}

// The literal that a value is rendered through comes from a pool, with the marks that its last user gave it.
TEST_F(RqDumpoutTest, SessionVariableTextDoesNotDependOnEarlierLiterals) {
  const KXDateTime noon(2024, 1, 2, 12, 0, 0);
  for (std::size_t i = 0; i < global_integerPools.size(); ++i) {
    ObjPoolGuard<RqExprLiteral> owner;
    FastMakeIntegerLiteral(owner, 0)->SetPlaceHolder(true);
    owner->SetDescriptorIDOFValue(true);
    FastMakeDateTimeLiteral(owner, noon)->SetPrecision(6);
    FastMakeStringLiteral(owner, L"")->SetDescriptorIDOFValue(true);
  }
  const RqExprSessionVar variable({L"AUTH", L"V"});
  m_gateway.SetSessionVariable(L"AUTH", L"V", 42);
  EXPECT_EQ(ValueTextOf(variable), "42");
  m_gateway.SetSessionVariable(L"AUTH", L"V", L"x");
  EXPECT_EQ(ValueTextOf(variable), "'x'");
  m_gateway.SetSessionVariable(L"AUTH", L"V", noon);
  EXPECT_EQ(ValueTextOf(variable), "TIMESTAMP '2024-01-02 12:00:00'");
}

// ---------------------------------------------------------------------------------------------------------------------
// Errors on the way

template <class Action>
unsigned long CodeRaisedBy(Action action) {
  try {
    action();
  } catch (const ErrorMessage& error) {
    return error.GetCode();
  }
  return 0;
}

TEST_F(RqDumpoutTest, ErrorOfAGatewayGoesOn) {
  const RqExprCondNot cond(new RqExprCondIsNull(new RqExprSessionVar({L"AUTH", L"UNSET"}), false));
  EXPECT_EQ(CodeRaisedBy([&] { ValueTextOf(cond); }), kMsgSessionVariableHasNoValue);
  EXPECT_EQ(TextOf(cond), "not VALUEOF(AUTH.UNSET) is null");
}

TEST_F(RqDumpoutTest, CancellationEndsADump) {
  const Heap<RqExpr> cond(Or());
  const KXJobToken token;
  token.Cancel();
  const KXJobScope scope(token);
  EXPECT_EQ(CodeRaisedBy([&] { TextOf(*cond); }), kMsgJobCancelled);
}

TEST_F(RqDumpoutTest, DeepChainRaisesLowStack) {
  Heap<RqExprCond> chain(Less(1, 2));
  for (int i = 0; i < 1'000'000; ++i) chain = new RqExprCondNot(chain.Release());

  struct Result {
    const RqNode* m_pNode;
    unsigned long m_code;
  } result{chain.Get(), 0};
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  const auto run = [](void* pArgument) -> void* {
    auto* const pResult = static_cast<Result*>(pArgument);
    pResult->m_code = CodeRaisedBy([&] { RqDumpout::StringFrom(*pResult->m_pNode); });
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &result), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(result.m_code, kMsgStackLow);
}

// ---------------------------------------------------------------------------------------------------------------------
// Lines and marks

TEST_F(RqDumpoutTest, LinesAndIndentation) {
  class Lines : public RqDumpout {
   public:
    explicit Lines(bool bNewLineMode) : RqDumpout(false, bNewLineMode) {
      NewLine();
      m_nestingLevel = 2;
      NewLine();
      Indent();
    }
  };
  EXPECT_EQ(Lines(true).GetString(), L"\n\n            ");
  EXPECT_EQ(Lines(false).GetString(), L"   ");
}

TEST_F(RqDumpoutTest, TargetMarks) {
  struct Case {
    bool m_bMarks, m_bNames, m_bPlanCache, m_bStats;
    VoidID m_target;
    const char* m_text;
  };
  const Case cases[] = {
      {false, true, false, false, kWarehouse, ""},
      {true, false, false, false, VoidID::NullID, " [for database 0:4294967295,2]"},
      {true, false, false, true, VoidID::NullID, ""},
      {true, true, false, false, VoidID::NullID, " [for database 0:4294967295,2]"},
      {true, false, false, false, kWarehouse, " [for database 3023:40,2]"},
      {true, true, false, false, kWarehouse, " [for database 3023:40:Warehouse,2]"},
      {true, true, false, true, kWarehouse, " [for database 3023:40:Warehouse,2]"},
      {true, false, true, false, kWarehouse, " [for database ,2]"},
      {true, true, true, false, kWarehouse, " [for database 3023:40:Warehouse,2]"},
      {true, true, true, false, kScratch, " [for database :Scratch,2]"},
  };
  for (const Case& testCase : cases) {
    RqHandleNode node;
    node.MarkTargetType(ServerInfo::kDefault);
    node.MarkTargetID(testCase.m_target);
    RqDumpout dumpout(testCase.m_bMarks, false, testCase.m_bNames ? &m_gateway : nullptr, false, nullptr, false, false,
                      testCase.m_bPlanCache, false, false, nullptr, testCase.m_bStats);
    dumpout.ShowTargetMarks(node);
    EXPECT_EQ(dumpout.GetString().ToUTF8(), testCase.m_text);
  }
}

TEST_F(RqDumpoutDeathTest, TargetMarkOfAnObjectThatIsNotThere) {
  RqHandleNode node;
  node.MarkTargetID(kNobody);
  RqDumpout dumpout(true, false, &m_gateway);
  EXPECT_DEATH(dumpout.ShowTargetMarks(node), "SQORRqDumpout");
}

TEST_F(RqDumpoutTest, ChildBlocks) {
  const auto block = [](const char* opening, const RqNode& node) {
    const auto address = [](const RqNode* pNode) {
      return std::to_string(reinterpret_cast<std::uintptr_t>(pNode)) + ">>";
    };
    std::string text = opening + address(&node) + ": ";
    for (int i = 0; i < node.GetNumChildren(); ++i) {
      if (node.GetIthChild(i)) text += "<<" + address(node.GetIthChild(i));
    }
    return text + ":" + node.GetNodeID().ToString().ToUTF8() + "}}";
  };
  const auto textOf = [this](const RqNode& node) {
    return RqDumpout::StringFrom(node, false, false, &m_gateway, false, nullptr, true).ToUTF8();
  };
  RqHandleNode handle(new RqExprCondBetween(Int(1), Int(2), nullptr, false));
  const RqEntity entity(&m_gateway, kSales);

  EXPECT_EQ(textOf(handle), "1 between 2 and ") << "not without execution debugging";
  SUSystemConfig::GetSystemConfig().SetExecutionDebugEnabled(true);
  EXPECT_EQ(textOf(entity), "Sales" + block("{{<<", entity));
  EXPECT_EQ(textOf(handle),
            "1 between 2 and " + block("{{NO_DISPLAY<<", *handle.GetRqNode()) + block("{{NO_DISPLAY<<", handle));
  EXPECT_EQ(TextOf(handle), "1 between 2 and ") << "not unless asked for";
  SUSystemConfig::GetSystemConfig().SetExecutionDebugEnabled(false);
}

TEST_F(RqDumpoutTest, DebugPrint) {
  const Heap<RqExpr> cond(Less(1, 2));
  ::testing::internal::CaptureStderr();
  RqDumpout::DebugPrint("filter", *cond, nullptr);
  RqDumpout::DebugPrint("keys", std::vector<const RqExpr*>{cond.Get(), nullptr}, nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            " ** filter 1 < 2 ** \n"
            " ** keys  size 2\n"
            "elem 0:  1 < 2\n"
            "elem 1:  \n");
}

}  // namespace
