// The driver: fixes the order of a run and turns results into messages and exit statuses.
// Start-up reads the language, checks the tools, reads the configuration and the command
// line, refuses a non-root user and makes the database directories under the root; then the
// words of the command line become a group of loaded packages, the dependency verdict is
// taken and the group carries out the operation.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "args.h"
#include "configfile.h"
#include "constants.h"
#include "database.h"
#include "driver.h"
#include "exitstatus.h"
#include "filesystem.h"
#include "lang.h"
#include "messages.h"
#include "package.h"
#include "packagegroup.h"
#include "packagename.h"
#include "tagfile.h"
#include "temparea.h"
#include "textvector.h"

using namespace zet;

// What the configuration and the command line decided; written only at start-up.
struct Settings {
  PackageGroup::OperationType operation = PackageGroup::OperationNone;
  TagPriority priority = TagNone;
  std::string tagfile;
  bool nodeps = false;
  bool infobox = false;
  bool menu = false;
  bool ask = false;
  bool force = false;
  bool warn = false;
  bool preserve = false;
  bool installNew = false;
  bool reinstall = false;
  bool withDeps = false;
  bool showDeps = false;
};

void printList(TextVector list);

namespace {

Settings settings;

// The operation of a general name comes from exactly one of the operation or help options.
PackageGroup::OperationType operationFromOptions() {
  int count = 0;
  for (const char* name : {"install", "i", "remove", "r", "upgrade", "u", "help", "h"}) {
    if (given(name)) ++count;
  }
  if (count != 1) refuseCommandLine(true);
  if (given("install") || given("i")) return PackageGroup::OperationInstall;
  if (given("remove") || given("r")) return PackageGroup::OperationRemove;
  if (given("upgrade") || given("u")) return PackageGroup::OperationUpgrade;
  if (given("help") || given("h")) return PackageGroup::OperationNone;
  ZET_ASSERT("Error in args parse" && 0, "void parseArgs(int, char**)");
  return PackageGroup::OperationNone;
}

HelpType helpFor(PackageGroup::OperationType operation) {
  switch (operation) {
    case PackageGroup::OperationInstall:
      return HelpInstallzet;
    case PackageGroup::OperationRemove:
      return HelpRemovezet;
    case PackageGroup::OperationUpgrade:
      return HelpUpgradezet;
    default:
      return HelpZet;
  }
}

void applyPriority(const std::string& value) {
  if (value == "ADD") settings.priority = TagAdd;
  if (value == "REC") settings.priority = TagRec;
  if (value == "OPT") settings.priority = TagOpt;
  if (value == "SKP") settings.priority = TagSkip;
}

// Order matters: "deps" beats "nodeps", and "warn" and "copy" beat "deps".
void applyFlags() {
  Args& args = Args::instance();
  if (given("nodeps")) settings.nodeps = true;
  if (given("deps")) settings.nodeps = false;
  if (given("infobox")) settings.infobox = true;
  if (given("menu")) settings.menu = true;
  if (given("ask")) settings.ask = true;
  if (given("force")) settings.force = true;
  if (given("warn")) settings.warn = settings.nodeps = true;
  if (given("preserve")) settings.preserve = true;
  if (given("copy")) settings.nodeps = settings.warn = settings.preserve = true;
  if (given("debug")) DebugLog::instance().enabled = true;
  if (given("install-new")) settings.installNew = true;
  if (given("reinstall")) settings.reinstall = true;
  if (given("with-deps")) settings.withDeps = true;
  if (given("lang")) loadLanguage(args.getValue("lang"));
  if (given("show-deps")) settings.showDeps = true;
}

// Drops, without a word, each word whose package the tag file marks "SKP".
void filterByTagFile() {
  TagFile tags;
  const std::string path = settings.tagfile.empty() ? DEFAULT_TAGFILE : settings.tagfile;
  if (!tags.load(path.c_str())) return;
  std::vector<std::string>& words = Args::instance().getArguments();
  unsigned index = 0;
  while (index < words.size()) {
    PackageName parsed;
    const std::string base = FileSystem::stripExtension(FileSystem::baseName(words[index]));
    if (parsed.parse(base) && tags.priority(parsed.name) == TagSkip) {
      Args::instance().removeArgument(index);
    } else {
      ++index;
    }
  }
}

std::vector<std::string> permittedOptions(PackageGroup::OperationType operation) {
  std::vector<std::string> allowed = {"deps", "nodeps", "lang", "no-colors", "show-deps"};
  std::vector<std::string> own;
  switch (operation) {
    case PackageGroup::OperationInstall:
      own = {"i",    "install", "warn",     "root",    "infobox",
             "menu", "ask",     "priority", "tagfile", "force"};
      break;
    case PackageGroup::OperationRemove:
      own = {"r", "remove", "warn", "preserve", "copy", "with-deps"};
      break;
    case PackageGroup::OperationUpgrade:
      own = {"u", "upgrade", "install-new", "reinstall"};
      break;
    default:
      break;
  }
  allowed.insert(allowed.end(), own.begin(), own.end());
  return allowed;
}

// The function that the assertion of an unhandled load error names.
constexpr const char* JOIN_PACKAGES = "PackageGroup joinPackages()";

// Ends the run on a package that is not in the database or whose record cannot be read.
// Returns on any other error, which the caller holds for a state that cannot occur.
void leaveOnDatabaseError(const Package& package, const std::string& word) {
  switch (package.lastError) {
    case LoadRecordUnreadable:
      // The database path as formed, doubled slashes and all.
      printError(ErrorFileDoNotExist,
                 Database::ofRoot(FileSystem::instance().getRoot()).path(PACKAGES_DIR, word));
      leaveRun(ZetExitBadPackage);
    case LoadNotInstalled:
      printError(ErrorPackageNotInstalled, word);
      leaveRun(ZetExitBadPackage);
    default:
      return;
  }
}

// Ends the run on a package file that cannot be loaded. Returns on any other error: an
// archive without install/, which the loader has reported already, then stops the run on the
// caller's assertion and leaves the scratch directory behind.
void leaveOnFileError(const Package& package, const std::string& word) {
  switch (package.lastError) {
    case LoadExtractFailed:
    case LoadListFailed:
      printError(ErrorUnknownTar);
      leaveRun(ZetExitTarFailed);
    case LoadBadName:
      printError(ErrorNotValidPackageName, word);
      leaveRun(ZetExitBadPackage);
    case LoadNoFile:
      printError(ErrorFileDoNotExist, word);
      leaveRun(ZetExitNoPackageFile);
    case LoadSizeInfoBad:
      printError(ErrorUnknownGzip);
      leaveRun(ZetExitGzipFailed);
    default:
      return;
  }
}

// Everything below the front end learns the options from the group.
void configureGroup(PackageGroup& group) {
  group.infobox = settings.infobox;
  group.menu = settings.menu;
  group.ask = settings.ask;
  group.priority = settings.priority;
  group.warn = settings.warn;
  group.preserve = settings.preserve;
  group.force = settings.force;
  group.installNew = settings.installNew;
  group.reinstall = settings.reinstall;
  group.withDeps = settings.withDeps;
  // Read a second time, after the command-line filter; a file that cannot be read is no error.
  group.loadTagFile(settings.tagfile.empty() ? DEFAULT_TAGFILE : settings.tagfile);
}

// The dependency verdict. On removal "show-deps" neither silences the error nor spares the
// refusal: only "with-deps" lets such a run go on, and then the list says what goes too.
void judgeDependencies(PackageGroup::OperationType operation, const TextVector& missing) {
  if (missing.size() == 0) return;
  if (operation == PackageGroup::OperationInstall || operation == PackageGroup::OperationUpgrade) {
    if (!settings.showDeps) {
      printError(ErrorDepsNotMet);
      printList(missing);
      leaveRun(ZetExitDepsFailed);
    }
    printList(missing);
  }
  if (operation == PackageGroup::OperationRemove) {
    printError(ErrorDepsRequired);
    printList(missing);
    if (!settings.withDeps) leaveRun(ZetExitDepsFailed);
  }
}

bool isOperation(PackageGroup::OperationType operation) {
  return operation == PackageGroup::OperationInstall ||
         operation == PackageGroup::OperationRemove || operation == PackageGroup::OperationUpgrade;
}

void checkTools() {
  for (const char* tool : {GZIP_TOOL, TAR_TOOL, DIALOG_TOOL}) {
    // A missing tool is reported and the run goes on: help needs none of them.
    if (!FileSystem::instance().exists(tool, false)) printError(ErrorRequiredAppDoNotExists, tool);
  }
}

void makeDatabaseDirectories() {
  FileSystem& fs = FileSystem::instance();
  fs.makePath(fs.getRoot(), false);
  for (const char* dir : {VAR_DIR, LOG_DIR, PACKAGES_DIR, SCRIPTS_DIR, POSTINST_DIR, BUILD_DIR,
                          DEPS_DIR, SETUP_DIR, SETUP_TMP_DIR, PRESERVED_DIR}) {
    fs.makeDir(dir, true);
  }
}

}  // namespace

