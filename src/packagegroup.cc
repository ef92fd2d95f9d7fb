#include "packagegroup.h"

#include <cstring>
#include <string>

#include "constants.h"
#include "dependencystore.h"
#include "dialog.h"
#include "exitstatus.h"
#include "lang.h"
#include "messages.h"
#include "package.h"
#include "temparea.h"

namespace {

// The tag that decides an install: an explicit priority beats the tag file, and a package
// that the tag file does not name counts as optional.
int effectiveTag(const PackageGroup& group, const std::string& name) {
  if (group.priority != TagNone) return group.priority;
  return group.tagFile.contains(name) ? group.tagFile.priority(name) : TagOpt;
}

std::string dialogTitle(const Package& package) {
  return Lang::instance().get("dialog_installing_package", package.fullName);
}

// The description without the name prefixes, which the title already carries, and the sizes.
TextVector dialogLines(Package& package) {
  TextVector lines = package.descriptionLines(true);
  lines.push_back(Lang::instance()
                      .get("dialog_compressed_and_uncompressed",
                           std::to_string(package.compressedSizeK),
                           std::to_string(package.uncompressedSizeK))
                      .c_str());
  return lines;
}

// The tool's answer as it came: the caller takes anything but "no" and "quit" for yes, so
// that a cancelled menu installs.
std::string askMenu(Package& package) {
  Lang& lang = Lang::instance();
  MenuDialog menu;
  menu.setTitle(dialogTitle(package));
  menu.addItem(lang.get("yes"), lang.get("dialog_install_package", package.name));
  menu.addItem(lang.get("no"), lang.get("dialog_do_not_install", package.name));
  menu.addItem(lang.get("quit"), lang.get("dialog_abort"));
  menu.setText(dialogLines(package));
  menu.show();
  return menu.getResult();
}

void installPackage(const PackageGroup& group, Package& package) {
  const int tag = effectiveTag(group, package.name);
  bool interactive = false;
  if (group.ask) {
    interactive = true;
  } else if (tag == TagSkip) {
    return;
  } else if (tag != TagAdd) {
    interactive = true;
  }
  // A menu or an infobox shows the package in place of the console text.
  const bool viaMenu = group.menu && interactive;
  const bool viaInfobox = group.infobox && !group.menu;
  if (viaMenu) {
    const std::string answer = askMenu(package);
    if (answer == Lang::instance().get("no")) return;
    if (answer == Lang::instance().get("quit")) leaveRun(ZetExitOk);
  }
  if (viaInfobox) {
    InfoBox box;
    box.setTitle(dialogTitle(package));
    box.setText(dialogLines(package));
    box.show();
  }
  if (!viaMenu && !viaInfobox && !group.warn) {
    printMessage(MessageInstallingPackage, package.fullName);
    printDescription(package.descriptionLines(false));
  }
  package.install();
}

void removePackage(Package& package, bool preserve) {
  if (preserve) {
    printMessage(MessagePreserve, std::string(zet::PRESERVED_DIR) + "/" + package.fullName);
    package.preserve();
  }
  // Said under warn too: remove() then lists what would go.
  printMessage(MessageRemovingPackage, package.fullName);
  package.remove();
}

void upgradePackage(const PackageGroup& group, Package& old, Package& fresh) {
  if (!old.fromDatabase) {
    if (!group.installNew) {
      printError(ErrorPackageNotInstalled, old.name);
      leaveRun(ZetExitUpgradeRefused);
    }
    // Nothing to take away: the old name is empty, as that package never loaded.
    printMessage(MessageUpgrading, old.name, fresh.location);
    printDescription(fresh.descriptionLines(false));
    fresh.install();
    printMessage(MessagePackageUpgraded, old.name, fresh.location);
    return;
  }
  // Build dates decide only when both packages carry exactly one stamp line.
  if (old.buildInfo.size() == 1 && fresh.buildInfo.size() == 1) {
    const int a = PackageGroup::buildNumber(old.buildInfo[0]);
    const int b = PackageGroup::buildNumber(fresh.buildInfo[0]);
    const bool refused = b < a ? !group.force : b == a && !group.reinstall && !group.force;
    if (refused) {
      printError(ErrorPackageMustBeNewer, fresh.name);
      leaveRun(ZetExitUpgradeRefused);
    }
  }
  // Install, remove the old one, install again: the second install puts back what the
  // removal of the old one took with it, the database files of an equal full name among them.
  printMessage(MessageUpgrading, old.name, fresh.location);
  printMessage(MessagePreinstallingPackage, fresh.fullName);
  fresh.install();
  old.remove();
  printDescription(fresh.descriptionLines(false));
  fresh.install();
  printMessage(MessagePackageUpgraded, old.name, fresh.location);
}

}  // namespace

