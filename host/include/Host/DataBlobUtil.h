#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

/// Checksums over byte buffers.
class CrcUtil {
 public:
  /// CRC-32 (reflected polynomial 0xEDB88320, as in Ethernet and zip) of nLength bytes; 0 for an empty buffer.
  static std::uint32_t GenerateCRC32(const std::uint8_t* pData, int nLength);
};

/// Holds all reading of the byte form on this thread, while it lives, to one buffer and to limits: a read that would
/// cross the buffer's end, and any other damage that a reader finds, raises an ErrorMessage with the byte offset
/// instead of running on or ending the process. Meant for bytes that were not written by this process.
///
/// Scopes nest, the inner one replacing the outer one until it ends. Bytes outside the buffer, such as another vector
/// that is read meanwhile, are not bounded by the scope. The buffer must outlive the scope.
class BoundedRead {
 public:
  /// What a buffer may ask for, whatever its size.
  struct Limits {
    /// Objects inside one another. What goes down into a tree later needs stack for as many levels, and not all of it
    /// looks after the stack; the default suits a stack of 8 MiB.
    std::uint32_t m_maxNesting = 5'000;
    std::uint32_t m_maxObjects = 20'000'000;
  };

  BoundedRead(const_iterator begin, const_iterator end, const Limits& limits);
  BoundedRead(const_iterator begin, const_iterator end) : BoundedRead(begin, end, Limits()) {}
  explicit BoundedRead(const ByteVector& bytes) : BoundedRead(bytes.data(), bytes.data() + bytes.size()) {}
  BoundedRead(const ByteVector& bytes, const Limits& limits)
      : BoundedRead(bytes.data(), bytes.data() + bytes.size(), limits) {}
  ~BoundedRead();
  BoundedRead(const BoundedRead&) = delete;
  BoundedRead& operator=(const BoundedRead&) = delete;

  /// Raises an ErrorMessage unless the cursor stands at the end of the buffer: for a reader that expects no more bytes.
  void RequireAtEnd(const_iterator cursor) const;

  /// The scope in force on this thread, null without one.
  static BoundedRead* Current() { return t_bounds.m_pScope; }
  /// Where the cursor stands in the buffer, as it goes into messages.
  KXString GetOffset(const_iterator cursor) const;

  /// Counts, while it lives, an object that is read at the cursor and may hold others. Raises an ErrorMessage when
  /// there are too many, or too many inside one another. Without a scope in force it does nothing.
  class Object {
   public:
    explicit Object(const_iterator cursor) : m_pScope(Current()) {
      if (m_pScope) [[unlikely]]
        m_pScope->Enter(cursor);
    }
    ~Object() {
      if (m_pScope) [[unlikely]]
        --m_pScope->m_nesting;
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

   private:
    BoundedRead* m_pScope;
  };

 private:
  friend class DataBlobUtil;

  /// The bounds in force on a thread. Without a scope the end is the end of the address space, so that the one
  /// comparison of a read never fails and needs no test for a scope.
  struct Bounds {
    std::uintptr_t m_begin;
    std::uintptr_t m_end;
    BoundedRead* m_pScope;
  };
  // Initial-exec: the variable is read at every primitive, also from other shared libraries.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit Bounds t_bounds;

  void Enter(const_iterator cursor);

  Bounds m_bounds;
  Bounds m_outer;
  Limits m_limits;
  std::uint32_t m_nesting = 0;
  std::uint32_t m_objects = 0;
};

/// The primitives of the byte form. ToByteVector appends, FromByteVector reads and returns the cursor behind what it
/// read; each is the exact mirror of the other. Numbers have a fixed width, low byte first, on every machine. A bool is
/// one byte. Strings and vectors are a 32-bit count and then their content; a KXString travels as UTF-8 and counts
/// bytes, with the encoding carried on for values that are no Unicode characters, so that any text comes back as it
/// was.
///
/// A reader trusts its bytes: reading bytes that no writer made is undefined unless a BoundedRead is in force.
class DataBlobUtil : public CrcUtil {
 public:
  // Any other type of argument does not compile: the caller converts it and thereby says the width.
  static void ToByteVector(ByteVector& bv, bool value) { Append(bv, static_cast<std::uint8_t>(value)); }
  static void ToByteVector(ByteVector& bv, std::uint8_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, std::int16_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, std::uint16_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, std::int32_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, std::uint32_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, std::int64_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, std::uint64_t value) { Append(bv, value); }
  static void ToByteVector(ByteVector& bv, double value) { Append(bv, std::bit_cast<std::uint64_t>(value)); }
  /// The address as a 64-bit number: an identity, meaningful in the process that wrote it.
  static void ToByteVector(ByteVector& bv, const void* value) {
    Append(bv, static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(value)));
  }
  static void ToByteVector(ByteVector& bv, void* value) { ToByteVector(bv, static_cast<const void*>(value)); }
  static void ToByteVector(ByteVector& bv, const KXString& value);
  static void ToByteVector(ByteVector& bv, const KXNString& value);
  static void ToByteVector(ByteVector& bv, const KXStringPair& value);
  static void ToByteVector(ByteVector& bv, const KXStringVector& value);
  static void ToByteVector(ByteVector& bv, const Int32Vector& value);
  static void ToByteVector(ByteVector& bv, const UInt32Vector& value);
  static void ToByteVector(ByteVector& bv, const UInt16Vector& value);
  /// A vector cannot be appended to itself.
  static void ToByteVector(ByteVector& bv, const ByteVector& value);
  static void ToByteVector(ByteVector& bv, const BooleanVector& value);
  static void ToByteVector(ByteVector& bv, const ByteVectorVector& value);
  template <class T>
  static void ToByteVector(ByteVector& bv, T value) = delete;

