#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Host/SqlTableRef.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Node/SQORRqNode.h"

// What every kind of node holds, by name: the common ground of the writers of trees.

/// How trees are written.
struct TreeOptions {
  bool m_bIds = false;  ///< With the identities of nodes: those of two runs differ.
};

/// A piece of what is said of a node. Names live as long as the process and are empty for what stands in an array.
struct TreeToken {
  enum class Kind : std::uint8_t {
    kField,   ///< A value.
    kNode,    ///< A tree below the node: a child, or one that it owns aside. Null stands for an empty slot of an array.
    kArray,   ///< Begins an array of nodes or records.
    kRecord,  ///< Begins a group of fields, and of trees, that is no node.
    kEnd      ///< Ends the array or the record that was begun last.
  };

  Kind m_kind;
  std::string_view m_name;
  std::string m_json;         ///< The value of a field, as JSON.
  RqNode* m_pNode = nullptr;  ///< Lent.
};
using TreeTokens = std::vector<TreeToken>;

/// Says what a node holds: its fields, those alone that differ from a new node's or that say what it is; its target, if
/// it is marked for one; its children by the names of their slots, null ones left out; and the trees that it owns
/// aside. What it is lent, a shared list say, is told by number, so that nothing is told twice.
///
/// pRp gives the names of objects and may be null. An object that it does not have is told by its identifier alone.
TreeTokens DescribeNode(RqNode& node, ARpGateway* pRp);

/// A link of a join graph. An end is the place of its join node among the children, or kNoNode.
struct TreeLink {
  static constexpr int kNoNode = -1;

  int m_from = kNoNode;
  int m_to = kNoNode;
  int m_driving = kNoNode;
  RqJoinLink* m_pLink = nullptr;  ///< Lent.
};

/// Each link once: node by node, in the order in which they stand on its list.
std::vector<TreeLink> LinksOf(RqJoinSpec& joinSpec);

/// "left outer"
std::string_view WordOf(SqlTableRef::JoinType joinType);

/// The number of a node's identity.
std::string IdTextOf(const RqNode& node);

/// The text as a string of JSON, in quotes. Bytes that are no UTF-8 become replacement characters.
std::string JsonString(const std::string& text);
