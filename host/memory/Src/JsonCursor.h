#pragma once

#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "Host/KXString.h"
#include "ModelFaults.h"

using Json = nlohmann::json;

/// Reads JSON. Raises ErrorMessage kMsgModel with line and column if the text is none, and with the path if an object
/// has two members of one key or a number is beyond all types.
Json ParseJson(std::string_view text, const KXString& source);

/// A value in a JSON document, which it lends, with the way to it from the top. What its content cannot be read as
/// throws a ModelFault. The cursor that lends its members and elements to a function collects what the function throws
/// and goes on with the next one.
///
/// A cursor to a member or an element refers to the one it was got from, which must outlive it: cursors live on the
/// stack, from the outer to the inner, and the path becomes text only for a fault.
class JsonCursor {
 public:
  /// The document itself.
  JsonCursor(const Json& document, ModelFaults& faults) : m_json(document), m_faults(faults) {}
  JsonCursor(const JsonCursor&) = delete;
  JsonCursor& operator=(const JsonCursor&) = delete;

  const Json& GetJson() const { return m_json; }
  bool IsArray() const { return m_json.is_array(); }
  bool IsObject() const { return m_json.is_object(); }

  bool AsBoolean() const;
  std::uint32_t AsUInt32() const;
  KXString AsText() const;
  /// Text that has characters.
  KXString AsName() const;

  /// Reports each key that is not among the given ones. Throws unless this is an object.
  void CheckKeys(std::initializer_list<const char*> keys) const;
  bool Has(const char* pKey) const;
  /// Calls function(cursor) for the member of that key, if there is one. Tells whether it was called and threw nothing.
  template <class Function>
  bool Member(const char* pKey, Function function) const {
    const auto found = m_json.find(pKey);
    if (found == m_json.end()) return false;
    return m_faults.Collect([&] { function(JsonCursor(*this, *found, pKey)); });
  }
  /// The same, and reports the member if it is missing.
  template <class Function>
  bool RequiredMember(const char* pKey, Function function) const {
    if (!Has(pKey)) ReportMissing(pKey);
    return Member(pKey, function);
  }
  /// Calls function(key, cursor) for each member of an object. Throws if this is none.
  template <class Function>
  void ForEachMember(Function function) const {
    if (!IsObject()) ThrowUnless(L"an object");
    for (const auto& [key, value] : m_json.items()) {
      m_faults.Collect([&, &key = key, &value = value] { function(key, JsonCursor(*this, value, key)); });
    }
  }
  /// Calls function(cursor) for each element of an array. Throws if this is none.
  template <class Function>
  void ForEachElement(Function function) const {
    if (!IsArray()) ThrowUnless(L"an array");
    for (std::size_t i = 0; i < m_json.size(); ++i) {
      m_faults.Collect([&] { function(JsonCursor(*this, m_json[i], i)); });
    }
  }
  /// The place in its array; only for a cursor that ForEachElement made.
  std::size_t GetIndex() const { return m_index; }

  /// Says that the value is wrong, and why.
  [[noreturn]] void Throw(const KXString& cause) const;
  /// Throws that something else must stand here: "a whole number".
  [[noreturn]] void ThrowUnless(const KXString& expected) const;
  /// The same as Throw for one who can go on with this very value.
  void Report(const KXString& cause) const;

 private:
  static constexpr std::size_t kNoIndex = static_cast<std::size_t>(-1);

  JsonCursor(const JsonCursor& parent, const Json& json, std::string_view key)
      : m_json(json), m_faults(parent.m_faults), m_pParent(&parent), m_key(key) {}
  JsonCursor(const JsonCursor& parent, const Json& json, std::size_t index)
      : m_json(json), m_faults(parent.m_faults), m_pParent(&parent), m_index(index) {}

  std::string GetPath() const;
  void ReportMissing(const char* pKey) const;

  const Json& m_json;
  ModelFaults& m_faults;
  const JsonCursor* m_pParent = nullptr;
  std::string_view m_key;
  std::size_t m_index = kNoIndex;
};
