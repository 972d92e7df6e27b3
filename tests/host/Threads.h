#pragma once

#include <thread>
#include <vector>

/// Runs work(0), work(1) and so on, each on a thread of its own, to their ends.
template <class Work>
void RunThreads(int threads, Work work) {
  std::vector<std::thread> running;
  running.reserve(static_cast<std::size_t>(threads));
  for (int t = 0; t < threads; ++t) running.emplace_back([&work, t] { work(t); });
  for (std::thread& thread : running) thread.join();
}
