// What the drivers of zet, queryzet, makezet and getzet do alike: make sure of the standard
// descriptors and read the language at start-up, and refuse a command line.
#ifndef ZET_DRIVER_H
#define ZET_DRIVER_H

#include <string>

// Opens /dev/null on each of the standard descriptors that the caller left closed, so that no
// file the program opens becomes its input or output, nor a tool's it starts.
void keepStandardDescriptors();
// Loads the language that "LANG" names, "C" when it is unset, and returns that name.
std::string loadStartupLanguage();
// Prints the one sentence of every refused command line, whichever word was wrong, and ends
// the process with the status of a refused command line. zet passes `scratchArea` true, as
// its run's scratch directory must go first; the companions make none.
[[noreturn]] void refuseCommandLine(bool scratchArea = false);

#endif
