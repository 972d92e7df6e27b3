#include "PlainTree.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"

static_assert(sizeof(PlainNode) == 96);
static_assert(sizeof(ArenaNode) == sizeof(PlainNode));

std::unique_ptr<PlainNode> PlainNode::Clone() const {
  auto copy = std::make_unique<PlainNode>();
  copy->m_kind = m_kind;
  std::copy(std::begin(m_payload), std::end(m_payload), copy->m_payload);
  copy->m_children.reserve(m_children.size());
  for (const auto& child : m_children) copy->m_children.push_back(child->Clone());
  return copy;
}

ArenaNode* CopyToArena(const PlainNode& node, std::byte*& place) {
  auto* const copy = new (place) ArenaNode();
  place += sizeof(ArenaNode);
  copy->m_kind = node.m_kind;
  std::copy(std::begin(node.m_payload), std::end(node.m_payload), copy->m_payload);
  copy->m_numChildren = static_cast<std::int32_t>(node.m_children.size());
  copy->m_children = reinterpret_cast<ArenaNode**>(place);
  place += node.m_children.size() * sizeof(ArenaNode*);
  for (std::size_t i = 0; i < node.m_children.size(); ++i)
    copy->m_children[i] = CopyToArena(*node.m_children[i], place);
  return copy;
}

std::size_t PlainNode::Tour() const {
  std::size_t count = 1;
  for (const auto& child : m_children) count += child->Tour();
  return count;
}

bool PlainNode::Equals(const PlainNode& rhs) const {
  if (m_kind != rhs.m_kind || m_payload[0] != rhs.m_payload[0]) return false;
  return std::equal(m_children.begin(), m_children.end(), rhs.m_children.begin(), rhs.m_children.end(),
                    [](const auto& left, const auto& right) { return left->Equals(*right); });
}

void PlainNode::AppendText(std::string& text) const {
  if (m_children.empty()) {
    char digits[24];
    text.append(digits, static_cast<std::size_t>(std::snprintf(digits, sizeof digits, "%ld", m_payload[0])));
    return;
  }
  const char* const infix = m_kind == kRqExprCondAnd ? " and " : m_kind == kRqExprCondOr ? " or " : " = ";
  for (std::size_t i = 0; i < m_children.size(); ++i) {
    if (i > 0) text += infix;
    m_children[i]->AppendText(text);
  }
}

std::unique_ptr<PlainNode> MakePlainTree(const RqExpr& expr) {
  auto node = std::make_unique<PlainNode>();
  node->m_kind = expr.GetObjectType();
  node->m_payload[0] = reinterpret_cast<std::intptr_t>(&expr) % 1000;
  for (int i = 0; i < expr.GetNumOperands(); ++i) node->m_children.push_back(MakePlainTree(*expr.GetIthOperand(i)));
  return node;
}

std::size_t CountNodes(const PlainNode& node) { return node.Tour(); }
