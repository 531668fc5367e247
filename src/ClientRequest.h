// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The requests that callers' threads hand to the worker. One thread fills a request and hands it
// over. After that the request does not change, except for its cached text. It holds copies of the
// parameters and shares the keys.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/IProfileKey.h>
#include <pavo/ModifyProfileParams.h>
#include <pavo/PDCRefreshStatus.h>

#include "ReqRespType.h"
#include "RequestFunction.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace pavo {

class ClientRequest {
 public:
  explicit ClientRequest(ReqRespType type) : type(type) {}
  ClientRequest(const ClientRequest&) = delete;
  ClientRequest& operator=(const ClientRequest&) = delete;
  virtual ~ClientRequest() = default;

  // Returns one line for the log.
  virtual std::string dump() const;

  ReqRespType getRequestType() const { return type; }

  // Returns dump(), computed at the first call and cached, because caller and worker both log it.
  // The cache is not synchronised: call this only on the thread that currently owns the request.
  const std::string& text() const;

 private:
  const ReqRespType type;
  mutable std::string dumped;
};

class AddRequest : public ClientRequest {
 public:
  explicit AddRequest(AddProfileParams params);
  std::string dump() const override;
  const AddProfileParams& getAddProfileParams() const { return params; }

 private:
  const AddProfileParams params;
};

class ModifyRequest : public ClientRequest {
 public:
  ModifyRequest(ModifyProfileParams params, std::shared_ptr<IProfileKey> key);
  std::string dump() const override;
  const ModifyProfileParams& getModifyProfileParams() const { return params; }
  const std::shared_ptr<IProfileKey>& getModifyProfileKey() const { return key; }

 private:
  const ModifyProfileParams params;
  const std::shared_ptr<IProfileKey> key;
};

class DeleteRequest : public ClientRequest {
 public:
  explicit DeleteRequest(std::shared_ptr<IProfileKey> key);
  std::string dump() const override;
  const std::shared_ptr<IProfileKey>& getDeleteProfileKey() const { return key; }

 private:
  const std::shared_ptr<IProfileKey> key;
};

class FilterRequest : public ClientRequest {
 public:
  explicit FilterRequest(FilterProfileParams params);
  std::string dump() const override;
  const FilterProfileParams& getFilterParams() const { return params; }

 private:
  const FilterProfileParams params;
};

class MatchRequest : public ClientRequest {
 public:
  MatchRequest(FilterProfileParams params, std::shared_ptr<IProfileKey> key);
  std::string dump() const override;
  const FilterProfileParams& getMatchParams() const { return params; }
  const std::shared_ptr<IProfileKey>& getMatchKey() const { return key; }

 private:
  const FilterProfileParams params;
  const std::shared_ptr<IProfileKey> key;
};

class GetRequest : public ClientRequest {
 public:
  explicit GetRequest(std::shared_ptr<IProfileKey> key);
  std::string dump() const override;
  const std::shared_ptr<IProfileKey>& getProfileKey() const { return key; }

 private:
  const std::shared_ptr<IProfileKey> key;
};

class RefreshRequest : public ClientRequest {
 public:
  explicit RefreshRequest(PDCRefreshStatus status)
      : ClientRequest(ReqRespType::Refresh), status(status) {}
  PDCRefreshStatus getStatus() const { return status; }

 private:
  const PDCRefreshStatus status;
};

// A message from a key to the cache. It releases the key's token or registers a listener.
class CallbackRequest : public ClientRequest {
 public:
  CallbackRequest() : ClientRequest(ReqRespType::Callback) {}
  std::string dump() const override;

  void setReleaseToken(unsigned long long token);
  // Sets the key that is released. That key is already being destroyed, so the weak pointer only
  // identifies it.
  void setReleasedKey(std::weak_ptr<IProfileKey> key);
  void setExpirationInfo(std::function<void()> callback, std::weak_ptr<IProfileKey> key,
                         unsigned long long token);

  bool hasReleaseToken() const { return releaseToken.has_value(); }
  bool hasExpirationInfo() const;
  unsigned long long getReleaseToken() const { return releaseToken.value_or(0); }
  const std::weak_ptr<IProfileKey>& getReleasedKey() const { return releasedKey; }
  unsigned long long getExpirationToken() const { return expirationToken.value_or(0); }
  std::function<void()> getExpirationCb() const;
  std::weak_ptr<IProfileKey> getExpirationKey() const;

 private:
  std::optional<std::uint64_t> releaseToken;
  std::weak_ptr<IProfileKey> releasedKey;
  std::optional<std::uint64_t> expirationToken;
  std::optional<std::function<void()>> expirationCb;
  // The pointer is weak, so that a pending request does not keep the key alive.
  std::optional<std::weak_ptr<IProfileKey>> expirationKey;
};

}  // namespace pavo
