#include "Host/SUCompatFlag.h"

#include <map>
#include <set>

#include "Host/ARpGateway.h"
#include "Host/BaseStringUtil.h"
#include "Host/KXLock.h"

namespace {

struct LessIgnoringCase {
  bool operator()(const KXString& a, const KXString& b) const {
    return BaseStringUtil::IsCaseInsensitiveLessThan(a, b);
  }
};

struct FlagTable {
  KXReadersWriterLock m_lock{__FILE__, __LINE__, "SUCompatFlag"};
  std::map<KXString, KXString> m_flags;
  std::set<KXString, LessIgnoringCase> m_legacyVariables;

  /// Never destroyed: flags may be read at any time.
  static FlagTable& Get() {
    static auto& table = *new FlagTable();
    return table;
  }
};

}  // namespace

bool SUCompatFlag::GetBool(const KXString& name) {
  KXString value;
  return GetString(value, name) && (value == L"1" || BaseStringUtil::IsCaseInsensitiveMatch(value, L"true"));
}

bool SUCompatFlag::GetString(KXString& out, const KXString& name) {
  out.clear();
  FlagTable& table = FlagTable::Get();
  const KXReadGuard guard(table.m_lock);
  const auto flag = table.m_flags.find(name);
  if (flag == table.m_flags.end()) return false;
  out = flag->second;
  return true;
}

void SUCompatFlag::SetBool(const KXString& name, bool bValue) { SetString(name, bValue ? L"1" : L"0"); }

void SUCompatFlag::SetString(const KXString& name, const KXString& value) {
  FlagTable& table = FlagTable::Get();
  const KXWriteGuard guard(table.m_lock);
  table.m_flags[name] = value;
}

void SUCompatFlag::Reset(const KXString& name) {
  FlagTable& table = FlagTable::Get();
  const KXWriteGuard guard(table.m_lock);
  table.m_flags.erase(name);
}

bool SUCompatFlag::IsLegacyVariable(const KXString& name) {
  FlagTable& table = FlagTable::Get();
  const KXReadGuard guard(table.m_lock);
  return table.m_legacyVariables.contains(name);
}

void SUCompatFlag::AddLegacyVariable(const KXString& name) {
  FlagTable& table = FlagTable::Get();
  const KXWriteGuard guard(table.m_lock);
  table.m_legacyVariables.insert(name);
}

bool SOCompatFlag::GetBool(const KXString& name, ARpGateway* pRp) {
  const bool bProcess = SUCompatFlag::GetBool(name);
  return pRp ? pRp->GetBooleanSessionProperty(name, bProcess) : bProcess;
}

bool SOCompatFlag::GetString(KXString& out, const KXString& name, ARpGateway* pRp) {
  out.clear();
  return (pRp && pRp->GetStringSessionProperty(name, out)) || SUCompatFlag::GetString(out, name);
}
