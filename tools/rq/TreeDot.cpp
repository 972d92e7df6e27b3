#include "rq/TreeDot.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Query/Optimizer/Request/Blocks/SQORRqAbstractList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAtomicTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedColumn.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprCase.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

/// The most characters of a text in a label.
constexpr std::size_t kMaxText = 40;

// ---------------------------------------------------------------------------------------------------------------------
// Labels

/// The text as a part of a quoted string of Graphviz, in which '\' begins escapes.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\n') {
      escaped += "\\n";
      continue;
    }
    if (c == '"' || c == '\\') escaped += '\\';
    escaped += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return escaped;
}

std::string Shortened(const KXString& text) {
  if (text.size() <= kMaxText) return text.ToUTF8();
  return KXString(text.view().substr(0, kMaxText - 1)).ToUTF8() + "…";
}

/// The sign of an operator; empty for what has none.
std::string_view SignOf(RqNodeType_e type) {
  static constexpr std::array<std::pair<RqNodeType_e, std::string_view>, 27> kSigns{{
      {kRqExprAdd, "+"},
      {kRqExprSubtract, "-"},
      {kRqExprMultiply, "*"},
      {kRqExprDivide, "/"},
      {kRqExprUnaryMinus, "-"},
      {kRqExprConcat, "||"},
      {kRqExprCondEquality, "="},
      {kRqExprCondNotEqual, "<>"},
      {kRqExprCondLess, "<"},
      {kRqExprCondLessEqual, "<="},
      {kRqExprCondGreater, ">"},
      {kRqExprCondGreaterEqual, ">="},
      {kRqExprCondAnd, "AND"},
      {kRqExprCondOr, "OR"},
      {kRqExprCondNot, "NOT"},
      {kRqExprCondIn, "IN"},
      {kRqExprCondExists, "EXISTS"},
      {kRqExprCondAnyLessThan, "< ANY"},
      {kRqExprCondAnyLessEqual, "<= ANY"},
      {kRqExprCondAnyGreaterThan, "> ANY"},
      {kRqExprCondAnyGreaterEqual, ">= ANY"},
      {kRqExprCondAnyNotEqual, "<> ANY"},
      {kRqExprCondAllLessThan, "< ALL"},
      {kRqExprCondAllLessEqual, "<= ALL"},
      {kRqExprCondAllEqual, "= ALL"},
      {kRqExprCondAllGreaterThan, "> ALL"},
      {kRqExprCondAllGreaterEqual, ">= ALL"},
  }};
  const auto it = std::find_if(kSigns.begin(), kSigns.end(), [type](const auto& entry) { return entry.first == type; });
  return it == kSigns.end() ? std::string_view() : it->second;
}

/// "T1", "c2": what the node goes by in the text form; empty for one without a number.
std::string NumberedNameOf(RqNode& node) {
  const auto number = [](const KXString& prefix, int value) { return prefix.ToUTF8() + std::to_string(value); };
  if (node.GetObjectType() == kRqDerivedColumn) {
    return number(RqDerivedColumn::kColumnPrefix, static_cast<RqDerivedColumn&>(node).GetColumnNum());
  }
  if (!node.IsAbstractTable() || !static_cast<RqAbstractTable&>(node).IsIdentifiedTable()) return {};
  const auto& table = static_cast<RqIdentifiedTable&>(node);
  return number(table.IsDerivedTable() ? RqDerivedTable::kTablePrefix : RqAtomicTable::kTablePrefix,
                table.GetTableNumber());
}

/// "joinType left outer"; the name alone for what is true, and the value alone unless bWithName.
std::string LineOf(const TreeToken& field, bool bWithName) {
  const std::string name(field.m_name);
  if (field.m_json == "true") return name;
  const bool bQuoted = field.m_json.starts_with('"');
  const std::string value = bQuoted ? field.m_json.substr(1, field.m_json.size() - 2) : field.m_json;
  return Shortened(KXString::FromUTF8(bWithName ? name + " " + value : value));
}

/// What a node says of itself, without what lies below it.
std::string LabelOf(RqNode& node, const TreeTokens& tokens) {
  const std::string_view sign = SignOf(node.GetObjectType());
  std::string label(sign.empty() ? GetRqNodeTypeName(node.GetObjectType()) : sign);
  const std::string numberedName = NumberedNameOf(node);
  if (!numberedName.empty()) label += "\n" + numberedName;
  bool bNamed = false;
  for (const TreeToken& token : tokens) {
    if (token.m_kind != TreeToken::Kind::kField) break;  // the fields come first
    if (!numberedName.empty() && token.m_name == "number") continue;
    if (bNamed && token.m_name.ends_with("ID")) continue;  // people know the object by its name
    const bool bName = token.m_name == "name" || token.m_name == "table";
    label += (bName ? " " : "\n") + LineOf(token, !bName);
    bNamed |= bName;
  }
  return label;
}

