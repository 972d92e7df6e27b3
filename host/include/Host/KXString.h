#pragma once

#include <atomic>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/MemAlloc.h"

/// The server's text: wide characters of 32 bits in a shared, counted buffer.
///
/// A string is one pointer, null for the empty string. Copies share the buffer; the first change made through one of
/// them gives that one a buffer of its own, so a string never changes under a copy. A character may be any 32-bit
/// value, zero among them: the length is kept, and the zero behind the last character serves C interfaces only.
///
/// Order is by character as an unsigned number (wchar_t itself is signed here), so it is the order of code points and
/// does not depend on the locale.
///
/// One string object must not be changed while another thread uses it; copies that share a buffer may be used by
/// different threads freely. Operations that make or grow a buffer raise std::bad_alloc, and std::length_error beyond
/// kMaxLength.
class KXString {
 public:
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);
  static constexpr std::size_t kMaxLength = 0xfffffff0;

  KXString() noexcept = default;
  /// A zero-ended text; null is the empty string.
  KXString(const wchar_t* text) : KXString(ViewOf(text)) {}  // implicit: a literal is a string
  KXString(const wchar_t* text, std::size_t length) : KXString(std::wstring_view(text, length)) {}
  explicit KXString(std::wstring_view text) : m_pBuffer(text.empty() ? nullptr : MakeBuffer(text, text.size())) {}
  KXString(std::size_t count, wchar_t character);
  KXString(const KXString& rhs) noexcept : m_pBuffer(rhs.m_pBuffer) {
    if (m_pBuffer) m_pBuffer->m_refs.fetch_add(1, std::memory_order_relaxed);
  }
  KXString(KXString&& rhs) noexcept : m_pBuffer(std::exchange(rhs.m_pBuffer, nullptr)) {}
  ~KXString() { Drop(m_pBuffer); }

  KXString& operator=(const KXString& rhs) noexcept {
    KXString(rhs).swap(*this);
    return *this;
  }
  KXString& operator=(KXString&& rhs) noexcept {
    KXString(std::move(rhs)).swap(*this);
    return *this;
  }
  KXString& operator=(const wchar_t* text) { return assign(ViewOf(text)); }
  KXString& operator=(std::wstring_view text) { return assign(text); }

  void swap(KXString& rhs) noexcept { std::swap(m_pBuffer, rhs.m_pBuffer); }

  std::size_t size() const noexcept { return m_pBuffer ? m_pBuffer->m_length : 0; }
  std::size_t length() const noexcept { return size(); }
  bool empty() const noexcept { return size() == 0; }
  std::size_t capacity() const noexcept { return m_pBuffer ? m_pBuffer->m_capacity : 0; }

  /// Zero-ended, never null, valid until the string changes.
  const wchar_t* c_str() const noexcept { return m_pBuffer ? m_pBuffer->Text() : kNoText; }
  const wchar_t* data() const noexcept { return c_str(); }
  const wchar_t* begin() const noexcept { return c_str(); }
  const wchar_t* end() const noexcept { return c_str() + size(); }
  /// The index may be the length, which gives the closing zero.
  wchar_t operator[](std::size_t index) const noexcept { return c_str()[index]; }

  std::wstring_view view() const noexcept { return {c_str(), size()}; }
  operator std::wstring_view() const noexcept { return view(); }

  /// The text to add may be a part of this very string.
  KXString& append(std::wstring_view text) {
    if (m_pBuffer && HasRoomFor(text.size())) [[likely]] {
      CopyText(m_pBuffer->Text() + m_pBuffer->m_length, text);
      SetLength(m_pBuffer->m_length + text.size());
      return *this;
    }
    return AppendToNewBuffer(text);
  }
  KXString& append(const wchar_t* text) { return append(ViewOf(text)); }
  KXString& append(const wchar_t* text, std::size_t length) { return append(std::wstring_view(text, length)); }
  KXString& append(const KXString& text) {
    if (!m_pBuffer) return *this = text;
    return append(text.view());
  }
  KXString& append(wchar_t character) { return append(std::wstring_view(&character, 1)); }
  KXString& append(std::size_t count, wchar_t character);
  /// A number is not a character: its text comes from BaseStringUtil::StringFrom.
  template <std::integral Number>
  requires(!std::same_as<Number, wchar_t>) KXString& append(Number) = delete;

  KXString& operator+=(const KXString& text) { return append(text); }
  KXString& operator+=(std::wstring_view text) { return append(text); }
  KXString& operator+=(const wchar_t* text) { return append(text); }
  KXString& operator+=(wchar_t character) { return append(character); }
  template <std::integral Number>
  requires(!std::same_as<Number, wchar_t>) KXString& operator+=(Number) = delete;

  /// The text may be a part of this very string.
  KXString& assign(std::wstring_view text);
  KXString& assign(const wchar_t* text) { return assign(ViewOf(text)); }
  KXString& assign(const wchar_t* text, std::size_t length) { return assign(std::wstring_view(text, length)); }
  KXString& assign(const KXString& text) noexcept { return *this = text; }

  /// Makes room for `capacity` characters in a buffer of this string alone, so that appending up to there allocates
  /// nothing.
  void reserve(std::size_t capacity);
  /// Gives the buffer back.
  void clear() noexcept { KXString().swap(*this); }

  /// Negative, zero or positive.
  int compare(std::wstring_view rhs) const noexcept;
  int compare(const wchar_t* rhs) const noexcept { return compare(ViewOf(rhs)); }
  int compare(const KXString& rhs) const noexcept { return m_pBuffer == rhs.m_pBuffer ? 0 : compare(rhs.view()); }

  static bool equals(const KXString& a, const KXString& b) noexcept { return a == b; }

  /// From `start`, at most `count` characters; a start at or behind the end gives the empty string.
  KXString substr(std::size_t start, std::size_t count = npos) const;

  /// The first place at or behind `start`, or npos.
  std::size_t find(std::wstring_view text, std::size_t start = 0) const noexcept { return view().find(text, start); }
  std::size_t find(wchar_t character, std::size_t start = 0) const noexcept { return view().find(character, start); }

  /// Reads UTF-8. Each byte that is no part of a valid sequence gives one U+FFFD.
  ///
  /// "Valid" is wider here than in the standard, so that FromUTF8(ToUTF8(s)) is s for every s: surrogates and values
  /// above 0x10FFFF are read too, by the same scheme carried on to lead bytes 0xF8 (5 bytes), 0xFC (6 bytes, up to
  /// 0x7FFFFFFF) and 0xFE (7 bytes, up to 0xFFFFFFFF). A sequence longer than its value needs is invalid.
  static KXString FromUTF8(std::string_view bytes);

  /// Reads standard UTF-8 only: no surrogates, nothing above 0x10FFFF. On failure gives false, leaves `out` as it was,
  /// and stores the offset of the first byte of the offending sequence if it is asked for.
  static bool FromUTF8Strict(std::string_view bytes, KXString& out, std::size_t* pErrorOffset = nullptr);

  /// Standard UTF-8 for standard text; other values in the wider scheme of FromUTF8.
  std::string ToUTF8() const;

  friend bool operator==(const KXString& a, const KXString& b) noexcept {
    return a.m_pBuffer == b.m_pBuffer || a.view() == b.view();
  }
  friend bool operator==(const KXString& a, std::wstring_view b) noexcept { return a.view() == b; }
  friend bool operator==(const KXString& a, const wchar_t* b) noexcept { return a.view() == ViewOf(b); }
  friend std::strong_ordering operator<=>(const KXString& a, const KXString& b) noexcept { return a.compare(b) <=> 0; }
  friend std::strong_ordering operator<=>(const KXString& a, std::wstring_view b) noexcept {
    return a.compare(b) <=> 0;
  }
  friend std::strong_ordering operator<=>(const KXString& a, const wchar_t* b) noexcept { return a.compare(b) <=> 0; }

  friend KXString operator+(KXString a, const KXString& b) { return std::move(a.append(b)); }
  friend KXString operator+(KXString a, std::wstring_view b) { return std::move(a.append(b)); }
  friend KXString operator+(KXString a, const wchar_t* b) { return std::move(a.append(b)); }
  friend KXString operator+(KXString a, wchar_t b) { return std::move(a.append(b)); }
  friend KXString operator+(const wchar_t* a, const KXString& b) { return KXString(a) + b; }
  friend KXString operator+(std::wstring_view a, const KXString& b) { return KXString(a) + b; }
  friend KXString operator+(wchar_t a, const KXString& b) { return KXString(1, a) + b; }

 private:
  /// Head of a block; the characters and their closing zero follow it.
  struct Buffer {
    std::atomic<std::uint32_t> m_refs;
    std::uint32_t m_length;
    std::uint32_t m_capacity;

    wchar_t* Text() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }
    bool IsShared() const noexcept { return m_refs.load(std::memory_order_acquire) != 1; }
  };
  static constexpr wchar_t kNoText[1] = {};

  static std::wstring_view ViewOf(const wchar_t* text) noexcept {
    return text ? std::wstring_view(text) : std::wstring_view();
  }
  static void CopyText(wchar_t* to, std::wstring_view text) noexcept {
    if (text.size() == 1) {
      *to = text[0];
    } else {
      std::char_traits<wchar_t>::move(to, text.data(), text.size());
    }
  }

  static Buffer* MakeBuffer(std::wstring_view text, std::size_t capacity);
  static void FreeBuffer(Buffer* pBuffer) noexcept;
  static void Drop(Buffer* pBuffer) noexcept {
    // The only owner need not write the count: nobody else can raise it any more.
    if (pBuffer && (!pBuffer->IsShared() || pBuffer->m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1)) {
      FreeBuffer(pBuffer);
    }
  }

  /// Requires a buffer.
  bool HasRoomFor(std::size_t more) const noexcept {
    return more <= m_pBuffer->m_capacity - m_pBuffer->m_length && !m_pBuffer->IsShared();
  }
  void SetLength(std::size_t length) noexcept {
    m_pBuffer->m_length = static_cast<std::uint32_t>(length);
    m_pBuffer->Text()[length] = L'\0';
  }
  KXString& AppendToNewBuffer(std::wstring_view text);
  /// Capacity of a new buffer for `more` characters behind the present ones.
  std::size_t GrownCapacity(std::size_t more) const;

  Buffer* m_pBuffer = nullptr;
};

/// In UTF-8.
std::ostream& operator<<(std::ostream& out, const KXString& text);

template <>
struct std::hash<KXString> {
  std::size_t operator()(const KXString& text) const noexcept { return std::hash<std::wstring_view>()(text.view()); }
};

/// The narrow counterpart in byte forms. Nothing shares one, so it is the plain string.
using KXNString = std::string;

/// A byte string held one byte a wide character: the format string of metadata hash helpers.
using KXWBString = std::wstring;

using KXStringVector = KXNodeVector<KXString>;

/// Block and name: the key of a session variable.
using KXStringPair = std::pair<KXString, KXString>;
