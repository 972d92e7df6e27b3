#include "Host/ACacheStorage.h"

#include <atomic>

namespace {

std::atomic<ACacheStorage*> g_pStorage{nullptr};

}  // namespace

ACacheStorage* ACacheStorage::Get() { return g_pStorage.load(); }
void ACacheStorage::Set(ACacheStorage* pStorage) { g_pStorage.store(pStorage); }
