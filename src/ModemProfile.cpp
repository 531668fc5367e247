#include "ModemProfile.h"

#include "DumpText.h"
#include "LogWrapper.h"
#include "MessageFields.h"
#include "RecordAccess.h"
#include "base/Ascii.h"

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

namespace pavo {

// Member <-> message field <-> conversion, for what every kind of profile has.
template <typename Codec, typename Profile, typename Message>
void ModemProfile::mapFields(const Codec& codec, Profile& profile, Message& message) {
  codec(profile.apnTypesMask, MESSAGE_FIELD(message, apn_type_mask), AsMask{});
  codec(profile.isClatEnabled, MESSAGE_FIELD(message, clat_enabled), AsFlag{});
}

namespace {

// Whether both are handles of one key, also when it is gone.
bool isSame(const std::weak_ptr<IProfileKey>& one, const std::weak_ptr<IProfileKey>& other) {
  return !one.owner_before(other) && !other.owner_before(one);
}

}  // namespace

bool matchIPType(IPType wanted, IPType actual, bool subsetAllowed, bool supersetAllowed) {
  const auto wantedBits = static_cast<unsigned int>(wanted);
  const auto actualBits = static_cast<unsigned int>(actual);
  return wantedBits == actualBits || (subsetAllowed && (wantedBits & actualBits) == wantedBits) ||
         (supersetAllowed && (actualBits & ~wantedBits) == 0);
}

ModemProfile::ModemProfile(const ProfileParams& params) {
  if (const auto& name = RecordAccess::apnName(params)) {
    apnName = normalizeApnName(*name);
  }
  if (const auto& mask = RecordAccess::apnTypesMask(params)) {
    apnTypesMask = convertToOvixApnTypeMask(*mask);
  }
  RecordAccess::forEachShared(copyIfPresent, params, *this);
}

ModemProfile::ModemProfile(int index, const wds_get_profile_settings_resp_msg_v01& settings)
    : profileId(index) {
  mapFields(ReadMessage{}, *this, settings);
  isPersistent = settings.persistent_valid != 0 && settings.persistent != 0;
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
  return convertToProfileIdentifier(profileId);
}

void ModemProfile::updateAddParameters(wds_create_profile_req_msg_v01& request) const {
  std::memset(&request, 0, sizeof request);
  mapFields(FillMessage{}, *this, request);
  request.persistent_valid = 1;
  request.persistent = isPersistent ? 1 : 0;
}

void ModemProfile::updateModifyParameters(wds_modify_profile_settings_req_msg_v01& request) const {
  std::memset(&request, 0, sizeof request);
  request.profile = constructProfileIdentifier();
  // Persistence is fixed at creation and never sent here.
  mapFields(FillMessage{}, *this, request);
}

std::optional<IPType> ModemProfile::homeIPType() const {
  if (overrideHomeIPType && *overrideHomeIPType != IPType::UNKNOWN) {
    return overrideHomeIPType;
  }
  return commonIPType;
}

bool ModemProfile::matchApnName(const FilterProfileParams& filter) const {
  const auto& wanted = RecordAccess::apnName(filter);
  if (!wanted) {
    return true;
  }
  if (!apnName) {
    return false;
  }
  if ((filter.getFilterMatchCriteria() & ApnNameSubset) != 0) {
    return apnName->find(normalizeApnName(*wanted)) != std::string::npos;
  }
  // Normalises while it compares: this runs for every profile of every filter.
  const std::size_t length = std::min(wanted->size(), apnNameBytesMax);
  return apnName->size() == length &&
         std::equal(apnName->begin(), apnName->end(), wanted->begin(),
                    [](char own, char other) { return own == lowerCase(other); });
}

bool ModemProfile::match(const FilterProfileParams& filter) const {
  if (!matchApnName(filter)) {
    return false;
  }
  const unsigned int criteria = filter.getFilterMatchCriteria();
  if (const auto& wanted = RecordAccess::homeIPType(filter)) {
    const std::optional<IPType> actual = homeIPType();
    if (!actual || !matchIPType(*wanted, *actual, (criteria & HomeIPSubset) != 0,
                                (criteria & HomeIPSuperset) != 0)) {
      return false;
    }
  }
  if (const auto& mask = RecordAccess::apnTypesMask(filter)) {
    const bool matches = (criteria & ApnTypeBitmaskSubset) != 0 ? matchSubsetApnTypesMask(*mask)
                                                                : matchExactApnTypesMask(*mask);
    if (!matches) {
      return false;
    }
  }
  bool equal = true;
  RecordAccess::forEachShared(
      [&equal](const auto& wanted, const auto& own) {
        equal = equal && (!wanted || wanted == own);
      },
      static_cast<const ProfileParams&>(filter), *this);
  return equal && (!filter.hasFilterByProfileId() || filter.getFilterByProfileId() == profileId);
}

bool ModemProfile::matchSubsetApnTypesMask(unsigned int mask) const {
  const std::uint64_t wanted = convertToOvixApnTypeMask(mask);
  return apnTypesMask && (*apnTypesMask & wanted) == wanted;
}

bool ModemProfile::matchExactApnTypesMask(unsigned int mask) const {
  return apnTypesMask && *apnTypesMask == convertToOvixApnTypeMask(mask);
}

void ModemProfile::updateDiffParameters(const ModifyProfileParams& params, ProfileParams& changes,
                                        bool& changed) const {
  if (const auto& wanted = RecordAccess::apnName(params)) {
    std::string name = normalizeApnName(*wanted);
    if (apnName != name) {
      changes.setApnName(std::move(name));
      changed = true;
    }
  }
  if (const auto& mask = RecordAccess::apnTypesMask(params)) {
    // In the client's bits: a bit without a counterpart on the modem is always a difference.
    if (!apnTypesMask || convertToCommonApnTypeMask(*apnTypesMask) != *mask) {
      changes.setApnTypesMask(*mask);
      changed = true;
    }
  }
  RecordAccess::forEachShared(
      [&changed](const auto& wanted, const auto& own, auto& change) {
        if (wanted && wanted != own) {
          change = wanted;
          changed = true;
        }
      },
      static_cast<const ProfileParams&>(params), *this, changes);
}

void ModemProfile::updateGetParameters(FilterProfileParams& out) const {
  if (apnName) {
    out.setApnName(*apnName);
  }
  if (apnTypesMask) {
    out.setApnTypesMask(convertToCommonApnTypeMask(*apnTypesMask));
  }
  RecordAccess::forEachShared(copyIfPresent, *this, static_cast<ProfileParams&>(out));
}

void ModemProfile::apply(const std::shared_ptr<ModemProfile>& changes) {
  if (changes == nullptr) {
    return;
  }
  if (changes->apnName) {
    apnName = normalizeApnName(*changes->apnName);
  }
  copyIfPresent(changes->apnTypesMask, apnTypesMask);
  copyIfPresent(changes->commonIPType, commonIPType);
  copyIfPresent(changes->overrideHomeIPType, overrideHomeIPType);
  RecordAccess::forEachShared(copyIfPresent, static_cast<const ModemProfile&>(*changes), *this);
}

std::string ModemProfile::dump() const {
  std::string text;
  text.reserve(dumpCharsTypical);
  appendEntry(text, "ProfileId=", profileId);
  appendEntry(text, "ApnName=", apnName);
  appendEntry(text, "UserName=", userName);
  appendEntry(text, "Password=", password);
  appendEntry(text, "AuthType=", authType);
  appendEntry(text, "CommonIPType=", commonIPType);
  appendEntry(text, "ApnTypesMask=", apnTypesMask);
  appendEntry(text, "ApnClass=", apnClass);
  appendEntry(text, "IsClatEnabled=", isClatEnabled);
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

// An empty listener has nobody to tell, and what a client's listener throws must not end the
// library or keep the next client from being told.
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
