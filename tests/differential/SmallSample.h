#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "rq/run/SqliteDatabase.h"

/// What values are, as far as queries over them tell them apart.
enum class ValueKind { kInteger, kNumber, kText, kDate };

/// A physical table of the model as texts of SQL need it.
struct ModelTable {
  struct Column {
    std::string m_name;
    std::optional<ValueKind> m_kind;  ///< None for times, timestamps and truth values.
    bool m_bNullable;
    int m_keyPlace;  ///< From 0 on in the primary key, or -1.
  };
  /// A foreign key: pairs of a column and the one that it refers to.
  struct Join {
    std::string m_table;
    std::vector<std::pair<std::string, std::string>> m_columns;
  };

  std::string m_name;
  std::vector<Column> m_columns;
  std::vector<Join> m_joins;
};

/// The physical tables of a model, without aliases.
std::vector<ModelTable> ReadTables(MemoryGateway& gateway);

/// Makes the tables in an empty database and fills them: facts with forty rows, members with ten, of which some
/// have no facts. Every column that may be null is, often, and numbers are multiples of 0.25.
void FillSmallSample(SqliteDatabase& database, const std::vector<ModelTable>& tables);

/// A constant as SQL has it, of those that the tables are filled with or, the last ones, next to them.
std::string ConstantText(ValueKind kind, unsigned number);

/// The text with each of the one as the other, pair by pair.
using Replacements = std::vector<std::pair<std::string, std::string>>;
std::string Replaced(std::string text, const Replacements& replacements);
