#include "differential/SmallSample.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "rq/sample/SampleData.h"

namespace {

constexpr std::array kTexts{"'North'", "'East'", "'Nova'", "'100% Cotton'", "'O''Hara'", "'a_b'", "''", "'Zzz'"};

std::optional<ValueKind> KindOf(KXDataType type) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(type)) {
    case KXTypeClass::kInteger:
      return ValueKind::kInteger;
    case KXTypeClass::kDecimal:
      return ValueKind::kNumber;
    case KXTypeClass::kText:
      return ValueKind::kText;
    case KXTypeClass::kDate:
      return ValueKind::kDate;
    default:
      return {};
  }
}

/// Scatters (splitmix64).
std::uint64_t Mixed(std::uint64_t number) {
  number = (number + 1) * 0x9E3779B97F4A7C15;
  number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9;
  return (number ^ (number >> 27)) >> 8;
}

std::string NameOf(MemoryGateway& gateway, const VoidID& columnID) {
  return RefAColumn(&gateway, columnID)->GetName().ToUTF8();
}

ModelTable ReadTable(const ATable& table, MemoryGateway& gateway) {
  ModelTable read;
  read.m_name = table.GetName().ToUTF8();
  VoidIDVector ids, key, keys;
  table.GetColumnIDs(ids);
  table.GetKeyColumnIDs(key);
  for (const VoidID& id : ids) {
    const KXTypeInfo type = RefAColumn(&gateway, id)->GetTypeInfo();
    const auto place = std::ranges::find(key, id);
    read.m_columns.push_back({NameOf(gateway, id), KindOf(type.type_), type.nullable_ != 0,
                              place == key.end() ? -1 : static_cast<int>(place - key.begin())});
  }
  table.GetForeignKeyIDs(keys);
  for (const VoidID& id : keys) {
    const RefAForeignKey foreignKey(&gateway, id);
    const RefATable referenced(&gateway, foreignKey->GetReferencedTableID());
    if (!referenced->GetAliasedTableID().IsNullID()) continue;
    VoidIDVector from, to;
    foreignKey->GetColumnIDs(from);
    foreignKey->GetReferencedColumnIDs(to);
    ModelTable::Join& join = read.m_joins.emplace_back(ModelTable::Join{referenced->GetName().ToUTF8(), {}});
    for (std::size_t i = 0; i < from.size(); ++i) {
      join.m_columns.emplace_back(NameOf(gateway, from[i]), NameOf(gateway, to[i]));
    }
  }
  return read;
}

/// A row's values: keys count, and all else is scattered. What refers to members finds some, some more than others.
std::string RowText(const ModelTable& table, unsigned seed, unsigned row, unsigned numRows) {
  const auto numKeys =
      std::ranges::count_if(table.m_columns, [](const auto& column) { return column.m_keyPlace >= 0; });
  const auto base = static_cast<unsigned>(std::ceil(std::pow(numRows, 1.0 / static_cast<double>(numKeys)) - 1e-9));
  std::string text;
  for (std::size_t i = 0; i < table.m_columns.size(); ++i) {
    const ModelTable::Column& column = table.m_columns[i];
    const auto number = static_cast<unsigned>(Mixed((std::uint64_t{seed} << 32) + row * 64 + i) % 1000);
    const bool bRefers = std::ranges::any_of(table.m_joins, [&column](const ModelTable::Join& join) {
      return std::ranges::any_of(join.m_columns, [&column](const auto& pair) { return pair.first == column.m_name; });
    });
    text += i == 0 ? "(" : ", ";
    if (column.m_keyPlace >= 0) {
      unsigned digit = row;
      for (int place = 0; place < column.m_keyPlace; ++place) digit /= base;
      text += std::to_string(digit % base + 1);
    } else if (column.m_bNullable && number % 3 == 0) {
      text += "NULL";
    } else if (bRefers) {
      text += std::to_string(number % (1 + number % 13) + 1);
    } else if (column.m_kind) {
      text += ConstantText(*column.m_kind, number % 6);
    } else {
      text += std::to_string(number % 2);
    }
  }
  return text + ')';
}

}  // namespace

std::vector<ModelTable> ReadTables(MemoryGateway& gateway) {
  std::vector<ModelTable> tables;
  for (const RefATable& table : gateway.GetObjects<ATable>()) {
    if (table->GetAliasedTableID().IsNullID()) tables.push_back(ReadTable(*table, gateway));
  }
  return tables;
}

std::string ConstantText(ValueKind kind, unsigned number) {
  switch (kind) {
    case ValueKind::kInteger:
      return std::to_string(number % 8);
    case ValueKind::kNumber: {
      static constexpr std::array kNumbers{"0.25", "1.5", "2.0", "3.75", "4.0", "6.5", "7.25", "100.0"};
      return kNumbers[number % kNumbers.size()];
    }
    case ValueKind::kText:
      return kTexts[number % kTexts.size()];
    case ValueKind::kDate:
      return "'2024-02-2" + std::to_string(number % 8 + 1) + '\'';
  }
  return {};
}

void FillSmallSample(SqliteDatabase& database, const std::vector<ModelTable>& tables) {
  database.Execute(SampleData::GetTables());
  for (unsigned i = 0; i < tables.size(); ++i) {
    const ModelTable& table = tables[i];
    const unsigned numRows = table.m_joins.empty() ? 10 : 40;
    std::string text = "INSERT INTO " + table.m_name + " VALUES ";
    for (unsigned row = 0; row < numRows; ++row) text += (row == 0 ? "" : ", ") + RowText(table, i, row, numRows);
    database.Execute(text);
  }
}

std::string Replaced(std::string text, const Replacements& replacements) {
  for (const auto& [what, by] : replacements) {
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + by.size())) {
      text.replace(at, what.size(), by);
    }
  }
  return text;
}
