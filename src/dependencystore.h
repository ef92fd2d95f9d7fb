#ifndef ZET_DEPENDENCYSTORE_H
#define ZET_DEPENDENCYSTORE_H

#include <string>
#include <utility>

#include "database.h"
#include "textvector.h"

// Answers the questions about the installed set as a whole: which dependencies nothing
// provides, which installed packages depend on a set, where a package's record lies, and
// which files of a package another package lists too. Made, used and dropped on the spot;
// it reads the disk on every question and keeps no cache.
class DependencyStore {
 public:
  enum ResolveMode { ResolveMissing = 0, ResolveDependents = 1 };

  // The database under the file system's root, as zet names it.
  DependencyStore();
  explicit DependencyStore(Database database) : database(std::move(database)) {}

  // Lists /var/log/packages under the root, "." and ".." included.
  void loadInstalled() { database.load(); }
  void addIncoming(const char* name) { incoming.push_back(name); }
  void addOutgoing(const char* name) { outgoing.push_back(name); }
  // Appends unless already there.
  void addRequired(const char* name);
  void clearIncoming() { incoming.clear(); }
  void clearRequired() { required.clear(); }
  void clearOutgoing() { outgoing.clear(); }

  // ResolveMissing: the required names that nothing installed or incoming provides, in the
  // order of `required`. ResolveDependents: the short names of dependents(), each once. Any
  // other mode: empty.
  TextVector resolve(int mode);
  // The entries of the deps directory, in directory order, whose lines name an outgoing
  // package, other than the outgoing packages' own: what a removal counts as depending on
  // them. Lines are compared as they stand.
  TextVector dependents() const;
  // `names` followed by the short names of what depends on them through every level, each
  // found once: what a removal of `names` would leave without what they need.
  TextVector withDependents(TextVector names);
  static void eraseAt(TextVector& vector, int index);
  // Those of `files`, in their order, that the record of another installed package lists.
  TextVector sharedFiles(TextVector files, const char* ownName);
  // "/" "/var/log/packages" "/" and the first entry equal to `name` or whose short name is
  // `name`; empty when none. The root is not included.
  std::string installedPath(const char* name);
  bool isInstalled(const char* name) { return !installedPath(name).empty(); }
  // The first entry whose short name is `name`; empty when none.
  std::string fullNameOf(const std::string& name);

 private:
  Database database;
  TextVector incoming;
  TextVector required;
  TextVector outgoing;
};

#endif
