#include "rq/io/Progress.h"

#include <ostream>

namespace {

constexpr std::chrono::milliseconds kInterval(200);
constexpr const char* kClearLine = "\r\x1b[K";

}  // namespace

void Progress::Advance(bool bHadError) {
  if (!m_bShown) return;
  ++m_nDone;
  m_nErrors += bHadError;
  if (const auto now = Clock::now(); now >= m_next) Show(now);
}

void Progress::Clear() {
  if (!m_bOnScreen) return;
  m_err << kClearLine << std::flush;
  m_bOnScreen = false;
}

void Progress::Show(Clock::time_point now) {
  const double seconds = std::chrono::duration<double>(now - m_start).count();
  m_err << kClearLine << m_nDone << " conditions, " << m_nErrors << " errors, "
        << static_cast<std::size_t>(static_cast<double>(m_nDone) / seconds) << " a second" << std::flush;
  m_bOnScreen = true;
  m_next = now + kInterval;
}
