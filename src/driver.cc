#include "driver.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "args.h"
#include "constants.h"
#include "exitstatus.h"
#include "lang.h"
#include "messages.h"
#include "temparea.h"

namespace {

int worstStatus = 0;

}  // namespace

void keepStandardDescriptors() {
  for (int standard = STDIN_FILENO; standard <= STDERR_FILENO; ++standard) {
    // open gives the lowest free number, so a closed one is filled in turn.
    if (fcntl(standard, F_GETFD) == -1) open("/dev/null", O_RDWR);
  }
}

std::string loadStartupLanguage() {
  const char* lang = std::getenv("LANG");
  const std::string language = lang ? lang : zet::FALLBACK_LANG;
  loadLanguage(language);
  return language;
}

bool given(const char* name) {
  return Args::instance().optionExists(name, true);
}

void printLine(const std::string& line) {
  fwrite(line.data(), 1, line.size(), stdout);
  fputc('\n', stdout);
}

void raiseStatus(int exitStatus) {
  worstStatus = std::max(worstStatus, exitStatus);
}

int runStatus() {
  return worstStatus;
}

void complain(const std::string& sentence, int exitStatus) {
  fflush(stdout);
  printError(sentence);
  raiseStatus(exitStatus);
}

void refuseCommandLine(bool scratchArea) {
  printError(ErrorBadArgumentLine);
  if (scratchArea) leaveRun(ZetExitBadCommandLine);
  std::exit(ZetExitBadCommandLine);
}
