#include "Host/KorvelNumber.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"

namespace {

KorvelNumber Number(const std::string& text) {
  KorvelNumber number;
  EXPECT_TRUE(KorvelNumber::FromString(KXString::FromUTF8(text), number)) << text;
  return number;
}

std::string Text(const KorvelNumber& number, std::wstring_view format = {}) { return number.asString(format).ToUTF8(); }

/// Both exact texts and the byte form read back; the whole part, if it fits an integer, is that of the text.
void ExpectReadsBack(const KorvelNumber& number) {
  ASSERT_EQ(Number(Text(number)), number);
  ASSERT_EQ(Number(Text(number, L"E")), number);
  ByteVector bytes;
  number.ToByteVector(bytes);
  KorvelNumber read = KorvelNumber::FromInteger(3);
  ASSERT_EQ(read.FromByteVector(bytes.data()), bytes.data() + bytes.size());
  ASSERT_EQ(read, number);

  const std::string plain = Text(number, L"F126");
  std::int64_t whole = 5;
  std::int64_t expected = 5;
  const auto [pEnd, error] = std::from_chars(plain.data(), plain.data() + plain.size(), expected);
  ASSERT_EQ(number.asInteger(whole), error == std::errc());
  ASSERT_EQ(whole, expected);
  ASSERT_EQ(Text(KorvelNumber::FromInteger(whole)), std::to_string(whole));
}

TEST(KorvelNumber, ReadsNumbersAndShowsThemExactly) {
  std::istringstream cases(
      "0 0  -0.000 0  +7 7  -12.50 -12.5  00012 12  .5 0.5  5. 5  1e3 1000  1.25E-3 0.00125  -1e+2 -100 "
      "123456789012345678901234567890123456789 123456789012345678901234567890123456789 "
      "0.123456789012345678901234567890123456789 0.123456789012345678901234567890123456789 "
      "1E-20 0.00000000000000000001  1E-21 1E-21  1E39 1000000000000000000000000000000000000000  1E40 1E+40 "
      "9223372036854775807 9223372036854775807  9223372036854775808 9223372036854775808 "
      "-9223372036854775808.9 -9223372036854775808.9  -9223372036854775809 -9223372036854775809  1E19 "
      "10000000000000000000 "
      "1E-126 1E-126  9.9999E-127 0  -9.9E127 -9.9E+127  0e999999999999999999999 0  1E-999999999999999999999 0 "
      // Rounding behind the last pair: 40 digits stand if the first pair has two, else 39.
      "1200000000000000000000000000000000000003 1200000000000000000000000000000000000003 "
      "100000000000000000000000000000000000000.49999999999999999999 100000000000000000000000000000000000000 "
      "-100000000000000000000000000000000000000.5 -100000000000000000000000000000000000001 "
      "9999999999999999999999999999999999999999.5 1E+40  0.999999999999999999999999999999999999999999999 1");
  for (std::string text, shown; cases >> text >> shown;) {
    const KorvelNumber number = Number("  " + text + " ");
    SCOPED_TRACE(text);
    EXPECT_EQ(Text(number), shown);
    ExpectReadsBack(number);
  }
}

TEST(KorvelNumber, RefusesOtherTextAndNumbersTooLarge) {
  std::istringstream others(
      "- . abc 1x 1e 1e+ 1.2.3 --1 +-1 1e1.5 0x10 inf nan 1,5 1E128 -1E+128 1e999999999999999999999 " +
      std::string(128, '9'));  // which rounds up to the first number that is too large
  std::string text;
  do {  // with the empty text first
    KorvelNumber number = KorvelNumber::FromInteger(7);
    EXPECT_FALSE(KorvelNumber::FromString(KXString::FromUTF8(text), number)) << text;
    EXPECT_EQ(number, KorvelNumber::FromInteger(7)) << text;
  } while (others >> text);
}

/// A number, often close to others: of few distinct digits, lengths and exponents. As text, and as something that is
/// ordered like the number but made without arithmetic: its sign, and the digits of number * 10^160, all of one length.
std::pair<std::string, std::pair<int, std::string>> Draw(std::mt19937& random) {
  const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
  const bool bNarrow = below(2) == 0;
  const bool bNegative = below(2) == 0;
  std::string digits;
  for (int length = 1 + below(bNarrow ? 4 : 39); length > 0; --length) digits += "0192345678"[below(bNarrow ? 3 : 10)];
  const int exponent = below(bNarrow ? 6 : 80) - (bNarrow ? 3 : 60);
  const std::string text = (bNegative ? "-" : "") + digits + "e" + std::to_string(exponent);
  if (digits.find_first_not_of('0') == digits.npos) return {text, {}};
  std::string magnitude(320, '0');
  magnitude.replace(magnitude.size() - 160 - exponent - digits.size(), digits.size(), digits);
  if (!bNegative) return {text, {1, magnitude}};
  for (char& digit : magnitude) digit = static_cast<char>('9' - digit + '0');
  return {text, {-1, magnitude}};
}

TEST(KorvelNumber, ComparesAsBigIntegersDo) {
  std::mt19937 random(20240229);
  int numEqual = 0;
  for (int i = 0; i < 20000; ++i) {
    const auto [aText, aOrder] = Draw(random);
    const auto [bText, bOrder] = Draw(random);
    SCOPED_TRACE(aText + ' ' + bText);
    const KorvelNumber a = Number(aText);
    const KorvelNumber b = Number(bText);
    ASSERT_EQ(a <=> b, aOrder <=> bOrder);
    ASSERT_EQ(a == b, aOrder == bOrder);
    ASSERT_EQ(a.asDouble(), std::strtod(aText.c_str(), nullptr));
    ASSERT_NO_FATAL_FAILURE(ExpectReadsBack(a));
    numEqual += a == b;
  }
  EXPECT_GT(numEqual, 50);
}

TEST(KorvelNumber, FormatsRound) {
  std::istringstream cases(
      "1.005 F2 1.01  -1.005 F2 -1.01  1.0049999 F2 1.00  9.995 F2 10.00  0.004 F2 0.00  -0.004 F2 0.00 "
      "0.00001 F2 0.00  0.5 F0 1  0.05 F1 0.1  0.005 F1 0.0  1234 F0 1234  0 F3 0.000  99.99 F1 100.0 "
      "1E40 F1 10000000000000000000000000000000000000000.0  12.5 E 1.25E+1  -0.00125 E -1.25E-3  0 E 0E+0");
  for (std::string number, format, text; cases >> number >> format >> text;) {
    EXPECT_EQ(Text(Number(number), KXString::FromUTF8(format)), text) << number;
  }
}

TEST(KorvelNumberDeathTest, UnknownFormat) {
  for (const wchar_t* format : {L"X", L"F", L"F127", L"F-1", L"e"}) {
    EXPECT_DEATH(KorvelNumber().asString(format), "unknown number format");
  }
}

TEST(KorvelNumber, DoublesCountAsTheirShortestText) {
  const std::pair<double, const char*> cases[] = {
      {0.1, "0.1"}, {-0.0, "0"}, {1e5, "100000"}, {5e-324, "0"}, {-2.5e50, "-2.5E+50"}};
  KorvelNumber number;
  for (const auto& [value, text] : cases) {
    EXPECT_TRUE(KorvelNumber::FromDouble(value, number));
    EXPECT_EQ(Text(number), text);
  }
  for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, DBL_MAX, 1e128}) {
    EXPECT_FALSE(KorvelNumber::FromDouble(value, number)) << value;
  }
}

// No head, too long, no digits, digits of zero, no head of any number, zeros in front, zeros behind, no digit pair.
TEST(KorvelNumber, NoOtherByteFormIsRead) {
  for (ByteVector bytes : ByteVectorVector{
           {0}, {22, 193}, {1, 193}, {2, 128, 5}, {2, 0, 5}, {3, 192, 0, 5}, {3, 192, 5, 0}, {2, 192, 100}}) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    bytes.resize(32);
    KorvelNumber number = KorvelNumber::FromInteger(3);
    EXPECT_THROW(number.FromByteVector(bytes.data()), ErrorMessage);
    EXPECT_EQ(number, KorvelNumber::FromInteger(3));
  }
}

}  // namespace
