#include "driver.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "constants.h"
#include "exitstatus.h"
#include "lang.h"
#include "messages.h"
#include "temparea.h"

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

void refuseCommandLine(bool scratchArea) {
  printError(ErrorBadArgumentLine);
  if (scratchArea) leaveRun(ZetExitBadCommandLine);
  std::exit(ZetExitBadCommandLine);
}
