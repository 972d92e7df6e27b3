#include "Host/KXString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>

#include "host/Threads.h"

namespace {

TEST(KXString, IsOnePointerAndEmptyIsNull) {
  static_assert(sizeof(KXString) == sizeof(void*));
  for (const KXString& empty : {KXString(), KXString(L""), KXString(static_cast<const wchar_t*>(nullptr)),
                                KXString(0u, L'x'), KXString(L"abc").substr(3)}) {
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.capacity(), 0u);
    EXPECT_STREQ(empty.c_str(), L"");
  }
}

TEST(KXString, CopiesShareUntilOneChanges) {
  const KXString original(L"customer");
  KXString copy(original);
  EXPECT_EQ(copy.c_str(), original.c_str());
  EXPECT_EQ(original.substr(0).c_str(), original.c_str());

  const std::pair<void (*)(KXString&), const wchar_t*> changes[] = {
      {[](KXString& s) { s.append(L"s"); }, L"customers"},
      {[](KXString& s) { s = L"y"; }, L"y"},
      {[](KXString& s) { s.reserve(100); }, L"customer"},
      {[](KXString& s) { s.clear(); }, L""},
  };
  for (const auto& [change, expected] : changes) {
    SCOPED_TRACE(KXString(expected));
    KXString changed(original);
    change(changed);
    EXPECT_EQ(changed, expected);
    EXPECT_NE(changed.c_str(), original.c_str());
    EXPECT_EQ(original, L"customer");
  }

  const KXString moved(std::move(copy));
  EXPECT_EQ(moved.c_str(), original.c_str());
  EXPECT_TRUE(copy.empty());  // NOLINT(bugprone-use-after-move): a moved-from string is empty
}

TEST(KXString, AppendsInPlaceWithGeometricGrowth) {
  KXString text;
  std::wstring expected;
  int buffers = 0;
  for (const wchar_t* buffer = nullptr; expected.size() < 100000; buffer = text.c_str()) {
    expected.push_back(static_cast<wchar_t>(L'a' + expected.size() % 26));
    text.append(expected.back());
    buffers += text.c_str() != buffer;
  }
  EXPECT_EQ(text, expected);
  EXPECT_LE(buffers, 20);
  KXString reserved;
  reserved.reserve(1000);
  const wchar_t* const buffer = reserved.c_str();
  reserved.append(1000, L'x');
  EXPECT_EQ(reserved.c_str(), buffer);
}

TEST(KXString, TakesPartsOfItself) {
  for (const std::size_t room : {0u, 100u}) {
    SCOPED_TRACE(room);
    KXString text(L"abcdef");
    text.reserve(room);
    text.append(text);
    EXPECT_EQ(text, L"abcdefabcdef");
    text.append(text.view().substr(1, 2));
    EXPECT_EQ(text, L"abcdefabcdefbc");
    text.assign(text.view().substr(4, 4));
    EXPECT_EQ(text, L"efab");
  }
  const KXString ab = L'a' + KXString(L"b");
  EXPECT_EQ(ab + ab + L"c" + L'd', L"ababcd");
}

TEST(KXString, RefusesMoreThanItsLengthCanSay) {
  KXString text(L"abc");
  EXPECT_THROW(text.append(KXString::kMaxLength, L'x'), std::length_error);
  EXPECT_THROW(text.reserve(KXString::kMaxLength + 1), std::length_error);
  EXPECT_EQ(text, L"abc");
}

TEST(KXString, OrdersByUnsignedCode) {
  const wchar_t high = static_cast<wchar_t>(0xfffffff0);
  const KXString ascending[] = {L"", KXString(1, L'\0'), L"A", L"AB", L"a", L"\x10ffff", KXString(1, high)};
  for (std::size_t i = 0; i < std::size(ascending); ++i) {
    for (std::size_t j = 0; j < std::size(ascending); ++j) {
      SCOPED_TRACE(testing::Message() << i << " and " << j);
      const KXString &a = ascending[i], &b = ascending[j];
      EXPECT_EQ(a < b, i < j);
      EXPECT_EQ(a < b.view(), i < j);
      EXPECT_EQ(KXString::equals(a, b), i == j);
      EXPECT_EQ(a.compare(b) > 0, i > j);
      EXPECT_EQ(std::hash<KXString>()(a) == std::hash<KXString>()(KXString(b.view())), i == j);
    }
  }
}

TEST(KXString, SharesBetweenThreads) {
  const KXString shared(L"shared between threads");
  RunThreads(4, [copy = shared](int) {
    for (int i = 0; i < 20000; ++i) {
      KXString own(copy);
      if (i % 3 == 0) own.append(L'x');
      const KXString other(std::move(own));
      ASSERT_EQ(other.size(), copy.size() + (i % 3 == 0));
    }
  });
  EXPECT_EQ(shared, L"shared between threads");
}

/// Bytes, the characters they are read as, and the offset of the first byte that is not standard UTF-8.
struct Utf8Case {
  std::string bytes;
  KXString text;
  std::size_t errorOffset = std::string::npos;
};

TEST(KXString, ReadsUtf8) {
  const std::string zero(1, '\0');
  const Utf8Case cases[] = {
      {"", L""},
      {zero + "a", KXString(1, L'\0') + L"a"},
      {"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", L"\x00e4\x20ac\x1f600"},
      {"a\x80z", L"a\xfffdz", 1},                  // continuation alone
      {"\xe2\x82", L"\xfffd\xfffd", 0},            // cut off
      {"\xc0\x80", L"\xfffd\xfffd", 0},            // longer than needed
      {"\xe0\x80\xaf", L"\xfffd\xfffd\xfffd", 0},  // longer than needed
      {"\xff", L"\xfffd", 0},                      // never a lead
      {"\xed\xa0\x80", L"\xd800", 0},              // surrogate
      {"x\xf4\x90\x80\x80", L"x\x110000", 1},      // above Unicode
      {"\xfe\x83\xbf\xbf\xbf\xbf\xbf", KXString(1, static_cast<wchar_t>(0xffffffff)), 0},
      {"\xfe\x84\x80\x80\x80\x80\x80", KXString(7, L'\xfffd'), 0},  // more than 32 bits
  };
  for (const auto& [bytes, text, errorOffset] : cases) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    EXPECT_EQ(KXString::FromUTF8(bytes), text);
    KXString strict(L"before");
    std::size_t offset = std::string::npos;
    EXPECT_EQ(KXString::FromUTF8Strict(bytes, strict, &offset), errorOffset == std::string::npos);
    EXPECT_EQ(offset, errorOffset);
    EXPECT_EQ(strict, errorOffset == std::string::npos ? text : KXString(L"before"));
    if (errorOffset == std::string::npos) {
      EXPECT_EQ(text.ToUTF8(), bytes);
    }
  }
}

TEST(KXString, Utf8KeepsAny32BitValue) {
  std::mt19937 random(20240607);
  for (unsigned bits = 0; bits <= 32; ++bits) {
    const std::uint64_t edge = std::uint64_t{1} << bits;
    for (const std::uint64_t value : {edge - 1, edge, edge + 1, std::uint64_t{random()} % edge}) {
      const KXString one(1, static_cast<wchar_t>(static_cast<std::uint32_t>(value)));
      ASSERT_EQ(KXString::FromUTF8(one.ToUTF8()), one) << std::hex << value;
    }
  }
}

}  // namespace
