#include "rq/TargetDatabase.h"

#include <stdexcept>
#include <vector>

#include "HostMemory/FeaturePresets.h"
#include "HostMemory/MemoryObjects.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::size_t kMaxMessage = 1000;

}  // namespace

RefADatabase FindTargetDatabase(const KXString& name, MemoryGateway& gateway) {
  if (RefADatabase database = gateway.FindObject<ADatabase>(name); !database.IsNull()) return database;
  const std::vector<RefADatabase> databases = gateway.GetObjects<ADatabase>();
  if (const FeaturePreset* const pPreset = FeaturePresets::Find(name)) {
    // The databases of a model are numbered from 1 on.
    const auto number = static_cast<std::uint32_t>(databases.size() + 1);
    auto& made = gateway.MakeObject<MemoryDatabase>(number, pPreset->m_name, pPreset->m_targetType);
    made.SetFeatures(pPreset->m_features);
    return RefADatabase(&gateway, made.GetID());
  }
  KXString names;
  const auto append = [&names](const KXString& existing) {
    names.append(names.empty() ? L"" : L", ").append(existing);
  };
  for (const RefADatabase& database : databases) append(database->GetName());
  for (const KXString& preset : FeaturePresets::GetNames()) append(preset);
  const KXString message = L"there is no database " + name + L"; there are " + names;
  throw std::runtime_error(ForMessage(message.ToUTF8(), kMaxMessage));
}
