// What the drivers of zet, queryzet, makezet and getzet do alike: make sure of the standard
// descriptors and read the language at start-up, ask the parsed options, print answers and
// errors, keep the worst status of a run, and refuse a command line.
#ifndef ZET_DRIVER_H
#define ZET_DRIVER_H

#include <string>

// Opens /dev/null on each of the standard descriptors that the caller left closed, so that no
// file the program opens becomes its input or output, nor a tool's it starts.
void keepStandardDescriptors();
// Loads the language that "LANG" names, "C" when it is unset, and returns that name.
std::string loadStartupLanguage();
// Whether the option `name` stood on the command line that Args parsed.
bool given(const char* name);
// Prints one line of an answer to standard output, buffered and never translated: answers
// are data that scripts read.
void printLine(const std::string& line);
// Raises the status that the run ends with to `exitStatus`, if that is worse.
void raiseStatus(int exitStatus);
// The worst status raised so far; 0 when none was.
int runStatus();
// Flushes the answer so far first, so that on a terminal each error follows what preceded it,
// then prints the error and raises the status.
void complain(const std::string& sentence, int exitStatus);
// Prints the one sentence of every refused command line, whichever word was wrong, and ends
// the process with the status of a refused command line. zet passes `scratchArea` true, as
// its run's scratch directory must go first; the companions make none.
[[noreturn]] void refuseCommandLine(bool scratchArea = false);

#endif
