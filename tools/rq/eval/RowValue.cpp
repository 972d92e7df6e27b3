#include "rq/eval/RowValue.h"

#include "Host/BaseStringUtil.h"

bool RowValue::IsText() const { return !IsNull() && Get().GetKXDataType() == KXVarCharData; }

std::string RowValue::ToText() const {
  if (IsNull()) return "NULL";
  const std::string text = Get().ToString().ToUTF8();
  switch (Get().GetKXDataType()) {
    case KXVarCharData:
      return '\'' + BaseStringUtil::EscapeCharacter(Get().ToString(), L'\'', L'\'').ToUTF8() + '\'';
    case KXDateData:
      return "DATE '" + text + '\'';
    case KXTimeData:
      return "TIME '" + text + '\'';
    case KXDateTimeData:
      return "TIMESTAMP '" + text + '\'';
    default:
      return text;
  }
}

std::partial_ordering RowValue::Compare(const RowValue& a, const RowValue& b) {
  if (a.m_pValue == b.m_pValue || a.Get() == b.Get()) return std::partial_ordering::equivalent;
  if (a.Get() < b.Get()) return std::partial_ordering::less;
  return b.Get() < a.Get() ? std::partial_ordering::greater : std::partial_ordering::unordered;
}
