#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "Conditions/SubquerySamples.h"
#include "Expressions/ExprSamples.h"
#include "Expressions/ScalarSamples.h"
#include "Host/ErrorMessage.h"
#include "Host/KXThread.h"
#include "Host/SUSystemConfig.h"
#include "HostMemory/MemoryGateway.h"
#include "Node/SmallStack.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprDimension.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

namespace {

/// A tree and its text without a gateway, with one in external mode, and with one. A null text is as the first.
struct Sample {
  RqNode* m_pNode;
  const char* m_plain;
  const char* m_external = nullptr;
  const char* m_named = nullptr;
};

/// The repository and the session that the samples speak of.
class RqDumpoutTest : public ::testing::Test {
 protected:
  RqDumpoutTest() { m_gateway.SetRepositoryUniqueID32(1).SetExternal(m_scratch); }

  std::vector<Sample> Samples();

  static std::string TextOf(const RqNode& node) { return RqDumpout::StringFrom(node).ToUTF8(); }
  std::string NamedTextOf(const RqNode& node, bool bExternal = false) {
    return RqDumpout::StringFrom(node, false, false, &m_gateway, false, nullptr, false, bExternal).ToUTF8();
  }
  /// Session variables as values.
  std::string ValueTextOf(const RqNode& node, bool bExternal = false) {
    return RqDumpout::StringFrom(node, false, false, nullptr, false, &m_gateway, false, bExternal).ToUTF8();
  }

  template <class Object, class... Args>
  VoidID MakeObject(const Args&... args) {
    return m_gateway.MakeObject<Object>(args...).GetID();
  }

