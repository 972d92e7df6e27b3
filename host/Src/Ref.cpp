#include "Host/Ref.h"

#include "Host/ARpGateway.h"

void RefHelper::AddRef(ARpGateway* pRp, const VoidID& id) {
  if (pRp) pRp->AddObjectRef(id);
}

void RefHelper::ReleaseRef(ARpGateway* pRp, const VoidID& id) {
  if (pRp) pRp->ReleaseObjectRef(id);
}

ARpObject* RefHelper::GetObjectPointerFromGatway(ARpGateway* pRp, const VoidID& id) {
  return pRp ? pRp->LookupObject(id) : nullptr;
}
