#pragma once

#include <cstdint>
#include <string_view>

#include "Host/KXString.h"

/// The kinds of database that the server compiles for.
class ServerInfo {
 public:
  enum TargetType : std::uint32_t {
#define HOST_TARGET_TYPE(enumerator, number, name, bRemote) enumerator = number,
#include "Host/TargetTypes.def"
#undef HOST_TARGET_TYPE
  };
  static constexpr TargetType kHighestTargetType = kVblData11g;

  /// Whether a target of this kind is sent statements, so that a block marked for it runs there. False for a number
  /// that is no kind.
  static bool IsRemoteTargetType(TargetType type);

  /// Whether tables of this kind of target may be bundles, which are joined by the names of their columns.
  static bool IsBundleTargetType(TargetType type) { return type == kVblData || type == kVblData11g; }

  /// The name under which request properties name the kind: "SQLITE". A number that is no kind has the name of
  /// kUnknown.
  static KXString GetTargetNameFromEnum(TargetType type);

  /// The kind of that name, letter case apart. False, with `type` as it was, if there is none.
  static bool GetTargetEnumFromName(std::wstring_view name, TargetType& type);
};
