#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"

#include <tuple>

#include "Host/DataBlobUtil.h"
#include "Host/MetadataUtil.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/PlanCache/SQORCacheUtils.h"

// ---------------------------------------------------------------------------------------------------------------------
// RqExprSubqueryByText

namespace {

int GetCharacterBytes(const KXString& text) { return static_cast<int>(text.size() * sizeof(wchar_t)); }

std::uint32_t GenerateTextCRC(const KXString& text) {
  return CrcUtil::GenerateCRC32(reinterpret_cast<const std::uint8_t*>(text.data()), GetCharacterBytes(text));
}

}  // namespace

template <class Derived, RqNodeType_e kKind>
void RqExprSubqueryByText<Derived, kKind>::SetText(const KXString& text) {
  Self().*Derived::kText = text;
  Self().*Derived::kCRC = GenerateTextCRC(text);
}

template <class Derived, RqNodeType_e kKind>
bool RqExprSubqueryByText<Derived, kKind>::IsEquivalent(const RqExpr& rhs, const RqEquivalence& pred) const {
  if (!RqExpr::IsEquivalent(rhs, pred)) return false;
  const auto& right = static_cast<const Derived&>(rhs);
  return GetCRC() == right.GetCRC() && Self().*Derived::kText == right.*Derived::kText;
}

template <class Derived, RqNodeType_e kKind>
bool RqExprSubqueryByText<Derived, kKind>::IsShallowLessThan(const RqExpr& rhs) const {
  return IsShallowLessThanByKey(Self(), rhs,
                                [](const Derived& e) { return std::tie(e.*Derived::kCRC, e.*Derived::kText); });
}

template <class Derived, RqNodeType_e kKind>
void RqExprSubqueryByText<Derived, kKind>::TextToByteVector(ByteVector& bv) const {
  DataBlobUtil::ToByteVector(bv, Self().*Derived::kCRC);
  DataBlobUtil::ToByteVector(bv, Self().*Derived::kText);
}

template <class Derived, RqNodeType_e kKind>
const_iterator RqExprSubqueryByText<Derived, kKind>::TextFromByteVector(const_iterator start) {
  start = DataBlobUtil::FromByteVector(start, Self().*Derived::kCRC);
  return DataBlobUtil::FromByteVector(start, Self().*Derived::kText, true);
}

template class RqExprSubqueryByText<RqExprLogicalSubquery, kRqExprLogicalSubquery>;
template class RqExprSubqueryByText<RqExprPhysicalSubquery, kRqExprPhysicalSubquery>;
template class RqExprSubqueryByText<RqExprPersistSubquery, kRqExprPersistSubquery>;

// ---------------------------------------------------------------------------------------------------------------------
// RqExprLogicalSubquery

RqExprLogicalSubquery::RqExprLogicalSubquery(ARpGateway* pRp, AbstractListQuerySpec* pListQuerySpec)
    : m_pListQuerySpec(pListQuerySpec) {
  if (pListQuerySpec) SetText(MetadataUtil::ToSQLStatement(*pListQuerySpec, pRp));
}

