// Database is the package database under one root: the entries of /var/log/packages, and the
// files that each entry has in the directories under /var/log, all named by its full name.
// zet's dependency store and removal, queryzet, and getzet read installed packages through it.
//
// It spells paths one of two ways. zet joins the root, "/", the directory, "/" and the name,
// and keeps the doubled slashes that gives: "///var/log/packages/foo-1.2-i486-1" under "/".
// queryzet shows paths as a user writes them: "/var/log/packages/foo-1.2-i486-1", and
// "/mnt/var/log/packages/foo-1.2-i486-1" under "/mnt/".
#ifndef ZET_DATABASE_H
#define ZET_DATABASE_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "filelist.h"
#include "packagerecord.h"
#include "textvector.h"

// The database of one root, read on demand; nothing is cached but the listing of load() and
// the installed packages sorted out of it.
class Database {
 public:
  // The database as zet names its files under the installation root `root`.
  static Database ofRoot(const std::string& root);
  // The database under `root` with paths as a user writes them: "" and "/" are the running
  // system, and trailing slashes of `root` are dropped.
  static Database asShown(const std::string& root);

  // Lists /var/log/packages; false when it cannot be read, and the listing is then whatever
  // the file system listed last, as zet has always taken it.
  bool load();
  // The listing that load() took, in directory order, "." and ".." included.
  const TextVector& listing() const { return entries; }
  // The full names of the installed packages, in byte order: the entries of the listing that
  // are full package names and no directories, other than those beginning with a ".".
  const std::vector<std::string>& installed() const;
  // The installed packages whose short name is `name`, in byte order.
  std::vector<std::string> withShortName(const std::string& name) const;
  // The short name of each entry of installed().
  const std::vector<std::string>& shortNames() const;

  // `path`, which begins with "/", under the root.
  std::string under(const std::string& path) const { return base + path; }
  // The file of the entry `fullName` in the database directory `directory`, such as
  // zet::DEPS_DIR, under the root.
  std::string path(const char* directory, const std::string& fullName) const;
  // The same file relative to the root, as the file system's operations under the root take it.
  static std::string entry(const char* directory, const std::string& fullName);

  // The entry's dependency lines as an install wrote them: blanks, tabs and empty lines dropped.
  std::vector<std::string> deps(const std::string& fullName) const;
  // The first build line, blanks and tabs dropped; empty when there is none.
  std::string buildStamp(const std::string& fullName) const;
  // The description lines of an entry's record in `language`, else in the default language,
  // as an install shows them; none when the record has neither.
  static std::vector<std::string> description(const PackageRecord& record,
                                              const std::string& language);
  // The links that the entry's stored doinst script names; none without a script.
  FileList links(const std::string& fullName) const;

 private:
  Database(std::string base, std::string packagesListing)
      : base(std::move(base)), packagesListing(std::move(packagesListing)) {}

  // Whether the listed entry `entry` is the record of an installed package.
  bool isRecordName(const std::string& entry) const;
  // The installed packages' full names in byte order, then their short names.
  struct Records {
    std::vector<std::string> fullNames;
    std::vector<std::string> names;
  };
  // Sorts the records out of the listing on first use: zet's own reads need only the listing.
  const Records& records() const;

  // What stands in front of a database directory in each of its paths.
  std::string base;
  std::string packagesListing;
  TextVector entries;
  mutable std::optional<Records> sorted;
};

#endif
