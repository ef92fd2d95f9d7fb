// A language file, loaded on top of the catalogue, then every sentence it may define asked
// for with fewer and with more arguments than it has markers.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "lang.h"
#include "scratchfile.h"
#include "textvector.h"

// A key that no file defines is reported on standard output, once per input: not wanted in
// the fuzzer's log.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (freopen("/dev/null", "w", stdout) == nullptr) abort();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Lang& lang = Lang::instance();
  lang.load(fuzz::writeScratch(data, size));
  TextVector lines;
  lines.split('\n', fuzz::asText(data, size).c_str());
  for (unsigned i = 0; i < lines.size(); ++i) {
    const std::string line = lines[i];
    const std::string key = line.substr(0, line.find('='));
    lang.get(key.c_str());
    lang.get(key.c_str(), "one", "two", "three");
  }
  return 0;
}
