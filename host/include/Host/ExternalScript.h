#pragma once

#include <compare>
#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXString.h"
#include "Host/Ref.h"

/// A column of the data that a script is handed.
struct ExternalScriptDataBinding {
  KXString m_BMMColumn;           ///< the column of the business model
  KXString m_PresentationColumn;  ///< the column as users see it
  KXString m_RawDatatype;         ///< the type under which the script gets it
  KXString m_SortOrder;

  void ToByteVector(ByteVector& bv) const;
  const_iterator FromByteVector(const_iterator start);

  friend auto operator<=>(const ExternalScriptDataBinding&, const ExternalScriptDataBinding&) = default;
};

/// What running a script takes: the script, the data that goes in, and where its output goes. Several nodes may share
/// one record; none of them changes it.
class ExternalScriptExecutionData : public RefCountable {
 private:
  auto Fields() const {
    return std::tie(m_ScriptPath, m_OutputColumn, m_PAFOpCode, m_isFloatingTimeGrain, m_bIsEvaluateScript, m_Target,
                    m_ConnectionPool, m_DbTable, m_DataBindings, m_Options);
  }

 public:
  KXString m_ScriptPath;
  KXString m_OutputColumn;  ///< the column of the script's output that is meant
  std::uint32_t m_PAFOpCode = 0;
  bool m_isFloatingTimeGrain = false;
  bool m_bIsEvaluateScript = false;
  KXString m_Target;
  KXString m_ConnectionPool;
  KXString m_DbTable;
  std::vector<ExternalScriptDataBinding> m_DataBindings;
  std::vector<KXStringPair> m_Options;  ///< name and value

  void ToByteVector(ByteVector& bv) const;
  /// Replaces what the record holds.
  const_iterator FromByteVector(const_iterator start);

  /// All fields, in their order.
  friend bool operator==(const ExternalScriptExecutionData& lhs, const ExternalScriptExecutionData& rhs) {
    return lhs.Fields() == rhs.Fields();
  }
  friend auto operator<=>(const ExternalScriptExecutionData& lhs, const ExternalScriptExecutionData& rhs) {
    return lhs.Fields() <=> rhs.Fields();
  }
};
