// The stages for LTE attach.
#include "policies/Stages.h"

namespace pavoctl {
namespace {

using pavo::AddProfileParams;
using pavo::FilterProfileParams;
using pavo::ModifyProfileParams;
using pavo::ProfileParams;

// The modem's own profiles and the library's one for initial attach; never one that the library
// made for data calls.
bool isUsableForAttach(PolicyWalk& walk, const CachedProfile& cached) {
  const ProfileParams& params = cached.profile.params;
  const bool isUsable = !params.getIsPavoProfile() || params.getIsIAProfile();
  walk.tell().check(cached, "may it be used for attach?", isUsable,
                    params.getIsIAProfile()     ? "it is the library's profile for initial attach"
                    : params.getIsPavoProfile() ? "the library has made it for something else"
                                                : "it is one of the modem's own");
  return isUsable;
}

// The stages up to a usable profile. The settings collect what it is to be given.
class AttachSearch {
 public:
  AttachSearch(PolicyWalk& steps, const ProfileParams& params, bool isAllowed)
      : walk(steps),
        wanted(params),
        isUpdateAllowed(isAllowed),
        settings(only<ModifyProfileParams>(
            params, {"userName", "password", "authType", "apnTypesMask", "maxPdnsConnPerBlock",
                     "maxPdnConnTimer", "pdnReqWaitInterval"})) {}

  void run() {
    if (const auto found = search()) {
      walk.take(*found);
      walk.change("Give it the wanted settings", settings, *found);
    } else {
      walk.create("Nothing may be used: create one for initial attach",
                  AddProfileParams(wanted, /*isPersistent=*/true, /*isIAProfile=*/true));
    }
  }

 private:
  std::optional<Token> search() {
    if (const auto exact = searchExactly()) {
      return exact;
    }
    bool isAccepted = false;
    const auto loose = searchLoosely(isAccepted);
    if (isAccepted) {
      return loose;
    }
    copyPresent(wanted, settings, {"homeIPType", "roamIPType"});
    if (const auto named =
            searchInitialAttach("the library's profile for initial attach, of the wanted name",
                                only<FilterProfileParams>(wanted, {"apnName"}))) {
      return named;
    }
    if (const auto any = searchInitialAttach("any profile of the library's for initial attach",
                                             FilterProfileParams())) {
      copyPresent(wanted, settings, {"apnName"});
      return any;
    }
    // One that could not be read is better than a new one.
    return loose;
  }

  std::optional<Token> searchExactly() {
    const auto found =
        walk.search("a profile of the wanted name and IP types",
                    only<FilterProfileParams>(wanted, {"apnName", "homeIPType", "roamIPType"}));
    const CachedProfile* const profile = found ? walk.read(*found) : nullptr;
    return profile != nullptr && isUsableForAttach(walk, *profile) ? found : std::nullopt;
  }

  // Not accepted and yet something: a profile that could not be read.
  std::optional<Token> searchLoosely(bool& isAccepted) {
    auto filter = only<FilterProfileParams>(wanted, {"apnName"});
    std::optional<Token> found;
    if (isUpdateAllowed) {
      copyPresent(wanted, settings, {"homeIPType", "roamIPType"});
      found = walk.search("a profile of the wanted name, whatever its IP types", filter);
    } else {
      filter.setFilterByIsPavoProfile(false);
      copyPresent(wanted, filter, {"homeIPType", "roamIPType"});
      filter.addFilterMatchCriteria((wanted.hasHomeIPType() ? anyHomeIP : 0) |
                                    (wanted.hasRoamIPType() ? anyRoamIP : 0));
      found = walk.search(
          "a profile of the modem's own, of the wanted name, whose IP types contain "
          "the wanted ones or are contained in them",
          filter);
    }
    if (!found) {
      return std::nullopt;
    }
    const CachedProfile* const profile = walk.read(*found);
    isAccepted = profile != nullptr && isUsableForAttach(walk, *profile);
    return isAccepted || profile == nullptr ? found : std::nullopt;
  }

  std::optional<Token> searchInitialAttach(const std::string& why, FilterProfileParams filter) {
    filter.setFilterByIsPavoProfile(true);
    filter.setFilterByIsIAProfile(true);
    return walk.search(why, filter);
  }

  PolicyWalk& walk;
  const ProfileParams& wanted;
  const bool isUpdateAllowed;
  ModifyProfileParams settings;
};

}  // namespace

void lteAttach(PolicyWalk& walk, const ProfileParams& wanted, bool isUpdateAllowed) {
  AttachSearch(walk, wanted, isUpdateAllowed).run();
}

void matchAttach(PolicyWalk& walk, const ProfileParams& wanted, int id, bool isUpdateAllowed) {
  FilterProfileParams byId;
  byId.setFilterByProfileId(id);
  const auto found = walk.search("the profile of that number", byId);
  const CachedProfile* const profile = found ? walk.read(*found) : nullptr;
  if (profile == nullptr || !isUsableForAttach(walk, *profile)) {
    return;
  }
  auto filter = only<FilterProfileParams>(
      wanted, {"apnName", "homeIPType", "roamIPType", "userName", "password", "authType"});
  const bool isLoose = !isUpdateAllowed && !profile->profile.params.getIsPavoProfile();
  if (isLoose) {
    filter.addFilterMatchCriteria(anyHomeIP | anyRoamIP);
  }
  walk.answer(walk.compare(isLoose ? "is it as wanted? IP types may contain the wanted ones or be "
                                     "contained in them"
                                   : "is it as wanted?",
                           filter, *found));
}

}  // namespace pavoctl
