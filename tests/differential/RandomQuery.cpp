#include "differential/RandomQuery.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <utility>

// What the grammar does not say, since there a rule wants another answer than SQLite's:
//
//   x = x, x < 1 OR NOT x < 1     the normal forms take a condition and its negation, or a value and itself, for
//                                 complete, although neither holds for null, and rq leaves a filter with such a part
//                                 as it stands, which tests nothing. So no two comparisons of a block have the same
//                                 two sides
//   1 = 2, 1 + 2 = 0 + 3          the normal forms leave out an equality of constants alone: of one and itself as
//                                 always true, and of two of one kind that are written differently as always false,
//                                 whatever they come out as. rq leaves most filters with such a part as they stand, and
//                                 SQLite takes a condition of constants of a join in front of a RIGHT or FULL JOIN for
//                                 one of all rows. So there is a column in each
//   a / b                         is the division of numbers, and SQLite's of integers. The reference casts
//   a sum of what was divided     depends on the order in which it is summed up, so there is none. Deviations do, too:
//                                 they stand in no condition and no sort, and their last digits are not compared
//   LIMIT without a total order   says any rows
//   RIGHT and FULL JOIN           below UNION ALL: sorting that, SQLite 3.40 loses a WHERE beside such a join
//
// SQLite reads no ANY and ALL, GROUPING SETS, INTERSECT ALL and EXCEPT ALL: the reference says them by other means, and
// by others than rq's.

namespace {

using enum ValueKind;

/// A value that expressions are made of.
struct Leaf {
  std::string m_text;
  ValueKind m_kind;
};

/// The values of a block, and of the one around it.
struct Scope {
  std::vector<Leaf> m_leaves;
  const Scope* m_pOuter = nullptr;
};

struct Source {
  std::string m_alias;
  const ModelTable* m_pTable;  ///< Null for a derived table.
};

using Kinds = std::vector<ValueKind>;

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts) text.append(text.empty() ? "" : separator).append(part);
  return text;
}

std::string ColumnNames(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 1; i <= count; ++i) names.push_back("c" + std::to_string(i));
  return Joined(names, ", ");
}

/// Writes a query or, drawing the same numbers, its reference.
class Grammar {
 public:
  Grammar(std::uint64_t seed, const std::vector<ModelTable>& tables, bool bReference)
      : m_seed(seed), m_tables(tables), m_bReference(bReference) {}

  RandomQuery m_about;

  std::string Query() {
    const Kinds kinds = SomeKinds(4);
    m_about.m_inexact.assign(kinds.size(), false);
    std::string with;
    if (OneIn(7)) {
      const Kinds columns = SomeKinds(4);
      ModelTable common{"w", {}, {}};
      for (const ValueKind kind : columns) {
        common.m_columns.push_back({"c" + std::to_string(common.m_columns.size() + 1), kind, true, -1});
      }
      with = "WITH w AS (" + Block(columns, nullptr, false) + ")\n";
      // Read more often than others.
      m_tables.insert(m_tables.end(), m_tables.size() / 2, common);
    }
    std::string text = OneIn(4) ? SetOperator(kinds) : Block(kinds, nullptr, true);
    const bool bInexact = std::ranges::count(m_about.m_inexact, true) != 0;
    if (text.find("\nORDER BY") == text.npos && !bInexact && OneIn(2)) {
      m_about.m_bOrdered = true;
      text += OrderBy(kinds.size());
    }
    return with + text;
  }

 private:
  /// All that a block written once more begins with.
  struct State {
    std::uint64_t m_counter = 0;
    int m_numAliases = 0;
    std::set<std::set<std::string>> m_compared;
  };

