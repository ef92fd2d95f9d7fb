// A record file under /var/log/packages, as the database loader and the shared-file
// question read it.
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "packagerecord.h"
#include "scratchfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  PackageRecord record;
  const std::string path = fuzz::writeScratch(data, size);
  record.read(path);
  // The quick walk of the file list must name exactly the paths of a full read.
  std::set<std::string> listed;
  for (unsigned i = 0; i < record.files.size(); ++i) listed.insert(record.files[i]);
  std::set<std::string> visited;
  PackageRecord::forEachListedFile(path,
                                   [&visited](std::string_view line) { visited.emplace(line); });
  if (listed != visited) __builtin_trap();
  // The writer must take whatever the reader made of the file.
  record.write(fuzz::scratchPath());
  return 0;
}
