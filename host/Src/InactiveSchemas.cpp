#include "Host/InactiveSchemas.h"

InactiveSchemas InactiveSchemas::globalInactiveSchemas;

VoidIDSet InactiveSchemas::GetInactiveSchemas() const {
  const KXCriticalSectionGuard guard(m_lock);
  return m_ids;
}

void InactiveSchemas::SetInactiveSchemas(VoidIDSet ids) {
  const KXCriticalSectionGuard guard(m_lock);
  m_ids.swap(ids);
}
