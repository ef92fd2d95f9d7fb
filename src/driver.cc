#include "driver.h"

#include <cstdlib>

#include "constants.h"
#include "exitstatus.h"
#include "lang.h"
#include "messages.h"
#include "temparea.h"

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
