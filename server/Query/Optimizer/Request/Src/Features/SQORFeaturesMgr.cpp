#include "Query/Optimizer/Request/Features/SQORFeaturesMgr.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "Host/BaseStringUtil.h"
#include "Host/GlobalRpVariables.h"
#include "Host/KXAssert.h"
#include "Host/SUStringConstants.h"
#include "Host/SUSystemConfig.h"
#include "Query/Optimizer/Request/Blocks/SQORRqOrderBy.h"

namespace {

using FeatureId = SUFeaturesTable::FeatureId;

bool MayOverride(ARpGateway* gateway) { return gateway && gateway->ContainDBFeatureRequestProperty(); }

/// What a property says of a boolean feature; nothing if its type says nothing.
std::optional<bool> BooleanFrom(const PropertyValue& value) {
  switch (value.GetType()) {
    case PropertyValue::Integer:
    case PropertyValue::Float:
    case PropertyValue::Number:
      return value.IsNonZero();
    case PropertyValue::String: {
      const KXString& text = static_cast<const PropertyValueString&>(value).GetString();
      return !text.empty() && !BaseStringUtil::IsCaseInsensitiveMatch(text, S_ZERO);
    }
    case PropertyValue::Date:
    case PropertyValue::Time:
    case PropertyValue::DateTime:
    case PropertyValue::StringVector:
      return std::nullopt;
  }
  return std::nullopt;
}

/// What the request makes of a feature, and the name of the property by which it does; no name if it makes nothing.
template <class Value>
struct Override {
  KXString m_property;
  Value m_value{};
};

Override<bool> FindBooleanOverride(const ADatabase& database, FeatureId id, ARpGateway* gateway) {
  if (!MayOverride(gateway)) return {};
  for (const bool bGeneric : {false, true}) {
    const KXString name = FeaturesMgr::FormDBFeatureVariableName(database.GetTargetType(), id, bGeneric);
    std::unique_ptr<PropertyValue> pValue;
    if (!gateway->GetRequestProperty({GlobalRpVariables::global_SessionBlockWildcard, name}, pValue)) continue;
    const std::optional<bool> value = pValue ? BooleanFrom(*pValue) : std::nullopt;
    return value ? Override<bool>{name, *value} : Override<bool>();
  }
  return {};
}

/// Of an integer or a text, by the gateway's operation that reads one.
template <class Value>
Override<Value> FindOverride(const ADatabase& database, FeatureId id, ARpGateway* gateway,
                             bool (ARpGateway::*pRead)(const KXString&, Value&)) {
  if (!MayOverride(gateway)) return {};
  const KXString name = FeaturesMgr::FormDBFeatureVariableName(database.GetTargetType(), id, false);
  Value value{};
  return (gateway->*pRead)(name, value) ? Override<Value>{name, value} : Override<Value>();
}

Override<int> FindIntegerOverride(const ADatabase& database, FeatureId id, ARpGateway* gateway) {
  return FindOverride(database, id, gateway, &ARpGateway::GetIntegerRequestProperty);
}

Override<KXString> FindStringOverride(const ADatabase& database, FeatureId id, ARpGateway* gateway) {
  return FindOverride(database, id, gateway, &ARpGateway::GetStringRequestProperty);
}

std::uint32_t LimitOf(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway,
                      std::uint32_t withoutDatabase) {
  return database.IsNull() ? withoutDatabase : FeaturesMgr::GetIntegerFeatureValue(database, id, gateway);
}

/// A type that is converted from by a mask, and another thing, the bit that it has in masks as a type converted to.
struct Conversion {
  KXDataType m_type;
  std::optional<FeatureId> m_mask;
  int m_bit;
};

using Table = SUFeaturesTable;
constexpr Conversion kConversions[] = {
    {KXBitData, Table::kFeature_ConvertBitBitmask, 12},
    {KXCharData, Table::kFeature_ConvertCharBitmask, 0},
    {KXVarCharData, Table::kFeature_ConvertVarCharBitmask, 8},
    {KXLongVarCharData, Table::kFeature_ConvertLongVarCharBitmask, 9},
    {KXBinaryData, Table::kFeature_ConvertBinaryBitmask, 10},
    {KXVarBinaryData, Table::kFeature_ConvertVarBinaryBitmask, 11},
    {KXLongVarBinaryData, Table::kFeature_ConvertLongVarBinaryBitmask, 18},
    {KXInt1Data, Table::kFeature_ConvertTinyIntBitmask, 13},
    {KXInt2Data, Table::kFeature_ConvertSmallIntBitmask, 4},
    {KXInt4Data, Table::kFeature_ConvertIntegerBitmask, 3},
    {KXFloatData, Table::kFeature_ConvertFloatBitmask, 5},
    {KXDoubleData, Table::kFeature_ConvertDoubleBitmask, 7},
    {KXNumericData, Table::kFeature_ConvertNumericBitmask, 1},
    {KXDecimalData, Table::kFeature_ConvertDecimalBitmask, 2},
    {KXDateData, std::nullopt, 15},
    {KXTimeData, std::nullopt, 16},
    {KXDateTimeData, std::nullopt, 17},
    {KXTimeStampData, std::nullopt, 17},
};

/// Null if the type is not converted.
const Conversion* FindConversion(KXDataType type) {
  const auto* pConversion = std::ranges::find(kConversions, type, &Conversion::m_type);
  return pConversion == std::end(kConversions) ? nullptr : pConversion;
}

/// The feature by which constants of the type can be written; none for types that have no constants.
std::optional<FeatureId> LiteralFeatureOf(KXDataType type) {
  switch (SUKXDataTypeUtility::GetKXTypeClass(type)) {
    case KXTypeClass::kText:
      return SUFeaturesTable::kFeature_StringLiteral;
    case KXTypeClass::kInteger:
      return SUFeaturesTable::kFeature_IntegerLiteral;
    case KXTypeClass::kFloat:
    case KXTypeClass::kMoney:
    case KXTypeClass::kDecimal:
      return SUFeaturesTable::kFeature_FloatLiteral;
    case KXTypeClass::kDate:
      return SUFeaturesTable::kFeature_DateLiteral;
    case KXTypeClass::kTime:
      return SUFeaturesTable::kFeature_TimeLiteral;
    case KXTypeClass::kDateTime:
      return SUFeaturesTable::kFeature_DateTimeLiteral;
    case KXTypeClass::kBit:
    case KXTypeClass::kBinary:
    case KXTypeClass::kInterval:
    case KXTypeClass::kObject:
    case KXTypeClass::kBoolean:
    case KXTypeClass::kUnknown:
      return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

bool FeaturesMgr::IsSupportedFeature(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway) {
  if (database.IsNull() || database->GetTargetType() == ServerInfo::kXML_Direct) return false;
  const auto overridden = FindBooleanOverride(*database, id, gateway);
  return overridden.m_property.empty() ? database->GetBooleanFeatureValue(id) : overridden.m_value;
}

std::uint32_t FeaturesMgr::GetIntegerFeatureValue(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway) {
  if (database.IsNull()) return 0;
  const auto overridden = FindIntegerOverride(*database, id, gateway);
  return overridden.m_property.empty() ? database->GetIntegerFeatureValue(id)
                                       : static_cast<std::uint32_t>(overridden.m_value);
}

KXString FeaturesMgr::GetStringFeatureValue(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway) {
  if (database.IsNull()) return {};
  const auto overridden = FindStringOverride(*database, id, gateway);
  return overridden.m_property.empty() ? database->GetStringFeatureValue(id) : overridden.m_value;
}

KXString FeaturesMgr::GetDecidingProperty(const Ref<ADatabase>& database, FeatureId id, ARpGateway* gateway) {
  if (database.IsNull()) return {};
  if (SUFeaturesTable::IsUInt32(id)) return FindIntegerOverride(*database, id, gateway).m_property;
  if (SUFeaturesTable::IsString(id)) return FindStringOverride(*database, id, gateway).m_property;
  if (database->GetTargetType() == ServerInfo::kXML_Direct) return {};
  return FindBooleanOverride(*database, id, gateway).m_property;
}

KXString FeaturesMgr::FormDBFeatureVariableName(ServerInfo::TargetType target, FeatureId id, bool bGeneric) {
  KXString name = ARpGateway::kDBFeaturePropertyPrefix;
  if (!bGeneric) name.append(ServerInfo::GetTargetNameFromEnum(target)).append(L"_");
  return name.append(L"IS_").append(SUFeaturesTable::GetFeatureNameFromId(id));
}

std::uint32_t FeaturesMgr::GetMaxTablesPerQuery(const Ref<ADatabase>& database, ARpGateway* gateway) {
  return LimitOf(database, SUFeaturesTable::kFeature_MaxTablesInSelect, gateway, 1);
}

std::uint32_t FeaturesMgr::GetMaxGroupByExprs(const Ref<ADatabase>& database, ARpGateway* gateway) {
  return LimitOf(database, SUFeaturesTable::kFeature_MaxColumnsInGroupBy, gateway, 256);
}

std::uint32_t FeaturesMgr::GetMaxOrderByColumns(const Ref<ADatabase>& refDatabase, ARpGateway* gateway) {
  KX_ASSERT(!refDatabase.IsNull());
  return LimitOf(refDatabase, SUFeaturesTable::kFeature_MaxColumnsInOrderBy, gateway, 16);
}

bool FeaturesMgr::IsTypeGroupByCompatible(ServerInfo::TargetType, KXDataType type) {
  const KXTypeClass typeClass = SUKXDataTypeUtility::GetKXTypeClass(type);
  if (typeClass == KXTypeClass::kUnknown) KX_LOGIC_ERROR(L"");
  return typeClass != KXTypeClass::kBinary && typeClass != KXTypeClass::kObject && typeClass != KXTypeClass::kBoolean;
}

bool FeaturesMgr::IsTypedLiteralSupported(const Ref<ADatabase>& database, const KXDataType& type, ARpGateway* gateway) {
  const std::optional<FeatureId> feature = LiteralFeatureOf(type);
  return feature && IsSupportedFeature(database, *feature, gateway);
}

bool FeaturesMgr::IsConversionSupported(const Ref<ADatabase>& database, KXDataType from, KXDataType to,
                                        ARpGateway* gateway) {
  if (database.IsNull()) return false;
  const Conversion* const pSource = FindConversion(from);
  return pSource && pSource->m_mask &&
         IsConversionBitOn(GetIntegerFeatureValue(database, *pSource->m_mask, gateway), to);
}

bool FeaturesMgr::IsConversionBitOn(std::uint32_t mask, KXDataType type) {
  const Conversion* const pTarget = FindConversion(type);
  return pTarget && (mask >> pTarget->m_bit & 1) != 0;
}

bool FeaturesMgr::IsSortPushable(const Ref<ADatabase>& database, const RqOrderBy& orderBy, ARpGateway* gateway,
                                 bool bStrictNullOrder) {
  const KXString locale = GetStringFeatureValue(database, SUFeaturesTable::kFeature_SortOrderLocale, gateway);
  const auto numKeys = static_cast<std::size_t>(orderBy.GetNumChildren());
  if (!IsSupportedFeature(database, SUFeaturesTable::kFeature_OrderBy, gateway) ||
      numKeys > GetMaxOrderByColumns(database, gateway)) {
    return false;
  }
  const KXTypeInfoVector& types = orderBy.GetStickyTypes();
  const bool bTypesKnown = types.size() == numKeys;
  const auto isText = [](const KXTypeInfo& type) { return SUKXDataTypeUtility::IsKXTextType(type.type_); };
  const auto isNullable = [](const KXTypeInfo& type) { return type.nullable_ != 0; };
  if (!bTypesKnown || std::ranges::any_of(types, isText)) {
    if (!BaseStringUtil::IsCaseInsensitiveMatch(locale, SUSystemConfig::GetSystemConfig().GetSortOrderLocale())) {
      return false;
    }
  }
  if (bTypesKnown && std::ranges::none_of(types, isNullable)) return true;
  if (IsSupportedFeature(database, SUFeaturesTable::kFeature_NullsSortDirectionInOrderBy, gateway)) return true;
  if (!bStrictNullOrder && IsSupportedFeature(database, SUFeaturesTable::kFeature_ExpressionsInOrderBy, gateway)) {
    return true;
  }
  return !orderBy.NeedHiddenColumnForNullSortOrder(database, gateway);
}
