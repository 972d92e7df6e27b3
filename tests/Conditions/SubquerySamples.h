#pragma once

#include <functional>
#include <string>
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

struct QuerySubexprSample {
  std::string m_name;
  std::function<RqExpr*()> m_make;
};

/// One of each class of subqueries and of the conditions over them. What travels differs from its default.
inline std::vector<QuerySubexprSample> QuerySubexprSamples() {
  std::vector<QuerySubexprSample> samples;
  const auto add = [&samples]<class Class>(Class* (*make)()) {
    samples.push_back({std::string(GetRqNodeTypeName(Class::kObjectType)), [make]() -> RqExpr* {
                         Class* const pExpr = make();
                         pExpr->MarkTargetType(ServerInfo::kPostgreSQL);
                         pExpr->MarkTargetID(VoidID(3023, 9u));
                         return pExpr;
                       }});
  };
  add(+[] { return LogicalSubquery(L"SELECT \"x\" FROM \"Größe\""); });
  add(+[] { return PhysicalSubquery(L"RqList q", 77, true); });
  add(+[] { return PersistSubquery(L"RqList p"); });
  const auto addQuantified = [&add]<class Class>(std::type_identity<Class>) {
    add(+[] { return new Class(Col(L"a"), PhysicalSubquery(L"RqList q")); });
  };
  addQuantified(std::type_identity<RqExprCondAnyLessThan>());
  addQuantified(std::type_identity<RqExprCondAnyLessEqual>());
  addQuantified(std::type_identity<RqExprCondAnyGreaterThan>());
  addQuantified(std::type_identity<RqExprCondAnyGreaterEqual>());
  addQuantified(std::type_identity<RqExprCondAnyNotEqual>());
  addQuantified(std::type_identity<RqExprCondAllLessThan>());
  addQuantified(std::type_identity<RqExprCondAllLessEqual>());
  addQuantified(std::type_identity<RqExprCondAllEqual>());
  addQuantified(std::type_identity<RqExprCondAllGreaterThan>());
  addQuantified(std::type_identity<RqExprCondAllGreaterEqual>());
  add(+[] { return new RqExprCondExists(LogicalSubquery(L"SELECT 1")); });
  return samples;
}
