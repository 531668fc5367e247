// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/Manager.h>

#include "ProfileOperations.h"

namespace pavo::policy {

// Performs the operations with a Manager.
class ManagerOperations final : public ProfileOperations {
 public:
  explicit ManagerOperations(Manager& manager) : manager(manager) {}

  std::list<Key> filter(const FilterProfileParams& params) override {
    return manager.filter(params);
  }
  std::optional<ProfileParams> get(const Key& key) override { return manager.getProfile(key); }
  bool match(const FilterProfileParams& params, const Key& key) override {
    return manager.match(params, key);
  }
  bool modify(const ModifyProfileParams& params, const Key& key) override {
    return manager.modifyProfile(params, key);
  }
  Key add(const AddProfileParams& params) override { return manager.addProfile(params); }

 private:
  Manager& manager;
};

}  // namespace pavo::policy
