#include "policies/Comparison.h"

#include <array>

#include "Text.h"
#include "profiles/Names.h"
#include "profiles/Values.h"

namespace pavoctl {
namespace {

using pavo::FilterProfileParams;
using pavo::IPType;
using P = pavo::ProfileParams;

bool has(const FilterProfileParams& filter, pavo::FilterMatchType criterion) {
  return (filter.getFilterMatchCriteria() & criterion) != 0;
}

// As bit sets: V4V6 contains V4 and V6.
bool isIPTypeLike(IPType wanted, std::optional<IPType> actual, bool isSubsetEnough,
                  bool isSupersetEnough) {
  if (!actual) {
    return false;
  }
  const auto wantedBits = static_cast<unsigned>(wanted);
  const auto actualBits = static_cast<unsigned>(*actual);
  return wantedBits == actualBits || (isSubsetEnough && (wantedBits & ~actualBits) == 0) ||
         (isSupersetEnough && (actualBits & ~wantedBits) == 0);
}

bool isNamedLike(const CachedProfile& cached, const FilterProfileParams& filter) {
  const P& own = cached.profile.params;
  const std::string wanted = lowerCase(filter.getApnName().substr(0, apnNameBytesMax));
  return own.hasApnName() &&
         (has(filter, pavo::ApnNameSubset) ? own.getApnName().find(wanted) != std::string::npos
                                           : own.getApnName() == wanted);
}

bool isForTypes(const CachedProfile& cached, const FilterProfileParams& filter) {
  const P& own = cached.profile.params;
  // What has no name does not get as far as the modem.
  const unsigned wanted = filter.getApnTypesMask() & apnTypesNamed;
  return own.hasApnTypesMask() &&
         (has(filter, pavo::ApnTypeBitmaskSubset)
              ? (wanted & ~own.getApnTypesMask()) == 0
              : wanted == own.getApnTypesMask() && !cached.hasUnknownTypes);
}

struct Test {
  const char* key;
  bool (*isAsked)(const FilterProfileParams& filter);
  bool (*holds)(const CachedProfile& cached, const FilterProfileParams& filter);
};

// The profile must have the attribute, and it must be equal.
template <auto has, auto get>
constexpr Test equal(const char* key) {
  return {key, [](const FilterProfileParams& filter) { return (filter.*has)(); },
          [](const CachedProfile& cached, const FilterProfileParams& filter) {
            const P& own = cached.profile.params;
            return (own.*has)() && (own.*get)() == (filter.*get)();
          }};
}

// In the order in which the library looks.
constexpr std::array tests{
    Test{"apnName", [](const FilterProfileParams& filter) { return filter.hasApnName(); },
         isNamedLike},
    Test{"homeIPType", [](const FilterProfileParams& filter) { return filter.hasHomeIPType(); },
         [](const CachedProfile& cached, const FilterProfileParams& filter) {
           return isIPTypeLike(filter.getHomeIPType(), cached.homeIPType(),
                               has(filter, pavo::HomeIPSubset), has(filter, pavo::HomeIPSuperset));
         }},
    equal<&P::hasUserName, &P::getUserName>("userName"),
    equal<&P::hasPassword, &P::getPassword>("password"),
    equal<&P::hasAuthType, &P::getAuthType>("authType"),
    Test{"apnTypesMask", [](const FilterProfileParams& filter) { return filter.hasApnTypesMask(); },
         isForTypes},
    equal<&P::hasApnClass, &P::getApnClass>("apnClass"),
    equal<&P::hasIsClatEnabled, &P::getIsClatEnabled>("isClatEnabled"),
    Test{"id", [](const FilterProfileParams& filter) { return filter.hasFilterByProfileId(); },
         [](const CachedProfile& cached, const FilterProfileParams& filter) {
           return cached.profile.id == filter.getFilterByProfileId();
         }},
    Test{"isIAProfile",
         [](const FilterProfileParams& filter) { return filter.hasFilterByIsIAProfile(); },
         [](const CachedProfile& cached, const FilterProfileParams& filter) {
           return cached.profile.params.getIsIAProfile() == filter.getIsIAProfile();
         }},
    // Not looked at beside the other one.
    Test{"isPavoProfile",
         [](const FilterProfileParams& filter) {
           return filter.hasFilterByIsPavoProfile() && !filter.hasFilterByIsIAProfile();
         },
         [](const CachedProfile& cached, const FilterProfileParams& filter) {
           return cached.profile.params.getIsPavoProfile() == filter.getIsPavoProfile();
         }},
    Test{"roamIPType", [](const FilterProfileParams& filter) { return filter.hasRoamIPType(); },
         [](const CachedProfile& cached, const FilterProfileParams& filter) {
           return isIPTypeLike(filter.getRoamIPType(), cached.roamIPType(),
                               has(filter, pavo::RoamIPSubset), has(filter, pavo::RoamIPSuperset));
         }},
    equal<&P::hasMaxPdnsConnPerBlock, &P::getMaxPdnsConnPerBlock>("maxPdnsConnPerBlock"),
    equal<&P::hasMaxPdnConnTimer, &P::getMaxPdnConnTimer>("maxPdnConnTimer"),
    equal<&P::hasPdnReqWaitInterval, &P::getPdnReqWaitInterval>("pdnReqWaitInterval"),
    equal<&P::hasIsApnDisabled, &P::getIsApnDisabled>("isApnDisabled"),
    equal<&P::hasIsEmergencySupported, &P::getIsEmergencySupported>("isEmergencySupported"),
};

Json criteriaOf(const FilterProfileParams& filter) {
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
    if (has(filter, criterion.bit)) {
      names.push_back(criterion.name);
    }
  }
  return names;
}

}  // namespace

std::optional<std::string> firstMismatch(const CachedProfile& cached,
                                         const FilterProfileParams& filter) {
  for (const Test& test : tests) {
    if (test.isAsked(filter) && !test.holds(cached, filter)) {
      return test.key;
    }
  }
  return std::nullopt;
}

Json toJson(const FilterProfileParams& filter, Secrets secrets) {
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

}  // namespace pavoctl
