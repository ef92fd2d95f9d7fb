#ifndef ZET_SCRIPTRUNNER_H
#define ZET_SCRIPTRUNNER_H

#include <string>

#include "textvector.h"

// The lines of one package shell script, which it can run in a directory. A script without
// lines counts as absent: callers test hasLines() before run().
class ScriptRunner : public TextFile {
 public:
  ScriptRunner() = default;

  bool hasLines() const { return size() > 0; }
  // Runs the script with `sh` in `directory`, with `argument` as its first word. False only
  // when the script could not be written; the script's own exit status is ignored.
  bool run(const std::string& argument, const std::string& directory) const;
};

#endif
