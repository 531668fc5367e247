// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/PolicySteps.h"

#include "matching/Matching.h"
#include "profiles/Names.h"

#include <algorithm>
#include <array>

namespace pavoctl {
namespace {

Json idJson(int id) { return id == unknownId ? Json(nullptr) : Json(id); }

// Returns the members by which people know a profile.
Json named(const CachedProfile& cached) {
  Json json{{"id", idJson(cached.profile.id)}};
  if (cached.profile.params.hasApnName()) {
    json["apnName"] = cached.profile.params.getApnName();
  }
  return json;
}

// Returns the type that a filter's roaming type is compared with. The profile may have no attribute
// of that value.
Json roamJson(const CachedProfile& cached) {
  if (const auto type = cached.settings.roamIPType()) {
    const auto name = nameOf(*type);
    return name ? Json(*name) : Json(static_cast<int>(*type));
  }
  if (cached.settings.lteRoamIPType || cached.settings.umtsRoamIPType) {
    return "not the same for LTE and UMTS";
  }
  return nullptr;
}

// The keys stand in the order of pavo::Criterion.
constexpr std::array criterionKeys{"",
                                   "apnName",
                                   "homeIPType",
                                   "userName",
                                   "password",
                                   "authType",
                                   "apnTypesMask",
                                   "apnClass",
                                   "isClatEnabled",
                                   "id",
                                   "isIAProfile",
                                   "isPavoProfile",
                                   "roamIPType",
                                   "maxPdnsConnPerBlock",
                                   "maxPdnConnTimer",
                                   "pdnReqWaitInterval",
                                   "isApnDisabled",
                                   "isEmergencySupported"};
static_assert(criterionKeys.size() ==
              static_cast<std::size_t>(pavo::Criterion::IsEmergencySupported) + 1);

// Returns the attribute that keeps the profile from matching, or nothing when the profile matches.
std::optional<std::string> keyOfMismatch(const CachedProfile& cached,
                                         const pavo::FilterProfileParams& filter) {
  const auto criterion = static_cast<std::size_t>(pavo::firstMismatch(cached.settings, filter));
  return criterion == 0 ? std::nullopt : std::optional<std::string>(criterionKeys.at(criterion));
}

Json criteriaOf(const pavo::FilterProfileParams& filter) {
  struct Criterion {
    pavo::FilterMatchType bit;
    const char* name;
  };
  Json names = Json::array();
  for (const Criterion& criterion : {Criterion{pavo::HomeIPSubset, "HomeIPSubset"},
                                     {pavo::RoamIPSubset, "RoamIPSubset"},
                                     {pavo::ApnNameSubset, "ApnNameSubset"},
                                     {pavo::ApnTypeBitmaskSubset, "ApnTypeBitmaskSubset"},
                                     {pavo::HomeIPSuperset, "HomeIPSuperset"},
                                     {pavo::RoamIPSuperset, "RoamIPSuperset"}}) {
    if ((filter.getFilterMatchCriteria() & criterion.bit) != 0) {
      names.push_back(criterion.name);
    }
  }
  return names;
}

std::vector<const CachedProfile*> byId(const Profiles& profiles) {
  std::vector<const CachedProfile*> sorted;
  for (const auto& profile : profiles) {
    sorted.push_back(&profile);
  }
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto* a, const auto* b) { return a->profile.id < b->profile.id; });
  return sorted;
}

const char* textOf(ChangeOutcome outcome) {
  switch (outcome) {
    case ChangeOutcome::changed:
      return "changed";
    case ChangeOutcome::unchanged:
      return "unchanged";
    case ChangeOutcome::refused:
      break;
  }
  return "refused";
}

}  // namespace

Json toJson(const pavo::FilterProfileParams& filter, Secrets secrets) {
  Json json = toJson(static_cast<const pavo::ProfileParams&>(filter), secrets);
  if (filter.hasFilterByProfileId()) {
    json["id"] = filter.getFilterByProfileId();
  }
  if (filter.hasFilterByIsPavoProfile()) {
    json["isPavoProfile"] = filter.getIsPavoProfile();
  }
  if (filter.hasFilterByIsIAProfile()) {
    json["isIAProfile"] = filter.getIsIAProfile();
  }
  if (filter.getFilterMatchCriteria() != 0) {
    json["criteria"] = criteriaOf(filter);
  }
  return json;
}

