// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ModemProfile.h"

#include "DumpText.h"
#include "LogWrapper.h"
#include "MessageFields.h"
#include "matching/Changes.h"
#include "matching/Matching.h"

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

namespace pavo {

namespace {

// Lists member, message field and conversion of the attributes that every kind of profile has.
template <typename Codec, typename Profile, typename Message>
void mapCommonFields(const Codec& codec, Profile& profile, Message& message) {
  codec(profile.apnTypesMask, MESSAGE_FIELD(message, apn_type_mask), AsMask{});
  codec(profile.isClatEnabled, MESSAGE_FIELD(message, clat_enabled), AsFlag{});
}

// Returns whether both pointers refer to the same key, even when the key is gone.
bool isSame(const std::weak_ptr<IProfileKey>& one, const std::weak_ptr<IProfileKey>& other) {
  return !one.owner_before(other) && !other.owner_before(one);
}

}  // namespace

ModemProfile::ModemProfile(const ProfileParams& params) { copyCommonSettings(params, settings); }

ModemProfile::ModemProfile(int profileId, const wds_get_profile_settings_resp_msg_v01& response) {
  settings.profileId = profileId;
  mapCommonFields(ReadMessage{}, settings, response);
  isPersistent = response.persistent_valid != 0 && response.persistent != 0;
}

ModemProfile::~ModemProfile() {
  LogWrapper::log(LogLevel::Debug, logTag, "~ModemProfile()");
  notifyListeners();
}

void ModemProfile::incRefCount() {
  if (__builtin_add_overflow(refCount, 1, &refCount)) {
    std::abort();
  }
}

void ModemProfile::decRefCount() {
  if (__builtin_sub_overflow(refCount, 1, &refCount)) {
    std::abort();
  }
}

wds_profile_identifier_type_v01 ModemProfile::constructProfileIdentifier() const {
  return convertToProfileIdentifier(settings.profileId);
}

void ModemProfile::updateAddParameters(wds_create_profile_req_msg_v01& request) const {
  std::memset(&request, 0, sizeof request);
  mapCommonFields(FillMessage{}, settings, request);
  request.persistent_valid = 1;
  request.persistent = isPersistent ? 1 : 0;
}

void ModemProfile::updateModifyParameters(wds_modify_profile_settings_req_msg_v01& request) const {
  std::memset(&request, 0, sizeof request);
  request.profile = constructProfileIdentifier();
  // Persistence is fixed at creation and never sent here.
  mapCommonFields(FillMessage{}, settings, request);
}

bool ModemProfile::match(const FilterProfileParams& filter) const {
  return firstCommonMismatch(settings, filter) == Criterion::None;
}

bool ModemProfile::matchSubsetApnTypesMask(unsigned int mask) const {
  return pavo::matchSubsetApnTypesMask(settings, mask);
}

bool ModemProfile::matchExactApnTypesMask(unsigned int mask) const {
  return pavo::matchExactApnTypesMask(settings, mask);
}

void ModemProfile::updateDiffParameters(const ModifyProfileParams& params, ProfileParams& changes,
                                        bool& changed) const {
  planCommonChanges(settings, params, changes, changed);
}

void ModemProfile::updateGetParameters(FilterProfileParams& out) const {
  copyCommonView(settings, out);
}

void ModemProfile::apply(const std::shared_ptr<ModemProfile>& changes) {
  if (changes != nullptr) {
    applyCommonChanges(changes->settings, settings);
  }
}

std::string ModemProfile::dump() const {
  std::string text;
  text.reserve(dumpCharsTypical);
  appendEntry(text, "ProfileId=", settings.profileId);
  appendEntry(text, "ApnName=", settings.apnName);
  appendEntry(text, "UserName=", settings.userName);
  appendEntry(text, "Password=", settings.password);
  appendEntry(text, "AuthType=", settings.authType);
  appendEntry(text, "CommonIPType=", settings.commonIPType);
  appendEntry(text, "ApnTypesMask=", settings.apnTypesMask);
  appendEntry(text, "ApnClass=", settings.apnClass);
  appendEntry(text, "IsClatEnabled=", settings.isClatEnabled);
  return text;
}

void ModemProfile::registerExpirationListener(std::function<void()> callback,
                                              std::weak_ptr<IProfileKey> key) {
  listeners.emplace_back(std::move(callback), std::move(key));
}

void ModemProfile::clearExpiredListeners() { listeners.remove_if(expired); }

void ModemProfile::takeEndedListeners(const std::weak_ptr<IProfileKey>& key,
                                      std::list<ExpirationListener>& ended) {
  const bool ofAll = isSame(key, std::weak_ptr<IProfileKey>());
  for (auto listener = listeners.begin(); listener != listeners.end();) {
    const auto next = std::next(listener);
    if (expired(*listener) && (ofAll || isSame(listener->second, key))) {
      ended.splice(ended.end(), listeners, listener);
    }
    listener = next;
  }
}

// An empty listener is skipped. An exception of a client's listener must not end the process, nor
// keep the other listeners from running.
void ModemProfile::notifyListeners() noexcept {
  for (const ExpirationListener& listener : listeners) {
    if (expired(listener) || !listener.first) {
      continue;
    }
    LogWrapper::log(LogLevel::Debug, logTag, "invoke callback");
    try {
      listener.first();
    } catch (...) {
      LogWrapper::log(LogLevel::Error, logTag, "an expiration listener has thrown an exception");
    }
  }
}

}  // namespace pavo
