#include "messages.h"

#include <cstdio>
#include <iterator>

#include "lang.h"

bool colorsEnabled = false;
std::string errorColor;
std::string warningColor;
std::string messageColor;
const std::string resetColor = "\033[1;0m";

namespace {

const char* const COLOR_ESCAPES[] = {
    "\033[1;37m", "\033[1;31m", "\033[0;31m", "\033[1;32m", "\033[0;34m", "\033[0;32m",
    "\033[0;36m", "\033[0;35m", "\033[0;33m", "\033[0;37m", "\033[1;30m", "\033[1;34m",
    "\033[1;36m", "\033[1;35m", "\033[1;33m", "\033[1;0m",
};
const unsigned COLOR_COUNT = std::size(COLOR_ESCAPES);

struct KeyInfo {
  const char* key;
  unsigned argCount;
};

// Indexed by ErrorType.
const KeyInfo ERROR_KEYS[] = {
    {"ErrorBadArgumentLine", 0},
    {"ErrorBadOption", 1},
    {"ErrorLowMemory", 0},
    {"ErrorTarNotFound", 0},
    {"ErrorFileDoNotExist", 1},
    {"ErrorNotTgzFile", 1},
    {"ErrorNotValidPackageName", 1},
    {"ErrorPackageAlreadyInstalled", 1},
    {"ErrorPackageNotInstalled", 1},
    {"ErrorDepsNotMet", 0},
    {"ErrorOperationNotPrecised", 0},
    {"ErrorUnknownGzip", 0},
    {"ErrorUnknownTar", 0},
    {"ErrorPackageMustBeNewer", 1},
    {"ErrorNotRoot", 0},
    {"ErrorRequiredAppDoNotExists", 1},
    {"ErrorPackageNotComplete", 1},
    {"ErrorDepsRequired", 0},
};

// Indexed by WarningType; every warning takes one argument.
const char* const WARNING_KEYS[] = {
    "WarningPackageAlreadyInQuene",
    "WarningDirectoryContainsNewFiles",
    "WarningFileChanged",
    "WarningNonexistentFileFoundInAnotherPackage",
    "WarningNonexistentSymlinkFoundInAnotherPackage",
    "WarningFileChangedAfterInstallation",
};

// Indexed by MessageType.
const KeyInfo MESSAGE_KEYS[] = {
    {"MessageShowWarnDirs", 0},
    {"MessageShowWarnOverwrite", 0},
    {"MessagePackageDescription", 0},
    {"MessageDeletingEmptyDirectory", 1},
    {"MessageDeletingFile", 1},
    {"MessageDeletingSymlink", 1},
    {"MessageSymlinkNoLongerExists", 1},
    {"MessageFileWouldBeDeleted", 1},
    {"MessageSymlinkFoundInAnotherPackage", 1},
    {"MessageFileNoLongerExists", 1},
    {"MessageSymlinkWouldBeDeleted", 1},
    {"MessageDirectoryWouldBeDeleted", 1},
    {"MessageDeletingManPage", 1},
    {"MessageManPageWouldBeDeleted", 1},
    {"MessageFileFoundInAnotherPackage", 1},
    {"MessagePreserve", 1},
    {"MessageUpgrading", 2},
    {"MessagePreinstallingPackage", 1},
    {"MessagePackageUpgraded", 2},
    {"MessageInstallingPackage", 1},
    {"MessageRemovingPackage", 1},
    {"MessageRemovingFiles", 0},
};

// Indexed by HelpType; each help text takes the version.
const char* const HELP_KEYS[] = {"HelpZet", "HelpInstallzet", "HelpRemovezet", "HelpUpgradezet"};

template <typename Table, size_t N>
bool inTable(const Table (&)[N], unsigned index) {
  return index < N;
}

void write(FILE* stream, const std::string& text) {
  fwrite(text.data(), 1, text.size(), stream);
}

void writeColor(FILE* stream, const std::string& color) {
  if (colorsEnabled) write(stream, color);
}

// Flushing both after the line end and after the reset keeps the order of our lines intact
// against the output of the tools and scripts that run in between.
void writeReset(FILE* stream) {
  if (!colorsEnabled) return;
  write(stream, resetColor);
  fflush(stream);
}

// One frame: colour, prefix, text, line end, then the reset at the start of the next line.
void writeFrame(FILE* stream, const std::string& color, const char* prefix,
                const std::string& text) {
  writeColor(stream, color);
  write(stream, prefix);
  write(stream, text);
  write(stream, "\n");
  fflush(stream);
  writeReset(stream);
}

// Colour and reset with nothing between them, for the overloads that print no text.
void writeEmptyFrame(FILE* stream, const std::string& color) {
  writeColor(stream, color);
  writeReset(stream);
}

void errorFrame(const std::string& text) {
  writeFrame(stderr, errorColor, "ERROR: ", text);
}
void warningFrame(const std::string& text) {
  writeFrame(stderr, warningColor, "WARNING: ", text);
}
void messageFrame(const std::string& text) {
  writeFrame(stdout, messageColor, "", text);
}

// The complaints for a value used with the wrong number of arguments have no prefix.
void errorComplaint(const char* text) {
  writeFrame(stderr, errorColor, "", text);
}
void warningComplaint(const char* text) {
  writeFrame(stderr, warningColor, "", text);
}

bool errorTakes(ErrorType type, unsigned count) {
  return errorArgCount(type) == count;
}
bool messageTakes(MessageType type, unsigned count) {
  return messageArgCount(type) == count;
}

}  // namespace

