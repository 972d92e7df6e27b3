#include "Host/DataBlobUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "Host/ErrorMessage.h"
#include "Host/VoidID.h"

namespace {

template <class Value>
void ExpectReadsBack(const Value& value) {
  ByteVector bytes{0xAA};  // a form does not depend on where it begins
  DataBlobUtil::ToByteVector(bytes, value);
  Value read{};
  const BoundedRead bounds(bytes);
  bounds.RequireAtEnd(DataBlobUtil::FromByteVector(bytes.data() + 1, read));
  EXPECT_EQ(read, value);
}

template <class Number>
void ExpectLimitsReadBack() {
  using Limits = std::numeric_limits<Number>;
  for (const Number value : {Limits::lowest(), Limits::min(), Limits::max(), Number(0), Number(1)})
    ExpectReadsBack(value);
}

TEST(DataBlobUtil, NumbersReadBack) {
  ExpectReadsBack(true);
  ExpectReadsBack(false);
  ExpectLimitsReadBack<std::uint8_t>();
  ExpectLimitsReadBack<std::int16_t>();
  ExpectLimitsReadBack<std::uint16_t>();
  ExpectLimitsReadBack<std::int32_t>();
  ExpectLimitsReadBack<std::uint32_t>();
  ExpectLimitsReadBack<std::int64_t>();
  ExpectLimitsReadBack<std::uint64_t>();
  ExpectLimitsReadBack<double>();
  ExpectReadsBack(std::numeric_limits<double>::infinity());

  for (const double value : {-0.0, std::nan("7")}) {  // equal to more, or less, than itself: the bits count
    ByteVector bytes;
    DataBlobUtil::ToByteVector(bytes, value);
    double read = 1;
    DataBlobUtil::FromByteVector(bytes.data(), read);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(value));
  }

  int object = 0;
  ByteVector bytes;
  DataBlobUtil::ToByteVector(bytes, static_cast<const void*>(&object));
  void* pRead = nullptr;
  DataBlobUtil::FromByteVector(bytes.data(), pRead);
  EXPECT_EQ(pRead, &object);
}

TEST(DataBlobUtil, FormsAreFixed) {
  ByteVector bytes;
  DataBlobUtil::ToByteVector(bytes, true);
  DataBlobUtil::ToByteVector(bytes, std::uint16_t{0x0102});
  DataBlobUtil::ToByteVector(bytes, std::int32_t{-2});
  DataBlobUtil::ToByteVector(bytes, std::uint64_t{0x0102030405060708});
  DataBlobUtil::ToByteVector(bytes, 1.0);
  DataBlobUtil::ToByteVector(bytes, KXString(L"a\u00e9"));
  DataBlobUtil::ToByteVector(bytes, UInt16Vector{7, 8});
  const ByteVector expected = {1,                                              //
                               0x02, 0x01,                                     //
                               0xfe, 0xff, 0xff, 0xff,                         //
                               8,    7,    6,    5,    4,   3,    2,    1,     //
                               0,    0,    0,    0,    0,   0,    0xf0, 0x3f,  //
                               3,    0,    0,    0,    'a', 0xc3, 0xa9,        //
                               2,    0,    0,    0,    7,   0,    8,    0};
  EXPECT_EQ(bytes, expected);
}

