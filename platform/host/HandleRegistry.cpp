// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "HandleRegistry.h"

#include <utility>

namespace ovix {

HandleRegistry& HandleRegistry::getInstance() {
  static HandleRegistry& registry = *new HandleRegistry;
  return registry;
}

ovix_client_type HandleRegistry::add(Entry entry) {
  const pavo::MutexLock lock(mutex);
  const uintptr_t number = ++lastHandle;
  entries.emplace(number, std::move(entry));
  return reinterpret_cast<ovix_client_type>(number);
}

HandleRegistry::Entry HandleRegistry::findAny(ovix_client_type handle) {
  const pavo::MutexLock lock(mutex);
  const auto found = entries.find(reinterpret_cast<uintptr_t>(handle));
  return found == entries.end() ? Entry() : found->second;
}

bool HandleRegistry::release(ovix_client_type handle) {
  // This handle may be the last to the client or notifier, so it is declared before the lock: the
  // object is destroyed when no lock is held.
  const Entry entry = findAny(handle);
  if (const auto* client = std::get_if<std::shared_ptr<Client>>(&entry)) {
    (*client)->stop();
  } else if (const auto* notifier = std::get_if<std::shared_ptr<Notifier>>(&entry)) {
    (*notifier)->stop();
  } else {
    return false;
  }
  const pavo::MutexLock lock(mutex);
  entries.erase(reinterpret_cast<uintptr_t>(handle));
  return true;
}

}  // namespace ovix
