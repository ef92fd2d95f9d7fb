// A record file under /var/log/packages, as the database loader reads it.
#include <cstddef>
#include <cstdint>

#include "packagerecord.h"
#include "scratchfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  PackageRecord record;
  record.read(fuzz::writeScratch(data, size));
  // The writer must take whatever the reader made of the file.
  record.write(fuzz::scratchPath());
  return 0;
}
