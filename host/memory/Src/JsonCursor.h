#pragma once

#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "Host/KXString.h"

using Json = nlohmann::json;

/// Reads JSON. Raises ErrorMessage kMsgModel with line and column if the text is none, and with the path if an object
/// has two members of one key or a number is beyond all types.
Json ParseJson(std::string_view text, const KXString& source);

/// A value in a JSON document, which it lends, with the way to it from the top. What its content cannot be read as
/// raises ErrorMessage kMsgModel with source and path.
///
/// A cursor to a member or an element refers to the one it was got from, which must outlive it: cursors live on the
/// stack, from the outer to the inner, and the path becomes text only for a message.
class JsonCursor {
 public:
  /// The document itself.
  JsonCursor(const Json& document, const KXString& source) : m_json(document), m_source(source) {}
  JsonCursor(const JsonCursor&) = delete;
  JsonCursor& operator=(const JsonCursor&) = delete;

  bool IsArray() const { return m_json.is_array(); }

  bool AsBoolean() const;
  std::uint32_t AsUInt32() const;
  KXString AsText() const;
  /// Text that has characters.
  KXString AsName() const;

  /// Raises unless this is an object all of whose keys are among the given ones.
  void CheckKeys(std::initializer_list<const char*> keys) const;
  bool Has(const char* pKey) const;
  /// Calls function(cursor) for the member of that key, which must be there.
  template <class Function>
  decltype(auto) Member(const char* pKey, Function function) const {
    return function(JsonCursor(*this, RequiredMember(pKey), pKey));
  }
  /// Calls function(key, cursor) for each member of an object.
  template <class Function>
  void ForEachMember(Function function) const {
    RequireObject();
    for (const auto& [key, value] : m_json.items()) function(key, JsonCursor(*this, value, key));
  }
  /// Calls function(cursor) for each element of an array.
  template <class Function>
  void ForEachElement(Function function) const {
    RequireArray();
    for (std::size_t i = 0; i < m_json.size(); ++i) function(JsonCursor(*this, m_json[i], i));
  }

  /// Raises the message that the value is wrong, and why.
  [[noreturn]] void Raise(const KXString& cause) const;

 private:
  static constexpr std::size_t kNoIndex = static_cast<std::size_t>(-1);

  JsonCursor(const JsonCursor& parent, const Json& json, std::string_view key)
      : m_json(json), m_source(parent.m_source), m_pParent(&parent), m_key(key) {}
  JsonCursor(const JsonCursor& parent, const Json& json, std::size_t index)
      : m_json(json), m_source(parent.m_source), m_pParent(&parent), m_index(index) {}

  std::string GetPath() const;
  [[noreturn]] void RaiseUnless(const wchar_t* pExpected) const;
  void RequireObject() const;
  void RequireArray() const;
  const Json& RequiredMember(const char* pKey) const;

  const Json& m_json;
  const KXString& m_source;
  const JsonCursor* m_pParent = nullptr;
  std::string_view m_key;
  std::size_t m_index = kNoIndex;
};
