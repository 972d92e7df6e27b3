#include "Host/VoidID.h"

#include <type_traits>

#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"

static_assert(sizeof(VoidID) == 8 && std::is_trivially_copyable_v<VoidID>);

KXString UniqueNum::ToString() const { return BaseStringUtil::StringFrom(m_number); }

void UniqueNum::ToByteVector(ByteVector& bytes) const { DataBlobUtil::ToByteVector(bytes, m_number); }

const_iterator UniqueNum::FromByteVector(const_iterator cursor) {
  return DataBlobUtil::FromByteVector(cursor, m_number);
}

KXString VoidID::ToString() const {
  return BaseStringUtil::StringFrom(m_interfaceTypeID) + L':' + m_uniqueNum.ToString();
}

bool VoidID::StringToVoidID(std::wstring_view text, VoidID& id) {
  const std::size_t colon = text.find(L':');
  if (colon == std::wstring_view::npos) return false;
  const auto type = BaseStringUtil::IntFrom(text.substr(0, colon));
  const auto number = BaseStringUtil::UIntFrom(text.substr(colon + 1));
  if (!type || !number) return false;
  const VoidID parsed(*type, *number);
  // One text for each identifier: no plus signs, no leading zeros.
  if (parsed.ToString() != text) return false;
  id = parsed;
  return true;
}

bool VoidID::IsStringAVoidID(std::wstring_view text) {
  VoidID id;
  return StringToVoidID(text, id);
}

void VoidID::ToByteVector(ByteVector& bytes) const {
  DataBlobUtil::ToByteVector(bytes, m_interfaceTypeID);
  m_uniqueNum.ToByteVector(bytes);
}

const_iterator VoidID::FromByteVector(const_iterator cursor) {
  return m_uniqueNum.FromByteVector(DataBlobUtil::FromByteVector(cursor, m_interfaceTypeID));
}

void VoidIDVectorUtil::ToByteVector(ByteVector& bytes, const VoidIDVector& ids) {
  DataBlobUtil::ToByteVector(bytes, static_cast<std::uint32_t>(ids.size()));
  for (const VoidID& id : ids) id.ToByteVector(bytes);
}

const_iterator VoidIDVectorUtil::FromByteVector(const_iterator cursor, VoidIDVector& ids) {
  std::uint32_t count = 0;
  cursor = DataBlobUtil::FromByteVector(cursor, count);
  // Before room is made for them: the count may come from outside.
  DataBlobUtil::RequireReadable(cursor, std::uint64_t{count} * sizeof(VoidID));
  ids.assign(count, VoidID());
  for (VoidID& id : ids) cursor = id.FromByteVector(cursor);
  return cursor;
}
