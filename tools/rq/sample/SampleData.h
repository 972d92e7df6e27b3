#pragma once

#include <cstdint>
#include <string>

#include "rq/run/SqliteDatabase.h"

/// Rows for every physical table of the built-in model, always the same ones.
///
///   members     some have no facts: stores, products, customers, promotions, days; attributes may be null
///   facts       foreign keys and measures are null where the model lets them. All amounts are multiples of 0.25, so
///               that sums are exact in any order
///   summaries   are computed from the facts, by SQL
class SampleData {
 public:
  /// A number that goes up whenever the rows change and nothing else tells it.
  static constexpr std::uint32_t kVersion = 2;

  /// The statements that make the tables, from the built-in model, and those that fill the summaries. With kVersion
  /// they tell a version of the sample.
  static std::string GetTables();
  static std::string GetSummaries();

  /// Fills an empty database, in one transaction.
  static void Fill(SqliteDatabase& database);
};
