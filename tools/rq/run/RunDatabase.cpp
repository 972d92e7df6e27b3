#include "rq/run/RunDatabase.h"

#include "Host/KXAssert.h"
#include "HostMemory/FeaturePresets.h"
#include "HostMemory/MemoryObjects.h"

RefADatabase MakeRunDatabase(MemoryGateway& gateway) {
  using F = SUFeaturesTable;
  const FeaturePreset* const pPreset = FeaturePresets::Find(L"sqlite");
  KX_ASSERT(pPreset);
  // The databases of a model are numbered from 1 on.
  const auto number = static_cast<std::uint32_t>(gateway.GetObjects<ADatabase>().size() + 1);
  auto& database = gateway.MakeObject<MemoryDatabase>(number, pPreset->m_name, pPreset->m_targetType);
  database.SetFeatures(pPreset->m_features);
  for (const F::FeatureId id : {F::kFeature_StdDevPop, F::kFeature_StdDevPopDistinct, F::kFeature_StdDevSamp,
                                F::kFeature_StdDevSampDistinct, F::kFeature_Median}) {
    database.SetBooleanFeature(id, true);
  }
  return RefADatabase(&gateway, database.GetID());
}
