#include "Host/KorvelNumber.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"

namespace {

KorvelNumber Number(const std::string& text) {
  KorvelNumber number;
  EXPECT_TRUE(KorvelNumber::FromString(KXString::FromUTF8(text), number)) << text;
  return number;
}

std::string Text(const KorvelNumber& number, std::wstring_view format = {}) { return number.asString(format).ToUTF8(); }

std::string Repeat(const char* text, int count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

TEST(KorvelNumber, ReadsNumbersAndShowsThemExactly) {
  const std::string digits39 = "123456789012345678901234567890123456789";
  const std::pair<std::string, std::string> cases[] = {
      {"0", "0"},
      {"-0.000", "0"},
      {" 42 ", "42"},
      {"+7", "7"},
      {"-12.50", "-12.5"},
      {"00012", "12"},
      {".5", "0.5"},
      {"5.", "5"},
      {"100", "100"},
      {"1e3", "1000"},
      {"1.25E-3", "0.00125"},
      {"-1e+2", "-100"},
      {"0e999999999999999999999", "0"},
      {digits39, digits39},
      {"0." + digits39, "0." + digits39},
      {"1E-20", "0.00000000000000000001"},
      {"1E-21", "1E-21"},
      {"1E39", "1" + std::string(39, '0')},
      {"1E40", "1E+40"},
      {"1E-126", "1E-126"},
      {"9.9999E-127", "0"},
      {"1E-999999999999999999999", "0"},
      {"-9.9E127", "-9.9E+127"},
      // Rounding behind the last pair: 40 digits stand if the first pair has two, else 39.
      {"12" + std::string(37, '0') + "3", "12" + std::string(37, '0') + "3"},
      {"1" + std::string(38, '0') + ".4", "1" + std::string(38, '0')},
      {"1" + std::string(38, '0') + ".5", "1" + std::string(37, '0') + "1"},
      {"-1" + std::string(38, '0') + ".5", "-1" + std::string(37, '0') + "1"},
      {"1" + std::string(38, '0') + ".49999999999999999999", "1" + std::string(38, '0')},
      {std::string(40, '9') + ".5", "1E+40"},
      {"0." + std::string(45, '9'), "1"},
  };
  for (const auto& [text, shown] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Text(Number(text)), shown);
    EXPECT_EQ(Number(shown), Number(text));
    EXPECT_EQ(Number(Text(Number(text), L"E")), Number(text));
  }
}

TEST(KorvelNumber, RefusesOtherTextAndNumbersTooLarge) {
  for (const char* text : {"",
                           " ",
                           "-",
                           ".",
                           "abc",
                           "1x",
                           "1 2",
                           "1e",
                           "1e+",
                           "1.2.3",
                           "--1",
                           "+-1",
                           "1e1.5",
                           "0x10",
                           "1E128",
                           "inf",
                           "nan",
                           "-1E+128",
                           "1e999999999999999999999",
                           "1,5"}) {
    KorvelNumber number = KorvelNumber::FromInteger(7);
    EXPECT_FALSE(KorvelNumber::FromString(KXString::FromUTF8(text), number)) << text;
    EXPECT_EQ(number, KorvelNumber::FromInteger(7)) << text;
  }
  KorvelNumber number;
  EXPECT_FALSE(KorvelNumber::FromString(KXString::FromUTF8(std::string(128, '9')), number));  // rounds up to 1E+128
}

/// A decimal text as an integer: a sign and the digits of text * 10^160, all of one length. Made without any arithmetic
/// on the value, so that texts compare as the numbers do.
struct BigInteger {
  int m_sign;
  std::string m_magnitude;

  BigInteger(bool bNegative, const std::string& digits, int exponent) {
    m_magnitude = std::string(320, '0');
    m_magnitude.replace(m_magnitude.size() - 160 - exponent - digits.size(), digits.size(), digits);
    const bool bZero = m_magnitude.find_first_not_of('0') == std::string::npos;
    m_sign = bZero ? 0 : bNegative ? -1 : 1;
  }

  int Compare(const BigInteger& rhs) const {
    if (m_sign != rhs.m_sign) return m_sign < rhs.m_sign ? -1 : 1;
    const int magnitudes = m_magnitude.compare(rhs.m_magnitude);
    return m_sign < 0 ? -magnitudes : magnitudes;
  }
};

int Sign(int value) { return (value > 0) - (value < 0); }

/// Draws numbers that are often close to each other: few distinct digits, lengths and exponents.
class Draw {
 public:
  explicit Draw(unsigned seed) : m_random(seed) {}

  int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

  std::pair<std::string, BigInteger> Next() {
    std::string digits;
    const bool bNarrow = Below(2) == 0;
    const int length = 1 + Below(bNarrow ? 4 : 39);
    for (int i = 0; i < length; ++i) digits += bNarrow ? "019"[Below(3)] : static_cast<char>('0' + Below(10));
    const int exponent = Below(bNarrow ? 6 : 80) - (bNarrow ? 3 : 60);
    const bool bNegative = Below(2) == 0;
    return {(bNegative ? "-" : "") + digits + "e" + std::to_string(exponent), BigInteger(bNegative, digits, exponent)};
  }

