#pragma once

#include <pavo/IProfileKey.h>

#include "RequestFunction.h"

#include <functional>
#include <memory>
#include <string>

namespace pavo {

// The library's one kind of key. Made by the cache only, always as a shared object; immutable. It
// never touches the cache: what it has to say goes to the worker as a request, and it may outlive
// the worker, whose request function then answers empty.
class ProfileKey : public IProfileKey, public std::enable_shared_from_this<ProfileKey> {
 public:
  ProfileKey(int profileId, unsigned long long token, requestFunction sendRequest);
  ProfileKey(const ProfileKey&) = delete;
  ProfileKey& operator=(const ProfileKey&) = delete;
  // Releases the token, whether or not it is still cached.
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
