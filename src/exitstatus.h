// The exit statuses of the programs of zet, each program's in an enumeration of its own.
#ifndef ZET_EXITSTATUS_H
#define ZET_EXITSTATUS_H

// getzet's statuses, all in its manual page. When several apply in one run, the highest wins.
enum GetExit : int {
  GetExitOk = 0,               // done, or nothing to do
  GetExitNotFound = 3,         // a named package is in no index, or a pattern matched none
  GetExitFailed = 4,           // a repository or a download failed: network, server, disk
  GetExitUnverified = 5,       // a signature, key, serial, size, checksum or index was refused
  GetExitNotRoot = 96,         // a change was asked for by a user who is not root
  GetExitBadCommandLine = 98,  // the command line was refused
};

#endif
