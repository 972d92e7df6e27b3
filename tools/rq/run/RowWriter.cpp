#include "rq/run/RowWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

namespace {

bool IsNumber(const SqliteValue& value) {
  return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value);
}

bool IsNull(const SqliteValue& value) { return std::holds_alternative<std::monostate>(value); }

std::string RealText(double real) {
  std::array<char, 32> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), real);
  std::string text(buffer.data(), end);
  if (text.find_first_not_of("-0123456789") == std::string::npos) text += ".0";
  return text;
}

/// A text for a cell of one line.
std::string CellText(const SqliteValue& value) {
  if (IsNull(value)) return "NULL";
  std::string cell;
  for (const char c : ValueText(value)) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      cell += "\uFFFD";
    } else {
      cell += c;
    }
  }
  return cell;
}

/// In characters.
std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

void AppendCell(std::string& line, const std::string& text, std::size_t width, bool bRight, bool bLast) {
  const std::string blanks(width - WidthOf(text), ' ');
  if (bRight) line += blanks;
  line += text;
  if (!bRight && !bLast) line += blanks;
  line += bLast ? "\n" : "  ";
}

std::string CsvField(const std::string& text, bool bText) {
  const bool bQuoted = text.find_first_of(",\"\r\n") != std::string::npos || (bText && text.empty());
  if (!bQuoted) return text;
  std::string field = "\"";
  for (const char c : text) {
    field += c;
    if (c == '"') field += c;
  }
  return field + '"';
}

std::vector<std::string> DistinctNames(const std::vector<std::string>& names) {
  std::vector<std::string> distinct;
  std::set<std::string> taken(names.begin(), names.end());
  std::set<std::string> seen;
  for (const std::string& name : names) {
    std::string next = name;
    for (int i = 2; (next != name && taken.contains(next)) || !seen.insert(next).second; ++i) {
      next = name + '_' + std::to_string(i);
    }
    distinct.push_back(next);
  }
  return distinct;
}

nlohmann::ordered_json JsonValue(const SqliteValue& value) {
  if (const auto* const pInteger = std::get_if<std::int64_t>(&value)) return *pInteger;
  if (const auto* const pReal = std::get_if<double>(&value); pReal && std::isfinite(*pReal)) return *pReal;
  if (const auto* const pText = std::get_if<std::string>(&value)) return *pText;
  return nullptr;
}

}  // namespace

std::string ValueText(const SqliteValue& value) {
  if (const auto* const pInteger = std::get_if<std::int64_t>(&value)) return std::to_string(*pInteger);
  if (const auto* const pReal = std::get_if<double>(&value)) return RealText(*pReal);
  const auto* const pText = std::get_if<std::string>(&value);
  return pText ? *pText : std::string();
}

std::string RowsTable(const SqliteRows& rows) {
  const std::size_t numColumns = rows.m_columns.size();
  std::vector<std::size_t> widths(numColumns);
  std::vector<bool> right(numColumns, !rows.m_rows.empty());
  std::vector<std::string> names;
  for (std::size_t i = 0; i < numColumns; ++i) {
    names.push_back(CellText(rows.m_columns[i]));
    widths[i] = WidthOf(names[i]);
    bool bAnyNumber = false;
    for (const SqliteRow& row : rows.m_rows) {
      widths[i] = std::max(widths[i], WidthOf(CellText(row[i])));
      bAnyNumber |= IsNumber(row[i]);
      if (!IsNumber(row[i]) && !IsNull(row[i])) right[i] = false;
    }
    right[i] = right[i] && bAnyNumber;
  }
  std::string text;
  for (std::size_t i = 0; i < numColumns; ++i) AppendCell(text, names[i], widths[i], right[i], i + 1 == numColumns);
  for (std::size_t i = 0; i < numColumns; ++i) {
    text += std::string(widths[i], '-') + (i + 1 == numColumns ? "\n" : "  ");
  }
  for (const SqliteRow& row : rows.m_rows) {
    for (std::size_t i = 0; i < numColumns; ++i) {
      AppendCell(text, CellText(row[i]), widths[i], right[i], i + 1 == numColumns);
    }
  }
  return text + '(' + std::to_string(rows.m_rows.size()) + (rows.m_rows.size() == 1 ? " row)\n" : " rows)\n");
}

std::string RowsCsv(const SqliteRows& rows) {
  std::string text;
  for (std::size_t i = 0; i < rows.m_columns.size(); ++i)
    text += (i == 0 ? "" : ",") + CsvField(rows.m_columns[i], true);
  text += "\r\n";
  for (const SqliteRow& row : rows.m_rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += (i == 0 ? "" : ",") + CsvField(ValueText(row[i]), std::holds_alternative<std::string>(row[i]));
    }
    text += "\r\n";
  }
  return text;
}

std::string RowsJson(const SqliteRows& rows) {
  const std::vector<std::string> names = DistinctNames(rows.m_columns);
  std::string text = "[";
  for (const SqliteRow& row : rows.m_rows) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (std::size_t i = 0; i < row.size(); ++i) object[names[i]] = JsonValue(row[i]);
    text += text.size() == 1 ? "\n" : ",\n";
    text += "  " + object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  }
  return text + (rows.m_rows.empty() ? "]\n" : "\n]\n");
}
