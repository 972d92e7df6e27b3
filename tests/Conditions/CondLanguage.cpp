#include "CondLanguage.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "Query/Optimizer/Request/Conditions/SQORRqExprCondHierarchy.h"
#include "Query/Optimizer/Request/Conditions/SQORRqExprCondSpecial.h"
#include "Query/Optimizer/Request/Expressions/SQORRqColumn.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprColumnList.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprLiteral.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExprParam.h"

namespace {

using Operands = std::vector<RqExpr*>;
using Words = std::map<RqNodeType_e, std::string>;

const Words kOperators = {{kRqExprCondEquality, "="},   {kRqExprCondNotEqual, "<>"}, {kRqExprCondLess, "<"},
                          {kRqExprCondLessEqual, "<="}, {kRqExprCondGreater, ">"},   {kRqExprCondGreaterEqual, ">="}};
const Words kCalls = {{kRqExprCondIsNull, "IsNull"},
                      {kRqExprCondBetween, "Between"},
                      {kRqExprCondLike, "Like"},
                      {kRqExprCondIn, "In"},
                      {kRqExprCondMultiColumnIn, "MultiIn"},
                      {kRqExprEvaluatePredicate, "Pred"},
                      {kRqExprIsAncestor, "IsAncestor"},
                      {kRqExprIsRoot, "IsRoot"},
                      {kRqExprIsSibling, "IsSibling"},
                      {kRqExprIsLeaf, "IsLeaf"},
                      {kRqExprCondGroupByContent, "GroupBy"},
                      {kRqExprCondAtomicWrapper, "Wrap"},
                      {kRqExprCondOuterJoinFilter, "Filter"}};

template <class List>
RqExpr* MakeList(Operands operands, std::size_t first) {
  auto* const pList = new List();
  for (std::size_t i = first; i < operands.size(); ++i) pList->AddChild(operands[i]);
  return pList;
}

class Parser {
 public:
  explicit Parser(const std::string& text) : m_text(text) {}

  RqExprCond* ParseAll() {
    RqExprCond* const pCond = ParseOr();
    if (m_at != m_text.size()) Fail();
    return pCond;
  }

 private:
  [[noreturn]] void Fail() const {
    std::fprintf(stderr, "no condition: \"%s\" at %zu\n", m_text.c_str(), m_at);
    std::abort();
  }
  bool Take(const std::string& token) {
    while (m_at < m_text.size() && m_text[m_at] == ' ') ++m_at;
    if (m_text.compare(m_at, token.size(), token) != 0) return false;
    m_at += token.size();
    while (m_at < m_text.size() && m_text[m_at] == ' ') ++m_at;
    return true;
  }
  void Expect(const std::string& token) {
    if (!Take(token)) Fail();
  }

  template <class Connective>
  RqExprCond* ParseChain(const char* token, RqExprCond* (Parser::*parseTerm)()) {
    RqExprCond* pCond = (this->*parseTerm)();
    while (Take(token)) pCond = Connective::Concatenate(pCond, (this->*parseTerm)());
    return pCond;
  }
  RqExprCond* ParseOr() { return ParseChain<RqExprCondOr>("|", &Parser::ParseAnd); }
  RqExprCond* ParseAnd() { return ParseChain<RqExprCondAnd>("&", &Parser::ParseUnary); }
  RqExprCond* ParseUnary() {
    if (Take("!")) return new RqExprCondNot(ParseUnary());
    if (Take("(")) {
      RqExprCond* const pCond = ParseOr();
      Expect(")");
      return pCond;
    }
    return std::isupper(static_cast<unsigned char>(m_text[m_at])) ? ParseCall() : ParseComparison();
  }

  RqExpr* ParseOperand() {
    if (Take("null")) return new RqExprNullLiteral();
    if (Take("?")) return new RqExprParam(ParseInteger());
    if (std::islower(static_cast<unsigned char>(m_text[m_at]))) {
      const KXString name = KXString::FromUTF8(m_text.substr(m_at++, 1));
      Take("");
      return new RqTargetColumn(name, RqTargetColumn::kUnknownTableNum);
    }
    return new RqExprIntegerLiteral(ParseInteger(), false);
  }
  int ParseInteger() {
    std::size_t length = 0;
    const int value = std::stoi(m_text.substr(m_at), &length);
    m_at += length;
    Take("");
    return value;
  }
  Operands ParseOperands() {
    Operands operands;
    do operands.push_back(ParseOperand());
    while (Take(","));
    return operands;
  }

