#include "Host/ExternalData.h"

#include <gtest/gtest.h>

#include "Host/DataBlobUtil.h"
#include "Host/ExternalScript.h"
#include "Host/TableIdentifier.h"

namespace {

template <class Value>
Value ReadBack(const Value& value) {
  ByteVector bytes;
  value.ToByteVector(bytes);
  const BoundedRead bound(bytes);
  Value read;
  bound.RequireAtEnd(read.FromByteVector(bytes.data()));
  return read;
}

TEST(ExternalObjectReference, Texts) {
  const ExternalObjectReference reference({L"Lake", L"a\"b/c"}, L"x");
  EXPECT_EQ(reference.ToString(), L"Lake.a\"b/c as x");
  EXPECT_EQ(reference.ToStringForQueryGeneration(), L"\"Lake\".\"a\"\"b/c\"");
  EXPECT_EQ(reference.GetObjectReferenceStringAsPath(), L"/Lake/a\"b\\/c");
  EXPECT_EQ(ExternalObjectReference().ToString(), L"");
  EXPECT_EQ(TableIdentifier({L"u", L"t"}).ToString(), L"u.t");
  EXPECT_EQ(TableIdentifier({L"", L"t"}).ToString(), L"t");
}

TEST(ExternalObjectReference, AliasIsNoPartOfWhatIsMeant) {
  const ExternalObjectReference plain({L"a"});
  const ExternalObjectReference aliased({L"a"}, L"x");
  const ExternalObjectReference deeper({L"a", L"b"});
  EXPECT_EQ(plain, aliased);
  EXPECT_LT(aliased, deeper);
  EXPECT_FALSE(ExternalObjectReference::IsSameObjectReference_CompareAll(plain, aliased));
  EXPECT_TRUE(ExternalObjectReference::IsSameObjectReference_CompareAll(aliased, ReadBack(aliased)));
  ExternalObjectReference cleared = aliased;
  cleared.Clear();
  EXPECT_TRUE(cleared.IsEmpty() && cleared.GetAlias().empty());
}

TEST(ExternalData, ByteForms) {
  EXPECT_EQ(ReadBack(TableIdentifier{L"u", L"t"}), (TableIdentifier{L"u", L"t"}));
  EXPECT_EQ(ReadBack(ExternalJoiningIndex{-3, kExternalUnion}), (ExternalJoiningIndex{-3, kExternalUnion}));

  ExternalScriptExecutionData script;
  script.m_ScriptPath = L"path";
  script.m_OutputColumn = L"column";
  script.m_PAFOpCode = 7;
  script.m_isFloatingTimeGrain = true;
  script.m_Target = L"target";
  script.m_ConnectionPool = L"pool";
  script.m_DbTable = L"table";
  script.m_DataBindings = {{L"a", L"b", L"c", L"d"}, {}};
  script.m_Options = {{L"x", L"1"}};
  EXPECT_EQ(ReadBack(script), script);
  ByteVector bytes;
  script.ToByteVector(bytes);
  ExternalScriptExecutionData reused = script;
  reused.FromByteVector(bytes.data());
  EXPECT_EQ(reused, script) << "what it held is replaced";

  ByteVector expected;
  for (const wchar_t* const text : {L"path", L"column"}) DataBlobUtil::ToByteVector(expected, KXString(text));
  DataBlobUtil::ToByteVector(expected, std::uint32_t{7});
  DataBlobUtil::ToByteVector(expected, true);
  DataBlobUtil::ToByteVector(expected, false);
  for (const wchar_t* const text : {L"target", L"pool", L"table"}) {
    DataBlobUtil::ToByteVector(expected, KXString(text));
  }
  DataBlobUtil::ToByteVector(expected, std::int32_t{2});
  for (const ExternalScriptDataBinding& binding : script.m_DataBindings) binding.ToByteVector(expected);
  DataBlobUtil::ToByteVector(expected, std::int32_t{1});
  DataBlobUtil::ToByteVector(expected, script.m_Options[0]);
  EXPECT_EQ(bytes, expected);
}

}  // namespace
