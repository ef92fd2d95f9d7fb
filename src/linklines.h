// LinkLines turns a symbolic link of a package tree into the two lines of doinst.sh that make
// it again on install, "( cd DIR ; rm -rf NAME )" and "( cd DIR ; ln -sf TARGET NAME )", and
// tells whether such lines work: the shell must run them as written, and a removal must read
// the first one back to the link. makezet uses it.
#ifndef ZET_LINKLINES_H
#define ZET_LINKLINES_H

#include <string>

// The doinst.sh lines of one link, and the checks that they survive both of their readers.
class LinkLines {
 public:
  // The lines of the link `path` (relative to the root, no "./") pointing at `target`, each
  // ending in a line feed. A link at the top of the tree is made from the directory ".".
  static std::string of(const std::string& path, const std::string& target);
  // Whether the lines of `of` run in the shell as written, and come back through the reader
  // of stored scripts as exactly these two lines, the first of which the removal's scan reads
  // as the link's directory, "/" and name.
  static bool usable(const std::string& path, const std::string& target);
  // A word that an unquoted shell command passes on as it stands: not empty, no leading "-",
  // and none of the blanks, line ends, quotes, globs and operators of the shell.
  static bool plainWord(const std::string& word);

  // The directory part of `path`, "." at the top, and the name part.
  static std::string directoryOf(const std::string& path);
  static std::string nameOf(const std::string& path);
};

#endif
