// makezet's repository verbs: a new key pair, and the index of a directory of packages with
// its signature. Each returns what it ended with; makezet turns that into a message and a status.
#ifndef ZET_REPOMAKER_H
#define ZET_REPOMAKER_H

#include <cstdint>
#include <string>

// The end of a verb: `path` names the file or directory concerned, or for BadIndexEntry what
// the index reader found; IndexWritten gives the serial and the number of entries too.
struct RepoOutcome {
  enum Kind {
    KeysWritten,
    IndexWritten,
    KeyExists,      // PREFIX.pub or PREFIX.key is there already
    CannotWrite,    // a key, the index or its signature
    BadKey,         // the secret key could not be read
    BadOldIndex,    // the index that would be replaced does not read
    CannotRead,     // the directory, or a package in it
    BadName,        // a file that ends in .tgz but is no package file name
    NoTar,          // tar could not be run to read a package's control files
    BadIndexEntry,  // a build stamp or dependency that clients would refuse
  };
  Kind kind;
  std::string path;
  uint64_t serial = 0;
  size_t entries = 0;
};

// The verbs.
class RepoMaker {
 public:
  // PREFIX.pub and PREFIX.key (mode 0600); refuses to replace either.
  static RepoOutcome newKey(const std::string& prefix);
  // DIR/INDEX of every package file in DIR, dated `date`, one serial later than the index it
  // replaces, and with `keyPath` (unless empty) DIR/INDEX.minisig.
  static RepoOutcome index(const std::string& dir, const std::string& keyPath, uint64_t date);
};

#endif
