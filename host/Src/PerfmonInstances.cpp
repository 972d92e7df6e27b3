#include "Host/PerfmonInstances.h"

namespace {

std::atomic<APerfmonInstancesMgr*> g_pManager{nullptr};

}  // namespace

APerfmonInstancesMgr* APerfmonInstancesMgr::Get() { return g_pManager.load(); }
void APerfmonInstancesMgr::Set(APerfmonInstancesMgr* pManager) { g_pManager.store(pManager); }
