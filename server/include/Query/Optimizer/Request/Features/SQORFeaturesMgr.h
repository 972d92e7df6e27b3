#pragma once

#include <cstdint>

#include "Host/ARpGateway.h"
#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Host/RpObjects.h"
#include "Host/SUFeaturesTable.h"
#include "Host/ServerInfo.h"

class RqOrderBy;

/// What a database can do, as one request sees it: the features of the database, and over them the request's own
/// properties, by which a single query is compiled as if the database could, or could not, do something.
///
/// The gateway is the request's; null means that nothing is overridden. A property for databases of one kind has the
/// specific name, one for all kinds the generic name of FormDBFeatureVariableName. Wanted: only booleans are overridden
/// by the generic name; integers and text ask for the specific one alone.
///
/// Nothing is held here; a call belongs to the thread of its gateway.
class FeaturesMgr {
 public:
  using FeatureId = SUFeaturesTable::FeatureId;

  /// Whether the database supports a boolean feature. False without a database, and for any feature of kXML_Direct,
  /// whatever is overridden.
  ///
  /// A property's number means "is not zero" (NaN is not). Wanted: of text, only the empty one and S_ZERO mean no, so
  /// "false" and "no" mean yes. A property of another type, or without a value, overrides nothing; one of the specific
  /// name still keeps the generic one from being asked.
  static bool IsSupportedFeature(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway);

  /// The value of an integer feature; 0 without a database. A property that is no integer raises ErrorMessage
  /// kMsgPropertyOfWrongType; a negative one counts down from 2 to the power of 32.
  static std::uint32_t GetIntegerFeatureValue(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway);
  /// The value of a text feature; empty without a database.
  static KXString GetStringFeatureValue(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway);

  /// The name of the request property that gives the feature its value in this request; empty if the database itself
  /// does.
  static KXString GetDecidingProperty(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway);

  /// The name of the request property that overrides the feature for databases of the target type, or for all.
  static KXString FormDBFeatureVariableName(ServerInfo::TargetType target, FeatureId id, bool bGeneric);

  // Limits of a statement. Without a database 1 and 256; for the columns to order by, a logic error.
  static std::uint32_t GetMaxTablesPerQuery(const Ref<ADatabase>& database, ARpGateway* gateway);
  static std::uint32_t GetMaxGroupByExprs(const Ref<ADatabase>& database, ARpGateway* gateway);
  static std::uint32_t GetMaxOrderByColumns(const Ref<ADatabase>& refDatabase, ARpGateway* gateway);

  /// Whether values of the type can be grouped by: not binary ones, objects and truth values. Wanted: the target type
  /// makes no difference. KXUnknown is a logic error.
  static bool IsTypeGroupByCompatible(ServerInfo::TargetType target, KXDataType type);

  /// Whether a constant of the type can be written into a statement.
  static bool IsTypedLiteralSupported(const Ref<ADatabase>& database, const KXDataType& type, ARpGateway* gateway);

  /// Whether the database converts values of one type into another. Wanted: from dates and times it never does, though
  /// it has masks for them. False without a database.
  static bool IsConversionSupported(const Ref<ADatabase>& database, KXDataType from, KXDataType to,
                                    ARpGateway* gateway);
  /// Whether a conversion mask has the bit of the target type; false for a type that has none.
  static bool IsConversionBitOn(std::uint32_t mask, KXDataType type);

  /// Whether the database can be left to sort: it sorts so many columns, text as the server does, and puts nulls where
  /// they are wanted, or, unless bStrictNullOrder, sorts by expressions that do. Keys whose types the sort does not
  /// tell count as texts that may be null.
  static bool IsSortPushable(const Ref<ADatabase>& database, const RqOrderBy& orderBy, ARpGateway* gateway,
                             bool bStrictNullOrder);
};
