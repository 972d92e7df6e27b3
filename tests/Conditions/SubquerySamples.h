#pragma once

#include <vector>

#include "Expressions/ExprSamples.h"
#include "Host/DataBlobUtil.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondQuantified.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprSubquery.h"

// Subqueries for tests. What these give belongs to the caller, or to the node that takes it.

/// A parse tree that is the text of its statement.
class TextQuerySpec final : public AbstractListQuerySpec {
 public:
  explicit TextQuerySpec(const KXString& statement) : m_statement(statement) {}

  TextQuerySpec* Copy() const override { return new TextQuerySpec(*this); }
  KXString ToSQLStatement(ARpGateway*) const override { return m_statement; }
  void ToByteVector(ByteVector& bv) const override { DataBlobUtil::ToByteVector(bv, m_statement); }
  static const_iterator Read(const_iterator start, AbstractListQuerySpec*& pSpec) {
    KXString statement;
    start = DataBlobUtil::FromByteVector(start, statement, true);
    pSpec = new TextQuerySpec(statement);
    return start;
  }

 private:
  KXString m_statement;
};

inline std::uint32_t TextCRC(const KXString& text) {
  return CrcUtil::GenerateCRC32(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<int>(4 * text.size()));
}

inline RqExprLogicalSubquery* LogicalSubquery(const wchar_t* statement) {
  AbstractListQuerySpec::SetReader(&TextQuerySpec::Read);
  return new RqExprLogicalSubquery(nullptr, new TextQuerySpec(statement));
}

/// As one is read back from bytes: with a text and without a block.
inline RqExprPhysicalSubquery* PhysicalSubquery(const KXString& text, std::uint32_t crc, bool bIsHighVolume = false) {
  auto* const pSubquery = new RqExprPhysicalSubquery;
  ByteVector bytes;
  pSubquery->RqExpr::ToByteVector(bytes);
  DataBlobUtil::ToByteVector(bytes, crc);
  DataBlobUtil::ToByteVector(bytes, text);
  DataBlobUtil::ToByteVector(bytes, bIsHighVolume);
  pSubquery->FromByteVector(bytes.data());
  return pSubquery;
}
inline RqExprPhysicalSubquery* PhysicalSubquery(const KXString& text) { return PhysicalSubquery(text, TextCRC(text)); }

inline RqExprPersistSubquery* PersistSubquery(const wchar_t* text, const wchar_t* table = L"TT",
                                              const wchar_t* column = L"C1") {
  return new RqExprPersistSubquery(text, VoidID(3023, 4u), ServerInfo::kSQLite, table, column);
}

/// One of each class of subqueries and of the conditions over them.
inline std::vector<TreeSample> SubquerySamples() {
  const auto select = [] { return LogicalSubquery(L"SELECT 1"); };
  return {
      {select(), "SELECT 1"},
      {PhysicalSubquery(L"RqList q", 77, true), "Subquery(RqList q)"},
      {PersistSubquery(L"q"), "select C1 from TT", "select \"C1\" from \"TT\"", nullptr, kDoesNotTravel},
      {new RqExprCondAnyLessThan(Param(1), select()), "?1 <ANY (SELECT 1)"},
      {new RqExprCondAnyLessEqual(Param(1), select()), "?1 <=ANY (SELECT 1)"},
      {new RqExprCondAnyGreaterThan(Param(1), select()), "?1 >ANY (SELECT 1)"},
      {new RqExprCondAnyGreaterEqual(Param(1), select()), "?1 >=ANY (SELECT 1)"},
      {new RqExprCondAnyNotEqual(Param(1), select()), "?1 <>ANY (SELECT 1)"},
      {new RqExprCondAllLessThan(Param(1), select()), "?1 <ALL (SELECT 1)"},
      {new RqExprCondAllLessEqual(Param(1), select()), "?1 <=ALL (SELECT 1)"},
      {new RqExprCondAllEqual(Param(1), select()), "?1 =ALL (SELECT 1)"},
      {new RqExprCondAllGreaterThan(Param(1), select()), "?1 >ALL (SELECT 1)"},
      {new RqExprCondAllGreaterEqual(Param(1), select()), "?1 >=ALL (SELECT 1)"},
      {new RqExprCondExists(PhysicalSubquery(L"RqList q")), " EXISTS (Subquery(RqList q))"},
  };
}
