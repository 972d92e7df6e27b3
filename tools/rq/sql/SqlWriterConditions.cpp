#include <algorithm>

#include "Host/KXThread.h"
#include "Host/PropertyValue.h"
#include "Query/Optimizer/Request/Blocks/SQORRqProjection.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprSessionVar.h"
#include "rq/sql/SqlWriter.h"
#include "rq/sql/SqlWriterScopes.h"

// Conditions. Written by other means they have the same three truth values; where null counts as false (bFilter), they
// have the same rows.

namespace {

using F = SUFeaturesTable;

/// Databases take a chain of operators as a tree as deep as it is long.
constexpr std::size_t kMaxChain = 200;

std::string JoinTerms(std::span<const std::string> terms, const std::string& word) {
  std::string text;
  if (terms.size() <= kMaxChain) {
    for (const std::string& term : terms) text.append(text.empty() ? "" : word).append(term);
    return text;
  }
  const std::size_t size = (terms.size() + kMaxChain - 1) / kMaxChain;
  for (std::size_t begin = 0; begin < terms.size(); begin += size) {
    const std::string group = JoinTerms(terms.subspan(begin, std::min(size, terms.size() - begin)), word);
    text += (text.empty() ? "(" : word + '(') + group + ')';
  }
  return text;
}

/// The operands of a chain of one connective, left to right.
template <class Junction>
void CollectTerms(const RqExprCond& cond, std::vector<const RqExprCond*>& terms) {
  KXThread::LowStackCheck(0);
  const auto* const pJunction = dynamic_cast<const Junction*>(&cond);
  if (!pJunction) return terms.push_back(&cond);
  CollectTerms<Junction>(*pJunction->GetLeftCond(), terms);
  CollectTerms<Junction>(*pJunction->GetRightCond(), terms);
}

struct ComparisonKind {
  RqNodeType_e m_kind;
  const char* m_sign;
  SqlTarget::FeatureId m_feature;
};
constexpr ComparisonKind kComparisons[] = {
    {kRqExprCondNotEqual, " <> ", F::kFeature_NotEqual},
    {kRqExprCondLess, " < ", F::kFeature_LessThan},
    {kRqExprCondLessEqual, " <= ", F::kFeature_LessEqualThan},
    {kRqExprCondGreater, " > ", F::kFeature_GreaterThan},
    {kRqExprCondGreaterEqual, " >= ", F::kFeature_GreaterEqualThan},
};

struct QuantifiedKind {
  RqNodeType_e m_kind;
  const char* m_sign;
  bool m_bAll;
};
constexpr QuantifiedKind kQuantified[] = {
    {kRqExprCondAnyLessThan, " < ", false},    {kRqExprCondAnyLessEqual, " <= ", false},
    {kRqExprCondAnyGreaterThan, " > ", false}, {kRqExprCondAnyGreaterEqual, " >= ", false},
    {kRqExprCondAnyNotEqual, " <> ", false},   {kRqExprCondAllLessThan, " < ", true},
    {kRqExprCondAllLessEqual, " <= ", true},   {kRqExprCondAllEqual, " = ", true},
    {kRqExprCondAllGreaterThan, " > ", true},  {kRqExprCondAllGreaterEqual, " >= ", true},
};

}  // namespace

std::vector<std::string> SqlWriter::Conjuncts(const RqExprCond& cond, bool bAlone) {
  std::vector<const RqExprCond*> terms;
  CollectTerms<RqExprCondAnd>(cond, terms);
  if (terms.size() > kMaxChain) return {Condition(cond, true).m_text};
  std::vector<std::string> texts;
  for (const RqExprCond* const pTerm : terms) {
    texts.push_back(bAlone && terms.size() == 1 ? Condition(*pTerm, true).m_text
                                                : Parenthesized(Condition(*pTerm, true), SqlPrecedence::kNot));
  }
  return texts;
}

