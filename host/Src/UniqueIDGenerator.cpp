#include "Host/UniqueIDGenerator.h"

#include <atomic>

namespace sug {

thread_local constinit UniqueIDGenerator::Block UniqueIDGenerator::t_block;

void UniqueIDGenerator::DrawBlock() {
  static constinit std::atomic<std::uint32_t> s_nextBlock{0};
  // The product wraps after the last block, which is where the numbering starts anew.
  const std::uint32_t first = s_nextBlock.fetch_add(1, std::memory_order_relaxed) * kBlockSize;
  const std::uint32_t last = first + (kBlockSize - 1);
  t_block.m_next = first == 0 ? 1 : first;
  t_block.m_end = last == 0xffffffff ? last : last + 1;
}

}  // namespace sug
