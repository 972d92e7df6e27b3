#include "Host/DataBlobUtil.h"

#include <array>
#include <limits>

#include "Host/BaseStringUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/KXAssert.h"
#include "Host/SystemUtility.h"

namespace {

constexpr int kSlices = 8;
using CrcTable = std::array<std::array<std::uint32_t, 256>, kSlices>;

/// table[0][b] is the remainder of byte b; table[k][b] that of b with k zero bytes behind it.
constexpr CrcTable MakeCrcTable() {
  constexpr std::uint32_t kPolynomial = 0xEDB88320;
  CrcTable table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) ? (crc >> 1) ^ kPolynomial : crc >> 1;
    table[0][byte] = crc;
  }
  for (int slice = 1; slice < kSlices; ++slice) {
    for (int byte = 0; byte < 256; ++byte) {
      const std::uint32_t previous = table[slice - 1][byte];
      table[slice][byte] = (previous >> 8) ^ table[0][previous & 0xff];
    }
  }
  return table;
}

constexpr CrcTable kCrcTable = MakeCrcTable();

std::uint32_t Load32(const std::uint8_t* pData) {
  return std::uint32_t{pData[0]} | std::uint32_t{pData[1]} << 8 | std::uint32_t{pData[2]} << 16 |
         std::uint32_t{pData[3]} << 24;
}

void AppendCount(ByteVector& bv, std::size_t count) {
  KX_ASSERT(count <= std::numeric_limits<std::uint32_t>::max());
  DataBlobUtil::ToByteVector(bv, static_cast<std::uint32_t>(count));
}

/// Reads a count, and makes sure that so many elements can follow before anything is reserved for them.
const_iterator ReadCount(const_iterator start, std::size_t minElementSize, std::uint32_t& count) {
  start = DataBlobUtil::FromByteVector(start, count);
  DataBlobUtil::RequireReadable(start, std::uint64_t{count} * minElementSize);
  return start;
}

template <class Vector>
void AppendEach(ByteVector& bv, const Vector& values) {
  AppendCount(bv, values.size());
  for (const typename Vector::value_type& value : values) DataBlobUtil::ToByteVector(bv, value);
}

template <class Vector>
const_iterator ReadEach(const_iterator start, Vector& values, std::size_t minElementSize) {
  std::uint32_t count;
  start = ReadCount(start, minElementSize, count);
  values.clear();
  values.reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    typename Vector::value_type value{};
    start = DataBlobUtil::FromByteVector(start, value);
    values.push_back(std::move(value));
  }
  return start;
}

/// Least bytes of a string or a vector: its count.
constexpr std::size_t kCountSize = sizeof(std::uint32_t);

bool IsAscii(std::wstring_view text) {
  std::uint32_t all = 0;
  for (const wchar_t character : text) all |= static_cast<std::uint32_t>(character);
  return all < 0x80;
}

}  // namespace

std::uint32_t CrcUtil::GenerateCRC32(const std::uint8_t* pData, int nLength) {
  KX_ASSERT(nLength >= 0);
  std::uint32_t crc = 0xffffffff;
  for (; nLength >= kSlices; nLength -= kSlices, pData += kSlices) {
    const std::uint32_t low = crc ^ Load32(pData);
    const std::uint32_t high = Load32(pData + 4);
    crc = kCrcTable[7][low & 0xff] ^ kCrcTable[6][low >> 8 & 0xff] ^ kCrcTable[5][low >> 16 & 0xff] ^
          kCrcTable[4][low >> 24] ^ kCrcTable[3][high & 0xff] ^ kCrcTable[2][high >> 8 & 0xff] ^
          kCrcTable[1][high >> 16 & 0xff] ^ kCrcTable[0][high >> 24];
  }
  for (; nLength > 0; --nLength, ++pData) crc = crc >> 8 ^ kCrcTable[0][(crc ^ *pData) & 0xff];
  return ~crc;
}

thread_local constinit BoundedRead::Bounds BoundedRead::t_bounds{0, UINTPTR_MAX, nullptr};

BoundedRead::BoundedRead(const_iterator begin, const_iterator end, const Limits& limits)
    : m_bounds{reinterpret_cast<std::uintptr_t>(begin), reinterpret_cast<std::uintptr_t>(end), this},
      m_outer(t_bounds),
      m_limits(limits) {
  KX_ASSERT(m_bounds.m_begin <= m_bounds.m_end);
  t_bounds = m_bounds;
}

BoundedRead::~BoundedRead() { t_bounds = m_outer; }

void BoundedRead::RequireAtEnd(const_iterator cursor) const {
  const auto address = reinterpret_cast<std::uintptr_t>(cursor);
  if (address == m_bounds.m_end) return;
  KX_RAISE(kMsgBytesLeftOver, BaseStringUtil::StringFrom(address - m_bounds.m_begin),
           BaseStringUtil::StringFrom(m_bounds.m_end - m_bounds.m_begin));
}

KXString BoundedRead::GetOffset(const_iterator cursor) const {
  return BaseStringUtil::StringFrom(reinterpret_cast<std::uintptr_t>(cursor) - m_bounds.m_begin);
}