  RqExprCond* ParseComparison() {
    RqExpr* const pLeft = ParseOperand();
    if (Take("==")) return new RqExprCondEquality(pLeft, ParseOperand(), true);
    if (Take("=")) return new RqExprCondEquality(pLeft, ParseOperand(), false);
    if (Take("<>")) return new RqExprCondNotEqual(pLeft, ParseOperand());
    if (Take("<=")) return new RqExprCondLessEqual(pLeft, ParseOperand());
    if (Take(">=")) return new RqExprCondGreaterEqual(pLeft, ParseOperand());
    if (Take("<")) return new RqExprCondLess(pLeft, ParseOperand());
    if (Take(">")) return new RqExprCondGreater(pLeft, ParseOperand());
    Fail();
  }

  RqExprCond* ParseCall() {
    const std::size_t open = m_text.find('(', m_at);
    std::string name = m_text.substr(m_at, open - m_at);
    m_at = open + 1;
    if (name == "Wrap" || name == "Filter") {
      RqExprCond* const pInner = ParseOr();
      Expect(")");
      if (name == "Wrap") return new RqExprCondAtomicWrapper(pInner);
      return new RqExprCondOuterJoinFilter(pInner, SqlTableRef::kLeftOuterJoin);
    }
    Operands operands = ParseOperands();
    const bool bNegated = name.starts_with("Not");
    if (bNegated) name = name == "NotNull" ? "IsNull" : name.substr(3);
    RqExprCond* const pCond = name == "MultiIn" ? ParseRows(operands, bNegated) : MakeCall(name, operands, bNegated);
    Expect(")");
    return pCond;
  }
  RqExprCond* ParseRows(const Operands& columns, bool bNegated) {
    Operands rows;
    while (Take(";")) rows.push_back(MakeList<RqExprColumnList>(ParseOperands(), 0));
    return new RqExprCondMultiColumnIn(MakeList<RqExprColumnList>(columns, 0), MakeList<RqExprColumnList>(rows, 0),
                                       bNegated);
  }
  RqExprCond* MakeCall(const std::string& name, Operands& args, bool bNegated) {
    if (name == "IsNull") return new RqExprCondIsNull(args.at(0), bNegated);
    if (name == "Between") return new RqExprCondBetween(args.at(0), args.at(1), args.at(2), bNegated);
    if (name == "Like") return new RqExprCondLike(args.at(0), args.at(1), bNegated, nullptr);
    if (name == "In") return new RqExprCondIn(args.at(0), MakeList<RqExprColumnList>(args, 1), bNegated);
    if (name == "Pred") return new RqExprEvaluatePredicate(args, bNegated);
    if (name == "IsAncestor") return new RqExprIsAncestor(args.at(0), args.at(1), args.at(2), bNegated);
    if (name == "IsRoot") return new RqExprIsRoot(args.at(0));
    if (name == "IsSibling") return new RqExprIsSibling(args.at(0), args.at(1), args.at(2), false);
    if (name == "IsLeaf") return new RqExprIsLeaf(args.at(0), bNegated);
    if (name == "GroupBy") return new RqExprCondGroupByContent(args);
    Fail();
  }

  const std::string& m_text;
  std::size_t m_at = 0;
};

std::string OperandTexts(const RqExpr& expr, const char* separator = ",") {
  std::string texts;
  for (int i = 0; i < expr.GetNumOperands(); ++i) {
    const std::string text = expr.GetIthOperand(i) ? CondText(expr.GetIthOperand(i)) : "";
    texts += (texts.empty() || text.empty() ? "" : separator) + text;
  }
  return texts;
}

/// The terms of a tree of one connective. One of the other connective is in parentheses where it binds less.
std::string ChainText(const RqExpr& expr, RqNodeType_e connective) {
  if (expr.GetObjectType() == connective) {
    return ChainText(*expr.GetIthOperand(0), connective) + (connective == kRqExprCondAnd ? " & " : " | ") +
           ChainText(*expr.GetIthOperand(1), connective);
  }
  const bool bParentheses = expr.GetObjectType() == kRqExprCondOr;
  return bParentheses ? "(" + CondText(&expr) + ")" : CondText(&expr);
}

std::string NotText(const RqExpr& inner) {
  const RqNodeType_e type = inner.GetObjectType();
  return type == kRqExprCondAnd || type == kRqExprCondOr ? "!(" + CondText(&inner) + ")" : "!" + CondText(&inner);
}

std::string CallText(const RqExpr& expr) {
  const RqNodeType_e type = expr.GetObjectType();
  std::string operands = OperandTexts(expr, type == kRqExprCondMultiColumnIn ? ";" : ",");
  if (type == kRqExprIsRoot) operands = CondText(expr.GetIthOperand(0));
  if (type == kRqExprIsSibling) operands.erase(operands.rfind(",", operands.rfind(",") - 1), 2);
  const auto name = kCalls.find(type);
  if (name == kCalls.end()) return "?";
  if (!IsNegatedCond(expr)) return name->second + "(" + operands + ")";
  return (type == kRqExprCondIsNull ? "NotNull" : "Not" + name->second) + "(" + operands + ")";
}

}  // namespace

