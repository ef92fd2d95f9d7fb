// The exit statuses of every program of zet, one enum a program, each status with what it
// means. Their values stand in the manual pages, and scripts test them.
#ifndef ZET_EXITSTATUS_H
#define ZET_EXITSTATUS_H

// zet and its names installzet, removezet and upgradezet.
enum ZetExit : int {
  ZetExitOk = 0,                // done, help shown, or a dependency list shown
  ZetExitTarFailed = 1,         // a package file could not be listed or unpacked by tar
  ZetExitGzipFailed = 2,        // gzip could not tell a package file's sizes
  ZetExitBadPackage = 3,        // bad file name, unreadable record, or package not installed
  ZetExitNoPackageFile = 4,     // the package file does not exist
  ZetExitDepsFailed = 5,        // dependencies not met, or other packages need the ones removed
  ZetExitAlreadyInstalled = 6,  // the package is installed already
  ZetExitNotRoot = 96,          // not running as root
  ZetExitBadCommandLine = 98,   // the command line was refused
  ZetExitUpgradeRefused = -1,   // an upgrade was refused (255 to the shell)
};

// queryzet. When several apply in one run, the highest wins.
enum QueryExit : int {
  QueryExitAnswered = 0,      // the question was answered
  QueryExitNegative = 1,      // --owner found no owner of a path, or --verify something missing
  QueryExitNotInstalled = 3,  // a named package is not installed, or a pattern matched none
  QueryExitUnreadable = 4,    // the database, a record or a path to check could not be read
  QueryExitUnwritten = 5,     // standard output refused the answer
  QueryExitBadCommandLine = ZetExitBadCommandLine,  // the command line was refused
};

// makezet. Nothing is written unless the status is 0.
enum MakeExit : int {
  MakeExitDone = 0,         // the package was written, or the help shown
  MakeExitTreeRefused = 1,  // the tree breaks a rule of the package format
  MakeExitNameRefused = 2,  // OUTPUT is no package file name
  MakeExitReadFailed = 3,   // the tree, or a file in it, could not be read
  MakeExitWriteFailed = 4,  // OUTPUT's directory, tar, gzip or the rename failed
  MakeExitLineRefused = ZetExitBadCommandLine,  // command line, build stamp or SOURCE_DATE_EPOCH
};

// getzet's statuses, all in its manual page. When several apply in one run, the highest wins.
enum GetExit : int {
  GetExitOk = 0,                    // done, or nothing to do
  GetExitNotFound = 3,              // a named package is in no index, or a pattern matched none
  GetExitFailed = 4,                // a repository or a download failed: network, server, disk
  GetExitUnverified = 5,            // a signature, key, serial, size, checksum or index was refused
  GetExitToolFailed = 6,            // installzet or upgradezet failed halfway through a plan
  GetExitNotRoot = ZetExitNotRoot,  // a change was asked for by a user who is not root
  GetExitBadCommandLine = ZetExitBadCommandLine,  // the command line was refused
};

#endif
