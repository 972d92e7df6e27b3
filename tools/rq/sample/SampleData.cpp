#include "rq/sample/SampleData.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/ModelReader.h"

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

/// Random numbers that are the same everywhere (splitmix64).
class Random {
 public:
  explicit Random(std::uint64_t seed) : m_state(seed) {}

  std::uint64_t Next() {
    std::uint64_t z = (m_state += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }
  /// From 0 on, below the limit.
  int Below(int limit) { return static_cast<int>(Next() % static_cast<std::uint64_t>(limit)); }
  int Between(int least, int most) { return least + Below(most - least + 1); }
  bool OneIn(int count) { return Below(count) == 0; }
  template <class Container>
  const auto& Pick(const Container& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
  }

 private:
  std::uint64_t m_state;
};

/// What rows are made of, in the order of columns.
class Row {
 public:
  Row& Integer(std::int64_t value) { return Add(value); }
  Row& Real(double value) { return Add(value); }
  Row& Text(std::string value) { return Add(std::move(value)); }
  Row& Null() { return Add(std::monostate()); }
  /// The text, or null for an empty one.
  Row& TextOrNull(const std::string& value) { return value.empty() ? Null() : Text(value); }

  const SqliteRow& Get() const { return m_values; }

 private:
  template <class Value>
  Row& Add(Value value) {
    m_values.emplace_back(std::move(value));
    return *this;
  }

  SqliteRow m_values;
};

class Table {
 public:
  Table(SqliteDatabase& database, const std::string& name, int numColumns)
      : m_statement(database.Prepare("INSERT INTO " + name + " VALUES (?" + Repeated(", ?", numColumns - 1) + ")")) {}
  void Insert(const Row& row) { m_statement.Run(row.Get()); }

 private:
  static std::string Repeated(const std::string& text, int count) {
    std::string repeated;
    for (int i = 0; i < count; ++i) repeated += text;
    return repeated;
  }

  SqliteStatement m_statement;
};

// ---------------------------------------------------------------------------------------------------------------------
// Days

constexpr sys_days kFirstDay = std::chrono::year{2022} / 1 / 1;
constexpr sys_days kLastDay = std::chrono::year{2024} / 12 / 31;
constexpr int kNumDays = (kLastDay - kFirstDay).count() + 1;

template <class... Numbers>
std::string Formatted(const char* format, Numbers... numbers) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), format, numbers...);
  return text.data();
}

int YearOf(year_month_day date) { return static_cast<int>(date.year()); }
int MonthOf(year_month_day date) { return static_cast<int>(static_cast<unsigned>(date.month())); }
int DayOf(year_month_day date) { return static_cast<int>(static_cast<unsigned>(date.day())); }

std::string DateText(sys_days day) {
  const year_month_day date(day);
  return Formatted("%04d-%02d-%02d", YearOf(date), MonthOf(date), DayOf(date));
}

/// 20240229
int DateKey(sys_days day) {
  const year_month_day date(day);
  return YearOf(date) * 10000 + MonthOf(date) * 100 + DayOf(date);
}

sys_days DayNumber(int number) { return kFirstDay + days(number); }
bool IsLastOfMonth(sys_days day) { return DayOf(year_month_day(day + days(1))) == 1; }

std::string HolidayOf(year_month_day date) {
  static constexpr std::array<std::pair<std::pair<int, int>, const char*>, 5> kHolidays{{{{1, 1}, "New Year's Day"},
                                                                                         {{5, 1}, "Labour Day"},
                                                                                         {{10, 3}, "Unity Day"},
                                                                                         {{12, 25}, "Christmas Day"},
                                                                                         {{12, 26}, "Boxing Day"}}};
  for (const auto& [day, name] : kHolidays) {
    if (day == std::pair(MonthOf(date), DayOf(date))) return name;
  }
  return {};
}

// ---------------------------------------------------------------------------------------------------------------------
// Words

struct Place {
  const char* m_city;
  const char* m_state;  ///< Empty for none.
  const char* m_country;
  const char* m_region;
};

