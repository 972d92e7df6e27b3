#include "rq/sample/SampleFile.h"

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "HostMemory/MemoryGateway.h"
#include "HostMemory/ModelReader.h"
#include "rq/sample/SampleData.h"

namespace {

namespace fs = std::filesystem;

/// FNV-1a.
std::uint64_t HashOf(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001B3;
  }
  return hash;
}

fs::path CacheFolder() {
  const auto variable = [](const char* name) {
    const char* const pValue = std::getenv(name);
    return std::string(pValue ? pValue : "");
  };
  // One that is not absolute does not count.
  if (const std::string cache = variable("XDG_CACHE_HOME"); cache.starts_with('/')) return fs::path(cache) / "rq";
  const std::string home = variable("HOME");
  if (home.empty()) throw std::runtime_error("neither XDG_CACHE_HOME nor HOME says where the sample can be kept");
  return fs::path(home) / ".cache" / "rq";
}

std::string VersionText() {
  const std::string text =
      std::to_string(SampleData::kVersion) + '\n' + SampleData::GetTables() + SampleData::GetSummaries();
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(HashOf(text)));
  return digits.data();
}

/// Makes the sample beside its place and moves it there.
void Make(const fs::path& file) {
  fs::create_directories(file.parent_path());
  const fs::path unfinished = file.string() + '.' + std::to_string(getpid()) + ".tmp";
  fs::remove(unfinished);
  try {
    SqliteDatabase database(unfinished.string(), SqliteDatabase::Access::kReadWrite);
    SampleData::Fill(database);
  } catch (...) {
    std::error_code ignored;
    fs::remove(unfinished, ignored);
    throw;
  }
  fs::rename(unfinished, file);
}

}  // namespace

std::string GetSampleFile() {
  const fs::path file = CacheFolder() / ("retail-" + VersionText() + ".sqlite");
  if (!fs::exists(file)) Make(file);
  return file.string();
}

SqliteDatabase OpenSample() {
  SqliteDatabase database(GetSampleFile(), SqliteDatabase::Access::kReadOnly);
  MemoryGateway gateway;
  ModelReader::ReadDefault(gateway);
  for (const RefASchema& schema : gateway.GetObjects<ASchema>()) database.AddSchema(schema->GetName().ToUTF8());
  for (const RefATable& table : gateway.GetObjects<ATable>()) {
    const RefATable base(&gateway, table->GetAliasedTableID());
    if (!base) continue;
    database.Execute("CREATE TEMP VIEW " + table->GetName().ToUTF8() + " AS SELECT * FROM main." +
                     base->GetName().ToUTF8());
  }
  return database;
}
