// Package is one package: its identity, file list, scripts, descriptions, dependency and
// build lines and sizes. It is filled from exactly one of two sources, a .tgz file or the
// database under /var/log.
#ifndef ZET_PACKAGE_H
#define ZET_PACKAGE_H

#include <cstdint>
#include <map>
#include <string>

#include "filelist.h"
#include "scriptrunner.h"
#include "textvector.h"

class PackageRecord;

// Why the last load of a Package failed. Value 1 is not used.
enum PackageError : int32_t {
  LoadExtractFailed = 0,
  LoadRecordUnreadable = 2,
  LoadListFailed = 3,
  LoadBadName = 4,
  LoadNoFile = 5,
  LoadSizeInfoBad = 6,
  LoadNotInstalled = 7,
  LoadIncomplete = 8,
};

// One package and what the program knows of it.
class Package {
 public:
  Package();

  // Empties everything but `lastError` and `warnOnly`, and reads "LANG" into `language`.
  // An unset "LANG" ends the program here, although main picks "C" for its language file.
  void reset();

  // Fills the package from a .tgz without touching the installed system.
  bool loadFromFile(const std::string& path);
  // Finds an installed package by short name, full name, .tgz name or path.
  bool loadFromDatabase(std::string nameOrFile);

  // Puts a package loaded from its file onto the system: preinst, the record, the unpacking
  // over the root, doinst and postinst, and the stored scripts, build and deps. With
  // `warnOnly` it only lists the links and files that would be replaced.
  void install();
  // Takes a package loaded from the database off the system: postinst, its links, its files
  // deepest first and its database entries, sparing what another package lists. With
  // `warnOnly` it only lists what would go.
  void remove();
  // Copies the installed package as it stands on disk into a tree of its own under
  // /var/log/setup/tmp/preserved_packages.
  void preserve();

  // Those of `links` that the stored doinst script of another installed package names too.
  static TextVector symlinksInOtherPackages(const TextVector& links, const std::string& fullName,
                                            const std::string& root);
  static void removeSymlinks(const TextVector& links, const TextVector& shared,
                             const std::string& root);
  static void removeFiles(const TextVector& files, const TextVector& shared,
                          const std::string& root);
  void warnInstallSymlinks();
  void warnInstallOverwrites();
  void warnRemove();

  // A copy of the description in `language`; with `stripPrefix` each line loses its
  // leading "name:".
  TextVector descriptionLines(bool stripPrefix) const;
  // Identity of the object, not of the name.
  bool operator==(const Package& other) const { return this == &other; }

  // The lines that begin with `name` and ":".
  static TextFile filterDescription(const TextVector& lines, const std::string& name);
  // Copies every description of the record over ours.
  void takeDescriptions(const PackageRecord& record);
  // Copies every description of ours into the record.
  void fillRecord(PackageRecord& record) const;

  int32_t lastError;
  bool warnOnly;
  FileList files;
  std::map<std::string, TextFile> descriptions;
  ScriptRunner preinstScript;
  ScriptRunner doinstScript;
  ScriptRunner postinstScript;
  TextFile deps;
  TextFile buildInfo;
  std::string name;
  std::string fullName;
  std::string location;
  std::string language;
  uint32_t compressedSizeK;
  uint32_t uncompressedSizeK;
  bool fromFile;
  bool fromDatabase;
};

#endif
