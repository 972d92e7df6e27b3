#include "Host/MetadataUtil.h"

#include <memory>

#include "Host/ARpGateway.h"
#include "Host/AbstractListQuerySpec.h"
#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"

KXString MetadataUtil::GenerateQualifiedName(const RefARpObject& object) {
  KXString text;
  if (object.IsNull()) return text;
  for (const KXString& name : object->GetPath(object.GetGateway())) {
    if (!text.empty()) text.append(L'.');
    text.append(L'"').append(BaseStringUtil::EscapeCharacter(name, L'"', L'"')).append(L'"');
  }
  return text;
}

KXString MetadataUtil::ToSQLStatement(const AbstractListQuerySpec& spec, ARpGateway* pRp) {
  return spec.ToSQLStatement(pRp);
}

bool MetadataUtil::IsSessionVariablePopulated(ARpGateway* pRp, const KXStringPair& variable) {
  KX_ASSERT(pRp);
  return std::unique_ptr<PropertyValue>(pRp->GetSessionVariable(variable)) != nullptr;
}

bool MetadataUtil::BeginsWithVBLBundlePrefix(std::wstring_view name) {
  return BaseStringUtil::CaseInsensitiveFindPatternAtStart(name, kVBLBundlePrefix);
}

KXString MetadataUtil::GetStringAfterVBLBundlePrefix(std::wstring_view name) {
  KX_ASSERT(BeginsWithVBLBundlePrefix(name));
  return KXString(name.substr(std::wstring_view(kVBLBundlePrefix).size()));
}