Json PolicySteps::mismatch(const CachedProfile& cached, const std::string& key,
                           const Json& filter) const {
  const Json own = toJson(cached.profile, secrets);
  Json json{{"attribute", key}, {"wanted", filter.value(key, Json())}};
  json["actual"] = key == "roamIPType" ? roamJson(cached) : own.value(key, Json());
  if (key == "apnTypesMask" && cached.hasUnknownTypes()) {
    json["actual"].push_back("and others without a name");
  }
  return json;
}

void PolicySteps::search(const std::string& why, const pavo::FilterProfileParams& filter,
                         const std::vector<Token>& found, const Profiles& profiles, bool isForOne) {
  Json step{{"step", "search"}, {"why", why}, {"filter", toJson(filter, secrets)}};
  Json matching = Json::array();
  Json rejected = Json::array();
  Json unclear = Json::array();
  for (const CachedProfile* profile : byId(profiles)) {
    const bool isFound = std::find(found.begin(), found.end(), profile->token) != found.end();
    const auto key = keyOfMismatch(*profile, filter);
    Json name = named(*profile);
    if (isFound == key.has_value()) {
      // The profile differs from its copy, because another client has changed it since the policy
      // began.
      unclear.push_back(name);
    }
    if (isFound) {
      if (isForOne && profile->token == found.front()) {
        step["taken"] = name["id"];
      }
      matching.push_back(name);
    } else if (key) {
      name.update(mismatch(*profile, *key, step["filter"]));
      rejected.push_back(name);
    }
  }
  step["found"] = matching;
  step["rejected"] = rejected;
  if (!unclear.empty()) {
    step["unclear"] = unclear;
  }
  all.push_back(step);
}

void PolicySteps::check(const CachedProfile& profile, const std::string& question, bool answer,
                        const std::string& because) {
  Json step{{"step", "check"}};
  step.update(named(profile));
  step.update(Json{{"question", question}, {"answer", answer}, {"because", because}});
  all.push_back(step);
}

void PolicySteps::compare(const CachedProfile& profile, const std::string& why,
                          const pavo::FilterProfileParams& filter, bool isMatching) {
  Json step{{"step", "compare"}};
  step.update(named(profile));
  step.update(Json{{"why", why}, {"filter", toJson(filter, secrets)}, {"isMatching", isMatching}});
  const auto key = keyOfMismatch(profile, filter);
  if (isMatching == key.has_value()) {
    step["unclear"] = true;
  } else if (key) {
    step.update(mismatch(profile, *key, step["filter"]));
  }
  all.push_back(step);
}

void PolicySteps::change(const std::string& why, const pavo::ModifyProfileParams& wanted,
                         const CachedProfile& before, const CachedProfile& after,
                         ChangeOutcome outcome) {
  Json step{{"step", "change"}};
  step.update(named(before));
  step.update(Json{{"why", why},
                   {"wanted", toJson(wanted, secrets)},
                   {"outcome", textOf(outcome)},
                   {"changes", changes(before.profile, after.profile, secrets)}});
  all.push_back(step);
}

void PolicySteps::create(const std::string& why, const pavo::AddProfileParams& wanted,
                         const CachedProfile* profile) {
  Json step{{"step", "create"},
            {"why", why},
            {"wanted", toJson(static_cast<const pavo::ProfileParams&>(wanted), secrets)},
            {"isPersistent", wanted.getIsPersistent()},
            {"outcome", profile != nullptr ? "created" : "refused"}};
  if (profile != nullptr) {
    step["profile"] = toJson(profile->profile, secrets);
    step["profile"]["id"] = idJson(profile->profile.id);
  }
  all.push_back(step);
}

void PolicySteps::note(const std::string& text) {
  all.push_back(Json{{"step", "note"}, {"text", text}});
}

}  // namespace pavoctl
