#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>

/// A line on a terminal that tells how far a long run has come. It appears when the run has lasted for a second.
class Progress {
 public:
  /// The stream is lent. Without bShown nothing is ever written.
  Progress(std::ostream& err, bool bShown) : m_err(err), m_bShown(bShown) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Clear(); }

  /// One more condition is done.
  void Advance(bool bHadError);
  /// Takes the line away, so that something else can be written.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  void Show(Clock::time_point now);

  std::ostream& m_err;
  bool m_bShown;
  bool m_bOnScreen = false;
  std::size_t m_nDone = 0;
  std::size_t m_nErrors = 0;
  Clock::time_point m_start = Clock::now();
  Clock::time_point m_next = m_start + std::chrono::seconds(1);
};
