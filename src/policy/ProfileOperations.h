// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The operations that the policies perform on profiles. They are the Manager's operations, wherever
// the profiles are.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/IProfileKey.h>
#include <pavo/ModifyProfileParams.h>
#include <pavo/ProfileParams.h>

#include <list>
#include <memory>
#include <optional>

namespace pavo::policy {

using Key = std::shared_ptr<IProfileKey>;

class ProfileOperations {
 public:
  virtual std::list<Key> filter(const FilterProfileParams& params) = 0;
  virtual std::optional<ProfileParams> get(const Key& key) = 0;
  virtual bool match(const FilterProfileParams& params, const Key& key) = 0;
  virtual bool modify(const ModifyProfileParams& params, const Key& key) = 0;
  // Returns an empty key when the profile could not be created.
  virtual Key add(const AddProfileParams& params) = 0;

 protected:
  ~ProfileOperations() = default;
};

}  // namespace pavo::policy
