#pragma once

#include <set>
#include <vector>

#include "Host/KXString.h"
#include "Host/TypedFieldValue.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCond.h"

class RqExprLiteral;
class RqExprSessionVar;

// What one condition says about another. Nothing here changes the trees it is given, and nothing it gives owns any of
// them. Answers are incomplete: a no means that nothing could be shown. A yes holds in every row, with these
// exceptions, which are wanted:
// - A value compared with itself, and a condition or its negation, count as true where a null makes them unknown.
// - The conversion folds constants by their form (SQORToCNF.h), so $1 = $2 or a = 1 implies a = 1.
// - Constant texts that differ in blanks at the end count as the same.
// - A test that only the database knows counts as the same as its negation.
// - The rows of a negated In are taken for those of a plain one.
// - Columns of different blocks count as one value if they are computed by one expression, and disjuncts as one if
//   they differ in nothing but the share base of aggregates.
// - A block around another one counts as that one, whatever columns of it it selects, and under a limit on its rows.
// - Where a session variable is read the answer holds for its value in this session.
// Comparing two trees takes a level of the stack for each of theirs, without a check.

// ---------------------------------------------------------------------------------------------------------------------
// Implication

/// Whether one condition implies another: whether every row that satisfies the first satisfies the second.
///
/// Law: a conjunction implies another if each conjunct of that one is implied by a conjunct of it; a disjunction
/// implies another if each disjunct of it implies a disjunct of that one; of two comparisons of one value with
/// constants, the one implies the other if its values all lie in the other's range.
class ExprSubsumptionTester {
 public:
  /// Whether a implies b. A null condition is the one without any demand. bEquivalent tells whether b was found to
  /// imply a, too; it is false when the answer is. Both are converted to conjunctive form, and a conversion without
  /// success gives false: a caller with many pairs converts each condition once (ToCNF::GenerateCNF with an In
  /// converted, and the conjuncts) and asks the form on lists. Session variables are read through pRp; raises
  /// ErrorMessage when one has no value.
  static bool IsSubsumedBy(ARpGateway* pRp, const RqExprCond* a, const RqExprCond* b, bool& bEquivalent);

  /// The same for conjuncts in the form that the conversion gives. Wanted: a list never implies a longer one, though it
  /// might. Cost: at most a test of each conjunct of a with each of b.
  static bool IsSubsumedBy(ARpGateway* pRp, const ConstRqExprVector& a, const ConstRqExprVector& b, bool& bEquivalent);
  static bool IsSubsumedBy(ARpGateway* pRp, const ConstRqExprVector& a, const OwnedRqExprCondVector& b,
                           bool& bEquivalent);

  /// The value of a string, integer, float, date, time or timestamp; the empty one for any other literal and for null.
  static TypedFieldValue ExtractConstantFromLiteral(const RqExprLiteral* pLiteral);
  /// The value of the variable in this session. A vector as a whole is its text; an element that is not there is the
  /// empty text. Raises ErrorMessage when the variable has no value.
  static TypedFieldValue ExtractConstantFromSessionVar(ARpGateway* pRp, const RqExprSessionVar* pSessionVar);
};

/// IsSubsumedBy for two conjuncts, in the form that the conversion gives: a conjunct must not hold an And at its top or
/// below an Or there.
bool IsContainedBy(ARpGateway* pRp, const RqExpr* a, const RqExpr* b, bool& bEquivalent);

/// Reads a comparison, or the Not of an inequality, as column op value: 5 > x is x < 5, and not x < 5 is x >= 5. column
/// is any expression that is not constant, lent; op is the kind of the comparison. False when expr has no such form or
/// the constant no value that can be compared. Wanted: <=, >= and <> as they stand have no such form, since the
/// conversion leaves none of them; and value stays as it was for a constant that is neither literal nor session
/// variable, so it is to be given empty.
bool ExtractColexprOpConstant(ARpGateway* pRp, const RqExpr* expr, const RqExpr*& column, TypedFieldValue& value,
                              RqNodeType_e& op);
/// The first constant operand of a comparison; null if there is none.
const RqExpr* ExtractConstantOperand(const RqExpr* pBinaryOperator);
/// The operand that is not constant; null unless it is exactly one.
const RqExpr* ExtractNonConstantOperand(const RqExpr* pBinaryOperator);

/// Enters the disjuncts of a condition, lent; nothing for null. The condition must not be an And.
void ExtractORExprSet(const RqExpr* pExpr, ConstRqExprSet& exprs);

// ---------------------------------------------------------------------------------------------------------------------
// Equivalence classes

/// Expressions that have one value in every row of interest.
using EquivalenceClass = ConstRqExprSet;
using EquivalenceClasses = std::vector<EquivalenceClass>;

/// Groups the expressions that equalities make equal. The expressions are lent.
class EquivClassUtil {
 public:
  /// Enters the equalities of a condition: those at its top and below Ands there. Nothing for null.
  static void AddEquivalenceClasses(const RqExprCond* pCond, EquivalenceClasses& classes);
  static void AddEquivalenceClasses(const OwnedRqExprCondVector& conds, EquivalenceClasses& classes);
  /// Enters that a equals b. Two classes that this makes one stand where that of a stood.
  static void AddEquivalentExprPair(const RqExpr* a, const RqExpr* b, EquivalenceClasses& classes);
  /// The first class that has the expression, or the end.
  static EquivalenceClasses::iterator FindEquivalenceClass(EquivalenceClasses& classes, const RqExpr* pExpr);
  static EquivalenceClasses::const_iterator FindEquivalenceClass(const EquivalenceClasses& classes,
                                                                 const RqExpr* pExpr);
  static bool IsPartOfEquivalenceClass(const EquivalenceClass& equivalenceClass, const RqExpr* pExpr);
};

/// Text for a debugger: a class in braces, the classes in brackets.
KXString ToString(const EquivalenceClass& equivalenceClass, ARpGateway* pRp);
KXString ToString(const EquivalenceClasses& classes, ARpGateway* pRp);

// ---------------------------------------------------------------------------------------------------------------------
// Search

/// Looks for an expression in another one, depth first, operands in order. What is found is lent.
class SubExprFinder {
 public:
  /// The first match; null if there is none. A null root has none.
  static RqExpr* FindEquivalentSubExpr(RqExpr* pRoot, const RqExpr& sought, const RqEquivalence& equivalence);
  static bool FindEquivalentSubExpr(const RqExpr& root, const RqExpr& sought, const RqEquivalence& equivalence);
  /// Appends the topmost matches: what lies below one is not looked at.
  static void FindAllEquivalentSubExprs(RqExpr* pRoot, const RqExpr& sought, RqExprVector& found,
                                        const RqEquivalence& equivalence);
};
