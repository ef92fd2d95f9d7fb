// The driver of makezet, the package builder: "makezet [--build DDMMYYYY] DIR OUTPUT.tgz".
// It reads the command line, takes the short name from OUTPUT, reads and checks the tree,
// then writes the archive into a temporary file beside OUTPUT that takes OUTPUT's name only
// once it is complete. It needs no root, and turns every finding into a message and a status.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "args.h"
#include "constants.h"
#include "descriptor.h"
#include "driver.h"
#include "exitstatus.h"
#include "filesystem.h"
#include "lang.h"
#include "linklines.h"
#include "messages.h"
#include "packagearchive.h"
#include "packagename.h"
#include "packagetree.h"
#include "repomaker.h"
#include "smallfile.h"
#include "textutil.h"

namespace {

constexpr const char* STAMP_OPTION = "build";
constexpr const char* EPOCH_VARIABLE = "SOURCE_DATE_EPOCH";
// Eighteen digits always fit the 64 bits that the time is read into.
constexpr size_t EPOCH_DIGITS = 18;

// The temporary file while it exists, so that a signal that ends the run takes it away too.
const char* volatile pendingFile = nullptr;

void removePendingFile(int signal) {
  if (pendingFile != nullptr) unlink(pendingFile);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

[[noreturn]] void refuse(int status, const std::string& text) {
  printError(text);
  std::exit(status);
}

bool allDigits(const std::string& text) {
  for (const char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  }
  return !text.empty();
}

// DDMMYYYY, a day that the calendar has: upgrades compare it as a date. The C library carries
// a day or month that the calendar lacks over into the next, so such a date reads back otherwise.
bool validStamp(const std::string& stamp) {
  if (stamp.size() != 8 || !allDigits(stamp)) return false;
  std::tm date{};
  date.tm_mday = std::stoi(stamp.substr(0, 2));
  date.tm_mon = std::stoi(stamp.substr(2, 2)) - 1;
  date.tm_year = std::stoi(stamp.substr(4)) - 1900;
  timegm(&date);
  char text[3 * 12];  // room for any three numbers
  std::snprintf(text, sizeof text, "%02d%02d%04d", date.tm_mday, date.tm_mon + 1,
                date.tm_year + 1900);
  return stamp == text;
}

// How many times the option `name` stands on the command line: the parser keeps the last.
// A word that is no option has no option name, and no option can stand as a value.
int timesGiven(int argc, char** argv, const char* name) {
  int times = 0;
  for (int i = 1; i < argc; ++i) times += Args::optionName(argv[i]) == name;
  return times;
}

// The time of every member: SOURCE_DATE_EPOCH when set, else the start of 1970, so that the
// same tree always gives the same bytes.
uint64_t memberTime() {
  const char* epoch = std::getenv(EPOCH_VARIABLE);
  if (epoch == nullptr) return 0;
  if (!allDigits(epoch) || std::string(epoch).size() > EPOCH_DIGITS) {
    refuse(MakeExitLineRefused, Lang::instance().get("MakeBadEpoch", epoch));
  }
  return std::strtoull(epoch, nullptr, 10);
}

// The short name, from OUTPUT by the rule that zet reads file names with; a name that the
// unquoted commands of zet would not pass on as one word is refused as well.
std::string shortNameOfOutput(const std::string& output) {
  const std::string base = FileSystem::baseName(output);
  const std::string extension = zet::PACKAGE_EXTENSION;
  PackageName name;
  if (!endsWith(base, extension) || !name.parse(FileSystem::stripExtension(base)) ||
      !LinkLines::plainWord(base)) {
    refuse(MakeExitNameRefused, Lang::instance().get("MakeBadName", output));
  }
  return name.name;
}

const char* keyOf(TreeFinding::Kind kind) {
  switch (kind) {
    case TreeFinding::Unreadable:
      return "MakeCannotRead";
    case TreeFinding::BlankInPath:
      return "MakeBlankInPath";
    case TreeFinding::EscapedPath:
      return "MakeEscapedPath";
    case TreeFinding::PathTooLong:
      return "MakePathTooLong";
    case TreeFinding::UnsupportedType:
      return "MakeUnsupportedType";
    case TreeFinding::LinkInControlFiles:
      return "MakeLinkInControlFiles";
    case TreeFinding::LinkUnusable:
      return "MakeLinkUnusable";
    case TreeFinding::LinkOverOwnDirectory:
      return "MakeLinkOverOwnDirectory";
    case TreeFinding::LinkOverSystemPath:
      return "MakeLinkOverSystemPath";
    case TreeFinding::BadDescription:
      return "MakeBadDescription";
    case TreeFinding::NoDescription:
      return "MakeNoDescription";
    case TreeFinding::SystemLinkDirectory:
      return "MakeSystemLinkDirectory";
    case TreeFinding::LinkToDirectory:
      return "MakeLinkToDirectory";
  }
  return "";
}

// Each sentence takes the path and, where it has a second marker, the detail.
std::string sentenceOf(const TreeFinding& finding) {
  return Lang::instance().get(keyOf(finding.kind), finding.path, finding.detail);
}

// Reads and checks the tree; any problem ends the run before a file is made.
PackageTree readTree(const std::string& dir, const std::string& shortName, const std::string& stamp,
                     const std::string& output) {
  PackageTree tree = PackageTree::read(dir, shortName, stamp, output);
  if (!tree.problems.empty()) {
    bool unreadable = false;
    for (const TreeFinding& problem : tree.problems) {
      printError(sentenceOf(problem));
      unreadable = unreadable || problem.kind == TreeFinding::Unreadable;
    }
    std::exit(unreadable ? MakeExitReadFailed : MakeExitTreeRefused);
  }
  for (const TreeFinding& warning : tree.warnings) printWarning(sentenceOf(warning));
  return tree;
}

// Writes the archive under a temporary name in OUTPUT's directory and renames it into place,
// so that a refusal, a failure or a signal never leaves a file under OUTPUT's name, and a
// package that was there stays whole until the new one replaces it.
void writePackage(const PackageTree& tree, const std::string& dir, const std::string& output,
                  uint64_t time) {
  const std::string pattern = SmallFile::temporaryBeside(output);
  std::string temporary = pattern;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
    std::signal(signal, removePendingFile);
  Descriptor file(mkostemp(&temporary[0], O_CLOEXEC));
  if (!file.valid()) refuse(MakeExitWriteFailed, Lang::instance().get("MakeCannotWrite", output));
  pendingFile = temporary.c_str();
  const mode_t mask = umask(0);
  umask(mask);
  fchmod(file.get(), 0666 & ~mask);

  PackageArchive archive;
  const PackageArchive::Result result = archive.write(tree.members, dir, pattern, file.get(), time);
  const bool closed = file.close();
  if (result == PackageArchive::Written && closed &&
      rename(temporary.c_str(), output.c_str()) == 0) {
    pendingFile = nullptr;
    return;
  }
  unlink(temporary.c_str());
  pendingFile = nullptr;
  if (result == PackageArchive::SourceUnreadable) {
    refuse(MakeExitReadFailed, Lang::instance().get("MakeCannotRead", archive.failedSource));
  }
  if (result == PackageArchive::GzipFailed) {
    refuse(MakeExitWriteFailed, Lang::instance().get("MakeGzipFailed"));
  }
  if (result == PackageArchive::TarFailed) {
    refuse(MakeExitWriteFailed, Lang::instance().get("MakeTarFailed"));
  }
  refuse(MakeExitWriteFailed, Lang::instance().get("MakeCannotWrite", output));
}

// The sentence of each end of a repository verb, and the status that it gives.
struct Report {
  const char* key;
  int status;
};

Report reportOf(RepoOutcome::Kind kind) {
  switch (kind) {
    case RepoOutcome::KeysWritten:
      break;
    case RepoOutcome::IndexWritten:
      return {"MakeIndexWritten", MakeExitDone};
    case RepoOutcome::KeyExists:
      return {"MakeKeyExists", MakeExitWriteFailed};
    case RepoOutcome::CannotWrite:
      return {"MakeCannotWrite", MakeExitWriteFailed};
    case RepoOutcome::BadKey:
      return {"MakeBadKey", MakeExitReadFailed};
    case RepoOutcome::BadOldIndex:
      return {"MakeBadOldIndex", MakeExitReadFailed};
    case RepoOutcome::CannotRead:
      return {"MakeCannotRead", MakeExitReadFailed};
    case RepoOutcome::BadName:
      return {"MakeBadName", MakeExitTreeRefused};
    case RepoOutcome::NoTar:
      return {"MakeNoTar", MakeExitReadFailed};
    case RepoOutcome::BadIndexEntry:
      return {"MakeBadIndexEntry", MakeExitTreeRefused};
  }
  return {"", MakeExitDone};
}

// Says how a repository verb ended, except that new keys go without a word; gives the status.
int report(const RepoOutcome& outcome) {
  if (outcome.kind == RepoOutcome::KeysWritten) return MakeExitDone;
  const Report end = reportOf(outcome.kind);
  const std::string sentence = Lang::instance().get(
      end.key, outcome.path, std::to_string(outcome.serial), std::to_string(outcome.entries));
  if (end.status == MakeExitDone) {
    printMessage(sentence);
  } else {
    printError(sentence);
  }
  return end.status;
}

// The repository verbs: "--new-key PREFIX" alone, or "--index DIR [--sign KEY]".
int repositoryVerb(Args& args) {
  const bool newKey = args.optionExists("new-key", true);
  const bool index = args.optionExists("index", true);
  if (newKey == index || !args.getArguments().empty() || args.optionExists(STAMP_OPTION, true) ||
      (newKey && args.optionExists("sign", true))) {
    refuseCommandLine();
  }
  if (newKey) return report(RepoMaker::newKey(args.getValue("new-key")));
  // The index is dated now, unless the build fixes the time.
  const uint64_t date = std::getenv(EPOCH_VARIABLE) ? memberTime() : uint64_t(std::time(nullptr));
  return report(RepoMaker::index(args.getValue("index"), args.getValue("sign"), date));
}

}  // namespace

int main(int argc, char** argv) {
  keepStandardDescriptors();
  loadStartupLanguage();

  Args& args = Args::instance();
  for (const char* name : {"help", "h"}) args.addOption(name, false);
  args.addOption(STAMP_OPTION, true);
  for (const char* verb : {"new-key", "index", "sign"}) args.addOption(verb, true);
  if (!args.parse(argc, argv)) refuseCommandLine();
  if (args.optionExists("help", true) || args.optionExists("h", true)) {
    printMessage(Lang::instance().get("MakeHelp", zet::PROGRAM_VERSION));
    // A failed flush sets the error flag too, as an earlier failed write did.
    fflush(stdout);
    if (ferror(stdout)) {
      refuse(MakeExitWriteFailed, Lang::instance().get("MakeCannotWriteHelp"));
    }
    return MakeExitDone;
  }
  for (const char* verb : {"new-key", "index", "sign"}) {
    if (args.optionExists(verb, true)) return repositoryVerb(args);
  }
  if (args.getArguments().size() != 2 || timesGiven(argc, argv, STAMP_OPTION) > 1)
    refuseCommandLine();
  const std::string stamp = args.getValue(STAMP_OPTION);
  if (args.optionExists(STAMP_OPTION, true) && !validStamp(stamp)) {
    refuse(MakeExitLineRefused, Lang::instance().get("MakeBadStamp", stamp));
  }
  const uint64_t time = memberTime();
  const std::string dir = args.getArguments()[0];
  const std::string output = args.getArguments()[1];
  const std::string shortName = shortNameOfOutput(output);

  const PackageTree tree = readTree(dir, shortName, stamp, output);
  writePackage(tree, dir, output, time);
  return MakeExitDone;
}