std::string_view ColourOf(RqNode& node) {
  if (node.IsExpr()) return static_cast<RqExpr&>(node).IsCond() ? "#fff2cc" : "#ffffff";
  if (!node.IsAbstractTable()) return "#eeeeee";
  return static_cast<RqAbstractTable&>(node).IsIdentifiedTable() ? "#d5e8d4" : "#dae8fc";
}

// ---------------------------------------------------------------------------------------------------------------------
// Expressions in one node

/// An expression that is one node: its text, and the references in it, lent.
struct ShortExpr {
  std::string m_text;
  std::vector<RqDerivedColumnReference*> m_references;
};

/// Whether the text of this node says all that is to be shown of it, and can be asked for.
bool HasPlainText(RqExpr& expr) {
  switch (expr.GetObjectType()) {
    case kRqGroupBy:
      return false;
    case kRqExprPhysicalSubquery:
      return !static_cast<RqExprPhysicalSubquery&>(expr).GetSubqueryRqAbstractList();
    case kRqExprCast:
      return RqExprCast::IsCastType(static_cast<RqExprCast&>(expr).GetToDataType());
    default:
      return true;
  }
}

/// False for an expression that needs a tree. Looks at a few nodes at most: each one is at least a character.
bool MakeShort(RqExpr& expr, ARpGateway* pRp, ShortExpr& shortExpr) {
  std::vector<RqNode*> nodes{&expr};
  for (std::size_t next = 0; next < nodes.size(); ++next) {
    // A null operand has no text: it shows in the tree alone. So does what is no expression.
    if (!nodes[next] || !nodes[next]->IsExpr()) return false;
    auto& node = static_cast<RqExpr&>(*nodes[next]);
    if (!HasPlainText(node) || nodes.size() + static_cast<std::size_t>(node.GetNumOperands()) > kMaxText) return false;
    for (int i = 0; i < node.GetNumOperands(); ++i) nodes.push_back(node.GetIthOperand(i));
    if (node.IsDerivedColumnReference()) {
      shortExpr.m_references.push_back(static_cast<RqDerivedColumnReference*>(&node));
    }
  }
  const KXString text = RqDumpout::StringFrom(expr, false, false, pRp);
  // A text that is too long anyway is cut in a leaf.
  if (text.size() > kMaxText && expr.GetNumOperands() > 0) return false;
  shortExpr.m_text = Shortened(text);
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// The graph

class DotWriter {
 public:
  DotWriter(ARpGateway* pRp, const TreeOptions& options) : m_pRp(pRp), m_options(options) {}

  std::string Write(RqNode& root) {
    m_text =
        "digraph request {\n"
        "  rankdir=TB;\n"
        "  node [shape=box, style=filled, fontname=\"Helvetica\", fontsize=9, margin=\"0.08,0.04\"];\n"
        "  edge [fontname=\"Helvetica\", fontsize=7, arrowsize=0.6];\n";
    BeginNode(root);
    while (!m_nodes.empty()) Step();
    WriteDashedEdges();
    return std::move(m_text) + m_edges + "}\n";
  }

 private:
  /// A node whose description is being drawn.
  struct Node {
    int m_number;
    bool m_bBlock;
    TreeTokens m_tokens;
    std::size_t m_next = 0;
    std::string_view m_array{};  ///< The array that is open; empty outside one.
    int m_place = 0;             ///< Of the next element of the array.
    bool m_bInRecord = false;    ///< What is in a record is no child.
  };
  /// Drawn when all nodes have their numbers.
  struct DashedEdge {
    const RqNode* m_pFrom;
    const RqNode* m_pTo;
    std::string m_label;
  };

  void Step() {
    Node& node = m_nodes.back();
    if (node.m_next == node.m_tokens.size()) {
      if (node.m_bBlock) m_text += "  }\n";
      m_nodes.pop_back();
      return;
    }
    const TreeToken& token = node.m_tokens[node.m_next++];
    switch (token.m_kind) {
      case TreeToken::Kind::kField:
        return;
      case TreeToken::Kind::kNode:
        if (!node.m_bInRecord) DrawChild(node, token);
        return;
      case TreeToken::Kind::kArray:
        node.m_array = token.m_name;
        node.m_place = 0;
        return;
      case TreeToken::Kind::kRecord:
        node.m_bInRecord = true;
        return;
      case TreeToken::Kind::kEnd:
        if (!std::exchange(node.m_bInRecord, false)) node.m_array = {};
        return;
    }
  }

  void DrawChild(Node& node, const TreeToken& token) {
    std::string slot(token.m_name);
    if (!node.m_array.empty()) slot = std::string(node.m_array) + "[" + std::to_string(node.m_place++) + "]";
    if (!token.m_pNode) return;
    m_edges += "  n" + std::to_string(node.m_number) + " -> n" + std::to_string(m_lastNumber + 1) + " [label=\"" +
               slot + "\"];\n";
    BeginNode(*token.m_pNode);
  }

  void BeginNode(RqNode& node) {
    m_numbers.emplace(&node, ++m_lastNumber);
    ShortExpr shortExpr;
    if (node.IsExpr() && MakeShort(static_cast<RqExpr&>(node), m_pRp, shortExpr)) {
      Draw(node, shortExpr.m_text);
      for (RqDerivedColumnReference* const pReference : shortExpr.m_references) AddReference(node, *pReference);
      return;
    }
    const bool bBlock = node.IsAbstractTable() && dynamic_cast<RqAbstractList*>(&node);
    TreeTokens tokens = DescribeNode(node, m_pRp);
    if (bBlock) m_text += "  subgraph cluster_" + std::to_string(m_lastNumber) + " { color=\"#6c8ebf\";\n";
    Draw(node, LabelOf(node, tokens));
    if (node.GetObjectType() == kRqJoinSpec) AddLinks(static_cast<RqJoinSpec&>(node));
    if (node.GetObjectType() == kRqSharedList) {
      m_dashedEdges.push_back({&node, static_cast<RqSharedList&>(node).GetSharedRqList(), "sharing"});
    }
    m_nodes.push_back({m_lastNumber, bBlock, std::move(tokens)});
  }

  void Draw(RqNode& node, std::string label) {
    if (m_options.m_bIds) label += "\n#" + IdTextOf(node);
    m_text += "  n" + std::to_string(m_lastNumber) + " [label=\"" + Escaped(label) + "\", fillcolor=\"";
    m_text += ColourOf(node);
    m_text += "\"];\n";
  }

  void AddReference(RqNode& drawn, RqDerivedColumnReference& reference) {
    if (!reference.IsValidDerivedColumnReference()) return;
    m_dashedEdges.push_back({&drawn, reference.GetDerivedColumn(),
                             (reference.GetSourceTableName() + L"." + reference.GetColumnName()).ToUTF8()});
  }

  /// A link that lacks an end leads to the node that it has.
  void AddLinks(RqJoinSpec& joinSpec) {
    for (const TreeLink& link : LinksOf(joinSpec)) {
      const int from = link.m_from == TreeLink::kNoNode ? link.m_to : link.m_from;
      if (from == TreeLink::kNoNode) continue;
      const int to = link.m_to == TreeLink::kNoNode ? from : link.m_to;
      std::string label(WordOf(link.m_pLink->GetJoinType()));
      if (link.m_pLink->GetJoinCond()) label += "\n" + LinkText(*link.m_pLink->GetJoinCond());
      m_dashedEdges.push_back({joinSpec.GetIthJoinNode(from), joinSpec.GetIthJoinNode(to), std::move(label)});
    }
  }

  std::string LinkText(RqExprCond& cond) {
    ShortExpr shortExpr;
    if (MakeShort(cond, m_pRp, shortExpr)) return shortExpr.m_text;
    return std::string(GetRqNodeTypeName(cond.GetObjectType())) + " …";
  }

  /// What leads out of the tree has no end to be drawn.
  void WriteDashedEdges() {
    for (const DashedEdge& edge : m_dashedEdges) {
      const auto to = m_numbers.find(edge.m_pTo);
      const auto from = m_numbers.find(edge.m_pFrom);
      if (to == m_numbers.end() || from == m_numbers.end()) continue;
      m_edges += "  n" + std::to_string(from->second) + " -> n" + std::to_string(to->second) + " [label=\"" +
                 Escaped(edge.m_label) + "\", style=dashed, constraint=false, color=\"#b85450\"];\n";
    }
  }

  ARpGateway* m_pRp;
  const TreeOptions& m_options;
  std::string m_text;   // the nodes, in the frames of their blocks
  std::string m_edges;  // outside all frames: an edge inside one would draw its ends into it
  int m_lastNumber = 0;
  std::vector<Node> m_nodes;
  std::vector<DashedEdge> m_dashedEdges;
  std::unordered_map<const RqNode*, int> m_numbers;
};

}  // namespace

std::string WriteTreeDot(RqNode& root, ARpGateway* pRp, const TreeOptions& options) {
  return DotWriter(pRp, options).Write(root);
}