void BoundedRead::Enter(const_iterator cursor) {
  if (m_nesting == m_limits.m_maxNesting) {
    KX_RAISE(kMsgBytesNestTooDeeply, BaseStringUtil::StringFrom(m_limits.m_maxNesting), GetOffset(cursor));
  }
  if (m_objects == m_limits.m_maxObjects) {
    KX_RAISE(kMsgBytesHoldTooMuch, BaseStringUtil::StringFrom(m_limits.m_maxObjects), GetOffset(cursor));
  }
  ++m_nesting;
  ++m_objects;
}

void DataBlobUtil::RaiseMalformed(const_iterator start, const wchar_t* what) {
  const BoundedRead* const pScope = BoundedRead::Current();
  KX_RAISE(kMsgBytesMalformed, what, pScope ? pScope->GetOffset(start) : KXString(L"unknown"));
}

void DataBlobUtil::RaiseMalformedIfBounded(const_iterator start, const wchar_t* what) {
  if (BoundedRead::Current()) RaiseMalformed(start, what);
}

void DataBlobUtil::RaiseOverrun(const_iterator start, std::uint64_t nBytes) {
  const BoundedRead::Bounds& bounds = BoundedRead::t_bounds;
  KX_RAISE(kMsgBytesEndTooEarly, BaseStringUtil::StringFrom(nBytes),
           BaseStringUtil::StringFrom(reinterpret_cast<std::uintptr_t>(start) - bounds.m_begin),
           BaseStringUtil::StringFrom(bounds.m_end - bounds.m_begin));
}

void DataBlobUtil::ToByteVector(ByteVector& bv, const KXString& value) {
  if (!IsAscii(value)) return ToByteVector(bv, value.ToUTF8());
  AppendCount(bv, value.size());
  bv.insert(bv.end(), value.begin(), value.end());  // each character narrows to the byte it is in UTF-8
}

const_iterator DataBlobUtil::FromByteVector(const_iterator start, KXString& value, bool bUnicode) {
  std::uint32_t count;
  start = ReadCount(start, 1, count);
  const std::string_view content(reinterpret_cast<const char*>(start), count);
  value = bUnicode ? KXString::FromUTF8(content)
                   : BaseStringUtil::StringFrom(content, SystemUtility::GetMultiByteCodePage());
  return start + count;
}

void DataBlobUtil::ToByteVector(ByteVector& bv, const KXNString& value) {
  AppendCount(bv, value.size());
  bv.insert(bv.end(), value.begin(), value.end());
}

const_iterator DataBlobUtil::FromByteVector(const_iterator start, KXNString& value) {
  std::uint32_t count;
  start = ReadCount(start, 1, count);
  value.assign(reinterpret_cast<const char*>(start), count);
  return start + count;
}

void DataBlobUtil::ToByteVector(ByteVector& bv, const KXStringPair& value) {
  ToByteVector(bv, value.first);
  ToByteVector(bv, value.second);
}

const_iterator DataBlobUtil::FromByteVector(const_iterator start, KXStringPair& value, bool bUnicode) {
  start = FromByteVector(start, value.first, bUnicode);
  return FromByteVector(start, value.second, bUnicode);
}

void DataBlobUtil::ToByteVector(ByteVector& bv, const KXStringVector& value) { AppendEach(bv, value); }

const_iterator DataBlobUtil::FromByteVector(const_iterator start, KXStringVector& value, bool bUnicode) {
  std::uint32_t count;
  start = ReadCount(start, kCountSize, count);
  value.resize(count);
  for (KXString& element : value) start = FromByteVector(start, element, bUnicode);
  return start;
}

void DataBlobUtil::ToByteVector(ByteVector& bv, const Int32Vector& value) { AppendEach(bv, value); }
void DataBlobUtil::ToByteVector(ByteVector& bv, const UInt32Vector& value) { AppendEach(bv, value); }
void DataBlobUtil::ToByteVector(ByteVector& bv, const UInt16Vector& value) { AppendEach(bv, value); }
void DataBlobUtil::ToByteVector(ByteVector& bv, const BooleanVector& value) { AppendEach(bv, value); }
void DataBlobUtil::ToByteVector(ByteVector& bv, const ByteVectorVector& value) { AppendEach(bv, value); }

void DataBlobUtil::ToByteVector(ByteVector& bv, const ByteVector& value) {
  KX_ASSERT(&bv != &value);
  AppendCount(bv, value.size());
  bv.insert(bv.end(), value.begin(), value.end());
}

const_iterator DataBlobUtil::FromByteVector(const_iterator start, Int32Vector& value) {
  return ReadEach(start, value, sizeof(value[0]));
}
const_iterator DataBlobUtil::FromByteVector(const_iterator start, UInt32Vector& value) {
  return ReadEach(start, value, sizeof(value[0]));
}
const_iterator DataBlobUtil::FromByteVector(const_iterator start, UInt16Vector& value) {
  return ReadEach(start, value, sizeof(value[0]));
}
const_iterator DataBlobUtil::FromByteVector(const_iterator start, BooleanVector& value) {
  return ReadEach(start, value, 1);
}
const_iterator DataBlobUtil::FromByteVector(const_iterator start, ByteVectorVector& value) {
  return ReadEach(start, value, kCountSize);
}

const_iterator DataBlobUtil::FromByteVector(const_iterator start, ByteVector& value) {
  std::uint32_t count;
  start = ReadCount(start, 1, count);
  value.assign(start, start + count);
  return start + count;
}
