// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/Util.h>

#include "LogWrapper.h"
#include "policy/ManagerOperations.h"
#include "policy/Policies.h"

#include <string>

namespace pavo {

namespace {

class LibraryLog final : public policy::PolicyObserver {
 public:
  void log(policy::LineLevel level, const char* line) override {
    LogWrapper::log(levelOf(level), logTag, "%s", line);
  }

 private:
  static LogLevel levelOf(policy::LineLevel level) {
    switch (level) {
      case policy::LineLevel::Debug:
        return LogLevel::Debug;
      case policy::LineLevel::Error:
        return LogLevel::Error;
      case policy::LineLevel::High:
        break;
    }
    return LogLevel::High;
  }
};

// One call of a policy on a manager.
struct Call {
  Call(Manager& manager, bool updateAllowed)
      : profiles(manager), run{profiles, log, updateAllowed} {}

  policy::ManagerOperations profiles;
  LibraryLog log;
  policy::Run run;
};

}  // namespace

Util::Util() : manager(Manager::getInstance()) {
  LogWrapper::log(LogLevel::Debug, logTag, "pavo::Util: constructor");
}

Util::~Util() { LogWrapper::log(LogLevel::Debug, logTag, "pavo::Util: destructor"); }

void Util::setProfileUpdateAllowed(bool allowed) noexcept {
  const std::string text = std::string("pavo::Util: profileUpdateAllowed ") + (allowed ? "1" : "0");
  // This line is known by its whole text, so the text is the format itself and no argument of "%s".
  // The text holds no conversion, so the warning does not apply.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  LogWrapper::log(LogLevel::High, logTag, text.c_str());
#pragma GCC diagnostic pop
  profileUpdateAllowed = allowed;
}

std::shared_ptr<IProfileKey> Util::findOrCreateProfileForSetupDataCall(
    const ProfileParams& params) noexcept {
  return policy::findOrCreateProfileForSetupDataCall(Call(manager, profileUpdateAllowed).run,
                                                     params);
}

std::shared_ptr<IProfileKey> Util::findOrCreateProfileForEmergencyDataCall(
    const ProfileParams& params) noexcept {
  return policy::findOrCreateProfileForEmergencyDataCall(Call(manager, profileUpdateAllowed).run,
                                                         params);
}

bool Util::matchLteAttachProfileId(int profileId, const ProfileParams& params) noexcept {
  return policy::matchLteAttachProfileId(Call(manager, profileUpdateAllowed).run, profileId,
                                         params);
}

std::shared_ptr<IProfileKey> Util::findOrCreateProfileForLteAttach(
    const ProfileParams& params) noexcept {
  return policy::findOrCreateProfileForLteAttach(Call(manager, profileUpdateAllowed).run, params);
}

void Util::updateModemProfileByApnClass(const std::list<ProfileParams>& profiles) noexcept {
  policy::updateModemProfileByApnClass(Call(manager, profileUpdateAllowed).run, profiles);
}

void Util::updateModemProfileByApnClassAndTechType(const ProfileParams& profile) noexcept {
  policy::updateModemProfileByApnClassAndTechType(Call(manager, profileUpdateAllowed).run, profile);
}

void Util::updateAPNTypeBitmaskOnModemProfile(const std::list<ProfileParams>& profiles) noexcept {
  policy::updateAPNTypeBitmaskOnModemProfile(Call(manager, profileUpdateAllowed).run, profiles);
}

void Util::handleCombinedProfileUpdate(unsigned int mask, std::string apnName) noexcept {
  policy::handleCombinedProfileUpdate(Call(manager, profileUpdateAllowed).run, mask, apnName);
}

void Util::handleProfileUpdateByTechType(unsigned int v4Mask, unsigned int v6Mask,
                                         unsigned int v4v6Mask, std::string apnName) noexcept {
  policy::handleProfileUpdateByTechType(Call(manager, profileUpdateAllowed).run,
                                        {v4Mask, v6Mask, v4v6Mask}, apnName);
}

bool Util::updateByIpType(IPType type, unsigned int mask, std::string apnName) noexcept {
  return policy::updateByIpType(Call(manager, profileUpdateAllowed).run, type, mask, apnName);
}

}  // namespace pavo
