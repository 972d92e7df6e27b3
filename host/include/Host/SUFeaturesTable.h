#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "Host/HostTypes.h"
#include "Host/KXString.h"

/// What a database can do: a value for each numbered feature, of the type that the number's range tells. A feature that
/// nobody set is false, 0 or empty, so a table of an old repository that lacks the later ones reads as if they were not
/// set.
///
/// To read or to set a feature as another type than its own is a programmer's mistake.
class SUFeaturesTable {
 public:
  enum FeatureId : std::uint32_t {
#define HOST_FEATURE(enumerator, number)      enumerator = number,
#define HOST_FEATURE_MARK(enumerator, number) enumerator = number,
#include "Host/SUFeatures.def"
#undef HOST_FEATURE
#undef HOST_FEATURE_MARK
  };

  // What may stand in the list of an IN: values of kFeature_ExpressionSupportLevelInInList, each more than the one
  // above.
  static constexpr std::uint32_t kConstantOnly = 0;
  static constexpr std::uint32_t kConstantDerivedExpression = 1;
  static constexpr std::uint32_t kConstantColumnReferenced = 2;

  /// The types that the bits of a conversion mask stand for, from bit 0 on.
  static constexpr std::wstring_view kConversionTypeNames[] = {
      L"CHAR",    L"NUMERIC",  L"DECIMAL",       L"INTEGER",   L"SMALL_INT",      L"FLOAT", L"REAL",
      L"DOUBLE",  L"VAR_CHAR", L"LONG_VAR_CHAR", L"BINARY",    L"VAR_BINARY",     L"BIT",   L"TINY_INT",
      L"BIG_INT", L"DATE",     L"TIME",          L"TIMESTAMP", L"LONG_VAR_BINARY"};

  /// All features, in the order of their numbers.
  static std::span<const FeatureId> GetFeatureIds();

  // The type of a feature. A number that is no feature has none.
  static bool IsBoolean(FeatureId id) { return kFeature_BooleanTypeBegin <= id && id < kFeature_BooleanTypeEnd; }
  static bool IsUInt32(FeatureId id) { return kFeature_UInt32TypeBegin <= id && id < kFeature_UInt32TypeEnd; }
  static bool IsString(FeatureId id) { return kFeature_StringTypeBegin <= id && id < kFeature_StringTypeEnd; }
  /// An integer whose bits are those of kConversionTypeNames.
  static bool IsConversionMask(FeatureId id) {
    return kFeature_UInt32MaskTypeBegin <= id && id <= kFeature_ConvertVarCharBitmask;
  }

  /// The enumerator without its prefix "kFeature", in words of upper case: LEFT_OUTER_JOIN of kFeature_LeftOuterJoin,
  /// PERF_MINIMAL_WITH of kFeaturePerf_MinimalWith, N_TILE of kFeature_NTile. A word begins with an upper-case letter
  /// that does not follow one, or that a lower-case letter follows. Request properties are named so. A mark has the
  /// name of the feature whose number it has; a number that is no feature, the empty one.
  static KXString GetFeatureNameFromId(FeatureId id);

  /// The feature of a name or of an enumerator; letter case and underscores do not matter. kFeature_Invalid if there is
  /// none.
  static FeatureId GetFeatureIDFromName(std::wstring_view name);

  /// The names of all features, in the order of their numbers.
  static KXStringVector GetFeatureNames();

  bool GetBoolean(FeatureId id) const;
  std::uint32_t GetUInt32(FeatureId id) const;
  KXString GetString(FeatureId id) const;
  void SetBoolean(FeatureId id, bool bValue);
  void SetUInt32(FeatureId id, std::uint32_t value);
  void SetString(FeatureId id, const KXString& value);

 private:
  // By the distance from the range's Begin; each as long as the last feature that was set needs.
  BooleanVector booleanValuedFeatures_;
  UInt32Vector uint32ValuedFeatures_;
  KXStringVector stringValuedFeatures_;
};
