#include "rq/io/BlockWriter.h"

#include <cerrno>
#include <ostream>

namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

}  // namespace

void BlockWriter::Append(std::string_view text) {
  m_block += text;
  if (m_block.size() >= kBlockBytes) Flush();
}

void BlockWriter::Flush() {
  if (m_block.empty()) return;
  errno = 0;
  m_out.write(m_block.data(), static_cast<std::streamsize>(m_block.size())).flush();
  if (!m_out) throw OutputError(errno != 0 ? errno : EIO);
  m_block.clear();
}
