#include "HostMemory/MemoryObjects.h"

#include "Host/ARpGateway.h"
#include "Host/KXThread.h"

void MemoryExpr::AppendObjects(ARpGateway* pRp, std::vector<RefARpObject>& objects, bool bRecursive) const {
  KXThread::LowStackCheck(0);
  for (const VoidID& id : m_objectIDs) {
    const RefARpObject object(pRp, id);
    if (object.IsNull()) continue;
    objects.push_back(object);
    const RefAAttribute attribute(pRp, id);
    if (bRecursive && attribute) attribute->GetExpr().GetObjectsInExpr(pRp, objects, true);
  }
}
