// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ClientResponse.h"

#include "DumpText.h"

#include <utility>

namespace pavo {

ClientResponse::~ClientResponse() = default;

std::string ClientResponse::dump() const {
  std::string text;
  text.reserve(dumpCharsTypical);
  appendValue(text, type);
  text += ' ';
  appendValue(text, status);
  return text;
}

AddResponse::AddResponse(Status status, std::shared_ptr<IProfileKey> key)
    : ClientResponse(ReqRespType::Add, status), key(std::move(key)) {}

std::string AddResponse::dump() const {
  std::string text = ClientResponse::dump();
  text += ' ';
  if (key != nullptr) {
    text += key->dump();
  }
  return text;
}

ModifyResponse::ModifyResponse(Status status) : ClientResponse(ReqRespType::Modify, status) {}

DeleteResponse::DeleteResponse(Status status) : ClientResponse(ReqRespType::Delete, status) {}

FilterResponse::FilterResponse(Status status, std::list<std::shared_ptr<IProfileKey>> result)
    : ClientResponse(ReqRespType::Filter, status), result(std::move(result)) {}

std::string FilterResponse::dump() const {
  std::string text = ClientResponse::dump();
  text += ' ';
  for (const std::shared_ptr<IProfileKey>& key : result) {
    text += key != nullptr ? key->dump() : "null";
    text += ',';
  }
  return text;
}

MatchResponse::MatchResponse(Status status, bool result)
    : ClientResponse(ReqRespType::Match, status), result(result) {}

std::string MatchResponse::dump() const {
  return ClientResponse::dump() + (result ? " true" : " false");
}

GetResponse::GetResponse(Status status, std::optional<ProfileParams> params)
    : ClientResponse(ReqRespType::Get, status), params(std::move(params)) {}

std::string GetResponse::dump() const {
  std::string text = ClientResponse::dump();
  text += ' ';
  if (params) {
    text += params->dump();
  }
  return text;
}

CallbackResponse::CallbackResponse(Status status, std::list<ExpirationListener> endedListeners)
    : ClientResponse(ReqRespType::Callback, status), endedListeners(std::move(endedListeners)) {}

RefreshResponse::RefreshResponse(Status status) : ClientResponse(ReqRespType::Refresh, status) {}

}  // namespace pavo
