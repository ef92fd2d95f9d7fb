#include "installplan.h"

#include <algorithm>

#include "packagegroup.h"

namespace {

// Whether `offered` carries a later build stamp than the installed package `fullName`, as
// upgradezet compares them; without a stamp on either side nothing is later.
bool later(const IndexEntry& offered, const Database& database, const std::string& fullName) {
  const std::string stamp = database.buildStamp(fullName);
  return !offered.build.empty() && !stamp.empty() &&
         PackageGroup::buildNumber(offered.build.c_str()) >
             PackageGroup::buildNumber(stamp.c_str());
}

// The package that `name` stands for; of the packages offered under a short name, the one
// with the latest build stamp, the first of equal ones.
std::optional<Repositories::Offer> offerOf(const std::vector<Repositories::Kept>& kept,
                                           const std::string& name) {
  std::optional<Repositories::Offer> offer = Repositories::find(kept, name);
  if (!offer || offer->entry->name != name) return offer;
  for (const Repositories::Kept& one : kept) {
    if (!one.index) continue;
    for (const IndexEntry& entry : one.index->entries) {
      if (entry.name == name && PackageGroup::buildNumber(entry.build.c_str()) >
                                    PackageGroup::buildNumber(offer->entry->build.c_str())) {
        offer = Repositories::Offer{&one, &entry};
      }
    }
  }
  return offer;
}

}  // namespace

void InstallPlan::place(const Step& step) {
  const IndexEntry& entry = *step.offer.entry;
  const auto mark = marks.find(entry.name);
  if (mark != marks.end() && mark->second == Placed) return;
  if (mark != marks.end()) {
    std::string loop;
    for (auto name = std::find(path.begin(), path.end(), entry.name); name != path.end(); ++name) {
      loop += *name + " ";
    }
    findings.push_back({Loop, loop + entry.name, ""});
    return;
  }
  marks[entry.name] = Visiting;
  path.push_back(entry.name);
  for (const std::string& dep : entry.deps) {
    const auto upgrade = upgrades.find(dep);
    if (upgrade != upgrades.end()) {
      place(upgrade->second);
      continue;
    }
    if (!database->withShortName(dep).empty()) continue;
    const std::optional<Repositories::Offer> offer = offerOf(*kept, dep);
    if (offer && offer->entry->name == dep) {
      place({*offer, ""});
    } else {
      findings.push_back({NotFound, dep, entry.name});
    }
  }
  path.pop_back();
  marks[entry.name] = Placed;
  steps.push_back(step);
}

InstallPlan InstallPlan::install(const std::vector<Repositories::Kept>& kept,
                                 const Database& database, const std::vector<std::string>& names) {
  InstallPlan plan(kept, database);
  for (const std::string& name : names) {
    const std::optional<Repositories::Offer> offer = offerOf(kept, name);
    if (!offer) {
      plan.findings.push_back({NotFound, name, ""});
    } else if (!database.withShortName(offer->entry->name).empty()) {
      plan.installed.push_back(name);
    } else {
      plan.place({*offer, ""});
    }
  }
  return plan;
}

InstallPlan InstallPlan::upgrade(const std::vector<Repositories::Kept>& kept,
                                 const Database& database, const std::vector<std::string>& names) {
  InstallPlan plan(kept, database);
  const std::vector<std::string>& wanted = names.empty() ? database.shortNames() : names;
  for (const std::string& name : wanted) {
    const std::vector<std::string> installed = database.withShortName(name);
    if (installed.empty()) {
      plan.findings.push_back({NotInstalled, name, ""});
      continue;
    }
    const std::optional<Repositories::Offer> offer = offerOf(kept, name);
    if (!offer && !names.empty()) plan.findings.push_back({NotFound, name, ""});
    if (offer && later(*offer->entry, database, installed.back())) {
      plan.upgrades.emplace(name, Step{*offer, installed.back()});
    }
  }
  for (const auto& upgrade : plan.upgrades) plan.place(upgrade.second);
  return plan;
}
