#pragma once

#include <cstdint>

/// The server's cache of results.
class ACacheStorage {
 public:
  virtual ~ACacheStorage() = default;

  /// Lends the one of the process; null until one is set. Any thread may call these two.
  static ACacheStorage* Get();
  /// From now on Get gives this one, which stays the caller's; null takes it off again.
  static void Set(ACacheStorage* pStorage);

  /// A number above all that were given before, by which entries are put in the order of their making. Any thread.
  virtual std::uint64_t GetNextCacheSequence() = 0;

 protected:
  ACacheStorage() = default;
  ACacheStorage(const ACacheStorage&) = default;
  ACacheStorage& operator=(const ACacheStorage&) = default;
};
