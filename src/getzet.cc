// The driver of getzet: reads the command line, and updates the kept indexes of the
// repositories, searches and describes what they offer, fetches packages into the cache, or
// installs and upgrades them with installzet and upgradezet, turning every finding into a
// message and the exit status. Searching, describing and listing upgrades read the kept
// indexes alone, with no network and no root.
#include <fnmatch.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "args.h"
#include "constants.h"
#include "database.h"
#include "driver.h"
#include "exitstatus.h"
#include "installplan.h"
#include "lang.h"
#include "messages.h"
#include "repository.h"
#include "runlock.h"

namespace {

// Downloads at a time, --jobs.
unsigned parallel = 4;

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

// Downloads in parallel print one at a time.
std::mutex printing;

// A bar on a terminal, redrawn as the bytes come; otherwise, and when several files come at
// once, a line once the file is whole.
class ProgressShown {
 public:
  ProgressShown(const std::string& file, bool alone)
      : file(file), terminal(alone && isatty(STDERR_FILENO)) {}

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
      const std::lock_guard<std::mutex> hold(printing);
      fprintf(stderr, "%s\n", Lang::instance().get("GetDownloaded", file).c_str());
    }
  }

 private:
  std::string file;
  bool terminal;
  bool moved = false;
};

void fetch(Repositories& repositories, const std::vector<std::string>& names) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  for (const Repositories::Offer& offer : offersOf(kept, names)) {
    std::vector<Repositories::Failure> failures;
    ProgressShown progress(offer.entry->file, true);
    const std::optional<std::string> path =
        repositories.fetch(offer, progress.callback(), failures);
    progress.finish(path.has_value());
    report(failures, path.has_value(),
           Lang::instance().get("GetErrorFetchFailed", offer.entry->file));
    if (!path) continue;
    // Each path as soon as its file is whole, for a reader that goes on with it meanwhile.
    printLine(*path);
    fflush(stdout);
  }
}

void clean(Repositories& repositories, const std::vector<std::string>&) {
  if (!repositories.clean()) {
    complain(Lang::instance().get("GetErrorClean", repositories.cacheDir()), GetExitFailed);
  }
}

// A file of the plan fetched, or the failures of every try.
struct Fetched {
  std::optional<std::string> path;
  std::vector<Repositories::Failure> failures;
};

