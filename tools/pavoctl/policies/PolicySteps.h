// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The steps of a policy or a search, in the form of JSON: what was looked for, what was found, what
// kept the others from being found, what was changed and created.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/ModifyProfileParams.h>

#include "session/Snapshot.h"

#include <cstdint>
#include <string>
#include <vector>

namespace pavoctl {

using Token = std::uint64_t;
using Profiles = std::vector<CachedProfile>;

// The filter as JSON: its attributes, id, isPavoProfile and isIAProfile, and under "criteria" what
// loosens it.
Json toJson(const pavo::FilterProfileParams& filter, Secrets secrets);

class PolicySteps {
 public:
  explicit PolicySteps(Secrets shownSecrets) : secrets(shownSecrets) {}

  // A search that looks for one profile takes the first that it finds.
  void search(const std::string& why, const pavo::FilterProfileParams& filter,
              const std::vector<Token>& found, const Profiles& profiles, bool isForOne);
  // A question about one profile.
  void check(const CachedProfile& profile, const std::string& question, bool answer,
             const std::string& because);
  void compare(const CachedProfile& profile, const std::string& why,
               const pavo::FilterProfileParams& filter, bool isMatching);
  void change(const std::string& why, const pavo::ModifyProfileParams& wanted,
              const CachedProfile& before, const CachedProfile& after, ChangeOutcome outcome);
  void create(const std::string& why, const pavo::AddProfileParams& wanted,
              const CachedProfile* profile);
  void note(const std::string& text);

  const Json& json() const { return all; }

 private:
  // What kept the profile from matching.
  Json mismatch(const CachedProfile& profile, const std::string& key, const Json& filter) const;

  const Secrets secrets;
  Json all = Json::array();
};

}  // namespace pavoctl
