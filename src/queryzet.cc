// The driver of queryzet: reads the command line, asks the database under the root one
// question and prints the answer, plain and uncoloured so that it pipes, with an exit status
// that says how it went. It needs no root and writes nothing; only a question about a package
// file makes a scratch directory and runs tar and gzip, through zet's own loader.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "args.h"
#include "constants.h"
#include "driver.h"
#include "exitstatus.h"
#include "lang.h"
#include "messages.h"
#include "package.h"
#include "query.h"
#include "temparea.h"

namespace {

// Whether an answer so far needed something that it could not read.
bool problemTold = false;
// --format: lines of tab-separated fields for scripts in place of the plain answers; set from
// the command line before any answer.
bool formatted;

// Flushes the answer: a full disk or a closed standard output loses it, which the status says.
int finish() {
  // A failed flush leaves the stream's error mark set, as any failed write before it did.
  fflush(stdout);
  if (ferror(stdout)) {
    complain(Lang::instance().get("QueryErrorCannotWrite"), QueryExitUnwritten);
  }
  return runStatus();
}

void reportProblem(const Query::Problem& problem) {
  static const char* const KEYS[] = {"QueryErrorUnreadable", "QueryErrorNoFileList",
                                     "QueryErrorCannotCheck"};
  complain(Lang::instance().get(KEYS[problem.kind], problem.path), QueryExitUnreadable);
  problemTold = true;
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// Hands `answer` each installed package that the words name, in the order of the words; a
// word that names none is told in its place, after the answers to the words before it. With
// `headed`, and more than one package, each answer follows a line of its full name and ":".
void forEachPackage(const Query& query, const std::vector<std::string>& words, bool headed,
                    const std::function<void(const std::string&)>& answer) {
  std::vector<std::vector<std::string>> found;
  size_t packages = 0;
  for (const std::string& word : words) {
    found.push_back(query.find(word));
    packages += found.back().size();
  }
  for (size_t i = 0; i < words.size(); ++i) {
    if (found[i].empty()) {
      complain(Lang::instance().get("ErrorPackageNotInstalled", words[i]), QueryExitNotInstalled);
    }
    for (const std::string& fullName : found[i]) {
      if (headed && packages > 1) printLine(fullName + ":");
      answer(fullName);
    }
  }
}

// The fields of --format for a package, in the order that queryzet(8) gives.
void printFields(const Query::Info& info) {
  std::string line;
  for (const std::string& field :
       {info.fullName, info.name, info.version, info.architecture, info.build, info.buildStamp,
        std::to_string(info.compressedSizeK), std::to_string(info.uncompressedSizeK)}) {
    line += (line.empty() ? "" : "\t") + field;
  }
  printLine(line);
}

void answerList(const Query& query, const std::vector<std::string>& patterns) {
  const auto print = [&query](const std::string& fullName) {
    if (!formatted) {
      printLine(fullName);
    } else if (const std::optional<Query::Info> info = query.info(fullName)) {
      printFields(*info);
    }
  };
  if (patterns.empty()) {
    for (const std::string& fullName : query.installed()) print(fullName);
    return;
  }
  std::set<std::string> chosen;
  for (const std::string& pattern : patterns) {
    const std::vector<std::string> found = query.match(pattern);
    if (found.empty()) {
      complain(Lang::instance().get("QueryErrorNoMatch", pattern), QueryExitNotInstalled);
    }
    chosen.insert(found.begin(), found.end());
  }
  for (const std::string& fullName : chosen) print(fullName);
}

void printInfo(const Query::Info& info) {
  if (formatted) {
    printFields(info);
    return;
  }
  printMessage(Lang::instance().get(
      "QueryInfo", info.fullName, info.name, info.version, info.architecture, info.build,
      std::to_string(info.compressedSizeK), std::to_string(info.uncompressedSizeK), info.location,
      info.buildStamp, joined(info.deps), joined(info.scripts), std::to_string(info.files),
      std::to_string(info.links)));
  for (const std::string& line : info.description) printLine(line);
}

void answerInfo(const Query& query, const std::vector<std::string>& names) {
  bool first = true;
  forEachPackage(query, names, false, [&](const std::string& fullName) {
    const std::optional<Query::Info> info = query.info(fullName);
    if (!info) return;
    if (!first && !formatted) printLine("");
    first = false;
    printInfo(*info);
  });
}

// Each path of a package's --files, with --format behind its package's full name and a tab.
Query::PathVisitor pathPrinter(const std::string& fullName) {
  if (!formatted) return printLine;
  return [fullName](const std::string& path) { printLine(fullName + "\t" + path); };
}

void answerFiles(const Query& query, const std::vector<std::string>& names) {
  forEachPackage(query, names, !formatted, [&query](const std::string& fullName) {
    query.files(fullName, pathPrinter(fullName));
  });
}

void printDependencies(const std::vector<Query::Dependency>& dependencies) {
  for (const Query::Dependency& dependency : dependencies) {
    printMessage(dependency.providers.empty()
                     ? Lang::instance().get("QueryDependsMissing", dependency.name)
                     : Lang::instance().get("QueryDependsInstalled", dependency.name,
                                            joined(dependency.providers)));
  }
}

void answerOwner(const Query& query, const std::vector<std::string>& paths) {
  const std::vector<std::vector<Query::Owner>> owners = query.owners(paths);
  // Where a record could not be read, a path that no other lists has an unknown owner.
  const bool complete = !problemTold;
  for (size_t i = 0; i < paths.size(); ++i) {
    for (const Query::Owner& owner : owners[i]) printLine(owner.fullName + ": " + owner.path);
    if (!owners[i].empty()) continue;
    const std::string asked = query.underRoot("/" + Query::recordPath(query.fromRoot(paths[i])));
    if (complete) {
      complain(Lang::instance().get("QueryErrorNoOwner", asked), QueryExitNegative);
    } else {
      complain(Lang::instance().get("QueryErrorOwnerUnknown", asked), QueryExitUnreadable);
    }
  }
}

void answerVerify(const Query& query, const std::vector<std::string>& names) {
  const auto verify = [&query](const std::string& fullName) {
    query.verify(fullName, [&fullName](const std::string& path) {
      printLine(fullName + ": " + path);
      raiseStatus(QueryExitNegative);
    });
  };
  if (names.empty()) {
    for (const std::string& fullName : query.installed()) verify(fullName);
  } else {
    forEachPackage(query, names, false, verify);
  }
}

void answerDepends(const Query& query, const std::vector<std::string>& names) {
  forEachPackage(query, names, true, [&query](const std::string& fullName) {
    printDependencies(query.depends(fullName));
  });
}

void answerRdepends(const Query& query, const std::vector<std::string>& names) {
  forEachPackage(query, names, true, [&query](const std::string& fullName) {
    for (const std::string& dependant : query.rdepends(fullName)) printLine(dependant);
  });
}

void answerOrphans(const Query& query, const std::vector<std::string>&) {
  for (const std::string& fullName : query.orphans()) printLine(fullName);
}

void answerUnowned(const Query& query, const std::vector<std::string>& directories) {
  for (const std::string& path : query.unowned(directories)) {
    printLine(path);
    raiseStatus(QueryExitNegative);
  }
}

// The answers about a package file, which the database is not asked for unless `dependencies`.
void answerInfoOfFile(const Query&, const Package& package) {
  printInfo(Query::info(package));
}

void answerFilesOfFile(const Query& query, const Package& package) {
  query.files(package, pathPrinter(package.fullName));
}

void answerDependsOfFile(const Query& query, const Package& package) {
  printDependencies(query.depends(package));
}

// What a question takes besides its option.
enum Words { NoWords, AnyWords, SomeWords };

// The questions: exactly one stands on a command line. Those that have an answer about a
// package file take --package in place of words; those that take --format have a form for
// scripts.
const struct Question {
  const char* option;
  Words words;
  void (*answer)(const Query&, const std::vector<std::string>&);
  void (*answerFile)(const Query&, const Package&);
  bool takesFormat;
} QUESTIONS[] = {
    {"list", AnyWords, answerList, nullptr, true},
    {"info", SomeWords, answerInfo, answerInfoOfFile, true},
    {"files", SomeWords, answerFiles, answerFilesOfFile, true},
    {"owner", SomeWords, answerOwner, nullptr, false},
    {"verify", AnyWords, answerVerify, nullptr, false},
    {"depends", SomeWords, answerDepends, answerDependsOfFile, false},
    {"rdepends", SomeWords, answerRdepends, nullptr, false},
    {"orphans", NoWords, answerOrphans, nullptr, false},
    {"unowned", SomeWords, answerUnowned, nullptr, false},
};

// Loads the package file `path` with zet's own loader, in a scratch directory of its own that
// goes again at once, and answers `question` about it.
void answerPackageFile(const Query& query, const Question& question, const std::string& path) {
  // The loader insists on "LANG"; without it queryzet speaks and describes in "C" anyway.
  setenv("LANG", zet::FALLBACK_LANG, 0);
  TempArea& scratch = TempArea::instance();
  scratch.create(zet::TEMP_BASE, zet::TEMP_PREFIX);
  std::error_code ignored;
  std::filesystem::create_directory(scratch.getPath(), ignored);
  Package package;
  const bool loaded = package.loadFromFile(path);
  // Links in the scratch directory are removed, never followed.
  std::filesystem::remove_all(scratch.getPath(), ignored);
  if (loaded) {
    question.answerFile(query, package);
    return;
  }
  static const std::map<int32_t, const char*> KEYS = {{LoadExtractFailed, "ErrorUnknownTar"},
                                                      {LoadListFailed, "ErrorUnknownTar"},
                                                      {LoadBadName, "ErrorNotValidPackageName"},
                                                      {LoadNoFile, "ErrorFileDoNotExist"},
                                                      {LoadSizeInfoBad, "ErrorUnknownGzip"}};
  const auto key = KEYS.find(package.lastError);
  // The loader has told of an archive without install/ itself.
  if (key != KEYS.end()) {
    complain(Lang::instance().get(key->second, path), QueryExitUnreadable);
  } else {
    raiseStatus(QueryExitUnreadable);
  }
}

// Help wins whatever else the line holds, words that the parser refuses included.
bool helpAsked(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string name = Args::optionName(argv[i]);
    if (name == "help" || name == "h") return true;
  }
  return false;
}

const Question& questionAsked() {
  const Question* asked = nullptr;
  for (const Question& question : QUESTIONS) {
    if (!given(question.option)) continue;
    if (asked) refuseCommandLine();
    asked = &question;
  }
  const bool words = !Args::instance().getArguments().empty();
  if (!asked || (given("format") && !asked->takesFormat)) refuseCommandLine();
  if (given("package")) {
    if (!asked->answerFile || words) refuseCommandLine();
  } else if ((asked->words == SomeWords && !words) || (asked->words == NoWords && words)) {
    refuseCommandLine();
  }
  return *asked;
}

}  // namespace

