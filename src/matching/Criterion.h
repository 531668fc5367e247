// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace pavo {

// The criteria of a filter, in the order in which profiles are compared.
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
