// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The worker's responses. A response is immutable. The caller casts it to the class that belongs to
// the type of its own request.
#pragma once

#include <pavo/IProfileKey.h>
#include <pavo/ProfileParams.h>

#include "ExpirationListener.h"
#include "ReqRespType.h"

#include <list>
#include <memory>
#include <optional>
#include <string>

namespace pavo {

class ClientResponse {
 public:
  explicit ClientResponse(ReqRespType type, Status status = Status::Failure)
      : type(type), status(status) {}
  ClientResponse(const ClientResponse&) = delete;
  ClientResponse& operator=(const ClientResponse&) = delete;
  virtual ~ClientResponse() = 0;

  // Returns one line for the log.
  virtual std::string dump() const;

  ReqRespType getResponseType() const { return type; }
  Status getStatus() const { return status; }

 private:
  const ReqRespType type;
  const Status status;
};

class AddResponse : public ClientResponse {
 public:
  AddResponse(Status status, std::shared_ptr<IProfileKey> key);
  std::string dump() const override;
  // Returns an empty key when nothing was created, whatever the status.
  const std::shared_ptr<IProfileKey>& getAddProfileKey() const { return key; }

 private:
  const std::shared_ptr<IProfileKey> key;
};

class ModifyResponse : public ClientResponse {
 public:
  explicit ModifyResponse(Status status);
};

class DeleteResponse : public ClientResponse {
 public:
  explicit DeleteResponse(Status status);
};

class FilterResponse : public ClientResponse {
 public:
  FilterResponse(Status status, std::list<std::shared_ptr<IProfileKey>> result);
  std::string dump() const override;
  const std::list<std::shared_ptr<IProfileKey>>& getFilterResult() const { return result; }

 private:
  const std::list<std::shared_ptr<IProfileKey>> result;
};

class MatchResponse : public ClientResponse {
 public:
  MatchResponse(Status status, bool result);
  std::string dump() const override;
  bool getMatchResult() const { return result; }

 private:
  const bool result;
};

class GetResponse : public ClientResponse {
 public:
  GetResponse(Status status, std::optional<ProfileParams> params);
  std::string dump() const override;
  const std::optional<ProfileParams>& getParams() const { return params; }

 private:
  const std::optional<ProfileParams> params;
};

class CallbackResponse : public ClientResponse {
 public:
  explicit CallbackResponse(Status status, std::list<ExpirationListener> endedListeners = {});

 private:
  // The listeners of a released key. They are destroyed with the response, on the thread that drops
  // the key, because the destructor of a client's closure may take any lock.
  const std::list<ExpirationListener> endedListeners;
};

class RefreshResponse : public ClientResponse {
 public:
  explicit RefreshResponse(Status status);
};

}  // namespace pavo
