// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The functions of ovix_client.h. They check arguments, look handles up and let no exception reach
// the caller.
//
// This build of the library adds to the header's contract:
//  - ovix_client_send_msg_sync leaves the response as it was when it fails, or all zero when the
//    failure is that the modem's answer could not be decoded. A debug line gives the reason.
//  - ovix_client_get_any_service and ovix_client_init answer the code with which the modem refuses.
//  - The length of every structure has to be the message's own.
//  - A callback may call every function here, with its own handle too. Two callbacks that release
//    each other's handles wait for each other forever.
//  - A child made by fork() must not call in: the threads stayed with the parent.
#include "Client.h"
#include "HandleRegistry.h"
#include "ModemConnection.h"
#include "Notifier.h"
#include "ServiceObject.h"
#include "base/Poll.h"
#include "ovix_client.h"

#include <chrono>
#include <string>
#include <utility>

namespace {

using ovix::Client;
using ovix::HandleRegistry;
using ovix::ModemConnection;
using ovix::Notifier;

bool isService(ovix_service_object_type service) {
  return service != nullptr && service->tablesVersion == ovix::tablesVersion;
}

template <typename Body>
ovix_client_error_type guarded(Body body) {
  try {
    return body();
  } catch (...) {
    return OVIX_CLIENT_INTERNAL_ERROR;
  }
}

// Looks the handle up and calls body with its client or notifier.
template <typename T, typename Body>
ovix_client_error_type with(ovix_client_type handle, Body body) {
  return guarded([&]() -> ovix_client_error_type {
    const auto target = HandleRegistry::getInstance().find<T>(handle);
    return target == nullptr ? OVIX_CLIENT_INVALID_HANDLE : body(*target);
  });
}

// A caller of ovix_client_init has seen the service come up and released its notifier, so it would
// not notice a second start. Therefore this retries for helloTimeoutMs while the modem cannot be
// reached. It does not retry when the modem refuses.
ovix_client_error_type connectWithRetries(const std::string& modemPath,
                                          ModemConnection& connection) {
  constexpr std::chrono::milliseconds againAfter{5};
  const pavo::Deadline deadline =
      pavo::Clock::now() + std::chrono::milliseconds(ovix::helloTimeoutMs);
  for (;;) {
    const auto failed = ovix::connectToModem(modemPath, wire::Purpose::Open, connection);
    if (failed == OVIX_CLIENT_NO_ERROR || connection.isRefused || pavo::Clock::now() >= deadline) {
      return failed;
    }
    pavo::pollUntil({}, pavo::Clock::now() + againAfter);
  }
}

}  // namespace

ovix_client_error_type ovix_client_notifier_init(ovix_service_object_type service,
                                                 ovix_client_os_params* osParams,
                                                 ovix_client_type* notifier) {
  if (!isService(service) || osParams == nullptr || notifier == nullptr) {
    return OVIX_CLIENT_INVALID_ARGUMENT;
  }
  *notifier = nullptr;
  return guarded([&] {
    *notifier = HandleRegistry::getInstance().add(std::make_shared<Notifier>(service));
    return OVIX_CLIENT_NO_ERROR;
  });
}

ovix_client_error_type ovix_client_register_notify_cb(ovix_client_type notifier,
                                                      ovix_client_notify_cb callback, void* data) {
  return with<Notifier>(notifier, [&](Notifier& target) {
    if (callback == nullptr) {
      return OVIX_CLIENT_INVALID_ARGUMENT;
    }
    target.setCallback(notifier, callback, data);
    return OVIX_CLIENT_NO_ERROR;
  });
}

ovix_client_error_type ovix_client_get_any_service(ovix_service_object_type service,
                                                   ovix_service_info* info) {
  if (!isService(service) || info == nullptr) {
    return OVIX_CLIENT_INVALID_ARGUMENT;
  }
  return guarded([&] {
    ModemConnection connection;
    const auto failed = ovix::connectToModem(service->modemPath, wire::Purpose::Find, connection);
    if (failed == OVIX_CLIENT_NO_ERROR) {
      *info = {};
    }
    return failed;
  });
}

ovix_client_error_type ovix_client_init(ovix_service_info* info, ovix_service_object_type service,
                                        ovix_client_ind_cb callback, void* callbackData,
                                        ovix_client_os_params* osParams, ovix_client_type* client) {
  if (info == nullptr || !isService(service) || osParams == nullptr || client == nullptr) {
    return OVIX_CLIENT_INVALID_ARGUMENT;
  }
  *client = nullptr;
  return guarded([&]() -> ovix_client_error_type {
    ModemConnection connection;
    if (const auto failed = connectWithRetries(service->modemPath, connection)) {
      return failed;
    }
    const auto opened =
        std::make_shared<Client>(*service, std::move(connection), callback, callbackData);
    auto& registry = HandleRegistry::getInstance();
    // The caller has its handle before the first callback can get it as an argument.
    const ovix_client_type handle = *client = registry.add(opened);
    try {
      opened->start(handle);
    } catch (...) {
      *client = nullptr;
      registry.release(handle);
      throw;
    }
    return OVIX_CLIENT_NO_ERROR;
  });
}

ovix_client_error_type ovix_client_register_error_cb(ovix_client_type client,
                                                     ovix_client_error_cb callback, void* data) {
  return with<Client>(client, [&](Client& target) {
    if (callback == nullptr) {
      return OVIX_CLIENT_INVALID_ARGUMENT;
    }
    target.setErrorCallback(callback, data);
    return OVIX_CLIENT_NO_ERROR;
  });
}

ovix_client_error_type ovix_client_send_msg_sync(ovix_client_type client, unsigned int messageId,
                                                 void* request, unsigned int requestSize,
                                                 void* response, unsigned int responseSize,
                                                 unsigned int timeoutMs) {
  return with<Client>(client, [&](Client& target) {
    return target.send(messageId, request, requestSize, response, responseSize, timeoutMs);
  });
}

ovix_client_error_type ovix_client_message_decode(ovix_client_type client, int kind,
                                                  unsigned int messageId, const void* source,
                                                  unsigned int sourceSize, void* target,
                                                  unsigned int targetSize) {
  return with<Client>(client, [&](const Client& decoder) {
    return decoder.decode(kind, messageId, source, sourceSize, target, targetSize);
  });
}

ovix_client_error_type ovix_client_release(ovix_client_type client) {
  return guarded([&] {
    const bool isKnown = HandleRegistry::getInstance().release(client);
    return isKnown ? OVIX_CLIENT_NO_ERROR : OVIX_CLIENT_INVALID_HANDLE;
  });
}
