#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>

#include "Query/Optimizer/Request/Expressions/SQORRqExprDateTime.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "rq/sql/SqlWriter.h"

// Dates and times. To SQLite they are texts, "YYYY-MM-DD", "HH:MM:SS" and the two with a blank between, which sort as
// what they say.

namespace {

using F = SUFeaturesTable;
using enum SqlPrecedence;

/// The digits of a second that say something.
short DigitsOf(std::uint32_t nanosecond) {
  short digits = nanosecond == 0 ? 0 : 9;
  for (; digits > 0 && nanosecond % 10 == 0; nanosecond /= 10) --digits;
  return digits;
}

// ---------------------------------------------------------------------------------------------------------------------
// Fields

/// What a field is in each dialect, as in the table of functions.
struct Field {
  KXDateTime::ExtractOpcode m_operation;
  SqlTarget::FeatureId m_feature;
  const char* m_sqlite;
  const char* m_postgresql;
  const char* m_duckdb;
  SqlPrecedence m_precedence = kPrimary;
};

/// Days of the week count from 1 for Sunday; names are those of three letters. Weeks are counted otherwise in each
/// database, and in none as here.
constexpr auto kFields = std::to_array<Field>({
    {KXDateTime::kExtractYear, F::kFeature_CalendarExtract_Year, "CAST(strftime('%Y', $1) AS INTEGER)",
     "EXTRACT(YEAR FROM $1)", "EXTRACT(YEAR FROM $1)"},
    {KXDateTime::kExtractQuarterOfYear, F::kFeature_CalendarExtract_Quarter_Of_Year,
     "=(CAST(strftime('%m', $1) AS INTEGER) + 2) / 3", "EXTRACT(QUARTER FROM $1)", "EXTRACT(QUARTER FROM $1)",
     kMultiply},
    {KXDateTime::kExtractMonth, F::kFeature_CalendarExtract_Month, "CAST(strftime('%m', $1) AS INTEGER)",
     "EXTRACT(MONTH FROM $1)", "EXTRACT(MONTH FROM $1)"},
    {KXDateTime::kExtractDay, F::kFeature_CalendarExtract_Day, "CAST(strftime('%d', $1) AS INTEGER)",
     "EXTRACT(DAY FROM $1)", "EXTRACT(DAY FROM $1)"},
    {KXDateTime::kExtractHour, F::kFeature_CalendarExtract_Hour, "CAST(strftime('%H', $1) AS INTEGER)",
     "EXTRACT(HOUR FROM $1)", "EXTRACT(HOUR FROM $1)"},
    {KXDateTime::kExtractMinute, F::kFeature_CalendarExtract_Minute, "CAST(strftime('%M', $1) AS INTEGER)",
     "EXTRACT(MINUTE FROM $1)", "EXTRACT(MINUTE FROM $1)"},
    {KXDateTime::kExtractSecond, F::kFeature_CalendarExtract_Second, "CAST(strftime('%S', $1) AS INTEGER)",
     "floor(EXTRACT(SECOND FROM $1))", "EXTRACT(SECOND FROM $1)"},
    {KXDateTime::kExtractDayOfYear, F::kFeature_CalendarExtract_Day_Of_Year, "CAST(strftime('%j', $1) AS INTEGER)",
     "EXTRACT(DOY FROM $1)", "EXTRACT(DOY FROM $1)"},
    {KXDateTime::kExtractDayOfWeek, F::kFeature_CalendarExtract_Day_Of_Week, "CAST(strftime('%w', $1) AS INTEGER) + 1",
     "EXTRACT(DOW FROM $1) + 1", "EXTRACT(DOW FROM $1) + 1", kAdd},
    {KXDateTime::kExtractMonthOfQuarter, F::kFeature_CalendarExtract_Month_Of_Quarter,
     "=(CAST(strftime('%m', $1) AS INTEGER) - 1) % 3 + 1", "=(CAST(EXTRACT(MONTH FROM $1) AS integer) - 1) % 3 + 1",
     "=(EXTRACT(MONTH FROM $1) - 1) % 3 + 1", kAdd},
    {KXDateTime::kExtractDayOfQuarter, F::kFeature_CalendarExtract_Day_Of_Quarter,
     "=CAST(julianday(date($1)) - julianday($1, 'start of month', ((1 - CAST(strftime('%m', $1) AS INTEGER)) % 3) || "
     "' months') AS INTEGER) + 1",
     "=CAST($1 AS date) - CAST(date_trunc('quarter', $1) AS date) + 1",
     "=CAST($1 AS date) - CAST(date_trunc('quarter', $1) AS date) + 1", kAdd},
    {KXDateTime::kExtractNameOfMonth, F::kFeature_CalendarExtract_Short_Name_Of_Month,
     "=substr('JanFebMarAprMayJunJulAugSepOctNovDec', CAST(strftime('%m', $1) AS INTEGER) * 3 - 2, 3)",
     "to_char($1, 'Mon')", "strftime($1, '%b')"},
    {KXDateTime::kExtractNameOfDay, F::kFeature_CalendarExtract_Short_Name_Of_Day,
     "=substr('SunMonTueWedThuFriSat', CAST(strftime('%w', $1) AS INTEGER) * 3 + 1, 3)", "to_char($1, 'Dy')",
     "strftime($1, '%a')"},
    {KXDateTime::kExtractWeekOfYear, F::kFeature_CalendarExtract_Week_Of_Year, nullptr, nullptr, nullptr},
    {KXDateTime::kExtractWeekOfQuarter, F::kFeature_CalendarExtract_Week_Of_Quarter, nullptr, nullptr, nullptr},
    {KXDateTime::kExtractWeekOfMonth, F::kFeature_CalendarExtract_Week_Of_Month, nullptr, nullptr, nullptr},
});
static_assert(kFields.size() == KXDateTime::kNumExtractOpcodes);

template <class Row>
const char* SpellingFor(const Row& row, SqlTarget::Dialect dialect) {
  if (dialect == SqlTarget::kSqlite) return row.m_sqlite;
  return dialect == SqlTarget::kDuckdb ? row.m_duckdb : row.m_postgresql;
}

// ---------------------------------------------------------------------------------------------------------------------
// Differences

/// Each difference counts the borders of the unit between $1 and $2, as DATEDIFF functions do: from one year's last day
/// to the next one's first it is a year.
struct Difference {
  KXDateTime::UnitOfTime m_unit;
  const char* m_sqlite;
  const char* m_postgresql;
  const char* m_duckdb;
  SqlPrecedence m_precedence = kAdd;
};

constexpr auto kDifferences = std::to_array<Difference>({
    {KXDateTime::kMillisecond, nullptr, nullptr, nullptr},
    {KXDateTime::kSecond, "strftime('%s', $2) - strftime('%s', $1)",
     "CAST(floor(EXTRACT(EPOCH FROM $2)) - floor(EXTRACT(EPOCH FROM $1)) AS integer)", "'second'"},
    {KXDateTime::kMinute,
     "(strftime('%s', $2, '-' || strftime('%S', $2) || ' seconds') - strftime('%s', $1, '-' || "
     "strftime('%S', $1) || ' seconds')) / 60",
     "CAST(floor(EXTRACT(EPOCH FROM $2) / 60) - floor(EXTRACT(EPOCH FROM $1) / 60) AS integer)", "'minute'", kMultiply},
    {KXDateTime::kHour,
     "CAST(julianday(date($2)) - julianday(date($1)) AS INTEGER) * 24 + strftime('%H', $2) - "
     "strftime('%H', $1)",
     "CAST(floor(EXTRACT(EPOCH FROM $2) / 3600) - floor(EXTRACT(EPOCH FROM $1) / 3600) AS integer)", "'hour'"},
    {KXDateTime::kDay, "CAST(julianday(date($2)) - julianday(date($1)) AS INTEGER)",
     "CAST($2 AS date) - CAST($1 AS date)", "'day'"},
    // Weeks begin on Mondays, as the numbers of days do that sevens divide.
    {KXDateTime::kWeek,
     "CAST(julianday(date($2)) + 0.5 AS INTEGER) / 7 - CAST(julianday(date($1)) + 0.5 AS INTEGER) "
     "/ 7",
     "(CAST(date_trunc('week', $2) AS date) - CAST(date_trunc('week', $1) AS date)) / 7",
     "=date_diff('day', date_trunc('week', $1), date_trunc('week', $2)) // 7", kMultiply},
    {KXDateTime::kMonth, "(strftime('%Y', $2) - strftime('%Y', $1)) * 12 + strftime('%m', $2) - strftime('%m', $1)",
     "CAST((EXTRACT(YEAR FROM $2) - EXTRACT(YEAR FROM $1)) * 12 + EXTRACT(MONTH FROM $2) - EXTRACT(MONTH FROM $1) AS "
     "integer)",
     "'month'"},
    {KXDateTime::kQuarter,
     "(strftime('%Y', $2) - strftime('%Y', $1)) * 4 + (strftime('%m', $2) + 2) / 3 - "
     "(strftime('%m', $1) + 2) / 3",
     "CAST((EXTRACT(YEAR FROM $2) - EXTRACT(YEAR FROM $1)) * 4 + EXTRACT(QUARTER FROM $2) - EXTRACT(QUARTER FROM $1) "
     "AS integer)",
     "'quarter'"},
    {KXDateTime::kYear, "strftime('%Y', $2) - strftime('%Y', $1)",
     "CAST(EXTRACT(YEAR FROM $2) - EXTRACT(YEAR FROM $1) AS integer)", "'year'"},
});
static_assert(kDifferences.size() == KXDateTime::kNumUnitsOfTime);

// ---------------------------------------------------------------------------------------------------------------------
// Steps

/// A unit as so many months, or as so many of what a modifier of SQLite counts.
struct Unit {
  KXDateTime::UnitOfTime m_unit;
  int m_months;
  int m_count;
  const char* m_word;
};

constexpr auto kUnits = std::to_array<Unit>({
    {KXDateTime::kMillisecond, 0, 1, "millisecond"},
    {KXDateTime::kSecond, 0, 1, "second"},
    {KXDateTime::kMinute, 0, 1, "minute"},
    {KXDateTime::kHour, 0, 1, "hour"},
    {KXDateTime::kDay, 0, 1, "day"},
    {KXDateTime::kWeek, 0, 7, "day"},
    {KXDateTime::kMonth, 1, 1, "month"},
    {KXDateTime::kQuarter, 3, 3, "month"},
    {KXDateTime::kYear, 12, 1, "year"},
});
static_assert(kUnits.size() == KXDateTime::kNumUnitsOfTime);

/// An interval as months and modifiers, such as "14 day".
struct Interval {
  std::int64_t m_months = 0;
  std::vector<std::string> m_modifiers;
  bool m_bDays = true;  ///< Whether it is one of whole days.
};

/// sum += number * factor. False if that is too much, or so much that one more would be.
bool AddProduct(std::int64_t& sum, std::int64_t number, std::int64_t factor) {
  std::int64_t product = 0;
  return !__builtin_mul_overflow(number, factor, &product) && !__builtin_add_overflow(sum, product, &sum) &&
         sum < std::numeric_limits<std::int64_t>::max();
}

/// Reads "INTERVAL '14' DAY" and "INTERVAL '1 year 2 days'"; none for other forms and for numbers that are too large.
std::optional<Interval> ReadInterval(std::string text, bool bNegative) {
  std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  constexpr std::string_view kWord = "interval";
  if (!text.starts_with(kWord)) return {};
  text.erase(0, kWord.size());
  std::ranges::replace(text, '\'', ' ');
  Interval interval;
  const char* p = text.data();
  const char* const end = p + text.size();
  const auto skip = [&] {
    while (p < end && *p == ' ') ++p;
  };
  for (skip(); p < end; skip()) {
    std::int64_t number = 0;
    if (*p == '+') ++p;
    const auto [behind, error] = std::from_chars(p, end, number);
    if (error != std::errc()) return {};
    p = behind;
    skip();
    const char* const begin = p;
    while (p < end && *p >= 'a' && *p <= 'z') ++p;
    std::string word(begin, p);
    if (word.size() > 1 && word.ends_with('s')) word.pop_back();
    const auto unit = std::ranges::find_if(kUnits, [&](const Unit& u) {
      return u.m_word == word && u.m_unit != KXDateTime::kWeek && u.m_unit != KXDateTime::kQuarter;
    });
    const bool bWeek = word == "week";
    if ((unit == kUnits.end() && !bWeek) || word == "millisecond") return {};
    const int sign = bNegative ? -1 : 1;
    if (!bWeek && unit->m_months > 0) {
      if (!AddProduct(interval.m_months, number, sign * unit->m_months)) return {};
      continue;
    }
    std::int64_t count = 0;
    if (!AddProduct(count, number, sign * (bWeek ? 7 : 1))) return {};
    const bool bDays = bWeek || unit->m_unit == KXDateTime::kDay;
    interval.m_bDays &= bDays;
    interval.m_modifiers.push_back('\'' + std::to_string(count) + (bWeek ? " day" : ' ' + word) + "s'");
  }
  return interval;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Literals

SqlExprText SqlWriter::DateText(const KXDate& date, const RqExpr& expr) const {
  if (date.IsCurrentDateToken()) {
    Require(F::kFeature_Curdate, &expr);
    return {"CURRENT_DATE"};
  }
  const std::string text = '\'' + date.ToString().ToUTF8() + '\'';
  if (m_target.IsSqlite()) return {text};
  return {m_target.Can(F::kFeature_DateLiteral) ? "DATE " + text : "CAST(" + text + " AS DATE)"};
}

SqlExprText SqlWriter::TimeText(const KXTime& time, const RqExpr& expr) const {
  if (time.IsCurrentTimeToken()) {
    Require(F::kFeature_Curtime, &expr);
    return {m_target.IsSqlite() ? "CURRENT_TIME" : "LOCALTIME"};
  }
  const std::string text = '\'' + time.ToString(DigitsOf(time.nanosecond_)).ToUTF8() + '\'';
  if (m_target.IsSqlite()) return {text};
  return {m_target.Can(F::kFeature_TimeLiteral) ? "TIME " + text : "CAST(" + text + " AS TIME)"};
}

SqlExprText SqlWriter::TimestampText(const KXDateTime& moment, const RqExpr& expr) const {
  if (moment.IsCurrentDateTimeToken()) {
    Require(F::kFeature_Now, &expr);
    return {m_target.IsSqlite() ? "CURRENT_TIMESTAMP" : "LOCALTIMESTAMP"};
  }
  const std::string text = '\'' + moment.ToString(DigitsOf(moment.nanosecond_)).ToUTF8() + '\'';
  if (m_target.IsSqlite()) return {text};
  return {m_target.Can(F::kFeature_DateTimeLiteral) ? "TIMESTAMP " + text : "CAST(" + text + " AS TIMESTAMP)"};
}

std::string SqlWriter::AsTimestamp(const RqExpr& expr) {
  const auto* const pLiteral = dynamic_cast<const RqExprDateLiteral*>(&expr);
  if (pLiteral && !pLiteral->GetDateValue().IsCurrentDateToken()) {
    return '\'' + pLiteral->GetDateValue().ToString().ToUTF8() + " 00:00:00'";
  }
  return "datetime(" + Argument(expr) + ')';
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions

SqlExprText SqlWriter::CalendarExtract(const RqExpr& expr) {
  const auto& extract = static_cast<const RqExprCalendarExtract&>(expr);
  const Field& field = *std::ranges::find(kFields, extract.GetOperation(), &Field::m_operation);
  std::string_view pattern;
  if (const char* const pSpelling = SpellingFor(field, m_target.GetDialect())) pattern = pSpelling;
  const bool bOtherMeans = pattern.starts_with('=');
  if (pattern.empty() || (!bOtherMeans && !m_target.Can(field.m_feature))) {
    Refuse(SqlTarget::NameOf(field.m_feature), &expr);
  }
  const RqExpr* const operands[] = {extract.GetIthOperand(0)};
  return Filled(bOtherMeans ? pattern.substr(1) : pattern, operands, field.m_precedence);
}

SqlExprText SqlWriter::TimestampDiff(const RqExpr& expr) {
  const auto& function = static_cast<const RqExprTimestampDiff&>(expr);
  const Difference& difference = *std::ranges::find(kDifferences, function.GetUnitOfTime(), &Difference::m_unit);
  const char* const pSpelling = SpellingFor(difference, m_target.GetDialect());
  if (!pSpelling) Refuse(SqlTarget::NameOf(F::kFeature_TimestampDiff) + " in fractions of seconds", &expr);
  const RqExpr* const operands[] = {expr.GetIthOperand(0), expr.GetIthOperand(1)};
  if (m_target.GetDialect() != SqlTarget::kDuckdb) return Filled(pSpelling, operands, difference.m_precedence);
  if (pSpelling[0] == '=') return Filled(pSpelling + 1, operands, difference.m_precedence);
  Require(F::kFeature_TimestampDiff, &expr);
  return Filled("date_diff(" + std::string(pSpelling) + ", $1, $2)", operands, kPrimary);
}

SqlExprText SqlWriter::TimestampAdd(const RqExpr& expr) {
  const auto& function = static_cast<const RqExprTimestampAdd&>(expr);
  Require(F::kFeature_TimestampAdd, &expr);
  const Unit& unit = *std::ranges::find(kUnits, function.GetUnitOfTime(), &Unit::m_unit);
  const RqExpr& amount = *expr.GetIthOperand(RqExprTimestampAdd::kNumIntervals);
  const RqExpr& moment = *expr.GetIthOperand(RqExprTimestampAdd::kTimestamp);
  if (!m_target.IsSqlite()) {
    const std::string step = "INTERVAL '" + std::to_string(unit.m_count) + ' ' + unit.m_word + '\'';
    const std::string text = Operand(moment, kAdd) + " + " + Operand(amount, kMultiply) + " * " + step;
    return {text, kAdd};
  }
  if (unit.m_unit == KXDateTime::kMillisecond) {
    Refuse(SqlTarget::NameOf(F::kFeature_TimestampAdd) + " in fractions of seconds", &expr);
  }
  const int factor = unit.m_months > 0 ? unit.m_months : unit.m_count;
  const auto* const pLiteral = dynamic_cast<const RqExprIntegerLiteral*>(&amount);
  std::string number;
  if (pLiteral) {
    number = std::to_string(std::int64_t{pLiteral->GetValue()} * factor);
  } else {
    number = factor == 1 ? Operand(amount, kAdd) : Operand(amount, kMultiply) + " * " + std::to_string(factor);
  }
  if (unit.m_months > 0) return Shifted(moment, number, {}, false);
  const std::string word = std::string(unit.m_word) + "s'";
  return Shifted(moment, "", {pLiteral ? '\'' + number + ' ' + word : '(' + number + ") || ' " + word}, false);
}

/// A moment of SQLite so many months later, and then changed by the modifiers.
/// A month that has no such day ends on its last: SQLite itself would go on into the next one.
SqlExprText SqlWriter::Shifted(const RqExpr& moment, const std::string& months,
                               const std::vector<std::string>& modifiers, bool bDate) {
  const std::string function = bDate ? "date(" : "datetime(";
  std::string text = Argument(moment);
  if (!months.empty()) {
    const bool bNumber = months.find_first_not_of("-0123456789") == std::string::npos;
    const auto modifier = [&](int more) {
      if (bNumber) return '\'' + std::to_string(std::stoll(months) + more) + " months'";
      return '(' + months + (more > 0 ? " + 1" : "") + ") || ' months'";
    };
    std::string last = "date(" + text + ", 'start of month', " + modifier(1) + ", '-1 day')";
    if (!bDate) last += " || ' ' || time(" + text + ')';
    text = "min(" + function + text + ", " + modifier(0) + "), " + last + ')';
    if (modifiers.empty()) return {text};
  }
  for (const std::string& modifier : modifiers) text += ", " + modifier;
  return {function + text + ')'};
}

SqlExprText SqlWriter::MomentArithmetic(const RqExpr& expr, const RqExpr& moment, const RqExpr& amount,
                                        bool bSubtract) {
  const char* const pSign = bSubtract ? " - " : " + ";
  if (!m_target.IsSqlite()) {
    // A field is a number of another type than the one that is added to dates.
    const bool bCast = amount.GetObjectType() == kRqExprCalendarExtract && Class(moment) == SqlValueClass::kDate;
    const std::string text = bCast ? "CAST(" + Argument(amount) + " AS integer)" : Operand(amount, kMultiply);
    return {Operand(moment, kAdd) + pSign + text, kAdd};
  }
  const bool bDate = Class(moment) == SqlValueClass::kDate;
  const SqlValueClass amountClass = Class(amount);
  if (bSubtract && bDate && amountClass == SqlValueClass::kDate) {
    return {"CAST(julianday(" + Argument(moment) + ") - julianday(" + Argument(amount) + ") AS INTEGER)"};
  }
  if (bDate && amountClass == SqlValueClass::kInteger) {
    return Shifted(moment, "",
                   {'(' + (bSubtract ? "-" + Operand(amount, kPrimary) : Argument(amount)) + ") || ' days'"}, true);
  }
  const auto* const pLiteral = dynamic_cast<const RqExprIntervalLiteral*>(&amount);
  const std::optional<Interval> interval =
      pLiteral ? ReadInterval(pLiteral->GetIntervalValue().ToUTF8(), bSubtract) : std::optional<Interval>();
  if (!interval) Refuse(SqlTarget::NameOf(F::kFeature_IntervalLiteral), &expr);
  return Shifted(moment, interval->m_months == 0 ? "" : std::to_string(interval->m_months), interval->m_modifiers,
                 bDate && interval->m_bDays);
}
