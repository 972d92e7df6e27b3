#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

/// Runs the work to its end on a thread with a stack of 256 KiB.
inline void RunOnSmallStack(std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread;
  const auto run = [](void* pWork) -> void* {
    (*static_cast<std::function<void()>*>(pWork))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_attr_destroy(&attributes);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
}
