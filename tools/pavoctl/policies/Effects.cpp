#include "policies/Effects.h"

#include <pavo/FilterProfileParams.h>

#include "Text.h"
#include "profiles/Attributes.h"
#include "profiles/Names.h"
#include "profiles/Values.h"

namespace pavoctl {
namespace {

using pavo::IPType;

struct IPTypes {
  std::optional<IPType> common;
  std::optional<IPType> roam;
  std::optional<IPType> overrideHome;
};

// A modem profile has a type common to both networks. When the two are to differ the common type is
// V4V6 and the home network is pinned to its own.
IPTypes wantedIPTypes(const CachedProfile& cached, const pavo::ProfileParams& params) {
  IPTypes wanted;
  wanted.common = params.hasHomeIPType() ? params.getHomeIPType() : cached.homeIPType();
  if (params.hasRoamIPType()) {
    wanted.roam = params.getRoamIPType();
  } else if (cached.lteRoamIPType && cached.lteRoamIPType == cached.umtsRoamIPType) {
    wanted.roam = cached.lteRoamIPType;
  }
  if (wanted.common && wanted.roam) {
    if (*wanted.common != *wanted.roam) {
      wanted.overrideHome = wanted.common;
      wanted.common = IPType::V4V6;
    } else if (cached.overrideHomeIPType) {
      wanted.overrideHome = IPType::UNKNOWN;
    }
  }
  return wanted;
}

bool set(std::optional<IPType>& type, std::optional<IPType> wanted) {
  if (!wanted || wanted == type) {
    return false;
  }
  type = wanted;
  return true;
}

bool changeIPTypes(CachedProfile& cached, const pavo::ProfileParams& params) {
  const IPTypes wanted = wantedIPTypes(cached, params);
  bool isChanged = set(cached.commonIPType, wanted.common);
  isChanged |= set(cached.lteRoamIPType, wanted.roam);
  isChanged |= set(cached.umtsRoamIPType, wanted.roam);
  isChanged |= set(cached.overrideHomeIPType, wanted.overrideHome);
  return isChanged;
}

pavo::ProfileParams asStored(const pavo::ProfileParams& params) {
  pavo::ProfileParams stored;
  copyPresent(params, stored);
  if (stored.hasApnName()) {
    stored.setApnName(lowerCase(stored.getApnName().substr(0, apnNameBytesMax)));
  }
  return stored;
}

// The record that the library hands out has the types as they come out of the four.
pavo::ProfileParams withIPTypes(const pavo::ProfileParams& params, const CachedProfile& cached) {
  // Only this record takes the two marks.
  pavo::FilterProfileParams result;
  for (const auto& attribute : allAttributes()) {
    const std::string_view key = attribute.key;
    if (attribute.isPresent(params) && key != "homeIPType" && key != "roamIPType") {
      attribute.copy(params, result);
    }
  }
  result.setFilterByIsPavoProfile(params.getIsPavoProfile());
  result.setFilterByIsIAProfile(params.getIsIAProfile());
  if (const auto home = cached.homeIPType()) {
    result.setHomeIPType(*home);
  }
  if (cached.lteRoamIPType && cached.lteRoamIPType == cached.umtsRoamIPType) {
    result.setRoamIPType(*cached.lteRoamIPType);
  }
  return static_cast<const pavo::ProfileParams&>(result);
}

}  // namespace

std::optional<CachedProfile> changed(const CachedProfile& cached,
                                     const pavo::ModifyProfileParams& params) {
  CachedProfile after = cached;
  pavo::ProfileParams& attributes = after.profile.params;
  const pavo::ProfileParams wanted = asStored(params);
  bool isChanged = false;
  for (const auto& attribute : allAttributes()) {
    const std::string_view key = attribute.key;
    if (!attribute.isPresent(wanted) || key == "homeIPType" || key == "roamIPType" ||
        (attribute.isPresent(attributes) && attribute.isEqual(attributes, wanted))) {
      continue;
    }
    attribute.copy(wanted, attributes);
    isChanged = true;
    if (key == "apnTypesMask") {
      after.hasUnknownTypes = false;
      attributes.setApnTypesMask(wanted.getApnTypesMask() & apnTypesNamed);
    }
  }
  isChanged |= changeIPTypes(after, wanted);
  if (!isChanged) {
    return std::nullopt;
  }
  attributes = withIPTypes(attributes, after);
  return after;
}

CachedProfile created(const pavo::AddProfileParams& params) {
  pavo::FilterProfileParams marks;
  marks.setFilterByIsPavoProfile(true);
  marks.setFilterByIsIAProfile(params.getIsIAProfile());
  copyPresent(asStored(params), marks);
  CachedProfile profile;
  profile.profile.params = static_cast<const pavo::ProfileParams&>(marks);
  changeIPTypes(profile, params);
  profile.profile.params = withIPTypes(profile.profile.params, profile);
  return profile;
}

}  // namespace pavoctl