 private:
  std::mt19937 m_random;
};

TEST(KorvelNumber, ComparesAsBigIntegersDo) {
  constexpr unsigned kSeed = 20240229;
  SCOPED_TRACE(kSeed);
  Draw draw(kSeed);
  int numEqual = 0;
  for (int i = 0; i < 50000; ++i) {
    const auto [aText, aReference] = draw.Next();
    const auto [bText, bReference] = draw.Next();
    const KorvelNumber a = Number(aText);
    const KorvelNumber b = Number(bText);
    const int expected = Sign(aReference.Compare(bReference));
    ASSERT_EQ(Sign(a.compare(b)), expected) << aText << ' ' << bText;
    ASSERT_EQ(a < b, expected < 0);
    ASSERT_EQ(a == b, expected == 0) << aText << ' ' << bText;
    ASSERT_EQ(Number(Text(a)), a) << aText;
    ASSERT_EQ(a.asDouble(), std::strtod(aText.c_str(), nullptr)) << aText;
    if (expected == 0) {
      ++numEqual;
      ByteVector aBytes;
      ByteVector bBytes;
      a.ToByteVector(aBytes);
      b.ToByteVector(bBytes);
      ASSERT_EQ(aBytes, bBytes);
    }
  }
  EXPECT_GT(numEqual, 100);
}

TEST(KorvelNumber, FixedFormatRounds) {
  struct Case {
    const char* number;
    const wchar_t* format;
    const char* text;
  };
  const Case cases[] = {
      {"1.005", L"F2", "1.01"},  {"-1.005", L"F2", "-1.01"}, {"1.0049999", L"F2", "1.00"},
      {"9.995", L"F2", "10.00"}, {"0.004", L"F2", "0.00"},   {"-0.004", L"F2", "0.00"},
      {"0.5", L"F0", "1"},       {"0.05", L"F1", "0.1"},     {"0.005", L"F1", "0.0"},
      {"1234", L"F0", "1234"},   {"0", L"F3", "0.000"},      {"99.99", L"F1", "100.0"},
      {"1E40", L"F1", nullptr},  {"12.5", L"E", "1.25E+1"},  {"-0.00125", L"E", "-1.25E-3"},
      {"0", L"E", "0E+0"},       {"0.00001", L"F2", "0.00"},
  };
  const std::string large = "1" + std::string(40, '0') + ".0";
  for (const auto& [number, format, text] : cases) {
    EXPECT_EQ(Text(Number(number), format), text ? text : large) << number;
  }
}

TEST(KorvelNumberDeathTest, UnknownFormat) {
  for (const wchar_t* format : {L"X", L"F", L"F127", L"F-1", L"e"}) {
    EXPECT_DEATH(KorvelNumber().asString(format), "unknown number format");
  }
}

TEST(KorvelNumber, IntegersComeAndGo) {
  for (const std::int64_t value : {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{99},
                                   std::int64_t{100}, std::int64_t{-10000}, INT64_MAX, INT64_MIN, INT64_MAX - 1}) {
    std::int64_t back = 5;
    EXPECT_TRUE(KorvelNumber::FromInteger(value).asInteger(back));
    EXPECT_EQ(back, value);
    EXPECT_EQ(Text(KorvelNumber::FromInteger(value)), std::to_string(value));
  }
  std::int64_t value = 5;
  EXPECT_TRUE(Number("-12.99").asInteger(value));
  EXPECT_EQ(value, -12);
  EXPECT_TRUE(Number("1E-100").asInteger(value));
  EXPECT_EQ(value, 0);
  value = 5;
  for (const char* text : {"9223372036854775808", "-9223372036854775809", "1E19", "1E100"}) {
    EXPECT_FALSE(Number(text).asInteger(value)) << text;
    EXPECT_EQ(value, 5);
  }
}

TEST(KorvelNumber, DoublesCountAsTheirShortestText) {
  const std::pair<double, const char*> cases[] = {{0.1, "0.1"},
                                                  {-0.0, "0"},
                                                  {1e22, "10000000000000000000000"},
                                                  {1.0 / 3, "0.3333333333333333"},
                                                  {5e-324, "0"},
                                                  {-2.5e100, "-2.5E+100"}};
  for (const auto& [value, text] : cases) {
    KorvelNumber number;
    EXPECT_TRUE(KorvelNumber::FromDouble(value, number));
    EXPECT_EQ(Text(number), text);
    if (text[0] != '0' || text[1]) {
      EXPECT_EQ(number.asDouble(), value);
    }
  }
  KorvelNumber number;
  for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, DBL_MAX, 1e128}) {
    EXPECT_FALSE(KorvelNumber::FromDouble(value, number)) << value;
  }
}

TEST(KorvelNumber, ByteFormReadsBackAndNoOtherIsRead) {
  for (const std::string& text : {std::string("0"), std::string("-1"), std::string("9.9E127"), std::string("-1E-126"),
                                  std::string("-0.01"), Repeat("12", 20)}) {
    ByteVector bytes;
    Number(text).ToByteVector(bytes);
    KorvelNumber number = KorvelNumber::FromInteger(3);
    EXPECT_EQ(number.FromByteVector(bytes.data()), bytes.data() + bytes.size());
    EXPECT_EQ(number, Number(text));
  }
  const ByteVector malformed[] = {
      {0},             // no head
      {22, 193},       // too long
      {1, 193},        // a head without digits
      {2, 128, 5},     // digits of zero
      {2, 0, 5},       // no head of any number
      {3, 192, 0, 5},  // zeros in front
      {3, 192, 5, 0},  // zeros behind
      {2, 192, 100},   // no digit pair
  };
  for (ByteVector bytes : malformed) {
    bytes.resize(32);
    KorvelNumber number = KorvelNumber::FromInteger(3);
    try {
      number.FromByteVector(bytes.data());
      ADD_FAILURE() << testing::PrintToString(bytes);
    } catch (const ErrorMessage& error) {
      EXPECT_EQ(error.GetCode(), kMsgBytesMalformed);
    }
    EXPECT_EQ(number, KorvelNumber::FromInteger(3));
  }
}

}  // namespace
