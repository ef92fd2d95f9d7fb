// The index of a repository, the file INDEX: UTF-8 text in stanzas separated by blank lines,
// "Key: value" a line. The first stanza names the format, the serial and the date, then one
// stanza per package. Reading checks every stanza a client will act on and refuses an index
// that names a file outside the repository's directory or leaves a package unchecked.
#ifndef ZET_REPOINDEX_H
#define ZET_REPOINDEX_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// One package that a repository offers.
struct IndexEntry {
  std::string name;
  std::string file;
  uint64_t size = 0;
  std::string sha256;
  std::string build;
  std::vector<std::string> deps;
  std::string description;

  // The file name without ".tgz".
  std::string fullName() const;
};

// The whole index, and its reading and writing.
class RepoIndex {
 public:
  // What makes an index unusable, with the line where it was found.
  enum Problem {
    NoFormat,      // the first stanza does not name the format that this reader knows
    BadSerial,     // Serial: or Date: is missing or not a number
    BadLine,       // a line that is not "Key: value"
    BadFile,       // File: is missing or not a plain package file name
    NameMismatch,  // Name: is missing or not the short name of File:
    NoSize,        // Size: is missing or not a number
    NoChecksum,    // SHA256: is missing or not 64 hex digits
    BadWord,       // Build: or a word of Deps: that a shell would not pass on as it stands
  };
  struct Finding {
    Problem problem = NoFormat;
    unsigned line = 0;
    std::string detail;
  };

  uint64_t serial = 0;
  uint64_t date = 0;
  std::vector<IndexEntry> entries;

  // Reads the whole text; on a problem gives nothing and tells the first one in `finding`.
  static std::optional<RepoIndex> read(const std::string& text, Finding& finding);
  // The text of the index, stanzas in the order of `entries`.
  std::string text() const;

  // A package file name with nothing else: NAME-VERSION-ARCH-BUILD.tgz, no directory, no
  // leading dot or dash, no blank and no character that the shell reads.
  static bool plainPackageFile(const std::string& file);
};

#endif
