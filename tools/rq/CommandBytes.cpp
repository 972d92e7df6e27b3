#include "rq/CommandBytes.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <list>
#include <ostream>
#include <system_error>

#include "Host/DataBlobUtil.h"
#include "Host/ErrorMessage.h"
#include "Query/Optimizer/Request/Node/SQORRqTreeVector.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"
#include "rq/CommandLine.h"
#include "rq/io/BlockWriter.h"
#include "rq/sql/ConditionBuilder.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr const char* kFooter =
    R"help(A file is read whole and must hold one tree and nothing else. The exit status is
0, or 2 if there was an error.

Examples:
  rq bytes --out filter.rq "region = 'EMEA' AND year = 2024"
  rq bytes --in filter.rq)help";

/// What a file may ask for: more than the default, since commands run on a stack of kBigStackBytes.
constexpr BoundedRead::Limits kLimits{.m_maxNesting = 200'000, .m_maxObjects = 50'000'000};

/// A longer list would be cut without a word.
void RequireFits(const std::list<RqNode*>& nodes) {
  for (const RqNode* const pNode : nodes) {
    const int limit = std::numeric_limits<decltype(RqTreeVectorHdr::numChildren_)>::max();
    if (pNode->GetNumChildren() > limit) {
      throw std::runtime_error("a list of " + std::to_string(pNode->GetNumChildren()) +
                               " entries has no byte form: the most are " + std::to_string(limit));
    }
  }
}

void WriteFile(const std::string& name, const ByteVector& bytes) {
  std::ofstream file(name, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::system_error(errno, std::generic_category(), "cannot write " + name);
}

ByteVector ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) throw std::system_error(errno, std::generic_category(), "cannot read " + name);
  ByteVector bytes{std::istreambuf_iterator<char>(file), {}};
  if (file.bad()) throw std::system_error(errno, std::generic_category(), "cannot read " + name);
  return bytes;
}

void Print(CommandStreams& streams, const std::string& text) {
  BlockWriter writer(streams.m_out);
  writer.Append(text);
  writer.Flush();
}

}  // namespace

void CommandBytes::Define(CLI::App& app) {
  app.add_option("CONDITION", m_condition, "The condition to write")->type_name("");
  app.add_option("--out", m_out, "Write the bytes to a file")->type_name("FILE");
  app.add_option("--in", m_in, "Read the bytes of a file and print the text form")->type_name("FILE");
  app.footer(kFooter);
}

int CommandBytes::Run(CommandStreams& streams) {
  if (m_in.empty()) {
    if (m_condition.empty()) throw UsageError("nothing to do: give a condition, or --in FILE");
    return Write(streams);
  }
  if (!m_condition.empty() || !m_out.empty()) throw UsageError("--in goes with no condition and with no --out");
  return Read(streams);
}

int CommandBytes::Write(CommandStreams& streams) const {
  OwnedRqExprCondPtr condition;
  try {
    condition = ParseCondition(m_condition);
  } catch (const SqlError& error) {
    streams.m_err << MessageText("", error, m_condition);
    return kExitError;
  }
  std::list<RqNode*> nodes;
  condition->GetObjects(nodes);
  RequireFits(nodes);
  ByteVector bytes;
  RqTreeVector::ToByteVector(condition.Get(), bytes);
  if (!m_out.empty()) WriteFile(m_out, bytes);

  char text[96];
  std::snprintf(text, sizeof text, "%zu bytes, %zu nodes, %.1f bytes a node\n", bytes.size(), nodes.size(),
                static_cast<double>(bytes.size()) / static_cast<double>(nodes.size()));
  Print(streams, text);
  return kExitSuccess;
}

int CommandBytes::Read(CommandStreams& streams) const {
  const ByteVector bytes = ReadFile(m_in);
  std::string text;
  try {
    const BoundedRead bounds(bytes, kLimits);
    RqNode* pNode = nullptr;
    const const_iterator end = RqTreeVector::FromByteVector(bytes.data(), &pNode);
    const Heap<RqNode> tree(pNode);
    bounds.RequireAtEnd(end);
    text = RqDumpout::StringFrom(tree.Get()).ToUTF8() + '\n';
  } catch (const ErrorMessage& error) {
    throw std::runtime_error(m_in + ": " + error.GetText().ToUTF8());
  }
  Print(streams, text);
  return kExitSuccess;
}
