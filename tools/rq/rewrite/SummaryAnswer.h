#pragma once

#include <map>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"

/// Answers a block over logical tables of the business model from a summary: a physical table whose rows are those of a
/// more detailed source, summed up. Aggregates of measures become aggregates of the summary's columns, by a content map
/// that the model gives; other columns become those of the summary, or of tables that its foreign keys lead to.
///
/// Law: where the model is right about its sources, the block says what the detailed source would.
///
///   SUM, MIN and MAX   of a measure that the model sums up by that function: by the summary's column
///   COUNT              of a measure that the model counts; and where the summary has a column that counts by what is
///                      never null in the detailed source, of rows, and of measures that are never null there
///   AVG, STDDEV        as far as their partial values are there
///   SUM(m * constant)  and other forms in which a sum can be taken before: the summary's column takes the place of m
class SummaryAnswer {
 public:
  /// The gateway is lent. Raises RewriteRefusal for a table that is no summary.
  SummaryAnswer(MemoryGateway& gateway, const VoidID& summaryID);

  /// Rewrites the block, which then is over physical tables with numbers from firstTableNumber on. Raises
  /// RewriteRefusal, and the block is then of no use any more, with the name of what the summary does not have.
  void Answer(RqList& block, int firstTableNumber);

 private:
  /// A table of the new block, and the foreign key that leads to it from one before; null for the summary.
  struct Table {
    VoidID m_id;
    VoidID m_foreignKeyID;
    int m_number;
  };

  void FindSources(const VoidID& summaryID);
  void MakeContentMap();
  void AddMapping(RqExprAggr* pAggr, const VoidID& columnID);
  void AddMappingsOf(const VoidID& attributeID);
  VoidID SourceColumnIn(const AAttribute& attribute, const VoidIDVector& tableIDs) const;
  bool IsNeverNull(const AAttribute& attribute) const;
  KXString NameOf(const VoidID& id) const;

  void RequireLogicalJoins(const RqList& block) const;
  OwnedRqExprPtr RewriteExpr(OwnedRqExprPtr expr);
  OwnedRqExprPtr RewriteAggregate(const RqExprAggr& aggr) const;
  RqExpr* RenderInsideExpr(const RqExprAggr& aggr) const;
  OwnedRqExprPtr RewriteAttribute(const RqAttribute& attribute);
  int NumberOfTable(const VoidID& tableID);
  bool IsReachable(const VoidID& tableID) const { return m_foreignKeys.contains(tableID); }
  void FindReachableTables();
  Heap<RqJoinSpec> MakeFromClause(OwnedRqExprCondPtr& residual) const;
  OwnedRqExprPtr MakeColumn(const VoidID& columnID, int tableNumber) const;

  MemoryGateway& m_gateway;
  VoidID m_summaryID;
  VoidID m_logicalTableID;
  VoidIDVector m_summaryTableIDs;          ///< Those of its source.
  VoidIDVector m_detailTableIDs;           ///< Those of the most detailed source of the logical table.
  std::map<VoidID, VoidID> m_foreignKeys;  ///< By table that the summary leads to, the key that leads there.

  int m_nextTableNumber = 0;
  std::vector<Table> m_tables;
  std::vector<OwnedRqExprPtr> m_exprs;  ///< What the map's rows point at.
  SourceContentMapWrapper m_contentMap;
};
