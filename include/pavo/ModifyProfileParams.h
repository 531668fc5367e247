// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/ProfileParams.h>

namespace pavo {

/// The attributes to change on an existing profile. Absent ones stay as they are.
class PAVO_API ModifyProfileParams : public ProfileParams {
 public:
  /// Changes nothing.
  ModifyProfileParams();
  /// Changes every attribute that params has. Its two flags (created by the library, initial-attach
  /// profile) are fixed when a profile is created and are ignored. The conversion is implicit, so
  /// that a description of a profile can be passed where a change is wanted.
  ModifyProfileParams(const ProfileParams& params);
  ModifyProfileParams(const ModifyProfileParams&);
  ModifyProfileParams& operator=(const ModifyProfileParams&);
  ModifyProfileParams(ModifyProfileParams&&) noexcept;
  ModifyProfileParams& operator=(ModifyProfileParams&&) noexcept;
  ~ModifyProfileParams() override;
};

}  // namespace pavo
