#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The function that a SUBSTRING of leading tokens is called as once it is respelled.
inline constexpr std::string_view kLeadingTokensFunction = "#tokens";

/// A text with those forms of functions that PostgreSQL's grammar does not know written as calls that it knows. All
/// that stays keeps its place, byte for byte.
///
///   char(n), unless it is a type                                chr (n)
///   user()                                                      user
///   fiscal_extract(field from x fiscal_year_start month, day)   fiscal_extract(field, x, month, day)
///   substring(x extract first n token(s) delimited by d)        "#tokens"(x, n, d)
///   sum(x by a), and all other aggregates                       sum(x ,  a)
///   count(* by a)                                               count(1 ,  a)
///
/// Raises SqlError at the SIMILAR of a SUBSTRING, which the parser's tree does not tell from FROM.
/// Cost: one pass over the text.
std::string RespellSql(std::string_view text);

/// The place of the BY that ends what a call aggregates; none if there is none. The call is the place of the function.
std::optional<std::size_t> FindBreakWord(std::string_view text, std::size_t call);