SqlExprText SqlWriter::Condition(const RqExprCond& cond, bool bFilter) {
  KXThread::LowStackCheck(0);
  const RqNodeType_e kind = cond.GetObjectType();
  if (const auto* const it = std::ranges::find(kComparisons, kind, &ComparisonKind::m_kind);
      it != std::end(kComparisons)) {
    return Comparison(cond, it->m_sign, it->m_feature);
  }
  if (const auto* const it = std::ranges::find(kQuantified, kind, &QuantifiedKind::m_kind);
      it != std::end(kQuantified)) {
    return Quantified(cond, it->m_sign, it->m_bAll, bFilter);
  }
  switch (kind) {
    case kRqExprCondAnd:
      Require(F::kFeature_And, nullptr);
      return JunctionOf<RqExprCondAnd>(cond, " AND ", SqlPrecedence::kAnd, bFilter);
    case kRqExprCondOr:
      Require(F::kFeature_Or, nullptr);
      return JunctionOf<RqExprCondOr>(cond, " OR ", SqlPrecedence::kOr, bFilter);
    case kRqExprCondNot: {
      Require(F::kFeature_Not, nullptr);
      const RqExprCond& inner = *static_cast<const RqExprCondNot&>(cond).GetInnerOperand();
      return {"NOT " + Parenthesized(Condition(inner, false), SqlPrecedence::kNot), SqlPrecedence::kNot};
    }
    case kRqExprCondEquality:
      return Equality(cond);
    case kRqExprCondIsNull: {
      Require(F::kFeature_IsNull, &cond);
      const bool bNegated = static_cast<const RqExprCondIsNull&>(cond).IsNegated();
      return {Operand(*cond.GetIthOperand(0), SqlPrecedence::kConcat) + (bNegated ? " IS NOT NULL" : " IS NULL"),
              SqlPrecedence::kComparison};
    }
    case kRqExprCondBetween:
      return Between(cond);
    case kRqExprCondLike:
      return Like(static_cast<const RqExprCondLike&>(cond));
    case kRqExprCondIn:
    case kRqExprCondMultiColumnIn:
      return In(static_cast<const RqExprCondIn&>(cond));
    case kRqExprCondExists:
      return Exists(cond);
    case kRqExprCondAtomicWrapper:
      return Condition(*static_cast<const RqExprCondAtomicWrapper&>(cond).GetInnerCond(), bFilter);
    case kRqExprCondOuterJoinFilter:
      return Condition(*static_cast<const RqExprCondOuterJoinFilter&>(cond).GetInnerCond(), bFilter);
    default:
      Refuse("a condition of this kind", &cond);
  }
}

