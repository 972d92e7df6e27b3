#pragma once

#include "Host/KXRecordMetaData.h"
#include "Host/Ref.h"

/// A result that the server's cache keeps as rows: what a query reads instead of the tables that it came from. It stays
/// in place as long as somebody counts on it.
class CachePhysicalSeedEntry : public RefCountable {
 public:
  /// Replaces what `metaData` holds by the description of the rows.
  virtual void GetRecordMetaData(KXRecordMetaData& metaData) const = 0;
};

using RefCntCachePhysicalSeedEntry = RefCnt<CachePhysicalSeedEntry>;
