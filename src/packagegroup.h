#ifndef ZET_PACKAGEGROUP_H
#define ZET_PACKAGEGROUP_H

// The packages of one run and the choices of the command line that concern them.
class PackageGroup {
 public:
  enum OperationType : int {
    OperationInstall = 0,
    OperationRemove = 1,
    OperationUpgrade = 2,
    OperationNone = 3,
  };
};

#endif
