#pragma once

#include "Host/HostTypes.h"
#include "Host/KXString.h"

class ARpGateway;

/// A query over the business model as the parser of requests leaves it: the parse tree of a subquery that is not
/// compiled yet. What it is made of is the matter of the layer that implements it; the compiler owns one, copies it,
/// sends it on in its byte form and asks for its statement.
class AbstractListQuerySpec {
 public:
  virtual ~AbstractListQuerySpec() = default;

  /// A copy that shares nothing with this one; the caller owns it.
  virtual AbstractListQuerySpec* Copy() const = 0;
  /// The statement that says the query: the same text for the same query. pRp gives the names of objects.
  virtual KXString ToSQLStatement(ARpGateway* pRp) const = 0;
  /// Appends what the reader that was set reads back.
  virtual void ToByteVector(ByteVector& bv) const = 0;

  /// The byte form of a parse tree or of none: a bool, then that of the tree.
  static void ToByteVector(ByteVector& bv, const AbstractListQuerySpec* pSpec);
  /// Stores a new parse tree, which the caller owns, or null, and returns the advanced cursor. Raises ErrorMessage
  /// kMsgBytesMalformed when a tree stands there and no reader is set.
  static const_iterator FromByteVector(const_iterator start, AbstractListQuerySpec*& pSpec);

  /// Stores a new parse tree and returns the cursor behind what it read. May raise ErrorMessage.
  using Reader = const_iterator (*)(const_iterator start, AbstractListQuerySpec*& pSpec);
  /// The reader of the class that the process works with; null takes it off again. Any thread may call it.
  static void SetReader(Reader reader);

 protected:
  AbstractListQuerySpec() = default;
  AbstractListQuerySpec(const AbstractListQuerySpec&) = default;
  AbstractListQuerySpec& operator=(const AbstractListQuerySpec&) = default;
};
