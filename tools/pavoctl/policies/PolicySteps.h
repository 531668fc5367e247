// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The steps of a policy or a search in JSON. They hold each search with the profiles that it found,
// the reason why it did not find the others, and each change and creation.
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

// Returns the filter as JSON: its attributes, id, isPavoProfile and isIAProfile. The member
// "criteria" names the match types that loosen the comparison.
Json toJson(const pavo::FilterProfileParams& filter, Secrets secrets);

class PolicySteps {
 public:
  explicit PolicySteps(Secrets shownSecrets) : secrets(shownSecrets) {}

  // Records a search. A search for one profile takes the first that it finds.
  void search(const std::string& why, const pavo::FilterProfileParams& filter,
              const std::vector<Token>& found, const Profiles& profiles, bool isForOne);
  // Records a question about one profile.
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
  // Returns the attribute that kept the profile from matching, with its values.
  Json mismatch(const CachedProfile& profile, const std::string& key, const Json& filter) const;

  const Secrets secrets;
  Json all = Json::array();
};

}  // namespace pavoctl
