// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/ProfileParams.h>

namespace pavo {

/// A profile to be created. An attribute that is absent is left to the modem.
class PAVO_API AddProfileParams : public ProfileParams {
 public:
  /// @param isPersistent whether the profile is to survive a power cycle of the modem
  /// @param isIAProfile whether it is the library's profile for LTE initial attach
  AddProfileParams(bool isPersistent, bool isIAProfile);
  /// Copies every attribute of params, then sets the two flags.
  AddProfileParams(const ProfileParams& params, bool isPersistent, bool isIAProfile);
  AddProfileParams(const AddProfileParams&);
  AddProfileParams& operator=(const AddProfileParams&);
  AddProfileParams(AddProfileParams&&) noexcept;
  AddProfileParams& operator=(AddProfileParams&&) noexcept;
  ~AddProfileParams() override;

  /// Whether the profile survives a power cycle of the modem. A profile that does not is deleted
  /// when its last key is dropped.
  bool getIsPersistent() const;

  /// " persist=0: " or " persist=1: ", then the attributes.
  std::string dump() const override;

 private:
  bool isPersistent;
};

}  // namespace pavo
