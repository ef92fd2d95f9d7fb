// makezet's repository verbs: a new key pair, and the index of a directory of packages with
// its signature. Each tells what went wrong through the printers and gives makezet's status.
#ifndef ZET_REPOMAKER_H
#define ZET_REPOMAKER_H

#include <cstdint>
#include <string>

// The verbs, and the statuses they end with: those that makezet gives the same findings.
class RepoMaker {
 public:
  enum Status : int { Done = 0, Refused = 1, ReadFailed = 3, WriteFailed = 4 };

  // PREFIX.pub and PREFIX.key (mode 0600); refuses to replace either.
  static Status newKey(const std::string& prefix);
  // DIR/INDEX of every package file in DIR, dated `date`, one serial later than the index it
  // replaces, and with `keyPath` (unless empty) DIR/INDEX.minisig.
  static Status index(const std::string& dir, const std::string& keyPath, uint64_t date);
};

#endif
