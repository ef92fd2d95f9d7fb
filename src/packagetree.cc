#include "packagetree.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "constants.h"
#include "descriptor.h"
#include "filesystem.h"
#include "linklines.h"
#include "smallfile.h"
#include "textutil.h"
#include "textvector.h"

namespace {

const std::string DOINST_MEMBER = std::string(zet::INSTALL_DIR_MEMBER) + zet::DOINST_SCRIPT;
const std::string BUILD_MEMBER = std::string(zet::INSTALL_DIR_MEMBER) + zet::BUILD_FILE;
const std::string DESCRIPTION_MEMBER = std::string(zet::INSTALL_DIR_MEMBER) + zet::DESCRIPTION_FILE;
const std::string CONTROL_FILES[] = {
    std::string(zet::INSTALL_DIR_MEMBER) + zet::PREINST_SCRIPT, DOINST_MEMBER,
    std::string(zet::INSTALL_DIR_MEMBER) + zet::POSTINST_SCRIPT,
    std::string(zet::INSTALL_DIR_MEMBER) + zet::DEPS_FILE, BUILD_MEMBER};
// Directories that are links on many systems, into usr/ or to /run. Unpacking such a member
// unlinks what stands in its way, and replaces the link by a directory.
constexpr const char* SYSTEM_LINK_DIRECTORIES[] = {"bin/",   "sbin/",    "lib/",     "lib32/",
                                                   "lib64/", "var/run/", "var/lock/"};
// Paths that a usual system holds as directories, or as links it needs (lib to usr/lib): the
// lines of a link begin with "rm -rf" on its path, which would delete such a directory with
// everything in it on install. The levels below hold packages' own names.
constexpr const char* SYSTEM_PATHS[] = {
    "bin",       "boot",        "dev",       "etc",       "home",      "lib",         "lib32",
    "lib64",     "libx32",      "media",     "mnt",       "opt",       "proc",        "root",
    "run",       "sbin",        "srv",       "sys",       "tmp",       "usr",         "var",
    "usr/bin",   "usr/include", "usr/lib",   "usr/lib32", "usr/lib64", "usr/libexec", "usr/libx32",
    "usr/local", "usr/sbin",    "usr/share", "usr/src",   "var/cache", "var/lib",     "var/lock",
    "var/log",   "var/opt",     "var/run",   "var/spool", "var/tmp"};
constexpr unsigned CONTROL_MODE = 0644;
constexpr unsigned CONTROL_DIR_MODE = 0755;

// zet keeps the paths of a package as tar lists them, and tar lists a backslash, a control
// character and a byte past ASCII (unless the locale prints it) as an escape, naming no file.
bool listedEscaped(const std::string& path) {
  return std::any_of(path.begin(), path.end(), [](char c) {
    return c == '\\' || static_cast<unsigned char>(c) < 0x20 ||
           static_cast<unsigned char>(c) >= 0x7f;
  });
}

// The directory install/ or something in it, by a path with or without its trailing "/".
bool isControl(const std::string& path) {
  return startsWith(path + "/", zet::INSTALL_DIR_MEMBER);
}

// install/slack-desc, or install/slack-desc.CODE: the loader reads a CODE of one character
// or more.
bool isDescription(std::string_view name) {
  return name == DESCRIPTION_MEMBER ||
         (name.size() > DESCRIPTION_MEMBER.size() + 1 && startsWith(name, DESCRIPTION_MEMBER) &&
          name[DESCRIPTION_MEMBER.size()] == '.');
}

// A file that zet reads from install/; a directory of such a name gives a package whose
// loader finds no such file, or, when makezet writes the file, both.
bool isControlFile(std::string_view path) {
  for (const std::string_view file : CONTROL_FILES) {
    if (path == file) return true;
  }
  return isDescription(path);
}

// Whether the link `relative` of the tree at `root` leads to a directory of that tree, followed
// as where the tree stands at "/": an absolute target and a ".." at the top stay inside it, so
// that the same tree gives the same answer on every machine.
bool leadsToDirectory(const std::string& root, const std::string& relative) {
  // A root that does not open leaves openat2 a bad descriptor, and the answer false.
  const Descriptor top(open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  open_how how{};
  how.flags = O_PATH | O_CLOEXEC;
  how.resolve = RESOLVE_IN_ROOT;
  const Descriptor end(
      static_cast<int>(syscall(SYS_openat2, top.get(), relative.c_str(), &how, sizeof how)));
  struct stat status;
  return end.valid() && fstat(end.get(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A line that a reader can tell for no description line: empty, a comment, or indented like
// the ruler that description files often carry. Every other line must start with "name:".
bool isDescriptionLine(const char* line) {
  return line[0] != '\0' && line[0] != '#' && line[0] != ' ' && line[0] != '\t';
}

}  // namespace

PackageTree PackageTree::read(const std::string& dir, const std::string& shortName,
                              const std::string& stamp, const std::string& outputPath) {
  PackageTree tree;
  tree.root = dir;
  // Packed, the package would grow by its former self on every run of "makezet . NAME.tgz";
  // refused, every second such run would fail.
  if (stat(outputPath.c_str(), &tree.outputStatus) != 0) tree.outputStatus = {};
  tree.walk("");
  tree.checkOwnLinkLines();
  tree.addControlFiles(stamp);
  tree.checkDescriptions(shortName);
  std::stable_sort(tree.members.begin(), tree.members.end(),
                   [](const ArchiveMember& a, const ArchiveMember& b) {
                     const bool aControl = isControl(a.name), bControl = isControl(b.name);
                     return aControl != bControl ? aControl : a.name < b.name;
                   });
  return tree;
}

void PackageTree::walk(const std::string& relative) {
  const std::string path = relative.empty() ? root : root + "/" + relative;
  DIR* handle = opendir(path.c_str());
  if (handle == nullptr) {
    problems.push_back({TreeFinding::Unreadable, path, ""});
    return;
  }
  std::vector<std::string> names;
  while (const dirent* entry = readdir(handle)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  closedir(handle);
  // In the order of the names, so that findings come out the same on every file system.
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) addEntry(relative.empty() ? name : relative + "/" + name);
}

void PackageTree::addEntry(const std::string& relative) {
  const std::string path = root + "/" + relative;
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) {
    problems.push_back({TreeFinding::Unreadable, path, ""});
    return;
  }
  // zet unpacks install/ into its scratch area and reads it there, so a link among the
  // control files could only lead it elsewhere.
  if (S_ISLNK(status.st_mode) && isControl(relative)) {
    problems.push_back({TreeFinding::LinkInControlFiles, relative, ""});
    return;
  }
  if (S_ISLNK(status.st_mode)) {
    if (pathReadsBack(relative)) addLink(relative);
    return;
  }
  if (S_ISREG(status.st_mode) && status.st_ino == outputStatus.st_ino &&
      status.st_dev == outputStatus.st_dev) {
    return;
  }
  const bool directory = S_ISDIR(status.st_mode);
  const std::string name = directory ? relative + "/" : relative;
  if (!pathReadsBack(name)) return;
  if (directory ? isControlFile(relative)
                : !S_ISREG(status.st_mode) || name + "/" == zet::INSTALL_DIR_MEMBER) {
    problems.push_back({TreeFinding::UnsupportedType, name, ""});
    return;
  }
  members.push_back({name, directory, status.st_mode & 07777u, path, ""});
  if (!directory) return;
  for (const char* system : SYSTEM_LINK_DIRECTORIES) {
    if (name == system) warnings.push_back({TreeFinding::SystemLinkDirectory, name, ""});
  }
  walk(relative);
}

// A member path must come back from the package's record as the line it was written as.
bool PackageTree::pathReadsBack(const std::string& name) {
  if (name.find_first_of(" \t\r\n") != std::string::npos) {
    problems.push_back({TreeFinding::BlankInPath, name, ""});
    return false;
  }
  if (listedEscaped(name)) {
    problems.push_back({TreeFinding::EscapedPath, name, ""});
    return false;
  }
  // A path cut into more lines leaves its last line unlike the whole.
  bool same = false;
  TextFile::forEachLineOf(name + "\n", [&](std::string_view line) { same = line == name; });
  if (!same) problems.push_back({TreeFinding::PathTooLong, name, ""});
  return same;
}

void PackageTree::addLink(const std::string& relative) {
  const std::string path = root + "/" + relative;
  std::string target;
  if (!FileSystem::linkTarget(path, target)) {
    problems.push_back({TreeFinding::Unreadable, path, ""});
    return;
  }
  if (!LinkLines::usable(relative, target)) {
    problems.push_back({TreeFinding::LinkUnusable, relative, target});
    return;
  }
  for (const char* system : SYSTEM_PATHS) {
    if (relative == system) problems.push_back({TreeFinding::LinkOverSystemPath, relative, ""});
  }
  if (leadsToDirectory(root, relative)) {
    warnings.push_back({TreeFinding::LinkToDirectory, relative, target});
  }
  links.push_back({relative, target});
}

// The member of a control file, added when the tree has none.
ArchiveMember& PackageTree::controlFile(const std::string& name) {
  for (ArchiveMember& member : members) {
    if (member.name == name) return member;
  }
  members.push_back({name, false, CONTROL_MODE, "", ""});
  return members.back();
}

// The tree's own doinst.sh may hold link lines too, and each begins with "rm -rf" on its
// path: at a directory that the package itself brings, it would delete that on install.
void PackageTree::checkOwnLinkLines() {
  for (const ArchiveMember& member : members) {
    if (member.name != DOINST_MEMBER || member.source.empty()) continue;
    const FileList paths = LinkLines::read(TextFile(member.source.c_str()));
    for (unsigned i = 0; i < paths.size(); ++i) {
      const std::string path = startsWith(paths[i], "./") ? paths[i] + 2 : paths[i];
      for (const ArchiveMember& other : members) {
        if (other.directory && other.name == path + "/") {
          problems.push_back({TreeFinding::LinkOverOwnDirectory, path, ""});
        }
      }
    }
    return;
  }
}

void PackageTree::addControlFiles(const std::string& stamp) {
  const std::string controlName = zet::INSTALL_DIR_MEMBER;
  if (std::none_of(members.begin(), members.end(),
                   [&](const ArchiveMember& member) { return member.name == controlName; })) {
    members.push_back({controlName, true, CONTROL_DIR_MODE, "", ""});
  }
  if (!links.empty()) {
    std::sort(links.begin(), links.end(),
              [](const Link& a, const Link& b) { return a.path < b.path; });
    std::string script;
    for (const Link& link : links) script += LinkLines::of(link.path, link.target);
    // The lines go ahead of the tree's own script, which may use the links.
    ArchiveMember& doinst = controlFile(DOINST_MEMBER);
    std::string own;
    if (!doinst.source.empty() && !SmallFile::read(doinst.source, zet::SCRIPT_LIMIT, own)) {
      problems.push_back({TreeFinding::Unreadable, doinst.source, ""});
    }
    doinst = {doinst.name, false, doinst.mode, "", script + own};
  }
  if (!stamp.empty()) {
    ArchiveMember& build = controlFile(BUILD_MEMBER);
    build = {build.name, false, build.mode, "", stamp + "\n"};
  }
}

void PackageTree::checkDescriptions(const std::string& shortName) {
  bool found = false;
  const std::string prefix = shortName + ":";
  for (const ArchiveMember& member : members) {
    // A directory of such a name is refused already.
    if (!isDescription(member.name)) continue;
    found = found || member.name == DESCRIPTION_MEMBER;
    TextFile lines;
    if (!lines.load(member.source.c_str())) {
      problems.push_back({TreeFinding::Unreadable, member.source, ""});
      continue;
    }
    for (unsigned i = 0; i < lines.size(); ++i) {
      if (isDescriptionLine(lines[i]) && !startsWith(lines[i], prefix)) {
        problems.push_back({TreeFinding::BadDescription, member.name, lines[i]});
      }
    }
  }
  if (!found) warnings.push_back({TreeFinding::NoDescription, DESCRIPTION_MEMBER, ""});
}
