#include "packagearchive.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string_view>
#include <utility>

#include "constants.h"
#include "descriptor.h"
#include "smallfile.h"

extern char** environ;

namespace {

// From the PATH, not /lib/zetutils: packages are made where zet is not installed, as in its build.
constexpr const char* TAR_PROGRAM = "tar";
constexpr const char* GZIP_PROGRAM = "gzip";
// Options in these variables would change the bytes: the tools run without them.
constexpr std::string_view TOOL_VARIABLES[] = {"TAR_OPTIONS=", "GZIP="};
// In the stage: the link to the tree, and the list of members that tar reads.
constexpr const char* TREE_LINK = "tree";
constexpr const char* MEMBER_LIST = "members";

// The stage directory and what is put into it, taken away in reverse order on destruction.
class Stage {
 public:
  ~Stage() {
    for (auto made = entries.rbegin(); made != entries.rend(); ++made) {
      made->second ? rmdir(made->first.c_str()) : unlink(made->first.c_str());
    }
  }
  bool make(std::string pattern) {
    if (mkdtemp(&pattern[0]) == nullptr) return false;
    root = pattern;
    entries.push_back({root, true});
    return true;
  }
  const std::string& directory() const { return root; }
  std::string path(const std::string& name) const { return root + "/" + name; }
  bool addDirectory(const std::string& name) {
    if (mkdir(path(name).c_str(), 0700) != 0) return false;
    entries.push_back({path(name), true});
    return true;
  }
  bool addLink(const std::string& name, const std::string& target) {
    if (symlink(target.c_str(), path(name).c_str()) != 0) return false;
    entries.push_back({path(name), false});
    return true;
  }
  bool addFile(const std::string& name, const std::string& content, unsigned mode) {
    entries.push_back({path(name), false});
    return SmallFile::write(path(name), content, mode);
  }

 private:
  std::string root;
  std::vector<std::pair<std::string, bool>> entries;  // each path, and whether a directory
};

// The environment of the tools: this one without TOOL_VARIABLES.
std::vector<char*> toolEnvironment() {
  std::vector<char*> kept;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    bool dropped = false;
    for (const std::string_view name : TOOL_VARIABLES) {
      dropped = dropped || std::string_view(*variable).substr(0, name.size()) == name;
    }
    if (!dropped) kept.push_back(*variable);
  }
  kept.push_back(nullptr);
  return kept;
}

// Starts `arguments` with `input` and `output` as its standard input and output and no signal
// blocked; 0 when it could not be started.
pid_t start(const std::vector<std::string>& arguments, int input, int output) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(&argument[0]));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t child;
  std::vector<char*> environment = toolEnvironment();
  const int failed =
      posix_spawnp(&child, argv[0], &actions, &attributes, argv.data(), environment.data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return failed ? 0 : child;
}

std::vector<std::string> tarArguments(const std::string& stage, uint64_t time) {
  return {TAR_PROGRAM, "--create", "--file=-", "--directory=" + stage, "--format=gnu",
          "--no-recursion",
          // A link among the control files goes in as the file that it leads to.
          "--dereference", "--owner=root:0", "--group=root:0", "--mtime=@" + std::to_string(time),
          std::string("--transform=s,^") + TREE_LINK + "/,,",
          // The list holds each name as it stands, ended by a NUL.
          "--null", "--verbatim-files-from", "--files-from=-"};
}

// Whether a child ended with status 0.
bool succeeded(int status) {
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Waits for both children, whose statuses land in `statuses`; one of `signals` other than
// SIGCHLD ends both, and is returned (0 when none came).
int waitFor(pid_t (&children)[2], int (&statuses)[2], const sigset_t& signals) {
  int caught = 0;
  for (int left = (children[0] != 0) + (children[1] != 0); left > 0;) {
    const int signal = sigwaitinfo(&signals, nullptr);
    if (signal > 0 && signal != SIGCHLD && caught == 0) {
      caught = signal;
      for (const pid_t child : children) {
        if (child != 0) kill(child, SIGTERM);
      }
    }
    for (int i = 0; i < 2; ++i) {
      if (children[i] != 0 && waitpid(children[i], &statuses[i], WNOHANG) == children[i]) {
        children[i] = 0;
        --left;
      }
    }
  }
  return caught;
}

// Lays out the stage, runs tar into gzip into `output`, and takes the stage away again.
PackageArchive::Result pack(const std::vector<ArchiveMember>& members, const std::string& tree,
                            const std::string& stagePattern, int output, uint64_t time,
                            const sigset_t& signals, int& caught) {
  Stage stage;
  // What makezet makes lies in install/, which the stage holds in any case; its mode is that
  // of the member when makezet makes install/ too, and unused when the tree has it.
  bool laid = stage.make(stagePattern) && stage.addLink(TREE_LINK, tree) &&
              stage.addDirectory(zet::INSTALL_DIR_MEMBER);
  std::string list;
  for (const ArchiveMember& member : members) {
    if (!member.source.empty()) {
      list += std::string(TREE_LINK) + "/" + member.name + '\0';
      continue;
    }
    list += member.name + '\0';
    if (member.directory) {
      laid = laid && chmod(stage.path(member.name).c_str(), member.mode) == 0;
      continue;
    }
    laid = laid && stage.addFile(member.name, member.content, member.mode);
  }
  if (!laid || !stage.addFile(MEMBER_LIST, list, 0600)) return PackageArchive::StageFailed;
  Descriptor listFile(open(stage.path(MEMBER_LIST).c_str(), O_RDONLY | O_CLOEXEC));
  int ends[2];
  if (!listFile.valid() || pipe2(ends, O_CLOEXEC) != 0) return PackageArchive::StageFailed;
  Descriptor reading(ends[0]), writing(ends[1]);
  const pid_t gzip = start({GZIP_PROGRAM, "-n"}, reading.get(), output);
  const pid_t tar =
      gzip != 0 ? start(tarArguments(stage.directory(), time), listFile.get(), writing.get()) : 0;
  // Only the children keep the pipe open: gzip sees the end of its input when tar is done,
  // and tar gets SIGPIPE instead of blocking when gzip has failed.
  reading.close();
  writing.close();
  pid_t children[2] = {gzip, tar};
  int statuses[2] = {};
  caught = waitFor(children, statuses, signals);
  if (caught != 0) return PackageArchive::Interrupted;
  if (gzip == 0 || !succeeded(statuses[0])) return PackageArchive::GzipFailed;
  if (tar == 0 || !succeeded(statuses[1])) return PackageArchive::TarFailed;
  return PackageArchive::Written;
}

}  // namespace

PackageArchive::Result PackageArchive::write(const std::vector<ArchiveMember>& members,
                                             const std::string& tree,
                                             const std::string& stagePattern, int output,
                                             uint64_t time) {
  for (const ArchiveMember& member : members) {
    if (member.directory || member.source.empty()) continue;
    if (!Descriptor(open(member.source.c_str(), O_RDONLY | O_CLOEXEC)).valid()) {
      failedSource = member.source;
      return SourceUnreadable;
    }
  }
  std::error_code unresolved;
  const std::string treePath = std::filesystem::canonical(tree, unresolved);
  if (unresolved) {
    failedSource = tree;
    return SourceUnreadable;
  }

  sigset_t signals, previous;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, &previous);
  int caught = 0;
  const Result result = pack(members, treePath, stagePattern, output, time, signals, caught);
  sigprocmask(SIG_SETMASK, &previous, nullptr);
  if (caught == 0) return result;
  raise(caught);
  return Interrupted;
}
