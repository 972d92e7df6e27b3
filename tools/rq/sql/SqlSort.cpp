#include "rq/sql/SqlSort.h"

#include "rq/sql/SqlNodeUtil.h"

RqSortSpec::SortDirection SortDirectionOf(SqlNode sortBy) {
  const std::string_view direction = sortBy.Get("sortby_dir").GetText();
  if (direction == "SORTBY_USING") RaiseUnsupported(sortBy, "an operator to sort by");
  return direction == "SORTBY_DESC" ? RqSortSpec::kDesc : RqSortSpec::kAsc;
}

RqSortSpec::NullSortDirection NullSortDirectionOf(SqlNode sortBy) {
  const std::string_view nulls = sortBy.Get("sortby_nulls").GetText();
  if (nulls == "SORTBY_NULLS_FIRST") return RqSortSpec::kFirst;
  return nulls == "SORTBY_NULLS_LAST" ? RqSortSpec::kLast : RqSortSpec::kNoCare;
}
