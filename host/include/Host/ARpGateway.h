#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>

#include "Host/KXString.h"
#include "Host/PropertyValue.h"
#include "Host/RpObjects.h"
#include "Host/VoidID.h"

/// The way from one request to the repository and to its session: properties, variables and metadata objects.
///
/// A gateway belongs to the thread that owns the request; none of its operations may be called from another one. It
/// outlives all handles on its objects.
///
/// A request property has a block and a name; an operation that takes a name alone means the property of that name in
/// the block GlobalRpVariables::global_SessionBlockWildcard. A request sees the variables of its session as properties
/// of their block and name, except where it sets a property of that block and name itself, which then hides the
/// variable for this request. Names of properties and variables are compared letter by letter.
///
/// A property that has a value, but none of the type asked for, raises ErrorMessage kMsgPropertyOfWrongType. A boolean
/// is a number, true if not zero, or text: "true" or "false" in any letter case, or a number.
class ARpGateway {
 public:
  /// The repository ID of what belongs to no repository; as an unsigned number above any real one.
  static constexpr std::uint32_t INVALID_UNIQUE_ID_32 = static_cast<std::uint32_t>(-1);

  enum GatewayType {
    kRpGatewayType_Generic,
    kRpGatewayType_Secure,
    kRpGatewayType_Request,
    kRpGatewayType_LocalClient,
    kRpGatewayType_Proxy,
    kRpGatewayType_Client,
    kRpGatewayType_Persist,
    kRpGatewayType_Memory
  };

  /// Identifies a loaded repository within the process.
  struct RepositoryID {
    std::uint32_t m_id = INVALID_UNIQUE_ID_32;

    friend auto operator<=>(const RepositoryID&, const RepositoryID&) = default;
  };

  ARpGateway() = default;
  ARpGateway(const ARpGateway&) = delete;
  ARpGateway& operator=(const ARpGateway&) = delete;
  virtual ~ARpGateway() = default;

  // Session properties. One that is not there, or has no value, gives the default, or false with the out parameter as
  // it was.
  bool GetBooleanSessionProperty(const KXString& name, bool bDefault);
  bool GetStringSessionProperty(const KXString& name, KXString& value);
  bool GetIntegerSessionProperty(const KXString& name, int& value);

  // Request properties, likewise.
  bool GetBooleanRequestProperty(const KXString& name, bool bDefault);
  bool GetStringRequestProperty(const KXString& name, KXString& value);
  bool GetIntegerRequestProperty(const KXString& name, int& value);

  /// Gives a copy of the property's value, which `owner`, a Heap or unique_ptr of PropertyValue, takes over. The result
  /// tells whether the property is there; one without a value is there and gives null.
  template <class Owner>
  bool GetRequestProperty(const KXStringPair& key, Owner& owner) {
    std::unique_ptr<PropertyValue> pValue;
    if (!FindRequestProperty(key, pValue)) return false;
    if constexpr (requires(PropertyValue * pRaw) { owner = pRaw; }) {
      owner = pValue.release();
    } else {
      owner.reset(pValue.release());
    }
    return true;
  }

  /// A copy of the value of a session variable as this request sees it, which the caller owns; null if it has none.
  PropertyValue* GetSessionVariable(const KXStringPair& key);

  /// Whether the request overrides any database feature: has a property whose name begins with
  /// kDBFeaturePropertyPrefix. Cheap, and asked before each look for one.
  virtual bool ContainDBFeatureRequestProperty() = 0;
  static constexpr const wchar_t* kDBFeaturePropertyPrefix = L"TELM_DBFEATURES_";

  /// Whether there is no live session behind the gateway.
  virtual bool IsOfflineMode() const = 0;
  virtual GatewayType GetGatewayType() const = 0;

  virtual std::uint32_t GetRepositoryUniqueID32() const = 0;
  virtual RepositoryID GetRepositoryID() const = 0;

  /// Whether the identifier names an object that the repository does not hold, made for a time only: its number may
  /// name another object in the next run.
  virtual bool IsExternalARpObject(const VoidID& id) = 0;

  /// A handle on the object; null if there is none.
  RefARpObject GetObject(const VoidID& id) { return RefARpObject(this, id); }
  /// Replaces what `ids` holds by the objects of an interface type, in the order of their identifiers.
  virtual void GetObjectIDs(TypeID interfaceType, VoidIDVector& ids) const = 0;
  /// Lends the object without taking a reference; null if there is none.
  virtual ARpObject* LookupObject(const VoidID& id) = 0;
  // The counting behind handles. An object stays where it is as long as it has a reference.
  virtual void AddObjectRef(const VoidID& id) = 0;
  virtual void ReleaseObjectRef(const VoidID& id) = 0;

  /// Makes gateways on one repository for work outside any request; bReadOnly says that the work changes no metadata.
  using Opener = std::function<std::unique_ptr<ARpGateway>(bool bReadOnly)>;
  /// From now on, OpenRpByID on this repository calls the opener; an empty one takes it off again. Any thread may call
  /// these two, and the opener is called on the thread that opens.
  static void SetOpener(const RepositoryID& id, Opener opener);
  /// A new gateway; null if no repository of that ID is loaded. File and line say in the log who opened it.
  static std::unique_ptr<ARpGateway> OpenRpByID(const RepositoryID& id, const char* file, int line, bool bReadOnly);

 protected:
  /// Gives a copy of the value of a session property. The result tells whether the property is there; the value may be
  /// null even so.
  virtual bool FindSessionProperty(const KXString& name, std::unique_ptr<PropertyValue>& pValue) = 0;
  /// The same for a request property or, failing that, a session variable.
  virtual bool FindRequestProperty(const KXStringPair& key, std::unique_ptr<PropertyValue>& pValue) = 0;
};
