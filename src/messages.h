// The typed printers through which the program speaks, and the DebugLog trace stream.
// Each printer writes one frame: colour (when on), prefix, sentence, line end, reset.
// Errors and warnings go to standard error, messages, help and descriptions to standard
// output. Each overload knows which keys take its number of arguments; any other value
// gets a fixed English complaint in place of the sentence.
#ifndef ZET_MESSAGES_H
#define ZET_MESSAGES_H

#include <optional>
#include <string>

#include "textvector.h"

enum ErrorType {
  ErrorBadArgumentLine,
  ErrorBadOption,
  ErrorLowMemory,
  ErrorTarNotFound,
  ErrorFileDoNotExist,
  ErrorNotTgzFile,
  ErrorNotValidPackageName,
  ErrorPackageAlreadyInstalled,
  ErrorPackageNotInstalled,
  ErrorDepsNotMet,
  ErrorOperationNotPrecised,
  ErrorUnknownGzip,
  ErrorUnknownTar,
  ErrorPackageMustBeNewer,
  ErrorNotRoot,
  ErrorRequiredAppDoNotExists,
  ErrorPackageNotComplete,
  ErrorDepsRequired,
};

enum WarningType {
  WarningPackageAlreadyInQuene,
  WarningDirectoryContainsNewFiles,
  WarningFileChanged,
  WarningNonexistentFileFoundInAnotherPackage,
  WarningNonexistentSymlinkFoundInAnotherPackage,
  WarningFileChangedAfterInstallation,
};

enum MessageType {
  MessageShowWarnDirs,
  MessageShowWarnOverwrite,
  MessagePackageDescription,
  MessageDeletingEmptyDirectory,
  MessageDeletingFile,
  MessageDeletingSymlink,
  MessageSymlinkNoLongerExists,
  MessageFileWouldBeDeleted,
  MessageSymlinkFoundInAnotherPackage,
  MessageFileNoLongerExists,
  MessageSymlinkWouldBeDeleted,
  MessageDirectoryWouldBeDeleted,
  MessageDeletingManPage,
  MessageManPageWouldBeDeleted,
  MessageFileFoundInAnotherPackage,
  MessagePreserve,
  MessageUpgrading,
  MessagePreinstallingPackage,
  MessagePackageUpgraded,
  MessageInstallingPackage,
  MessageRemovingPackage,
  MessageRemovingFiles,
};

enum HelpType { HelpZet, HelpInstallzet, HelpRemovezet, HelpUpgradezet };

// An index into the table of sixteen terminal colour escapes.
typedef unsigned Color;

extern bool colorsEnabled;
extern std::string errorColor;
extern std::string warningColor;
extern std::string messageColor;
extern const std::string resetColor;

// Each index below 16 replaces that family's colour; 16 or more leaves it alone.
void setColors(Color error, Color warning, Color message);

void printError(const std::string& text);
void printError(ErrorType type);
void printError(ErrorType type, const std::string& arg);
void printError(ErrorType type, const std::string& arg1, const std::string& arg2);

void printWarning(const std::string& text);
void printWarning(WarningType type);
void printWarning(WarningType type, const std::string& arg);
void printWarning(WarningType type, const std::string& arg1, const std::string& arg2);

void printMessage(const std::string& text);
void printMessage(MessageType type);
void printMessage(MessageType type, const std::string& arg);
void printMessage(MessageType type, const std::string& arg1, const std::string& arg2);

void printHelp(HelpType type, const std::string& version);
// The MessagePackageDescription heading, then each line, then an empty line.
void printDescription(const TextVector& lines);

// The language key of each value, and how many "[ARG]" markers its sentence has; for the
// check of language files. Values outside the enumeration give a null key and no count.
const char* errorKey(ErrorType type);
const char* warningKey(WarningType type);
const char* messageKey(MessageType type);
const char* helpKey(HelpType type);
std::optional<unsigned> errorArgCount(ErrorType type);
std::optional<unsigned> messageArgCount(MessageType type);

// Trace stream of the package loaders: writes to standard output only while enabled.
class DebugLog {
 public:
  static DebugLog& instance();

  DebugLog& operator<<(const std::string& text);
  DebugLog& operator<<(const char* text);
  DebugLog& operator<<(long number);

  bool enabled = false;

 private:
  DebugLog() = default;
};

#endif
