#pragma once

#include <cstddef>
#include <string>

#include "Host/KXString.h"

/// What is wrong with a value of a model: the path of keys to it, and the cause. Thrown by who reads the value, and
/// caught by who goes on with the next one.
struct ModelFault {
  std::string m_path;  ///< Empty for the document itself.
  KXString m_cause;
};

/// The faults of a model, so that its author hears of all in one go.
class ModelFaults {
 public:
  static constexpr std::size_t kMaxShown = 25;

  /// `source` names the text in messages.
  explicit ModelFaults(const KXString& source) : m_source(source) {}
  ModelFaults(const ModelFaults&) = delete;
  ModelFaults& operator=(const ModelFaults&) = delete;

  void Add(const ModelFault& fault);
  bool IsEmpty() const { return m_count == 0; }

  /// Adds the fault that the function throws, if it throws one. Tells whether it threw none.
  template <class Function>
  bool Collect(Function function) {
    try {
      function();
      return true;
    } catch (const ModelFault& fault) {
      Add(fault);
      return false;
    }
  }

  /// If there are faults, raises ErrorMessage kMsgModel with a line "source: path: cause" for each of the first
  /// kMaxShown, and one that counts the others. Its first argument is the place of the first one.
  void RaiseIfAny() const;

 private:
  KXString PlaceOf(const ModelFault& fault) const;

  KXString m_source;
  std::size_t m_count = 0;
  KXString m_firstPlace;
  KXString m_text;  ///< Behind the first place.
};
