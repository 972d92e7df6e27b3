#include "rq/BigStack.h"

#include <pthread.h>
#include <sys/mman.h>

#include <exception>
#include <system_error>

namespace {

constexpr std::size_t kLeastStackBytes = 1024UL * 1024;
constexpr std::size_t kGuardBytes = 64UL * 1024;

/// Address space for a stack, with an untouchable guard below it.
class StackMapping {
 public:
  StackMapping() {
    // A limit on the address space may leave room for a smaller one only. As much again is left to the task.
    for (std::size_t nBytes = kBigStackBytes; m_pBase == MAP_FAILED && nBytes >= kLeastStackBytes; nBytes /= 2) {
      m_nBytes = nBytes;
      m_pBase = mmap(nullptr, 2 * nBytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    }
    if (m_pBase == MAP_FAILED) throw std::system_error(ENOMEM, std::generic_category(), "no stack");
    munmap(static_cast<char*>(m_pBase) + m_nBytes, m_nBytes);
    mprotect(m_pBase, kGuardBytes, PROT_NONE);
  }
  StackMapping(const StackMapping&) = delete;
  StackMapping& operator=(const StackMapping&) = delete;
  ~StackMapping() { munmap(m_pBase, m_nBytes); }

  void* GetBase() const { return static_cast<char*>(m_pBase) + kGuardBytes; }
  std::size_t GetSize() const { return m_nBytes - kGuardBytes; }

 private:
  void* m_pBase = MAP_FAILED;
  std::size_t m_nBytes = 0;
};

struct Job {
  const std::function<void()>& m_task;
  std::exception_ptr m_error;

  static void* Run(void* pJob) {
    auto& job = *static_cast<Job*>(pJob);
    try {
      job.m_task();
    } catch (...) {
      job.m_error = std::current_exception();
    }
    return nullptr;
  }
};

}  // namespace

void RunOnBigStack(const std::function<void()>& task) {
  const StackMapping stack;
  Job job{task, nullptr};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack.GetBase(), stack.GetSize());
  pthread_t thread;
  const int error = pthread_create(&thread, &attributes, &Job::Run, &job);
  pthread_attr_destroy(&attributes);
  if (error != 0) throw std::system_error(error, std::generic_category(), "no thread");
  pthread_join(thread, nullptr);
  if (job.m_error) std::rethrow_exception(job.m_error);
}
