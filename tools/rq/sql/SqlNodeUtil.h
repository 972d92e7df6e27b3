#pragma once

#include <algorithm>
#include <cstddef>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

#include "Host/KXString.h"
#include "rq/sql/SqlTree.h"

// What the makers of trees share in reading the parser's nodes.

/// How much of a text a message quotes.
inline constexpr std::size_t kMaxQuotedCharacters = 40;

/// The place to name for a node: its own, or else the first one in it, or else the start.
std::size_t PlaceOfNode(SqlNode node);

/// Raises SqlError at a node: "WHAT is not supported".
[[noreturn]] void RaiseUnsupported(SqlNode node, const std::string& what);

inline KXString ToText(std::string_view utf8) { return KXString::FromUTF8(utf8); }

/// The elements of an array of String nodes.
std::vector<std::string_view> TextsOf(SqlNode array);

std::string JoinedByPoints(const std::vector<std::string_view>& parts);

/// A name of the parser's own catalogue, without its schema; any other as it is.
std::string WithoutCatalogue(const std::vector<std::string_view>& name);

/// The element of a table whose m_name is the name; null if there is none.
template <class Table>
auto FindByName(const Table& table, std::string_view name) {
  const auto it = std::ranges::find_if(table, [name](const auto& element) { return element.m_name == name; });
  return it == std::ranges::end(table) ? nullptr : &*it;
}
