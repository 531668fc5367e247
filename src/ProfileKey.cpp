// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ProfileKey.h"

#include "ClientRequest.h"
#include "DumpText.h"
#include "LogWrapper.h"

#include <utility>

namespace pavo {

ProfileKey::ProfileKey(int profileId, unsigned long long token, requestFunction sendRequest)
    : profileId(profileId), token(token), sendRequest(std::move(sendRequest)) {}

void ProfileKey::registerExpirationListener(std::function<void()> listener) noexcept {
  if (listener) {
    // The worker copies the listener, and copying a client's closure may throw. Copying this
    // wrapper runs no code of the client.
    listener = [shared = std::make_shared<const std::function<void()>>(std::move(listener))] {
      (*shared)();
    };
  }
  const auto request = std::make_shared<CallbackRequest>();
  request->setExpirationInfo(std::move(listener), weak_from_this(), token);
  if (sendRequest) {
    // The response is ignored, because the cache reports failure even for a listener that it has
    // stored.
    sendRequest(request);
  }
}

std::string ProfileKey::dump() noexcept {
  std::string text;
  appendValue(text, profileId);
  text += " token=";
  appendValue(text, token);
  return text;
}

ProfileKey::~ProfileKey() {
  const auto request = std::make_shared<CallbackRequest>();
  request->setReleaseToken(token);
  request->setReleasedKey(weak_from_this());
  if (sendRequest) {
    // The response holds this key's listeners. They are destroyed here, where this thread holds
    // none of the library's locks.
    sendRequest(request);
  }
  LogWrapper::log(LogLevel::Debug, logTag, "~ProfileKey");
}

}  // namespace pavo
