#pragma once

namespace pavo {

// What a filter may ask of a profile, in the order in which profiles are compared.
enum class Criterion {
  None,
  ApnName,
  HomeIPType,
  UserName,
  Password,
  AuthType,
  ApnTypesMask,
  ApnClass,
  IsClatEnabled,
  ProfileId,
  IsIAProfile,
  IsPavoProfile,
  RoamIPType,
  MaxPdnsConnPerBlock,
  MaxPdnConnTimer,
  PdnReqWaitInterval,
  IsApnDisabled,
  IsEmergencySupported,
};

}  // namespace pavo