// Fetches the files of the plan, `jobs` at a time. Threads rather than one multi transfer,
// so that each file keeps its own walk over the mirrors, its resume and its checks.
std::vector<Fetched> fetchAll(Repositories& repositories, const InstallPlan& plan, unsigned jobs) {
  std::vector<Fetched> fetched(plan.steps.size());
  std::atomic<size_t> next{0};
  const auto work = [&]() {
    for (size_t i; (i = next++) < plan.steps.size();) {
      const Repositories::Offer& offer = plan.steps[i].offer;
      ProgressShown progress(offer.entry->file, jobs == 1);
      fetched[i].path = repositories.fetch(offer, progress.callback(), fetched[i].failures);
      progress.finish(fetched[i].path.has_value());
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 1; i < std::min<size_t>(jobs, plan.steps.size()); ++i)
    threads.emplace_back(work);
  work();
  for (std::thread& thread : threads) thread.join();
  return fetched;
}

// The command line that installs a step's file: installzet, or upgradezet for an upgrade.
std::vector<std::string> commandOf(const InstallPlan::Step& step, const std::string& path) {
  std::vector<std::string> words = {step.replaced.empty() ? "installzet" : "upgradezet"};
  if (given("root")) {
    words.push_back("--root");
    words.push_back(Args::instance().getValue("root"));
  }
  words.push_back(path);
  return words;
}

std::string joined(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

// Runs the command directly, never through a shell; its status, or -1 when it did not run.
int run(const std::vector<std::string>& words) {
  std::vector<char*> argv;
  for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  fflush(stdout);
  pid_t child;
  int status;
  if (posix_spawnp(&child, argv[0], nullptr, nullptr, argv.data(), environ) != 0 ||
      waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
    return -1;
  }
  return WEXITSTATUS(status);
}

// Tells what stops the plan, and that there is nothing to do; true in both cases.
bool stopped(const InstallPlan& plan) {
  for (const InstallPlan::Finding& finding : plan.findings) {
    switch (finding.problem) {
      case InstallPlan::NotFound:
        if (finding.neededBy.empty()) {
          complain(Lang::instance().get("GetErrorNotFound", finding.name), GetExitNotFound);
        } else {
          complain(Lang::instance().get("GetErrorDepNotFound", finding.name, finding.neededBy),
                   GetExitNotFound);
        }
        break;
      case InstallPlan::NotInstalled:
        complain(Lang::instance().get("GetErrorNotInstalled", finding.name), GetExitNotFound);
        break;
      case InstallPlan::Loop:
        complain(Lang::instance().get("GetErrorLoop", finding.name), GetExitUnverified);
        break;
    }
  }
  for (const std::string& name : plan.installed) {
    printMessage(Lang::instance().get("GetAlreadyInstalled", name));
  }
  if (!plan.findings.empty()) return true;
  if (plan.steps.empty()) printMessage(Lang::instance().get("GetNothingToDo"));
  return plan.steps.empty();
}

// Fetches and checks the whole plan, then installs it step by step; the first step that fails
// ends the run, telling what was done and what not.
void carryOut(Repositories& repositories, const InstallPlan& plan) {
  if (stopped(plan)) return;
  if (given("dry-run")) {
    for (const InstallPlan::Step& step : plan.steps) {
      const std::string& file = step.offer.entry->file;
      printMessage(Lang::instance().get("GetPlanFetch", step.offer.kept->repo.urls[0], file));
    }
    for (const InstallPlan::Step& step : plan.steps) {
      const std::string path = repositories.cacheDir() + "/" + step.offer.entry->file;
      printMessage(Lang::instance().get("GetPlanRun", joined(commandOf(step, path))));
    }
    return;
  }
  const std::vector<Fetched> fetched = fetchAll(repositories, plan, parallel);
  bool whole = true;
  for (size_t i = 0; i < fetched.size(); ++i) {
    report(fetched[i].failures, fetched[i].path.has_value(),
           Lang::instance().get("GetErrorFetchFailed", plan.steps[i].offer.entry->file));
    whole = whole && fetched[i].path.has_value();
  }
  if (!whole) {
    complain(Lang::instance().get("GetErrorNothingInstalled"), GetExitFailed);
    return;
  }
  for (size_t i = 0; i < plan.steps.size(); ++i) {
    const std::vector<std::string> command = commandOf(plan.steps[i], *fetched[i].path);
    const int toolStatus = run(command);
    if (toolStatus == 0) continue;
    std::string done, left;
    for (size_t j = 0; j < plan.steps.size(); ++j) {
      std::string& list = j < i ? done : left;
      list += (list.empty() ? "" : " ") + plan.steps[j].offer.entry->fullName();
    }
    complain(Lang::instance().get("GetErrorToolFailed", command[0], std::to_string(toolStatus),
                                  *fetched[i].path, done, left),
             GetExitToolFailed);
    return;
  }
}

Database databaseOf() {
  Database database = Database::asShown(Args::instance().getValue("root"));
  database.load();
  return database;
}

void install(Repositories& repositories, const std::vector<std::string>& names) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  const Database database = databaseOf();
  carryOut(repositories, InstallPlan::install(kept, database, names));
}

void upgrade(Repositories& repositories, const std::vector<std::string>& names) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  const Database database = databaseOf();
  carryOut(repositories, InstallPlan::upgrade(kept, database, names));
}

