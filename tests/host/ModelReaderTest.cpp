#include "HostMemory/ModelReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "CaseFile.h"
#include "Host/ErrorMessage.h"
#include "Host/GlobalRpVariables.h"
#include "Host/InactiveSchemas.h"
#include "HostMemory/FeaturePresets.h"
#include "HostMemory/RepositoryNames.h"

namespace {

using Table = SUFeaturesTable;

TEST(ModelReader, DatabasesHaveTheirPresetAndWhatTheyChangeOfIt) {
  MemoryGateway gateway;
  gateway.MakeObject<MemoryDatabase>(1u, L"old", ServerInfo::kDefault);
  ModelReader::ReadText(R"({"databases": [
      {"name": "shop", "preset": "SQLite",
       "features": {"kFeature_FullOuterJoin": false, "MAX_TABLES_IN_SELECT": 10, "DATE_FORMAT": "D",
                    "CONVERT_CHAR_BITMASK": ["INTEGER", "TIMESTAMP"], "CONVERT_DATE_BITMASK": 5}},
      {"name": "mart", "preset": "sqlite", "target": "duckdb"},
      {"name": "bare", "target": "DEFAULT"}]})",
                        L"m", gateway);
  const RefADatabase shop = gateway.FindObject<ADatabase>(L"shop");
  EXPECT_EQ(shop->GetTargetType(), ServerInfo::kSQLite);
  EXPECT_FALSE(shop->GetBooleanFeatureValue(Table::kFeature_FullOuterJoin));
  EXPECT_TRUE(shop->GetBooleanFeatureValue(Table::kFeature_RightOuterJoin));
  EXPECT_EQ(shop->GetIntegerFeatureValue(Table::kFeature_MaxTablesInSelect), 10u);
  EXPECT_EQ(shop->GetIntegerFeatureValue(Table::kFeature_ConvertCharBitmask), 1u << 3 | 1u << 17);
  EXPECT_EQ(shop->GetIntegerFeatureValue(Table::kFeature_ConvertDateBitmask), 5u);
  EXPECT_EQ(shop->GetStringFeatureValue(Table::kFeature_DateFormat), L"D");
  const RefADatabase mart = gateway.FindObject<ADatabase>(L"mart");
  EXPECT_EQ(mart->GetTargetType(), ServerInfo::kDuckDB);
  EXPECT_TRUE(mart->GetBooleanFeatureValue(Table::kFeature_FullOuterJoin));
  EXPECT_FALSE(gateway.FindObject<ADatabase>(L"bare")->GetBooleanFeatureValue(Table::kFeature_And));
  EXPECT_EQ(gateway.GetObjects<ADatabase>().size(), 4u);
  EXPECT_TRUE(gateway.FindObject<ADatabase>(L"SHOP").IsNull());
}

TEST(ModelReader, ErrorsTellTheirPlaceAndAddNothing) {
  std::vector<TextCase> cases = CasesOf("host/models/errors.txt");
  const TextCase others[] = {
      {R"({"databases": {}})", "m: databases: an array must stand here, not object"},
      {"[]", "m: an object must stand here, not array"},
      {"", "m: line 1, column 1: "},
      {"{\n  \"ä\": x}", "m: line 2, column 8: "},
      {"{\"databases\": [{}, {\"a\": [1], \"b\": [[2], 1e999]}]}", "m: databases[1].b[1]: number overflow"},
      {std::string(100000, '['), "m: line 1, column 100001: "},
      {"{\"a\xff\": 1}", "m: line 1, column "},
  };
  cases.insert(cases.end(), std::begin(others), std::end(others));
  MemoryGateway gateway;
  gateway.MakeObject<MemoryDatabase>(7u, L"old", ServerInfo::kDefault);
  for (const auto& [text, message] : cases) {
    SCOPED_TRACE(text.substr(0, 200));
    try {
      ModelReader::ReadText(text, L"m", gateway);
      ADD_FAILURE() << "no error";
    } catch (const ErrorMessage& error) {
      EXPECT_EQ(error.GetCode(), kMsgModel);
      EXPECT_NE(error.GetText().ToUTF8().find(message), std::string::npos) << error.GetText();
    }
    EXPECT_EQ(gateway.GetObjects<ADatabase>().size(), 1u);
  }
}

std::string ContentOf(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(RQ_SOURCE_DIR "/" + file).rdbuf();
  return text.str();
}

// Each model of tests/host/models has all faults of a family; beside it stands what its author is told in one go.
TEST(ModelReader, AllFaultsAreToldInOneGo) {
  for (const std::string family : {"physical", "business", "session"}) {
    MemoryGateway gateway;
    try {
      ModelReader::ReadText(ContentOf("tests/host/models/" + family + ".json"), L"m", gateway);
      ADD_FAILURE() << "no error";
    } catch (const ErrorMessage& error) {
      EXPECT_EQ(error.GetText().ToUTF8() + "\n", ContentOf("tests/host/models/" + family + ".faults"));
    }
    int integer = 0;
    EXPECT_TRUE(gateway.GetObjects<ARpObject>().empty() && !gateway.GetIntegerSessionProperty(L"GOOD", integer));
  }
}

