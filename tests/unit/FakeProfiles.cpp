// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FakeProfiles.h"

#include "Modem3gppProfile.h"
#include "matching/Changes.h"
#include "matching/Matching.h"

namespace pavo::test {
namespace {

class FakeKey : public IProfileKey {
 public:
  explicit FakeKey(int number) : id(number) {}

  int getProfileId() override { return id; }
  void registerExpirationListener(std::function<void()> /*listener*/) override {}
  std::string dump() override { return "profile " + std::to_string(id); }

 private:
  const int id;
};

std::string trimmed(std::string text) {
  while (text.ends_with(' ')) {
    text.pop_back();
  }
  return text;
}

class ShownProfile : public Modem3gppProfile {
 public:
  explicit ShownProfile(const ProfileSettings& shown) : Modem3gppProfile(ProfileParams()) {
    settings = shown;
  }
};

// Returns the settings without the number.
std::string textOf(const ProfileSettings& settings) {
  const std::string text = ShownProfile(settings).dump();
  return text.substr(text.find(',') + 1);
}

}  // namespace

std::list<Key> FakeProfiles::filter(const FilterProfileParams& params) {
  std::list<Key> found;
  std::string line = "filter " + trimmed(params.dump()) + " finds";
  for (const auto& [id, profile] : table) {
    if (firstMismatch(profile, params) == Criterion::None) {
      found.push_back(std::make_shared<FakeKey>(id));
      line += " " + std::to_string(id);
    }
  }
  lines.push_back(found.empty() ? line + " nothing" : line);
  return found;
}

std::optional<ProfileParams> FakeProfiles::get(const Key& key) {
  lines.push_back("get " + std::to_string(key->getProfileId()));
  return clientView(profileOf(key));
}

bool FakeProfiles::match(const FilterProfileParams& params, const Key& key) {
  const bool isMatching = firstMismatch(profileOf(key), params) == Criterion::None;
  lines.push_back("match " + std::to_string(key->getProfileId()) + " " + trimmed(params.dump()) +
                  (isMatching ? " is true" : " is false"));
  return isMatching;
}

bool FakeProfiles::modify(const ModifyProfileParams& params, const Key& key) {
  const std::string id = std::to_string(key->getProfileId());
  lines.push_back(trimmed("modify " + id + " " + params.dump()));
  ProfileSettings planned;
  if (planChanges(profileOf(key), params, planned)) {
    changes.push_back("modify " + id + " " + textOf(planned));
    if (!isRefusing) {
      applyChanges(planned, profileOf(key));
    }
  }
  return true;
}

Key FakeProfiles::add(const AddProfileParams& params) {
  ProfileSettings profile;
  copySettings(params, profile);
  profile.profileName =
      params.getIsIAProfile() ? ProfileSettings::pavoIAName : ProfileSettings::pavoName;
  changes.push_back("create " + textOf(profile));
  const std::string line = "add" + params.dump();
  if (isRefusing) {
    lines.push_back(line + " fails");
    return nullptr;
  }
  const int id = static_cast<int>(table.size()) + 1;
  profile.profileId = id;
  table[id] = profile;
  lines.push_back(line + " makes " + std::to_string(id));
  return std::make_shared<FakeKey>(id);
}

void FakeProfiles::log(policy::LineLevel level, const char* line) {
  lines.push_back(std::string(1, "DHE"[static_cast<int>(level)]) + " " + line);
}

}  // namespace pavo::test
