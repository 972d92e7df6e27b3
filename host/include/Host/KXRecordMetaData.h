#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Host/MemAlloc.h"

/// A field of a record.
struct KXFieldDescriptor {
  KXString m_name;
  KXTypeInfo m_typeInfo;

  friend bool operator==(const KXFieldDescriptor&, const KXFieldDescriptor&) = default;
};

/// What the rows of a table or a result look like: their fields, in order.
class KXRecordMetaData : public memalloc::MemAllocNewdel {
 public:
  std::size_t GetNumFields() const { return m_fields.size(); }
  /// The index must be below the number.
  const KXFieldDescriptor& GetField(std::size_t index) const { return m_fields[index]; }
  /// Lends the first field of the name, letter by letter; null if there is none.
  const KXFieldDescriptor* FindField(std::wstring_view name) const;
  void AddField(const KXString& name, const KXTypeInfo& typeInfo) { m_fields.push_back({name, typeInfo}); }
  void Clear() { m_fields.clear(); }

  friend bool operator==(const KXRecordMetaData& lhs, const KXRecordMetaData& rhs) {
    return lhs.m_fields == rhs.m_fields;
  }

 private:
  std::vector<KXFieldDescriptor> m_fields;
};
