#pragma once

#include <cstdint>

namespace sug {

/// Gives 32-bit numbers that no other call in the process has been given.
///
/// A thread draws a block of kBlockSize numbers at a time and hands them out without looking at any other thread; what
/// is left of its block when it ends is lost. So numbers rise within a thread but have no order between threads. After
/// all 2^24 blocks the numbering starts anew: a number then comes again, and is unique only if its former holder has
/// gone.
class UniqueIDGenerator {
 public:
  static constexpr std::uint32_t kBlockSize = 256;

  /// Neither 0 nor 0xffffffff, which stand for "no number".
  static std::uint32_t generateProcessUniqueID32() {
    if (t_block.m_next == t_block.m_end) [[unlikely]]
      DrawBlock();
    return t_block.m_next++;
  }

 private:
  struct Block {
    std::uint32_t m_next = 0;
    std::uint32_t m_end = 0;
  };

  [[gnu::cold, gnu::noinline]] static void DrawBlock();

  [[gnu::tls_model("initial-exec")]] static thread_local constinit Block t_block;
};

}  // namespace sug
