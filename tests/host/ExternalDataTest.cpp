#include "Host/ExternalData.h"

#include <gtest/gtest.h>

#include "Host/TableIdentifier.h"

namespace {

TEST(ExternalObjectReference, TextsAndComparison) {
  const ExternalObjectReference reference({L"Lake", L"a\"b/c"}, L"x");
  EXPECT_EQ(reference.ToString(), L"Lake.a\"b/c as x");
  EXPECT_EQ(reference.ToStringForQueryGeneration(), L"\"Lake\".\"a\"\"b/c\"");
  EXPECT_EQ(reference.GetObjectReferenceStringAsPath(), L"/Lake/a\"b\\/c");
  EXPECT_EQ(TableIdentifier({L"u", L"t"}).ToString(), L"u.t");
  EXPECT_EQ(TableIdentifier({L"", L"t"}).ToString(), L"t");
  const ExternalObjectReference plain({L"a"}), aliased({L"a"}, L"x");
  EXPECT_EQ(plain, aliased) << "the alias is no part of what is meant";
  EXPECT_FALSE(ExternalObjectReference::IsSameObjectReference_CompareAll(plain, aliased));
}

}  // namespace