void setColors(Color error, Color warning, Color message) {
  if (error < COLOR_COUNT) errorColor = COLOR_ESCAPES[error];
  if (warning < COLOR_COUNT) warningColor = COLOR_ESCAPES[warning];
  if (message < COLOR_COUNT) messageColor = COLOR_ESCAPES[message];
}

const char* errorKey(ErrorType type) {
  return inTable(ERROR_KEYS, type) ? ERROR_KEYS[type].key : nullptr;
}
std::optional<unsigned> errorArgCount(ErrorType type) {
  if (!inTable(ERROR_KEYS, type)) return std::nullopt;
  return ERROR_KEYS[type].argCount;
}
const char* warningKey(WarningType type) {
  return inTable(WARNING_KEYS, type) ? WARNING_KEYS[type] : nullptr;
}
const char* messageKey(MessageType type) {
  return inTable(MESSAGE_KEYS, type) ? MESSAGE_KEYS[type].key : nullptr;
}
std::optional<unsigned> messageArgCount(MessageType type) {
  if (!inTable(MESSAGE_KEYS, type)) return std::nullopt;
  return MESSAGE_KEYS[type].argCount;
}
const char* helpKey(HelpType type) {
  return inTable(HELP_KEYS, type) ? HELP_KEYS[type] : nullptr;
}

void printError(const std::string& text) {
  errorFrame(text);
}

void printError(ErrorType type) {
  if (errorTakes(type, 0)) {
    errorFrame(Lang::instance().get(errorKey(type)));
  } else {
    errorComplaint("This Error message should not be here");
  }
}

void printError(ErrorType type, const std::string& arg) {
  if (errorTakes(type, 1)) {
    errorFrame(Lang::instance().get(errorKey(type), arg));
  } else {
    errorComplaint("This Error message should not be here, maybe you forgot about arg ?");
  }
}

// No error takes two arguments.
void printError(ErrorType, const std::string&, const std::string&) {
  errorComplaint("This Error message should not be here, maybe you forgot about arg1 or arg2 ?");
}

void printWarning(const std::string& text) {
  warningFrame(text);
}

// Every warning takes an argument.
void printWarning(WarningType) {
  warningComplaint("This Warning message should not be here");
}

void printWarning(WarningType type, const std::string& arg) {
  if (warningKey(type)) {
    warningFrame(Lang::instance().get(warningKey(type), arg));
  } else {
    warningComplaint("This Warning message should not be here, maybe you forgot about arg.");
  }
}

// No warning takes two arguments, and this one overload stays silent about it.
void printWarning(WarningType, const std::string&, const std::string&) {
  writeEmptyFrame(stderr, warningColor);
}

void printMessage(const std::string& text) {
  messageFrame(text);
}

void printMessage(MessageType type) {
  if (messageTakes(type, 0)) {
    messageFrame(Lang::instance().get(messageKey(type)));
  } else {
    messageFrame("This Message should not be here");
  }
}

void printMessage(MessageType type, const std::string& arg) {
  if (messageTakes(type, 1)) {
    messageFrame(Lang::instance().get(messageKey(type), arg));
  } else {
    messageFrame("This Message should not be here, maybe you forgot about arg.");
  }
}

void printMessage(MessageType type, const std::string& arg1, const std::string& arg2) {
  if (messageTakes(type, 2)) {
    messageFrame(Lang::instance().get(messageKey(type), arg1, arg2));
  } else {
    messageFrame("This Message should not be here, maybe you forgot about arg1 or arg2.");
  }
}

void printHelp(HelpType type, const std::string& version) {
  if (helpKey(type)) {
    messageFrame(Lang::instance().get(helpKey(type), version));
  } else {
    writeEmptyFrame(stdout, messageColor);
  }
}

// The colour and the reset stand twice around the frame when colours are on.
void printDescription(const TextVector& lines) {
  std::string text;
  for (unsigned i = 0; i < lines.size(); ++i) {
    text += lines[i];
    text += "\n";
  }
  writeColor(stdout, messageColor);
  messageFrame(Lang::instance().get(messageKey(MessagePackageDescription)) + "\n" + text);
  writeReset(stdout);
}

DebugLog& DebugLog::instance() {
  static DebugLog log;
  return log;
}

DebugLog& DebugLog::operator<<(const std::string& text) {
  if (enabled) {
    write(stdout, text);
    fflush(stdout);
  }
  return *this;
}

DebugLog& DebugLog::operator<<(const char* text) {
  return *this << std::string(text);
}

DebugLog& DebugLog::operator<<(long number) {
  return *this << std::to_string(number);
}
