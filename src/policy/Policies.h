// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The library's policies. They choose the profile for a data call, an emergency call or LTE attach,
// and write a list of wanted profiles to the modem. <pavo/Util.h> describes what they do for a
// client. Each policy is a handful of operations in a fixed order, with lines of the library's log
// between them.
#pragma once

#include <pavo/ProfileParams.h>

#include "PolicyObserver.h"
#include "ProfileOperations.h"

#include <list>
#include <string>

namespace pavo::policy {

inline constexpr auto Debug = LineLevel::Debug;
inline constexpr auto High = LineLevel::High;
inline constexpr auto Error = LineLevel::Error;

// One run of a policy.
struct Run {
  ProfileOperations& profiles;
  PolicyObserver& observer;
  // Whether a found profile may be changed to the wanted one.
  bool updateAllowed = false;

  // Writes a line of the library's log.
  __attribute__((format(printf, 3, 4))) void log(LineLevel level, const char* format, ...) const;
  void enter(Stage stage, unsigned int apnTypes = 0) const { observer.enter(stage, apnTypes); }
};

Key findOrCreateProfileForSetupDataCall(const Run& run, const ProfileParams& params);
Key findOrCreateProfileForEmergencyDataCall(const Run& run, const ProfileParams& params);

bool matchLteAttachProfileId(const Run& run, int profileId, const ProfileParams& params);
Key findOrCreateProfileForLteAttach(const Run& run, const ProfileParams& params);
// Returns true for the modem's own profiles and for the library's initial-attach profile, and false
// for the library's other profiles.
bool isUsableForAttach(const ProfileParams& profile);

void updateModemProfileByApnClass(const Run& run, const std::list<ProfileParams>& profiles);
void updateModemProfileByApnClassAndTechType(const Run& run, const ProfileParams& profile);

void updateAPNTypeBitmaskOnModemProfile(const Run& run, const std::list<ProfileParams>& profiles);
void handleCombinedProfileUpdate(const Run& run, unsigned int mask, const std::string& apnName);
void handleProfileUpdateByTechType(const Run& run, const TypesByIPType& types,
                                   const std::string& apnName);
bool updateByIpType(const Run& run, IPType type, unsigned int mask, const std::string& apnName);

}  // namespace pavo::policy
