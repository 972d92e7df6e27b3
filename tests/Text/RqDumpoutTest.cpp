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

#include "Host/KXThread.h"
#include "Host/SUSystemConfig.h"
#include "Node/SmallStack.h"
#include "SQORRqNodeClasses.h"
#include "TestUtil.h"
#include "Text/TreeSamples.h"

namespace {

class RqDumpoutTest : public ::testing::Test, protected SampleRepository {
 protected:
  std::string NamedTextOf(const RqNode& node, bool bExternal = false) {
    return RqDumpout::StringFrom(node, false, false, &m_gateway, false, nullptr, false, bExternal).ToUTF8();
  }
  /// Session variables as values.
  std::string ValueTextOf(const RqNode& node, bool bExternal = false) {
    return RqDumpout::StringFrom(node, false, false, nullptr, false, &m_gateway, false, bExternal).ToUTF8();
  }
};
using RqDumpoutDeathTest = RqDumpoutTest;

RqExprCond* Less(int left, int right) { return new RqExprCondLess(Int(left), Int(right)); }

// ---------------------------------------------------------------------------------------------------------------------
// Texts of trees

TEST_F(RqDumpoutTest, TextOfEachSample) {
  std::ifstream file(std::filesystem::path(RQ_SOURCE_DIR) / "docs/text-form.md");
  ASSERT_TRUE(file);
  const std::string description(std::istreambuf_iterator<char>(file), {});
  std::set<RqNodeType_e> sampled;
  for (const auto& [pNode, plain, external, named, bTravels] : TreeSamples(*this)) {
    SCOPED_TRACE(plain);
    const Heap<RqNode> node(pNode);
    sampled.insert(node->GetObjectType());
    EXPECT_EQ(TextOf(*node), plain);
    EXPECT_EQ(NamedTextOf(*node), named ? named : plain.c_str());
    EXPECT_EQ(NamedTextOf(*node, true), external ? external : plain.c_str());
    EXPECT_EQ(TextOf(*Heap<RqNode>(node->DeepCopy(true))), plain);
    for (const char* text : {plain.c_str(), external, named}) {
      EXPECT_TRUE(!text || !*text || description.find("`" + std::string(text) + "`") != description.npos) << text;
    }
    node->MarkTargetID(m_warehouse);  // marks, lines and identities belong to blocks; an expression shows none
    EXPECT_EQ(RqDumpout::StringFrom(node.Get(), true, true, nullptr, true, nullptr, true, false, true).ToUTF8(), plain);
    auto* const pLiteral = dynamic_cast<RqExprLiteral*>(node.Get());
    if (!pLiteral) continue;
    pLiteral->SetDescriptorIDOFValue(true);
    EXPECT_EQ(TextOf(*node), "[DESCRIPTOR_IDOF]" + plain);
    EXPECT_EQ(NamedTextOf(*node, true), external ? external : plain.c_str());
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
      {KXCharData, 5, 0, " CHARACTER ( 5 )"}, {KXVarCharData, 0, 0, " VARCHAR ( 0 )"},
      {KXBinaryData, 8, 0, " BIT ( 8 )"},     {KXFloatData, 24, 3, " FLOAT ( 24 )"},
      {KXNumericData, -1, -1, " NUMERIC "},   {KXDecimalData, 9, -1, " DECIMAL ( 9 )"},
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
