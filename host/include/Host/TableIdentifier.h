#pragma once

#include <compare>

#include "Host/HostTypes.h"
#include "Host/KXRecordMetaData.h"
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

/// The values of a column of a native table, each kept once under the code that stands for it in the table's rows. It
/// is read as a table of its own.
class ATELMDictionary {
 public:
  virtual ~ATELMDictionary() = default;

  /// Lends the description of the dictionary's own field of that name; null if it has none.
  virtual const KXFieldDescriptor* GetFieldDescriptor(const KXString& name) const = 0;

 protected:
  ATELMDictionary() = default;
  ATELMDictionary(const ATELMDictionary&) = default;
  ATELMDictionary& operator=(const ATELMDictionary&) = default;
};

/// A table of the engine's own storage while it is in use.
class ATELMNativeTable : public RefCountable {
 public:
  virtual const TableIdentifier& GetTableIdentifier() const = 0;
  /// Lends the description of a field; null if the table has none of that name.
  virtual const KXFieldDescriptor* GetFieldDescriptor(const KXString& name) const = 0;
  /// Lends the dictionary of that name, which lives as long as the table; null if there is none.
  virtual const ATELMDictionary* GetDictionary(const KXString& name) const = 0;
};

using RefCntTELMNativeTable = RefCnt<ATELMNativeTable>;
