#include "Host/KXString.h"

#include <algorithm>
#include <bit>
#include <new>
#include <ostream>
#include <stdexcept>

#include "Host/MemAlloc.h"

KXString::Buffer* KXString::MakeBuffer(std::wstring_view text, std::size_t capacity) {
  if (capacity > kMaxLength) throw std::length_error("KXString");
  void* const pBlock = KXNodeAlloc::allocate(sizeof(Buffer) + (capacity + 1) * sizeof(wchar_t), __FILE__, __LINE__);
  auto* const pBuffer =
      new (pBlock) Buffer{1, static_cast<std::uint32_t>(text.size()), static_cast<std::uint32_t>(capacity)};
  CopyText(pBuffer->Text(), text);
  pBuffer->Text()[text.size()] = L'\0';
  return pBuffer;
}

void KXString::FreeBuffer(Buffer* pBuffer) noexcept {
  KXNodeAlloc::deallocate(pBuffer, sizeof(Buffer) + (std::size_t{pBuffer->m_capacity} + 1) * sizeof(wchar_t));
}

std::size_t KXString::GrownCapacity(std::size_t more) const {
  if (more > kMaxLength - size()) throw std::length_error("KXString");
  const std::size_t needed = size() + more;
  // Only a string that grows again is being built up; the first growth of a copy is likely its only one.
  if (!m_pBuffer || m_pBuffer->IsShared()) return needed;
  return std::max(needed, std::min(2 * capacity(), kMaxLength));
}

KXString& KXString::AppendToNewBuffer(std::wstring_view text) {
  if (text.empty()) return *this;
  // The old buffer goes last: the text may stand in it.
  Buffer* const pOld = std::exchange(m_pBuffer, MakeBuffer(view(), GrownCapacity(text.size())));
  CopyText(m_pBuffer->Text() + m_pBuffer->m_length, text);
  SetLength(m_pBuffer->m_length + text.size());
  Drop(pOld);
  return *this;
}

KXString::KXString(std::size_t count, wchar_t character) { append(count, character); }

KXString& KXString::append(std::size_t count, wchar_t character) {
  if (count == 0) return *this;
  if (!m_pBuffer || !HasRoomFor(count)) {
    Drop(std::exchange(m_pBuffer, MakeBuffer(view(), GrownCapacity(count))));
  }
  std::fill_n(m_pBuffer->Text() + m_pBuffer->m_length, count, character);
  SetLength(m_pBuffer->m_length + count);
  return *this;
}

KXString& KXString::assign(std::wstring_view text) {
  if (text.empty()) {
    clear();
  } else if (m_pBuffer && text.size() <= m_pBuffer->m_capacity && !m_pBuffer->IsShared()) {
    CopyText(m_pBuffer->Text(), text);
    SetLength(text.size());
  } else {
    Drop(std::exchange(m_pBuffer, MakeBuffer(text, text.size())));
  }
  return *this;
}

void KXString::reserve(std::size_t capacity) {
  capacity = std::max(capacity, size());
  if (capacity == 0 || (m_pBuffer && capacity <= m_pBuffer->m_capacity && !m_pBuffer->IsShared())) return;
  Drop(std::exchange(m_pBuffer, MakeBuffer(view(), capacity)));
}

int KXString::compare(std::wstring_view rhs) const noexcept {
  const std::wstring_view lhs = view();
  // Copies share a buffer, and have its whole text.
  const std::size_t common = lhs.data() == rhs.data() ? 0 : std::min(lhs.size(), rhs.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (lhs[i] != rhs[i]) return static_cast<std::uint32_t>(lhs[i]) < static_cast<std::uint32_t>(rhs[i]) ? -1 : 1;
  }
  return lhs.size() < rhs.size() ? -1 : lhs.size() > rhs.size() ? 1 : 0;
}

KXString KXString::substr(std::size_t start, std::size_t count) const {
  if (start >= size()) return KXString();
  if (start == 0 && count >= size()) return *this;
  return KXString(view().substr(start, count));
}

