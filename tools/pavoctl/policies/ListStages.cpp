// The stages that bring profiles in line with a list.
#include "policies/Stages.h"

#include <string>
#include <unordered_set>
#include <utility>

#include "Text.h"
#include "profiles/Names.h"

namespace pavoctl {
namespace {

using pavo::AddProfileParams;
using pavo::FilterProfileParams;
using pavo::IPType;
using pavo::ModifyProfileParams;
using pavo::ProfileParams;

// The types that the list asks for, for one access point's name.
class TypesOfName {
 public:
  TypesOfName(PolicyWalk& steps, std::string apnName, const std::list<ProfileParams>& wanted)
      : walk(steps), name(std::move(apnName)) {
    for (const auto& element : wanted) {
      if (element.hasApnName() && element.getApnName() == name) {
        maskOf(element.getHomeIPType()) |= element.getApnTypesMask();
      }
    }
    walk.tell().note(pavoctl::quoted(name) + " is wanted for " + text(v4) + " over V4, " +
                     text(v6) + " over V6, " + text(v4v6) + " over V4V6.");
  }

  void writeToAll() {
    FilterProfileParams filter;
    filter.setApnName(name);
    write(walk.searchAll("all profiles of the name", filter), v4 | v6 | v4v6);
  }

  void writeByIPType() {
    // What no profile of its own type takes, the V4V6 profile is to take.
    unsigned withV4 = v4v6;
    if (v4 != 0 && !writeTo(IPType::V4, v4)) {
      withV4 |= v4;
    }
    const bool isV6Placed = v6 == 0 || writeTo(IPType::V6, v6);
    const unsigned withV6 = isV6Placed ? withV4 : withV4 | v6;
    if ((isV6Placed && withV4 == 0) || writeTo(IPType::V4V6, withV6)) {
      return;
    }
    walk.tell().note("There is no V4V6 profile: its types go to the V4 and the V6 profiles.");
    writeTo(IPType::V4, withV6 | v4);
    writeTo(IPType::V6, withV4 | v6);
  }

 private:
  unsigned& maskOf(IPType type) { return type == IPType::V4 ? v4 : type == IPType::V6 ? v6 : v4v6; }

  static std::string text(unsigned mask) { return valueText(namesOfApnTypes(mask)); }

  bool writeTo(IPType type, unsigned mask) {
    FilterProfileParams filter;
    filter.setApnName(name);
    filter.setHomeIPType(type);
    const auto found = walk.searchAll(
        "the " + nameOf(type).value_or("") + " profiles of the name, for " + text(mask), filter);
    write(found, mask);
    return !found.empty();
  }

  void write(const std::vector<Token>& found, unsigned mask) {
    ModifyProfileParams types{ProfileParams()};
    types.setApnTypesMask(mask);
    for (const Token token : found) {
      walk.change("Set its types to " + text(mask), types, token);
    }
  }

  PolicyWalk& walk;
  const std::string name;
  unsigned v4 = 0;
  unsigned v6 = 0;
  unsigned v4v6 = 0;
};

}  // namespace

void apnClass(PolicyWalk& walk, const ProfileParams& wanted) {
  if (!wanted.hasApnClass()) {
    walk.tell().note("An element without a class is passed over.");
    return;
  }
  const auto found =
      walk.searchAll("all profiles of the class", only<FilterProfileParams>(wanted, {"apnClass"}));
  for (const Token token : found) {
    walk.change("Change it to what is wanted", ModifyProfileParams(wanted), token);
  }
  if (found.empty()) {
    walk.create("The class has no profile: create one",
                AddProfileParams(wanted, /*isPersistent=*/true, /*isIAProfile=*/false));
  }
}

void apnTypes(PolicyWalk& walk, std::list<ProfileParams> wanted, bool isUpdateAllowed) {
  // The library's own container, for its order.
  std::unordered_set<std::string> names;
  for (auto& element : wanted) {
    if (element.hasApnName()) {
      element.setApnName(lowerCase(element.getApnName()));
      names.insert(element.getApnName());
    }
    if (!element.hasApnTypesMask()) {
      element.setApnTypesMask(pavo::NONE);
    }
    if (!element.hasHomeIPType()) {
      element.setHomeIPType(IPType::V4V6);
    }
  }
  for (const auto& name : names) {
    TypesOfName types(walk, name, wanted);
    if (isUpdateAllowed) {
      types.writeToAll();
    } else {
      types.writeByIPType();
    }
  }
}

}  // namespace pavoctl
