#include "rq/io/Files.h"

#include <cerrno>
#include <fstream>
#include <istream>
#include <sstream>
#include <system_error>
#include <utility>

namespace {

[[noreturn]] void Fail(const char* what, const std::string& name) {
  throw std::system_error(errno, std::generic_category(), what + name);
}

/// What is left of a stream. A directory opens, and fails only when it is read.
std::string ReadAll(std::istream& stream, const std::string& name) {
  std::ostringstream text;
  if (stream.peek() != std::istream::traits_type::eof() && !(text << stream.rdbuf())) Fail("cannot read ", name);
  if (stream.bad()) Fail("cannot read ", name);
  return std::move(text).str();
}

}  // namespace

ByteVector ReadBytes(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) Fail("cannot read ", name);
  const std::string text = ReadAll(file, name);
  return {text.begin(), text.end()};
}

void WriteBytes(const std::string& name, const ByteVector& bytes) {
  std::ofstream file(name, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) Fail("cannot write ", name);
}

std::string ReadText(const std::string& name, std::istream& standardInput) {
  if (name == "-") return ReadAll(standardInput, "the standard input");
  const ByteVector bytes = ReadBytes(name);
  return {bytes.begin(), bytes.end()};
}
