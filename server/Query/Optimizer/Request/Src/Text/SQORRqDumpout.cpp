#include "Query/Optimizer/Request/Text/SQORRqDumpout.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <string>

#include "Host/ARpGateway.h"
#include "Host/BaseStringUtil.h"
#include "Host/KXAssert.h"
#include "Host/MetadataUtil.h"
#include "Host/SUSystemConfig.h"
#include "Query/Optimizer/Request/Blocks/SQORRqAbstractTable.h"
#include "Query/Optimizer/Request/Expressions/SQORRqExpr.h"
#include "Query/Optimizer/Request/Node/SQORRqHandleNode.h"

const KXString RqDumpout::kNestingIndentation(L"    ");
const KXString RqDumpout::kSingleSpace(L" ");

RqDumpout::RqDumpout(bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty, bool displayNodeIDs,
                     ARpGateway* pRpSessionVars, bool displayChildIDs, bool externalMode, bool forPlanCache,
                     bool shortExternalMode, bool prettyExternalMode, ServerStatistics* pServerStatistics,
                     bool executionPlanStats)
    : m_bDisplayTargetMarks(displayTargetMarks),
      m_bNewLineMode(newLineMode),
      m_pRp_ForPrettyColumnNames(pRpPretty),
      m_bDisplayNodeIDs(displayNodeIDs),
      m_bDisplayChildIDs(displayChildIDs && SUSystemConfig::GetSystemConfig().IsExecutionDebugEnabled()),
      m_bExternalMode(externalMode),
      m_bShortExternalMode(shortExternalMode),
      m_bForPlanCache(forPlanCache),
      m_bPrettyExternalMode(prettyExternalMode),
      m_bExecutionPlanStats(executionPlanStats),
      m_serverStatistics(pServerStatistics),
      m_pRp_ForSessionVars(pRpSessionVars) {}

KXString RqDumpout::StringFrom(const RqNode& node, bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty,
                               bool displayNodeIDs, ARpGateway* pRpSessionVars, bool displayChildIDs, bool externalMode,
                               bool forPlanCache, bool shortExternalMode, bool prettyExternalMode,
                               ServerStatistics* pServerStatistics, bool executionPlanStats) {
  RqDumpout dumpout(displayTargetMarks, newLineMode, pRpPretty, displayNodeIDs, pRpSessionVars, displayChildIDs,
                    externalMode, forPlanCache, shortExternalMode, prettyExternalMode, pServerStatistics,
                    executionPlanStats);
  // A tour takes a changeable node because other visitors change it; this one only reads.
  const_cast<RqNode&>(node).Tour(dumpout);
  return dumpout.GetString();
}

KXString RqDumpout::StringFrom(const RqNode* pNode, bool displayTargetMarks, bool newLineMode, ARpGateway* pRpPretty,
                               bool displayNodeIDs, ARpGateway* pRpSessionVars, bool displayChildIDs, bool externalMode,
                               bool forPlanCache, bool shortExternalMode, bool prettyExternalMode,
                               ServerStatistics* pServerStatistics, bool executionPlanStats) {
  if (!pNode) return {};
  return StringFrom(*pNode, displayTargetMarks, newLineMode, pRpPretty, displayNodeIDs, pRpSessionVars, displayChildIDs,
                    externalMode, forPlanCache, shortExternalMode, prettyExternalMode, pServerStatistics,
                    executionPlanStats);
}

namespace {

/// In the code page of the standard streams. Target marks, lines and identities are shown.
std::string DebugTextOf(const RqNode* pNode, ARpGateway* pRp) {
  return BaseStringUtil::StringToStdString(RqDumpout::StringFrom(pNode, true, true, pRp, true));
}

}  // namespace

void RqDumpout::DebugPrint(const char* label, const RqNode& node, ARpGateway* pRp) {
  std::fprintf(stderr, " ** %s %s ** \n", label, DebugTextOf(&node, pRp).c_str());
}

void RqDumpout::DebugPrint(const char* label, const std::vector<const RqExpr*>& exprs, ARpGateway* pRp) {
  std::fprintf(stderr, " ** %s  size %zu\n", label, exprs.size());
  for (std::size_t i = 0; i < exprs.size(); ++i) {
    std::fprintf(stderr, "elem %zu:  %s\n", i, DebugTextOf(exprs[i], pRp).c_str());
  }
}

void RqDumpout::ShowTargetMarks(RqNode& node) {
  if (!m_bDisplayTargetMarks) return;
  VoidID id;
  node.GetTargetID(id);
  if (m_bExecutionPlanStats && id.IsNullID()) return;

  ARpGateway* const pRp = m_pRp_ForPrettyColumnNames;
  Append(L" [for database ");
  // The number of an object outside the repository changes from run to run, so a key must not hold it.
  if (!m_bForPlanCache || (pRp && !pRp->IsExternalARpObject(id))) Append(id);
  if (!id.IsNullID() && pRp) {
    const RefARpObject object = pRp->GetObject(id);
    if (object.IsNull()) KX_LOGIC_ERROR(L"");
    Append(L":");
    Append(object->GetName());
  }
  Append(L",");
  Append(static_cast<std::uint32_t>(node.GetTargetType()));
  Append(L"]");
}

