// ArchiveWriter writes the members of a package as a gzip-compressed tar archive: it makes the
// tar stream itself and pipes it through "gzip -n", found on the PATH, into an open file.
// Every header is made the same way, in the format of GNU tar with long names as extra
// records, owner and group root and one time for all, so that the same members always give
// the same bytes. makezet uses it; it prints nothing.
#ifndef ZET_ARCHIVEWRITER_H
#define ZET_ARCHIVEWRITER_H

#include <cstdint>
#include <string>
#include <vector>

#include "packagetree.h"

// One archive written through gzip.
class ArchiveWriter {
 public:
  enum Result {
    Written,           // the whole archive is in the file
    SourceUnreadable,  // a member's file could not be read as it was found; see failedSource
    GzipFailed,        // gzip could not be started, or did not end with status 0
  };

  // Writes `members` in their order, each with the time `time` (seconds since 1970), to the
  // descriptor `output`, which stays open.
  Result write(const std::vector<ArchiveMember>& members, int output, uint64_t time);

  std::string failedSource;
};

#endif
