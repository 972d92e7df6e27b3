#include "HostMemory/NearestNames.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/BaseStringUtil.h"

namespace {

/// Longer texts are nobody's slip of the pen.
constexpr std::size_t kMaxLength = 100;
constexpr std::size_t kMinContained = 3;

std::wstring Reduced(std::wstring_view name) {
  std::wstring reduced;
  for (const wchar_t c : name) {
    if (c != L'_') reduced += BaseStringUtil::ToLower(c);
  }
  return reduced;
}

/// How many letters to change, to leave out, to put in or to exchange with the next one make one text of the other.
std::size_t EditDistance(std::wstring_view a, std::wstring_view b) {
  // The distances of the parts of `b` from the parts of `a` that end at the letter before the last, the last and this.
  std::vector<std::size_t> beforeLast, last(b.size() + 1), row(b.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      row[j + 1] = std::min({last[j] + (a[i] == b[j] ? 0 : 1), last[j + 1] + 1, row[j] + 1});
      const bool bExchanged = i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j];
      if (bExchanged) row[j + 1] = std::min(row[j + 1], beforeLast[j - 1] + 1);
    }
    beforeLast = std::exchange(last, row);
  }
  return last.back();
}

/// The less, the likelier; nothing if the name is not near.
std::optional<std::size_t> DistanceOf(const std::wstring& text, const std::wstring& name) {
  const std::size_t distance = EditDistance(text, name);
  const std::size_t allowed = std::max<std::size_t>(1, text.size() / 3);
  if (distance <= allowed) return distance;
  // Behind all slips of the pen; among these the shortest name leaves the least to be guessed.
  if (text.size() >= kMinContained && name.find(text) != std::wstring::npos) return kMaxLength + distance;
  return std::nullopt;
}

}  // namespace

KXStringVector NearestNames(std::wstring_view text, const KXStringVector& names, std::size_t maxCount) {
  const std::wstring reduced = Reduced(text);
  if (reduced.empty() || reduced.size() > kMaxLength) return {};
  std::vector<std::pair<std::size_t, const KXString*>> near;
  for (const KXString& name : names) {
    if (const auto distance = DistanceOf(reduced, Reduced(name))) near.emplace_back(*distance, &name);
  }
  std::ranges::stable_sort(near, {}, [](const auto& distanceAndName) { return distanceAndName.first; });
  KXStringVector nearest;
  for (std::size_t i = 0; i < near.size() && i < maxCount; ++i) nearest.push_back(*near[i].second);
  return nearest;
}

KXString DidYouMean(std::wstring_view text, const KXStringVector& names) {
  const KXStringVector nearest = NearestNames(text, names);
  if (nearest.empty()) return {};
  KXString message = L"; did you mean ";
  for (std::size_t i = 0; i < nearest.size(); ++i) {
    if (i > 0) message.append(i + 1 < nearest.size() ? L", " : L" or ");
    message.append(nearest[i]);
  }
  return message.append(L"?");
}