template <class Junction>
SqlExprText SqlWriter::JunctionOf(const RqExprCond& cond, const char* word, SqlPrecedence precedence, bool bFilter) {
  std::vector<const RqExprCond*> terms;
  CollectTerms<Junction>(cond, terms);
  std::vector<std::string> texts;
  const auto least = static_cast<SqlPrecedence>(static_cast<int>(precedence) + 1);
  for (const RqExprCond* const pTerm : terms) texts.push_back(Parenthesized(Condition(*pTerm, bFilter), least));
  return {JoinTerms(texts, word), precedence};
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparisons

std::vector<std::string> SqlWriter::Comparable(const std::vector<const RqExpr*>& exprs) {
  bool bDate = false;
  bool bTimestamp = false;
  if (m_target.IsSqlite()) {
    for (const RqExpr* const pExpr : exprs) {
      const SqlValueClass exprClass = Class(*pExpr);
      bDate |= exprClass == SqlValueClass::kDate;
      bTimestamp |= exprClass == SqlValueClass::kTimestamp;
    }
  }
  std::vector<std::string> texts;
  for (const RqExpr* const pExpr : exprs) {
    const bool bConvert = bDate && bTimestamp && Class(*pExpr) == SqlValueClass::kDate;
    texts.push_back(bConvert ? AsTimestamp(*pExpr) : Operand(*pExpr, SqlPrecedence::kConcat));
  }
  return texts;
}

std::vector<std::string> SqlWriter::ComparableRows(const std::vector<const RqExpr*>& rows) {
  std::vector<std::string> texts(rows.size());
  for (int i = 0; i < rows.front()->GetNumOperands(); ++i) {
    std::vector<const RqExpr*> column;
    for (const RqExpr* const pRow : rows) {
      if (pRow->GetNumOperands() != rows.front()->GetNumOperands()) Refuse("rows of different lengths", pRow);
      column.push_back(pRow->GetIthOperand(i));
    }
    const std::vector<std::string> values = Comparable(column);
    for (std::size_t row = 0; row < rows.size(); ++row) texts[row] += (i == 0 ? "(" : ", ") + values[row];
  }
  for (std::string& text : texts) text += ')';
  return texts;
}

std::string SqlWriter::ComparableWith(const RqExpr& expr, SqlValueClass otherClass) {
  const SqlValueClass exprClass = Class(expr);
  const bool bConvert =
      m_target.IsSqlite() && exprClass == SqlValueClass::kDate && otherClass == SqlValueClass::kTimestamp;
  return bConvert ? AsTimestamp(expr) : Operand(expr, SqlPrecedence::kConcat);
}

SqlExprText SqlWriter::Comparison(const RqExprCond& cond, const char* sign, FeatureId feature) {
  Require(feature, &cond);
  const std::vector<std::string> operands = Comparable({cond.GetIthOperand(0), cond.GetIthOperand(1)});
  return {operands[0] + sign + operands[1], SqlPrecedence::kComparison};
}

SqlExprText SqlWriter::Equality(const RqExprCond& cond) {
  Require(F::kFeature_Equality, &cond);
  // A variable of several values is equal to what one of them is equal to.
  for (int i = 0; i < 2; ++i) {
    if (cond.GetIthOperand(i)->GetObjectType() != kRqExprSessionVar) continue;
    const auto& variable = static_cast<const RqExprSessionVar&>(*cond.GetIthOperand(i));
    const OwnedPropertyValue value = variable.GetValue(&m_target.GetGateway());
    if (value->GetType() != PropertyValue::StringVector) continue;
    std::string list;
    for (const KXString& text : static_cast<const PropertyValueStringVector&>(*value).GetStrings()) {
      list += (list.empty() ? "" : ", ") + Quoted(text);
    }
    if (list.empty()) list = "NULL";
    return {Operand(*cond.GetIthOperand(1 - i), SqlPrecedence::kConcat) + " IN (" + list + ')',
            SqlPrecedence::kComparison};
  }
  const std::vector<std::string> operands = Comparable({cond.GetIthOperand(0), cond.GetIthOperand(1)});
  const std::string& left = operands[0];
  const std::string& right = operands[1];
  if (!static_cast<const RqExprCondEquality&>(cond).AreNullsEqual()) {
    return {left + " = " + right, SqlPrecedence::kComparison};
  }
  if (m_target.IsSqlite()) return {left + " IS " + right, SqlPrecedence::kComparison};
  if (m_target.GetDialect() != SqlTarget::kStandard) {
    return {left + " IS NOT DISTINCT FROM " + right, SqlPrecedence::kComparison};
  }
  return {left + " = " + right + " AND " + left + " IS NOT NULL AND " + right + " IS NOT NULL OR " + left +
              " IS NULL AND " + right + " IS NULL",
          SqlPrecedence::kOr};
}

SqlExprText SqlWriter::Between(const RqExprCond& cond) {
  Require(F::kFeature_Between, &cond);
  const std::vector<std::string> operands =
      Comparable({cond.GetIthOperand(0), cond.GetIthOperand(1), cond.GetIthOperand(2)});
  const bool bNegated = static_cast<const RqExprCondBetween&>(cond).IsNegated();
  return {operands[0] + (bNegated ? " NOT BETWEEN " : " BETWEEN ") + operands[1] + " AND " + operands[2],
          SqlPrecedence::kComparison};
}

SqlExprText SqlWriter::Like(const RqExprCondLike& cond) {
  Require(F::kFeature_Like, &cond);
  const RqExpr& pattern = *cond.GetIthOperand(RqExprCondLike::kPatternString);
  const RqExpr* const pEscape = cond.GetNumOperands() > RqExprCondLike::kEscapeString
                                    ? cond.GetIthOperand(RqExprCondLike::kEscapeString)
                                    : nullptr;
  std::string text = Operand(*cond.GetIthOperand(0), SqlPrecedence::kConcat) +
                     (cond.IsNegated() ? " NOT LIKE " : " LIKE ") + Operand(pattern, SqlPrecedence::kConcat);
  if (pEscape) {
    Require(F::kFeature_LikeEscapeClause, &cond);
    text += " ESCAPE " + Operand(*pEscape, SqlPrecedence::kConcat);
  } else if (m_target.GetDialect() == SqlTarget::kPostgresql) {
    // There the backslash escapes unless another character is said to, or none.
    const auto* const pLiteral = dynamic_cast<const RqExprStringLiteral*>(&pattern);
    if (!pLiteral || pLiteral->GetString().find(L'\\') != KXString::npos) text += " ESCAPE ''";
  }
  return {text, SqlPrecedence::kComparison};
}

// ---------------------------------------------------------------------------------------------------------------------
// IN

SqlExprText SqlWriter::In(const RqExprCondIn& cond) {
  Require(F::kFeature_In, &cond);
  if (cond.GetObjectType() == kRqExprCondMultiColumnIn && !m_target.Can(F::kFeature_IsMultiColumnIn)) {
    const OwnedRqExprCondPtr expanded(static_cast<const RqExprCondMultiColumnIn&>(cond).Expand());
    if (!expanded) Refuse(SqlTarget::NameOf(F::kFeature_IsMultiColumnIn), &cond);
    return Condition(*expanded, false);
  }
  const RqExpr* const pValues = cond.GetIthOperand(RqExprCondIn::kInValues);
  return dynamic_cast<const RqExprSubquery*>(pValues) ? InSubquery(cond) : InList(cond);
}

/// To SQLite a date and a timestamp are texts that differ: the date is converted, on either side.
SqlExprText SqlWriter::InSubquery(const RqExprCondIn& cond) {
  const RqExpr& search = *cond.GetIthOperand(RqExprCondIn::kSearchExpr);
  const RqExpr& values = *cond.GetIthOperand(RqExprCondIn::kInValues);
  const char* const pWord = cond.IsNegated() ? " NOT IN " : " IN ";
  if (!m_target.IsSqlite() || !dynamic_cast<const RqExprPhysicalSubquery*>(&values)) {
    return {Operand(search, SqlPrecedence::kConcat) + pWord + SubqueryText(values, F::kFeature_InSubquery),
            SqlPrecedence::kComparison};
  }
  const RqAbstractList& list = SubqueryBlock(values, F::kFeature_InSubquery);
  const bool bRow = cond.GetObjectType() == kRqExprCondMultiColumnIn;
  const int numColumns = bRow ? search.GetNumOperands() : 1;
  const std::string alias = 'Q' + std::to_string(m_numQuantified + 1);
  const Names names = VisibleNames(list);
  if (names.size() != static_cast<std::size_t>(numColumns)) Refuse("rows of different lengths", &cond);
  std::string left;
  std::string columns;
  bool bConverted = false;
  for (int i = 0; i < numColumns; ++i) {
    const RqExpr& value = bRow ? *search.GetIthOperand(i) : search;
    const SqlValueClass columnClass = ClassOfColumn(list, i, m_target.GetGateway());
    const bool bConvert = columnClass == SqlValueClass::kDate && Class(value) == SqlValueClass::kTimestamp;
    bConverted |= bConvert;
    const std::string column = alias + '.' + m_target.Quote(names.at(static_cast<std::size_t>(i)));
    columns += (i == 0 ? "" : ", ") + (bConvert ? "datetime(" + column + ')' : column);
    left += (i == 0 ? "" : ", ") + ComparableWith(value, columnClass);
  }
  if (bRow) left = '(' + left + ')';
  if (!bConverted) return {left + pWord + Enclosed(list, {}), SqlPrecedence::kComparison};
  ++m_numQuantified;
  std::string rows;
  {
    const ValueScope indent(m_indent, m_indent + 4);
    rows = "SELECT " + columns + NewLine() + "FROM " + Enclosed(list, names) + " AS " + alias;
  }
  return {left + pWord + EnclosedText(rows), SqlPrecedence::kComparison};
}

/// A list that is too long is split: x IN (a, b, c) = x IN (a, b) OR x IN (c).
SqlExprText SqlWriter::InList(const RqExprCondIn& cond) {
  const bool bRows = cond.GetObjectType() == kRqExprCondMultiColumnIn;
  const RqExpr& values = *cond.GetIthOperand(RqExprCondIn::kInValues);
  std::vector<const RqExpr*> exprs{cond.GetIthOperand(RqExprCondIn::kSearchExpr)};
  for (int i = 0; i < values.GetNumOperands(); ++i) {
    const RqExpr& value = *values.GetIthOperand(i);
    if (value.GetObjectType() == kRqExprSessionVar) {
      const OwnedPropertyValue pValue = static_cast<const RqExprSessionVar&>(value).GetValue(&m_target.GetGateway());
      if (pValue->GetType() == PropertyValue::StringVector) Refuse("a variable of several values in a list", &cond);
    }
    exprs.push_back(&value);
  }
  const std::vector<std::string> texts = bRows ? ComparableRows(exprs) : Comparable(exprs);
  const std::size_t limit = std::max<std::size_t>(m_target.GetLimit(F::kFeature_MaxEntriesPerInList), 1);
  std::vector<std::string> parts;
  for (std::size_t begin = 1; begin < texts.size();) {
    const std::size_t end = std::min(texts.size(), begin + std::min(limit, texts.size()));
    // The right side of a row is a query to SQLite.
    std::string part =
        texts[0] + (cond.IsNegated() ? " NOT IN (" : " IN (") + (bRows && m_target.IsSqlite() ? "VALUES " : "");
    for (std::size_t i = begin; i < end; ++i) part += (i == begin ? "" : ", ") + texts[i];
    parts.push_back(part + ')');
    begin = end;
  }
  if (parts.size() == 1) return {parts.front(), SqlPrecedence::kComparison};
  return {JoinTerms(parts, cond.IsNegated() ? " AND " : " OR "),
          cond.IsNegated() ? SqlPrecedence::kAnd : SqlPrecedence::kOr};
}

// ---------------------------------------------------------------------------------------------------------------------
// Subqueries

const RqAbstractList& SqlWriter::SubqueryBlock(const RqExpr& expr, FeatureId feature) {
  Require(feature, &expr);
  const auto* const pSubquery = dynamic_cast<const RqExprPhysicalSubquery*>(&expr);
  if (!pSubquery) Refuse("a subquery that is not compiled to a block", &expr);
  if (!pSubquery->GetSubqueryRqAbstractList()) Refuse("a subquery whose block has been left out", &expr);
  const RqAbstractList& block = *pSubquery->GetSubqueryRqAbstractList();
  if (IsCorrelated(block)) Require(F::kFeature_CorrelatedSubquery, &expr);
  return block;
}

std::string SqlWriter::SubqueryText(const RqExpr& expr, FeatureId feature) {
  if (expr.GetObjectType() == kRqExprPersistSubquery) {
    const auto& persist = static_cast<const RqExprPersistSubquery&>(expr);
    return "(SELECT " + m_target.Quote(persist.GetColumnName().ToUTF8()) + " FROM " +
           m_target.Quote(persist.GetTableName().ToUTF8()) + ')';
  }
  return Enclosed(SubqueryBlock(expr, feature), {});
}

SqlExprText SqlWriter::Exists(const RqExprCond& cond) {
  return {"EXISTS " + SubqueryText(*cond.GetIthOperand(RqExprCondExists::kSubquery), F::kFeature_ExistsSubquery),
          SqlPrecedence::kNot};
}

SqlExprText SqlWriter::Quantified(const RqExprCond& cond, const char* sign, bool bAll, bool bFilter) {
  if (!m_target.Can(F::kFeature_QuantifiedSubquery)) return QuantifiedByExists(cond, sign, bAll, bFilter);
  return {Operand(*cond.GetIthOperand(0), SqlPrecedence::kConcat) + sign + (bAll ? "ALL " : "ANY ") +
              SubqueryText(*cond.GetIthOperand(1), F::kFeature_QuantifiedSubquery),
          SqlPrecedence::kComparison};
}

/// Law: x < ANY (q) is true if x < y is for a row y of q; else null if it is null for one; else false.
///      x < ALL (q) is false if x < y is for a row; else null if it is null for one; else true.
/// In a filter it is enough to know where they are true.
SqlExprText SqlWriter::QuantifiedByExists(const RqExprCond& cond, const char* sign, bool bAll, bool bFilter) {
  // The operand would be one of the subquery's filter, where an aggregate of the block has no place.
  if (!m_target.Can(F::kFeature_ExistsSubquery) || HasAggregates(cond.GetIthOperand(0))) {
    Refuse(SqlTarget::NameOf(F::kFeature_QuantifiedSubquery), &cond);
  }
  const RqAbstractList& list = SubqueryBlock(*cond.GetIthOperand(1), F::kFeature_ExistsSubquery);
  if (!cond.GetIthOperand(0)->IsConstant()) Require(F::kFeature_CorrelatedSubquery, &cond);
  const std::string alias = 'Q' + std::to_string(++m_numQuantified);
  const RqExpr& value = *cond.GetIthOperand(0);
  const SqlValueClass columnClass = ClassOfColumn(list, 0, m_target.GetGateway());
  std::string column = alias + '.' + m_target.Quote(VisibleNames(list).at(0));
  if (m_target.IsSqlite() && columnClass == SqlValueClass::kDate && Class(value) == SqlValueClass::kTimestamp) {
    column = "datetime(" + column + ')';
  }
  const auto exists = [&](const std::string& before, const std::string& behind) {
    std::string rows;
    {
      const ValueScope indent(m_indent, m_indent + 4);
      const std::string comparison = ComparableWith(value, columnClass) + sign + column;
      rows = "SELECT 1" + NewLine() + "FROM " + Enclosed(list, VisibleNames(list)) + " AS " + alias + NewLine() +
             "WHERE " + before + comparison + behind;
    }
    return "EXISTS " + EnclosedText(rows);
  };
  const bool bStandard = m_target.GetDialect() == SqlTarget::kStandard;
  if (bFilter && !bAll) return {exists("", ""), SqlPrecedence::kNot};
  if (bFilter && !bStandard) return {"NOT " + exists("(", ") IS NOT TRUE"), SqlPrecedence::kNot};
  if (!m_target.IsSqlite()) Refuse(SqlTarget::NameOf(F::kFeature_QuantifiedSubquery), &cond);
  Require(F::kFeature_CaseIf, &cond);
  const std::string decided = exists(bAll ? "NOT " : "", "");
  const std::string unknown = exists("(", ") IS NULL");
  const std::string text = "CASE WHEN " + decided + (bAll ? " THEN 0" : " THEN 1") + " WHEN " + unknown +
                           " THEN NULL ELSE " + (bAll ? "1" : "0") + " END";
  return {text};
}