constexpr auto kPlaces = std::to_array<Place>({
    {"Hamburg", "Hamburg", "Germany", "North"},
    {"Bremen", "Bremen", "Germany", "North"},
    {"Munich", "Bavaria", "Germany", "South"},
    {"Nuremberg", "Bavaria", "Germany", "South"},
    {"Warsaw", "", "Poland", "East"},
    {"\u0141\u00F3d\u017A", "", "Poland", "East"},
    {"Lyon", "", "France", "West"},
    {"Lille", "", "France", "North"},
    {"Vienna", "", "Austria", "South"},
    {"Oslo", "", "Norway", "North"},
    {"Springfield", "Illinois", "USA", "West"},
    {"Springfield", "Oregon", "USA", "West"},
});

/// Where stores stand: not everywhere.
constexpr std::array kStorePlaces{2, 0, 3, 9, 4, 0, 5, 6, 8, 10, 11, 2, 4, 6, 9, 10, 3, 5};

constexpr std::array kFirstNames{"Anna",  "Bert", "Clara", "David", "Eva",   "Frank", "Gisela", "Hugo",
                                 "Irene", "Jan",  "Klara", "Leon",  "Maria", "Nils",  "Olga",   "Paul"};
constexpr std::array kLastNames{"Becker", "Nowak", "O'Hara", "Petit", "Schulz", "Wagner", "M\u00FCller", "Larsen"};

struct Category {
  const char* m_name;
  const char* m_department;
};

constexpr auto kCategories = std::to_array<Category>({
    {"Bread", "Food"},
    {"Coffee", "Food"},
    {"Cheese", "Food"},
    {"Seeds", "Garden"},
    {"Tools", "Garden"},
    {"Pots", "Garden"},
    {"Lamps", "Home"},
    {"Towels", "Home"},
    {"Games", "Toys"},
    {"Puzzles", "Toys"},
    {"Samples", "Internal"},
    {"Boxes", "Internal"},
});

constexpr std::array kBrands{"Nordwind", "Nova", "100% Cotton", "Acme", "Sundew", "1000 Things"};
constexpr std::array kColors{"red", "green", "blue", "black", "white"};
constexpr std::array kSegments{"Home", "Office", "Trade", "Staff"};
constexpr std::array kMedia{"Print", "Radio", "Web"};

constexpr int kNumSuppliers = 20;
constexpr int kNumProducts = 160;
constexpr int kNumCustomers = 400;
constexpr int kNumStores = kStorePlaces.size();
constexpr int kNumPromotions = 24;
constexpr int kNumWarehouses = 6;
constexpr int kNumSales = 8000;
constexpr int kFirstSale = 995001;
constexpr int kNumOldLines = 2000;

/// A multiple of 0.25.
double Quarters(int quarters) { return quarters * 0.25; }

// ---------------------------------------------------------------------------------------------------------------------
// Members

/// What the facts need of the members.
struct Members {
  std::vector<double> m_costs;  ///< Of products, by identifier from 1 on.
  std::vector<double> m_prices;
};

