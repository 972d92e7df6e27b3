#include "Host/Expr.h"

void VoidIDCollector::Collect(ARpGateway* pRp, const Expr& expr) {
  std::vector<RefARpObject> objects;
  expr.GetObjectsInExpr(pRp, objects, m_bRecursive);
  for (const RefARpObject& object : objects) m_ids.push_back(object.GetID());
}
