#include "rq/sql/SqlNodeUtil.h"

#include "rq/sql/SqlText.h"

std::size_t PlaceOfNode(SqlNode node) {
  std::size_t place = node.GetLocation();
  if (place == SqlNode::kNoLocation) place = node.GetStart();
  return place == SqlNode::kNoLocation ? 0 : place;
}

void RaiseUnsupported(SqlNode node, const std::string& what) {
  throw SqlError(PlaceOfNode(node), what + " is not supported");
}

std::vector<std::string_view> TextsOf(SqlNode array) {
  std::vector<std::string_view> texts;
  for (const SqlNode element : array.GetElements()) texts.push_back(element.Get("sval").GetText());
  return texts;
}

std::string JoinedByPoints(const std::vector<std::string_view>& parts) {
  std::string joined;
  for (const std::string_view part : parts) joined.append(joined.empty() ? "" : ".").append(part);
  return joined;
}

std::string WithoutCatalogue(const std::vector<std::string_view>& name) {
  const bool bIsInCatalogue = name.size() == 2 && name[0] == "pg_catalog";
  return bIsInCatalogue ? std::string(name[1]) : JoinedByPoints(name);
}
