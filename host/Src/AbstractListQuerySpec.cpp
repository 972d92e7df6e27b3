#include "Host/AbstractListQuerySpec.h"

#include <atomic>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"

namespace {

std::atomic<AbstractListQuerySpec::Reader> g_reader{nullptr};

}  // namespace

void AbstractListQuerySpec::ToByteVector(ByteVector& bv, const AbstractListQuerySpec* pSpec) {
  DataBlobUtil::ToByteVector(bv, pSpec != nullptr);
  if (pSpec) pSpec->ToByteVector(bv);
}

const_iterator AbstractListQuerySpec::FromByteVector(const_iterator start, AbstractListQuerySpec*& pSpec) {
  bool bHasSpec = false;
  const const_iterator spec = DataBlobUtil::FromByteVector(start, bHasSpec);
  pSpec = nullptr;
  if (!bHasSpec) return spec;
  const Reader reader = g_reader.load();
  if (!reader) DataBlobUtil::RaiseMalformed(start, L"query that can be read here");
  return reader(spec, pSpec);
}

void AbstractListQuerySpec::SetReader(Reader reader) { g_reader.store(reader); }