int main(int argc, char** argv) {
  keepStandardDescriptors();
  // Without "LANG" both the sentences and the descriptions are those of "C".
  const std::string language = loadStartupLanguage();

  Args& args = Args::instance();
  for (const Question& question : QUESTIONS) args.addOption(question.option, false);
  for (const char* option : {"help", "h", "format"}) args.addOption(option, false);
  for (const char* option : {"root", "lang", "package"}) args.addOption(option, true);
  const bool parsed = args.parse(argc, argv);
  if (parsed && given("lang")) loadLanguage(args.getValue("lang"));
  if (helpAsked(argc, argv)) {
    printMessage(Lang::instance().get("QueryHelp", zet::PROGRAM_VERSION));
    return finish();
  }
  if (!parsed) refuseCommandLine();
  const Question& question = questionAsked();
  formatted = given("format");

  // Without --root the empty root leaves every database path as it is: "/var/log/packages".
  Query query(args.getValue("root"), language, reportProblem);
  // Of a package file's answers, only its dependencies need the database.
  const bool packageFile = given("package");
  const bool needsDatabase = !packageFile || question.answerFile == answerDependsOfFile;
  if (!query.open() && needsDatabase) {
    complain(Lang::instance().get("QueryErrorNoDatabase", query.underRoot(zet::PACKAGES_DIR)),
             QueryExitUnreadable);
    return runStatus();
  }
  if (packageFile) {
    answerPackageFile(query, question, args.getValue("package"));
  } else {
    question.answer(query, args.getArguments());
  }
  return finish();
}
