#include "rq/sql/SqlTree.h"

#include <algorithm>
#include <limits>
#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::string_view kLocationKey = "location";

/// The parser's mark of a node that stands nowhere in the text.
constexpr std::int64_t kNowhere = -1;

}  // namespace

/// Takes the events of a JSON reader and fills a tree.
class SqlTreeReader {
 public:
  using Json = nlohmann::json;

  SqlTreeReader(SqlTree& tree, std::size_t locationShift)
      : m_tree(tree), m_locationShift(static_cast<std::int64_t>(locationShift)) {}

  bool null() { return Add(SqlTree::Type::kNull); }
  bool boolean(bool bValue) { return Add(SqlTree::Type::kBoolean, bValue); }
  bool number_integer(Json::number_integer_t value) { return AddNumber(value); }
  bool number_unsigned(Json::number_unsigned_t value) { return AddNumber(static_cast<std::int64_t>(value)); }
  bool number_float(Json::number_float_t value, const std::string&) {
    return AddNumber(static_cast<std::int64_t>(value));
  }
  bool string(std::string& text) { return Add(SqlTree::Type::kText, 0, Keep(text)); }
  bool binary(Json::binary_t&) { return false; }
  bool key(std::string& key) {
    m_key = Keep(key);
    return true;
  }
  bool start_object(std::size_t) { return Open(SqlTree::Type::kObject); }
  bool end_object() { return Close(); }
  bool start_array(std::size_t) { return Open(SqlTree::Type::kArray); }
  bool end_array() { return Close(); }
  bool parse_error(std::size_t, const std::string&, const Json::exception& error) {
    throw std::runtime_error(error.what());
  }

 private:
  SqlTree::Span Keep(std::string_view text) {
    const std::size_t begin = m_tree.m_texts.size();
    if (begin + text.size() > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    m_tree.m_texts += text;
    return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(text.size())};
  }

  bool Add(SqlTree::Type type, std::int64_t number = 0, SqlTree::Span text = {}) {
    if (m_tree.m_values.size() >= std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    m_tree.m_values.push_back({type, Size() + 1, std::exchange(m_key, {}), text, number});
    return true;
  }

  bool AddNumber(std::int64_t number) {
    const bool bIsPlace = m_tree.TextOf(m_key) == kLocationKey && number != kNowhere;
    return Add(SqlTree::Type::kNumber, bIsPlace ? number - m_locationShift : number);
  }

  bool Open(SqlTree::Type type) {
    m_open.push_back(Size());
    return Add(type);
  }

  bool Close() {
    m_tree.m_values[m_open.back()].m_next = Size();
    m_open.pop_back();
    return true;
  }

  std::uint32_t Size() const { return static_cast<std::uint32_t>(m_tree.m_values.size()); }

  SqlTree& m_tree;
  std::int64_t m_locationShift;
  SqlTree::Span m_key;
  std::vector<std::uint32_t> m_open;
};

SqlTree::SqlTree(std::string_view json, std::size_t locationShift) {
  SqlTreeReader reader(*this, locationShift);
  nlohmann::json::sax_parse(json.data(), json.data() + json.size(), &reader);
}

SqlNode SqlTree::GetRoot() const { return m_values.empty() ? SqlNode() : SqlNode(this, 0); }

SqlNode SqlNode::GetBody() const { return GetKind().empty() ? *this : SqlNode(m_pTree, m_index + 1); }

std::string_view SqlNode::GetKind() const {
  if (!IsOfType(SqlTree::Type::kObject) || GetValue().m_next == m_index + 1) return {};
  const SqlTree::Value& member = m_pTree->m_values[m_index + 1];
  const std::string_view key = m_pTree->TextOf(member.m_key);
  const bool bIsKind = member.m_next == GetValue().m_next && key[0] >= 'A' && key[0] <= 'Z';
  return bIsKind ? key : std::string_view();
}

SqlNode SqlNode::Get(std::string_view field) const {
  const SqlNode body = GetBody();
  if (!body.IsOfType(SqlTree::Type::kObject)) return {};
  for (std::uint32_t i = body.m_index + 1; i < body.GetValue().m_next; i = m_pTree->m_values[i].m_next) {
    if (m_pTree->TextOf(m_pTree->m_values[i].m_key) == field) return {m_pTree, i};
  }
  return {};
}

bool SqlNode::HasNumber() const { return IsOfType(SqlTree::Type::kNumber); }

std::int64_t SqlNode::GetNumber() const { return HasNumber() ? GetValue().m_number : 0; }

std::string_view SqlNode::GetText() const {
  return IsOfType(SqlTree::Type::kText) ? m_pTree->TextOf(GetValue().m_text) : std::string_view();
}

bool SqlNode::IsTrue() const { return IsOfType(SqlTree::Type::kBoolean) && GetValue().m_number != 0; }

std::vector<SqlNode> SqlNode::GetElements() const {
  std::vector<SqlNode> elements;
  if (!IsOfType(SqlTree::Type::kArray)) return elements;
  for (std::uint32_t i = m_index + 1; i < GetValue().m_next; i = m_pTree->m_values[i].m_next) {
    elements.push_back({m_pTree, i});
  }
  return elements;
}

std::size_t SqlNode::GetLocation() const {
  const SqlNode location = Get(kLocationKey);
  return location.HasNumber() && location.GetNumber() != kNowhere ? static_cast<std::size_t>(location.GetNumber())
                                                                  : kNoLocation;
}

std::size_t SqlNode::GetStart() const {
  std::size_t start = kNoLocation;
  if (IsNone()) return start;
  for (std::uint32_t i = m_index; i < GetValue().m_next; ++i) {
    const SqlTree::Value& value = m_pTree->m_values[i];
    if (m_pTree->TextOf(value.m_key) == kLocationKey && value.m_number != kNowhere) {
      start = std::min(start, static_cast<std::size_t>(value.m_number));
    }
  }
  return start;
}
