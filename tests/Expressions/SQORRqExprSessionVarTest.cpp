#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>

#include "Host/ErrorMessage.h"
#include "Host/MetadataUtil.h"
#include "Host/ServerLog.h"
#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"

namespace {

using testing::ElementsAre;

const wchar_t* const kDualStream = L"TELM_SYS_SESSION_VAR_DUALSTREAM";

using Session = MemoryGateway;

TEST(SessionVar, HasTheFirstValueThatApplies) {
  const KXStringPair user(L"B", L"USER");
  const wchar_t* const kLeft = L"VORT_RPDBASE64";
  // A session, a variable, and its value if there is one.
  const std::tuple<const char*, std::function<void(Session&)>, const wchar_t*, const char*> rows[] = {
      {"a value", [](Session& rp) { rp.SetSessionVariable(L"B", L"USER", L"x"); }, L"USER", "x"},
      {"a null value", [](Session& rp) { rp.SetSessionVariable(L"B", L"USER", nullptr); }, L"USER", nullptr},
      {"of another block", [](Session& rp) { rp.SetSessionVariable(L"C", L"USER", L"x"); }, L"USER", nullptr},
      {"a request before its session",
       [&](Session& rp) { rp.SetSessionVariable(L"B", L"USER", L"x").SetRequestProperty(user, L"y"); }, L"USER", "y"},
      {"a dual stream session", [](Session& rp) { rp.SetSessionProperty(kDualStream, true); }, L"USER",
       "PLACEHOLDER_OF_SESSIONVAR"},
      {"a value in a dual stream session",
       [](Session& rp) { rp.SetSessionProperty(kDualStream, true).SetSessionVariable(L"B", L"USER", L"x"); }, L"USER",
       "x"},
      {"a session that says it is none", [](Session& rp) { rp.SetSessionProperty(kDualStream, false); }, L"USER",
       nullptr},
      {"a dual stream session, offline",
       [](Session& rp) { rp.SetSessionProperty(kDualStream, true).SetOfflineMode(true); }, L"USER", nullptr},
      {"a dual stream request", [](Session& rp) { rp.SetRequestProperty(kDualStream, true); }, L"USER", nullptr},
      {"of the variable left in place, in another letter case",
       [](Session& rp) { rp.SetRequestProperty(kDualStream, true); }, L"vort_RpdBase64", "valueof(B.VORT_RPDBASE64)"},
      {"left in place, offline", [](Session& rp) { rp.SetRequestProperty(kDualStream, true).SetOfflineMode(true); },
       kLeft, nullptr},
      {"left in place, without the request property", [](Session&) {}, kLeft, nullptr},
      {"a dual stream session before its request",
       [](Session& rp) { rp.SetRequestProperty(kDualStream, true).SetSessionProperty(kDualStream, true); }, kLeft,
       "PLACEHOLDER_OF_SESSIONVAR"},
  };
  for (const auto& [name, setUp, variableName, value] : rows) {
    SCOPED_TRACE(name);
    MemoryGateway rp;
    setUp(rp);
    const RqExprSessionVar variable(KXStringPair(L"B", variableName));
    try {
      const auto pValue = variable.GetValue(&rp);
      ASSERT_TRUE(value);
      EXPECT_EQ(pValue->StringFrom().ToUTF8(), value);
    } catch (const ErrorMessage& message) {
      EXPECT_FALSE(value);
      EXPECT_EQ(message.GetCode(), 23006u);
      EXPECT_THAT(message.GetArgs(), ElementsAre(KXString(L"B"), KXString(variableName)));
    }
  }
}

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
  rp.SetSessionVariable(L"B", L"ZERO", 0).SetSessionVariable(L"B", L"ONE", 1);
  EXPECT_FALSE(RqExprSessionVar(KXStringPair(L"B", L"ZERO")).IsNonZeroValue(&rp));
  EXPECT_TRUE(RqExprSessionVar(KXStringPair(L"B", L"ONE")).IsNonZeroValue(&rp));
  EXPECT_THROW(RqExprSessionVar(KXStringPair(L"B", L"NONE")).IsNonZeroValue(&rp), ErrorMessage);
}

// Bundles

TEST(SessionVar, TakesItsValueFromTheBundleOfTheLookupAboveIt) {
  const auto make = [](const KXString& name) { return new RqExprSessionVar(KXStringPair(L"B", name)); };
  const KXString bundleName = KXString(MetadataUtil::kVBLBundlePrefix) + L"LANG";
  MemoryGateway rp;
  rp.SetSessionVariable(L"B", L"LANG", L"en").SetSessionVariable(L"B", L"lang", L"de");

  rp.MakeObject<MemoryDatabase>(1U, L"bundles", ServerInfo::kVblData);
  rp.MakeObject<MemoryDatabase>(2U, L"tables", ServerInfo::kSQLite);
  const VoidID bundles(kTIDADatabase, 1);
  const VoidID tables(kTIDADatabase, 2);

  RqExprLookup lookup;
  lookup.MarkTargetID(bundles);
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

  lookup.MarkTargetID(tables);
  EXPECT_FALSE(pVariable->GetVBLBundleSessionVariableIfItExists(value, &rp)) << "no database of bundles";
  lookup.MarkTargetID(VoidID::NullID);
  EXPECT_FALSE(pVariable->GetVBLBundleSessionVariableIfItExists(value, &rp)) << "no database";
  OwnedRqExprPtr valueExpr(new RqExprIntegerLiteral(1, false));
  valueExpr->MarkTargetID(bundles);
  lookup.SetValueExpr(valueExpr);
  EXPECT_TRUE(pVariable->GetVBLBundleSessionVariableIfItExists(value, &rp));

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
