// The fixed paths, names and texts that every unit shares, spelled once, and the
// assertion that stops the program on a state that cannot occur.
#ifndef ZET_CONSTANTS_H
#define ZET_CONSTANTS_H

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>

namespace zet {

// The scratch directory of a run is TEMP_BASE "/" TEMP_PREFIX and a number.
constexpr const char* TEMP_BASE = "/tmp";
constexpr const char* TEMP_PREFIX = "zet-";

constexpr const char* LANG_DIR = "/usr/share/zet/lang";
constexpr const char* FALLBACK_LANG = "C";
constexpr const char* LANG_EXTENSION = ".lang";

// The external tools always come from the running system, whatever the installation root.
constexpr const char* GZIP_TOOL = "/lib/zetutils/gzip";
constexpr const char* TAR_TOOL = "/lib/zetutils/tar";
constexpr const char* DIALOG_TOOL = "/lib/zetutils/dialog";

constexpr const char* CONFIG_FILE = "/etc/zet.conf";
constexpr const char* CONFIG_SECTION = "zet";
constexpr const char* CONFIG_DEPS_KEY = "deps";

// The database tree, relative to the installation root.
constexpr const char* VAR_DIR = "/var";
constexpr const char* LOG_DIR = "/var/log";
constexpr const char* PACKAGES_DIR = "/var/log/packages";
constexpr const char* SCRIPTS_DIR = "/var/log/scripts";
constexpr const char* POSTINST_DIR = "/var/log/postinst";
constexpr const char* BUILD_DIR = "/var/log/build";
constexpr const char* DEPS_DIR = "/var/log/deps";
constexpr const char* SETUP_DIR = "/var/log/setup";
constexpr const char* SETUP_TMP_DIR = "/var/log/setup/tmp";
constexpr const char* PRESERVED_DIR = "/var/log/setup/tmp/preserved_packages";
// Named for completeness of the tree; the database keeps no trace of a removed package.
constexpr const char* REMOVED_PACKAGES_DIR = "/var/log/removed_packages";
constexpr const char* REMOVED_SCRIPTS_DIR = "/var/log/removed_scripts";

// The repositories getzet reads, relative to the installation root, and the names of a
// repository's index and its signature, which makezet writes and getzet fetches.
constexpr const char* REPOS_FILE = "/etc/zet/repos";
constexpr const char* REPO_KEYS_DIR = "/etc/zet/keys";
constexpr const char* KEPT_INDEX_DIR = "/var/lib/zet/repos";
constexpr const char* PACKAGE_CACHE_DIR = "/var/cache/zet";
constexpr const char* RUN_LOCK_FILE = "/var/lib/zet/lock";
constexpr const char* INDEX_FILE = "INDEX";
constexpr const char* SIGNATURE_EXTENSION = ".minisig";

// Bounds on what is read whole into memory, each far above what its file honestly holds:
// an index, which makezet writes and getzet takes in memory; a signature or a key; the holder
// of the run lock; a doinst script that makezet checks; a control file that goes into an index.
constexpr unsigned long long INDEX_LIMIT = 256ull << 20;
constexpr unsigned long long SIGNATURE_LIMIT = 4096;
constexpr unsigned long long KEY_LIMIT = 4096;
constexpr unsigned long long HOLDER_LIMIT = 32;
constexpr unsigned long long SCRIPT_LIMIT = 1ull << 30;
constexpr unsigned long long CONTROL_LIMIT = 1 << 20;
// Files are read in blocks of this size.
constexpr unsigned long READ_BLOCK = 65536;
// The block in which a file is copied.
constexpr long COPY_BLOCK = 10240;
// A transfer gives up after this long without a connection, or when it moves less than
// LOW_SPEED bytes a second for LOW_SPEED_SECONDS.
constexpr long CONNECT_SECONDS = 30;
constexpr long LOW_SPEED = 1;
constexpr long LOW_SPEED_SECONDS = 60;
// As many links as the system follows in one path.
constexpr int LINK_HOPS = 40;

constexpr const char* DEFAULT_TAGFILE = "tagfile";
constexpr const char* PROGRAM_VERSION = "1.0rc1";

constexpr const char* PACKAGE_EXTENSION = ".tgz";
// A package's control files: the directory at the top of its archive that holds them, that
// directory as the archive lists it, and the files in it.
constexpr const char* CONTROL_DIR = "install";
constexpr const char* INSTALL_DIR_MEMBER = "install/";
constexpr const char* PREINST_SCRIPT = "preinst.sh";
constexpr const char* DOINST_SCRIPT = "doinst.sh";
constexpr const char* POSTINST_SCRIPT = "postinst.sh";
constexpr const char* DEPS_FILE = "deps";
constexpr const char* BUILD_FILE = "build";
// "slack-desc" holds the default description, "slack-desc.CODE" the one in language CODE.
constexpr const char* DESCRIPTION_FILE = "slack-desc";

// Names of the scratch files inside the temporary directory.
constexpr const char* TEMP_FILELIST = "filelist";
constexpr const char* TEMP_SIZE_INFO = "size-info";
constexpr const char* TEMP_SCRIPT = "script";
constexpr const char* TEMP_MENU_RESULT = "menudialog-result";

}  // namespace zet

// An assertion that no build switches off: the states it guards must stop the program
// in every build users install, Release included, so it does not depend on NDEBUG. It
// prints what the standard assertion prints, then aborts. The function is named by the
// caller, spelled as users have always seen it, and the unit by its file name alone, so
// that neither the compiler nor the build directory changes the message or the binary.
[[noreturn]] inline void zetAssertFail(const char* expression, const char* file, unsigned line,
                                       const char* function) {
  fprintf(stderr, "%s: %s:%u: %s: Assertion `%s' failed.\n", program_invocation_short_name, file,
          line, function, expression);
  abort();
}

#define ZET_ASSERT(expr, function) \
  ((expr) ? static_cast<void>(0) : zetAssertFail(#expr, __FILE_NAME__, __LINE__, function))

#endif
