#ifndef ZET_PACKAGEGROUP_H
#define ZET_PACKAGEGROUP_H

#include <list>
#include <string>

#include "tagfile.h"
#include "textvector.h"

class Package;

// The packages of one run, in command-line order, and the choices of the command line that
// concern them. It points at the packages and does not own them: they live to the exit.
class PackageGroup {
 public:
  enum OperationType : int {
    OperationInstall = 0,
    OperationRemove = 1,
    OperationUpgrade = 2,
    OperationNone = 3,
  };

  // The package operated on, and for an upgrade the new package from its file.
  struct Entry {
    Package* first;
    Package* second;
  };

  PackageGroup& add(Package* package) { return add(package, nullptr); }
  PackageGroup& add(Package* first, Package* second);
  // Erases the first entry whose `first` is this very object; names are not compared.
  PackageGroup& remove(Package* package);
  // Replaces the tag table with the file's; false when it cannot be read.
  bool loadTagFile(const std::string& path);

  // The dependency verdict before anything is touched: for install and upgrade the names
  // that nothing provides, for removal the installed packages that depend on the group,
  // directly or through others. `flag` has no effect.
  TextVector checkDeps(OperationType operation, bool flag);
  // Carries out the operation on each entry in order, deciding and reporting; ends the run
  // itself on "quit" and on a refused upgrade.
  void proceed(OperationType operation);
  // A DDMMYYYY build stamp as the number YYYYMMDD, so that later dates are greater.
  static int buildNumber(const char* stamp);

  std::list<Entry> packages;
  bool infobox = false;
  bool ask = false;
  bool menu = false;
  bool warn = false;
  bool preserve = false;
  bool installNew = false;
  bool reinstall = false;
  bool force = false;
  bool withDeps = false;
  TagFile tagFile;
  // TagNone leaves the tag of each package to the tag file.
  int priority = TagNone;
};

#endif
