#pragma once

#include <compare>

#include "Host/HostTypes.h"
#include "Host/KXString.h"
#include "Host/Ref.h"

/// Names a table of the engine's own storage: the storage user it belongs to and its name there.
struct TableIdentifier {
  KXString m_storageUser;
  KXString m_tableName;

  /// User and name with "." between; the name alone where there is no user.
  KXString ToString() const;
  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend auto operator<=>(const TableIdentifier&, const TableIdentifier&) = default;
};

/// A table of the engine's own storage while it is in use.
class ATELMNativeTable : public RefCountable {
 public:
  virtual const TableIdentifier& GetTableIdentifier() const = 0;
};

using RefCntTELMNativeTable = RefCnt<ATELMNativeTable>;
