#include "Host/ServerInfo.h"

#include <algorithm>

#include "Host/BaseStringUtil.h"

namespace {

struct TargetKind {
  ServerInfo::TargetType m_type;
  const wchar_t* m_pName;
  bool m_bRemote;
};

constexpr TargetKind kTargetKinds[] = {
#define HOST_TARGET_TYPE(enumerator, number, name, bRemote) {ServerInfo::enumerator, L##name, bRemote},
#include "Host/TargetTypes.def"
#undef HOST_TARGET_TYPE
};

/// Null if the number is no kind.
const TargetKind* FindKind(ServerInfo::TargetType type) {
  const auto* pKind = std::ranges::find(kTargetKinds, type, &TargetKind::m_type);
  return pKind == std::end(kTargetKinds) ? nullptr : pKind;
}

}  // namespace

bool ServerInfo::IsRemoteTargetType(TargetType type) {
  const TargetKind* pKind = FindKind(type);
  return pKind != nullptr && pKind->m_bRemote;
}

KXString ServerInfo::GetTargetNameFromEnum(TargetType type) {
  const TargetKind* pKind = FindKind(type);
  return pKind != nullptr ? pKind->m_pName : GetTargetNameFromEnum(kUnknown);
}

bool ServerInfo::GetTargetEnumFromName(std::wstring_view name, TargetType& type) {
  for (const TargetKind& kind : kTargetKinds) {
    if (BaseStringUtil::IsCaseInsensitiveMatch(name, kind.m_pName)) {
      type = kind.m_type;
      return true;
    }
  }
  return false;
}
