// The driver of getzet: reads the command line, and updates the kept indexes of the
// repositories, searches and describes what they offer, or fetches packages into the cache,
// turning every finding into a message and the exit status. Searching and describing read
// the kept indexes alone, with no network and no root.
#include <fnmatch.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "args.h"
#include "constants.h"
#include "driver.h"
#include "exitstatus.h"
#include "lang.h"
#include "messages.h"
#include "repository.h"

namespace {

int status = GetExitOk;

void raiseStatus(int exitStatus) {
  status = std::max(status, exitStatus);
}

bool given(const char* name) {
  return Args::instance().optionExists(name, true);
}

void complain(const std::string& sentence, int exitStatus) {
  fflush(stdout);
  printError(sentence);
  raiseStatus(exitStatus);
}

// Answers are data, never translated, so that scripts can read them.
void printLine(const std::string& line) {
  fwrite(line.data(), 1, line.size(), stdout);
  fputc('\n', stdout);
}

const char* problemKey(RepoIndex::Problem problem) {
  static const char* const KEYS[] = {"GetIndexNoFormat",   "GetIndexBadSerial", "GetIndexBadLine",
                                     "GetIndexBadFile",    "GetIndexBadName",   "GetIndexNoSize",
                                     "GetIndexNoChecksum", "GetIndexBadWord"};
  return KEYS[problem];
}

// The sentence of a failure, and the status it gives.
std::string sentenceOf(const Repositories::Failure& failure, int& exitStatus) {
  using Failure = Repositories::Failure;
  static const char* const KEYS[] = {"GetErrorNoKey",    "GetErrorTransfer",   "GetErrorTooLarge",
                                     "GetErrorUnsigned", "GetErrorUnknownKey", "GetErrorForged",
                                     "GetErrorHostile",  "GetErrorReplayed",   "GetErrorSize",
                                     "GetErrorChecksum", "GetErrorDisk"};
  exitStatus = failure.kind == Failure::Transfer || failure.kind == Failure::Disk
                   ? GetExitFailed
                   : GetExitUnverified;
  const std::string detail = failure.kind == Failure::Hostile
                                 ? Lang::instance().get(problemKey(failure.problem), failure.detail)
                                 : failure.detail;
  return Lang::instance().get(KEYS[failure.kind], failure.where, detail);
}

// Failures after which the work still got done are warnings; otherwise errors that raise the
// status, followed by `summary`.
void report(const std::vector<Repositories::Failure>& failures, bool done,
            const std::string& summary) {
  int worst = GetExitOk;
  for (const Repositories::Failure& failure : failures) {
    int exitStatus;
    const std::string sentence = sentenceOf(failure, exitStatus);
    worst = std::max(worst, exitStatus);
    if (done) {
      fflush(stdout);
      printWarning(sentence);
    } else {
      complain(sentence, exitStatus);
    }
  }
  if (!done) complain(summary, std::max(worst, int(GetExitFailed)));
}

RepoConfig readConfig(const Repositories& repositories) {
  RepoConfig config;
  if (!config.read(repositories.configPath())) {
    complain(Lang::instance().get("GetErrorNoConfig", repositories.configPath()), GetExitFailed);
  }
  for (const RepoConfig::BadLine& bad : config.badLines) {
    complain(Lang::instance().get("GetErrorConfigLine", repositories.configPath(),
                                  std::to_string(bad.line), bad.text),
             GetExitFailed);
  }
  return config;
}

std::vector<Repositories::Kept> keptIndexes(const Repositories& repositories) {
  std::vector<Repositories::Failure> failures;
  std::vector<Repositories::Kept> kept =
      repositories.kept(readConfig(repositories).repos, failures);
  for (const Repositories::Failure& failure : failures) {
    int exitStatus;
    const std::string sentence = sentenceOf(failure, exitStatus);
    complain(sentence, exitStatus);
  }
  for (const Repositories::Kept& one : kept) {
    if (!one.index) printWarning(Lang::instance().get("GetWarningNotUpdated", one.repo.name));
  }
  return kept;
}

void update(Repositories& repositories, const std::vector<std::string>&) {
  for (const RepoConfig::Repo& repo : readConfig(repositories).repos) {
    std::vector<Repositories::Failure> failures;
    const bool updated = repositories.update(repo, failures);
    report(failures, updated, Lang::instance().get("GetErrorRepoFailed", repo.name));
    if (updated) printMessage(Lang::instance().get("GetUpdated", repo.name));
  }
}

bool describedBy(const IndexEntry& entry, const std::string& pattern) {
  std::string word;
  for (const char c : entry.description + " ") {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_' && c != '.' &&
        c != '+') {
      if (!word.empty() && fnmatch(pattern.c_str(), word.c_str(), FNM_CASEFOLD) == 0) return true;
      word.clear();
    } else {
      word += c;
    }
  }
  return false;
}

