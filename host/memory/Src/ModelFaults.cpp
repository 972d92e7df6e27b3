#include "ModelFaults.h"

#include "Host/BaseStringUtil.h"
#include "Host/ErrorMessage.h"

KXString ModelFaults::PlaceOf(const ModelFault& fault) const {
  return fault.m_path.empty() ? m_source : m_source + L": " + BaseStringUtil::StdStringToString(fault.m_path);
}

void ModelFaults::Add(const ModelFault& fault) {
  if (++m_count > kMaxShown) return;
  if (m_count == 1) {
    m_firstPlace = PlaceOf(fault);
    m_text = fault.m_cause;
  } else {
    m_text.append(L"\n").append(PlaceOf(fault)).append(L": ").append(fault.m_cause);
  }
}

void ModelFaults::RaiseIfAny() const {
  if (IsEmpty()) return;
  KXString text = m_text;
  if (m_count > kMaxShown) {
    const std::size_t more = m_count - kMaxShown;
    text.append(L"\n").append(m_source).append(L": and ").append(BaseStringUtil::StringFrom(more));
    text.append(more == 1 ? L" more fault" : L" more faults");
  }
  KX_RAISE(kMsgModel, m_firstPlace, text);
}
