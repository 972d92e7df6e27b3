#include "rq/sql/SqlWindow.h"

#include <cstdint>
#include <string>

#include "rq/sql/SqlNodeUtil.h"
#include "rq/sql/SqlText.h"

namespace {

/// The bits of frameOptions.
enum FrameOption : std::int64_t {
  kWritten = 0x1,
  kRange = 0x2,
  kRows = 0x4,
  kFromFirst = 0x20,
  kToLast = 0x100,
  kFromThis = 0x200,
  kToThis = 0x400,
  kFromBefore = 0x800,
  kExclude = 0x8000 | 0x10000 | 0x20000,
};

/// A window as it is written, with what it takes over from those of the WINDOW clause before end.
SqlWindow Resolve(SqlNode window, const std::vector<SqlNode>& named, std::size_t end, bool bIsName) {
  SqlWindow resolved;
  const std::string_view base = window.Get(bIsName ? "name" : "refname").GetText();
  if (!base.empty()) {
    std::size_t i = 0;
    while (i < end && named[i].Get("name").GetText() != base) ++i;
    if (i == end) {
      throw SqlError(PlaceOfNode(window), "there is no window " + ForMessage(base, kMaxQuotedCharacters));
    }
    resolved = Resolve(named[i], named, i, false);
    if (bIsName) return resolved;
    const bool bTwice =
        !window.Get("partitionClause").IsNone() || (!window.Get("orderClause").IsNone() && !resolved.m_order.empty());
    if (bTwice || (resolved.m_node.Get("frameOptions").GetNumber() & kWritten) != 0) {
      throw SqlError(PlaceOfNode(window), "a window adds to a named one only an order or a frame that it has not");
    }
  }
  for (const SqlNode column : window.Get("partitionClause").GetElements()) resolved.m_partition.push_back(column);
  for (const SqlNode sortBy : window.Get("orderClause").GetElements()) resolved.m_order.push_back(sortBy);
  resolved.m_node = window;
  return resolved;
}

SqlFrame ReadFrame(SqlNode window, bool bHasOrder) {
  const std::int64_t options = window.Get("frameOptions").GetNumber();
  const auto has = [options](std::int64_t bits) { return (options & bits) == bits; };
  const bool bRows = has(kRows);
  if ((options & kExclude) != 0) RaiseUnsupported(window, "a frame with EXCLUDE");
  if (has(kFromFirst | kToLast)) return {};
  // Without an order no row is told from another.
  if (!bRows && !bHasOrder && has(kFromFirst | kToThis)) return {};
  if (has(kFromFirst | kToThis)) return {bRows ? SqlFrame::kRunning : SqlFrame::kRunningWithPeers, {}};
  if (bRows && has(kFromThis | kToThis)) return {SqlFrame::kMoving, {}};
  if (bRows && has(kFromBefore | kToThis)) return {SqlFrame::kMoving, window.Get("startOffset")};
  throw SqlError(PlaceOfNode(window),
                 "of frames only those are supported that end with this row and begin with the first one or, in ROWS, "
                 "a number of rows before it, and the whole partition");
}

}  // namespace

SqlWindow ReadWindow(SqlNode over, SqlNode windowClause) {
  const std::vector<SqlNode> named = windowClause.GetElements();
  SqlWindow window = Resolve(over, named, named.size(), !over.Get("name").IsNone());
  window.m_bHasFrame = (window.m_node.Get("frameOptions").GetNumber() & kWritten) != 0;
  window.m_frame = ReadFrame(window.m_node, !window.m_order.empty());
  return window;
}
