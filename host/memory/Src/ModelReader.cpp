#include "HostMemory/ModelReader.h"

#include <cerrno>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <system_error>
#include <vector>

#include "FeatureModel.h"
#include "Host/BaseStringUtil.h"
#include "JsonCursor.h"

namespace {

/// The objects of a model while it is read, with their names for what refers to them. The gateway gets them at the end.
class Model {
 public:
  explicit Model(MemoryGateway& gateway) : m_gateway(gateway) {}

  void Read(const JsonCursor& document) {
    document.CheckKeys({"databases"});
    if (document.Has("databases")) {
      document.Member("databases", [this](const JsonCursor& databases) {
        databases.ForEachElement([this](const JsonCursor& database) { ReadDatabase(database); });
      });
    }
  }

  void HandOver() {
    for (auto& pDatabase : m_databases) m_gateway.AddObject(std::move(pDatabase));
  }

 private:
  void ReadDatabase(const JsonCursor& database) {
    database.CheckKeys({"name", "preset", "target", "features"});
    const KXString name = database.Member("name", [this](const JsonCursor& cursor) {
      KXString text = cursor.AsName();
      if (!m_databaseNames.insert(text).second || !m_gateway.FindObject<ADatabase>(text).IsNull()) {
        cursor.Raise(L"there is a database of this name already");
      }
      return text;
    });
    const FeaturePreset described = ReadFeaturePreset(database, name);
    m_databases.push_back(std::make_unique<MemoryDatabase>(NextNumber(kTIDADatabase), name, described.m_targetType));
    m_databases.back()->SetFeatures(described.m_features);
  }

  /// The lowest one that neither the gateway nor this model has given.
  std::uint32_t NextNumber(TypeID interfaceType) {
    std::uint32_t& number = m_lastNumbers[interfaceType];
    do {
      ++number;
    } while (IsTaken(VoidID(interfaceType, number)));
    return number;
  }

  /// A removed object keeps its number as long as it has a handle.
  bool IsTaken(const VoidID& id) const { return m_gateway.LookupObject(id) || m_gateway.GetObjectRefCount(id) > 0; }

  MemoryGateway& m_gateway;
  std::map<TypeID, std::uint32_t> m_lastNumbers;
  std::vector<std::unique_ptr<MemoryDatabase>> m_databases;
  std::set<KXString> m_databaseNames;
};

}  // namespace

void ModelReader::ReadText(std::string_view text, const KXString& source, MemoryGateway& gateway) {
  const Json json = ParseJson(text, source);
  Model model(gateway);
  model.Read(JsonCursor(json, source));
  model.HandOver();
}

void ModelReader::ReadFile(const std::string& path, MemoryGateway& gateway) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  // A directory opens, and fails only when it is read.
  if (!file || (file.peek() != std::ifstream::traits_type::eof() && !(text << file.rdbuf())) || file.bad()) {
    throw std::system_error(errno, std::generic_category(), "cannot read " + path);
  }
  ReadText(text.view(), BaseStringUtil::StdStringToString(path), gateway);
}
