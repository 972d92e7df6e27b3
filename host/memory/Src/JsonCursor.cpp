#include "JsonCursor.h"

#include <algorithm>
#include <set>
#include <vector>

#include "Host/BaseStringUtil.h"
#include "Host/ErrorMessage.h"
#include "HostMemory/NearestNames.h"

namespace {

KXString Wide(std::string_view text) { return BaseStringUtil::StdStringToString(text); }

[[noreturn]] void RaiseAt(const KXString& source, const std::string& path, const KXString& cause) {
  KX_RAISE(kMsgModel, path.empty() ? source : source + L": " + Wide(path), cause);
}

/// ".key", or in brackets and quotes if the key is no identifier.
void AppendKey(std::string& path, std::string_view key) {
  const auto isPlain = [](char c) {
    return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z') || ('0' <= c && c <= '9') || c == '_';
  };
  if (key.empty() || !std::ranges::all_of(key, isPlain)) {
    path += '[' + Json(key).dump(-1, ' ', false, Json::error_handler_t::replace) + ']';
  } else {
    path.append(path.empty() ? "" : ".").append(key);
  }
}

void AppendIndex(std::string& path, std::size_t index) { path += '[' + std::to_string(index) + ']'; }

/// Watches a text being read for keys that an object has already: the parser would keep the last value alone. Knows the
/// place of a number that the parser refuses, too.
class DuplicateKeys {
 public:
  explicit DuplicateKeys(const KXString& source) : m_source(source) {}

  void Take(Json::parse_event_t event, const Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        CountElement();
        m_levels.push_back({.m_bArray = event == Json::parse_event_t::array_start, .m_key = {}, .m_keys = {}});
        break;
      case Json::parse_event_t::object_end:
      case Json::parse_event_t::array_end:
        m_levels.pop_back();
        break;
      case Json::parse_event_t::key:
        m_levels.back().m_key = parsed.get_ref<const std::string&>();
        if (!m_levels.back().m_keys.insert(m_levels.back().m_key).second) {
          RaiseAt(m_source, GetPath(), L"the key stands here twice");
        }
        break;
      case Json::parse_event_t::value:
        CountElement();
        break;
    }
  }

  /// Of the value that comes next.
  std::string GetPathOfNext() {
    CountElement();
    return GetPath();
  }

 private:
  struct Level {
    bool m_bArray = false;
    std::size_t m_numElements = 0;
    std::string m_key;
    std::set<std::string> m_keys;
  };

  void CountElement() {
    if (!m_levels.empty()) ++m_levels.back().m_numElements;
  }

  std::string GetPath() const {
    std::string path;
    for (const Level& level : m_levels) {
      if (level.m_bArray) {
        AppendIndex(path, level.m_numElements - 1);
      } else {
        AppendKey(path, level.m_key);
      }
    }
    return path;
  }

  const KXString& m_source;
  std::vector<Level> m_levels;
};

/// "line 3, column 7" of the byte, counted from 1, columns in characters.
std::string PlaceOf(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const std::size_t lineStart = before.rfind('\n') + 1;  // npos becomes 0
  const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  return "line " + std::to_string(std::ranges::count(before, '\n') + 1) + ", column " +
         std::to_string(std::ranges::count_if(before.substr(lineStart), isFirstByte) + 1);
}

/// The parser's message without its number and its own place: "[number] parse error at place: cause".
KXString CauseOf(const Json::exception& error) {
  std::string_view message = error.what();
  const auto cutBehind = [&message](std::string_view end, std::size_t start) {
    const std::size_t found = message.find(end, start);
    if (found != message.npos) message.remove_prefix(found + end.size());
  };
  cutBehind("] ", 0);
  if (const std::size_t column = message.find(", column "); column != message.npos) cutBehind(": ", column);
  return Wide(message);
}

}  // namespace

Json ParseJson(std::string_view text, const KXString& source) {
  DuplicateKeys duplicateKeys(source);
  const auto watch = [&duplicateKeys](int, Json::parse_event_t event, const Json& parsed) {
    duplicateKeys.Take(event, parsed);
    return true;
  };
  try {
    return Json::parse(text, watch);
  } catch (const Json::parse_error& error) {
    // The byte is the last one read, counted from 1.
    RaiseAt(source, PlaceOf(text, error.byte == 0 ? 0 : error.byte - 1), CauseOf(error));
  } catch (const Json::out_of_range& error) {  // a number beyond all types
    RaiseAt(source, duplicateKeys.GetPathOfNext(), CauseOf(error));
  }
}

bool JsonCursor::AsBoolean() const {
  if (!m_json.is_boolean()) ThrowUnless(L"true or false");
  return m_json.get<bool>();
}

std::uint32_t JsonCursor::AsUInt32() const {
  // A whole number that is not negative is held unsigned; any other is out of range or no whole number.
  if (!m_json.is_number_unsigned() || m_json.get<std::uint64_t>() > UINT32_MAX) {
    ThrowUnless(L"a whole number from 0 to 4294967295");
  }
  return m_json.get<std::uint32_t>();
}

KXString JsonCursor::AsText() const {
  if (!m_json.is_string()) ThrowUnless(L"text");
  return Wide(m_json.get_ref<const std::string&>());
}

KXString JsonCursor::AsName() const {
  KXString name = AsText();
  if (name.empty()) Throw(L"a name must have characters");
  return name;
}

void JsonCursor::CheckKeys(std::initializer_list<const char*> keys) const {
  ForEachMember([&keys](const std::string& key, const JsonCursor& member) {
    if (std::ranges::find(keys, key) != keys.end()) return;
    KXStringVector names;
    for (const char* const pKey : keys) names.push_back(Wide(pKey));
    member.Throw(L"no such key" + DidYouMean(Wide(key), names));
  });
}

bool JsonCursor::Has(const char* pKey) const { return m_json.contains(pKey); }

void JsonCursor::Throw(const KXString& cause) const { throw ModelFault{GetPath(), cause}; }

void JsonCursor::Report(const KXString& cause) const { m_faults.Add({GetPath(), cause}); }

void JsonCursor::ReportMissing(const char* pKey) const {
  Report(KXString(L"the key ").append(Wide(pKey)).append(L" is missing"));
}

std::string JsonCursor::GetPath() const {
  std::string path = m_pParent ? m_pParent->GetPath() : std::string();
  if (m_index != kNoIndex) {
    AppendIndex(path, m_index);
  } else if (m_pParent) {
    AppendKey(path, m_key);
  }
  return path;
}

void JsonCursor::ThrowUnless(const KXString& expected) const {
  constexpr std::size_t kMaxShown = 40;
  std::string found = m_json.is_structured() ? std::string(m_json.type_name())
                                             : m_json.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (found.size() > kMaxShown) found = m_json.type_name();
  Throw(expected + L" must stand here, not " + Wide(found));
}
