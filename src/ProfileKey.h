// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/IProfileKey.h>

#include "RequestFunction.h"

#include <functional>
#include <memory>
#include <string>

namespace pavo {

// The library's only class of keys. Only the cache makes keys, and always as shared objects. A key
// is immutable. It never touches the cache, but sends requests to the worker. It may outlive the
// worker; its request function then returns an empty response.
class ProfileKey : public IProfileKey, public std::enable_shared_from_this<ProfileKey> {
 public:
  ProfileKey(int profileId, unsigned long long token, requestFunction sendRequest);
  ProfileKey(const ProfileKey&) = delete;
  ProfileKey& operator=(const ProfileKey&) = delete;
  // Releases the token, even when the token is no longer cached.
  ~ProfileKey() override;

  int getProfileId() override { return profileId; }
  void registerExpirationListener(std::function<void()> listener) noexcept override;
  std::string dump() noexcept override;

  unsigned long long getToken() const { return token; }

 private:
  const int profileId;
  const unsigned long long token;
  const requestFunction sendRequest;
};

}  // namespace pavo
