#include "rq/sql/SqlParser.h"

#include <pg_query.h>

#include <algorithm>
#include <new>
#include <optional>
#include <string>

#include "rq/sql/SqlLexer.h"
#include "rq/sql/SqlNesting.h"
#include "rq/sql/SqlSpelling.h"
#include "rq/sql/SqlText.h"

namespace {

// The grammar has no entry for an expression alone. Where WHEN stands before a text and THEN behind it, nothing but one
// expression can be: no alias, no second statement, no trailing clause; and whatever breaks out of the place changes
// the frame, which is looked at. The line feeds keep a comment at the text's end from eating the frame.
constexpr std::string_view kFrameBegin = "SELECT ALL CASE WHEN\n";
constexpr std::string_view kFrameEnd = "\nTHEN 0 END";
constexpr std::size_t kFrameConstant = kFrameEnd.find('0');

/// What stands behind this bracket is taken apart like a framed text, and where it ends is the end of the input.
constexpr std::string_view kOpenBegin = "SELECT ALL (\n";

/// Makes a statement of a constant.
constexpr std::string_view kConstantBegin = "SELECT ";

constexpr std::size_t kMaxQuotedCharacters = 40;
constexpr std::string_view kNearPhrase = " at or near \"";
constexpr std::string_view kParserDepthExceeded = "memory exhausted";
constexpr std::string_view kParserOutOfMemory = "out of memory";

// The most that the parser takes at a time, with its tree, the tree as JSON in a buffer that doubles, and the copy that
// it gives. Measured, a token takes 80 bytes in a list of constants, 230 in a chain of OR, 330 in a + a and 370 in sort
// keys like that; a byte takes 13 in a string of control characters.
constexpr std::size_t kParserBytes = 64 * 1024;
constexpr std::size_t kParserBytesOfToken = 400;
constexpr std::size_t kParserBytesOfByte = 16;

/// An error of the parser, with its place in the text given to it if the parser told it.
struct ParserError {
  std::string m_message;
  std::optional<std::size_t> m_offset;
};

/// The bytes of a number of characters.
std::size_t OffsetOfCharacter(std::string_view text, std::size_t nCharacters) {
  std::size_t offset = 0;
  for (; offset < text.size(); ++offset) {
    const bool bStartsCharacter = (static_cast<unsigned char>(text[offset]) & 0xC0) != 0x80;
    if (bStartsCharacter && nCharacters-- == 0) break;
  }
  return offset;
}

/// Raises std::bad_alloc unless the memory is there that the parser may take: it ends the process where an allocation
/// fails while it writes its tree.
void CheckParserMemory(std::string_view statement) {
  std::size_t nBytes = kParserBytes + statement.size() * kParserBytesOfByte;
  for (SqlLexer lexer(statement); lexer.Next().m_kind != SqlToken::kEnd;) nBytes += kParserBytesOfToken;
  // Called by name, since a new-expression whose block is not used may be left out.
  ::operator delete(::operator new(nBytes));
}

bool IsOutOfMemory(const PgQueryParseResult& result) {
  if (result.error == nullptr) return result.parse_tree == nullptr;
  return result.error->message == nullptr || result.error->message == kParserOutOfMemory;
}

/// Raises std::bad_alloc if there is not enough memory.
PgQueryParseResult Parse(const std::string& statement) {
  CheckParserMemory(statement);
  const PgQueryParseResult result = pg_query_parse(statement.c_str());
  if (!IsOutOfMemory(result)) return result;
  pg_query_free_parse_result(result);
  throw std::bad_alloc();
}

/// Owns what the parser gave.
class ParseResult {
 public:
  explicit ParseResult(const std::string& statement) : m_result(Parse(statement)) {
    if (m_result.error == nullptr) return;
    m_error.emplace();
    m_error->m_message = m_result.error->message;
    if (const int position = m_result.error->cursorpos; position > 0) {
      m_error->m_offset = OffsetOfCharacter(statement, static_cast<std::size_t>(position) - 1);
    }
  }
  ParseResult(const ParseResult&) = delete;
  ParseResult& operator=(const ParseResult&) = delete;
  ~ParseResult() { pg_query_free_parse_result(m_result); }

  const std::optional<ParserError>& GetError() const { return m_error; }
  std::string_view GetJson() const { return m_result.parse_tree; }

