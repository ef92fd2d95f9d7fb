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

#include "archivewriter.h"
#include "args.h"
#include "constants.h"
#include "filesystem.h"
#include "lang.h"
#include "linklines.h"
#include "messages.h"
#include "package.h"
#include "packagetree.h"
#include "repomaker.h"

namespace {

// Exit statuses of makezet, all in its manual page. Nothing is written unless the status is 0.
enum MakeStatus : int {
  MakeDone = 0,                               // the package was written, or the help shown
  MakeTreeRefused = 1,                        // the tree breaks a rule of the package format
  MakeNameRefused = 2,                        // OUTPUT is no package file name
  MakeReadFailed = 3,                         // the tree, or a file in it, could not be read
  MakeWriteFailed = 4,                        // OUTPUT's directory, gzip or the rename failed
  MakeLineRefused = zet::ExitBadCommandLine,  // command line, build stamp or SOURCE_DATE_EPOCH
};

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

// Every refusal of the command line looks like those of zet's other names.
[[noreturn]] void badLine() {
  printError(ErrorBadArgumentLine);
  std::exit(MakeLineRefused);
}

bool allDigits(const std::string& text) {
  for (const char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  }
  return !text.empty();
}

// DDMMYYYY, with a day of 01 to 31 and a month of 01 to 12: upgrades compare it as a date.
bool validStamp(const std::string& stamp) {
  if (stamp.size() != 8 || !allDigits(stamp)) return false;
  const int day = std::stoi(stamp.substr(0, 2));
  const int month = std::stoi(stamp.substr(2, 2));
  return day >= 1 && day <= 31 && month >= 1 && month <= 12;
}

// The time of every member: SOURCE_DATE_EPOCH when set, else the start of 1970, so that the
// same tree always gives the same bytes.
uint64_t memberTime() {
  const char* epoch = std::getenv(EPOCH_VARIABLE);
  if (epoch == nullptr) return 0;
  if (!allDigits(epoch) || std::string(epoch).size() > EPOCH_DIGITS) {
    refuse(MakeLineRefused, Lang::instance().get("MakeBadEpoch", epoch));
  }
  return std::strtoull(epoch, nullptr, 10);
}

// The short name, from OUTPUT by the rule that zet reads file names with; a name that the
// unquoted commands of zet would not pass on as one word is refused as well.
std::string shortNameOf(const std::string& output) {
  const std::string base = FileSystem::baseName(output);
  const std::string extension = zet::PACKAGE_EXTENSION;
  PackageName name;
  if (base.size() <= extension.size() ||
      base.compare(base.size() - extension.size(), extension.size(), extension) != 0 ||
      !name.parse(FileSystem::stripExtension(base)) || !LinkLines::plainWord(base)) {
    refuse(MakeNameRefused, Lang::instance().get("MakeBadName", output));
  }
  return name.name;
}

const char* keyOf(TreeFinding::Kind kind) {
  switch (kind) {
    case TreeFinding::Unreadable:
      return "MakeCannotRead";
    case TreeFinding::BlankInPath:
      return "MakeBlankInPath";
    case TreeFinding::PathTooLong:
      return "MakePathTooLong";
    case TreeFinding::UnsupportedType:
      return "MakeUnsupportedType";
    case TreeFinding::LinkUnusable:
      return "MakeLinkUnusable";
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
PackageTree readTree(const std::string& dir, const std::string& shortName,
                     const std::string& stamp) {
  PackageTree tree;
  if (!tree.read(dir, shortName, stamp)) {
    bool unreadable = false;
    for (const TreeFinding& problem : tree.problems) {
      printError(sentenceOf(problem));
      unreadable = unreadable || problem.kind == TreeFinding::Unreadable;
    }
    std::exit(unreadable ? MakeReadFailed : MakeTreeRefused);
  }
  for (const TreeFinding& warning : tree.warnings) printWarning(sentenceOf(warning));
  return tree;
}

// Writes the archive under a temporary name in OUTPUT's directory and renames it into place,
// so that a refusal, a failure or a signal never leaves a file under OUTPUT's name, and a
// package that was there stays whole until the new one replaces it.
void writePackage(const PackageTree& tree, const std::string& output, uint64_t time) {
  const size_t slash = output.rfind('/');
  const size_t start = slash == std::string::npos ? 0 : slash + 1;
  std::string temporary = output.substr(0, start) + "." + output.substr(start) + ".XXXXXX";
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, removePendingFile);
  // A gzip that dies must fail a write, not end this process with the file left behind.
  std::signal(SIGPIPE, SIG_IGN);
  const int file = mkstemp(&temporary[0]);
  if (file < 0) refuse(MakeWriteFailed, Lang::instance().get("MakeCannotWrite", output));
  pendingFile = temporary.c_str();
  const mode_t mask = umask(0);
  umask(mask);
  fchmod(file, 0666 & ~mask);

  ArchiveWriter writer;
  const ArchiveWriter::Result result = writer.write(tree.members, file, time);
  const bool closed = close(file) == 0;
  if (result == ArchiveWriter::Written && closed &&
      rename(temporary.c_str(), output.c_str()) == 0) {
    pendingFile = nullptr;
    return;
  }
  unlink(temporary.c_str());
  pendingFile = nullptr;
  if (result == ArchiveWriter::SourceUnreadable) {
    refuse(MakeReadFailed, Lang::instance().get("MakeCannotRead", writer.failedSource));
  }
  if (result == ArchiveWriter::GzipFailed) {
    refuse(MakeWriteFailed, Lang::instance().get("MakeGzipFailed"));
  }
  refuse(MakeWriteFailed, Lang::instance().get("MakeCannotWrite", output));
}

// The repository verbs: "--new-key PREFIX" alone, or "--index DIR [--sign KEY]".
int repositoryVerb(Args& args) {
  const bool newKey = args.optionExists("new-key", true);
  const bool index = args.optionExists("index", true);
  if (newKey == index || !args.getArguments().empty() || args.optionExists(STAMP_OPTION, true) ||
      (newKey && args.optionExists("sign", true))) {
    badLine();
  }
  if (newKey) return RepoMaker::newKey(args.getValue("new-key"));
  // The index is dated now, unless the build fixes the time.
  const uint64_t date = std::getenv(EPOCH_VARIABLE) ? memberTime() : uint64_t(std::time(nullptr));
  return RepoMaker::index(args.getValue("index"), args.getValue("sign"), date);
}

}  // namespace

int main(int argc, char** argv) {
  const char* lang = std::getenv("LANG");
  loadLanguage(lang ? lang : zet::FALLBACK_LANG);

  Args& args = Args::instance();
  args.clear();
  for (const char* name : {"help", "h"}) args.addOption(name, false);
  args.addOption(STAMP_OPTION, true);
  for (const char* verb : {"new-key", "index", "sign"}) args.addOption(verb, true);
  if (!args.parse(argc, argv)) badLine();
  if (args.optionExists("help", true) || args.optionExists("h", true)) {
    printMessage(Lang::instance().get("MakeHelp", zet::PROGRAM_VERSION));
    return MakeDone;
  }
  for (const char* verb : {"new-key", "index", "sign"}) {
    if (args.optionExists(verb, true)) return repositoryVerb(args);
  }
  if (args.getArguments().size() != 2) badLine();
  const std::string stamp = args.getValue(STAMP_OPTION);
  if (args.optionExists(STAMP_OPTION, true) && !validStamp(stamp)) {
    refuse(MakeLineRefused, Lang::instance().get("MakeBadStamp", stamp));
  }
  const uint64_t time = memberTime();
  const std::string dir = args.getArguments()[0];
  const std::string output = args.getArguments()[1];
  const std::string shortName = shortNameOf(output);

  const PackageTree tree = readTree(dir, shortName, stamp);
  writePackage(tree, output, time);
  return MakeDone;
}