  // Numbers: each is the counter, scattered (splitmix64). No expression draws twice, as the order would be the
  // compiler's.
  unsigned Below(std::size_t limit) {
    std::uint64_t z = m_seed * 0xD1B54A32D192ED03 + ++m_state.m_counter * 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return static_cast<unsigned>((z ^ (z >> 31)) % limit);
  }
  bool OneIn(unsigned count) { return Below(count) == 0; }
  template <class Container>
  const auto& Pick(const Container& values) {
    return values[Below(values.size())];
  }
  std::string Pick(std::initializer_list<const char*> texts) { return texts.begin()[Below(texts.size())]; }
  Kinds SomeKinds(std::size_t most) {
    Kinds kinds(1 + Below(most));
    for (ValueKind& kind : kinds) kind = SomeKind();
    return kinds;
  }
  ValueKind SomeKind() { return Pick(std::array{kInteger, kInteger, kNumber, kText, kDate}); }
  /// Of a value that is there, so that no condition is of constants alone.
  ValueKind KindIn(const Scope& scope) { return Pick(scope.m_leaves).m_kind; }
  std::string NewAlias() { return "a" + std::to_string(++m_state.m_numAliases); }

  std::string OwnLeaf(ValueKind kind, const Scope& scope) { return LeafOf(kind, {scope.m_leaves, nullptr}); }
  bool IsFresh(const std::string& left, const std::string& right) {
    return left != right && m_state.m_compared.insert({left, right}).second;
  }

  // Queries.

  /// By all columns, in any order.
  std::string OrderBy(std::size_t numColumns) {
    std::vector<std::string> keys;
    const std::size_t first = Below(numColumns);
    for (std::size_t i = 0; i < numColumns; ++i) {
      keys.push_back(std::to_string((first + i) % numColumns + 1) + Pick({"", "", " DESC", " ASC"}));
      keys.back() += Pick({"", "", " NULLS FIRST", " NULLS LAST"});
    }
    std::string text = " ORDER BY " + Joined(keys, ", ");
    if (!OneIn(3)) return text;
    text += " LIMIT " + std::to_string(1 + Below(20));
    return OneIn(3) ? text + " OFFSET " + std::to_string(Below(8)) : text;
  }

  std::string SetOperator(const Kinds& kinds) {
    const std::string word = Pick({"UNION", "INTERSECT", "EXCEPT"});
    const bool bAll = OneIn(2);
    const bool bRightJoins = std::exchange(m_bRightJoins, m_bRightJoins && !(bAll && word == "UNION"));
    const std::string left = OneIn(4) ? SetOperator(kinds) : Block(kinds, nullptr, false);
    const std::string right = Block(kinds, nullptr, false);
    m_bRightJoins = bRightJoins;
    if (!m_bReference) return '(' + left + ")\n" + word + (bAll ? " ALL (" : " (") + right + ')';
    if (!bAll || word == "UNION") {
      return "SELECT * FROM (" + left + ") " + word + (bAll ? " ALL" : "") + " SELECT * FROM (" + right + ')';
    }
    const std::string names = ColumnNames(kinds.size());
    const std::string numbered = "SELECT *, row_number() OVER (PARTITION BY " + names + ") AS n FROM (";
    return "SELECT " + names + " FROM (" + numbered + left + ") " + word + ' ' + numbered + right + "))";
  }

  std::string Block(const Kinds& kinds, const Scope* pOuter, bool bTop) {
    ++m_depth;
    const std::string text = OneIn(2) ? Groups(kinds, pOuter, bTop) : Plain(kinds, pOuter, bTop);
    --m_depth;
    return text;
  }

