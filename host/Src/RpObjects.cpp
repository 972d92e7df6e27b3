#include "Host/RpObjects.h"

#include <algorithm>

#include "Host/ARpGateway.h"
#include "Host/ErrorMessage.h"

KXString ARpObject::GetQualifiedName(ARpGateway* pRp) const {
  KXString text;
  for (const KXString& name : GetPath(pRp)) {
    if (!text.empty()) text.append(L'.');
    text.append(name);
  }
  return text;
}

KXStringVector ARpObject::GetPath(ARpGateway* pRp) const {
  KXStringVector names{GetName()};
  VoidIDSet passed{GetID()};
  for (const ARpObject* pObject = this;;) {
    const VoidID parentID = pObject->GetParentID();
    pObject = RefHelper::GetObjectPointerFromGatway(pRp, parentID);
    if (!pObject) break;
    if (!passed.insert(parentID).second) KX_RAISE(kMsgObjectContainsItself, GetName(), GetID().ToString());
    names.push_back(pObject->GetName());
  }
  std::ranges::reverse(names);
  return names;
}
