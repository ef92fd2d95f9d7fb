// PackageName splits a package's base name such as foo-bar-1.2-i486-1 into short name,
// version, architecture and build. The short name is what dependency files and tag files
// speak in; the database keys everything by the full name.
#ifndef ZET_PACKAGENAME_H
#define ZET_PACKAGENAME_H

#include <string>

// The parts of a package base name; only `name` is read by the rest of the program.
class PackageName {
 public:
  // Splits `text` on dashes; false, with all fields empty, below four parts.
  bool parse(const std::string& text);
  void clear();
  // A token that starts with a digit and holds a ".".
  static bool isVersion(const std::string& token);

  std::string name;
  std::string version;
  std::string build;
  std::string architecture;
};

// The short name of a full name, or the empty string when it does not parse.
std::string shortNameOf(const std::string& fullName);

#endif
