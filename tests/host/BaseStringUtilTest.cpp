#include "Host/BaseStringUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <tuple>

#include "Host/SUCompatFlag.h"
#include "Host/VoidID.h"
#include "HostMemory/MemoryGateway.h"

namespace {

TEST(BaseStringUtil, FloatTextReadsBackAndIsNoInteger) {
  // The shortest text and the one without an exponent; null: too long to write down.
  const std::tuple<double, const wchar_t*, const wchar_t*> cases[] = {
      {-0.0, L"-0.0", L"-0.0"},
      {100000.0, L"100000.0", L"100000.0"},
      {1.0 / 3, L"0.3333333333333333", L"0.3333333333333333"},
      {0.00001, L"0.00001", L"0.00001"},
      {1e-6, L"1e-06", L"0.000001"},
      {1e15, L"1000000000000000.0", L"1000000000000000.0"},
      {1e16, L"1e+16", L"10000000000000000.0"},
      {DBL_MAX, L"", nullptr},
      {5e-324, L"", nullptr},
      {std::numeric_limits<double>::quiet_NaN(), L"nan", L"nan"},
      {-std::numeric_limits<double>::infinity(), L"-inf", L"-inf"},
  };
  for (const auto& [value, shortest, fixed] : cases) {
    SCOPED_TRACE(value);
    for (const bool bFixed : {false, true}) {
      const KXString text = BaseStringUtil::StringFrom(value, bFixed);
      EXPECT_TRUE(!fixed || text == (bFixed ? fixed : shortest)) << text;
      EXPECT_TRUE(std::isnan(value) || std::strtod(text.ToUTF8().c_str(), nullptr) == value) << text;
      EXPECT_TRUE(!bFixed || text.find(L'e') == KXString::npos) << text;
    }
  }
}

TEST(BaseStringUtil, IntegerText) {
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<unsigned>::max()), L"4294967295");
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<long>::min()), L"-9223372036854775808");
  EXPECT_EQ(BaseStringUtil::StringFrom(std::numeric_limits<unsigned long>::max()), L"18446744073709551615");
}

TEST(BaseStringUtil, ReadsIntegersStrictly) {
  const std::tuple<const wchar_t*, std::optional<int>, std::optional<unsigned>> cases[] = {
      {L"+7", 7, 7u},
      {L"-1", -1, {}},
      {L"2147483647", 2147483647, 2147483647u},
      {L"2147483648", {}, 2147483648u},
      {L"-2147483648", std::numeric_limits<int>::min(), {}},
      {L"4294967295", {}, 4294967295u},
      {L"4294967296", {}, {}},
      {L"", {}, {}},
      {L"-", {}, {}},
      {L" 1", {}, {}},
      {L"1 ", {}, {}},
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
  const std::tuple<const wchar_t*, const wchar_t*, int> cases[] = {
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
  EXPECT_FALSE(BaseStringUtil::CaseInsensitiveFindPatternAtStart(L"S_TEL", L"S_TELM"));
  EXPECT_FALSE(BaseStringUtil::CaseInsensitiveFindPatternAtStart(L"XS_TELM", L"S_TELM"));
}

TEST(BaseStringUtil, TrimsAndEscapes) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"  ", L""}, {L"a  ", L"a"}, {L" a b", L" a b"}, {L"a\t ", L"a\t"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(BaseStringUtil::TrimTrailingBlanks(text), expected);
  }
  EXPECT_EQ(BaseStringUtil::EscapeCharacter(L"a%b%", L'%', L'\\'), L"a\\%b\\%");
  EXPECT_EQ(BaseStringUtil::StringFrom("\xe9", kCodePageLatin1), L"é");
}

TEST(SystemUtility, ReadsTheEnvironmentAnew) {
  KXString value(L"before");
  unsetenv("RQ_HOST_TEST");
  EXPECT_FALSE(SystemUtility::Getenv(L"RQ_HOST_TEST", value));
  EXPECT_EQ(value, L"before");
  setenv("RQ_HOST_TEST", "gr\xc3\xbcn", 1);
  EXPECT_TRUE(SystemUtility::Getenv(L"RQ_HOST_TEST", value));
  EXPECT_EQ(value, L"grün");
  unsetenv("RQ_HOST_TEST");
}

TEST(VoidID, TextAndByteForm) {
  const VoidIDVector ids{VoidID(), VoidID(-1, 0xfffffffe), VoidID(3001, 42), VoidID(3002, 0),
                         VoidID(3002, UniqueNum())};
  EXPECT_TRUE(std::is_sorted(ids.begin() + 1, ids.end()));
  EXPECT_EQ(ids[2].ToString(), L"3001:42");
  EXPECT_TRUE(VoidID::NullID.IsNullID() && !VoidID::NullID.m_uniqueNum.IsDefined());
  for (const VoidID& id : ids) {
    VoidID read(1, 1);
    EXPECT_TRUE(VoidID::StringToVoidID(id.ToString(), read));
    EXPECT_EQ(read, id);
  }
  for (const wchar_t* text : {L"", L":", L"3001", L"3001:", L":42", L"+3:4", L"03:4", L"3:04", L" 3:4", L"3:4 ",
                              L"3:-1", L"3:4:5", L"3:4294967296", L"a:b"}) {
    VoidID id(1, 1);
    EXPECT_FALSE(VoidID::StringToVoidID(text, id) || VoidID::IsStringAVoidID(text)) << KXString(text);
    EXPECT_EQ(id, VoidID(1, 1));
  }
  ByteVector bytes;
  VoidIDVectorUtil::ToByteVector(bytes, ids);
  VoidIDVector read = {VoidID(9, 9)};
  EXPECT_EQ(VoidIDVectorUtil::FromByteVector(bytes.data(), read), bytes.data() + bytes.size());
  EXPECT_EQ(read, ids);
}

TEST(CompatFlag, ValueTextDecidesAndTheSessionGoesFirst) {
  MemoryGateway gateway;
  const KXString name(L"TELM_HOST_TEST");
  KXString text(L"before");
  EXPECT_FALSE(SOCompatFlag::GetBool(name, &gateway) || SOCompatFlag::GetString(text, name, &gateway));
  EXPECT_TRUE(text.empty());
  const std::pair<const wchar_t*, bool> values[] = {
      {L"TRUE", true}, {L"0", false}, {L"", false}, {L"11", false}, {L"1", true}};
  for (const auto& [value, bOn] : values) {
    SCOPED_TRACE(KXString(value));
    SUCompatFlag::SetString(name, value);
    EXPECT_EQ(SUCompatFlag::GetBool(name), bOn);
    EXPECT_EQ(SOCompatFlag::GetBool(name, &gateway), bOn);
    EXPECT_TRUE(SOCompatFlag::GetString(text, name, nullptr));
    EXPECT_EQ(text, value);
  }
  gateway.SetSessionProperty(name, L"0");
  EXPECT_FALSE(SOCompatFlag::GetBool(name, &gateway));
  EXPECT_TRUE(SOCompatFlag::GetString(text, name, &gateway) && text == L"0");
  SUCompatFlag::Reset(name);
  EXPECT_FALSE(SUCompatFlag::GetBool(name));
  SUCompatFlag::AddLegacyVariable(L"HostTestOld");
  EXPECT_TRUE(SUCompatFlag::IsLegacyVariable(L"HOSTTESTOLD") && !SUCompatFlag::IsLegacyVariable(L"HostTest"));
}

}  // namespace
