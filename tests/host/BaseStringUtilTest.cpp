#include "Host/BaseStringUtil.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

#include "Host/SUCompatFlag.h"
#include "Host/VoidID.h"

namespace {

TEST(BaseStringUtil, FloatTextReadsBackAndIsNoInteger) {
  struct Case {
    double value;
    const wchar_t* shortest;
    const wchar_t* fixed;
  };
  const Case cases[] = {
      {0.0, L"0.0", L"0.0"},
      {-0.0, L"-0.0", L"-0.0"},
      {10.0, L"10.0", L"10.0"},
      {100000.0, L"100000.0", L"100000.0"},
      {0.1, L"0.1", L"0.1"},
      {-2.5, L"-2.5", L"-2.5"},
      {1.0 / 3, L"0.3333333333333333", L"0.3333333333333333"},
      {0.00001, L"0.00001", L"0.00001"},
      {1e-6, L"1e-06", L"0.000001"},
      {1e15, L"1000000000000000.0", L"1000000000000000.0"},
      {1e16, L"1e+16", L"10000000000000000.0"},
      {1.5e300, L"1.5e+300", nullptr},
      {DBL_MAX, L"1.7976931348623157e+308", nullptr},
      {5e-324, L"5e-324", nullptr},
      {std::numeric_limits<double>::quiet_NaN(), L"nan", L"nan"},
      {-std::numeric_limits<double>::infinity(), L"-inf", L"-inf"},
  };
  for (const auto& [value, shortest, fixed] : cases) {
    SCOPED_TRACE(value);
    for (const bool bFixed : {false, true}) {
      const KXString text = BaseStringUtil::StringFrom(value, bFixed);
      if (const wchar_t* expected = bFixed ? fixed : shortest) {
        EXPECT_EQ(text, expected);
      }
      if (std::isnan(value)) continue;
      EXPECT_EQ(std::strtod(text.ToUTF8().c_str(), nullptr), value);
      if (bFixed) {
        EXPECT_EQ(text.find(L'e'), KXString::npos);
      }
    }
  }
}

TEST(BaseStringUtil, IntegerText) {
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<int>::min()), L"-2147483648");
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<unsigned>::max()), L"4294967295");
  EXPECT_EQ(BaseStringUtil::StringFrom(short{-32768}), L"-32768");
  EXPECT_EQ(BaseStringUtil::StringFrom(static_cast<unsigned short>(65535)), L"65535");
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<long>::min()), L"-9223372036854775808");
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<unsigned long>::max()), L"18446744073709551615");
}

TEST(BaseStringUtil, ReadsIntegersStrictly) {
  struct Case {
    const wchar_t* text;
    std::optional<int> asInt;
    std::optional<unsigned> asUInt;
  };
  const Case cases[] = {
      {L"0", 0, 0u},
      {L"512", 512, 512u},
      {L"+7", 7, 7u},
      {L"-1", -1, {}},
      {L"2147483647", 2147483647, 2147483647u},
      {L"2147483648", {}, 2147483648u},
      {L"-2147483648", std::numeric_limits<int>::min(), {}},
      {L"4294967295", {}, 4294967295u},
      {L"4294967296", {}, {}},
      {L"", {}, {}},
      {L"-", {}, {}},
      {L"+-1", {}, {}},
      {L" 1", {}, {}},
      {L"1 ", {}, {}},
      {L"1.0", {}, {}},
      {L"0x10", {}, {}},
      {L"\x0663", {}, {}},  // a digit, but no decimal digit of ours
  };
  for (const auto& [text, asInt, asUInt] : cases) {
    SCOPED_TRACE(KXString(text));
    EXPECT_EQ(BaseStringUtil::IntFrom(text), asInt);
    EXPECT_EQ(BaseStringUtil::UIntFrom(text), asUInt);
    EXPECT_EQ(BaseStringUtil::IsInteger(text), asInt.has_value());
  }
}

TEST(BaseStringUtil, ComparesIgnoringCase) {
  struct Case {
    const wchar_t* a;
    const wchar_t* b;
    int order;
  };
  const Case cases[] = {
      {L"", L"", 0},    {L"", L"a", -1},  {L"No", L"NO", 0}, {L"abc", L"ABD", -1},
      {L"ab", L"A", 1}, {L"_", L"A", -1}, {L"[", L"a", -1},  {L"STRASSE", L"straße", -1},
      {L"é", L"É", 0},  {L"ж", L"Ж", 0},  {L"é", L"f", 1},   {L"\x10400", L"\x10428", 0},
  };
  for (const auto& [a, b, order] : cases) {
    SCOPED_TRACE(KXString(a) + L" " + b);
    EXPECT_EQ(BaseStringUtil::CaseInsensitiveCompare(a, b), order);
    EXPECT_EQ(BaseStringUtil::CaseInsensitiveCompare(b, a), -order);
    EXPECT_EQ(BaseStringUtil::IsCaseInsensitiveMatch(a, b), order == 0);
    EXPECT_EQ(BaseStringUtil::IsCaseInsensitiveLessThan(a, b), order < 0);
  }
  EXPECT_TRUE(BaseStringUtil::CaseInsensitiveFindPatternAtStart(L"s_telm_X", L"S_TELM"));
  EXPECT_TRUE(BaseStringUtil::CaseInsensitiveFindPatternAtStart(L"x", L""));
  EXPECT_FALSE(BaseStringUtil::CaseInsensitiveFindPatternAtStart(L"S_TEL", L"S_TELM"));
  EXPECT_FALSE(BaseStringUtil::CaseInsensitiveFindPatternAtStart(L"XS_TELM", L"S_TELM"));
}

