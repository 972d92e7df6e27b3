#include "Host/KXDataType.h"

#include <array>

#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"

namespace {

struct TypeEntry {
  KXTypeClass m_class;
  const wchar_t* m_pSingleWord;
  const wchar_t* m_pSql;
};

constexpr std::array<TypeEntry, KXMaxType> kTypes = [] {
  std::array<TypeEntry, KXMaxType> types{};
#define KX_DATA_TYPE(enumerator, number, typeClass, singleWordName, sqlName) \
  types[number] = {KXTypeClass::typeClass, L##singleWordName, L##sqlName};
#include "Host/KXDataTypes.def"
#undef KX_DATA_TYPE
  return types;
}();

const TypeEntry& EntryOf(KXDataType type) {
  KX_ASSERT(type < KXMaxType);
  return kTypes[type];
}

enum class Dimensions { kNone, kPrecision, kPrecisionAndScale };

/// Which dimensions a declaration of the type spells out.
Dimensions DeclaredDimensions(KXDataType type) {
  if (type == KXLongVarCharData || type == KXLongVarBinaryData) return Dimensions::kNone;
  const KXTypeClass typeClass = EntryOf(type).m_class;
  if (typeClass == KXTypeClass::kText || typeClass == KXTypeClass::kBinary) return Dimensions::kPrecision;
  return typeClass == KXTypeClass::kDecimal ? Dimensions::kPrecisionAndScale : Dimensions::kNone;
}

}  // namespace

KXString KXTypeInfo::Describe() const {
  KXString text(EntryOf(type_).m_pSql);
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
  name = EntryOf(type).m_pSingleWord;
}

KXDataType SUKXDataTypeUtility::GetKXDataTypeFromSingleWordName(const KXString& name) {
  for (int type = 0; type < KXMaxType; ++type) {
    if (BaseStringUtil::IsCaseInsensitiveMatch(name, kTypes[type].m_pSingleWord)) {
      return static_cast<KXDataType>(type);
    }
  }
  return KXUnknown;
}

void SUKXDataTypeUtility::GetKXDataTypeName(KXDataType type, KXString& name) { name = EntryOf(type).m_pSql; }

KXTypeClass SUKXDataTypeUtility::GetKXTypeClass(KXDataType type) { return EntryOf(type).m_class; }

bool SUKXDataTypeUtility::IsKXTextType(KXDataType type) { return GetKXTypeClass(type) == KXTypeClass::kText; }
