#pragma once

#include <optional>
#include <string>
#include <vector>

#include "HostMemory/MemoryGateway.h"
#include "Query/Optimizer/Request/Aggregates/SQORRqExprAggr.h"
#include "Query/Optimizer/Request/Blocks/SQORRqList.h"
#include "rq/rewrite/SourceTables.h"

/// Answers a block over logical tables of the business model from a summary: a physical table whose rows are those of a
/// source with a finer grain, summed up. Aggregates of measures become aggregates of the summary's columns, by a
/// content map that the model gives; other columns become those of the summary, or of tables that its foreign keys lead
/// to, as far as its grain tells their values apart.
///
/// Law: where the model is right about its sources, the block says what the detailed source would, joined as the model
///      joins it: rows that have no row of a table that the block reads are not counted.
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
  /// Where the summary stands in the model: as a source of a logical table, beside others that it sums up.
  struct Source {
    SourceTables m_summary;
    std::vector<SourceTables> m_details;  ///< Those of the finest grain.
  };

  /// A table of the new block.
  struct Table {
    std::size_t m_place;  ///< Of the summary's.
    int m_number;
  };

  void FindSources(const VoidID& logicalTableID);
  void ChooseSource(const VoidIDVector& readIDs);
  void MakeContentMap();
  void AddMapping(RqExprAggr* pAggr, const VoidID& columnID);
  void AddMappingsOf(const VoidID& attributeID);
  VoidID SourceColumnIn(const AAttribute& attribute, const VoidIDVector& tableIDs) const;
  bool IsNeverNull(const AAttribute& attribute) const;
  KXString NameOf(const VoidID& id) const;
  std::string NameOfSummary() const { return NameOf(m_summaryID).ToUTF8(); }

  OwnedRqExprPtr RewriteExpr(OwnedRqExprPtr expr);
  OwnedRqExprPtr RewriteAggregate(const RqExprAggr& aggr) const;
  RqExpr* RenderInsideExpr(const RqExprAggr& aggr) const;
  OwnedRqExprPtr RewriteAttribute(const RqAttribute& attribute);
  std::optional<std::size_t> FindPlace(const VoidID& logicalTableID, const AAttribute* pAttribute) const;
  bool HasOneValueAt(const SourceTables::Place& place, SourceGrain::Standing standing) const;
  int NumberOfPlace(std::size_t place);
  void JoinReadTables(const VoidIDVector& readIDs);
  bool IsInEveryDetail(const VoidID& logicalTableID) const;
  Heap<RqJoinSpec> MakeFromClause(OwnedRqExprCondPtr& residual) const;
  OwnedRqExprPtr MakeColumn(const VoidID& columnID, int tableNumber) const;

  MemoryGateway& m_gateway;
  VoidID m_summaryID;
  std::vector<Source> m_sources;

  const Source* m_pSource = nullptr;  ///< That answers the block.
  bool m_bGrandTotal = false;
  int m_nextTableNumber = 0;
  std::vector<Table> m_tables;
  std::vector<OwnedRqExprPtr> m_exprs;  ///< What the map's rows point at.
  SourceContentMapWrapper m_contentMap;
};
