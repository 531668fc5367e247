// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/Export.h>
#include <pavo/IProfileKey.h>
#include <pavo/Manager.h>
#include <pavo/ProfileParams.h>

#include <list>
#include <memory>
#include <string>

namespace pavo {

/// Policies on top of the process-wide Manager: which profile serves a data call, an emergency call
/// or LTE attach, and how a list of wanted profiles is written to the modem. The Manager has to be
/// initialised.
///
/// An object holds nothing but one switch. It may be created and destroyed on any thread but the
/// library's worker; one object is for one thread at a time. Every operation is several calls of
/// the Manager, each of which blocks as described there. Other clients may change profiles between
/// these calls. An operation for a call or for attach sends at most one request to the modem. An
/// operation for a list sends one for each profile that an element's class or name selects, and two
/// where a profile of type V4 or V6 gets its own types and then those of an IP type that has no
/// profile. Failures show only as empty results and in the log. Nothing throws.
///
/// @code
/// pavo::ProfileParams params;
/// params.setApnName("internet");
/// params.setHomeIPType(pavo::IPType::V4V6);
/// auto key = pavo::Util().findOrCreateProfileForSetupDataCall(params);
/// @endcode
class PAVO_API Util {
 public:
  /// Makes the process-wide Manager when there is none yet.
  Util();
  Util(const Util&) = delete;
  Util& operator=(const Util&) = delete;
  ~Util();

  /// Whether the policies may change a profile that they find to the caller's parameters, instead
  /// of looking for one that has them already. False at construction. A change takes effect with
  /// the next operation.
  void setProfileUpdateAllowed(bool allowed) noexcept;

  /// Finds the profile for a data call, or creates one that is not persistent. Without updates the
  /// profile has to have the APN name and the home IP type; if there is none, a profile whose home
  /// IP type contains the wanted one, or is contained in it, serves. With updates the APN name
  /// alone counts, and the profile found is then changed to params; whether the modem took the
  /// change is not examined. A name or type that is absent is not compared: without both, the first
  /// of all profiles is taken. The order of the profiles is unspecified.
  /// @return empty when nothing was found and the modem did not create a profile
  std::shared_ptr<IProfileKey> findOrCreateProfileForSetupDataCall(
      const ProfileParams& params) noexcept;

  /// Finds the profile for an emergency data call (3GPP TS 23.401, 4.3.12): one that supports
  /// emergency calls, preferably one with the APN name. If there is none, it creates a persistent
  /// one from params with EMERGENCY as its only APN type. Existing profiles are never changed.
  /// @return empty when nothing was found and the modem did not create a profile
  std::shared_ptr<IProfileKey> findOrCreateProfileForEmergencyDataCall(
      const ProfileParams& params) noexcept;

  /// Whether the modem's profile of that index may be used for LTE attach with params. It has to
  /// match in APN name, IP types, user name, password and authentication, and it has to be the
  /// modem's own or the library's profile for initial attach. Unless updates are allowed, it is
  /// enough that the IP types of a modem's profile contain, or are contained in, the wanted ones.
  /// @return false also when there is no such profile
  bool matchLteAttachProfileId(int profileId, const ProfileParams& params) noexcept;

  /// Finds the profile for LTE attach (3GPP TS 23.401, 5.3.2): an exact match, a loose match, the
  /// library's initial-attach profile of that name, or any initial-attach profile of the library,
  /// in this order. The profile found is then changed to params as far as its kind allows. If there
  /// is none, it creates a persistent initial-attach profile.
  /// @return empty when nothing was found and the modem did not create a profile
  std::shared_ptr<IProfileKey> findOrCreateProfileForLteAttach(
      const ProfileParams& params) noexcept;

  /// For each element that has an APN class: changes every profile of that class to the element's
  /// attributes, or creates a persistent one where the class has no profile.
  void updateModemProfileByApnClass(const std::list<ProfileParams>& profiles) noexcept;
  /// The same for one element. Does nothing for an element without a class.
  void updateModemProfileByApnClassAndTechType(const ProfileParams& profile) noexcept;

  /// For each APN name of the list: writes the union of the APN types that the list wants, by home
  /// IP type, to the modem's profiles of that name. Types of an IP type that the modem has no
  /// profile of go to the profiles of the other IP types. With updates allowed, every profile of
  /// the name gets all types. An absent mask counts as 0, an absent home IP type as V4V6.
  void updateAPNTypeBitmaskOnModemProfile(const std::list<ProfileParams>& profiles) noexcept;
  /// Writes one mask of ApnTypes to all profiles of a name.
  void handleCombinedProfileUpdate(unsigned int mask, std::string apnName) noexcept;
  /// Writes one mask for each home IP type to the profiles of a name. A mask whose IP type has no
  /// profile goes to the profiles of the other IP types.
  void handleProfileUpdateByTechType(unsigned int v4Mask, unsigned int v6Mask,
                                     unsigned int v4v6Mask, std::string apnName) noexcept;
  /// Writes a mask to the profiles of that name and home IP type.
  /// @return whether there is such a profile
  bool updateByIpType(IPType type, unsigned int mask, std::string apnName) noexcept;

 private:
  Manager& manager;
  bool profileUpdateAllowed = false;
};

}  // namespace pavo
