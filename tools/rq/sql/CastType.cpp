#include "rq/sql/CastType.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>
#include <vector>

#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::int32_t kNoLength = 0;
constexpr std::int32_t kNotGiven = -1;
constexpr std::int32_t kMaxSecondDigits = 9;

/// What may stand in parentheses behind a type.
enum class Dimensions { kNone, kLength, kLengthNeeded, kPrecisionAndScale, kSecondDigits };

/// A type by the name that the parser has for it.
struct TypeRow {
  std::string_view m_name;
  KXDataType m_type;
  Dimensions m_dimensions;
};

constexpr TypeRow kTypes[] = {
    {"bpchar", KXCharData, Dimensions::kLength},
    {"varchar", KXVarCharData, Dimensions::kLengthNeeded},
    {"bit", KXBitData, Dimensions::kLength},
    {"varbit", KXVarBinaryData, Dimensions::kLengthNeeded},
    {"int2", KXInt2Data, Dimensions::kNone},
    {"int4", KXInt4Data, Dimensions::kNone},
    {"float4", KXFloatData, Dimensions::kNone},
    {"float8", KXDoubleData, Dimensions::kNone},
    {"numeric", KXNumericData, Dimensions::kPrecisionAndScale},
    {"date", KXDateData, Dimensions::kNone},
    {"time", KXTimeData, Dimensions::kSecondDigits},
    {"timestamp", KXTimeStampData, Dimensions::kSecondDigits},
};

constexpr const char* kTypesInWords =
    "CHARACTER(n), VARCHAR(n), BIT(n), BIT VARYING(n), SMALLINT, INTEGER, FLOAT(n), DOUBLE PRECISION, NUMERIC(p, s), "
    "DECIMAL(p, s), DATE, TIME(p) and TIMESTAMP(p)";

std::string_view Read(SqlLexer& lexer, std::string_view text) {
  const SqlToken token = lexer.Next();
  return text.substr(token.m_begin, token.m_end - token.m_begin);
}

/// The first word of a type where the text has it, in lower case.
std::string FirstWordOf(SqlNode typeName, std::string_view text) {
  SqlLexer lexer(text, PlaceOfNode(typeName));
  std::string word(Read(lexer, text));
  std::ranges::transform(word, word.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return word;
}

/// The length of a FLOAT, which the parser has found to be right.
std::int32_t ReadFloatLength(SqlNode typeName, std::string_view text) {
  SqlLexer lexer(text, PlaceOfNode(typeName));
  lexer.Next();  // the word
  std::int32_t length = kNoLength;
  if (Read(lexer, text) == "(") {
    const std::string_view number = Read(lexer, text);
    std::from_chars(number.data(), number.data() + number.size(), length);
  }
  return length;
}

/// The numbers behind a type. Where none are given, the parser may put one in that has no place.
std::vector<SqlNode> GivenNumbers(SqlNode typeName) {
  std::vector<SqlNode> numbers = typeName.Get("typmods").GetElements();
  std::erase_if(numbers, [](SqlNode number) { return number.GetStart() == SqlNode::kNoLocation; });
  return numbers;
}

/// Read from the text, since the tree shows no numbers that are not above zero.
std::int32_t ReadNumber(SqlNode number, std::string_view text, std::int32_t low, std::int32_t high) {
  std::int32_t value = kNotGiven;
  if (!number.Get("ival").IsNone()) {
    SqlLexer lexer(text, number.GetLocation());
    const std::string_view figures = Read(lexer, text);
    std::from_chars(figures.data(), figures.data() + figures.size(), value);
  }
  if (value < low || value > high) {
    const std::string range = std::to_string(low) + " to " + std::to_string(high);
    throw SqlError(PlaceOfNode(number), "a whole number from " + range + " is needed here");
  }
  return value;
}

const TypeRow& FindType(SqlNode typeName) {
  std::string name = WithoutCatalogue(TextsOf(typeName.Get("names")));
  const bool bIsArray = !typeName.Get("arrayBounds").IsNone();
  const bool bIsSet = !typeName.Get("setof").IsNone();
  const TypeRow* const pRow = bIsArray || bIsSet ? nullptr : FindByName(kTypes, name);
  if (pRow) return *pRow;
  if (bIsArray) name += "[]";
  if (bIsSet) name.insert(0, "SETOF ");
  throw SqlError(PlaceOfNode(typeName), "a cast to " + ForMessage(name, kMaxQuotedCharacters) +
                                            " is not supported; the types are " + kTypesInWords);
}

}  // namespace

CastType ReadCastType(SqlNode typeName, std::string_view text) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  const auto& [name, type, dimensions] = FindType(typeName);
  const std::vector<SqlNode> numbers = GivenNumbers(typeName);
  const std::size_t nMost = dimensions == Dimensions::kNone ? 0 : dimensions == Dimensions::kPrecisionAndScale ? 2 : 1;
  if (numbers.size() > nMost) throw SqlError(PlaceOfNode(numbers[nMost]), "no number can stand here");
  const auto read = [&](std::size_t i, std::int32_t low, std::int32_t high, std::int32_t notGiven) {
    return i < numbers.size() ? ReadNumber(numbers[i], text, low, high) : notGiven;
  };
  switch (dimensions) {
    case Dimensions::kNone:
      break;
    case Dimensions::kLengthNeeded:
      if (numbers.empty()) throw SqlError(PlaceOfNode(typeName), "this type needs a length, such as VARCHAR(20)");
      [[fallthrough]];
    case Dimensions::kLength:
      return {type, read(0, 1, kMax, kNoLength), kNotGiven};
    case Dimensions::kPrecisionAndScale: {
      const bool bIsDecimal = FirstWordOf(typeName, text).starts_with("dec");
      return {bIsDecimal ? KXDecimalData : type, read(0, 1, kMax, kNotGiven), read(1, 0, kMax, kNotGiven)};
    }
    case Dimensions::kSecondDigits:
      return {type, read(0, 0, kMaxSecondDigits, kNotGiven), kNotGiven};
  }
  const bool bIsFloat = FirstWordOf(typeName, text) == "float";
  return bIsFloat ? CastType{KXFloatData, ReadFloatLength(typeName, text), kNotGiven}
                  : CastType{type, kNoLength, kNotGiven};
}
