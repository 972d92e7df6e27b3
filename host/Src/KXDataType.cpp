#include "Host/KXDataType.h"

#include <array>

#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"

namespace {

struct TypeNames {
  const wchar_t* m_pSingleWord;
  const wchar_t* m_pSql;
};

constexpr std::array<TypeNames, KXMaxType> kTypeNames = [] {
  std::array<TypeNames, KXMaxType> names{};
#define KX_DATA_TYPE(enumerator, number, singleWordName, sqlName) names[number] = {L##singleWordName, L##sqlName};
#include "Host/KXDataTypes.def"
#undef KX_DATA_TYPE
  return names;
}();

const TypeNames& NamesOf(KXDataType type) {
  KX_ASSERT(type < KXMaxType);
  return kTypeNames[type];
}

enum class Dimensions { kNone, kPrecision, kPrecisionAndScale };

/// Which dimensions a declaration of the type spells out.
Dimensions DeclaredDimensions(KXDataType type) {
  switch (type) {
    case KXCharData:
    case KXVarCharData:
    case KXBinaryData:
    case KXVarBinaryData:
      return Dimensions::kPrecision;
    case KXNumericData:
    case KXDecimalData:
      return Dimensions::kPrecisionAndScale;
    case KXBitData:
    case KXLongVarCharData:
    case KXLongVarBinaryData:
    case KXInt1Data:
    case KXUInt1Data:
    case KXInt2Data:
    case KXUInt2Data:
    case KXInt4Data:
    case KXUInt4Data:
    case KXFloatData:
    case KXDoubleData:
    case KXMoneyData:
    case KXDateData:
    case KXTimeData:
    case KXDateTimeData:
    case KXTimeStampData:
    case KXIntervalData:
    case KXObjectData:
    case KXBoolean:
    case KXUnknown:
    case KXMaxType:
      return Dimensions::kNone;
  }
  return Dimensions::kNone;
}

}  // namespace

KXString KXTypeInfo::Describe() const {
  KXString text(NamesOf(type_).m_pSql);
  const Dimensions dimensions = DeclaredDimensions(type_);
  if (dimensions != Dimensions::kNone && precision_ > 0) {
    text.append(L"(").append(BaseStringUtil::StringFrom(precision_));
    if (dimensions == Dimensions::kPrecisionAndScale) text.append(L",").append(BaseStringUtil::StringFrom(scale_));
    text.append(L")");
  }
  if (!nullable_) text.append(L" NOT NULL");
  return text;
}

void SUKXDataTypeUtility::GetSingleWordKXDataTypeName(KXDataType type, KXString& name) {
  name = NamesOf(type).m_pSingleWord;
}

KXDataType SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(const KXString& name) {
  for (int type = 0; type < KXMaxType; ++type) {
    if (BaseStringUtil::IsCaseInsensitiveMatch(name, kTypeNames[type].m_pSingleWord)) {
      return static_cast<KXDataType>(type);
    }
  }
  return KXUnknown;
}

void SUKXDataTypeUtility::GetKXDataTypeName(KXDataType type, KXString& name) { name = NamesOf(type).m_pSql; }

bool SUKXDataTypeUtility::IsKXTextType(KXDataType type) {
  KX_ASSERT(type < KXMaxType);
  return type == KXCharData || type == KXVarCharData || type == KXLongVarCharData;
}
