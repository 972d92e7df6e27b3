#include "rq/TreeJson.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

class JsonWriter {
 public:
  JsonWriter(ARpGateway* pRp, const TreeOptions& options) : m_pRp(pRp), m_options(options) {}

  std::string Write(RqNode& root) {
    BeginNode({}, &root);
    while (!m_nodes.empty()) {
      if (m_nodes.back().m_next == m_nodes.back().m_tokens.size()) {
        m_nodes.pop_back();
        End();
      } else {
        // Taken out: the descriptions of a deep tree are many, and what is written needs no memory.
        const TreeToken token = std::move(m_nodes.back().m_tokens[m_nodes.back().m_next++]);
        WriteToken(token);
      }
    }
    return std::move(m_text) + "\n";
  }

 private:
  /// Deeper down all is on one line: the text stays linear in its tree.
  static constexpr std::size_t kMaxLineDepth = 60;

  /// A node whose description is being written.
  struct Node {
    TreeTokens m_tokens;
    std::size_t m_next = 0;
  };
  /// An object or array that is open.
  struct Bracket {
    char m_close;
    bool m_bEmpty = true;
    bool m_bLines = false;  ///< Something in it stands on a line of its own.
  };

  void WriteToken(const TreeToken& token) {
    switch (token.m_kind) {
      case TreeToken::Kind::kField:
        Separate(token.m_name, false);
        m_text += token.m_json;
        return;
      case TreeToken::Kind::kNode:
        return BeginNode(token.m_name, token.m_pNode);
      case TreeToken::Kind::kArray:
        return Begin(token.m_name, '[', ']', true);
      case TreeToken::Kind::kRecord:
        // One with a name belongs to the line of its node, one of an array has a line.
        return Begin(token.m_name, '{', '}', token.m_name.empty());
      case TreeToken::Kind::kEnd:
        return End();
    }
  }

  void BeginNode(std::string_view name, RqNode* pNode) {
    if (!pNode) {
      Separate(name, true);
      m_text += "null";
      return;
    }
    Begin(name, '{', '}', true);
    Separate("kind", false);
    m_text += '"';
    m_text += GetRqNodeTypeName(pNode->GetObjectType());
    m_text += '"';
    if (m_options.m_bIds) {
      Separate("id", false);
      m_text += IdTextOf(*pNode);
    }
    m_nodes.push_back({DescribeNode(*pNode, m_pRp)});
  }

  void Begin(std::string_view name, char open, char close, bool bNewLine) {
    Separate(name, bNewLine);
    m_text += open;
    m_brackets.push_back({close});
  }

  void End() {
    const Bracket bracket = m_brackets.back();
    m_brackets.pop_back();
    if (bracket.m_bLines) NewLine();
    m_text += bracket.m_close;
  }

  /// What stands in front of the next element of the innermost bracket.
  void Separate(std::string_view name, bool bNewLine) {
    if (!m_brackets.empty()) {
      Bracket& bracket = m_brackets.back();
      const bool bFirst = std::exchange(bracket.m_bEmpty, false);
      if (!bFirst) m_text += ',';
      if (bNewLine && m_brackets.size() <= kMaxLineDepth) {
        bracket.m_bLines = true;
        NewLine();
      } else if (!bFirst) {
        m_text += ' ';
      }
    }
    if (name.empty()) return;
    m_text += '"';
    m_text += name;
    m_text += "\": ";
  }

  void NewLine() {
    m_text += '\n';
    m_text.append(2 * m_brackets.size(), ' ');
  }

  ARpGateway* m_pRp;
  const TreeOptions& m_options;
  std::string m_text;
  std::vector<Node> m_nodes;
  std::vector<Bracket> m_brackets;
};

}  // namespace

std::string WriteTreeJson(RqNode& root, ARpGateway* pRp, const TreeOptions& options) {
  return JsonWriter(pRp, options).Write(root);
}
