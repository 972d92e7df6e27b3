#include "rq/io/Files.h"

#include <cerrno>
#include <fstream>
#include <istream>
#include <iterator>
#include <system_error>

namespace {

[[noreturn]] void Fail(const char* what, const std::string& name) {
  throw std::system_error(errno, std::generic_category(), what + name);
}

}  // namespace

ByteVector ReadBytes(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) Fail("cannot read ", name);
  ByteVector bytes{std::istreambuf_iterator<char>(file), {}};
  if (file.bad()) Fail("cannot read ", name);
  return bytes;
}

void WriteBytes(const std::string& name, const ByteVector& bytes) {
  std::ofstream file(name, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) Fail("cannot write ", name);
}

std::string ReadText(const std::string& name, std::istream& standardInput) {
  if (name == "-") return {std::istreambuf_iterator<char>(standardInput), {}};
  const ByteVector bytes = ReadBytes(name);
  return {bytes.begin(), bytes.end()};
}