  MemoryGateway m_gateway;
  const VoidID m_sales = MakeObject<MemoryEntity>(10u, L"Sales");
  const VoidID m_amount = MakeObject<MemoryAttribute>(11u, L"Amount", m_sales);
  const VoidID m_time = MakeObject<MemoryDimension>(20u, L"Time");
  const VoidID m_quarter = MakeObject<MemoryLevel>(21u, L"Quarter", m_time);
  const VoidID m_fiscal = MakeObject<MemoryPresentationHierarchy>(22u, L"Fiscal");
  const VoidID m_warehouse = MakeObject<MemoryDatabase>(40u, L"Warehouse", ServerInfo::kDefault);
  const VoidID m_scratch = MakeObject<MemoryDatabase>(41u, L"Scratch", ServerInfo::kDefault);
  const VoidID m_facts = MakeObject<MemoryTable>(30u, L"FACTS", VoidID::NullID, m_warehouse);
  const VoidID m_amt = MakeObject<MemoryColumn>(31u, L"AMT", m_facts, KXTypeInfo());
};
using RqDumpoutDeathTest = RqDumpoutTest;

// ---------------------------------------------------------------------------------------------------------------------
// Samples

RqExpr* Param(int number) { return new RqExprParam(number); }
RqExprCond* Less(int left, int right) { return new RqExprCondLess(Int(left), Int(right)); }
RqExprCond* Or() { return new RqExprCondOr(Less(1, 2), Less(3, 4)); }
RqExprCond* And() { return new RqExprCondAnd(Less(1, 2), Less(3, 4)); }

/// An expression with any operands, null ones among them.
template <class Expr>
Expr* Make(std::initializer_list<RqExpr*> operands = {}) {
  auto* const pExpr = new Expr;
  for (RqExpr* const pOperand : operands) pExpr->AddChild(pOperand);
  return pExpr;
}
RqExpr* List(std::initializer_list<RqExpr*> columns) { return Make<RqExprColumnList>(columns); }

template <class Class>
Class* Negated(Class* pCond) {
  pCond->Negate();
  return pCond;
}

RqExprCondMultiColumnIn* RowsIn() {
  return Make<RqExprCondMultiColumnIn>(
      {Row({Param(1), Param(2)}), Row({Row({Int(1), Int(2)}), List({Int(3), Int(4)})})});
}

RqExprEvaluatePredicate* Evaluate() {
  auto* const pPredicate = Make<RqExprEvaluatePredicate>({Int(1), Int(2)});
  pPredicate->SetFunctionDef(L"f('%1', %2)");
  return pPredicate;
}

RqExpr* ShippableSubquery() {
  auto* const pSubquery = PhysicalSubquery(L"RqList q");
  pSubquery->SetShippableTargets({VoidID(kTIDADatabase, 1u), VoidID(kTIDADatabase, 2u)});
  return pSubquery;
}

KorvelNumber Number(const wchar_t* text) { return PropertyValueString(text).ToNumberValue().GetNumber(); }

std::vector<Sample> RqDumpoutTest::Samples() {
  ARpGateway& rp = m_gateway;
  const KXDateTime moment(2024, 1, 2, 3, 4, 5);
  return {
      // Literals
      {Str(L"it's"), "'it's'", "'it''s'"},
      {Int(-2147483647 - 1), "-2147483648"},
      {new RqExprIntegerLiteral(7, true), "%7"},
      {new RqExprFloatLiteral(0.1), "0.1"},
      {new RqExprNumberLiteral(Number(L"12.50")), "12.5"},
      {new RqExprDateLiteral(KXDate(2024, 2, 29)), "DATE '2024-02-29'"},
      {new RqExprDateLiteral(kxdatetime::kCurrentDate), "CURRENT_DATE"},
      {new RqExprTimeLiteral(KXTime(3, 4, 5)), "TIME '03:04:05'"},
      {new RqExprTimeLiteral(KXTime(3, 4, 5, 500000000)), "TIME '03:04:05.500000000'"},
      {new RqExprTimeLiteral(kxdatetime::kCurrentTime), "CURRENT_TIME"},
      {new RqExprDateTimeLiteral(moment, 0), "TIMESTAMP '2024-01-02 03:04:05'"},
      {new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5, 120000000), 3), "TIMESTAMP '2024-01-02 03:04:05.120'"},
      {new RqExprDateTimeLiteral(KXDateTime(2024, 1, 2, 3, 4, 5, 120000001), 3),
       "TIMESTAMP '2024-01-02 03:04:05.120000001'"},
      {new RqExprDateTimeLiteral(kxdatetime::kCurrentDateTime, 3), "CURRENT_TIMESTAMP"},
      {new RqExprIntervalLiteral(L"INTERVAL '1' DAY"), "INTERVAL '1' DAY"},
      {new RqExprNullLiteral, "NULL"},
      // References
      {new RqAttribute(&rp, m_amount), "1.3003:11", "\"Sales\".\"Amount\"", "Sales.Amount"},
      {new RqEntity(&rp, m_sales), "1.3002:10", "\"Sales\"", "Sales"},
      {new RqExprDimension(&rp, m_time), "[Dimension 1.3004:20]", "[Dimension \"Time\"]", "[Dimension Time]"},
      {new RqExprDimension(&rp, m_time, m_fiscal), "[Dimension 1.3004:20, 1.3008:22]",
       "[Dimension \"Time\", \"Fiscal\"]", "[Dimension Time, Fiscal]"},
      {new RqExprLevel(&rp, m_quarter), "[Level 1.3005:21]", "[Level \"Time\".\"Quarter\"]", "[Level Quarter]"},
      {new RqExprMemberReference(new RqExprLevel(&rp, m_quarter), new RqExprStringLiteral(L"Q1")),
       "[Level 1.3005:21].'Q1'", "[Level \"Time\".\"Quarter\"].'Q1'", "[Level Quarter].'Q1'"},
      {Make<RqExprMemberReference>({new RqExprLevel(&rp, m_quarter), nullptr, Param(1), Param(2)}),
       "[Level 1.3005:21].ALL (?1, ?2)", "[Level \"Time\".\"Quarter\"].ALL (?1, ?2)", "[Level Quarter].ALL (?1, ?2)"},
      {new RqTargetColumn(&rp, m_amt, 3), "T3.3025:31", "\"FACTS\".\"AMT\"", "FACTS.AMT"},
      {new RqTargetColumn(L"a\"b", 3), "T3.a\"b", "\"T3\".\"a\"\"b\""},
      {new RqTargetColumn(L"a", RqTargetColumn::kUnknownTableNum), "a", "\"T-1\".\"a\""},
      {new RqTargetCubeColumn(L"cube", 4), "T4.cube", "\"T4\".\"cube\""},
      {new RqTargetCacheColumn(L"hit", 5), "T5.hit", "\"T5\".\"hit\""},
      {new RqExprSessionVar({L"AUTH", L"REGION"}), "VALUEOF(AUTH.REGION)"},
      {Param(3), "?3"},
      {new RqHandleNode(Param(4)), "?4"},
      // Lists
      {List({Int(1), Str(L"b")}), "[ 1, 'b'] ", "1, 'b'"},
      {Row({Int(2)}), "[ 2] ", "2"},
      {Row({}), "[ ] ", ""},
      // Comparisons and connectives
      {new RqExprCondEquality(Int(1), Param(2), false), "1 = ?2"},
      {new RqExprCondEquality(Int(1), Param(2), true), "1 =NullsEqual ?2"},
      {new RqExprCondNotEqual(Int(2), Int(1)), "2 <> 1"},
      {Less(1, 2), "1 < 2"},
      {new RqExprCondLessEqual(Int(1), Int(2)), "1 <= 2"},
      {new RqExprCondGreater(Int(1), Int(2)), "1 > 2"},
      {new RqExprCondGreaterEqual(Int(1), Int(2)), "1 >= 2"},
      {And(), "1 < 2 and 3 < 4"},
      {Or(), "1 < 2 or 3 < 4"},
      {Make<RqExprCondAnd>({Or(), Less(5, 6)}), "(1 < 2 or 3 < 4) and 5 < 6"},
      {Make<RqExprCondOr>({And(), Or()}), "1 < 2 and 3 < 4 or 1 < 2 or 3 < 4"},
      {new RqExprCondNot(Or()), "not (1 < 2 or 3 < 4)"},
      {new RqExprCondNot(And()), "not 1 < 2 and 3 < 4"},
      // Predicates
      {new RqExprCondIsNull(Param(1), false), "?1 is null"},
      {new RqExprCondIsNull(Param(1), true), "?1 is not null"},
      {new RqExprCondBetween(Param(1), Int(2), Int(3), false), "?1 between 2 and 3"},
      {new RqExprCondBetween(Param(1), Int(2), Int(3), true), "?1 not between 2 and 3"},
      {new RqExprCondLike(Param(1), Str(L"a%"), false, nullptr), "?1 like 'a%'"},
      {new RqExprCondLike(Param(1), Str(L"a%"), true, Str(L"!")), "?1 not like 'a%' escape '!'"},
      {new RqExprCondIn(Param(1), List({Int(1), Int(2)}), false), "?1 in ([ 1, 2] )", "?1 in (1, 2)"},
      {new RqExprCondIn(Param(1), List({Int(1)}), true), "?1 not in ([ 1] )", "?1 not in (1)"},
      {RowsIn(), "(?1, ?2) in ((1, 2), (3, 4))"},
      {Negated(RowsIn()), "(?1, ?2) not in ((1, 2), (3, 4))"},
      {Make<RqExprCondMultiColumnIn>({List({Param(1)}), List({new RqExprCondIn(Param(2), List({Int(1)}), false)})}),
       "(?1) in ((?2 in ([ 1] )))", "(?1) in ((?2 in (1)))"},
      // Special conditions
      {Make<RqExprCondGroupByContent>({Param(1), Int(2)}), "[GroupByContent ?1, 2]"},
      {new RqExprCondOuterJoinFilter(Less(1, 2), SqlTableRef::kInnerJoin), "OuterJoinFilter[Inner join, 1 < 2]"},
      {new RqExprCondAtomicWrapper(Or()), "Atomic[1 < 2 or 3 < 4]"},
      {Evaluate(), "Evaluate_Predicate( 'f('%1', %2)', 1, 2) ", "Evaluate_Predicate( 'f(''%1'', %2)', 1, 2) "},
      {Negated(Evaluate()), "not Evaluate_Predicate( 'f('%1', %2)', 1, 2) ",
       "not Evaluate_Predicate( 'f(''%1'', %2)', 1, 2) "},
      {Make<RqExprEvaluatePredicate>({}), "Evaluate_Predicate( '') "},
      // Subqueries and the conditions over them
      {LogicalSubquery(L"SELECT 1"), "SELECT 1"},
      {PhysicalSubquery(L"RqList q"), "Subquery(RqList q)"},
      {ShippableSubquery(), "Subquery(RqList q, Number of pushable sources: 2)"},
      {PersistSubquery(L"q"), "select C1 from TT", "select \"C1\" from \"TT\""},
      {new RqExprCondIn(Param(1), LogicalSubquery(L"SELECT 1"), false), "?1 in (SELECT 1)"},
      {new RqExprCondAnyLessThan(Param(1), LogicalSubquery(L"SELECT 1")), "?1 <ANY (SELECT 1)"},
      {new RqExprCondAnyLessEqual(Param(1), LogicalSubquery(L"SELECT 1")), "?1 <=ANY (SELECT 1)"},
      {new RqExprCondAnyGreaterThan(Param(1), LogicalSubquery(L"SELECT 1")), "?1 >ANY (SELECT 1)"},
      {new RqExprCondAnyGreaterEqual(Param(1), LogicalSubquery(L"SELECT 1")), "?1 >=ANY (SELECT 1)"},
      {new RqExprCondAnyNotEqual(Param(1), LogicalSubquery(L"SELECT 1")), "?1 <>ANY (SELECT 1)"},
      {new RqExprCondAllLessThan(Param(1), LogicalSubquery(L"SELECT 1")), "?1 <ALL (SELECT 1)"},
      {new RqExprCondAllLessEqual(Param(1), LogicalSubquery(L"SELECT 1")), "?1 <=ALL (SELECT 1)"},
      {new RqExprCondAllEqual(Param(1), LogicalSubquery(L"SELECT 1")), "?1 =ALL (SELECT 1)"},
      {new RqExprCondAllGreaterThan(Param(1), LogicalSubquery(L"SELECT 1")), "?1 >ALL (SELECT 1)"},
      {new RqExprCondAllGreaterEqual(Param(1), LogicalSubquery(L"SELECT 1")), "?1 >=ALL (SELECT 1)"},
      {new RqExprCondExists(PhysicalSubquery(L"RqList q")), " EXISTS (Subquery(RqList q))"},
      // Functions whose text depends on the settings; the others are shared samples
      {MadeOf<RqExprEvaluate>(Exprs(Int(1)), L"f('%1')"), "Evaluate( 'f('%1')', 1) ", "Evaluate( 'f(''%1'')', 1) "},
      {MadeOf<RqExprPredict>(Exprs(), m_warehouse, L"m", false), "Predict(3023:40, modelname=m, [], [])",
       "Predict('Warehouse', modelname=m, [], [])", "Predict('Warehouse', modelname=m, [], [])"},
      {new RqExprTimeDimSeqNum(Param(1), RefALevel(&rp, m_quarter)), "TimeDimSeqNum(?1, 1.3005:21 )",
       "TimeDimSeqNum(?1, \"Time\".\"Quarter\" )", "TimeDimSeqNum(?1, Quarter )"},
      // Hierarchy predicates
      {new RqExprIsAncestor(Param(1), Param(2), Int(2), false), "IsAncestor(?1, ?2, 2)"},
      {Filled<RqExprIsAncestor>([](auto& e) { e.SetLTSVoidID(VoidID(kTIDALogicalTable, 7u)); }, Param(1), Param(2),
                                Int(2), false),
       "IsAncestor(?1, ?2, 2, 3001:7)"},
      {new RqExprIsAncestor(Param(1), Param(2), Int(2), true), " not IsAncestor(?1, ?2, 2)"},
      {new RqExprIsAncestor(Param(1), false), "IsLeaf(?1)"},
      {new RqExprIsAncestor(Param(1), true), " not IsLeaf(?1)"},
      {new RqExprIsRoot(Param(1)), "IsRoot(?1)"},
      {new RqExprIsSibling(Param(1), Param(2), Param(3), false), "IsSibling(?1, ?2, 1, ?3)"},
      {Negated(new RqExprIsSibling(Param(1), Param(2), Param(3), true)), " not IsSibling(?1, ?2, 1, ?3, include root)"},
      {Make<RqExprIsLeaf>({Param(1), Param(2)}), "IsLeaf(?1, ?2)"},
      {new RqExprIsLeaf(Param(1), true), " not IsLeaf(?1)"},
  };
}