// Each upgrade as data: the installed full name and the one that replaces it; a package that
// comes new with them stands alone.
void listUpgrades(Repositories& repositories, const std::vector<std::string>& names) {
  const std::vector<Repositories::Kept> kept = keptIndexes(repositories);
  const Database database = databaseOf();
  const InstallPlan plan = InstallPlan::upgrade(kept, database, names);
  if (stopped(plan)) return;
  for (const InstallPlan::Step& step : plan.steps) {
    printLine((step.replaced.empty() ? "" : step.replaced + " ") + step.offer.entry->fullName());
  }
}

// The verbs: exactly one stands on a command line.
enum Words { NoWords, SomeWords, AnyWords };
const struct Verb {
  const char* option;
  Words words;
  bool changes;
  bool plans;  // takes --dry-run
  void (*run)(Repositories&, const std::vector<std::string>&);
} VERBS[] = {
    {"update", NoWords, true, false, update},
    {"search", SomeWords, false, false, search},
    {"info", SomeWords, false, false, info},
    {"fetch", SomeWords, true, false, fetch},
    {"clean", NoWords, true, false, clean},
    {"install", SomeWords, true, true, install},
    {"upgrade", AnyWords, true, true, upgrade},
    {"list-upgrades", AnyWords, false, false, listUpgrades},
};

const Verb& verbAsked() {
  const Verb* asked = nullptr;
  for (const Verb& verb : VERBS) {
    if (!given(verb.option)) continue;
    if (asked) refuseCommandLine();
    asked = &verb;
  }
  if (!asked) refuseCommandLine();
  const bool words = !Args::instance().getArguments().empty();
  if ((asked->words == NoWords && words) || (asked->words == SomeWords && !words) ||
      (given("dry-run") && !asked->plans)) {
    refuseCommandLine();
  }
  return *asked;
}

// The number of parallel downloads: a number from 1 to 64; else the command line is refused.
unsigned jobsOf(const std::string& text) {
  constexpr unsigned MOST = 64;
  if (text.empty() || text.size() > 2 ||
      text.find_first_not_of("0123456789") != std::string::npos || std::stoul(text) == 0 ||
      std::stoul(text) > MOST) {
    refuseCommandLine();
  }
  return static_cast<unsigned>(std::stoul(text));
}

}  // namespace

int main(int argc, char** argv) {
  keepStandardDescriptors();
  loadStartupLanguage();

  Args& args = Args::instance();
  for (const Verb& verb : VERBS) args.addOption(verb.option, false);
  for (const char* option : {"help", "h", "dry-run"}) args.addOption(option, false);
  for (const char* option : {"root", "lang", "jobs"}) args.addOption(option, true);
  if (!args.parse(argc, argv)) refuseCommandLine();
  if (given("lang")) loadLanguage(args.getValue("lang"));
  if (given("help") || given("h")) {
    printMessage(Lang::instance().get("GetHelp", zet::PROGRAM_VERSION));
    return GetExitOk;
  }
  const Verb& verb = verbAsked();
  if (given("jobs")) parallel = jobsOf(args.getValue("jobs"));
  const bool changes = verb.changes && !given("dry-run");
  if (changes && geteuid() != 0) {
    printError(ErrorNotRoot);
    return GetExitNotRoot;
  }
  Repositories repositories(args.getValue("root"));
  // A second run waits rather than gives up: running one after the other is what starting
  // both asked for. It says whom it waits for, so that a run that hangs can be found.
  RunLock lock(repositories.lockPath());
  RunLock::Attempt attempt = changes ? lock.tryTake() : RunLock::Taken;
  if (attempt == RunLock::Busy) {
    printWarning(Lang::instance().get("GetWaitingForLock", repositories.lockPath(), lock.holder()));
    attempt = lock.take() ? RunLock::Taken : RunLock::Unopened;
  }
  // A lock file that cannot be opened is told at once, not waited for.
  if (attempt != RunLock::Taken) {
    printError(Lang::instance().get("GetErrorLock", repositories.lockPath()));
    return GetExitFailed;
  }
  verb.run(repositories, args.getArguments());
  return runStatus();
}
