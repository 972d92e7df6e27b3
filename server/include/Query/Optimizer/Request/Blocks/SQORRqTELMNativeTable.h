#pragma once

#include "Host/KXDataType.h"
#include "Host/KXString.h"
#include "Host/TableIdentifier.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"

/// A table of the engine's own storage, or one of its dictionaries. It keeps the table in use while the handle is set;
/// a node that was read back has none until it is set again. Wanted: equivalence is that of RqAtomicTable, so it does
/// not look at the identifier: two native tables with the same marks are held equivalent.
class RqTELMNativeTable final : public RqNodeImpl<RqTELMNativeTable, RqAtomicTable, kRqTELMNativeTable> {
 public:
  static const KXString kTablePrefix;  ///< "T", in front of the table's number in the text form.

  RqTELMNativeTable() = default;
  RqTELMNativeTable(const RefCntTELMNativeTable& nativeTable, int tableNumber);
  /// The dictionary of that name, or the table itself if the name is empty. A table without that dictionary is a logic
  /// error.
  RqTELMNativeTable(const RefCntTELMNativeTable& nativeTable, const KXString& dictionaryName, int tableNumber);
  /// The copy keeps the same table in use.
  RqTELMNativeTable(const RqTELMNativeTable& rhs, bool bNewIDs, bool bDeepCopy);

  const RefCntTELMNativeTable& GetRefCntTELMNativeTable() const { return m_nativeTable; }
  void SetRefCntTELMNativeTable(const RefCntTELMNativeTable& nativeTable) { m_nativeTable = nativeTable; }
  void ClearRefCntTELMNativeTable() { m_nativeTable.Null(); }
  const TableIdentifier& GetTableIdentifier() const { return m_tableIdentifier; }
  bool IsDictionary() const { return !m_dictionaryName.empty(); }
  /// Empty if the node stands for the table.
  const KXString& GetDictionaryName() const { return m_dictionaryName; }

  /// Lends the description of a field of the dictionary or the table; null if there is none of that name. Asserts that
  /// the handle is set.
  const KXFieldDescriptor* GetFieldDescriptor(const KXString& name) const;
  /// Whether there is such a field; if not, `type` is as it was. Asserts that the handle is set.
  bool GetColumnTypeInfo(const KXString& name, KXTypeInfo& type) const;

  bool IsTELMNativeTable() const override { return true; }
  bool IsLeafTable() const override { return true; }
  bool IsDataTypeProvidingTransientTable() const override { return true; }
  /// Wanted: what RqAtomicTable holds is left out, the sample size with it, and so is the handle.
  void ToByteVector(ByteVector& bv) override;
  const_iterator FromByteVector(const_iterator start) override;

 private:
  RefCntTELMNativeTable m_nativeTable;
  TableIdentifier m_tableIdentifier;
  KXString m_dictionaryName;
};
