#pragma once

#include <map>
#include <string_view>
#include <utility>

#include "Host/KXString.h"
#include "Host/VoidID.h"

class MemoryGateway;

/// What a name was found to mean: an object, or the cause why none is meant.
struct NameLookup {
  VoidID m_id;       ///< Null if no object, or more than one, has the name.
  KXString m_cause;  ///< Then a sentence for the one who wrote the name, with the names that he may have meant.

  explicit operator bool() const { return !m_id.IsNullID(); }
};

/// The objects of a repository by their names, letter case apart. It knows identifiers and names, not the objects: it
/// does not notice what happens to a gateway after it was made.
///
/// A name is given as a path whose end is the object's own name; in front of it may stand those of its containers, as
/// far as someone cares to write them: {"sales"}, {"retail", "sales"} or {"shop", "retail", "sales"}.
class RepositoryNames {
 public:
  RepositoryNames() = default;
  /// Of all objects of the gateway.
  explicit RepositoryNames(MemoryGateway& gateway);

  void Add(const VoidID& id, const VoidID& parentID, const KXString& name);

  /// A logical table or, if there is none of that name, a physical one.
  NameLookup FindTable(const KXStringVector& path) const;
  NameLookup FindLogicalTable(const KXStringVector& path) const;
  NameLookup FindPhysicalTable(const KXStringVector& path) const;
  /// An attribute of a logical table or a column of a physical one.
  NameLookup FindColumn(const VoidID& tableID, const KXString& name) const;
  /// A column of one of these tables, which may be of both sorts, and of no more than one.
  NameLookup FindColumn(const VoidIDVector& tableIDs, const KXString& name) const;
  /// A variable of the repository by its name, one of the session by its block and name, or its name alone.
  NameLookup FindVariable(const KXStringVector& path) const;

  /// An object of an interface type, wherever it stands.
  NameLookup Find(TypeID interfaceType, const KXStringVector& path) const;
  /// An object of an interface type directly in a container; at the top for the null identifier.
  NameLookup FindIn(const VoidID& parentID, TypeID interfaceType, const KXString& name) const;
  /// The same for one who needs no cause.
  VoidID GetIn(const VoidID& parentID, TypeID interfaceType, const KXString& name) const;

  /// The name as the object has it; empty for an unknown one.
  KXString GetName(const VoidID& id) const;
  /// With its containers, as in "shop.retail.sales".
  KXString GetQualifiedName(const VoidID& id) const;

  /// What an interface type is called in messages: "table".
  static KXString GetNoun(TypeID interfaceType);

 private:
  struct Entry {
    VoidID m_parentID;
    KXString m_name;
  };

  /// From the outermost container down.
  KXStringVector GetPath(const VoidID& id) const;
  bool PathEndsWith(const VoidID& id, const KXStringVector& end) const;
  VoidIDVector GetCandidates(TypeID interfaceType, const KXStringVector& path) const;
  void AppendNamesIn(const VoidID& parentID, TypeID interfaceType, KXStringVector& names) const;
  /// Of two objects or more.
  NameLookup Ambiguous(const KXString& what, const VoidIDVector& ids) const;
  NameLookup NoSuch(TypeID interfaceType, const KXStringVector& path) const;

  std::map<VoidID, Entry> m_entries;
  /// By interface type and name in lower case.
  std::map<std::pair<TypeID, KXString>, VoidIDVector> m_idsByName;
  /// By container and interface type.
  std::map<std::pair<VoidID, TypeID>, VoidIDVector> m_idsByParent;
};

/// The parts of a name as SQL writes it: "retail.sales", with a part that is no plain word in double quotes, and quotes
/// inside doubled. Empty if the text is no such name.
KXStringVector SplitQualifiedName(std::wstring_view text);
/// The parts joined by ".", quoted where they must be: the mirror of SplitQualifiedName.
KXString JoinQualifiedName(const KXStringVector& path);