  /// Any byte but 0 is true.
  static const_iterator FromByteVector(const_iterator start, bool& value) {
    std::uint8_t byte;
    start = Read(start, byte);
    value = byte != 0;
    return start;
  }
  static const_iterator FromByteVector(const_iterator start, std::uint8_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, std::int16_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, std::uint16_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, std::int32_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, std::uint32_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, std::int64_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, std::uint64_t& value) { return Read(start, value); }
  static const_iterator FromByteVector(const_iterator start, double& value) {
    std::uint64_t bits;
    start = Read(start, bits);
    value = std::bit_cast<double>(bits);
    return start;
  }
  static const_iterator FromByteVector(const_iterator start, void*& value) {
    std::uint64_t address;
    start = Read(start, address);
    value = reinterpret_cast<void*>(static_cast<std::uintptr_t>(address));
    return start;
  }
  /// bUnicode true: the content is the UTF-8 that ToByteVector writes. False: it is narrow text in the server's
  /// multi-byte code page, as another writer may leave it. The same holds for the pair and the vector.
  static const_iterator FromByteVector(const_iterator start, KXString& value, bool bUnicode = true);
  static const_iterator FromByteVector(const_iterator start, KXNString& value);
  static const_iterator FromByteVector(const_iterator start, KXStringPair& value, bool bUnicode = true);
  static const_iterator FromByteVector(const_iterator start, KXStringVector& value, bool bUnicode = true);
  static const_iterator FromByteVector(const_iterator start, Int32Vector& value);
  static const_iterator FromByteVector(const_iterator start, UInt32Vector& value);
  static const_iterator FromByteVector(const_iterator start, UInt16Vector& value);
  static const_iterator FromByteVector(const_iterator start, ByteVector& value);
  static const_iterator FromByteVector(const_iterator start, BooleanVector& value);
  static const_iterator FromByteVector(const_iterator start, ByteVectorVector& value);

  /// Reads an enumerator that was written as a number of type Written. Under a BoundedRead one above `last` raises an
  /// ErrorMessage.
  template <class Written = std::uint32_t, class Enum>
  static const_iterator FromByteVector(const_iterator start, Enum& value, std::type_identity_t<Enum> last) {
    static_assert(std::is_enum_v<Enum>);
    Written number;
    const const_iterator end = Read(start, number);
    if (static_cast<std::make_unsigned_t<Written>>(number) > static_cast<std::uint64_t>(last)) [[unlikely]]
      RaiseMalformedIfBounded(start, L"enumerator");
    value = static_cast<Enum>(number);
    return end;
  }
  /// Raises an ErrorMessage that no `what` stands at the cursor; the second only if a BoundedRead is in force.
  [[noreturn, gnu::cold]] static void RaiseMalformed(const_iterator start, const wchar_t* what);
  [[gnu::cold]] static void RaiseMalformedIfBounded(const_iterator start, const wchar_t* what);

  /// Raises an ErrorMessage if fewer than nBytes stand between the cursor and the end of the BoundedRead in force.
  /// For readers that look at bytes without the operations above, or that are about to reserve room for a count.
  static void RequireReadable(const_iterator start, std::uint64_t nBytes) {
    if (BoundedRead::t_bounds.m_end - reinterpret_cast<std::uintptr_t>(start) < nBytes) [[unlikely]] {
      RaiseOverrun(start, nBytes);
    }
  }

 private:
  [[noreturn, gnu::cold]] static void RaiseOverrun(const_iterator start, std::uint64_t nBytes);

  /// The value with its bytes in the order of the byte form.
  template <class T>
  static constexpr T InByteFormOrder(T value);

  template <class T>
  static void Append(ByteVector& bv, T value) {
    const T ordered = InByteFormOrder(value);
    const auto* pBytes = reinterpret_cast<const std::uint8_t*>(&ordered);
    bv.insert(bv.end(), pBytes, pBytes + sizeof(T));
  }

  template <class T>
  static const_iterator Read(const_iterator start, T& value) {
    RequireReadable(start, sizeof(T));
    std::memcpy(&value, start, sizeof(T));
    value = InByteFormOrder(value);
    return start + sizeof(T);
  }
};

template <class T>
constexpr T DataBlobUtil::InByteFormOrder(T value) {
  if constexpr (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ || sizeof(T) == 1) {
    return value;
  } else if constexpr (sizeof(T) == 2) {
    return static_cast<T>(__builtin_bswap16(static_cast<std::uint16_t>(value)));
  } else if constexpr (sizeof(T) == 4) {
    return static_cast<T>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
  } else {
    return static_cast<T>(__builtin_bswap64(static_cast<std::uint64_t>(value)));
  }
}
