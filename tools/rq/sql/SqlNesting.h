#pragma once

#include <cstddef>
#include <string_view>

/// The levels that a condition may nest, and the steps that an operand may be long.
inline constexpr std::size_t kMaxSqlNesting = 10'000;

/// The error text of a condition that goes deeper.
inline constexpr const char* kNestedTooDeeply = "the text is nested too deeply here";

/// Raises SqlError at the token with which a text may become a tree deeper than kMaxSqlNesting, and at the start of a
/// text that holds no token at all.
///
/// Law: the parser's tree of a text is at most a few times as deep as the tokens of an operand are many, taken together
/// with those of the operands that enclose it. What AND, OR and commas separate stands side by side and not above one
/// another. So lists may have any length, and only brackets, NOT and chains such as a + a + a count.
/// Cost: one pass over the text.
void CheckSqlNesting(std::string_view text);
