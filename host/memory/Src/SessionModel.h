#pragma once

#include "ModelObjects.h"

/// Variables, the session and the request: the keys "repository", "variables", "session" and "request".
class SessionModel {
 public:
  /// The block of session variables that say no other.
  static constexpr const wchar_t* kDefaultBlock = L"KX_SESSION";

  explicit SessionModel(ModelObjects& objects) : m_objects(objects) {}

  /// Makes the variables, which anything else may refer to.
  void ReadVariables(const JsonCursor& document);
  /// The rest, which refers to variables and schemas. Faults are reported.
  void Read(const JsonCursor& document);

 private:
  void ReadRepositoryVariable(const JsonCursor& variable);
  void ReadSessionVariable(const JsonCursor& variable);
  VoidID BlockOf(const KXString& name);
  void ReadSession(const JsonCursor& session);
  void ReadRequest(const JsonCursor& request);

  ModelObjects& m_objects;
};
