#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"

#include <tuple>

#include "Host/ARpGateway.h"
#include "Host/BaseStringUtil.h"
#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Host/MetadataUtil.h"
#include "Host/RpObjects.h"
#include "Host/ServerInfo.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprExternal.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

const KXString g_sessionVarSkipReplacement(L"VORT_RPDBASE64");

namespace {

constexpr const wchar_t* kDualStreamProperty = L"TELM_SYS_SESSION_VAR_DUALSTREAM";
constexpr const wchar_t* kDualStreamPlaceholder = L"PLACEHOLDER_OF_SESSIONVAR";

OwnedPropertyValue TextValue(const KXString& text) { return OwnedPropertyValue(new PropertyValueString(text)); }

/// Wanted: only a live session behind a secure gateway has the error noted before it is raised.
[[noreturn]] void RaiseNoValue(const KXStringPair& sessionVar, ARpGateway* pRp) {
  const ErrorMessage message(kMsgSessionVariableHasNoValue, sessionVar.first, sessionVar.second);
  if (!pRp->IsOfflineMode() && pRp->GetGatewayType() == ARpGateway::kRpGatewayType_Secure) {
    ErrorMessage::Raise(message, __FILE__, __LINE__);
  }
  throw message;
}

}  // namespace

RqExprSessionVar::RqExprSessionVar(const RqExprSessionVar& rhs, bool bNewIDs, bool bDeepCopy)
    : RqNodeImpl(rhs, bNewIDs, bDeepCopy), m_byIndex(rhs.m_byIndex), m_sessionVar(rhs.m_sessionVar) {}

OwnedPropertyValue RqExprSessionVar::GetValue(ARpGateway* pRp) const {
  if (OwnedPropertyValue value(pRp->GetSessionVariable(m_sessionVar)); value) return value;
  if (OwnedPropertyValue value; GetVBLBundleSessionVariableIfItExists(value, pRp)) return value;
  if (!pRp->IsOfflineMode()) {
    if (pRp->GetBooleanSessionProperty(kDualStreamProperty, false)) return TextValue(kDualStreamPlaceholder);
    if (pRp->GetBooleanRequestProperty(kDualStreamProperty, false) &&
        BaseStringUtil::IsCaseInsensitiveMatch(m_sessionVar.second, g_sessionVarSkipReplacement)) {
      return TextValue(L"valueof(" + m_sessionVar.first + L"." + g_sessionVarSkipReplacement + L")");
    }
  }
  RaiseNoValue(m_sessionVar, pRp);
}

namespace {

/// The database that the bundle is read from: that of the value asked for, or else that of the lookup itself. An empty
/// handle when neither is marked for one.
RefADatabase GetVBLBundleDatabaseFromLookupExpr(const RqExprLookup& lookup, ARpGateway* pRp) {
  const RqExpr* const pValue = lookup.GetValueExpr();
  const RefADatabase database = pValue ? pValue->GetRpDatabaseObj(pRp) : RefADatabase();
  return database ? database : lookup.GetRpDatabaseObj(pRp);
}

/// Whether bundles can be there.
bool CheckValidVBLDatabase(const RefADatabase& database) {
  return database && ServerInfo::IsBundleTargetType(database->GetTargetType());
}

}  // namespace

bool RqExprSessionVar::GetVBLBundleSessionVariableIfItExists(Heap<PropertyValue>& value, ARpGateway* pRp) const {
  if (!MetadataUtil::BeginsWithVBLBundlePrefix(m_sessionVar.second)) return false;
  const RqNode* const pLookup = GetParent();
  if (!pLookup || pLookup->GetObjectType() != kRqExprLookup) return false;
  const auto& lookup = static_cast<const RqExprLookup&>(*pLookup);
  if (!CheckValidVBLDatabase(GetVBLBundleDatabaseFromLookupExpr(lookup, pRp))) return false;

  const KXString nameInBundle = MetadataUtil::GetStringAfterVBLBundlePrefix(m_sessionVar.second);
  return FoundNodes(pLookup, [&](const RqNode& node) {
    if (node.GetObjectType() != kRqExprSessionVar) return false;
    const KXStringPair& variable = static_cast<const RqExprSessionVar&>(node).m_sessionVar;
    if (variable.second != nameInBundle || !MetadataUtil::IsSessionVariablePopulated(pRp, variable)) return false;
    value = pRp->GetSessionVariable(variable);
    return true;
  });
}

bool RqExprSessionVar::IsNonZeroValue(ARpGateway* pRp) const { return GetValue(pRp)->IsNonZero(); }

bool RqExprSessionVar::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqNodeImpl::IsEquivalent(rhs, pred)) return false;
  const auto& right = static_cast<const RqExprSessionVar&>(rhs);
  return m_sessionVar == right.m_sessionVar && m_byIndex == right.m_byIndex;
}

bool RqExprSessionVar::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(*this, rhs,
                                [](const RqExprSessionVar& e) { return std::tie(e.m_sessionVar, e.m_byIndex); });
}

void RqExprSessionVar::ToByteVector(ByteVector& bv) {
  RqNodeImpl::ToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_sessionVar);
  DataBlobUtil::ToByteVector(bv, m_byIndex);
}

const_iterator RqExprSessionVar::FromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(RqNodeImpl::FromByteVector(start), m_sessionVar, true);
  return DataBlobUtil::FromByteVector(start, m_byIndex);
}