// ---------------------------------------------------------------------------------------------------------------------
// Texts of trees

TEST_F(RqDumpoutTest, TextOfEachSample) {
  std::ifstream file(std::filesystem::path(RQ_SOURCE_DIR) / "docs/text-form.md");
  ASSERT_TRUE(file);
  const std::string description(std::istreambuf_iterator<char>(file), {});
  std::set<RqNodeType_e> sampled;
  std::vector<Sample> samples = Samples();
  const std::vector<ScalarSample> scalars = ScalarSamples();
  for (const ScalarSample& sample : scalars) samples.push_back({sample.m_make(), sample.m_text.c_str()});
  for (const auto& [pNode, plain, external, named] : samples) {
    SCOPED_TRACE(plain);
    const Heap<RqNode> node(pNode);
    sampled.insert(node->GetObjectType());
    EXPECT_EQ(TextOf(*node), plain);
    EXPECT_EQ(NamedTextOf(*node), named ? named : plain);
    EXPECT_EQ(NamedTextOf(*node, true), external ? external : plain);
    EXPECT_EQ(TextOf(*Heap<RqNode>(node->DeepCopy(true))), plain);
    for (const char* text : {plain, external, named}) {
      EXPECT_TRUE(!text || !*text || description.find("`" + std::string(text) + "`") != description.npos) << text;
    }
    node->MarkTargetID(m_warehouse);  // marks, lines and identities belong to blocks; an expression shows none
    EXPECT_EQ(RqDumpout::StringFrom(node.Get(), true, true, nullptr, true, nullptr, true, false, true).ToUTF8(), plain);
    auto* const pLiteral = dynamic_cast<RqExprLiteral*>(node.Get());
    if (!pLiteral) continue;
    pLiteral->SetDescriptorIDOFValue(true);
    EXPECT_EQ(TextOf(*node), std::string("[DESCRIPTOR_IDOF]") + plain);
    EXPECT_EQ(NamedTextOf(*node, true), external ? external : plain);
  }
  const std::pair<RqNodeType_e, bool> kinds[] = {
// clang-format off
#define HAS_OBJECTS_Stands_Expr(Class) !std::is_abstract_v<Class>
#define HAS_OBJECTS_Stands_Node(Class) false
#define HAS_OBJECTS_Stands_None(Class) false
#define HAS_OBJECTS_Declared_Expr(Class) false
#define HAS_OBJECTS_Declared_Node(Class) false
#define HAS_OBJECTS_Declared_None(Class) false
#define RQ_NODE_KIND(value, Class, state, interface, VisitedAs, made) \
  {k##Class, HAS_OBJECTS_##state##_##interface(Class)},
// clang-format on
#include "Query/Optimizer/Request/Node/SQORRqNodeTypes.def"
  };
  sampled.insert(kRqDerivedColumnReference);  // has its texts among those of blocks
  for (const auto& [type, bHasObjects] : kinds) {
    EXPECT_TRUE(!bHasObjects || sampled.contains(type)) << GetRqNodeTypeName(type);
  }
  EXPECT_TRUE(RqDumpout::StringFrom(nullptr, true, true).empty());
}

TEST_F(RqDumpoutTest, WordsOfEnumerations) {
  std::istringstream parts(
      "day_of_week name_of_day year month day hour minute second week_of_year day_of_year month_of_quarter "
      "week_of_quarter day_of_quarter week_of_month name_of_month quarter_of_year");
  std::string word;
  for (std::uint32_t i = 0; i < KXDateTime::kNumExtractOpcodes; ++i) {
    parts >> word;
    EXPECT_EQ(TextOf(RqExprCalendarExtract(Param(1), static_cast<KXDateTime::ExtractOpcode>(i))),
              "extract(" + word + " from ?1)");
  }
  std::istringstream units("FRAC_SECOND SECOND MINUTE HOUR DAY WEEK MONTH QUARTER YEAR");
  for (std::uint32_t i = 0; i < KXDateTime::kNumUnitsOfTime; ++i) {
    units >> word;
    EXPECT_EQ(TextOf(RqExprTimestampAdd(Int(1), Param(1), static_cast<KXDateTime::UnitOfTime>(i))),
              "TimestampAdd(SQL_TSI_" + word + ", 1, ?1)");
  }
  std::istringstream joins(
      "Inner join,Left outer join,Right outer join,Full outer join,Full outer stitch join,Natural join,Unknown join "
      "type");
  for (int i = 0; std::getline(joins, word, ','); ++i) {
    EXPECT_EQ(TextOf(RqExprCondOuterJoinFilter(Less(1, 2), static_cast<SqlTableRef::JoinType>(i))),
              "OuterJoinFilter[" + word + ", 1 < 2]");
  }
}

TEST_F(RqDumpoutTest, TypesOfCasts) {
  const std::tuple<KXDataType, int, int, const char*> cases[] = {
      {KXCharData, 0, 0, " CHARACTER "},
      {KXCharData, 5, 0, " CHARACTER ( 5 )"},
      {KXVarCharData, 0, 0, " VARCHAR ( 0 )"},
      {KXBinaryData, 8, 0, " BIT ( 8 )"},
      {KXVarBinaryData, 8, 0, " BIT VARYING ( 8 )"},
      {KXInt2Data, 0, 0, " SMALLINT "},
      {KXInt4Data, 0, 0, " INTEGER "},
      {KXFloatData, 24, 3, " FLOAT ( 24 )"},
      {KXNumericData, -1, -1, " NUMERIC "},
      {KXNumericData, 0, 0, " NUMERIC ( 0, 0 )"},
      {KXDecimalData, 9, -1, " DECIMAL ( 9 )"},
      {KXTimeData, 0, 0, " TIME ( 0 )"},
      {KXTimeStampData, 6, 0, " TIMESTAMP ( 6 )"},
      {KXDateTimeData, -1, 0, " TIMESTAMP "},
  };
  for (const auto& [type, precision, scale, text] : cases) {
    EXPECT_EQ(TextOf(RqExprCast(Param(1), type, precision, scale)), "cast(?1 as " + std::string(text) + ") ");
  }
}

TEST_F(RqDumpoutTest, ObjectThatTheGatewayLacksPrintsByNumber) {
  m_gateway.RemoveObject(m_sales).RemoveObject(m_facts).RemoveObject(m_quarter);
  EXPECT_EQ(NamedTextOf(RqEntity(&m_gateway, m_sales)), "1.3002:10");
  EXPECT_EQ(NamedTextOf(RqAttribute(&m_gateway, m_amount)), "Amount");
  EXPECT_EQ(NamedTextOf(RqTargetColumn(&m_gateway, m_amt, 2)), "T2.AMT");
  EXPECT_EQ(NamedTextOf(RqExprLevel(&m_gateway, m_quarter), true), "[Level 1.3005:21]");
}

TEST_F(RqDumpoutTest, AttributeWithAnExpressionShowsItsObjects) {
  const VoidID rate = MakeObject<MemoryRpVariable>(50u, L"Rate", VoidID::NullID, true);
  const VoidID factor =
      m_gateway.MakeObject<MemoryRpVariable>(51u, L"Factor", VoidID::NullID, false).SetValueText(L"1.5").GetID();
  const VoidID gone(kTIDAAttribute, 99u);
  const VoidID net =
      m_gateway.MakeObject<MemoryAttribute>(12u, L"Net", m_sales).SetExpr({m_amount, gone, rate, factor}).GetID();
  m_gateway.SetSessionVariable(L"KX_SESSION", L"Rate", L"low");
  EXPECT_EQ(NamedTextOf(RqAttribute(&m_gateway, net)), "Sales.Net [ Amount, Rate : 'low', Factor : 1.5 ] ");
}

TEST_F(RqDumpoutTest, DamagedTreeHasAText) {
  const std::pair<RqExpr*, const char*> cases[] = {
      {new RqExprCondEquality, " = "},
      {new RqExprCondBetween(Int(1), nullptr, nullptr, false), "1 between  and "},
      {new RqExprCondAnd, " and "},
      {Make<RqExprCondOr>({nullptr, Int(1)}), " or 1"},
      {new RqExprCondNot, "not "},
      {Make<RqExprCondMultiColumnIn>({Param(1), Param(2)}), "(?1) in (?2)"},
      {new RqExprCondIn, " in ()"},
      {new RqExprCondOuterJoinFilter, "OuterJoinFilter[Inner join, ]"},
      {new RqExprUnaryMinus, "-"},
      {Make<RqExprIfCase>({nullptr, Less(1, 2)}), "case  when 1 < 2 then  end "},
      {Make<RqExprLookup>({nullptr, Int(1)}), "lookup( SPARSE , 1) "},
      {new RqExprMemberReference, ".ALL"},
      {Make<RqExprIsAncestor>({nullptr, Int(1), nullptr}), "IsAncestor(, 1, )"}};
  for (const auto& [pExpr, text] : cases) EXPECT_EQ(TextOf(*Heap<RqExpr>(pExpr)), text);
}

TEST_F(RqDumpoutDeathTest, NullColumnInAList) {
  const Heap<RqExpr> list(Row({Int(1), nullptr}));
  EXPECT_DEATH(TextOf(*list), "columnList\\.GetIthColumn\\(i\\)");
}

// ---------------------------------------------------------------------------------------------------------------------
// Session variables as values

// The literal that a value is rendered through comes from a pool, with the marks that its last user gave it.
TEST_F(RqDumpoutTest, SessionVariableAsValue) {
  for (std::size_t i = 0; i < global_integerPools.size(); ++i) {
    ObjPoolGuard<RqExprLiteral> owner;
    FastMakeIntegerLiteral(owner, 0)->SetPlaceHolder(true);
    owner->SetDescriptorIDOFValue(true);
    FastMakeDateTimeLiteral(owner, KXDateTime())->SetPrecision(6);
    FastMakeStringLiteral(owner, L"")->SetDescriptorIDOFValue(true);
  }
  const KXStringVector strings{L"a", L"b"};
  std::pair<MemoryValue, std::string> cases[] = {
      {42, "42"},          {KXDateTime(2024, 1, 2, 3, 4, 5), "TIMESTAMP '2024-01-02 03:04:05'"},
      {2.5, "2.5"},        {KXDate(2024, 2, 29), "DATE '2024-02-29'"},
      {Number(L"1"), "1"}, {KXTime(3, 4, 5), "TIME '03:04:05'"},
      {strings, "'a;b'"},  {kxdatetime::kCurrentDate, "CURRENT_DATE"},
      {L"O'H", "'O'H'"}};
  const RqExprCondLess cond(new RqExprSessionVar({L"AUTH", L"V"}), Int(1));
  for (auto& [value, text] : cases) {
    m_gateway.SetSessionVariable(L"AUTH", L"V", std::move(value));
    EXPECT_EQ(ValueTextOf(cond), text + " < 1");
  }
  EXPECT_EQ(ValueTextOf(cond, true), "'O''H' < 1");
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

TEST_F(RqDumpoutTest, ErrorsGoOnToTheCaller) {
  const RqExprCondNot cond(new RqExprCondIsNull(new RqExprSessionVar({L"AUTH", L"UNSET"}), false));
  EXPECT_EQ(CodeRaisedBy([&] { ValueTextOf(cond); }), kMsgSessionVariableHasNoValue);
  const KXJobToken token;
  token.Cancel();
  {
    const KXJobScope scope(token);
    EXPECT_EQ(CodeRaisedBy([&] { TextOf(cond); }), kMsgJobCancelled);
  }
  Heap<RqExprCond> chain(Less(1, 2));
  for (int i = 0; i < 1'000'000; ++i) chain = new RqExprCondNot(chain.Release());
  RunOnSmallStack([&] { EXPECT_EQ(CodeRaisedBy([&] { TextOf(*chain); }), kMsgStackLow); });
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
  // With marks, the gateway, for the plan cache, for statistics; the target and its text.
  const std::tuple<bool, bool, bool, bool, VoidID, const char*> cases[] = {
      {false, true, false, false, m_warehouse, ""},
      {true, true, false, false, VoidID::NullID, " [for database 0:4294967295,2]"},
      {true, false, false, true, VoidID::NullID, ""},
      {true, false, false, false, m_warehouse, " [for database 3023:40,2]"},
      {true, true, false, true, m_warehouse, " [for database 3023:40:Warehouse,2]"},
      {true, false, true, false, m_warehouse, " [for database ,2]"},
      {true, true, true, false, m_warehouse, " [for database 3023:40:Warehouse,2]"},
      {true, true, true, false, m_scratch, " [for database :Scratch,2]"},
  };
  RqHandleNode node;
  for (const auto& [bMarks, bNames, bPlanCache, bStats, target, text] : cases) {
    node.MarkTargetType(ServerInfo::kDefault);
    node.MarkTargetID(target);
    RqDumpout dumpout(bMarks, false, bNames ? &m_gateway : nullptr, false, nullptr, false, false, bPlanCache, false,
                      false, nullptr, bStats);
    dumpout.ShowTargetMarks(node);
    EXPECT_EQ(dumpout.GetString().ToUTF8(), text);
  }
}

TEST_F(RqDumpoutDeathTest, TargetMarkOfAnObjectThatIsNotThere) {
  RqHandleNode node;
  node.MarkTargetID(VoidID(kTIDADatabase, 99u));
  EXPECT_DEATH(RqDumpout(true, false, &m_gateway).ShowTargetMarks(node), "SQORRqDumpout");
}

TEST_F(RqDumpoutTest, ChildBlocks) {
  const auto address = [](const RqNode* pNode) { return std::to_string(reinterpret_cast<std::uintptr_t>(pNode)); };
  const auto textOf = [this](const RqNode& node) {
    return RqDumpout::StringFrom(node, false, false, &m_gateway, false, nullptr, true).ToUTF8();
  };
  auto* const pBetween = new RqExprCondBetween(Int(1), Int(2), nullptr, false);
  const RqHandleNode handle(pBetween);
  const RqEntity entity(&m_gateway, m_sales);
  EXPECT_EQ(textOf(handle), "1 between 2 and ") << "not without execution debugging";
  SUSystemConfig::GetSystemConfig().SetExecutionDebugEnabled(true);
  EXPECT_EQ(textOf(entity), "Sales{{<<" + address(&entity) + ">>: :" + entity.GetNodeID().ToString().ToUTF8() + "}}");
  EXPECT_EQ(textOf(handle), "1 between 2 and {{NO_DISPLAY<<" + address(pBetween) + ">>: <<" +
                                address(pBetween->GetIthChild(0)) + ">><<" + address(pBetween->GetIthChild(1)) + ">>:" +
                                pBetween->GetNodeID().ToString().ToUTF8() + "}}{{NO_DISPLAY<<" + address(&handle) +
                                ">>: <<" + address(pBetween) + ">>:" + handle.GetNodeID().ToString().ToUTF8() + "}}");
  EXPECT_EQ(TextOf(handle), "1 between 2 and ") << "not unless asked for";
  SUSystemConfig::GetSystemConfig().SetExecutionDebugEnabled(false);
}

TEST_F(RqDumpoutTest, DebugPrint) {
  const Heap<RqExpr> cond(Less(1, 2));
  ::testing::internal::CaptureStderr();
  RqDumpout::DebugPrint("filter", *cond, nullptr);
  RqDumpout::DebugPrint("keys", std::vector<const RqExpr*>{cond.Get(), nullptr}, nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            " ** filter 1 < 2 ** \n ** keys  size 2\nelem 0:  1 < 2\nelem 1:  \n");
}

}  // namespace
