// PackageTree reads a directory laid out as the tree that a package installs, with its control
// files under install/, into the members of the package's archive in their order. On the way it
// checks the tree against what zet can install and remove, and turns each symbolic link into
// lines of doinst.sh. It prints nothing: makezet reports what it found.
//
// The order: "install/" and what lies in it first, then the rest, each sorted byte by byte on
// the member name, in which a directory ends in "/" and so comes ahead of its contents.
#ifndef ZET_PACKAGETREE_H
#define ZET_PACKAGETREE_H

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <vector>

// One member of a package archive: a directory or a file of the tree, at `source` on the disk,
// or one that makezet makes itself, with an empty `source`, the mode `mode` and, for a file,
// the bytes `content`.
struct ArchiveMember {
  std::string name;  // as listed: no "./", and a directory ends in "/"
  bool directory = false;
  unsigned mode = 0;
  std::string source;
  std::string content;
};

// Something in a tree that refuses it as a package, or that its maker should hear of.
struct TreeFinding {
  enum Kind {
    Unreadable,            // a directory or file could not be read (path: as on the disk)
    BlankInPath,           // a path holds a blank, a tab or a line end
    EscapedPath,           // a path holds a byte that tar lists escaped
    PathTooLong,           // a path would not come back as one line of the package's record
    UnsupportedType,       // neither directory, file nor link; or install/ is no directory
    LinkInControlFiles,    // a symbolic link inside install/ or in its place
    LinkUnusable,          // a link whose doinst.sh lines would not work (detail: its target)
    LinkOverSystemPath,    // a link where systems keep a directory, which its lines would delete
    LinkOverOwnDirectory,  // a link line of the tree's doinst.sh at a directory of the tree
    BadDescription,        // a description line without the short name (detail: the line)
    NoDescription,         // warning: there is no install/slack-desc
    SystemLinkDirectory,   // warning: a top-level directory that is a link on many systems
    LinkToDirectory,       // warning: a link to a directory, which a removal cannot take away
  };
  Kind kind;
  std::string path;
  std::string detail;
};

// The members of one package, read from its tree.
class PackageTree {
 public:
  // Reads the tree `dir` of the package whose short name is `shortName`; a `stamp` that is not
  // empty becomes install/build. The file `outputPath`, when the tree holds it, is left out:
  // an earlier build of the same package. Nothing refuses the tree when `problems` is empty;
  // `members` is complete only then.
  static PackageTree read(const std::string& dir, const std::string& shortName,
                          const std::string& stamp, const std::string& outputPath);

  std::vector<ArchiveMember> members;
  std::vector<TreeFinding> problems;
  std::vector<TreeFinding> warnings;

 private:
  // A link of the tree outside install/, relative to the root of the tree.
  struct Link {
    std::string path;
    std::string target;
  };

  void walk(const std::string& relative);
  void addEntry(const std::string& relative);
  bool pathReadsBack(const std::string& name);
  void addLink(const std::string& relative);
  void checkOwnLinkLines();
  void addControlFiles(const std::string& stamp);
  ArchiveMember& controlFile(const std::string& name);
  void checkDescriptions(const std::string& shortName);

  std::string root;
  std::vector<Link> links;
  // The file that the package will be written to, by device and inode: none when it is absent.
  struct stat outputStatus {};
};

#endif