RqExprLogicalSubquery::RqExprLogicalSubquery(const RqExprLogicalSubquery& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprSubqueryByText(rhs, bNewIDs, bDeepCopy),
      m_pListQuerySpec(rhs.m_pListQuerySpec ? rhs.m_pListQuerySpec->Copy() : nullptr),
      m_CRCforSQL(rhs.m_CRCforSQL),
      m_subquerySQL(rhs.m_subquerySQL),
      m_commonExprName(rhs.m_commonExprName) {}

int RqExprLogicalSubquery::GetMySize() const {
  constexpr int kFieldBytes = 24;
  return RqExprSubqueryByText::GetMySize() + GetCharacterBytes(m_subquerySQL) + GetCharacterBytes(m_commonExprName) +
         kFieldBytes;
}

void RqExprLogicalSubquery::ToByteVector(ByteVector& bv) {
  RqExprSubqueryByText::ToByteVector(bv);
  AbstractListQuerySpec::ToByteVector(bv, m_pListQuerySpec.Get());
  TextToByteVector(bv);
}

const_iterator RqExprLogicalSubquery::FromByteVector(const_iterator start) {
  AbstractListQuerySpec* pListQuerySpec = nullptr;
  start = AbstractListQuerySpec::FromByteVector(RqExprSubqueryByText::FromByteVector(start), pListQuerySpec);
  m_pListQuerySpec = pListQuerySpec;
  return TextFromByteVector(start);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprPhysicalSubquery

RqExprPhysicalSubquery::RqExprPhysicalSubquery() = default;

RqExprPhysicalSubquery::RqExprPhysicalSubquery(RqAbstractList* pSubquery, ARpGateway* pRp) {
  RqExprPhysicalSubquery::SetSubquery(pSubquery, pRp);
}

RqExprPhysicalSubquery::RqExprPhysicalSubquery(const RqExprPhysicalSubquery& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprSubqueryByText(rhs, bNewIDs, bDeepCopy),
      m_pSubquery(rhs.m_pSubquery ? static_cast<RqAbstractList*>(rhs.m_pSubquery->NestedDeepCopy(bNewIDs)) : nullptr),
      m_CRCforDumpout(rhs.m_CRCforDumpout),
      m_subqueryDumpout(rhs.m_subqueryDumpout),
      m_commonExprName(rhs.m_commonExprName),
      m_shippableTargets(rhs.m_shippableTargets),
      m_bIsHighVolume(rhs.m_bIsHighVolume) {}

RqExprPhysicalSubquery::~RqExprPhysicalSubquery() = default;

KXString RqExprPhysicalSubquery::RenderBlock(const RqAbstractList& block, ARpGateway* pRp) {
  return CacheUtils::Dumpout(block, false, false, pRp, false, nullptr, false, false, KXString(), true);
}

void RqExprPhysicalSubquery::SetSubquery(RqAbstractList* pSubquery, ARpGateway* pRp) {
  static_cast<void>(m_pSubquery.Release());
  m_pSubquery = pSubquery;
  if (pSubquery) {
    SetText(RenderBlock(*pSubquery, pRp));
  } else {
    m_subqueryDumpout.clear();
    m_CRCforDumpout = 0;
  }
}

void RqExprPhysicalSubquery::ToByteVector(ByteVector& bv) {
  RqExprSubqueryByText::ToByteVector(bv);
  TextToByteVector(bv);
  DataBlobUtil::ToByteVector(bv, m_bIsHighVolume);
}

const_iterator RqExprPhysicalSubquery::FromByteVector(const_iterator start) {
  start = TextFromByteVector(RqExprSubqueryByText::FromByteVector(start));
  return DataBlobUtil::FromByteVector(start, m_bIsHighVolume);
}

// ---------------------------------------------------------------------------------------------------------------------
// RqExprPersistSubquery

RqExprPersistSubquery::RqExprPersistSubquery(const KXString& subqueryDumpout, const VoidID& databaseID,
                                             ServerInfo::TargetType targetType, const KXString& tableName,
                                             const KXString& columnName)
    : m_tableName(tableName), m_columnName(columnName), m_databaseID(databaseID), m_targetType(targetType) {
  SetText(subqueryDumpout);
}

RqExprPersistSubquery::RqExprPersistSubquery(const RqExprPersistSubquery& rhs, bool bNewIDs, bool bDeepCopy)
    : RqExprSubqueryByText(rhs, bNewIDs, bDeepCopy),
      m_tableName(rhs.m_tableName),
      m_columnName(rhs.m_columnName),
      m_databaseID(rhs.m_databaseID),
      m_targetType(rhs.m_targetType),
      m_CRCforDumpout(rhs.m_CRCforDumpout),
      m_subqueryDumpout(rhs.m_subqueryDumpout) {}

void RqExprPersistSubquery::ToByteVector(ByteVector& bv) {
  RqExprSubqueryByText::ToByteVector(bv);
  TextToByteVector(bv);
}

const_iterator RqExprPersistSubquery::FromByteVector(const_iterator start) {
  return TextFromByteVector(RqExprSubqueryByText::FromByteVector(start));
}
