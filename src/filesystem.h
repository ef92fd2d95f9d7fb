// FileSystem turns the paths of packages into paths of the running system. Each operation
// with an `underRoot` flag forms its real path by one of two rules, and the rule for false
// differs between them on purpose:
//
//   exists, list, remove, removeTree:  true: root + "/" + path   false: path as it stands
//   makeDir, makePath, copy:           true: root + "/" + path   false: "/" + path
//
// Nothing is normalised, so doubled slashes stay. The object also is the list that its last
// list() (or removeTree()) filled, which callers read through entries().
#ifndef ZET_FILESYSTEM_H
#define ZET_FILESYSTEM_H

#include <string>
#include <vector>

#include "filelist.h"

// The process-wide view of paths under the installation root ("/" unless moved).
class FileSystem : public FileList {
 public:
  static FileSystem& instance();

  void setRoot(const std::string& path) { root = path; }
  std::string getRoot() const { return root; }

  // The path opens for reading: true for directories, false for dangling links.
  bool exists(const std::string& path, bool underRoot) const;
  // opendir of the literal path succeeds; follows links.
  static bool isDirectory(const std::string& path);
  // rmdir for a directory, unlink otherwise: 0 on success, -1 on failure.
  int remove(const std::string& path, bool underRoot) const;
  // Removes a tree depth first; a link goes itself, and what it points to stays. Reports
  // nothing.
  void removeTree(const std::string& path, bool underRoot);
  // Reads one directory, "." and ".." included, into the list. False keeps the old list.
  bool list(const std::string& path, bool underRoot);
  TextVector& entries() { return *this; }
  // Copies one file with mode and owner; false only when a file could not be opened or
  // `overwrite` is false and the destination exists under the root.
  bool copy(const std::string& destination, const std::string& source, bool overwrite,
            bool underRoot) const;
  // mkdir with mode 0755; false when it fails, an existing directory included.
  bool makeDir(const std::string& path, bool underRoot) const;
  // Makes the path and all its parents; always true.
  bool makePath(const std::string& path, bool underRoot) const;

  // The file `name` in the database directory `directory` (such as /var/log/packages), as
  // the operations under the root take it: directory "/" name.
  static std::string databaseEntry(const char* directory, const std::string& name);
  // The same file under `root`, for reading and writing it directly: root "/" directory "/"
  // name, which gives "///var/log/packages/NAME" with the root "/".
  static std::string databasePath(const std::string& root, const char* directory,
                                  const std::string& name);
  // The text behind the last "/"; empty for a trailing slash, `path` itself without one.
  static std::string baseName(const std::string& path);
  // The text before the last dot at index 1 or later; empty when there is none.
  static std::string stripExtension(const std::string& name);

 private:
  FileSystem() = default;
  std::string plainPath(const std::string& path, bool underRoot) const;
  std::string rootedPath(const std::string& path, bool underRoot) const;

  std::string root = "/";
  std::vector<std::string> descent;
};

#endif
