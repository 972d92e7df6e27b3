#include "Host/ARpGateway.h"

#include <map>

#include "Host/BaseStringUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/GlobalRpVariables.h"
#include "Host/KXLock.h"
#include "Host/ServerLog.h"

namespace {

[[noreturn]] void RaiseWrongType(const KXString& name, const PropertyValue& value, const wchar_t* pType) {
  KX_RAISE(kMsgPropertyOfWrongType, name, value.StringFrom(), pType);
}

bool IsDateOrTime(const PropertyValue& value) {
  return value.GetType() == PropertyValue::Date || value.GetType() == PropertyValue::Time ||
         value.GetType() == PropertyValue::DateTime;
}

bool IsText(const PropertyValue& value) {
  return value.GetType() == PropertyValue::String || value.GetType() == PropertyValue::StringVector;
}

bool BooleanFrom(const KXString& name, const PropertyValue& value) {
  constexpr const wchar_t* kType = L"a boolean";
  if (IsDateOrTime(value)) RaiseWrongType(name, value, kType);
  if (!IsText(value)) return value.IsNonZero();
  const KXString text = value.StringFrom();
  if (BaseStringUtil::IsCaseInsensitiveMatch(text, L"true")) return true;
  if (BaseStringUtil::IsCaseInsensitiveMatch(text, L"false")) return false;
  KorvelNumber number;
  if (!KorvelNumber::FromString(text, number)) RaiseWrongType(name, value, kType);
  return !number.IsZero();
}

int IntegerFrom(const KXString& name, const PropertyValue& value) {
  try {
    return value.ToIntegerValue().GetInteger();
  } catch (const ErrorMessage& error) {
    if (error.GetCode() != kMsgValueNotConvertible) throw;
  }
  RaiseWrongType(name, value, L"an integer");  // the same error, but with the property's name
}

/// A property as found: its value, or null if it is not there or has none.
using FoundValue = std::unique_ptr<PropertyValue>;

bool BooleanOr(const KXString& name, const FoundValue& pValue, bool bDefault) {
  return pValue ? BooleanFrom(name, *pValue) : bDefault;
}

bool FillString(const FoundValue& pValue, KXString& value) {
  if (pValue) value = pValue->StringFrom();
  return pValue != nullptr;
}

bool FillInteger(const KXString& name, const FoundValue& pValue, int& value) {
  if (pValue) value = IntegerFrom(name, *pValue);
  return pValue != nullptr;
}

KXStringPair KeyOf(const KXString& name) { return {GlobalRpVariables::global_SessionBlockWildcard, name}; }

struct OpenerTable {
  KXCriticalSection m_lock{__FILE__, __LINE__, "ARpGateway"};
  std::map<ARpGateway::RepositoryID, ARpGateway::Opener> m_openers;

  static OpenerTable& Get() {
    static auto& table = *new OpenerTable();  // never destroyed: repositories may be opened at any time
    return table;
  }
};

}  // namespace

bool ARpGateway::GetBooleanSessionProperty(const KXString& name, bool bDefault) {
  FoundValue pValue;
  FindSessionProperty(name, pValue);
  return BooleanOr(name, pValue, bDefault);
}

bool ARpGateway::GetStringSessionProperty(const KXString& name, KXString& value) {
  FoundValue pValue;
  FindSessionProperty(name, pValue);
  return FillString(pValue, value);
}

bool ARpGateway::GetIntegerSessionProperty(const KXString& name, int& value) {
  FoundValue pValue;
  FindSessionProperty(name, pValue);
  return FillInteger(name, pValue, value);
}

bool ARpGateway::GetBooleanRequestProperty(const KXString& name, bool bDefault) {
  FoundValue pValue;
  FindRequestProperty(KeyOf(name), pValue);
  return BooleanOr(name, pValue, bDefault);
}

bool ARpGateway::GetStringRequestProperty(const KXString& name, KXString& value) {
  FoundValue pValue;
  FindRequestProperty(KeyOf(name), pValue);
  return FillString(pValue, value);
}

bool ARpGateway::GetIntegerRequestProperty(const KXString& name, int& value) {
  FoundValue pValue;
  FindRequestProperty(KeyOf(name), pValue);
  return FillInteger(name, pValue, value);
}

PropertyValue* ARpGateway::GetSessionVariable(const KXStringPair& key) {
  FoundValue pValue;
  FindRequestProperty(key, pValue);
  return pValue.release();
}

void ARpGateway::SetOpener(const RepositoryID& id, Opener opener) {
  OpenerTable& table = OpenerTable::Get();
  const KXCriticalSectionGuard guard(table.m_lock);
  if (opener) {
    table.m_openers[id] = std::move(opener);
  } else {
    table.m_openers.erase(id);
  }
}

std::unique_ptr<ARpGateway> ARpGateway::OpenRpByID(const RepositoryID& id, const char* file, int line, bool bReadOnly) {
  Opener opener;
  {
    OpenerTable& table = OpenerTable::Get();
    const KXCriticalSectionGuard guard(table.m_lock);
    const auto found = table.m_openers.find(id);
    if (found != table.m_openers.end()) opener = found->second;
  }
  if (ServerLog::IsInformationLogged()) {
    ServerLog::LogMessage(false, KXString(opener ? L"Repository " : L"No repository ")
                                     .append(BaseStringUtil::StringFrom(id.m_id))
                                     .append(L" to open at ")
                                     .append(BaseStringUtil::StdStringToString(file))
                                     .append(L":")
                                     .append(BaseStringUtil::StringFrom(line)));
  }
  return opener ? opener(bReadOnly) : nullptr;
}
