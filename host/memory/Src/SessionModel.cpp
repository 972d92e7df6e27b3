#include "SessionModel.h"

#include <memory>
#include <utility>

#include "Host/ErrorMessage.h"
#include "Host/GlobalRpVariables.h"

namespace {

constexpr const wchar_t* kValueExpected =
    L"text, a number, true, false, null, an array of texts or an object with one of the keys date, time, timestamp and "
    L"number";

/// What a text is read as, which is the only member of an object.
template <class Value>
MemoryValue ReadTextAs(const JsonCursor& cursor, const wchar_t* pExpected) {
  Value value;
  if (!Value::FromString(cursor.AsText(), value)) cursor.ThrowUnless(pExpected);
  return value;
}

MemoryValue ReadExactNumber(const JsonCursor& cursor) {
  try {
    return PropertyValueString(cursor.AsText()).ToNumberValue();
  } catch (const ErrorMessage&) {
    cursor.ThrowUnless(L"the digits of a number, as in 12.50,");
  }
}

/// {"date": "2024-02-29"} and the like.
MemoryValue ReadTypedValue(const JsonCursor& cursor) {
  MemoryValue value = nullptr;
  if (cursor.GetJson().size() != 1) cursor.ThrowUnless(kValueExpected);
  cursor.CheckKeys({"date", "time", "timestamp", "number"});
  cursor.Member("date", [&](const JsonCursor& text) { value = ReadTextAs<KXDate>(text, L"a date as in 2024-02-29"); });
  cursor.Member("time", [&](const JsonCursor& text) { value = ReadTextAs<KXTime>(text, L"a time as in 18:30:00"); });
  cursor.Member("timestamp", [&](const JsonCursor& text) {
    value = ReadTextAs<KXDateTime>(text, L"a timestamp as in 2024-02-29 18:30:00");
  });
  cursor.Member("number", [&](const JsonCursor& text) { value = ReadExactNumber(text); });
  return value;
}

MemoryValue ReadTexts(const JsonCursor& cursor) {
  KXStringVector texts;
  cursor.ForEachElement([&texts](const JsonCursor& element) { texts.push_back(element.AsText()); });
  return texts;
}

/// A value of a variable or property.
MemoryValue ReadValue(const JsonCursor& cursor) {
  const Json& json = cursor.GetJson();
  if (json.is_null()) return nullptr;
  if (json.is_boolean()) return json.get<bool>();
  if (json.is_string()) return cursor.AsText();
  if (json.is_array()) return ReadTexts(cursor);
  if (json.is_object()) return ReadTypedValue(cursor);
  if (json.is_number_float()) return json.get<double>();
  const auto integer = json.get<std::int64_t>();
  const bool bTooLarge = json.is_number_unsigned() && json.get<std::uint64_t>() > INT32_MAX;
  if (bTooLarge || integer < INT32_MIN) {
    cursor.Throw(L"a whole number beyond 32 bits is written {\"number\": \"...\"}");
  }
  return static_cast<int>(integer);
}

/// Functions over the gateway are copied, values are not.
std::shared_ptr<MemoryValue> ReadSharedValue(const JsonCursor& cursor) {
  return std::make_shared<MemoryValue>(ReadValue(cursor));
}

}  // namespace

void SessionModel::ReadVariables(const JsonCursor& document) {
  document.Member("variables", [this](const JsonCursor& variables) {
    variables.ForEachElement([this](const JsonCursor& variable) { ReadRepositoryVariable(variable); });
  });
  document.Member("session", [this](const JsonCursor& session) {
    session.CheckKeys({"offline", "properties", "variables", "securityVariables", "inactiveSchemas"});
    session.Member("variables", [this](const JsonCursor& variables) {
      variables.ForEachElement([this](const JsonCursor& variable) { ReadSessionVariable(variable); });
    });
  });
}

void SessionModel::Read(const JsonCursor& document) {
  document.Member("repository", [this](const JsonCursor& repository) {
    repository.CheckKeys({"uniqueID"});
    repository.Member("uniqueID", [this](const JsonCursor& cursor) {
      m_objects.AtHandOver([id = cursor.AsUInt32()](MemoryGateway& gateway) { gateway.SetRepositoryUniqueID32(id); });
    });
  });
  document.Member("session", [this](const JsonCursor& session) { ReadSession(session); });
  document.Member("request", [this](const JsonCursor& request) { ReadRequest(request); });
}

void SessionModel::ReadRepositoryVariable(const JsonCursor& variable) {
  variable.CheckKeys({"name", "value"});
  KXString name;
  variable.RequiredMember(
      "name", [&](const JsonCursor& cursor) { name = m_objects.NewName(cursor, VoidID::NullID, kTIDARpVariable); });
  KXString value;
  variable.RequiredMember("value", [&](const JsonCursor& cursor) { value = cursor.AsName(); });
  if (!name.empty()) m_objects.Make<MemoryRpVariable>(name, VoidID::NullID, false).SetValueText(value);
}

