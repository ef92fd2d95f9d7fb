// A base name such as foo-bar-1.2-i486-1, as every word of the command line and every
// database file name is parsed.
#include <cstddef>
#include <cstdint>
#include <string>

#include "package.h"
#include "scratchfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = fuzz::asText(data, size);
  PackageName parsed;
  const bool valid = parsed.parse(text);
  if (!valid && !(parsed.name.empty() && parsed.version.empty() && parsed.build.empty() &&
                  parsed.architecture.empty()))
    __builtin_trap();
  PackageName::isVersion(text);
  Package::shortNameOf(text);
  return 0;
}
