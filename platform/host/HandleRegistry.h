// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The clients and notifiers of the process, by handle. A handle is a number that is never used
// again and never an address: every handle that a caller passes is looked up here first.
//
// The registry is never destroyed: the destructors of other libraries release their handles while
// the process exits.
#pragma once

#include "Client.h"
#include "Notifier.h"
#include "base/Mutex.h"
#include "ovix_client.h"

#include <cstdint>
#include <map>
#include <memory>
#include <variant>

namespace ovix {

class HandleRegistry {
 public:
  using Entry = std::variant<std::monostate, std::shared_ptr<Client>, std::shared_ptr<Notifier>>;

  static HandleRegistry& getInstance();

  ovix_client_type add(Entry entry) EXCLUDES(mutex);

  // Returns null when the handle is not that of a T.
  template <typename T>
  std::shared_ptr<T> find(ovix_client_type handle) {
    const Entry entry = findAny(handle);
    const auto* found = std::get_if<std::shared_ptr<T>>(&entry);
    return found == nullptr ? nullptr : *found;
  }

  // Stops the client or notifier, then forgets the handle. So two threads that release one handle
  // at the same time both wait for its callback. Returns false when the handle is unknown.
  bool release(ovix_client_type handle) EXCLUDES(mutex);

 private:
  HandleRegistry() = default;

  Entry findAny(ovix_client_type handle) EXCLUDES(mutex);

  pavo::Mutex mutex;
  std::map<uintptr_t, Entry> entries GUARDED_BY(mutex);
  uintptr_t lastHandle GUARDED_BY(mutex) = 0;
};

}  // namespace ovix
