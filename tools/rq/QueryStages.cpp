#include "rq/QueryStages.h"

#include <map>
#include <set>

#include "Query/Optimizer/Request/Blocks/SQORRqJoinLink.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

namespace {

const char* NameOf(SqlTableRef::JoinType type) {
  switch (type) {
    case SqlTableRef::kInnerJoin:
      return "inner join";
    case SqlTableRef::kLeftOuterJoin:
      return "left outer join";
    case SqlTableRef::kRightOuterJoin:
      return "right outer join";
    case SqlTableRef::kFullOuterJoin:
      return "full outer join";
    case SqlTableRef::kFullOuterStitchJoin:
      return "full outer stitch join";
    case SqlTableRef::kNaturalJoin:
      return "natural join";
  }
  return "join";
}

/// The text of a node over several lines, without the line feed in front.
std::string TextOf(const RqNode& node, MemoryGateway& gateway) {
  const std::string text = RqDumpout::StringFrom(node, false, true, &gateway).ToUTF8();
  return text.starts_with('\n') ? text.substr(1) : text;
}

/// The copies of the nodes of a graph, which the caller owns.
std::vector<RqJoinNode*> CopyNodes(RqJoinSpec& joinSpec) {
  const Heap<RqJoinSpec> copy(static_cast<RqJoinSpec*>(joinSpec.NestedDeepCopy(false)));
  std::vector<RqJoinNode*> nodes;
  for (int i = 0; i < copy->GetNumTableReferences(); ++i) {
    nodes.push_back(static_cast<RqJoinNode*>(copy->ReleaseIthChild(i)));
  }
  return nodes;
}

}  // namespace

void QueryStages::OnBlock(RqList& list) {
  ++m_numBlocks;
  AppendHeading("as parsed");
  AppendTree(list);
  AppendConjuncts(list);
  if (list.GetJoinSpec()) {
    AppendGraph(list);
    AppendCollapsed(list);
  }
}

void QueryStages::AppendHeading(const std::string& title) {
  if (!m_text.empty()) m_text += '\n';
  m_text += "== block " + std::to_string(m_numBlocks) + ": " + title + '\n';
}

void QueryStages::AppendTree(const RqNode& node) { m_text += TextOf(node, m_gateway) + '\n'; }

void QueryStages::AppendConjuncts(RqList& list) {
  const RqDetailFilter* const pFilter = list.GetDetailFilter();
  if (!pFilter) return;
  AppendHeading("conjuncts of the filter");
  ToCNFConjuncts toCNF;
  toCNF.GenerateOwnedCNFConjuncts(*pFilter->GetCond(), false);
  if (!toCNF.GetConversionSuccess()) m_text += "(too complicated for a conjunctive normal form: as they stand)\n";
  OwnedRqExprCondVector conjuncts;
  toCNF.ReleaseConjuncts(conjuncts);
  for (const OwnedRqExprCondPtr& conjunct : conjuncts) AppendTree(*conjunct);
}

void QueryStages::AppendGraph(RqList& list) {
  AppendHeading("join graph");
  RqJoinSpec& joinSpec = *list.GetJoinSpec();
  std::map<const RqJoinNode*, int> numbers;
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) {
    numbers[joinSpec.GetIthJoinNode(i)] = i + 1;
    m_text += std::to_string(i + 1) + ": ";
    AppendTree(*joinSpec.GetIthTableReference(i));
  }
  std::set<const RqJoinLink*> seen;
  for (int i = 0; i < joinSpec.GetNumTableReferences(); ++i) {
    for (const RqJoinLink* const pLink : joinSpec.GetIthJoinNode(i)->GetIncidentLinks()) {
      if (!seen.insert(pLink).second) continue;
      m_text += std::to_string(numbers[pLink->GetInNode()]) + " - " + std::to_string(numbers[pLink->GetOutNode()]) +
                ' ' + NameOf(pLink->GetJoinType()) + " on ";
      AppendTree(*pLink->GetJoinCond());
    }
  }
}

void QueryStages::AppendCollapsed(RqList& list) {
  AppendHeading("joins collapsed");
  std::vector<RqJoinNode*> nodes = CopyNodes(*list.GetJoinSpec());
  OwnedRqExprCondPtr residual;
  const Heap<RqJoinSpec> collapsed(RqJoinSpec::CompileLinkGraph(nodes, residual, &m_gateway, false));
  for (int i = 0; i < collapsed->GetNumTableReferences(); ++i) AppendTree(*collapsed->GetIthTableReference(i));
  if (!residual) return;
  m_text += "residual: ";
  AppendTree(*residual);
}
