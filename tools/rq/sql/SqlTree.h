#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class SqlNode;

/// The parse tree of a text, as libpg_query gives it in JSON, in a form that costs little to make and to walk.
///
/// The values stand in pre-order in one vector, each with the place behind its last descendant; so nothing of it is
/// recursive, however deep the tree is. The texts lie in one string.
class SqlTree {
 public:
  SqlTree() = default;
  /// Reads JSON. Byte offsets under the key "location" are lowered by locationShift. Raises std::runtime_error if it is
  /// not JSON.
  SqlTree(std::string_view json, std::size_t locationShift);

  /// The outermost value; lent, as all nodes are.
  SqlNode GetRoot() const;

 private:
  friend class SqlNode;
  friend class SqlTreeReader;

  enum class Type : std::uint8_t { kNull, kBoolean, kNumber, kText, kObject, kArray };

  struct Span {
    std::uint32_t m_begin = 0;
    std::uint32_t m_length = 0;
  };

  struct Value {
    Type m_type = Type::kNull;
    std::uint32_t m_next = 0;  ///< The index behind the subtree.
    Span m_key;                ///< Empty for an element of an array.
    Span m_text;
    std::int64_t m_number = 0;
  };

  std::string_view TextOf(Span span) const { return std::string_view(m_texts).substr(span.m_begin, span.m_length); }

  std::vector<Value> m_values;
  std::string m_texts;
};

/// A value of a SqlTree, lent by it; possibly none, which answers every question with nothing.
///
/// An object of the tree with a single member whose key begins with a capital, {"ColumnRef": {...}}, is the node of
/// that kind, and its fields are those of the member.
class SqlNode {
 public:
  static constexpr std::size_t kNoLocation = static_cast<std::size_t>(-1);

  SqlNode() = default;

  bool IsNone() const { return m_pTree == nullptr; }

  /// The kind of a node, such as "ColumnRef"; empty for another value.
  std::string_view GetKind() const;
  /// A field of a node or a member of an object; none without it. The parser leaves out what is zero, false or empty.
  SqlNode Get(std::string_view field) const;
  /// A field along a path.
  template <class... Fields>
  SqlNode Get(std::string_view field, Fields... fields) const requires(sizeof...(fields) > 0) {
    return Get(field).Get(fields...);
  }

  bool HasNumber() const;
  /// 0 for what is no number.
  std::int64_t GetNumber() const;
  /// Empty for what is no text.
  std::string_view GetText() const;
  bool IsTrue() const;

  /// The elements of an array; nothing for another value.
  std::vector<SqlNode> GetElements() const;

  /// The byte of the text that the node names as its place; for most operators that is the operator.
  std::size_t GetLocation() const;
  /// The first byte that any node of the subtree names.
  std::size_t GetStart() const;

 private:
  friend class SqlTree;

  SqlNode(const SqlTree* pTree, std::uint32_t index) : m_pTree(pTree), m_index(index) {}

  const SqlTree::Value& GetValue() const { return m_pTree->m_values[m_index]; }
  bool IsOfType(SqlTree::Type type) const { return !IsNone() && GetValue().m_type == type; }
  /// The object that holds the fields: that of a node's kind, or the value itself.
  SqlNode GetBody() const;

  const SqlTree* m_pTree = nullptr;
  std::uint32_t m_index = 0;
};
