// PackageArchive writes the members of a package as a gzip-compressed tar archive: GNU tar
// packs them in their order from an explicit list, and "gzip -n" compresses what it writes.
// Both run as processes of their own, never through a shell. makezet uses it; it prints
// nothing.
//
// tar reads every member in one directory of its own, the stage: a link "tree" there leads
// to the package tree, whose members tar is given as "tree/NAME" and stores as NAME, and
// the members that makezet makes itself lie in the stage under their own names.
#ifndef ZET_PACKAGEARCHIVE_H
#define ZET_PACKAGEARCHIVE_H

#include <cstdint>
#include <string>
#include <vector>

#include "packagetree.h"

// One archive written by tar through gzip.
class PackageArchive {
 public:
  enum Result {
    Written,           // the whole archive is in the file
    SourceUnreadable,  // a file of the tree, or the tree, could not be opened; see failedSource
    StageFailed,       // the stage could not be made
    TarFailed,         // tar could not be started, or did not end with status 0
    GzipFailed,        // gzip could not be started, or did not end with status 0
    Interrupted,       // a signal stopped tar and gzip, and was raised again
  };

  // Writes `members` of the tree `tree`, each with the time `time` (seconds since 1970), to the
  // descriptor `output`, which stays open. The stage is made by mkdtemp from `stagePattern`
  // and is gone again when write returns. SIGINT, SIGTERM and SIGHUP wait meanwhile: one that
  // comes ends tar and gzip, and is raised again once the stage is gone.
  Result write(const std::vector<ArchiveMember>& members, const std::string& tree,
               const std::string& stagePattern, int output, uint64_t time);

  std::string failedSource;
};

#endif
