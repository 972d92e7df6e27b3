#pragma once

#include <string_view>

#include "Host/KXString.h"
#include "Host/RpObjects.h"

class ARpGateway;
class AbstractListQuerySpec;

/// Helpers over metadata objects and variables.
class MetadataUtil {
 public:
  /// Variables of a bundle have names that begin so, in any letter case; what follows is the name within the bundle.
  static constexpr const wchar_t* kVBLBundlePrefix = L"VBL_BUNDLE_";

  /// The names from the outermost container down to the object, each in double quotes and with quotes inside doubled,
  /// joined by ".". Empty for a null handle.
  static KXString GenerateQualifiedName(const RefARpObject& object);

  /// The statement that says a query over the business model.
  static KXString ToSQLStatement(const AbstractListQuerySpec& spec, ARpGateway* pRp);

  /// Whether the variable has a value, as this request sees it.
  static bool IsSessionVariablePopulated(ARpGateway* pRp, const KXStringPair& variable);

  static bool BeginsWithVBLBundlePrefix(std::wstring_view name);
  /// The name without the prefix, which it must begin with.
  static KXString GetStringAfterVBLBundlePrefix(std::wstring_view name);
};
