#include "Host/GlobalRpVariables.h"

#include "Host/KXAssert.h"
#include "Host/KXLock.h"

const KXString GlobalRpVariables::global_SessionBlockWildcard = L"*";

namespace {

struct SecurityVariables {
  KXCriticalSection m_lock{__FILE__, __LINE__, "SecurityVariables"};
  KXStringVector m_names;
};

SecurityVariables& GetSecurityVariables() {
  static auto& variables = *new SecurityVariables;  // never destroyed: threads may outlive main
  return variables;
}

}  // namespace

std::size_t GlobalRpVariables::GetNumberOfSecurityVariables() {
  SecurityVariables& variables = GetSecurityVariables();
  const KXCriticalSectionGuard guard(variables.m_lock);
  return variables.m_names.size();
}

KXString GlobalRpVariables::GetSecurityVariableName(std::size_t index) {
  SecurityVariables& variables = GetSecurityVariables();
  const KXCriticalSectionGuard guard(variables.m_lock);
  KX_ASSERT(index < variables.m_names.size());
  return variables.m_names[index];
}

void GlobalRpVariables::SetSecurityVariableNames(KXStringVector names) {
  SecurityVariables& variables = GetSecurityVariables();
  const KXCriticalSectionGuard guard(variables.m_lock);
  variables.m_names.swap(names);
}
