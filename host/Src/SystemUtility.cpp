#include "Host/SystemUtility.h"

#include <sched.h>
#include <sys/time.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "Host/UniqueIDGenerator.h"

namespace {

int CountProcessors() {
  cpu_set_t processors;
  if (sched_getaffinity(0, sizeof(processors), &processors) == 0) return std::max(CPU_COUNT(&processors), 1);
  // More processors than the set has room for.
  return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

}  // namespace

int SystemUtility::GetNumberOfProcessors() {
  static const int s_count = CountProcessors();
  return s_count;
}

void SystemUtility::GetTimeOfDay(unsigned& seconds, int& microseconds) {
  timeval now{};
  gettimeofday(&now, nullptr);
  seconds = static_cast<unsigned>(now.tv_sec);
  microseconds = static_cast<int>(now.tv_usec);
}

bool SystemUtility::Getenv(const KXString& name, KXString& value) { return Getenv(name.ToUTF8().c_str(), value); }

bool SystemUtility::Getenv(const char* name, KXString& value) {
  const char* const text = std::getenv(name);
  if (!text) return false;
  value = KXString::FromUTF8(text);
  return true;
}

int SystemUtility::KXRand_to_rand_r() {
  thread_local unsigned t_seed = [] {
    unsigned seconds = 0;
    int microseconds = 0;
    GetTimeOfDay(seconds, microseconds);
    // Threads that start in the same microsecond differ by the number.
    return seconds * 1000003U + static_cast<unsigned>(microseconds) +
           sug::UniqueIDGenerator::generateProcessUniqueID32() * 2654435761U;
  }();
  return rand_r(&t_seed);
}
