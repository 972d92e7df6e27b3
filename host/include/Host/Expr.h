#pragma once

#include <utility>
#include <vector>

#include "Host/RpObjects.h"

/// A node of an expression of the metadata repository, by which an object is computed from others.
class AExpr {
 public:
  virtual ~AExpr() = default;

  /// Appends the objects that stand in the expression, in the order of its text, repeats kept. bRecursive: each one is
  /// followed by those of its own expression, if it has one.
  virtual void AppendObjects(ARpGateway* pRp, std::vector<RefARpObject>& objects, bool bRecursive) const = 0;

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

 private:
  const AExpr* m_pExpr = nullptr;
};