PackageGroup& PackageGroup::add(Package* first, Package* second) {
  packages.push_back(Entry{first, second});
  return *this;
}

PackageGroup& PackageGroup::remove(Package* package) {
  for (auto entry = packages.begin(); entry != packages.end(); ++entry) {
    if (entry->first == package) {
      packages.erase(entry);
      break;
    }
  }
  return *this;
}

bool PackageGroup::loadTagFile(const std::string& path) {
  tagFile.clear();
  return tagFile.load(path.c_str());
}

TextVector PackageGroup::checkDeps(OperationType operation, bool) {
  // A fresh store on every call, so that the verdict reflects the disk as it is now.
  DependencyStore store;
  store.loadInstalled();
  switch (operation) {
    case OperationInstall:
      // The whole group is incoming, so members may depend on each other in any order.
      for (const Entry& entry : packages) {
        store.addIncoming(entry.first->name.c_str());
        for (unsigned i = 0; i < entry.first->deps.size(); ++i) {
          store.addRequired(entry.first->deps[i]);
        }
      }
      return store.resolve(DependencyStore::ResolveMissing);
    case OperationUpgrade:
      // The new package is asked for as many dependencies as the installed one has; nothing
      // is incoming, so only what is installed now provides.
      for (const Entry& entry : packages) {
        const TextFile& newDeps = entry.second->deps;
        for (unsigned i = 0; i < entry.first->deps.size() && i < newDeps.size(); ++i) {
          store.addRequired(newDeps[i]);
        }
      }
      return store.resolve(DependencyStore::ResolveMissing);
    case OperationRemove: {
      TextVector outgoing;
      for (const Entry& entry : packages) outgoing.push_back(entry.first->name.c_str());
      TextVector names = store.withDependents(outgoing);
      // The group's own packages go anyway; one occurrence per entry.
      for (const Entry& entry : packages) {
        const int index = names.find(entry.first->name.c_str());
        if (index >= 0) names.erase(index);
      }
      return names;
    }
    default:
      ZET_ASSERT("Unhandled operation type" && 0,
                 "TextVector PackageGroup::checkDeps(PackageGroup::OperationType, bool)");
  }
}

void PackageGroup::proceed(OperationType operation) {
  for (const Entry& entry : packages) {
    // Only the package operated on: in an upgrade the new one is installed for real.
    entry.first->warnOnly = warn;
    switch (operation) {
      case OperationInstall:
        installPackage(*this, *entry.first);
        break;
      case OperationRemove:
        removePackage(*entry.first, preserve);
        break;
      case OperationUpgrade:
        upgradePackage(*this, *entry.first, *entry.second);
        break;
      default:
        ZET_ASSERT("Unhandled operation type" && 0,
                   "void PackageGroup::proceed(PackageGroup::OperationType)");
    }
  }

  if (operation == OperationRemove && withDeps) {
    // Computed only now, after the group's own packages have gone.
    const TextVector names = checkDeps(OperationRemove, true);
    for (unsigned i = 0; i < names.size(); ++i) {
      Package dependent;
      dependent.warnOnly = warn;
      if (dependent.loadFromDatabase(names[i])) removePackage(dependent, preserve);
    }
  }
}

int PackageGroup::buildNumber(const char* stamp) {
  // DDMMYYYY read as YYYYMMDD. A stamp shorter than eight characters ends at its own NUL,
  // so the first position that it lacks ends the number as the end of the text would.
  static const unsigned order[] = {4, 5, 6, 7, 2, 3, 0, 1};
  const size_t length = std::strlen(stamp);
  int number = 0;
  for (unsigned position : order) {
    if (position >= length) break;
    const char digit = stamp[position];
    if (digit < '0' || digit > '9') break;
    number = number * 10 + (digit - '0');
  }
  return number;
}
