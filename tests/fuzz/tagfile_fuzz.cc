// A tag file given with "tagfile", then the tag of each name it may mention.
#include <cstddef>
#include <cstdint>
#include <string>

#include "scratchfile.h"
#include "tagfile.h"
#include "textvector.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TagFile tags;
  tags.load(fuzz::writeScratch(data, size).c_str());
  TextVector words;
  words.split(' ', fuzz::asText(data, size).c_str());
  for (unsigned i = 0; i < words.size(); ++i) {
    std::string name = words[i];
    if (!name.empty() && name.back() == ':') name.pop_back();
    if (tags.contains(name) && tags.priority(name) == TagNone) __builtin_trap();
  }
  return 0;
}