  std::string SelectList(const std::vector<std::string>& items) const {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
      text += (i == 0 ? "" : ", ") + items[i] + " AS c" + std::to_string(i + 1);
    }
    return text;
  }

  std::string Plain(const Kinds& kinds, const Scope* pOuter, bool bTop) {
    Scope scope{{}, pOuter};
    const std::string from = From(scope);
    std::vector<std::string> items;
    // What is divided here might be summed up around.
    m_bDivides = bTop;
    for (const ValueKind kind : kinds) items.push_back(Value(kind, scope, 2));
    m_bDivides = true;
    const bool bDistinct = OneIn(4);
    std::string text = (bDistinct ? "SELECT DISTINCT " : "SELECT ") + SelectList(items) + from + Where(scope);
    if (bTop && !bDistinct && OneIn(6)) text += "\nORDER BY " + LeafOf(KindIn(scope), scope);
    return text;
  }

  // Groups.

  std::string Groups(const Kinds& kinds, const Scope* pOuter, bool bTop) {
    const unsigned numColumns = Below(4);
    const unsigned all = (1U << numColumns) - 1;
    std::vector<unsigned> masks;
    const bool bSets = numColumns > 0 && OneIn(4);
    const unsigned form = Below(3);
    if (bSets && form == 0) {
      for (unsigned i = 0; i <= numColumns; ++i) masks.push_back(all >> i);
    } else if (bSets && form == 1) {
      for (unsigned mask = 0; mask <= all; ++mask) masks.push_back(mask);
    } else if (bSets) {
      for (unsigned i = Below(3); i < 3; ++i) masks.push_back(Below(all + 1));
      // Each column is in one of them.
      unsigned rest = all;
      for (const unsigned mask : masks) rest &= ~mask;
      if (rest != 0) masks.push_back(rest);
    }
    m_about.m_bGroups |= bTop;
    m_about.m_bMayNotSplit |= bTop && bSets;
    if (masks.empty()) return OneGrouping(kinds, pOuter, bTop, numColumns, all, "");
    if (!m_bReference) {
      std::vector<std::string> sets;
      for (const unsigned mask : masks) {
        std::vector<std::string> set;
        for (unsigned i = 0; i < numColumns; ++i) {
          if (mask >> i & 1) set.push_back('{' + std::to_string(i) + '}');
        }
        sets.push_back('(' + Joined(set, ", ") + ')');
      }
      std::string text = "GROUPING SETS (" + Joined(sets, ", ") + ')';
      if (form < 2) {
        text = form == 0 ? "ROLLUP (" : "CUBE (";
        for (unsigned i = 0; i < numColumns; ++i) text += (i == 0 ? "{" : ", {") + std::to_string(i) + '}';
        text += ')';
      }
      return OneGrouping(kinds, pOuter, bTop, numColumns, all, text);
    }
    const State before = m_state;
    std::vector<std::string> groupings;
    for (const unsigned mask : masks) {
      m_state = before;
      groupings.push_back(OneGrouping(kinds, pOuter, bTop, numColumns, mask, ""));
    }
    return Joined(groupings, " UNION ALL ");
  }

  /// Until they are known to be grouped by or null, {0}, {1} and so on stand for the columns.
  std::string OneGrouping(const Kinds& kinds, const Scope* pOuter, bool bTop, unsigned numColumns, unsigned mask,
                          const std::string& sets) {
    Scope scope{{}, pOuter};
    std::string text = From(scope);
    Scope rows{scope.m_leaves, nullptr};
    Scope groups{{}, pOuter};
    std::vector<std::string> columns;
    for (unsigned i = 0; i < numColumns; ++i) {
      const ValueKind kind = SomeKind();
      columns.push_back(LeafOf(kind, rows));
      auto leaf = std::ranges::find(rows.m_leaves, columns.back(), &Leaf::m_text);
      if (leaf == rows.m_leaves.end()) leaf = rows.m_leaves.begin();  // A constant is no column.
      columns.back() = leaf->m_text;
      if (leaf->m_kind == kInteger && OneIn(5)) columns.back() = '(' + columns.back() + " + 1)";
      groups.m_leaves.push_back({'{' + std::to_string(i) + '}', leaf->m_kind});
    }
    text += Where(scope);
    std::vector<std::string> items;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      const auto column = std::ranges::find(groups.m_leaves, kinds[i], &Leaf::m_kind);
      const bool bColumn = OneIn(2) && column != groups.m_leaves.end() && i + 1 < kinds.size();
      bool bInexact = false;
      items.push_back(bColumn ? column->m_text : Aggregate(kinds[i], rows, bTop, bInexact));
      if (bTop && bInexact) m_about.m_inexact[i] = true;
    }
    if (numColumns > 0) {
      text += "\nGROUP BY ";
      for (unsigned i = 0; i < numColumns && sets.empty(); ++i) {
        if (mask >> i & 1) text += (text.ends_with("BY ") ? "{" : ", {") + std::to_string(i) + '}';
      }
      text += sets;
      if (text.ends_with("\nGROUP BY ")) text.resize(text.size() - 10);
    }
    if (OneIn(3)) {
      bool bInexact = false;
      for (const ValueKind kind : {kInteger, kNumber}) {
        groups.m_leaves.push_back({Aggregate(kind, rows, false, bInexact), kind});
      }
      // Subqueries see no aggregates.
      const bool bSubqueries = std::exchange(m_bSubqueries, false);
      text += "\nHAVING " + Condition(groups, 1);
      m_bSubqueries = bSubqueries;
      groups.m_leaves.resize(numColumns);
      if (m_depth < 2 && numColumns > 0 && OneIn(3)) {
        text += " AND " + SubqueryAtom(groups);
        m_about.m_bMayNotSplit |= bTop;
      }
    }
    text = "SELECT " + SelectList(items) + text;
    for (unsigned i = 0; i < numColumns; ++i) {
      for (unsigned same = 0; same < numColumns; ++same) {
        if (columns[i] == columns[same]) mask |= (mask >> same & 1) << i;
      }
    }
    for (unsigned i = 0; i < numColumns; ++i) {
      text = Replaced(text, {{'{' + std::to_string(i) + '}', mask >> i & 1 ? columns[i] : "NULL"}});
    }
    return text;
  }

  std::string Aggregate(ValueKind kind, const Scope& scope, bool bTop, bool& bInexact) {
    const bool bDivides = std::exchange(m_bDivides, false);
    const bool bSubqueries = std::exchange(m_bSubqueries, false);
    std::string name = Pick({"min", "max"});
    ValueKind argument = kind;
    if (kind == kInteger) name = Pick({"count(*)", "count", "sum", "min", "max"});
    if (kind == kNumber) name = Pick({"sum", "avg", "min", "max", "stddev_pop", "stddev_samp"});
    if (name == "count") argument = SomeKind();
    if (name == "avg" && OneIn(2)) argument = kInteger;
    if (name.starts_with("stddev")) {
      bInexact = bTop;
      if (!bTop) name = "sum";
    }
    const bool bDistinct = name != "count(*)" && !name.starts_with("std") && OneIn(6);
    std::string text =
        name == "count(*)" ? name : name + (bDistinct ? "(DISTINCT " : "(") + Value(argument, scope, 1) + ')';
    m_about.m_bMayNotSplit |= bDistinct && m_depth == 1;
    if (OneIn(5)) text += " FILTER (WHERE " + Condition(scope, 1) + ')';
    m_bDivides = bDivides;
    m_bSubqueries = bSubqueries;
    return text;
  }

  // Tables.

  std::string From(Scope& scope) {
    std::vector<Source> sources;
    std::string text = Table(scope, sources);
    const int numJoins = m_depth > 1 ? Pick(std::array{0, 0, 1}) : Pick(std::array{0, 0, 1, 1, 1, 2, 2});
    for (int i = 0; i < numJoins; ++i) {
      std::vector<Source> more;
      Scope side;
      std::string joined = Table(side, more);
      // A nest of its own.
      if (OneIn(6)) {
        const std::string inner = Table(side, more);
        joined = '(' + joined + JoinTo(side, more, inner) + ')';
      }
      scope.m_leaves.insert(scope.m_leaves.end(), side.m_leaves.begin(), side.m_leaves.end());
      sources.insert(sources.end(), more.begin(), more.end());
      text += JoinTo(scope, sources, joined);
    }
    return "\nFROM " + text;
  }

  /// One that is joined by a key to a table that is there, if there are such, or any other.
  std::string Table(Scope& scope, std::vector<Source>& sources) {
    if (m_depth < 2 && OneIn(8)) {
      sources.push_back({"a" + std::to_string(m_state.m_numAliases + 1), nullptr});
      return Derived(scope);
    }
    const ModelTable& table = Pick(m_tables);
    const std::string alias = NewAlias();
    for (const ModelTable::Column& column : table.m_columns) {
      if (column.m_kind) scope.m_leaves.push_back({alias + '.' + column.m_name, *column.m_kind});
    }
    sources.push_back({alias, &table});
    return table.m_name + " AS " + alias;
  }

  std::string Derived(Scope& scope) {
    const std::string alias = NewAlias();
    const Kinds kinds = SomeKinds(3);
    std::string text = Block(kinds, nullptr, false);
    if (OneIn(4)) {
      // The end of a union would be that of its last branch.
      text = m_bReference ? "SELECT * FROM (" + text + ')' : text;
      text += OrderBy(kinds.size());
    }
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      scope.m_leaves.push_back({alias + ".c" + std::to_string(i + 1), kinds[i]});
    }
    return '(' + text + ") AS " + alias;
  }

  /// By a key that leads from one of the tables to another, or else by values of one kind.
  std::string JoinTo(Scope& scope, std::vector<Source>& sources, const std::string& joined) {
    std::string word = Pick({"JOIN ", "JOIN ", "LEFT JOIN ", "LEFT JOIN ", "RIGHT JOIN ", "FULL JOIN "});
    if (!m_bRightJoins && (word == "RIGHT JOIN " || word == "FULL JOIN ")) word = "LEFT JOIN ";
    const Source& last = sources.back();
    std::vector<std::string> conds;
    for (std::size_t i = 0; i + 1 < sources.size() && conds.empty(); ++i) {
      for (const auto& [from, to] : {std::pair(sources[i], last), std::pair(last, sources[i])}) {
        if (!from.m_pTable || !to.m_pTable || !conds.empty()) continue;
        const auto join = std::ranges::find(from.m_pTable->m_joins, to.m_pTable->m_name, &ModelTable::Join::m_table);
        if (join == from.m_pTable->m_joins.end()) continue;
        for (const auto& [column, other] : join->m_columns) {
          IsFresh(from.m_alias + '.' + column, to.m_alias + '.' + other);
          conds.push_back(from.m_alias + '.' + column + " = " + to.m_alias + '.' + other);
        }
      }
    }
    const Scope rows{scope.m_leaves, nullptr};
    if (conds.empty()) {
      const std::string prefix = last.m_alias + '.';
      const auto right = std::ranges::find_if(
          scope.m_leaves, [&](const Leaf& leaf) { return leaf.m_text.starts_with(prefix) && leaf.m_kind == kInteger; });
      const std::string left = LeafOf(kInteger, {{scope.m_leaves.begin(), scope.m_leaves.end()}, nullptr});
      if (right != scope.m_leaves.end() && IsFresh(left, right->m_text)) conds.push_back(left + " = " + right->m_text);
    }
    const bool bSubqueries = std::exchange(m_bSubqueries, false);
    if (conds.empty() || OneIn(3)) conds.push_back('(' + Condition(rows, 1) + ')');
    m_bSubqueries = bSubqueries;
    return '\n' + word + joined + " ON " + Joined(conds, " AND ");
  }

  std::string Where(const Scope& scope) {
    if (scope.m_pOuter && OneIn(3)) {
      const ValueKind kind = KindIn(scope);
      const std::string value = OwnLeaf(kind, scope);
      const std::string outer = LeafOf(kind, *scope.m_pOuter);
      if (IsFresh(value, outer)) return "\nWHERE " + value + Pick({" = ", " <> "}) + outer;
    }
    return OneIn(4) && !scope.m_pOuter ? "" : "\nWHERE " + Condition(scope, m_depth > 1 ? 1 : 3);
  }

  // Conditions.

  std::string Condition(const Scope& scope, int depth) {
    if (depth == 0 || OneIn(4)) {
      return m_bSubqueries && m_depth < 3 && OneIn(m_depth == 1 ? 5 : 9) ? SubqueryAtom(scope) : Atom(scope);
    }
    const unsigned form = Below(5);
    if (form == 0) return "NOT (" + Condition(scope, depth - 1) + ')';
    const std::string left = Condition(scope, depth - 1);
    const std::string right = Condition(scope, depth - 1);
    return '(' + left + (form < 3 ? " AND " : " OR ") + right + ')';
  }

  std::string Atom(const Scope& scope) {
    const ValueKind kind = KindIn(scope);
    const std::string value = OwnLeaf(kind, scope);
    const std::string no = Pick({"", "", "NOT "});
    switch (Below(8)) {
      case 0:
        return value + " IS " + no + "NULL";
      case 1: {
        std::vector<std::string> constants;
        for (unsigned i = Below(3); i < 3; ++i) constants.push_back(FreshConstant(kind, value));
        if (OneIn(6)) constants.push_back("NULL");
        return value + ' ' + no + "IN (" + Joined(constants, ", ") + ')';
      }
      case 2: {
        const std::string low = FreshConstant(kind, value);
        return value + ' ' + no + "BETWEEN " + low + " AND " + FreshConstant(kind, value);
      }
      case 3:
        if (kind != kText) return Comparison(scope);
        return value + ' ' + no + "LIKE " +
               Pick({"'N%'", "'%a%'", "'_o%'", "'%t'", "'a_b'", "'%'", "'100\\%%' ESCAPE '\\'"});
      case 4: {
        if (kind != kInteger) return Comparison(scope);
        const std::string other = LeafOf(kInteger, scope);
        const std::string& first = value;
        const std::string rows = "(1, 2), (" + FreshConstant(kInteger, first) + ", 4), (5, NULL)";
        const bool bFresh = IsFresh(first, "row") && IsFresh(other, "row") && first != other;
        if (!bFresh) return Comparison(scope);
        return '(' + first + ", " + other + ") " + no + "IN (@VALUES " + rows + ')';
      }
      default:
        return Comparison(scope);
    }
  }

  std::string Comparison(const Scope& scope) {
    const ValueKind kind = KindIn(scope);
    const std::string sign = Pick({" = ", " <> ", " < ", " <= ", " > ", " >= "});
    const std::string left = OwnLeaf(kind, scope);
    std::string right = OneIn(2) ? Value(kind, scope, 1) : FreshConstant(kind, left);
    if (!IsFresh(left, right)) right = FreshConstant(kind, left);
    return OneIn(3) ? right + sign + left : left + sign + right;
  }

  std::string SubqueryAtom(const Scope& scope) {
    const std::string no = Pick({"", "", "NOT "});
    const ValueKind kind = KindIn(scope);
    switch (Below(5)) {
      case 0:
        return no + "EXISTS (" + Subquery({kind}, scope) + ')';
      case 1:
        return Quantified(scope);
      case 2: {
        const std::string value = LeafOf(kind, scope);
        const std::string row = '(' + value + ", " + Value(kInteger, scope, 1) + ") ";
        return row + no + "IN (" + Subquery({kind, kInteger}, scope) + ')';
      }
      case 3: {
        const std::string value = LeafOf(kind, scope);
        const std::string sign = Pick({" = ", " < ", " >= "});
        const std::string other = Value(kind, scope, 3);
        return value + sign + (IsFresh(value, other) ? other : FreshConstant(kind, value));
      }
      default:
        const std::string value = LeafOf(kind, scope);
        return value + ' ' + no + "IN (" + Subquery({kind}, scope) + ')';
    }
  }

  std::string Subquery(const Kinds& kinds, const Scope& scope) {
    const bool bDivides = m_bDivides;
    const std::string text = Block(kinds, &scope, false);
    m_bDivides = bDivides;
    return text;
  }

  /// The reference counts how often the comparison is true, false and neither.
  std::string Quantified(const Scope& scope) {
    const ValueKind kind = KindIn(scope);
    const bool bAll = OneIn(2);
    const std::string sign = Pick({" < ", " <= ", " > ", " >= ", " = ", " <> "});
    const std::string value = LeafOf(kind, scope);
    const std::string rows = Subquery({kind}, scope);
    if (!m_bReference) return value + sign + (bAll ? "ALL (" : "ANY (") + rows + ')';
    const std::string comparison = '(' + value + sign + "q.c1)";
    return "(SELECT CASE WHEN total(" + comparison + (bAll ? " = 0" : "") + ") > 0 THEN " + (bAll ? "0" : "1") +
           " WHEN count(*) > count" + comparison + " THEN NULL ELSE " + (bAll ? "1" : "0") + " END FROM (" + rows +
           ") AS q)";
  }

  // Values.

  /// A column, or a constant where there is none.
  std::string LeafOf(ValueKind kind, const Scope& scope) {
    if (scope.m_pOuter && OneIn(4)) return LeafOf(kind, *scope.m_pOuter);
    std::vector<std::string> texts;
    for (const Leaf& leaf : scope.m_leaves) {
      if (leaf.m_kind == kind) texts.push_back(leaf.m_text);
    }
    return texts.empty() ? Constant(kind) : Pick(texts);
  }

  std::string Constant(ValueKind kind) { return (kind == kDate ? "@DATE " : "") + ConstantText(kind, Below(8)); }

  /// One that the value has not been compared to yet; null if there is none.
  std::string FreshConstant(ValueKind kind, const std::string& value) {
    for (int i = 0; i < 6; ++i) {
      std::string constant = Constant(kind);
      if (IsFresh(value, constant)) return constant;
    }
    return "NULL";
  }

  std::string Value(ValueKind kind, const Scope& scope, int depth) {
    if (depth == 0 || OneIn(3)) return LeafOf(kind, scope);
    const std::string operand = Value(kind, scope, depth - 1);
    switch (Below(9)) {
      case 0:
        return "COALESCE(" + operand + ", " + LeafOf(kind, scope) + ')';
      case 1:
        return "NULLIF(" + operand + ", " + Constant(kind) + ')';
      case 2: {
        const bool bSubqueries = std::exchange(m_bSubqueries, false);
        const std::string condition = Condition(scope, 1);
        m_bSubqueries = bSubqueries;
        return "CASE WHEN " + condition + " THEN " + operand + (OneIn(2) ? " ELSE " + LeafOf(kind, scope) : "") +
               " END";
      }
      case 3: {
        const ValueKind key = SomeKind();
        const std::string chosen = LeafOf(key, scope);
        const std::string first = FreshConstant(key, chosen);
        return "CASE " + chosen + " WHEN " + first + " THEN " + operand + " ELSE " + LeafOf(kind, scope) + " END";
      }
      case 4:
        if (m_bSubqueries && m_depth < 2 && depth > 1) {
          // An aggregate over all rows is one row.
          Scope inner{{}, &scope};
          ++m_depth;
          const std::string from = From(inner);
          bool bInexact = false;
          const std::string aggregate = Aggregate(kind, {inner.m_leaves, nullptr}, false, bInexact);
          const std::string text = "(SELECT " + aggregate + from + Where(inner) + ')';
          --m_depth;
          return text;
        }
        return operand;
      default:
        if (kind == kInteger || kind == kNumber) return Number(kind, scope, depth);
        if (kind == kDate) return operand;
        return OneIn(2) ? Pick({"UPPER(", "LOWER(", "TRIM("}) + operand + ')'
                        : '(' + operand + " || " + LeafOf(kText, scope) + ')';
    }
  }

  std::string Number(ValueKind kind, const Scope& scope, int depth) {
    const std::string left = Value(kind, scope, depth - 1);
    const ValueKind other = kind == kNumber && OneIn(2) ? kInteger : kind;
    const std::string right = LeafOf(other, scope);
    switch (Below(6)) {
      case 0:
        return "ABS(" + left + ')';
      case 1:
        return "(- " + left + ')';
      case 2:
        if (kind != kNumber || !m_bDivides) return '(' + left + " * " + right + ')';
        return '(' + left + " @/ " + right + ')';
      default:
        return '(' + left + Pick({" + ", " - ", " * "}) + right + ')';
    }
  }

  const std::uint64_t m_seed;
  std::vector<ModelTable> m_tables;
  const bool m_bReference;
  State m_state;
  int m_depth = 0;            ///< Of blocks in each other.
  bool m_bSubqueries = true;  ///< Whether conditions may have some.
  bool m_bDivides = true;
  bool m_bRightJoins = true;
};

}  // namespace

RandomQuery MakeRandomQuery(std::uint64_t seed, const std::vector<ModelTable>& tables) {
  // The grammar marks what differs in single words, so that both draw the same.
  Grammar grammar(seed, tables, false);
  const std::string text = grammar.Query();
  RandomQuery query = grammar.m_about;
  query.m_text = Replaced(text, {{"@DATE ", "DATE "}, {"@VALUES ", ""}, {" @/ ", " / "}});
  query.m_reference =
      Replaced(Grammar(seed, tables, true).Query(), {{"@DATE ", ""}, {"@VALUES ", "VALUES "}, {" @/ ", " * 1.0 / "}});
  return query;
}
