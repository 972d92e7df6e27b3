#pragma once

#include <compare>
#include <cstdint>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

// Data that a query reads from outside the repository.

/// A reference to an object outside the repository, by the names that lead to it. References are equal and ordered by
/// their path; the alias says how one query calls the object and is no part of what is meant.
class ExternalObjectReference {
 public:
  ExternalObjectReference() = default;
  /// The path goes from the outermost container down to the object.
  explicit ExternalObjectReference(const KXStringVector& path, const KXString& alias = KXString())
      : m_path(path), m_alias(alias) {}

  const KXStringVector& GetPath() const { return m_path; }
  const KXString& GetAlias() const { return m_alias; }
  /// Whether nothing is referred to.
  bool IsEmpty() const { return m_path.empty(); }
  void Clear() { *this = ExternalObjectReference(); }

  /// For logs: the names with "." between, and " as " and the alias if there is one.
  KXString ToString() const;
  /// The names in double quotes with "." between; a quote in a name is doubled.
  KXString ToStringForQueryGeneration() const;
  /// "/" in front of each name; one inside a name has a "\" in front of it.
  KXString GetObjectReferenceStringAsPath() const;

  /// Whether both are alike to the last field, the alias too.
  static bool IsSameObjectReference_CompareAll(const ExternalObjectReference& lhs, const ExternalObjectReference& rhs) {
    return lhs == rhs && lhs.m_alias == rhs.m_alias;
  }

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend bool operator==(const ExternalObjectReference& lhs, const ExternalObjectReference& rhs) {
    return lhs.m_path == rhs.m_path;
  }
  friend auto operator<=>(const ExternalObjectReference& lhs, const ExternalObjectReference& rhs) {
    return lhs.m_path <=> rhs.m_path;
  }

 private:
  KXStringVector m_path;
  KXString m_alias;
};

/// How external data meets the data that it is joined to.
enum ExternalJoinForm : std::uint32_t {
  kExternalInnerJoin,
  kExternalLeftOuterJoin,
  kExternalRightOuterJoin,
  kExternalFullOuterJoin,
  kExternalFullOuterStitchJoin,
  kExternalNaturalJoin,
  kExternalUnion,
  kExternalUnknownJoin
};

/// One of the joins that an external column is a key of: the join's index in the query, and its form.
struct ExternalJoiningIndex {
  std::int32_t m_index = 0;
  ExternalJoinForm m_joinForm = kExternalUnknownJoin;

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend auto operator<=>(const ExternalJoiningIndex&, const ExternalJoiningIndex&) = default;
};