TEST(BaseStringUtil, TrimsAndEscapes) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"", L""}, {L"  ", L""}, {L"a  ", L"a"}, {L" a b", L" a b"}, {L"a\t ", L"a\t"}};
  for (const auto& [text, expected] : cases) {
    KXString inPlace(text);
    BaseStringUtil::TrimTrailingBlanks(inPlace);
    EXPECT_EQ(inPlace, expected);
    EXPECT_EQ(BaseStringUtil::TrimTrailingBlanks(text), expected);
  }
  EXPECT_EQ(BaseStringUtil::EscapeCharacter(L"it's", L'\'', L'\''), L"it''s");
  EXPECT_EQ(BaseStringUtil::EscapeCharacter(L"a%b%", L'%', L'\\'), L"a\\%b\\%");
  EXPECT_EQ(BaseStringUtil::StringFrom("\xe9", kCodePageLatin1), L"é");
  EXPECT_EQ(BaseStringUtil::StringFrom("\xc3\xa9", kCodePageUtf8), L"é");
}

TEST(SystemUtility, ReadsTheEnvironmentAnew) {
  KXString value(L"before");
  unsetenv("RQ_HOST_TEST");
  EXPECT_FALSE(SystemUtility::Getenv(L"RQ_HOST_TEST", value));
  EXPECT_EQ(value, L"before");
  setenv("RQ_HOST_TEST", "gr\xc3\xbcn", 1);
  EXPECT_TRUE(SystemUtility::Getenv(L"RQ_HOST_TEST", value));
  EXPECT_EQ(value, L"grün");
  setenv("RQ_HOST_TEST", "", 1);
  EXPECT_TRUE(SystemUtility::Getenv(L"RQ_HOST_TEST", value));
  EXPECT_TRUE(value.empty());
  unsetenv("RQ_HOST_TEST");
}

TEST(VoidID, TextAndByteForm) {
  const VoidID ids[] = {VoidID(), VoidID(-1, 0), VoidID(3001, 42), VoidID(3001, 43), VoidID(3002, 0)};
  for (const VoidID& id : ids) {
    SCOPED_TRACE(id.ToString());
    VoidID read(1, 1);
    EXPECT_TRUE(VoidID::StringToVoidID(id.ToString(), read));
    EXPECT_EQ(read, id);
  }
  EXPECT_EQ(VoidID(3001, 42).ToString(), L"3001:42");
  EXPECT_TRUE(VoidID::NullID.IsNullID());
  EXPECT_FALSE(VoidID::NullID.m_uniqueNum.IsDefined());
  EXPECT_LT(VoidID(-1, 0xfffffffe), VoidID(3001, 42));
  EXPECT_LT(VoidID(3001, 43), VoidID(3002, 0));
  EXPECT_LT(VoidID(3001, 43), VoidID(3001, UniqueNum()));

  for (const wchar_t* text : {L"", L":", L"3001", L"3001:", L":42", L"+3:4", L"03:4", L"3:04", L" 3:4", L"3:4 ",
                              L"3:-1", L"3:4:5", L"3:4294967296", L"a:b"}) {
    SCOPED_TRACE(KXString(text));
    VoidID id(1, 1);
    EXPECT_FALSE(VoidID::StringToVoidID(text, id));
    EXPECT_FALSE(VoidID::IsStringAVoidID(text));
    EXPECT_EQ(id, VoidID(1, 1));
  }

  ByteVector bytes;
  const VoidIDVector written(std::begin(ids), std::end(ids));
  VoidIDVectorUtil::ToByteVector(bytes, written);
  ids[2].ToByteVector(bytes);
  VoidIDVector read = {VoidID(9, 9)};
  const_iterator cursor = VoidIDVectorUtil::FromByteVector(bytes.data(), read);
  EXPECT_EQ(read, written);
  VoidID last;
  EXPECT_EQ(last.FromByteVector(cursor), bytes.data() + bytes.size());
  EXPECT_EQ(last, ids[2]);
}

TEST(SUCompatFlag, ValueTextDecides) {
  const KXString name(L"TELM_HOST_TEST");
  KXString text(L"before");
  EXPECT_FALSE(SUCompatFlag::GetBool(name));
  EXPECT_FALSE(SUCompatFlag::GetString(text, name));
  EXPECT_TRUE(text.empty());
  const std::pair<const wchar_t*, bool> values[] = {
      {L"1", true}, {L"TRUE", true}, {L"0", false}, {L"", false}, {L"11", false}};
  for (const auto& [value, bOn] : values) {
    SCOPED_TRACE(KXString(value));
    SUCompatFlag::SetString(name, value);
    EXPECT_EQ(SUCompatFlag::GetBool(name), bOn);
    EXPECT_TRUE(SOCompatFlag::GetString(text, name, nullptr));
    EXPECT_EQ(text, value);
  }
  SUCompatFlag::SetBool(name, true);
  EXPECT_TRUE(SOCompatFlag::GetBool(name, nullptr));
  SUCompatFlag::Reset(name);
  EXPECT_FALSE(SUCompatFlag::GetBool(name));

  EXPECT_FALSE(SUCompatFlag::IsLegacyVariable(L"HostTestOld"));
  SUCompatFlag::AddLegacyVariable(L"HostTestOld");
  EXPECT_TRUE(SUCompatFlag::IsLegacyVariable(L"HOSTTESTOLD"));
}

}  // namespace
