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
    // On the worker it is copied, and to copy a client's closure may throw.
    listener = [shared = std::make_shared<const std::function<void()>>(std::move(listener))] {
      (*shared)();
    };
  }
  const auto request = std::make_shared<CallbackRequest>();
  request->setExpirationInfo(std::move(listener), weak_from_this(), token);
  if (sendRequest) {
    // The answer says nothing: the cache reports failure for a listener that it has stored, too.
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
    // The response holds this key's listeners. They end here, with none of the library's locks
    // held.
    sendRequest(request);
  }
  LogWrapper::log(LogLevel::Debug, logTag, "~ProfileKey");
}

}  // namespace pavo