void SessionModel::ReadSessionVariable(const JsonCursor& variable) {
  variable.CheckKeys({"name", "block", "value", "security"});
  KXString block = kDefaultBlock;
  variable.Member("block", [&](const JsonCursor& cursor) { block = cursor.AsName(); });
  KXString name;
  variable.RequiredMember("name", [&](const JsonCursor& cursor) {
    name = cursor.AsName();
    // Under the wildcard block a variable is known by its name alone.
    if (m_objects.GetNames().FindVariable({name})) {
      name.clear();
      cursor.Throw(L"there is a variable of this name already");
    }
  });
  std::shared_ptr<MemoryValue> pValue;
  variable.Member("value", [&](const JsonCursor& cursor) { pValue = ReadSharedValue(cursor); });
  if (name.empty()) return;
  auto& made = m_objects.Make<MemoryRpVariable>(name, BlockOf(block), true);
  variable.Member("security", [&](const JsonCursor& cursor) { made.SetSecurityVariable(cursor.AsBoolean()); });
  if (!pValue) return;  // has no value until the session gives it one
  m_objects.AtHandOver([=](MemoryGateway& gateway) {
    std::unique_ptr<PropertyValue> pOwned = pValue->Release();
    const auto copy = [&pOwned] { return pOwned ? MemoryValue(*pOwned) : MemoryValue(nullptr); };
    gateway.SetSessionVariable(GlobalRpVariables::global_SessionBlockWildcard, name, copy());
    gateway.SetSessionVariable(block, name, copy());
  });
}

VoidID SessionModel::BlockOf(const KXString& name) {
  const VoidID found = m_objects.GetNames().GetIn(VoidID::NullID, kTIDASessionVariableBlock, name);
  return found.IsNullID() ? m_objects.Make<MemorySessionVariableBlock>(name).GetID() : found;
}

void SessionModel::ReadSession(const JsonCursor& session) {
  session.Member("offline", [this](const JsonCursor& cursor) {
    m_objects.AtHandOver([bOffline = cursor.AsBoolean()](MemoryGateway& gateway) { gateway.SetOfflineMode(bOffline); });
  });
  session.Member("properties", [this](const JsonCursor& properties) {
    properties.ForEachMember([this](const std::string& key, const JsonCursor& value) {
      m_objects.AtHandOver([name = KXString::FromUTF8(key), pValue = ReadSharedValue(value)](MemoryGateway& gateway) {
        gateway.SetSessionProperty(name, std::move(*pValue));
      });
    });
  });
  session.Member("securityVariables", [this](const JsonCursor& names) {
    KXStringVector found;
    const auto refer = [this](const JsonCursor& name) {
      const VoidID id = m_objects.Refer(name, kTIDARpVariable);
      if (!m_objects.Get<ARpVariable>(id).IsSessionVariable()) name.Throw(L"a variable of the session must stand here");
      return id;
    };
    ReadReferences(names, refer, [&](const VoidID& id) { found.push_back(m_objects.GetNames().GetName(id)); });
    m_objects.AtHandOver([found](MemoryGateway& gateway) { gateway.SetSecurityVariableNames(found); });
  });
  session.Member("inactiveSchemas", [this](const JsonCursor& schemas) {
    VoidIDSet found;
    ReadReferences(
        schemas, [this](const JsonCursor& schema) { return m_objects.Refer(schema, kTIDASchema); },
        [&](const VoidID& id) { found.insert(id); });
    m_objects.AtHandOver([found](MemoryGateway& gateway) { gateway.SetInactiveSchemas(found); });
  });
}

void SessionModel::ReadRequest(const JsonCursor& request) {
  request.CheckKeys({"properties", "blocks"});
  const auto readBlock = [this](const KXString& block, const JsonCursor& properties) {
    properties.ForEachMember([&](const std::string& key, const JsonCursor& value) {
      m_objects.AtHandOver([property = KXStringPair(block, KXString::FromUTF8(key)), pValue = ReadSharedValue(value)](
                               MemoryGateway& gateway) { gateway.SetRequestProperty(property, std::move(*pValue)); });
    });
  };
  request.Member("properties", [&](const JsonCursor& properties) {
    readBlock(GlobalRpVariables::global_SessionBlockWildcard, properties);
  });
  request.Member("blocks", [&](const JsonCursor& blocks) {
    blocks.ForEachMember(
        [&](const std::string& key, const JsonCursor& properties) { readBlock(KXString::FromUTF8(key), properties); });
  });
}
