#pragma once

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Expressions/ExprSamples.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinNode.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Node/SQORRqNodeUtil.h"

// Join graphs as text. Nodes: "A" is one table, "A/c" one with a search condition, "[AB]" a join of two tables. Links:
// "A left B c1, B inner C -", with two options behind: '<' or '>' for the side that drives, '!' for an attached one. A
// link to "." has no out-node. The text of a graph numbers the nodes; the conjuncts of a condition are in the order of
// the alphabet.

inline constexpr std::string_view kJoinTypes[] = {"inner", "left", "right", "full", "stitch", "natural"};

inline RqExprCond* Cond(const std::string& name) {
  if (name == "-") return nullptr;
  return new RqExprCondIsNull(Col(std::wstring(name.begin(), name.end()).c_str()), false);
}

inline RqAbstractTable* Table(char name) {
  auto* const pTable = new RqEntity;
  pTable->SetTableNumber(name);
  return pTable;
}

inline RqJoinNode* Node(const std::string& text) {
  const bool bJoin = text[0] == '[';
  RqExprCond* const pCond = !bJoin && text.size() > 1 ? Cond(text.substr(2)) : nullptr;
  return new RqJoinNode(new RqTableReference(SqlTableRef::kInnerJoin, Table(text[bJoin]), pCond,
                                             bJoin ? Table(text[2]) : nullptr, kDriving_UnknownTable),
                        false);
}

/// The nodes of a text, joined by links that do not merge; the cardinality of each is its place in the text.
inline std::vector<RqJoinNode*> Graph(const std::string& nodesText, const std::string& linksText) {
  std::map<std::string, RqJoinNode*> byName{{".", nullptr}};
  std::vector<RqJoinNode*> nodes;
  std::istringstream nodeStream(nodesText);
  for (std::string node; nodeStream >> node;) {
    nodes.push_back(byName[{node[node[0] == '[']}] = Node(node));
  }
  std::istringstream linkStream(linksText);
  int cardinality = 0;
  for (std::string link, in, type, out, cond; std::getline(linkStream, link, ',');) {
    std::string options;
    std::istringstream(link) >> in >> type >> out >> cond >> options;
    const auto has = [&](char option) { return options.find(option) != std::string::npos; };
    new RqJoinLink(byName.at(in), byName.at(out), Cond(cond),
                   static_cast<SqlTableRef::JoinType>(std::ranges::find(kJoinTypes, type) - kJoinTypes),
                   static_cast<JoinCardinality>(cardinality++),
                   has('<') ? byName.at(in) : (has('>') ? byName.at(out) : nullptr), has('!'));
  }
  return nodes;
}

/// The names of all columns at and below a node, in the order of the alphabet.
inline std::vector<std::string> ColumnNames(const RqNode* pNode) {
  std::list<RqNode*> columns;
  FindNodes(const_cast<RqNode*>(pNode), RqNode::IsObjectType(kRqTargetColumn), columns, false);
  std::vector<std::string> names;
  for (const RqNode* const pColumn : columns) names.push_back(Text(static_cast<const RqExpr*>(pColumn)));
  std::sort(names.begin(), names.end());
  return names;
}

inline std::string CondText(const RqExprCond* pCond) {
  std::string text;
  for (const std::string& name : ColumnNames(pCond)) text += (text.empty() ? "" : "&") + name;
  return text.empty() ? "-" : text;
}

inline std::string TableText(const RqAbstractTable* pTable) {
  if (!pTable) return "-";
  if (!pTable->IsTableReference()) {
    return {static_cast<char>(static_cast<const RqIdentifiedTable*>(pTable)->GetTableNumber())};
  }
  const auto& ref = static_cast<const RqTableReference&>(*pTable);
  std::ostringstream text;
  text << '(' << TableText(ref.GetLeftTable());
  if (ref.GetRightTable()) {
    text << (ref.GetDrivingTableHint() == kDriving_LeftTable ? " <" : " ") << kJoinTypes[ref.GetJoinType()]
         << (ref.GetDrivingTableHint() == kDriving_RightTable ? "> " : " ") << TableText(ref.GetRightTable());
  }
  text << (ref.GetSearchCond() ? " on " + CondText(ref.GetSearchCond()) : "") << ')';
  return text.str();
}

/// "(A) (B left C on c2), 0 inner 1 c1 #0 <!": trees, then each link at its in-node with its cardinality.
inline std::string GraphText(const std::vector<RqJoinNode*>& nodes) {
  std::ostringstream text;
  std::map<const RqJoinNode*, std::string> places{{nullptr, "."}};
  for (const RqJoinNode* const pNode : nodes) {
    text << (places.size() > 1 ? " " : "") << TableText(pNode->GetTableReference());
    places.emplace(pNode, std::to_string(places.size() - 1));
  }
  for (const RqJoinNode* const pNode : nodes) {
    for (const RqJoinLink* const pLink : pNode->GetIncidentLinks()) {
      if (pLink->GetInNode() != pNode) continue;
      const RqJoinNode* const pDriving = pLink->GetDrivingJoinNode();
      std::string options = pDriving ? (pDriving == pNode ? "<" : (pDriving == pLink->GetOutNode() ? ">" : "?")) : "";
      if (pLink->AlreadyAttachedCond()) options += "!";
      text << ", " << places[pNode] << ' ' << kJoinTypes[pLink->GetJoinType()] << ' ' << places[pLink->GetOutNode()]
           << ' ' << CondText(pLink->GetJoinCond()) << " #" << pLink->GetCardinality()
           << (options.empty() ? "" : " " + options);
    }
  }
  return text.str();
}
