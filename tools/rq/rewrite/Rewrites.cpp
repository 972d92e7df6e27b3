#include "rq/rewrite/Rewrites.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "Host/KXThread.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggrRank.h"
#include "Query/Optimizer/Request/Blocks/SQORRqDerivedTable.h"
#include "Query/Optimizer/Request/Blocks/SQORRqJoinSpec.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "Query/Optimizer/Request/Blocks/SQORRqReattach.h"
#include "Query/Optimizer/Request/Blocks/SQORRqSetOperator.h"
#include "Query/Optimizer/Request/Blocks/SQORRqTableReference.h"
#include "Query/Optimizer/Request/Blocks/SQORRqWrapperList.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Conditions/SQORToCNF.h"
#include "rq/Command.h"
#include "rq/KnownConditions.h"
#include "rq/RequestBytes.h"
#include "rq/RowIns.h"
#include "rq/rewrite/Grain.h"
#include "rq/rewrite/RequestNodes.h"
#include "rq/rewrite/RewriteRefusal.h"
#include "rq/rewrite/SplitBlock.h"

namespace {

/// Lets the shared lists read the lists that their columns lead to. A copy still reads what its source read.
void ReshareLists(RqNode& root) {
  std::vector<RqDerivedTable*> tables;
  ForEachRequestNode(root, [&tables](RqNode& node) {
    if (node.GetObjectType() != kRqDerivedTable) return;
    auto& table = static_cast<RqDerivedTable&>(node);
    if (table.GetInnerList()->IsRqSharedList()) tables.push_back(&table);
  });
  for (RqDerivedTable* const pTable : tables) {
    auto& list = static_cast<RqSharedList&>(*pTable->GetInnerList());
    const RqProjection* const pProjection = list.GetProjection();
    if (!pProjection || pProjection->GetNumColumns() == 0) continue;
    const auto* const pReference =
        dynamic_cast<const RqDerivedColumnReference*>(pProjection->GetIthColumn(0)->GetExpr());
    if (!pReference || !pReference->IsValidDerivedColumnReference()) continue;
    const RqAbstractList* const pOwner = pReference->GetDerivedColumn()->GetRqAbstractListContainer();
    RqDerivedTable* const pRead = pOwner ? pOwner->GetRqDerivedTableContainer() : nullptr;
    if (!pRead || pRead->GetInnerList() == list.GetSharedRqList()) continue;
    auto* const pTaken = static_cast<RqProjection*>(list.ReleaseIthChild(RqSharedList::kProjection));
    pTable->SetInnerList(new RqSharedList(pTaken, pRead->GetInnerList()));
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Normal forms

/// The form of a condition; null where there is none.
using NormalForm = OwnedRqExprCondPtr (*)(const RqExprCond& cond);

OwnedRqExprCondPtr ConjunctiveForm(const RqExprCond& cond) {
  ToCNF toCNF;
  toCNF.GenerateCNF(cond, false, true, -1);
  const RqExprCond* const pForm = toCNF.GetConversionSuccess() ? toCNF.GetCNF() : nullptr;
  return pForm ? OwnedRqExprCondPtr(static_cast<RqExprCond*>(pForm->DeepExprCopy(false))) : OwnedRqExprCondPtr();
}

OwnedRqExprCondPtr DisjunctiveForm(const RqExprCond& cond) {
  if (ToDNFDisjuncts::IsCondTooComplicatedToConvert(cond, -1)) return {};
  ToDNFDisjuncts toDisjuncts;
  toDisjuncts.GenerateOwnedDNFDisjuncts(cond, true);
  OwnedRqExprCondVector disjuncts;
  toDisjuncts.ReleaseDisjuncts(disjuncts);
  OwnedRqExprCondPtr form;
  for (OwnedRqExprCondPtr& disjunct : disjuncts) {
    form = RqExprCondOr::Concatenate(form.Release(), disjunct.Release());
  }
  return form;
}

RqDerivedColumnVector ColumnsIn(RqNode& root) {
  RqDerivedColumnVector columns;
  ForEachRequestNode(root, [&columns](RqNode& node) {
    if (node.GetObjectType() == kRqDerivedColumn) columns.push_back(static_cast<RqDerivedColumn*>(&node));
  });
  return columns;
}

/// What is aimed at where.
using Moves = std::vector<std::pair<RqDerivedColumnReference*, RqDerivedColumn*>>;

/// Aims references into the condition at the copies that its form has of the columns: those in a subquery of the form
/// at its own ones, and those that stand elsewhere, outside of the condition, at the first ones. False, and nothing is
/// changed, if a column has no copy.
bool MoveReferences(RqNode& root, RqExprCond& cond, RqExprCond& form) {
  const RqDerivedColumnVector columns = ColumnsIn(cond);
  if (columns.empty()) return true;
  Moves moves;
  bool bAll = true;
  const auto aim = [&](RqNode& node, const RqDerivedColumnVector& copies) {
    if (node.GetObjectType() != kRqDerivedColumnReference) return;
    auto& reference = static_cast<RqDerivedColumnReference&>(node);
    if (!reference.IsValidDerivedColumnReference()) return;
    RqDerivedColumn* const pColumn = reference.GetDerivedColumn();
    if (std::ranges::find(columns, pColumn) == columns.end()) return;
    const auto copy = std::ranges::find_if(copies, [pColumn](RqDerivedColumn* p) { return p->IsCopyOf(*pColumn); });
    bAll &= copy != copies.end();
    if (copy != copies.end()) moves.emplace_back(&reference, *copy);
  };
  // A subquery may read what stands in another one.
  const RqDerivedColumnVector copies = ColumnsIn(form);
  ForEachRequestNode(form, [&](RqNode& node) { aim(node, copies); });
  ForEachRequestNode(form, [&](RqNode& node) {
    // An outer subquery comes after those in it, and its moves go last.
    if (node.GetObjectType() != kRqExprPhysicalSubquery) return;
    const RqDerivedColumnVector own = ColumnsIn(node);
    ForEachRequestNode(node, [&](RqNode& inner) {
      const bool bKnownBefore = bAll;
      aim(inner, own);
      bAll = bKnownBefore;
    });
  });
  std::set<RqNode*> inside;
  ForEachRequestNode(cond, [&inside](RqNode& node) { inside.insert(&node); });
  ForEachRequestNode(root, [&](RqNode& node) {
    if (!inside.contains(&node)) aim(node, copies);
  });
  for (std::size_t i = 0; bAll && i < moves.size(); ++i) moves[i].first->SetDerivedColumn(moves[i].second);
  return bAll;
}

/// Sets the form of a condition where the condition stands, if it has one that lets the same rows pass. The condition
/// may be changed to an equivalent one.
template <class Set>
void Replace(RqNode& root, RqExprCond* pCond, NormalForm normalForm, ARpGateway& gateway, const Set& set) {
  if (!pCond) return;
  ExpandRowInsToNegate(*pCond);
  if (MayNormalFormDiffer(*pCond, &gateway)) return;
  OwnedRqExprCondPtr form = normalForm(*pCond);
  if (form && MoveReferences(root, *pCond, *form)) set(form.Release());
}

/// Replaces every filter and every join condition.
Heap<RqAbstractList> Normalize(Heap<RqAbstractList> request, NormalForm normalForm, ARpGateway& gateway) {
  RqAbstractList& root = *request;
  const auto replace = [&](RqExprCond* pCond, const auto& set) { Replace(root, pCond, normalForm, gateway, set); };
  std::vector<RqNode*> holders;
  ForEachRequestNode(root, [&holders](RqNode& node) {
    switch (node.GetObjectType()) {
      case kRqDetailFilter:
      case kRqHaving:
      case kRqTableReference:
      case kRqJoinNode:
        holders.push_back(&node);
        break;
      default:
        break;
    }
  });
  // Inner ones come first, so what is copied is normalized already.
  for (RqNode* const pHolder : holders) {
    if (auto* const pFilter = dynamic_cast<RqDetailFilter*>(pHolder)) {
      replace(pFilter->GetCond(), [&](RqExprCond* pForm) { pFilter->SetCond(pForm); });
    } else if (auto* const pHaving = dynamic_cast<RqHaving*>(pHolder)) {
      replace(pHaving->GetCond(), [&](RqExprCond* pForm) { pHaving->SetCond(pForm); });
    } else if (auto* const pJoin = dynamic_cast<RqTableReference*>(pHolder)) {
      replace(pJoin->GetSearchCond(), [&](RqExprCond* pForm) { pJoin->SetSearchCond(pForm); });
    } else {
      for (RqJoinLink* const pLink : static_cast<RqJoinNode*>(pHolder)->GetIncidentLinks()) {
        if (pLink->GetInNode() != pHolder || pLink->AlreadyAttachedCond()) continue;
        replace(pLink->GetJoinCond(), [&](RqExprCond* pForm) { pLink->SetNewJoinCond(pForm); });
      }
    }
  }
  ReshareLists(root);
  return request;
}

Heap<RqAbstractList> ToConjunctive(Heap<RqAbstractList> request, GrainReader*, MemoryGateway& gateway) {
  return Normalize(std::move(request), &ConjunctiveForm, gateway);
}

Heap<RqAbstractList> ToDisjunctive(Heap<RqAbstractList> request, GrainReader*, MemoryGateway& gateway) {
  return Normalize(std::move(request), &DisjunctiveForm, gateway);
}

// ---------------------------------------------------------------------------------------------------------------------
// Bytes and copies

Heap<RqAbstractList> ReadBack(RqAbstractList& list) {
  Heap<RqNode> node = ReadRequest(WriteRequest(list));
  return Heap<RqAbstractList>(static_cast<RqAbstractList*>(node.Release()));
}

/// A subquery that was read back, without a block, and the block that it had.
struct BlocklessSubquery {
  RqExprPhysicalSubquery* m_pSubquery;
  RqAbstractList* m_pBlock;
};

/// Gives a row number the directions of its order, which only its constructor sets.
void RestoreOrder(const RqExprAggrRowNum& source, RqExprAggrRowNum& copy) {
  RqNode* const pParent = copy.GetParent();
  if (source.GetSortDirections().empty() || !pParent) return;
  const auto release = [&copy](int slot) { return static_cast<RqExpr*>(copy.ReleaseIthChild(slot)); };
  auto* const pNumber = new RqExprAggrRowNum(release(RqExprAggr::kAggrExpr), source.GetSortDirections(),
                                             static_cast<RqExprColumnList*>(release(RqExprAggr::kControlBreak)),
                                             static_cast<RqExprColumnList*>(release(RqExprAggr::kComputeBreak)), false);
  pNumber->SetNullsSortOrder(source.GetNullsSortOrder());
  for (int i = 0; i < pParent->GetNumChildren(); ++i) {
    if (pParent->GetIthChild(i) == &copy) return pParent->SetIthChild(i, pNumber);
  }
}

/// Gives a tree that was read back what the byte form leaves out and its rows depend on: the bounds of rows and the
/// order of row numbers. Appends its subqueries, whose blocks are left out too.
void Complete(RqNode& source, RqNode& copy, std::vector<BlocklessSubquery>& subqueries) {
  KXThread::LowStackCheck(0);
  if (auto* const pList = dynamic_cast<RqAbstractList*>(&source)) {
    auto& list = static_cast<RqAbstractList&>(copy);
    list.SetRowNumLimit(pList->GetRowNumLimit());
    list.SetRowNumOffset(pList->GetRowNumOffset());
  }
  if (auto* const pSubquery = dynamic_cast<RqExprPhysicalSubquery*>(&source)) {
    subqueries.push_back({static_cast<RqExprPhysicalSubquery*>(&copy), pSubquery->GetSubqueryRqAbstractList()});
  }
  for (int i = 0; i < source.GetNumChildren(); ++i) {
    if (source.GetIthChild(i)) Complete(*source.GetIthChild(i), *copy.GetIthChild(i), subqueries);
  }
  if (const auto* const pNumber = dynamic_cast<const RqExprAggrRowNum*>(&source)) {
    RestoreOrder(*pNumber, static_cast<RqExprAggrRowNum&>(copy));
  }
}

/// The request written to bytes and read from them, each block of a subquery by itself.
Heap<RqAbstractList> ThroughBytes(Heap<RqAbstractList> request, GrainReader*, MemoryGateway& gateway) {
  OwnedRqPtrVector<std::vector<RqAbstractList*>> lists;
  std::vector<BlocklessSubquery> subqueries;
  const auto read = [&](RqAbstractList& list) {
    Heap<RqAbstractList> copy = ReadBack(list);
    Complete(list, *copy, subqueries);
    lists.push_back(copy.Get());
    static_cast<void>(copy.Release());
  };
  read(*request);
  for (std::size_t i = 0; i < subqueries.size(); ++i) {
    if (subqueries[i].m_pBlock) read(*subqueries[i].m_pBlock);
  }
  // References lead from one block to another, so all of them are repaired as one request.
  std::vector<RqAbstractList*> taken;
  taken.swap(lists);
  RqUnion all(taken, true);
  ReattachRequest(all);
  const auto release = [&all](std::size_t i) {
    return static_cast<RqAbstractList*>(all.ReleaseIthChild(static_cast<int>(i)));
  };
  // The inner ones first, since the text of a block shows those of the subqueries in it.
  std::size_t place = taken.size();
  for (std::size_t i = subqueries.size(); i-- > 0;) {
    if (subqueries[i].m_pBlock) subqueries[i].m_pSubquery->SetSubquery(release(--place), &gateway);
  }
  Heap<RqAbstractList> result(release(0));
  ReshareLists(*result);
  return result;
}

template <class Node>
std::vector<Node*> NodesOf(RqNode& root, RqNodeType_e type) {
  std::vector<Node*> nodes;
  ForEachRequestNode(root, [&](RqNode& node) {
    if (node.GetObjectType() == type) nodes.push_back(static_cast<Node*>(&node));
  });
  return nodes;
}

/// The copy of a subtree keeps its own references; those in the blocks of subqueries lead to columns around them, which
/// are found by their places.
Heap<RqAbstractList> Copy(Heap<RqAbstractList> request, GrainReader*, MemoryGateway&) {
  Heap<RqAbstractList> copy(static_cast<RqAbstractList*>(request->NestedDeepCopy(true)));
  const auto columns = NodesOf<RqDerivedColumn>(*request, kRqDerivedColumn);
  const auto copies = NodesOf<RqDerivedColumn>(*copy, kRqDerivedColumn);
  std::map<const RqDerivedColumn*, RqDerivedColumn*> counterparts;
  for (std::size_t i = 0; i < columns.size(); ++i) counterparts.emplace(columns[i], copies.at(i));
  for (RqDerivedColumnReference* const pReference :
       NodesOf<RqDerivedColumnReference>(*copy, kRqDerivedColumnReference)) {
    if (!pReference->IsValidDerivedColumnReference()) continue;
    const auto found = counterparts.find(pReference->GetDerivedColumn());
    if (found != counterparts.end()) pReference->SetDerivedColumn(found->second);
  }
  ReshareLists(*copy);
  return copy;
}

// ---------------------------------------------------------------------------------------------------------------------
// Splitting

Heap<RqAbstractList> Split(Heap<RqAbstractList> request, GrainReader* pGrain, MemoryGateway& gateway) {
  if (!request->IsRqList()) throw RewriteRefusal("the query is no single block");
  const std::vector<OwnedRqExprPtr> grain = pGrain->Take("--rewrite split");
  SplitBlock(static_cast<RqList&>(*request), grain, NextTableNumber(*request), &gateway);
  return request;
}

// ---------------------------------------------------------------------------------------------------------------------
// The rewritings

struct Rewrite {
  std::string_view m_name;
  std::string_view m_argument;  ///< What it is called; empty where there is none.
  std::string_view m_help;
  Heap<RqAbstractList> (*m_apply)(Heap<RqAbstractList>, GrainReader*, MemoryGateway&);
};

constexpr auto kRewrites = std::to_array<Rewrite>({
    {"cnf", "", "filters and join conditions in conjunctive normal form", &ToConjunctive},
    {"dnf", "", "the same in disjunctive normal form", &ToDisjunctive},
    {"split", "GRAIN", "the outermost block in two, as rq split does", &Split},
    {"bytes", "", "the request written to bytes and read back", &ThroughBytes},
    {"copy", "", "a deep copy", &Copy},
});

std::pair<const Rewrite*, std::string> Find(const std::string& rewrite) {
  const std::size_t colon = rewrite.find(':');
  const std::string name = rewrite.substr(0, colon);
  const std::string argument = colon == std::string::npos ? "" : rewrite.substr(colon + 1);
  const auto it = std::ranges::find(kRewrites, name, &Rewrite::m_name);
  if (it != kRewrites.end() && it->m_argument.empty() == (colon == std::string::npos)) return {&*it, argument};
  std::string message = "--rewrite takes one of";
  for (const Rewrite& row : kRewrites) {
    message.append(&row == &kRewrites.front() ? " " : ", ").append(row.m_name);
    if (!row.m_argument.empty()) message.append(":").append(row.m_argument);
  }
  throw UsageError(message + ", not " + rewrite);
}

}  // namespace

class Rewrites::Steps final : public QueryObserver {
 public:
  explicit Steps(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      const auto [pRewrite, argument] = Find(text);
      m_steps.emplace_back(pRewrite, argument);
    }
  }

  void OnBlock(RqList&) override {}
  void OnScope(QueryScope& scope) override {
    for (auto& [pRewrite, reader] : m_steps) reader.OnScope(scope);
  }

  Heap<RqAbstractList> Apply(Heap<RqAbstractList> request, MemoryGateway& gateway) {
    for (auto& [pRewrite, reader] : m_steps) request = pRewrite->m_apply(std::move(request), &reader, gateway);
    return request;
  }

 private:
  std::vector<std::pair<const Rewrite*, GrainReader>> m_steps;
};

Rewrites::Rewrites(const std::vector<std::string>& texts) : m_steps(std::make_unique<Steps>(texts)) {}
Rewrites::~Rewrites() = default;

QueryObserver& Rewrites::GetObserver() { return *m_steps; }

Heap<RqAbstractList> Rewrites::Apply(Heap<RqAbstractList> request, MemoryGateway& gateway) {
  return m_steps->Apply(std::move(request), gateway);
}

Heap<RqAbstractList> ApplyRewrite(const std::string& rewrite, Heap<RqAbstractList> request, MemoryGateway& gateway) {
  return Find(rewrite).first->m_apply(std::move(request), nullptr, gateway);
}

std::string RewriteHelp() {
  std::string help;
  for (const Rewrite& row : kRewrites) {
    help.append(help.empty() ? "" : "\n").append(row.m_name);
    if (!row.m_argument.empty()) help.append(":").append(row.m_argument);
    help.append(": ").append(row.m_help);
  }
  return help;
}
