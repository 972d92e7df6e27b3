#include "Host/UniversallyUniqueID.h"

#include <array>
#include <cstdio>
#include <tuple>

#include "Host/DataBlobUtil.h"

namespace {

auto Key(const UniversallyUniqueID& id) {
  return std::tuple(id.m_seconds, id.m_milliSeconds, id.m_randNumber, reinterpret_cast<std::uintptr_t>(id.m_ptr));
}

}  // namespace

std::strong_ordering operator<=>(const UniversallyUniqueID& lhs, const UniversallyUniqueID& rhs) {
  return Key(lhs) <=> Key(rhs);
}

KXString UniversallyUniqueID::ToString() const {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%d:%d:%d:%p", static_cast<int>(m_seconds), static_cast<int>(m_milliSeconds),
                static_cast<int>(m_randNumber), m_ptr);
  return KXString::FromUTF8(text.data());
}

void UniversallyUniqueID::ToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, m_seconds);
  DataBlobUtil::ToByteVector(bv, m_milliSeconds);
  DataBlobUtil::ToByteVector(bv, m_randNumber);
  DataBlobUtil::ToByteVector(bv, static_cast<const void*>(m_ptr));
}

const_iterator UniversallyUniqueID::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, m_seconds);
  start = DataBlobUtil::FromByteVector(start, m_milliSeconds);
  start = DataBlobUtil::FromByteVector(start, m_randNumber);
  return DataBlobUtil::FromByteVector(start, m_ptr);
}
