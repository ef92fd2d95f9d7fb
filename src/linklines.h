// LinkLines holds the symbolic links of a package as lines of its doinst.sh, both ways.
// makezet turns a link of a package tree into the two lines that make it again on install,
// "( cd DIR ; rm -rf NAME )" and "( cd DIR ; ln -sf TARGET NAME )", and checks that such lines
// work; a removal, and queryzet, read the links back from the first kind of line.
#ifndef ZET_LINKLINES_H
#define ZET_LINKLINES_H

#include <string>

#include "filelist.h"
#include "textvector.h"

// The doinst.sh lines of links: written, checked, and read back.
class LinkLines {
 public:
  // The links named by the "( cd DIR ; rm -rf LINK )" lines of a doinst script, as DIR/LINK.
  static FileList read(const TextVector& script);
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
