#pragma once

#include <utility>
#include <vector>

#include "Host/HostTypes.h"
#include "Host/KXString.h"
#include "Host/RpObjects.h"
#include "Host/VoidID.h"

/// A node of an expression of the metadata repository, by which an object is computed from others.
class AExpr {
 public:
  virtual ~AExpr() = default;

  /// Appends the objects that stand in the expression, in the order of its text, repeats kept. bRecursive: each one is
  /// followed by those of its own expression, if it has one.
  virtual void AppendObjects(ARpGateway* pRp, std::vector<RefARpObject>& objects, bool bRecursive) const = 0;
  /// The expression for people; empty if nothing but its objects is known. pRp gives the names of objects.
  virtual KXString GetText(ARpGateway* pRp) const = 0;

 protected:
  AExpr() = default;
  AExpr(const AExpr&) = default;
  AExpr& operator=(const AExpr&) = default;
};

/// An expression tree of the repository, or none. Lends the tree, which its object owns.
class Expr {
 public:
  Expr() = default;
  explicit Expr(const AExpr* pExpr) : m_pExpr(pExpr) {}

  bool IsNull() const { return !m_pExpr; }
  /// Appends the repository objects that the expression refers to; none without an expression.
  void GetObjectsInExpr(ARpGateway* pRp, std::vector<RefARpObject>& objects, bool bRecursive) const {
    if (m_pExpr) m_pExpr->AppendObjects(pRp, objects, bRecursive);
  }
  /// Lends the tree, or null.
  const AExpr* Get() const { return m_pExpr; }

 private:
  const AExpr* m_pExpr = nullptr;
};

/// The text of an expression of the repository.
class ToPrettyStringVisitor {
 public:
  /// Empty without an expression.
  static KXString StringFrom(const Expr& expr, ARpGateway* pRp) {
    return expr.IsNull() ? KXString() : expr.Get()->GetText(pRp);
  }
};

/// Collects the identifiers of the objects in expressions.
class VoidIDCollector {
 public:
  /// bRecursive: as in Expr::GetObjectsInExpr.
  explicit VoidIDCollector(bool bRecursive) : m_bRecursive(bRecursive) {}

  /// Adds those of one more expression.
  void Collect(ARpGateway* pRp, const Expr& expr);
  /// All that were collected, in order, repeats kept.
  void GetVoidIDs(VoidIDVector& ids) const { ids = m_ids; }

 private:
  bool m_bRecursive;
  VoidIDVector m_ids;
};

/// A node of an expression of the repository as a hash table of expressions knows it.
class AExprHashHelper {
 public:
  virtual ~AExprHashHelper() = default;

  /// Appends the bytes that tell the node from others of its format.
  virtual void GetTokenData(ByteVector& data) const = 0;
  /// How the token data are laid out.
  virtual KXWBString GetFormatStrB() const = 0;
  /// Whether both stand for the same expression; such have the same format and the same token data.
  virtual bool equalsHashHelper(const AExprHashHelper& rhs) const = 0;

 protected:
  AExprHashHelper() = default;
  AExprHashHelper(const AExprHashHelper&) = default;
  AExprHashHelper& operator=(const AExprHashHelper&) = default;
};
