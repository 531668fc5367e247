// What a caller's thread hands to the worker. A request is filled by one thread, then handed over
// and not changed again; it holds copies of the parameters and shares the keys.
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

  // One line for the log.
  virtual std::string dump() const;

  ReqRespType getRequestType() const { return type; }

  // dump(), built once: the caller and the worker both log it. The thread that holds the request
  // asks.
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

// A key's message to the cache: the release of its token, or a listener to register.
class CallbackRequest : public ClientRequest {
 public:
  CallbackRequest() : ClientRequest(ReqRespType::Callback) {}
  std::string dump() const override;

  void setReleaseToken(unsigned long long token);
  // The key that is released. It is gone already: this only identifies it.
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
  // Weak, so that a request under way keeps no key alive.
  std::optional<std::weak_ptr<IProfileKey>> expirationKey;
};

}  // namespace pavo