 private:
  PgQueryParseResult m_result;
  std::optional<ParserError> m_error;
};

std::optional<ParserError> ErrorOf(const std::string& statement) { return ParseResult(statement).GetError(); }

/// The parser's message without the frame in what it quotes, and with long quotations cut. The parser quotes the first
/// byte alone of a letter behind a number.
std::string Readable(std::string_view message) {
  if (message.starts_with(kParserDepthExceeded)) return kNestedTooDeeply;
  const std::size_t phrase = message.find(kNearPhrase);
  if (phrase == std::string_view::npos) return std::string(message);
  std::string_view quoted = message.substr(phrase + kNearPhrase.size());
  if (quoted.ends_with('"')) quoted.remove_suffix(1);
  if (quoted.ends_with(kFrameEnd)) quoted.remove_suffix(kFrameEnd.size());
  return std::string(message.substr(0, phrase + kNearPhrase.size())) +
         ForMessage(WithoutCutCharacter(quoted), kMaxQuotedCharacters) + '"';
}

/// The start of the first string or quoted name that the parser does not take even on its own, such as one with an
/// escape that stands for no character: it does not tell the place of these. The text's start if there is none.
std::size_t StartOfBadQuotation(std::string_view text) {
  SqlLexer lexer(text);
  for (SqlToken token = lexer.Next(); token.m_kind != SqlToken::kEnd; token = lexer.Next()) {
    if (token.m_kind != SqlToken::kQuoted) continue;
    if (ErrorOf(std::string(kConstantBegin).append(text, token.m_begin, token.m_end - token.m_begin)))
      return token.m_begin;
  }
  return 0;
}

[[noreturn]] void Raise(std::string_view text, const ParserError& error, std::size_t frameBegin) {
  if (!error.m_offset) throw SqlError(StartOfBadQuotation(text), Readable(error.m_message));
  const std::size_t offset = *error.m_offset > frameBegin ? *error.m_offset - frameBegin : 0;
  throw SqlError(std::min(offset, text.size()), Readable(error.m_message));
}

/// For a text that the frame's end, or the frame's shape, shows not to be one expression.
[[noreturn]] void RaiseWithoutFrame(std::string_view text) {
  if (const auto error = ErrorOf(std::string(kOpenBegin).append(text))) Raise(text, *error, kOpenBegin.size());
  throw SqlError(text.size(), "syntax error at the end of the condition");
}

void CheckParsed(std::string_view text, const std::optional<ParserError>& error) {
  if (!error) return;
  const bool bInFrameEnd = error->m_offset && *error->m_offset > kFrameBegin.size() + text.size();
  if (bInFrameEnd) RaiseWithoutFrame(text);
  Raise(text, *error, kFrameBegin.size());
}

/// The single element of an array; none if there are more or fewer.
SqlNode Single(SqlNode array) {
  const std::vector<SqlNode> elements = array.GetElements();
  return elements.size() == 1 ? elements.front() : SqlNode();
}

/// The text as it goes to the parser.
std::string Prepare(std::string_view written) {
  if (written.size() > kMaxSqlBytes) {
    throw SqlError(kMaxSqlBytes, "the text is longer than " + std::to_string(kMaxSqlBytes >> 20) + " MiB");
  }
  CheckIsText(written);
  CheckSqlNesting(written);
  return RespellSql(written);
}

bool IsBlank(std::string_view text) { return SqlLexer(text).Next().m_kind == SqlToken::kEnd; }

SqlTree ParseFramed(std::string_view written) {
  const std::string text = Prepare(written);
  if (IsBlank(text)) throw SqlError(0, "there is no condition here");
  std::string statement;
  statement.reserve(kFrameBegin.size() + text.size() + kFrameEnd.size());
  statement.append(kFrameBegin).append(text).append(kFrameEnd);
  const ParseResult result(statement);
  CheckParsed(text, result.GetError());
  return SqlTree(result.GetJson(), kFrameBegin.size());
}

SqlTree ParseStatements(std::string_view written) {
  const std::string text = Prepare(written);
  if (IsBlank(text)) throw SqlError(0, "there is no query here");
  const ParseResult result(text);
  if (const auto& error = result.GetError()) Raise(text, *error, 0);
  return SqlTree(result.GetJson(), 0);
}

}  // namespace

SqlCondition::SqlCondition(std::string_view text) : m_text(text), m_tree(ParseFramed(text)) {
  const SqlNode select = Single(m_tree.GetRoot().Get("stmts")).Get("stmt");
  const SqlNode frame = Single(select.Get("targetList")).Get("val");
  const SqlNode when = Single(frame.Get("args"));
  const bool bIsFrame =
      frame.GetKind() == "CaseExpr" && when.Get("result").GetLocation() == text.size() + kFrameConstant;
  if (!bIsFrame) RaiseWithoutFrame(RespellSql(text));
  m_expression = when.Get("expr");
}

SqlQuery::SqlQuery(std::string_view text) : m_text(text), m_tree(ParseStatements(text)) {
  const std::vector<SqlNode> statements = m_tree.GetRoot().Get("stmts").GetElements();
  if (statements.empty()) throw SqlError(text.size(), "a query is needed here");
  if (statements.size() > 1) {
    const SqlNode second = statements[1];
    const auto begin = static_cast<std::size_t>(second.Get("stmt_location").GetNumber());
    const std::size_t place = text.find_first_not_of(" \t\r\n", begin);
    throw SqlError(place == text.npos ? begin : place, "there is more than one statement");
  }
  m_select = statements.front().Get("stmt");
  if (m_select.GetKind() != "SelectStmt") throw SqlError(SqlLexer(text).Next().m_begin, "this is no query");
}