class DefaultModel : public testing::Test {
 protected:
  DefaultModel() { ModelReader::ReadDefault(m_gateway); }

  /// The qualified names of the objects that an object answers with, which must all be there.
  template <class Interface>
  std::string Ask(const Interface& object, void (Interface::*pGet)(VoidIDVector&) const) {
    VoidIDVector ids;
    (object.*pGet)(ids);
    std::string names;
    for (const VoidID& id : ids) {
      const RefARpObject found = m_gateway.GetObject(id);
      EXPECT_FALSE(found.IsNull()) << object.GetName();
      if (found) names += (names.empty() ? "" : " ") + found->GetQualifiedName(&m_gateway).ToUTF8();
    }
    return names;
  }
  template <class Interface>
  std::string Ask(const wchar_t* pName, void (Interface::*pGet)(VoidIDVector&) const) {
    return Ask<Interface>(*m_gateway.FindObject<Interface>(pName), pGet);
  }
  template <class Interface, class... Getters>
  void ExpectAllThere(Getters... getters) {
    const auto objects = m_gateway.GetObjects<Interface>();
    EXPECT_FALSE(objects.empty());
    for (const Ref<Interface>& object : objects) (Ask<Interface>(*object, getters), ...);
  }

  MemoryGateway m_gateway;
};

TEST_F(DefaultModel, ObjectsNameEachOther) {
  ExpectAllThere<ADatabase>(&ADatabase::GetSchemaIDs, &ADatabase::GetTableIDs);
  ExpectAllThere<ATable>(&ATable::GetColumnIDs, &ATable::GetKeyColumnIDs, &ATable::GetForeignKeyIDs);
  ExpectAllThere<AForeignKey>(&AForeignKey::GetColumnIDs, &AForeignKey::GetReferencedColumnIDs);
  ExpectAllThere<ALogicalTable>(&ALogicalTable::GetAttributeIDs, &ALogicalTable::GetSourceIDs);
  ExpectAllThere<AAttribute>(&AAttribute::GetSourceColumnIDs);
  ExpectAllThere<ALevel>(&ALevel::GetChildLevelIDs, &ALevel::GetKeyAttributeIDs, &ALevel::GetAttributeIDs);
  const std::pair<std::string, const char*> answers[] = {
      {Ask(L"archive", &ASchema::GetTableIDs), "shop.archive.old_sales"},
      {Ask(L"sales", &ATable::GetComplexJoinIDs), "sales_price"},
      {Ask(L"ship_calendar", &ATable::GetKeyColumnIDs), "shop.retail.ship_calendar.date_id"},
      {Ask(L"to_ship_calendar", &AForeignKey::GetReferencedColumnIDs), "shop.retail.ship_calendar.date_id"},
      {Ask(L"Stock", &ALogicalTable::GetJoinedTableIDs), "Times Products Warehouses"},
      {Ask(L"sales_month_category", &ALogicalTableSource::GetTableIDs), "shop.summary.sales_month_category"},
      {Ask(L"sales_month_category", &ALogicalTableSource::GetContentLevelIDs), "Product.Category Time.Month"},
      {Ask(L"Amount", &AAttribute::GetSourceColumnIDs),
       "shop.retail.sales.amount shop.summary.sales_month_category.amount"},
      {Ask(L"Time", &ADimension::GetLevelIDs), "Time.AllTimes Time.Year Time.Quarter Time.Month Time.Week Time.Day"},
      {Ask(L"Day", &ALevel::GetParentLevelIDs), "Time.Month Time.Week"},
      {Ask(L"Weeks", &AHierarchy::GetLevelIDs), "Time.AllTimes Time.Week Time.Day"},
      {Ask(L"Assortment", &APresentationHierarchy::GetPresentationLevelIDs),
       "Assortment.Department Assortment.Category Assortment.Product"},
  };
  for (const auto& [answer, expected] : answers) EXPECT_EQ(answer, expected);

  std::vector<RefARpObject> objects;
  m_gateway.FindObject<AAttribute>(L"MarginPercent")->GetExpr().GetObjectsInExpr(&m_gateway, objects, true);
  std::string names;
  for (const RefARpObject& object : objects) names += object->GetName().ToUTF8() + " ";
  EXPECT_EQ(names, "Margin Amount Cost Amount ");
  std::vector<RpAggregationRule> rules;
  m_gateway.FindObject<AAttribute>(L"OnHand")->GetAggregationRules(rules);
  ASSERT_EQ(rules.size(), 2u);
  EXPECT_TRUE(m_gateway.GetObject(rules[0].m_dimensionID)->GetName() == L"Time" && rules[0].m_function == L"LAST");
  EXPECT_TRUE(rules[1].m_dimensionID.IsNullID() && rules[1].m_function == L"SUM");
  EXPECT_EQ(m_gateway.FindObject<AAttribute>(L"Discount")->GetTypeInfo().Describe(), L"DECIMAL(12,2)");
}

