#include "rq/SessionValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <set>
#include <string_view>

#include "Host/BaseStringUtil.h"
#include "rq/Command.h"
#include "rq/sql/SqlText.h"

namespace {

constexpr std::size_t kMaxQuotedCharacters = 60;

std::string Quoted(std::string_view text) { return '\'' + ForMessage(text, kMaxQuotedCharacters) + '\''; }

template <class Number>
std::optional<Number> ReadNumber(std::string_view text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

/// The text between single quotes, with doubled ones inside halved; none if it is not in quotes.
std::optional<KXString> ReadQuoted(std::string_view text) {
  if (text.size() < 2 || !text.starts_with('\'') || !text.ends_with('\'')) return std::nullopt;
  std::string content;
  text = text.substr(1, text.size() - 2);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\'' && (++i == text.size() || text[i] != '\'')) return std::nullopt;
    content += text[i];
  }
  return KXString::FromUTF8(content);
}

/// The value of a literal of a calendar type: none if the word in front is another one.
template <class Moment>
std::optional<MemoryValue> ReadMoment(std::string_view text, std::wstring_view word) {
  const std::size_t quote = text.find('\'');
  if (quote == std::string_view::npos) return std::nullopt;
  std::string_view front = text.substr(0, quote);
  front = front.substr(0, front.find_last_not_of(' ') + 1);
  if (!BaseStringUtil::IsCaseInsensitiveMatch(KXString::FromUTF8(front), word)) return std::nullopt;
  const std::optional<KXString> content = ReadQuoted(text.substr(quote));
  Moment moment;
  if (!content || !Moment::FromString(*content, moment)) {
    throw UsageError(Quoted(text) + " is no value of the calendar");
  }
  return MemoryValue(moment);
}

MemoryValue ReadValue(std::string_view text) {
  if (const auto integer = ReadNumber<int>(text)) return *integer;
  if (const auto number = ReadNumber<double>(text); number && std::isfinite(*number)) return *number;
  if (const auto quoted = ReadQuoted(text)) return *quoted;
  if (auto date = ReadMoment<KXDate>(text, L"DATE")) return std::move(*date);
  if (auto time = ReadMoment<KXTime>(text, L"TIME")) return std::move(*time);
  if (auto moment = ReadMoment<KXDateTime>(text, L"TIMESTAMP")) return std::move(*moment);
  return KXString::FromUTF8(text);
}

}  // namespace

void SetSessionValues(const std::vector<std::string>& settings, MemoryGateway& gateway) {
  std::set<std::string> seen;
  for (const std::string& setting : settings) {
    const std::size_t equals = setting.find('=');
    const std::size_t point = setting.find('.');
    if (equals == std::string::npos || point >= equals || point == 0 || point + 1 == equals) {
      throw UsageError("--set takes BLOCK.NAME=VALUE, not " + Quoted(setting));
    }
    const std::string name = setting.substr(0, equals);
    if (!seen.insert(name).second) throw UsageError("--set gives " + Quoted(name) + " a value twice");
    gateway.SetSessionVariable(KXString::FromUTF8(name.substr(0, point)), KXString::FromUTF8(name.substr(point + 1)),
                               ReadValue(std::string_view(setting).substr(equals + 1)));
  }
}