void readConfiguration() {
  ConfigFile config;
  if (config.read(CONFIG_FILE)) {
    const std::string deps = config.get(CONFIG_SECTION, CONFIG_DEPS_KEY);
    if (deps == "no") settings.nodeps = true;
    if (deps == "yes") settings.nodeps = false;
    return;
  }
  // The first run still checks dependencies; the file it leaves makes later runs skip them.
  config.set(CONFIG_SECTION, CONFIG_DEPS_KEY, "no");
  config.write(CONFIG_FILE);
}

void buildOptionTable() {
  static const struct {
    const char* name;
    bool takesValue;
  } table[] = {
      {"install", false},   {"i", false},     {"remove", false},    {"r", false},
      {"upgrade", false},   {"u", false},     {"root", true},       {"tagfile", true},
      {"priority", true},   {"force", false}, {"nodeps", false},    {"deps", false},
      {"infobox", false},   {"ask", false},   {"menu", false},      {"warn", false},
      {"preserve", false},  {"copy", false},  {"debug", false},     {"install-new", false},
      {"reinstall", false}, {"help", false},  {"h", false},         {"no-colors", false},
      {"with-deps", false}, {"lang", true},   {"show-deps", false},
  };
  Args& args = Args::instance();
  args.clear();
  for (const auto& row : table) args.addOption(row.name, row.takesValue);
}