OwnedRqExprCondPtr ParseCond(const std::string& text) { return OwnedRqExprCondPtr(Parser(text).ParseAll()); }

OwnedRqExprCondPtr DeepOr(int depth) {
  OwnedRqExprCondPtr cond = ParseCond("a=1");
  for (int i = 0; i < depth; ++i) cond = new RqExprCondOr(cond.Release(), ParseCond("a=1").Release());
  return cond;
}

std::string CondText(const RqExpr* pExpr) {
  if (!pExpr) return "-";
  const RqExpr& expr = *pExpr;
  const RqNodeType_e type = expr.GetObjectType();
  if (const auto op = kOperators.find(type); op != kOperators.end()) {
    const bool bNullsToo = type == kRqExprCondEquality && static_cast<const RqExprCondEquality&>(expr).AreNullsEqual();
    return CondText(expr.GetIthOperand(0)) + (bNullsToo ? "==" : op->second) + CondText(expr.GetIthOperand(1));
  }
  if (type == kRqTargetColumn) return static_cast<const RqTargetColumn&>(expr).GetColumnName(nullptr).ToUTF8();
  if (type == kRqAttribute) {
    return "@" + std::to_string(static_cast<const RqAttribute&>(expr).GetID().m_uniqueNum.m_number);
  }
  if (type == kRqExprIntegerLiteral) return std::to_string(static_cast<const RqExprIntegerLiteral&>(expr).GetValue());
  if (type == kRqExprNullLiteral) return "null";
  if (type == kRqExprParam) return "?" + std::to_string(static_cast<const RqExprParam&>(expr).GetParamNumber());
  if (type == kRqExprColumnList) {
    return OperandTexts(expr, expr.GetNumOperands() > 0 && expr.GetIthOperand(0)->IsMultiExpr() ? ";" : ",");
  }
  if (type == kRqExprCondAnd || type == kRqExprCondOr) return ChainText(expr, type);
  if (type == kRqExprCondNot) return NotText(*expr.GetIthOperand(0));
  return CallText(expr);
}

bool IsNegatedCond(const RqExpr& cond) {
  if (const auto* const pCond = dynamic_cast<const RqExprCondNegatable*>(&cond)) return pCond->IsNegated();
  if (const auto* const pCond = dynamic_cast<const RqExprIsAncestor*>(&cond)) return pCond->IsNegated();
  const auto* const pPredicate = dynamic_cast<const RqExprEvaluatePredicate*>(&cond);
  return pPredicate && pPredicate->IsNegated();
}

std::string RandomCondText(std::mt19937& random, int depth) {
  const auto upTo = [&random](int last) { return std::uniform_int_distribution<int>(0, last)(random); };
  if (depth > 0 && upTo(4) > 0) {
    if (upTo(4) == 0) return "!(" + RandomCondText(random, depth - 1) + ")";
    const char* const connective = upTo(1) == 0 ? " & " : " | ";
    std::string text = "(" + RandomCondText(random, depth - 1) + ")";
    for (int i = upTo(1); i >= 0; --i) text += connective + ("(" + RandomCondText(random, depth - 1) + ")");
    return text;
  }
  const int column = upTo(3);
  const std::string name(1, "abcd"[column]);
  const auto operand = [&] { return upTo(4) == 0 ? std::string(1, "bcda"[column]) : std::to_string(upTo(3)); };
  const std::string prefix = upTo(1) == 0 ? "" : "Not";
  static const char* const kSigns[] = {"=", "==", "<>", "<", "<=", ">", ">="};
  const std::string atoms[] = {
      name + kSigns[upTo(6)] + operand(), (prefix.empty() ? "IsNull(" : "NotNull(") + name + ")",
      prefix + "Between(" + name + "," + operand() + "," + operand() + ")",
      prefix + "In(" + name + "," + operand() + "," + operand() + ")", prefix + "Like(" + name + "," + operand() + ")"};
  return atoms[std::max(0, upTo(9) - 5)];
}
