#include "Host/DataBlobUtil.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <tuple>

#include "Host/ErrorMessage.h"

namespace {

template <class... Values>
ByteVector FormOf(const Values&... values) {
  ByteVector bytes;
  (DataBlobUtil::ToByteVector(bytes, values), ...);
  return bytes;
}

template <class... Values>
const_iterator ExpectNext(const_iterator cursor, const Values&... values) {
  const auto expectOne = [&cursor]<class Value>(const Value& value) {
    Value read{};
    cursor = DataBlobUtil::FromByteVector(cursor, read);
    EXPECT_EQ(read, value);
    if constexpr (requires { value.size(); }) {  // a count that cannot be is refused before room is made
      const ByteVector bytes{0xff, 0xff, 0xff, 0xff, 1, 2, 3};
      const BoundedRead bounds(bytes);
      EXPECT_THROW(DataBlobUtil::FromByteVector(bytes.data(), read), ErrorMessage);
    }
  };
  (expectOne(values), ...);
  return cursor;
}

TEST(DataBlobUtil, FormsAreFixed) {
  EXPECT_EQ(FormOf(true, std::uint16_t{0x0102}, std::int32_t{-2}), (ByteVector{1, 0x02, 0x01, 0xfe, 0xff, 0xff, 0xff}));
  EXPECT_EQ(FormOf(std::uint64_t{0x0102030405060708}), (ByteVector{8, 7, 6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(FormOf(1.0, -0.0), (ByteVector{0, 0, 0, 0, 0, 0, 0xf0, 0x3f, 0, 0, 0, 0, 0, 0, 0, 0x80}));
  EXPECT_EQ(FormOf(std::nan("7")), (ByteVector{7, 0, 0, 0, 0, 0, 0xf8, 0x7f}));
  EXPECT_EQ(FormOf(KXString(L"a\u00e9")), (ByteVector{3, 0, 0, 0, 'a', 0xc3, 0xa9}));
  int object = 0;
  void* pRead = nullptr;
  DataBlobUtil::FromByteVector(FormOf(static_cast<const void*>(&object)).data(), pRead);
  EXPECT_EQ(pRead, &object);
  EXPECT_EQ(FormOf(static_cast<void*>(&object)), FormOf(static_cast<const void*>(&object))) << "no bool";
  KXString text;
  DataBlobUtil::FromByteVector(FormOf(KXNString("caf\xc3\xa9")).data(), text, false);  // by the code page
  EXPECT_EQ(text, L"caf\u00e9");
}

TEST(DataBlobUtil, ValuesReadBackAndEveryCutIsFound) {
  const std::tuple values(
      true, false, std::uint8_t{255}, std::int16_t{-32768}, std::uint16_t{65535}, INT32_MIN, UINT32_MAX, INT64_MIN,
      UINT64_MAX, -DBL_MAX, DBL_MIN, HUGE_VAL, KXString(L"zero\0inside", 11), KXString(L"\u007f\u0080\u20ac"),
      KXString(L"\u0080"), KXString(2, static_cast<wchar_t>(0xffffffff)), KXNString("bytes \xff\0 and zero", 17),
      KXStringPair(L"block", L""), KXStringVector{L"", L"\u20ac"}, KXStringVector{},
      Int32Vector{INT32_MIN, 0, INT32_MAX}, UInt32Vector{UINT32_MAX}, UInt16Vector{0, UINT16_MAX, 3},
      ByteVector{0, 255}, BooleanVector{true, false, true}, ByteVectorVector{{}, {1}, {2, 3}});
  const ByteVector bytes = std::apply([](const auto&... each) { return FormOf(each...); }, values);
  const auto readAll = [&values](const_iterator cursor) {
    return std::apply([cursor](const auto&... each) { return ExpectNext(cursor, each...); }, values);
  };
  EXPECT_EQ(readAll(bytes.data()), bytes.data() + bytes.size());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    SCOPED_TRACE(length);
    const ByteVector cut(bytes.data(), bytes.data() + length);
    const BoundedRead bounds(cut);
    try {
      readAll(cut.data());
      ADD_FAILURE() << "the cut was not noticed";
    } catch (const ErrorMessage& error) {
      ASSERT_EQ(error.GetCode(), kMsgBytesEndTooEarly);
      const std::size_t offset = std::stoul(error.GetArgs()[1].ToUTF8());
      EXPECT_LE(offset, length);
      EXPECT_GT(offset + std::stoul(error.GetArgs()[0].ToUTF8()), length);
      EXPECT_EQ(error.GetArgs()[2].ToUTF8(), std::to_string(length));
    }
  }
}

TEST(BoundedRead, ScopesNestAndEnd) {
  const ByteVector bytes(8);
  const ByteVector other(4);
  const const_iterator begin = bytes.data();
  {
    const BoundedRead outer(begin, begin + 6);
    {
      const BoundedRead inner(begin, begin + 3);
      EXPECT_THROW(DataBlobUtil::RequireReadable(begin, 4), ErrorMessage);
    }
    EXPECT_NO_THROW(DataBlobUtil::RequireReadable(begin + 2, 4));
    EXPECT_THROW(DataBlobUtil::RequireReadable(begin + 3, 4), ErrorMessage);
    EXPECT_NO_THROW(DataBlobUtil::RequireReadable(other.data(), 4));
    EXPECT_THROW(outer.RequireAtEnd(begin + 5), ErrorMessage);
    EXPECT_NO_THROW(outer.RequireAtEnd(begin + 6));
  }
  EXPECT_NO_THROW(DataBlobUtil::RequireReadable(begin + 4, 4));
}

TEST(CrcUtil, GenerateCRC32) {
  const std::pair<std::string, std::uint32_t> cases[] = {{"", 0}, {"123456789", 0xcbf43926}};
  for (const auto& [text, crc] : cases) {
    const auto* const pText = reinterpret_cast<const std::uint8_t*>(text.data());
    EXPECT_EQ(CrcUtil::GenerateCRC32(pText, static_cast<int>(text.size())), crc) << text;
  }
}

}  // namespace
