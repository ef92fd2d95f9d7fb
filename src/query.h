// Query answers the questions of queryzet about the packages installed under one root. It reads
// the database the way the rest of zet reads it (records, stored doinst scripts, build and deps
// files, each keyed by the full name under /var/log) and changes nothing on the disk.
//
// Paths come in two forms. A record line or a doinst link is relative to the root, as
// "usr/bin/foo" or, for a directory, "usr/bin/"; what a user asks about and what the answers
// give is that text under the root, as "/mnt/usr/bin/foo" for the root "/mnt".
#ifndef ZET_QUERY_H
#define ZET_QUERY_H

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "database.h"
#include "package.h"

// The database of one root, asked question by question. It prints nothing: answers come back
// as values or through visitors, and whatever could not be read goes to the problem visitor,
// after which the answer goes on without it.
class Query {
 public:
  // Something that the answer needed and could not read; its path is under the root.
  struct Problem {
    enum Kind { Unreadable, NoFileList, CannotCheck } kind;
    std::string path;
  };
  // What the database holds about one package.
  struct Info {
    std::string fullName;
    std::string name;
    std::string version;
    std::string architecture;
    std::string build;
    uint32_t compressedSizeK = 0;
    uint32_t uncompressedSizeK = 0;
    std::string location;
    std::string buildStamp;
    std::vector<std::string> deps;
    std::vector<std::string> scripts;
    size_t files = 0;
    size_t links = 0;
    std::vector<std::string> description;
  };
  // A package that lists an asked path, and the path as the package names it, under the root.
  struct Owner {
    std::string fullName;
    std::string path;
    bool operator<(const Owner& other) const;
    bool operator==(const Owner& other) const;
  };
  // A dependency line and the installed packages of that short name.
  struct Dependency {
    std::string name;
    std::vector<std::string> providers;
  };
  using ProblemVisitor = std::function<void(const Problem&)>;
  using PathVisitor = std::function<void(const std::string& path)>;

  // `root` as --root gives it; `language` picks the description that info() returns.
  Query(const std::string& root, const std::string& language, ProblemVisitor problem);

  // Reads the list of installed packages; false when the database directory cannot be read.
  bool open();
  // The full names of the installed packages, in byte order.
  const std::vector<std::string>& installed() const { return database.installed(); }
  // `path`, which begins with "/", under the root.
  std::string underRoot(const std::string& path) const { return database.under(path); }

  // The packages that a short name, a full name or a package file name or path stands for:
  // the entry of that full name, else every entry of that short name. Names are compared whole.
  std::vector<std::string> find(const std::string& name) const;
  // The packages whose full or short name matches the shell pattern.
  std::vector<std::string> match(const std::string& pattern) const;
  // Nothing when the record cannot be read.
  std::optional<Info> info(const std::string& fullName) const;
  // Each path of the record, in its order, then each link of the stored doinst script.
  void files(const std::string& fullName, const PathVisitor& visit) const;
  // The same answers for a package file that zet's loader has read, before it is installed:
  // its paths as they would lie under the root, and its dependencies among the installed.
  static Info info(const Package& package);
  void files(const Package& package, const PathVisitor& visit) const;
  std::vector<Dependency> depends(const Package& package) const;

  // The owners of each asked path, in the order of `paths`, each list by full name: of the
  // path as written and of the path as the system finds it (see resolve()). Every record and
  // every stored script is read once, whatever the number of paths.
  std::vector<std::vector<Owner>> owners(const std::vector<std::string>& paths) const;
  // Each path of files() that is not there; a link counts as itself, not as its target.
  void verify(const std::string& fullName, const PathVisitor& missing) const;
  std::vector<Dependency> depends(const std::string& fullName) const;
  // The short names that a removal of `fullName` is refused for: its dependents through every
  // level, each once, in byte order.
  std::vector<std::string> rdepends(const std::string& fullName) const;

  // The installed packages whose short name no dependency line of an installed package of
  // another short name names, in byte order.
  std::vector<std::string> orphans() const;
  // The files and links below the directories `directories` (asked paths, each followed
  // whole) that no package lists as a file, a directory or a link, each once under the root,
  // in byte order; paths are compared as they stand. A directory that cannot be read goes to
  // the problem visitor. Every record and every stored script is read once.
  std::vector<std::string> unowned(const std::vector<std::string>& directories) const;

  // An asked path as a record would list it: no leading, doubled or trailing "/".
  static std::string recordPath(const std::string& path);
  // An asked path from the root: a relative one is taken from the working directory, counted
  // from the root when it lies below it.
  std::string fromRoot(const std::string& path) const;
  // The path of fromRoot() as the system finds it under the root, in the form of recordPath():
  // each directory on the way that is a symbolic link is replaced by its target, read under
  // the root, and "." and ".." are followed; the last part stays, a link being a path itself.
  // With `followLast` the last part is followed too, as a directory is when it is opened.
  std::string resolve(const std::string& path, bool followLast = false) const;

 private:
  // Hands `visit` each line of the record's file list; tells the problem visitor of a record
  // that cannot be read or lists no files.
  void listRecord(const std::string& fullName,
                  const std::function<void(std::string_view)>& visit) const;
  // Each dependency line with the installed packages of that short name.
  std::vector<Dependency> providersOf(const std::vector<std::string>& names) const;
  // What a full name tells: its name, version, architecture and build.
  static Info named(const std::string& fullName);
  // Hands `visit` each path under the root, in one buffer, of the entries that `entries`
  // hands its visitor.
  void underRoot(const std::function<void(const std::function<void(std::string_view)>&)>& entries,
                 const PathVisitor& visit) const;
  // Adds the relative path of each file and link below the directory `directory`, relative
  // to the root, to `found`, without following links.
  void walk(const std::string& directory, std::set<std::string>& found) const;
  // A link as the reader of doinst lines gives it, as a path relative to the root.
  static std::string_view linkPath(std::string_view link);
  // Each record line, then each link, of one package, as paths relative to the root.
  void forEachEntry(const std::string& fullName,
                    const std::function<void(std::string_view)>& visit) const;

  Database database;
  std::string language;
  ProblemVisitor problem;
};

#endif
