// A doinst script, scanned line by line for the "( cd DIR ; rm -rf LINK )" lines that name
// the links a package makes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "package.h"
#include "scratchfile.h"
#include "textvector.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TextVector script;
  script.split('\n', fuzz::asText(data, size).c_str());
  const FileList links = Package::scriptSymlinks(script);
  for (unsigned i = 0; i < links.size(); ++i) {
    if (strchr(links[i], '/') == nullptr) __builtin_trap();
  }
  return 0;
}
