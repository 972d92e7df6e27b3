#include "Host/ServerLog.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

struct LogState {
  std::mutex m_lock;
  ServerLog::Sink m_sink;  // null: the default sink
  std::atomic<bool> m_bHasSink{false};
};

/// Never destroyed: static objects log too.
LogState& GetLogState() {
  static auto& state = *new LogState();
  return state;
}

void WriteToStandardError(const KXString& text) {
  const std::string line = text.ToUTF8() + '\n';
  (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void ServerLog::LogMessage(bool bError, const wchar_t* text) {
  if (bError || IsInformationLogged()) LogMessage(bError, KXString(text));
}

void ServerLog::LogMessage(bool bError, const KXString& text) {
  LogState& state = GetLogState();
  const std::lock_guard guard(state.m_lock);
  if (state.m_sink) {
    state.m_sink(bError, text);
  } else if (bError) {
    WriteToStandardError(text);
  }
}

bool ServerLog::IsInformationLogged() { return GetLogState().m_bHasSink.load(std::memory_order_relaxed); }

ServerLog::Sink ServerLog::SetSink(Sink sink) {
  LogState& state = GetLogState();
  const std::lock_guard guard(state.m_lock);
  state.m_bHasSink.store(sink != nullptr, std::memory_order_relaxed);
  return std::exchange(state.m_sink, std::move(sink));
}
