// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ClientRequest.h"

#include "DumpText.h"

#include <utility>

namespace pavo {

namespace {

std::string textOf(const std::shared_ptr<IProfileKey>& key) {
  return key != nullptr ? key->dump() : std::string();
}

}  // namespace

std::string ClientRequest::dump() const {
  std::string text;
  appendValue(text, type);
  text += ' ';
  return text;
}

const std::string& ClientRequest::text() const {
  if (dumped.empty()) {
    dumped = dump();
  }
  return dumped;
}

AddRequest::AddRequest(AddProfileParams params)
    : ClientRequest(ReqRespType::Add), params(std::move(params)) {}

std::string AddRequest::dump() const { return ClientRequest::dump() + params.dump(); }

ModifyRequest::ModifyRequest(ModifyProfileParams params, std::shared_ptr<IProfileKey> key)
    : ClientRequest(ReqRespType::Modify), params(std::move(params)), key(std::move(key)) {}

std::string ModifyRequest::dump() const {
  return ClientRequest::dump() + textOf(key) + " " + params.dump();
}

DeleteRequest::DeleteRequest(std::shared_ptr<IProfileKey> key)
    : ClientRequest(ReqRespType::Delete), key(std::move(key)) {}

std::string DeleteRequest::dump() const { return ClientRequest::dump() + textOf(key); }

FilterRequest::FilterRequest(FilterProfileParams params)
    : ClientRequest(ReqRespType::Filter), params(std::move(params)) {}

std::string FilterRequest::dump() const {
  return ClientRequest::dump() + "params: " + params.dump();
}

MatchRequest::MatchRequest(FilterProfileParams params, std::shared_ptr<IProfileKey> key)
    : ClientRequest(ReqRespType::Match), params(std::move(params)), key(std::move(key)) {}

std::string MatchRequest::dump() const {
  return ClientRequest::dump() + textOf(key) + " " + params.dump();
}

GetRequest::GetRequest(std::shared_ptr<IProfileKey> key)
    : ClientRequest(ReqRespType::Get), key(std::move(key)) {}

std::string GetRequest::dump() const { return ClientRequest::dump() + textOf(key); }

std::string CallbackRequest::dump() const {
  std::string text = ClientRequest::dump();
  if (hasReleaseToken()) {
    text += "Release ";
    appendValue(text, getReleaseToken());
  } else if (hasExpirationInfo()) {
    text += "Register ";
    // The caller that registers the listener holds its key during the call, so `key` is never the
    // last handle.
    const std::shared_ptr<IProfileKey> key = expirationKey->lock();
    text += key != nullptr ? key->dump() : "null";
    appendValue(text, getExpirationToken());
  }
  return text;
}

void CallbackRequest::setReleaseToken(unsigned long long token) { releaseToken = token; }

void CallbackRequest::setReleasedKey(std::weak_ptr<IProfileKey> key) {
  releasedKey = std::move(key);
}

void CallbackRequest::setExpirationInfo(std::function<void()> callback,
                                        std::weak_ptr<IProfileKey> key, unsigned long long token) {
  expirationCb = std::move(callback);
  expirationKey = std::move(key);
  expirationToken = token;
}

bool CallbackRequest::hasExpirationInfo() const {
  return expirationToken && expirationCb && expirationKey;
}

std::function<void()> CallbackRequest::getExpirationCb() const {
  return expirationCb ? *expirationCb : std::function<void()>();
}

std::weak_ptr<IProfileKey> CallbackRequest::getExpirationKey() const {
  return expirationKey ? *expirationKey : std::weak_ptr<IProfileKey>();
}

}  // namespace pavo
