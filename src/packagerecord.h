// PackageRecord is the image of one record file under /var/log/packages:
//
//   PACKAGE NAME:     foo-bar-1.2-i486-1
//   COMPRESSED PACKAGE SIZE:     120 K
//   UNCOMPRESSED PACKAGE SIZE:     480 K
//   PACKAGE LOCATION:     foo-bar-1.2-i486-1.tgz
//   PACKAGE DESCRIPTION:
//   foo-bar: a tool                       <- the "C" description
//   LANGUAGE:     pl
//   foo-bar: narzedzie                    <- one block per other language
//   FILE LIST:
//   usr/
//   usr/bin/foo                           <- to the end of the file
//
// The reader is not the writer's inverse: labels match as prefixes, blocks stop at an empty
// line, and lines inside blocks are looked at again as labels. Old records depend on that.
#ifndef ZET_PACKAGERECORD_H
#define ZET_PACKAGERECORD_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "filelist.h"
#include "textvector.h"

// One record file in memory; data only.
class PackageRecord {
 public:
  void clear();
  // True when the file could be opened, whatever it held.
  bool read(const std::string& path);
  // What a look for the file list of a record found.
  enum class Listing { Unreadable, Missing, Found };
  // Hands `visit` every path that read() would put in `files`, without building a record:
  // each line once, where a second "FILE LIST:" makes read() list the rest again. For callers
  // that only ask whether a path is listed. Missing tells a record without a "FILE LIST:"
  // line, which no install writes, from one that lists nothing.
  static Listing forEachListedFile(const std::string& path,
                                   const std::function<void(std::string_view)>& visit);
  // Whether a line of the file list names a path: an empty line or a second "FILE LIST:"
  // label, which only a hand-edited record holds, names none.
  static bool namesPath(std::string_view line);
  // False when the file was written, true when it could not be.
  bool write(const std::string& path);

  std::string name;
  uint32_t compressedSizeK = 0;
  uint32_t uncompressedSizeK = 0;
  std::string location;
  FileList files;
  std::map<std::string, TextFile> descriptions;
  std::map<std::string, TextFile>::iterator descriptionCursor;
};

#endif
