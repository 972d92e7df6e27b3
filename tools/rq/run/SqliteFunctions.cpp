#include "rq/run/SqliteFunctions.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <numbers>
#include <utility>
#include <vector>

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Deviations

/// The spread of numbers seen so far. A number is added to the mean by its distance from it, so that large numbers that
/// are close to each other lose no digits (Welford); one leaves a window by the same step back.
struct Spread {
  std::int64_t m_count;
  double m_mean;
  double m_squares;  ///< The sum of the squares of the distances from the mean.

  void Add(double number) {
    ++m_count;
    const double distance = number - m_mean;
    m_mean += distance / static_cast<double>(m_count);
    m_squares += distance * (number - m_mean);
  }
  void Remove(double number) {
    if (--m_count == 0) {
      *this = {};
      return;
    }
    const double distance = number - m_mean;
    m_mean -= distance / static_cast<double>(m_count);
    m_squares -= distance * (number - m_mean);
  }
};

Spread* GetSpread(sqlite3_context* pContext) {
  return static_cast<Spread*>(sqlite3_aggregate_context(pContext, sizeof(Spread)));
}

void AddToSpread(sqlite3_context* pContext, int, sqlite3_value** values) {
  if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  if (Spread* const pSpread = GetSpread(pContext)) pSpread->Add(sqlite3_value_double(values[0]));
}

void RemoveFromSpread(sqlite3_context* pContext, int, sqlite3_value** values) {
  if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  if (Spread* const pSpread = GetSpread(pContext)) pSpread->Remove(sqlite3_value_double(values[0]));
}

/// The deviation of a sample is over one number less, and of too few numbers there is none.
template <int kLess>
void GiveDeviation(sqlite3_context* pContext) {
  const Spread* const pSpread = GetSpread(pContext);
  if (!pSpread || pSpread->m_count <= kLess) return sqlite3_result_null(pContext);
  const double variance = pSpread->m_squares / static_cast<double>(pSpread->m_count - kLess);
  sqlite3_result_double(pContext, std::sqrt(std::max(variance, 0.0)));
}

template <int kLess>
int AddDeviation(sqlite3* pDatabase, const char* name) {
  return sqlite3_create_window_function(pDatabase, name, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, &AddToSpread,
                                        &GiveDeviation<kLess>, &GiveDeviation<kLess>, &RemoveFromSpread, nullptr);
}

// ---------------------------------------------------------------------------------------------------------------------
// The median

using Collected = std::vector<double>;

void AddToMedian(sqlite3_context* pContext, int, sqlite3_value** values) {
  if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  auto** const ppNumbers = static_cast<Collected**>(sqlite3_aggregate_context(pContext, sizeof(Collected*)));
  if (!ppNumbers) return sqlite3_result_error_nomem(pContext);
  try {
    if (!*ppNumbers) *ppNumbers = new Collected;
    (*ppNumbers)->push_back(sqlite3_value_double(values[0]));
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(pContext);
  }
}

/// Of an even number of values the mean of the two in the middle.
void GiveMedian(sqlite3_context* pContext) {
  auto** const ppNumbers = static_cast<Collected**>(sqlite3_aggregate_context(pContext, 0));
  if (!ppNumbers || !*ppNumbers) return sqlite3_result_null(pContext);
  const std::unique_ptr<Collected> pNumbers(std::exchange(*ppNumbers, nullptr));
  if (pNumbers->empty()) return sqlite3_result_null(pContext);
  const auto middle = pNumbers->begin() + static_cast<std::ptrdiff_t>(pNumbers->size() / 2);
  std::nth_element(pNumbers->begin(), middle, pNumbers->end());
  if (pNumbers->size() % 2 == 1) return sqlite3_result_double(pContext, *middle);
  sqlite3_result_double(pContext, (*std::max_element(pNumbers->begin(), middle) + *middle) / 2);
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions of numbers, for a library that was built without them

using Number = double (*)(double);
using Numbers = double (*)(double, double);

/// Null for null, and for what has no value.
void Give(sqlite3_context* pContext, double value) {
  if (std::isnan(value)) return sqlite3_result_null(pContext);
  sqlite3_result_double(pContext, value);
}

template <Number kFunction>
void CallWithOne(sqlite3_context* pContext, int, sqlite3_value** values) {
  if (sqlite3_value_numeric_type(values[0]) == SQLITE_NULL) return sqlite3_result_null(pContext);
  Give(pContext, kFunction(sqlite3_value_double(values[0])));
}

template <Numbers kFunction>
void CallWithTwo(sqlite3_context* pContext, int, sqlite3_value** values) {
  for (int i = 0; i < 2; ++i) {
    if (sqlite3_value_numeric_type(values[i]) == SQLITE_NULL) return sqlite3_result_null(pContext);
  }
  Give(pContext, kFunction(sqlite3_value_double(values[0]), sqlite3_value_double(values[1])));
}

void GivePi(sqlite3_context* pContext, int, sqlite3_value**) { sqlite3_result_double(pContext, std::numbers::pi); }
double ToDegrees(double radians) { return radians * (180 / std::numbers::pi); }
double ToRadians(double degrees) { return degrees * (std::numbers::pi / 180); }

struct ScalarRow {
  const char* m_name;
  int m_numArguments;
  void (*m_function)(sqlite3_context*, int, sqlite3_value**);
};

constexpr auto kScalars = std::to_array<ScalarRow>({
    {"acos", 1, &CallWithOne<std::acos>}, {"asin", 1, &CallWithOne<std::asin>},
    {"atan", 1, &CallWithOne<std::atan>}, {"atan2", 2, &CallWithTwo<std::atan2>},
    {"ceil", 1, &CallWithOne<std::ceil>}, {"cos", 1, &CallWithOne<std::cos>},
    {"cosh", 1, &CallWithOne<std::cosh>}, {"degrees", 1, &CallWithOne<ToDegrees>},
    {"exp", 1, &CallWithOne<std::exp>},   {"floor", 1, &CallWithOne<std::floor>},
    {"ln", 1, &CallWithOne<std::log>},    {"log10", 1, &CallWithOne<std::log10>},
    {"mod", 2, &CallWithTwo<std::fmod>},  {"pi", 0, &GivePi},
    {"power", 2, &CallWithTwo<std::pow>}, {"radians", 1, &CallWithOne<ToRadians>},
    {"sin", 1, &CallWithOne<std::sin>},   {"sinh", 1, &CallWithOne<std::sinh>},
    {"sqrt", 1, &CallWithOne<std::sqrt>}, {"tan", 1, &CallWithOne<std::tan>},
    {"tanh", 1, &CallWithOne<std::tanh>}, {"trunc", 1, &CallWithOne<std::trunc>},
});

}  // namespace

int AddSqliteFunctions(sqlite3* pDatabase) {
  int result = AddDeviation<0>(pDatabase, "stddev_pop");
  if (result == SQLITE_OK) result = AddDeviation<1>(pDatabase, "stddev_samp");
  if (result == SQLITE_OK) {
    result = sqlite3_create_function(pDatabase, "median", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, nullptr,
                                     &AddToMedian, &GiveMedian);
  }
  if (sqlite3_compileoption_used("ENABLE_MATH_FUNCTIONS")) return result;
  for (const ScalarRow& row : kScalars) {
    if (result != SQLITE_OK) break;
    result = sqlite3_create_function(pDatabase, row.m_name, row.m_numArguments, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                     nullptr, row.m_function, nullptr, nullptr);
  }
  return result;
}
