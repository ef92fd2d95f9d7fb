// /etc/zet.conf, read the way the program reads it at start-up, then written back and read
// again.
#include <cstddef>
#include <cstdint>

#include "configfile.h"
#include "constants.h"
#include "scratchfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ConfigFile config;
  if (!config.read(fuzz::writeScratch(data, size))) __builtin_trap();
  config.get(zet::CONFIG_SECTION, zet::CONFIG_DEPS_KEY);
  config.set(zet::CONFIG_SECTION, zet::CONFIG_DEPS_KEY, "no");
  config.write(fuzz::scratchPath());
  ConfigFile again;
  again.read(fuzz::scratchPath());
  return 0;
}