void FillCalendar(SqliteDatabase& database) {
  static constexpr std::array kDays{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  static constexpr std::array kMonths{"January", "February", "March",     "April",   "May",      "June",
                                      "July",    "August",   "September", "October", "November", "December"};
  Table table(database, "calendar", 14);
  for (int i = 0; i < kNumDays; ++i) {
    const sys_days day = DayNumber(i);
    const year_month_day date(day);
    const int year = YearOf(date);
    const int month = MonthOf(date);
    const int quarter = (month + 2) / 3;
    const int week = (day - sys_days(date.year() / 1 / 1)).count() / 7 + 1;
    const unsigned weekday = std::chrono::weekday(day).c_encoding();
    const std::string holiday = HolidayOf(date);
    Row row;
    row.Integer(DateKey(day)).Text(DateText(day)).Text(kDays[weekday]).Integer(weekday + 1);
    row.Integer(year * 100 + week).Text(Formatted("%04d-W%02d", year, week));
    row.Integer(year * 100 + month).Text(kMonths[static_cast<std::size_t>(month) - 1]).Integer(month);
    row.Integer(year * 10 + quarter).Text(Formatted("%04d-Q%d", year, quarter)).Integer(year);
    row.Integer(holiday.empty() ? 0 : 1).TextOrNull(holiday);
    table.Insert(row);
  }
}

void FillSuppliers(SqliteDatabase& database, Random& random) {
  Table table(database, "supplier", 5);
  for (int id = 1; id <= kNumSuppliers; ++id) {
    const Place& place = random.Pick(kPlaces);
    // Some are called like a brand of theirs.
    const std::string name = id <= 4 ? kBrands[static_cast<std::size_t>(id) - 1] : "Supplier " + std::to_string(id);
    Row row;
    row.Integer(id).Text(name).Text(place.m_country).Text(place.m_region);
    if (random.OneIn(6)) {
      row.Null();
    } else {
      row.Integer(random.Between(1, 5));
    }
    table.Insert(row);
  }
}

void FillProducts(SqliteDatabase& database, Random& random, Members& members) {
  Table table(database, "product", 13);
  members.m_costs = members.m_prices = {0};
  for (int id = 1; id <= kNumProducts; ++id) {
    const int category = random.Below(static_cast<int>(kCategories.size()));
    const Category& names = kCategories[static_cast<std::size_t>(category)];
    const double cost = Quarters(random.Between(1, 400));
    const double price = cost + Quarters(random.Between(0, 600));
    const sys_days introduced = sys_days(std::chrono::year{2019} / 6 / 1) + days(random.Below(5 * 365));
    members.m_costs.push_back(cost);
    members.m_prices.push_back(price);
    Row row;
    row.Integer(id).Text(Formatted("SKU-%05d", id)).Text(std::string(names.m_name) + ' ' + std::to_string(id));
    row.TextOrNull(random.OneIn(8) ? "" : random.Pick(kBrands)).TextOrNull(random.OneIn(4) ? "" : random.Pick(kColors));
    row.Integer(category + 1).Text(names.m_name).Text(names.m_department).Integer(random.Between(1, kNumSuppliers - 2));
    row.Real(cost).Real(price).Text(DateText(introduced));
    row.TextOrNull(random.OneIn(5) ? DateText(introduced + days(random.Between(200, 1500))) : "");
    table.Insert(row);
  }
}

void FillCustomers(SqliteDatabase& database, Random& random) {
  Table table(database, "customer", 12);
  for (int id = 1; id <= kNumCustomers; ++id) {
    const Place& place = random.Pick(kPlaces);
    const std::string first = random.Pick(kFirstNames);
    const std::string name = first + ' ' + random.Pick(kLastNames);
    Row row;
    row.Integer(id).Text(name);
    const int mail = random.Below(8);
    row.TextOrNull(mail == 0 ? "" : first + std::to_string(id) + (mail == 1 ? ".example.com" : "@example.com"));
    row.TextOrNull(random.OneIn(10) ? "" : random.OneIn(2) ? "f" : "m");
    const sys_days born = sys_days(std::chrono::year{1945} / 1 / 1) + days(random.Below(65 * 365));
    row.TextOrNull(random.OneIn(9) ? "" : id % 50 == 0 ? "1970-01-01" : DateText(born));
    row.Text(random.Pick(kSegments)).Text(place.m_city).TextOrNull(place.m_state).Text(place.m_country);
    row.Text(place.m_region);
    if (random.OneIn(5)) {
      row.Null();
    } else {
      row.Real(random.OneIn(20) ? 0.0 : Quarters(random.Between(100, 20000)));
    }
    const int second = random.Below(24 * 60 * 60);
    const std::string time = Formatted("%02d:%02d:%02d", second / 3600, second / 60 % 60, second % 60);
    const sys_days joined = sys_days(std::chrono::year{2018} / 1 / 1) + days(random.Below(7 * 365));
    row.TextOrNull(random.OneIn(6) ? "" : DateText(joined) + ' ' + time);
    table.Insert(row);
  }
}

void FillStores(SqliteDatabase& database, Random& random) {
  static constexpr std::array kTypes{"Market", "Express", "Outlet"};
  Table table(database, "store", 11);
  for (int id = 1; id <= kNumStores; ++id) {
    const Place& place = kPlaces[static_cast<std::size_t>(kStorePlaces[static_cast<std::size_t>(id) - 1])];
    const sys_days opened = sys_days(std::chrono::year{2012} / 3 / 1) + days(random.Below(12 * 365));
    Row row;
    row.Integer(id).Text(std::string(place.m_city) + ' ' + std::to_string(id)).Text(random.Pick(kTypes));
    row.Text(place.m_city).TextOrNull(place.m_state).Text(place.m_country).Text(place.m_region);
    if (random.OneIn(5)) {
      row.Null();
    } else {
      row.Integer(random.Between(8, 90) * 10);
    }
    row.Text(DateText(opened)).TextOrNull(random.OneIn(5) ? DateText(opened + days(3000)) : "");
    const int opensAt = random.Between(12, 27);  // in half hours
    row.Text(Formatted("%02d:%02d:00", opensAt / 2, opensAt % 2 * 30));
    table.Insert(row);
  }
}

void FillPromotions(SqliteDatabase& database, Random& random) {
  Table table(database, "promotion", 7);
  for (int id = 1; id <= kNumPromotions; ++id) {
    const sys_days first = DayNumber(random.Below(kNumDays - 40));
    Row row;
    row.Integer(id).Text("Promotion " + std::to_string(id)).Text("Campaign " + std::to_string((id + 2) / 3));
    row.TextOrNull(random.OneIn(5) ? "" : random.Pick(kMedia)).Real(Quarters(random.Between(4, 100)));
    row.Text(DateText(first)).TextOrNull(random.OneIn(6) ? "" : DateText(first + days(random.Between(7, 60))));
    table.Insert(row);
  }
}

void FillWarehouses(SqliteDatabase& database, Random& random) {
  Table table(database, "warehouse", 6);
  for (int id = 1; id <= kNumWarehouses; ++id) {
    const Place& place = kPlaces[static_cast<std::size_t>(id) * 2 - 1];
    Row row;
    row.Integer(id).Text("Warehouse " + std::string(place.m_city)).Text(place.m_city).Text(place.m_country);
    row.Text(place.m_region);
    if (id == 3) {
      row.Null();
    } else {
      row.Integer(random.Between(5, 40) * 1000);
    }
    table.Insert(row);
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Facts

/// Of the members, the last ones have no facts: nothing is sold in the last two stores, on the last days of the year,
/// to the last customers and so on.
void FillSales(SqliteDatabase& database, Random& random, const Members& members) {
  Table table(database, "sales", 13);
  Table archive(database, "old_sales", 7);
  for (int i = 0; i < kNumSales; ++i) {
    const int dayNumber = random.Below(kNumDays - 5);
    const sys_days day = DayNumber(dayNumber);
    const int customer = random.Between(1, kNumCustomers - 20);
    const int store = random.Between(1, kNumStores - 2);
    const int numLines = random.Between(1, 3);
    const bool bShipped = !random.OneIn(10);
    const sys_days shipped = std::min(day + days(random.Below(40)), kLastDay);
    std::set<int> products;
    for (int line = 1; line <= numLines; ++line) {
      int product = random.Between(1, kNumProducts - 10);
      while (!products.insert(product).second) product = random.Between(1, kNumProducts - 10);
      const auto index = static_cast<std::size_t>(product);
      const int quantity = random.Between(1, 12);
      const double price = std::max(members.m_prices[index] - Quarters(random.Below(8)), 0.25);
      const double amount = quantity * price;
      const bool bPromoted = random.OneIn(3);
      const int promotion = random.Between(1, kNumPromotions - 3);
      const bool bDiscount = random.Below(10) >= 3;
      const double discount = random.OneIn(4) ? 0.0 : Quarters(random.Between(1, 80));
      Row row;
      row.Integer(kFirstSale + i).Integer(line).Integer(DateKey(day));
      bShipped ? row.Integer(DateKey(shipped)) : row.Null();
      row.Integer(product).Integer(customer).Integer(store);
      bPromoted ? row.Integer(promotion) : row.Null();
      row.Integer(quantity).Real(price).Real(amount);
      bDiscount ? row.Real(discount) : row.Null();
      table.Insert(row.Real(quantity * members.m_costs[index]));
      // Every tenth line is in the archive too, and there may be worth less.
      if (!random.OneIn(10)) continue;
      Row old;
      old.Integer(kFirstSale + i).Integer(line).Text(DateText(day)).Integer(product).Integer(store).Integer(quantity);
      archive.Insert(old.Real(random.OneIn(3) ? amount - 0.25 : amount));
    }
  }
  for (int i = 0; i < kNumOldLines; ++i) {
    const int product = random.OneIn(4) ? 1 + 2 * random.Below(3) : random.Between(1, kNumProducts);
    const int quantity = random.Between(1, 9);
    // The products that are asked for by name are sold in the store beside them.
    const int store = product <= 5 && random.OneIn(2) ? product + 1 : random.Between(1, kNumStores);
    Row row;
    row.Integer(kFirstSale - 5000 + i).Integer(1).Text(DateText(kFirstDay - days(random.Between(1, 700))));
    row.Integer(product).Integer(store).Integer(quantity);
    archive.Insert(row.Real(quantity * members.m_prices[static_cast<std::size_t>(product)]));
  }
}

/// Stock is counted in the middle and at the end of months. What has been counted in the middle is counted at the end.
void FillInventory(SqliteDatabase& database, Random& random, const Members& members) {
  Table table(database, "inventory", 7);
  std::set<std::pair<int, int>> inMiddle;
  for (int i = 0; i < kNumDays; ++i) {
    const sys_days day = DayNumber(i);
    const bool bLast = IsLastOfMonth(day);
    if (!bLast && DayOf(year_month_day(day)) != 15) continue;
    for (int product = 1; product <= kNumProducts - 6; ++product) {
      for (int warehouse = 1; warehouse < kNumWarehouses; ++warehouse) {
        const std::pair place(product, warehouse);
        const bool bCounted = bLast ? inMiddle.contains(place) || random.OneIn(3) : random.OneIn(6);
        if (!bCounted) continue;
        if (!bLast) inMiddle.insert(place);
        const int onHand = random.OneIn(8) ? 0 : random.Between(1, 200);
        Row row;
        row.Integer(DateKey(day)).Integer(product).Integer(warehouse).Integer(onHand);
        random.OneIn(4) ? row.Null() : row.Integer(random.Below(100));
        random.OneIn(6) ? row.Null() : row.Integer(random.Between(10, 60));
        table.Insert(row.Real(onHand * members.m_costs[static_cast<std::size_t>(product)]));
      }
    }
    if (bLast) inMiddle.clear();
  }
}

void FillPriceList(SqliteDatabase& database, Random& random, const Members& members) {
  Table table(database, "price_list", 4);
  for (int product = 1; product <= kNumProducts - 4; ++product) {
    const int numPrices = random.Between(1, 4);
    int from = random.Below(60);
    for (int i = 1; i <= numPrices; ++i) {
      const int to = from + random.Between(60, 250);
      const double price = members.m_prices[static_cast<std::size_t>(product)] + Quarters(random.Between(-6, 6));
      Row row;
      row.Integer(product).Integer(DateKey(DayNumber(from)));
      i == numPrices ? row.Null() : row.Integer(DateKey(DayNumber(to)));
      table.Insert(row.Real(std::max(price, 0.25)));
      // There may be a gap between two prices.
      from = to + (random.OneIn(4) ? 20 : 1);
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Tables

/// Texts for moments, and reals for exact numbers, since SQLite has no others.
std::string TypeText(const KXTypeInfo& type) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(type.type_)) {
    case KXTypeClass::kInteger:
    case KXTypeClass::kBoolean:
      return "INTEGER";
    case KXTypeClass::kDecimal:
    case KXTypeClass::kFloat:
    case KXTypeClass::kMoney:
      return "REAL";
    default:
      return "TEXT";
  }
}

std::string NamesOf(const VoidIDVector& ids, MemoryGateway& gateway) {
  std::string names;
  for (const VoidID& id : ids) names += (names.empty() ? "" : ", ") + RefAColumn(&gateway, id)->GetName().ToUTF8();
  return names;
}

std::string TableText(const ATable& table, MemoryGateway& gateway) {
  std::string text = "CREATE TABLE " + table.GetName().ToUTF8() + " (\n";
  VoidIDVector ids;
  table.GetColumnIDs(ids);
  for (const VoidID& id : ids) {
    const RefAColumn column(&gateway, id);
    const KXTypeInfo type = column->GetTypeInfo();
    text += "  " + column->GetName().ToUTF8() + ' ' + TypeText(type) + (type.nullable_ ? "" : " NOT NULL") + ",\n";
  }
  table.GetKeyColumnIDs(ids);
  text += "  PRIMARY KEY (" + NamesOf(ids, gateway) + ")\n);\n";
  // By which facts are found.
  table.GetForeignKeyIDs(ids);
  for (const VoidID& id : ids) {
    VoidIDVector columns;
    RefAForeignKey(&gateway, id)->GetColumnIDs(columns);
    const std::string names = NamesOf(columns, gateway);
    text += "CREATE INDEX " + table.GetName().ToUTF8() + "_by_" + names + " ON " + table.GetName().ToUTF8() + " (" +
            names + ");\n";
  }
  return text;
}

}  // namespace

std::string SampleData::GetTables() {
  MemoryGateway gateway;
  ModelReader::ReadDefault(gateway);
  std::string text;
  for (const RefATable& table : gateway.GetObjects<ATable>()) {
    if (table->GetAliasedTableID().IsNullID()) text += TableText(*table, gateway);
  }
  return text;
}

std::string SampleData::GetSummaries() {
  return R"sql(
INSERT INTO calendar_month
SELECT DISTINCT month_id, month_name, month_of_year, quarter_id, quarter_name, year_id FROM calendar;

INSERT INTO product_category
SELECT DISTINCT category_id, category_name, department FROM product;

INSERT INTO sales_month_category
SELECT c.month_id, p.category_id, count(*), sum(s.quantity), sum(s.amount), sum(s.discount), sum(s.cost)
FROM sales AS s
  JOIN calendar AS c ON c.date_id = s.date_id
  JOIN product AS p ON p.product_id = s.product_id
GROUP BY c.month_id, p.category_id;

-- The last count of a month stands for it.
INSERT INTO inventory_month_warehouse
SELECT c.month_id, i.warehouse_id, sum(i.quantity_on_hand), sum(i.quantity_on_order), sum(i.stock_value)
FROM inventory AS i
  JOIN calendar AS c ON c.date_id = i.date_id
WHERE c.date_id = (SELECT max(l.date_id) FROM calendar AS l WHERE l.month_id = c.month_id)
GROUP BY c.month_id, i.warehouse_id;
)sql";
}

void SampleData::Fill(SqliteDatabase& database) {
  database.Execute("BEGIN;\n" + GetTables());
  Random random(20240630);
  Members members;
  FillCalendar(database);
  FillSuppliers(database, random);
  FillProducts(database, random, members);
  FillCustomers(database, random);
  FillStores(database, random);
  FillPromotions(database, random);
  FillWarehouses(database, random);
  FillSales(database, random, members);
  FillInventory(database, random, members);
  FillPriceList(database, random, members);
  database.Execute(GetSummaries() + "COMMIT;\nANALYZE;\n");
}
