#include "Host/SUSystemConfig.h"

SUSystemConfig::SUSystemConfig() : m_localeLock(__FILE__, __LINE__, "SUSystemConfig"), m_sortOrderLocale(L"binary") {}

SUSystemConfig& SUSystemConfig::GetSystemConfig() {
  // Never destroyed: static objects compare text too.
  static auto& config = *new SUSystemConfig();
  return config;
}

KXString SUSystemConfig::GetSortOrderLocale() const {
  const KXCriticalSectionGuard guard(m_localeLock);
  return m_sortOrderLocale;
}

void SUSystemConfig::SetSortOrderLocale(const KXString& locale) {
  const KXCriticalSectionGuard guard(m_localeLock);
  m_sortOrderLocale = locale;
}
