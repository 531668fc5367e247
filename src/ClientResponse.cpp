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

AddResponse::AddResponse(Status newStatus, std::shared_ptr<IProfileKey> newKey)
    : ClientResponse(ReqRespType::Add), key(std::move(newKey)) {
  status = newStatus;
}

std::string AddResponse::dump() const {
  std::string text = ClientResponse::dump();
  text += ' ';
  if (key != nullptr) {
    text += key->dump();
  }
  return text;
}

ModifyResponse::ModifyResponse(Status newStatus) : ClientResponse(ReqRespType::Modify) {
  status = newStatus;
}

DeleteResponse::DeleteResponse(Status newStatus) : ClientResponse(ReqRespType::Delete) {
  status = newStatus;
}

FilterResponse::FilterResponse(Status newStatus, std::list<std::shared_ptr<IProfileKey>> keys)
    : ClientResponse(ReqRespType::Filter), result(std::move(keys)) {
  status = newStatus;
}

std::string FilterResponse::dump() const {
  std::string text = ClientResponse::dump();
  text += ' ';
  for (const std::shared_ptr<IProfileKey>& key : result) {
    text += key != nullptr ? key->dump() : "null";
    text += ',';
  }
  return text;
}

MatchResponse::MatchResponse(Status newStatus, bool matches)
    : ClientResponse(ReqRespType::Match), result(matches) {
  status = newStatus;
}

std::string MatchResponse::dump() const {
  return ClientResponse::dump() + (result ? " true" : " false");
}

GetResponse::GetResponse(Status newStatus, std::optional<ProfileParams> found)
    : ClientResponse(ReqRespType::Get), params(std::move(found)) {
  status = newStatus;
}

std::string GetResponse::dump() const {
  std::string text = ClientResponse::dump();
  text += ' ';
  if (params) {
    text += params->dump();
  }
  return text;
}

CallbackResponse::CallbackResponse(Status newStatus, std::list<ExpirationListener> listeners)
    : ClientResponse(ReqRespType::Callback), endedListeners(std::move(listeners)) {
  status = newStatus;
}

RefreshResponse::RefreshResponse(Status newStatus) : ClientResponse(ReqRespType::Refresh) {
  status = newStatus;
}

}  // namespace pavo