TEST(DataBlobUtil, AnyTextReadsBack) {
  ExpectReadsBack(KXString());
  ExpectReadsBack(KXString(L"plain"));
  ExpectReadsBack(KXString(L"zero\0inside", 11));
  for (const std::uint32_t character :
       {0x7fu, 0x80u, 0x7ffu, 0x800u, 0xd800u, 0xdfffu, 0xfffdu, 0xffffu, 0x10000u, 0x10ffffu, 0x110000u, 0x1fffffu,
        0x200000u, 0x3ffffffu, 0x4000000u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
    ExpectReadsBack(KXString(3, static_cast<wchar_t>(character)));
  }
  constexpr unsigned kSeed = 32;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  for (int round = 0; round < 1000; ++round) {
    KXString text;
    for (int length = static_cast<int>(random() % 20); length > 0; --length) {
      text.append(static_cast<wchar_t>(random() >> random() % 32));
    }
    ExpectReadsBack(text);
    ExpectReadsBack(KXStringPair(text, text + L"x"));
  }
}

TEST(DataBlobUtil, StringsAndVectorsReadBack) {
  ExpectReadsBack(KXNString("bytes \xff\0 and zero", 17));
  ExpectReadsBack(KXStringPair(L"block", L""));
  ExpectReadsBack(KXStringVector{L"", L"one", L"\u20ac"});
  ExpectReadsBack(KXStringVector{});
  ExpectReadsBack(Int32Vector{INT32_MIN, 0, INT32_MAX});
  ExpectReadsBack(UInt32Vector{UINT32_MAX});
  ExpectReadsBack(UInt16Vector{0, UINT16_MAX});
  ExpectReadsBack(ByteVector{0, 255});
  ExpectReadsBack(BooleanVector{true, false, true});
  ExpectReadsBack(ByteVectorVector{{}, {1}, {2, 3}});
}

TEST(DataBlobUtil, NarrowTextIsReadByTheCodePage) {
  ByteVector bytes;
  DataBlobUtil::ToByteVector(bytes, KXNString("caf\xc3\xa9"));
  KXString text;
  DataBlobUtil::FromByteVector(bytes.data(), text, false);
  EXPECT_EQ(text, L"caf\u00e9");
}

/// One of each primitive, read back in the order written.
class SampleBuffer {
 public:
  SampleBuffer() {
    Add(true);
    Add(std::uint8_t{1});
    Add(std::int16_t{-2});
    Add(std::uint16_t{3});
    Add(std::int32_t{-4});
    Add(std::uint32_t{5});
    Add(std::int64_t{-6});
    Add(std::uint64_t{7});
    Add(8.5);
    Add(KXString(L"nine\u20ac"));
    Add(KXNString("ten"));
    Add(KXStringPair(L"eleven", L"11"));
    Add(KXStringVector{L"twelve", L"12"});
    Add(Int32Vector{13, 14});
    Add(UInt32Vector{15});
    Add(UInt16Vector{16, 17, 18});
    Add(ByteVector{19, 20});
    Add(BooleanVector{true, false});
    Add(ByteVectorVector{{21}, {22, 23}});
    VoidID(3001, 24).ToByteVector(m_bytes);
    m_readers.push_back([](const_iterator cursor) { return VoidID().FromByteVector(cursor); });
  }

  const ByteVector& Bytes() const { return m_bytes; }

  const_iterator Read(const_iterator cursor) const {
    for (const auto& read : m_readers) cursor = read(cursor);
    return cursor;
  }

 private:
  template <class Value>
  void Add(const Value& value) {
    DataBlobUtil::ToByteVector(m_bytes, value);
    m_readers.push_back([value](const_iterator cursor) {
      Value read{};
      cursor = DataBlobUtil::FromByteVector(cursor, read);
      EXPECT_EQ(read, value);
      return cursor;
    });
  }

  ByteVector m_bytes;
  std::vector<std::function<const_iterator(const_iterator)>> m_readers;
};

TEST(BoundedRead, FindsEveryCut) {
  const SampleBuffer sample;
  EXPECT_EQ(sample.Read(sample.Bytes().data()), sample.Bytes().data() + sample.Bytes().size());
  for (std::size_t length = 0; length < sample.Bytes().size(); ++length) {
    SCOPED_TRACE(length);
    const ByteVector cut(sample.Bytes().begin(), sample.Bytes().begin() + static_cast<std::ptrdiff_t>(length));
    const BoundedRead bounds(cut);
    try {
      sample.Read(cut.data());
      ADD_FAILURE() << "the cut was not noticed";
    } catch (const ErrorMessage& error) {
      ASSERT_EQ(error.GetCode(), kMsgBytesEndTooEarly);
      const KXStringVector& args = error.GetArgs();
      EXPECT_LE(std::stoul(args[1].ToUTF8()), length);
      EXPECT_GT(std::stoul(args[0].ToUTF8()) + std::stoul(args[1].ToUTF8()), length);
      EXPECT_EQ(args[2].ToUTF8(), std::to_string(length));
    }
  }
}

TEST(BoundedRead, CountsThatCannotBeAreRefusedBeforeRoomIsMade) {
  const ByteVector bytes{0xff, 0xff, 0xff, 0xff, 1, 2, 3};
  const BoundedRead bounds(bytes);
  const auto expectRefused = [&bytes](auto value) {
    EXPECT_THROW(DataBlobUtil::FromByteVector(bytes.data(), value), ErrorMessage);
  };
  expectRefused(KXString());
  expectRefused(KXNString());
  expectRefused(KXStringVector());
  expectRefused(Int32Vector());
  expectRefused(UInt32Vector());
  expectRefused(UInt16Vector());
  expectRefused(ByteVector());
  expectRefused(BooleanVector());
  expectRefused(ByteVectorVector());
}

TEST(BoundedRead, ScopesNestAndEnd) {
  const ByteVector bytes(8);
  const auto reads = [](const_iterator cursor) {
    std::uint32_t value;
    try {
      DataBlobUtil::FromByteVector(cursor, value);
      return true;
    } catch (const ErrorMessage&) {
      return false;
    }
  };
  const_iterator begin = bytes.data();
  {
    const BoundedRead outer(begin, begin + 6);
    EXPECT_FALSE(reads(begin + 4));
    {
      const BoundedRead inner(begin, begin + 3);
      EXPECT_FALSE(reads(begin));
    }
    EXPECT_TRUE(reads(begin + 2));
    EXPECT_FALSE(reads(begin + 3));
    const ByteVector other(4);
    EXPECT_TRUE(reads(other.data()));
    EXPECT_THROW(outer.RequireAtEnd(begin + 5), ErrorMessage);
    EXPECT_NO_THROW(outer.RequireAtEnd(begin + 6));
  }
  EXPECT_TRUE(reads(begin + 4));
}

/// By definition, bit by bit.
std::uint32_t BitwiseCrc32(const ByteVector& bytes, std::size_t begin) {
  std::uint32_t crc = 0xffffffff;
  for (std::size_t i = begin; i < bytes.size(); ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
  }
  return ~crc;
}

TEST(CrcUtil, GenerateCRC32) {
  const auto* pDigits = reinterpret_cast<const std::uint8_t*>("123456789");
  EXPECT_EQ(CrcUtil::GenerateCRC32(pDigits, 9), 0xCBF43926u);
  EXPECT_EQ(CrcUtil::GenerateCRC32(nullptr, 0), 0u);
  std::mt19937 random(8);
  ByteVector bytes;
  for (int length = 0; length < 40; ++length) {
    for (std::size_t begin = 0; begin <= bytes.size(); ++begin) {
      EXPECT_EQ(CrcUtil::GenerateCRC32(bytes.data() + begin, static_cast<int>(bytes.size() - begin)),
                BitwiseCrc32(bytes, begin));
    }
    bytes.push_back(static_cast<std::uint8_t>(random()));
  }
}

}  // namespace