namespace {

constexpr std::uint32_t kReplacement = 0xfffd;

/// Bytes of a value in the widened scheme; 0 if it has more than 32 bits.
constexpr unsigned EncodedLength(std::uint64_t value) {
  if (value < 0x80) return 1;
  if (value < 0x800) return 2;
  if (value < 0x10000) return 3;
  if (value < 0x200000) return 4;
  if (value < 0x4000000) return 5;
  if (value < 0x80000000) return 6;
  return value <= 0xffffffff ? 7 : 0;
}

char* Encode(std::uint32_t value, char* to) {
  const unsigned length = EncodedLength(value);
  if (length == 1) {
    *to = static_cast<char>(value);
    return to + 1;
  }
  for (unsigned i = length - 1; i > 0; --i, value >>= 6) to[i] = static_cast<char>(0x80 | (value & 0x3f));
  // As many ones as there are bytes, a zero, and the value's highest bits, of which 7 bytes leave no room for any.
  to[0] = static_cast<char>((0xff << (8 - length)) | (length < 7 ? value : 0));
  return to + length;
}

struct Sequence {
  std::uint32_t m_value;
  unsigned m_length;  // 0 if invalid
};

/// The sequence of the widened scheme that the bytes, one at least, begin with.
Sequence DecodeFirst(std::string_view bytes) {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  if (lead < 0x80) return {lead, 1};
  const auto length = static_cast<unsigned>(std::countl_one(lead));
  if (length == 1 || length == 8 || length > bytes.size()) return {0, 0};
  std::uint64_t value = lead & (0x7f >> length);
  for (const char c : bytes.substr(1, length - 1)) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xc0) != 0x80) return {0, 0};
    value = value << 6 | (byte & 0x3f);
  }
  if (EncodedLength(value) != length) return {0, 0};
  return {static_cast<std::uint32_t>(value), length};
}

/// Calls take(value) for each character, with kReplacement for an invalid byte.
template <class Take>
void ForEachCharacter(std::string_view bytes, Take take) {
  for (std::size_t i = 0; i < bytes.size();) {
    const Sequence sequence = DecodeFirst(bytes.substr(i));
    take(sequence.m_length == 0 ? kReplacement : sequence.m_value);
    i += std::max(sequence.m_length, 1U);
  }
}

/// Offset of the first sequence that is not standard UTF-8, or npos.
std::size_t FindNonStandard(std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size();) {
    const auto [value, length] = DecodeFirst(bytes.substr(i));
    const bool bSurrogate = value >= 0xd800 && value <= 0xdfff;
    if (length == 0 || bSurrogate || value > 0x10ffff) return i;
    i += length;
  }
  return std::string_view::npos;
}

bool IsAscii(std::string_view bytes) {
  return std::none_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

}  // namespace

KXString KXString::FromUTF8(std::string_view bytes) {
  KXString result;
  if (bytes.empty()) return result;
  if (IsAscii(bytes)) {
    result.m_pBuffer = MakeBuffer({}, bytes.size());
    std::copy(bytes.begin(), bytes.end(), result.m_pBuffer->Text());
    result.SetLength(bytes.size());
    return result;
  }
  std::size_t count = 0;
  ForEachCharacter(bytes, [&](std::uint32_t) { ++count; });
  result.m_pBuffer = MakeBuffer({}, count);
  wchar_t* to = result.m_pBuffer->Text();
  ForEachCharacter(bytes, [&](std::uint32_t value) { *to++ = static_cast<wchar_t>(value); });
  result.SetLength(count);
  return result;
}

bool KXString::FromUTF8Strict(std::string_view bytes, KXString& out, std::size_t* pErrorOffset) {
  const std::size_t error = FindNonStandard(bytes);
  if (error != std::string_view::npos) {
    if (pErrorOffset) *pErrorOffset = error;
    return false;
  }
  out = FromUTF8(bytes);
  return true;
}

std::string KXString::ToUTF8() const {
  std::size_t length = 0;
  for (const wchar_t c : *this) length += EncodedLength(static_cast<std::uint32_t>(c));
  std::string bytes(length, '\0');
  char* to = bytes.data();
  for (const wchar_t c : *this) to = Encode(static_cast<std::uint32_t>(c), to);
  return bytes;
}

std::ostream& operator<<(std::ostream& out, const KXString& text) { return out << text.ToUTF8(); }
