#pragma once

#include "Host/KXLock.h"
#include "Host/VoidID.h"

/// The schemas whose tables no plan may read for now, by their identifiers. Any thread may ask and set.
class InactiveSchemas {
 public:
  /// Those of the repository at work, for the whole process; none until they are set.
  static InactiveSchemas globalInactiveSchemas;

  /// A copy, which does not change under the caller.
  VoidIDSet GetInactiveSchemas() const;
  void SetInactiveSchemas(VoidIDSet ids);

 private:
  mutable KXCriticalSection m_lock{__FILE__, __LINE__, "InactiveSchemas"};
  VoidIDSet m_ids;
};