void RqDumpout::ShowChildIDs(RqNode& node) { AppendChildIDs(L"{{<<", node); }

void RqDumpout::Indent() { Append(m_bNewLineMode ? kNestingIndentation : kSingleSpace); }

void RqDumpout::NewLine() {
  if (!m_bNewLineMode) {
    Append(kSingleSpace);
    return;
  }
  Append(kNewLine);
  for (int i = 0; i < m_nestingLevel; ++i) Indent();
}

void RqDumpout::AppendInteger(std::int64_t number) {
  constexpr int kMaxDigits = std::numeric_limits<std::int64_t>::digits10 + 2;  // with the sign
  char digits[kMaxDigits];
  const char* const end = std::to_chars(digits, digits + kMaxDigits, number).ptr;
  wchar_t wideDigits[kMaxDigits];
  const wchar_t* const wideEnd = std::copy(static_cast<const char*>(digits), end, wideDigits);
  Append(std::wstring_view(wideDigits, static_cast<std::size_t>(wideEnd - wideDigits)));
}

void RqDumpout::Append(const VoidID& id) {
  Append(id.GetInterfaceTypeID());
  Append(L":");
  Append(id.GetUniqueNum().m_number);
}

void RqDumpout::AppendQuoted(std::wstring_view text, wchar_t quote) {
  m_string.append(quote);
  for (std::size_t end = text.find(quote); end != text.npos; end = text.find(quote)) {
    Append(text.substr(0, end + 1));
    m_string.append(quote);
    text.remove_prefix(end + 1);
  }
  Append(text);
  m_string.append(quote);
}

void RqDumpout::AppendStringText(std::wstring_view text) {
  if (m_bExternalMode) {
    AppendQuoted(text, L'\'');
    return;
  }
  Append(L"'");
  Append(text);
  Append(L"'");
}

void RqDumpout::AppendName(std::wstring_view name) {
  if (m_bExternalMode) {
    AppendQuoted(name, L'"');
  } else {
    Append(name);
  }
}

void RqDumpout::AppendObject(std::uint32_t repositoryUniqueID, const VoidID& id) {
  const RefARpObject object(m_pRp_ForPrettyColumnNames, id);
  if (object.IsNull()) {
    Append(repositoryUniqueID);
    Append(L".");
    Append(id);
  } else if (m_bExternalMode) {
    Append(MetadataUtil::GenerateQualifiedName(object));
  } else {
    Append(object->GetName());
  }
}

void RqDumpout::AppendChildIDs(std::wstring_view opening, RqNode& node) {
  if (!m_bDisplayChildIDs) return;
  const auto addressOf = [](const RqNode& object) { return reinterpret_cast<std::uintptr_t>(&object); };
  Append(opening);
  Append(addressOf(node));
  Append(L">>: ");
  for (int i = 0; i < node.GetNumChildren(); ++i) {
    const RqNode* const pChild = node.GetIthChild(i);
    if (!pChild) continue;
    Append(L"<<");
    Append(addressOf(*pChild));
    Append(L">>");
  }
  Append(L":");
  Append(node.GetNodeID().ToString());
  Append(L"}}");
}

bool RqDumpout::Visit(RqHandleNode& node) {
  if (!m_bDisplayChildIDs) return false;
  // The block stands behind what is handled, which must therefore be printed here.
  for (int i = 0; i < node.GetNumChildren(); ++i) {
    if (RqNode* const pHandled = node.GetIthChild(i)) pHandled->Tour(*this);
  }
  AppendChildIDs(L"{{NO_DISPLAY<<", node);
  return true;
}

bool RqDumpout::Visit(RqExpr& expr) {
  expr.TourExpr(*this);
  AppendChildIDs(L"{{NO_DISPLAY<<", expr);
  return true;
}

bool RqDumpout::Visit(RqEntity& node) {
  AppendObject(node.GetRepositoryUniqueID32(), node.GetID());
  ShowChildIDs(node);
  return true;
}

// A class that is only declared has no object, so its text cannot be asked for. One that comes to stand and has no
// Visit here is missed by the linker.
#define RQ_VISIT_Stands(Class)
#define RQ_VISIT_Declared(Class) \
  bool RqDumpout::Visit(Class&) { KX_LOGIC_ERROR(L""); }
#define RQ_VISIT(Class, body, state) RQ_VISIT_##state(Class)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqNode.def"
#define RQ_VISIT(Class, body, state) RQ_VISIT_##state(Class)
#include "Query/Optimizer/Request/Node/SQORAVisitorRqExpr.def"
#undef RQ_VISIT_Stands
#undef RQ_VISIT_Declared
