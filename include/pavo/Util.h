#pragma once

#include <pavo/Export.h>
#include <pavo/IProfileKey.h>
#include <pavo/Manager.h>
#include <pavo/ProfileParams.h>

#include <list>
#include <memory>
#include <string>

namespace pavo {

/// Policies on top of the process-wide Manager, which has to be initialised: which profile serves a
/// data call, an emergency call or LTE attach, and how a list of wanted profiles reaches the modem.
///
/// An object holds nothing but its switch and may be made and dropped at will, on any thread but
/// the library's worker; one object is for one thread at a time. Every operation is several calls
/// of the Manager, each of which blocks as described there: at most one request to the modem for a
/// call or attach; for a list one for each profile that an element's class or a name reaches, or
/// two where a profile of type V4 or V6 gets its own types and then those of an IP type that has no
/// profile. Other clients may change profiles in between. Failures show only as empty results and
/// in the log. Nothing throws.
class PAVO_API Util {
 public:
  /// Makes the process-wide Manager when there is none yet.
  Util();
  Util(const Util&) = delete;
  Util& operator=(const Util&) = delete;
  ~Util();

  /// Whether the policies may change a profile that they find to the caller's parameters, instead
  /// of looking for one that has them already. False at first; takes effect with the next
  /// operation.
  void setProfileUpdateAllowed(bool allowed) noexcept;

  /// The profile for a data call: the first with the APN name and, unless updates are allowed, with
  /// the home IP type, or one whose type contains it or is contained in it; else a new
  /// non-persistent one. With updates allowed a found profile is changed to params; whether the
  /// modem took the change is not examined. A name or type that is absent is not looked at: without
  /// both, the first of all profiles is taken. The order of the profiles is none in particular.
  /// @return empty when nothing was found and the modem did not create one
  std::shared_ptr<IProfileKey> findOrCreateProfileForSetupDataCall(
      const ProfileParams& params) noexcept;

  /// The profile for an emergency data call (3GPP TS 23.401, 4.3.12): one that supports emergency
  /// calls, preferably of the APN name; else a new persistent one of params, but with EMERGENCY as
  /// its only APN type. Never changes an existing profile.
  /// @return empty when nothing was found and the modem did not create one
  std::shared_ptr<IProfileKey> findOrCreateProfileForEmergencyDataCall(
      const ProfileParams& params) noexcept;

  /// Whether the modem's profile of that index may be used for LTE attach with params: a profile of
  /// the modem, or the library's own one for initial attach, that matches in APN name, IP types,
  /// user name, password and authentication. Unless updates are allowed, the IP types of a modem's
  /// profile need only contain, or be contained in, the wanted.
  /// @return false also when there is no such profile
  bool matchLteAttachProfileId(int profileId, const ProfileParams& params) noexcept;

  /// The profile for LTE attach (3GPP TS 23.401, 5.3.2): an exact match, a loose match, the
  /// library's initial-attach profile of that name, any such profile, in this order; it is then
  /// brought to params as far as its kind allows. Else a new persistent initial-attach profile.
  std::shared_ptr<IProfileKey> findOrCreateProfileForLteAttach(
      const ProfileParams& params) noexcept;

  /// Makes every profile of an APN class that the list names carry the listed settings; creates a
  /// persistent one where the class has none.
  void updateModemProfileByApnClass(const std::list<ProfileParams>& profiles) noexcept;
  /// The same for one profile; nothing for one without a class.
  void updateModemProfileByApnClassAndTechType(const ProfileParams& profile) noexcept;

  /// Writes, for each APN name of the list, the union of the APN types that the list asks for, by
  /// home IP type, onto the modem's profiles of that name. Types of an IP type that the modem has
  /// no profile of go to the profiles of the other types. With updates allowed every profile of the
  /// name gets all types. An absent mask counts as 0, an absent home IP type as V4V6.
  void updateAPNTypeBitmaskOnModemProfile(const std::list<ProfileParams>& profiles) noexcept;
  /// One mask of ApnTypes for all profiles of a name.
  void handleCombinedProfileUpdate(unsigned int mask, std::string apnName) noexcept;
  /// One mask for each home IP type, with the fall-back.
  void handleProfileUpdateByTechType(unsigned int v4Mask, unsigned int v6Mask,
                                     unsigned int v4v6Mask, std::string apnName) noexcept;
  /// @return whether there is a profile of that name and home IP type
  bool updateByIpType(IPType type, unsigned int mask, std::string apnName) noexcept;

 private:
  Manager& manager;
  bool profileUpdateAllowed = false;
};

}  // namespace pavo
