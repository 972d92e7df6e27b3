#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Host/ErrorMessage.h"
#include "Host/MetadataUtil.h"
#include "Host/ServerLog.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"

namespace {

using testing::ElementsAre;

const wchar_t* const kDualStream = L"TELM_SYS_SESSION_VAR_DUALSTREAM";

struct ValueRow {
  const char* name;
  std::function<void(MemoryGateway&)> setUp;
  const char* value;  // null: there is none
  const wchar_t* variable = L"USER";
};

void PrintTo(const ValueRow& row, std::ostream* pOut) { *pOut << row.name; }

const ValueRow kValueRows[] = {
    {"none", [](MemoryGateway&) {}, nullptr},
    {"a value", [](MemoryGateway& rp) { rp.SetSessionVariable(L"B", L"USER", L"x"); }, "x"},
    {"a null value", [](MemoryGateway& rp) { rp.SetSessionVariable(L"B", L"USER", nullptr); }, nullptr},
    {"a variable of another block", [](MemoryGateway& rp) { rp.SetSessionVariable(L"C", L"USER", L"x"); }, nullptr},
    {"the request goes before the session",
     [](MemoryGateway& rp) {
       rp.SetSessionVariable(L"B", L"USER", L"x");
       rp.SetRequestProperty(KXStringPair(L"B", L"USER"), L"y");
     },
     "y"},
    {"a dual stream session", [](MemoryGateway& rp) { rp.SetSessionProperty(kDualStream, true); },
     "PLACEHOLDER_OF_SESSIONVAR"},
    {"a value in a dual stream session",
     [](MemoryGateway& rp) {
       rp.SetSessionProperty(kDualStream, true);
       rp.SetSessionVariable(L"B", L"USER", L"x");
     },
     "x"},
    {"a session that says it is none", [](MemoryGateway& rp) { rp.SetSessionProperty(kDualStream, false); }, nullptr},
    {"a dual stream session, offline",
     [](MemoryGateway& rp) { rp.SetSessionProperty(kDualStream, true).SetOfflineMode(true); }, nullptr},
    {"a dual stream request", [](MemoryGateway& rp) { rp.SetRequestProperty(kDualStream, true); }, nullptr},
    {"a dual stream request of the variable left in place",
     [](MemoryGateway& rp) { rp.SetRequestProperty(kDualStream, true); }, "valueof(B.VORT_RPDBASE64)",
     L"VORT_RPDBASE64"},
    {"the variable left in place, in another letter case",
     [](MemoryGateway& rp) { rp.SetRequestProperty(kDualStream, true); }, "valueof(B.VORT_RPDBASE64)",
     L"vort_RpdBase64"},
    {"the variable left in place, offline",
     [](MemoryGateway& rp) { rp.SetRequestProperty(kDualStream, true).SetOfflineMode(true); }, nullptr,
     L"VORT_RPDBASE64"},
    {"the variable left in place, without the request property", [](MemoryGateway&) {}, nullptr, L"VORT_RPDBASE64"},
    {"the session goes before the request",
     [](MemoryGateway& rp) { rp.SetRequestProperty(kDualStream, true).SetSessionProperty(kDualStream, true); },
     "PLACEHOLDER_OF_SESSIONVAR", L"VORT_RPDBASE64"},
};

class SessionVarValue : public testing::TestWithParam<ValueRow> {};

TEST_P(SessionVarValue, IsTheFirstThatApplies) {
  const ValueRow& row = GetParam();
  MemoryGateway rp;
  row.setUp(rp);
  const RqExprSessionVar variable(KXStringPair(L"B", row.variable));
  if (row.value) {
    EXPECT_EQ(variable.GetValue(&rp)->StringFrom().ToUTF8(), row.value);
    return;
  }
  try {
    variable.GetValue(&rp);
    ADD_FAILURE() << "there is a value";
  } catch (const ErrorMessage& message) {
    EXPECT_EQ(message.GetCode(), 23006u);
    EXPECT_THAT(message.GetArgs(), ElementsAre(KXString(L"B"), KXString(row.variable)));
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, SessionVarValue, testing::ValuesIn(kValueRows));

TEST(SessionVar, NotesAnErrorOfALiveSecureSessionAlone) {
  const RqExprSessionVar variable(KXStringPair(L"B", L"USER"));
  for (const auto type : {ARpGateway::kRpGatewayType_Secure, ARpGateway::kRpGatewayType_Request}) {
    for (const bool bOffline : {false, true}) {
      SCOPED_TRACE(std::to_string(type) + (bOffline ? " offline" : ""));
      MemoryGateway rp;
      rp.SetGatewayType(type).SetOfflineMode(bOffline);
      int numNoted = 0;
      ServerLog::Sink before = ServerLog::SetSink([&numNoted](bool, const KXString&) { ++numNoted; });
      EXPECT_THROW(variable.GetValue(&rp), ErrorMessage);
      ServerLog::SetSink(std::move(before));
      EXPECT_EQ(numNoted, type == ARpGateway::kRpGatewayType_Secure && !bOffline ? 1 : 0);
    }
  }
}

TEST(SessionVar, IsNonZeroByItsValue) {
  MemoryGateway rp;
  rp.SetSessionVariable(L"B", L"ZERO", 0).SetSessionVariable(L"B", L"ONE", 1).SetSessionVariable(L"B", L"EMPTY", L"");
  EXPECT_FALSE(RqExprSessionVar(KXStringPair(L"B", L"ZERO")).IsNonZeroValue(&rp));
  EXPECT_TRUE(RqExprSessionVar(KXStringPair(L"B", L"ONE")).IsNonZeroValue(&rp));
  EXPECT_FALSE(RqExprSessionVar(KXStringPair(L"B", L"EMPTY")).IsNonZeroValue(&rp));
  EXPECT_THROW(RqExprSessionVar(KXStringPair(L"B", L"NONE")).IsNonZeroValue(&rp), ErrorMessage);
}

// Bundles

TEST(SessionVar, TakesItsValueFromTheBundleOfTheLookupAboveIt) {
  const auto make = [](const KXString& name) { return new RqExprSessionVar(KXStringPair(L"B", name)); };
  const KXString bundleName = KXString(MetadataUtil::kVBLBundlePrefix) + L"LANG";
  MemoryGateway rp;
  rp.SetSessionVariable(L"B", L"LANG", L"en").SetSessionVariable(L"B", L"lang", L"de");

  RqExprLookup lookup;
  RqExprSessionVar* const pVariable = make(bundleName);
  lookup.AddChild(pVariable);
  Heap<PropertyValue> value;
  EXPECT_FALSE(pVariable->GetVBLBundleSessionVariableIfItExists(value, &rp)) << "the variable meant is not there";

  auto* const pList = new RqExprColumnListOrdered();
  lookup.AddChild(pList);
  pList->AddChild(make(L"OTHER"));
  pList->AddChild(make(L"LANG"));
  EXPECT_TRUE(pVariable->GetVBLBundleSessionVariableIfItExists(value, &rp));
  EXPECT_EQ(value->StringFrom(), L"en");
  EXPECT_EQ(pVariable->GetValue(&rp)->StringFrom(), L"en");

  rp.RemoveSessionVariable(L"B", L"LANG");
  EXPECT_THROW(pVariable->GetValue(&rp), ErrorMessage) << "it has no value";
  rp.SetSessionVariable(L"B", L"LANG", L"en");

  RqExprSessionVar* const pDeeper = make(bundleName);
  pList->AddChild(pDeeper);
  EXPECT_FALSE(pDeeper->GetVBLBundleSessionVariableIfItExists(value, &rp)) << "it stands under no lookup itself";
  EXPECT_FALSE(RqExprSessionVar(KXStringPair(L"B", bundleName)).GetVBLBundleSessionVariableIfItExists(value, &rp));
  RqExprSessionVar* const pPlain = make(L"LANG");
  lookup.AddChild(pPlain);
  EXPECT_FALSE(pPlain->GetVBLBundleSessionVariableIfItExists(value, &rp)) << "its name is of no bundle";
}

}  // namespace
