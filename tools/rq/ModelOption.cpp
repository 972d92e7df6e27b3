#include "rq/ModelOption.h"

#include "HostMemory/ModelReader.h"

void ReadModel(const std::optional<std::string>& file, MemoryGateway& gateway) {
  if (file) {
    ModelReader::ReadFile(*file, gateway);
  } else {
    ModelReader::ReadDefault(gateway);
  }
}