TEST_F(DefaultModel, TheSessionHasItsVariablesAndThePublishedOnesAreThoseOfTheProcess) {
  for (const wchar_t* pBlock : {L"KX_SESSION", L"*"}) {
    const std::unique_ptr<PropertyValue> pGroups(m_gateway.GetSessionVariable({pBlock, L"GROUPS"}));
    EXPECT_TRUE(pGroups && pGroups->StringFrom() == L"Managers;Sales");
  }
  EXPECT_EQ(m_gateway.GetSessionVariable({L"KX_SESSION", L"DELEGATE"}), nullptr);
  VoidIDVector variableIDs;
  m_gateway.GetObjectIDs(kTIDARpVariable, variableIDs);
  EXPECT_EQ(variableIDs.size(), 10u);
  m_gateway.Publish();
  EXPECT_EQ(GlobalRpVariables::GetNumberOfSecurityVariables(), 3u);
  EXPECT_EQ(GlobalRpVariables::GetSecurityVariableName(2), L"REGION");
  EXPECT_EQ(InactiveSchemas::globalInactiveSchemas.GetInactiveSchemas(),
            VoidIDSet{m_gateway.FindObject<ASchema>(L"archive").GetID()});
  MemoryGateway().Publish();
  EXPECT_EQ(GlobalRpVariables::GetNumberOfSecurityVariables(), 0u);
}

TEST_F(DefaultModel, NamesAreFoundInAnyLetterCaseAndAsFarAsTheyAreQualified) {
  const RepositoryNames names(m_gateway);
  const auto told = [&names](const NameLookup& lookup) {
    return lookup ? names.GetQualifiedName(lookup.m_id) : lookup.m_cause;
  };
  const VoidIDVector tables{names.FindTable({L"sales"}).m_id, names.FindTable({L"Products"}).m_id,
                            names.FindTable({L"customer"}).m_id};
  const std::pair<KXString, const wchar_t*> cases[] = {
      {told(names.FindTable({L"SALES"})), L"shop.retail.sales"},
      {told(names.FindTable({L"Retail", L"sales"})), L"shop.retail.sales"},
      {told(names.FindTable({L"turnover"})), L"Turnover"},
      {told(names.FindTable({L"retail", L"turnover"})),
       L"there is no table retail.turnover; did you mean retail.customer or retail.supplier?"},
      {told(names.FindTable({L"slaes"})), L"there is no table slaes; did you mean sales?"},
      {told(names.FindTable({L"Turnovre"})), L"there is no logical table Turnovre; did you mean Turnover?"},
      {told(names.FindTable({L"retial", L"sales"})), L"there is no table retial.sales; did you mean retail.sales?"},
      {told(names.FindColumn(tables[0], L"Amount")), L"shop.retail.sales.amount"},
      {told(names.FindColumn(tables, L"brand")), L"Products.Brand"},
      {told(names.FindColumn(tables, L"customer_id")),
       L"the column customer_id is ambiguous: shop.retail.sales.customer_id or shop.retail.customer.customer_id"},
      {told(names.FindColumn(tables, L"amunt")), L"there is no column amunt in these tables; did you mean amount?"},
      {told(names.Find(kTIDALevel, {L"store", L"city"})), L"Store.City"},
      {told(names.Find(kTIDALevel, {L"city"})), L"the level city is ambiguous: Customer.City or Store.City"},
      {told(names.FindVariable({L"fiscal", L"fiscal_start"})), L"FISCAL.FISCAL_START"},
  };
  for (const auto& [answer, expected] : cases) EXPECT_EQ(answer, expected);
}

// A feature that a preset forgets would read as "no" without anybody having said so.
TEST(FeaturePresets, EachTellsEveryFeature) {
  ASSERT_EQ(FeaturePresets::GetNames(), (KXStringVector{L"ansi", L"duckdb", L"postgresql", L"sqlite"}));
  for (const KXString& name : FeaturePresets::GetNames()) {
    SCOPED_TRACE(name.ToUTF8());
    const std::string text = ContentOf("host/memory/presets/" + name.ToUTF8() + ".json");
    for (const KXString& feature : Table::GetFeatureNames()) {
      EXPECT_NE(text.find("        \"" + feature.ToUTF8() + "\": "), std::string::npos) << feature;
    }
  }
}

}  // namespace
