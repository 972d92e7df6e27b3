#include "HostMemory/ModelReader.h"

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

#include "BuiltInTexts.h"
#include "BusinessModel.h"
#include "Host/BaseStringUtil.h"
#include "JsonCursor.h"
#include "ModelObjects.h"
#include "PhysicalModel.h"
#include "SessionModel.h"

void ModelReader::ReadText(std::string_view text, const KXString& source, MemoryGateway& gateway) {
  const Json json = ParseJson(text, source);
  ModelFaults faults(source);
  ModelObjects objects(gateway);
  faults.Collect([&] {
    const JsonCursor document(json, faults);
    document.CheckKeys({"repository", "databases", "tables", "joins", "logicalTables", "dimensions",
                        "presentationHierarchies", "variables", "session", "request"});
    SessionModel session(objects);
    session.ReadVariables(document);
    PhysicalModel(objects).Read(document);
    BusinessModel(objects).Read(document);
    session.Read(document);
  });
  faults.RaiseIfAny();
  objects.HandOver();
}

void ModelReader::ReadDefault(MemoryGateway& gateway) {
  const BuiltInText& model = GetDefaultModelText();
  ReadText(model.m_text, BaseStringUtil::StdStringToString(model.m_file), gateway);
}

std::string_view ModelReader::GetDefaultText() { return GetDefaultModelText().m_text; }

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
