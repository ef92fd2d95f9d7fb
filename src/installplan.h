// What a request to install or upgrade comes to: the packages asked for and every package
// they need that is not installed, taken from the kept indexes and put in an order where what
// a package needs comes before it, so that each install finds its dependencies in place.
#ifndef ZET_INSTALLPLAN_H
#define ZET_INSTALLPLAN_H

#include <map>
#include <string>
#include <vector>

#include "database.h"
#include "repository.h"

// The steps of one request, and what stops it before anything is fetched.
class InstallPlan {
 public:
  struct Step {
    Repositories::Offer offer;
    std::string replaced;  // the installed full name that an upgrade replaces; "" to install
  };
  enum Problem {
    NotFound,      // `name` is in no index; `neededBy` names the package that needs it, if any
    NotInstalled,  // `name` was named for an upgrade but is not installed
    Loop,          // the packages of `name`, blank-separated, need each other round in a loop
  };
  struct Finding {
    Problem problem;
    std::string name;
    std::string neededBy;
  };

  // The named packages (short, full or file names) that are not installed, and what they
  // need; a named package that is installed already goes to `installed`.
  static InstallPlan install(const std::vector<Repositories::Kept>& kept, const Database& database,
                             const std::vector<std::string>& names);
  // Each installed package, or each named one, that an index offers under its short name with
  // a later build stamp, and what the new packages need that is not installed.
  static InstallPlan upgrade(const std::vector<Repositories::Kept>& kept, const Database& database,
                             const std::vector<std::string>& names);

  std::vector<Step> steps;
  std::vector<std::string> installed;
  std::vector<Finding> findings;

 private:
  enum Mark { Visiting, Placed };

  InstallPlan(const std::vector<Repositories::Kept>& kept, const Database& database)
      : kept(&kept), database(&database) {}
  // Places the step after what it needs; the short names on the way down are in `path`.
  void place(const Step& step);

  const std::vector<Repositories::Kept>* kept;
  const Database* database;
  // The upgrades found, by short name, placed when something needs them or in their turn.
  std::map<std::string, Step> upgrades;
  std::map<std::string, Mark> marks;
  std::vector<std::string> path;
};

#endif