void parseArgs(int argc, char** argv) {
  Args& args = Args::instance();
  if (!args.parse(argc, argv)) refuseCommandLine(true);
  if (!given("no-colors")) {
    setColors(1, 14, 15);
    colorsEnabled = true;
  }

  const std::string program = args.getProgramName();
  if (program == "installzet") {
    settings.operation = PackageGroup::OperationInstall;
  } else if (program == "removezet") {
    settings.operation = PackageGroup::OperationRemove;
  } else if (program == "upgradezet") {
    settings.operation = PackageGroup::OperationUpgrade;
  } else {
    settings.operation = operationFromOptions();
  }

  if (given("help") || given("h")) {
    printHelp(helpFor(settings.operation), PROGRAM_VERSION);
    leaveRun(ZetExitOk);
  }

  if (given("root")) FileSystem::instance().setRoot(args.getValue("root"));
  if (given("tagfile")) settings.tagfile = args.getValue("tagfile");
  if (given("priority")) applyPriority(args.getValue("priority"));
  if (args.getArguments().empty()) refuseCommandLine(true);
  applyFlags();
  filterByTagFile();
  if (!args.onlyAllowed(permittedOptions(settings.operation))) refuseCommandLine(true);
}

// Loads every word before anything changes on the system, so one bad word stops the run
// with nothing done. The packages live to the exit of the process.
PackageGroup joinPackages() {
  const std::vector<std::string>& words = Args::instance().getArguments();
  const PackageGroup::OperationType operation = settings.operation;
  std::vector<PackageGroup::Entry> entries;

  if (operation == PackageGroup::OperationRemove || operation == PackageGroup::OperationUpgrade) {
    for (const std::string& word : words) {
      Package* installed = new Package;
      // With install-new an upgrade goes on for a package that is not installed.
      if (!installed->loadFromDatabase(word) && !settings.installNew) {
        leaveOnDatabaseError(*installed, word);
        ZET_ASSERT("Unhandled error" && 0, JOIN_PACKAGES);
      }
      entries.push_back(PackageGroup::Entry{installed, nullptr});
    }
  }

  if (operation == PackageGroup::OperationInstall || operation == PackageGroup::OperationUpgrade) {
    for (size_t i = 0; i < words.size(); ++i) {
      Package* package = new Package;
      if (operation == PackageGroup::OperationInstall && !settings.force &&
          package->loadFromDatabase(words[i])) {
        printError(ErrorPackageAlreadyInstalled, words[i]);
        leaveRun(ZetExitAlreadyInstalled);
      }
      if (!package->loadFromFile(words[i])) {
        leaveOnFileError(*package, words[i]);
        ZET_ASSERT("Unhandled error" && 0, JOIN_PACKAGES);
      }
      if (operation == PackageGroup::OperationInstall) {
        entries.push_back(PackageGroup::Entry{package, nullptr});
      } else {
        entries[i].second = package;
      }
    }
  }

  PackageGroup group;
  for (const PackageGroup::Entry& entry : entries) group.add(entry.first, entry.second);
  return group;
}

void printList(TextVector list) {
  for (unsigned i = 0; i < list.size(); ++i) {
    fputs(list[i], stdout);
    fputs("\n", stdout);
  }
  fflush(stdout);
}

int main(int argc, char** argv) {
  keepStandardDescriptors();
  TempArea::instance().create(TEMP_BASE, TEMP_PREFIX);
  FileSystem::instance().makeDir(TempArea::instance().getPath(), false);

  loadStartupLanguage();
  checkTools();
  readConfiguration();
  buildOptionTable();
  parseArgs(argc, argv);

  if (getuid() != 0) {
    printError(ErrorNotRoot);
    leaveRun(ZetExitNotRoot);
  }
  makeDatabaseDirectories();

  PackageGroup group = joinPackages();
  configureGroup(group);

  const PackageGroup::OperationType operation = settings.operation;
  TextVector missing;
  // "show-deps" looks even where the configuration or "nodeps" switched the check off.
  if ((!settings.nodeps || settings.showDeps) && isOperation(operation)) {
    missing = group.checkDeps(operation, false);
  }
  judgeDependencies(operation, missing);
  // A dry look at the verdict: nothing on the disk changes.
  if (settings.showDeps) leaveRun(ZetExitOk);
  if (isOperation(operation)) group.proceed(operation);
  leaveRun(ZetExitOk);
}