void search(Repositories& repositories, const std::vector<std::string>& patterns) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  std::set<std::string> lines;
  for (const std::string& pattern : patterns) {
    bool found = false;
    for (const Repositories::Kept& one : kept) {
      if (!one.index) continue;
      for (const IndexEntry& entry : one.index->entries) {
        if (fnmatch(pattern.c_str(), entry.name.c_str(), 0) != 0 && !describedBy(entry, pattern)) {
          continue;
        }
        found = true;
        lines.insert(entry.fullName() + (entry.description.empty() ? "" : ": ") +
                     entry.description);
      }
    }
    if (!found) complain(Lang::instance().get("GetErrorNoMatch", pattern), GetExitNotFound);
  }
  for (const std::string& line : lines) printLine(line);
}

// The package that each name stands for, in the order of the names; a name that no index
// offers is told.
std::vector<Repositories::Offer> offersOf(const std::vector<Repositories::Kept>& kept,
                                          const std::vector<std::string>& names) {
  std::vector<Repositories::Offer> offers;
  for (const std::string& name : names) {
    const std::optional<Repositories::Offer> offer = Repositories::find(kept, name);
    if (offer) {
      offers.push_back(*offer);
    } else {
      complain(Lang::instance().get("GetErrorNotFound", name), GetExitNotFound);
    }
  }
  return offers;
}

void info(Repositories& repositories, const std::vector<std::string>& names) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  bool first = true;
  for (const Repositories::Offer& offer : offersOf(kept, names)) {
    const IndexEntry& entry = *offer.entry;
    std::string deps;
    for (const std::string& dep : entry.deps) deps += (deps.empty() ? "" : " ") + dep;
    if (!first) printLine("");
    first = false;
    printMessage(Lang::instance().get("GetInfo", entry.fullName(), entry.name,
                                      offer.kept->repo.name, entry.file, std::to_string(entry.size),
                                      entry.sha256, entry.build, deps, entry.description));
  }
}

// A bar on a terminal, redrawn as the bytes come; otherwise a line once the file is whole.
class ProgressShown {
 public:
  explicit ProgressShown(const std::string& file) : file(file) {}

  Download::Progress callback() {
    return [this](uint64_t now, uint64_t total) {
      moved = moved || now > 0;
      if (!terminal) return;
      constexpr uint64_t WIDTH = 30;
      const uint64_t filled = total > 0 ? std::min(now, total) * WIDTH / total : 0;
      fprintf(stderr, "\r%s [%s%s] %llu", file.c_str(), std::string(filled, '#').c_str(),
              std::string(WIDTH - filled, ' ').c_str(), static_cast<unsigned long long>(now));
    };
  }
  void finish(bool whole) {
    if (terminal && moved) fputc('\n', stderr);
    if (!terminal && moved && whole) {
      fprintf(stderr, "%s\n", Lang::instance().get("GetDownloaded", file).c_str());
    }
  }

 private:
  std::string file;
  bool terminal = isatty(STDERR_FILENO);
  bool moved = false;
};

void fetch(Repositories& repositories, const std::vector<std::string>& names) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  for (const Repositories::Offer& offer : offersOf(kept, names)) {
    std::vector<Repositories::Failure> failures;
    ProgressShown progress(offer.entry->file);
    const std::optional<std::string> path =
        repositories.fetch(offer, progress.callback(), failures);
    progress.finish(path.has_value());
    report(failures, path.has_value(),
           Lang::instance().get("GetErrorFetchFailed", offer.entry->file));
    if (path) printLine(*path);
  }
}

void clean(Repositories& repositories, const std::vector<std::string>&) {
  if (!repositories.clean()) {
    complain(Lang::instance().get("GetErrorClean", repositories.cacheDir()), GetExitFailed);
  }
}

// The verbs: exactly one stands on a command line.
const struct Verb {
  const char* option;
  bool takesWords;
  bool changes;
  void (*run)(Repositories&, const std::vector<std::string>&);
} VERBS[] = {
    {"update", false, true, update}, {"search", true, false, search}, {"info", true, false, info},
    {"fetch", true, true, fetch},    {"clean", false, true, clean},
};

const Verb& verbAsked() {
  const Verb* asked = nullptr;
  for (const Verb& verb : VERBS) {
    if (!given(verb.option)) continue;
    if (asked) refuseCommandLine(false);
    asked = &verb;
  }
  if (!asked || asked->takesWords == Args::instance().getArguments().empty())
    refuseCommandLine(false);
  return *asked;
}

}  // namespace

int main(int argc, char** argv) {
  loadStartupLanguage();

  Args& args = Args::instance();
  for (const Verb& verb : VERBS) args.addOption(verb.option, false);
  for (const char* option : {"help", "h"}) args.addOption(option, false);
  for (const char* option : {"root", "lang"}) args.addOption(option, true);
  if (!args.parse(argc, argv)) refuseCommandLine(false);
  if (given("lang")) loadLanguage(args.getValue("lang"));
  if (given("help") || given("h")) {
    printMessage(Lang::instance().get("GetHelp", zet::PROGRAM_VERSION));
    return GetExitOk;
  }
  const Verb& verb = verbAsked();
  if (verb.changes && geteuid() != 0) {
    printError(ErrorNotRoot);
    return GetExitNotRoot;
  }
  Repositories repositories(args.getValue("root"));
  verb.run(repositories, args.getArguments());
  fflush(stdout);
  return status;
}
