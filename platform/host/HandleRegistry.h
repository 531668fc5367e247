// What the handles of the process stand for. A handle is a number that is never used again and
// never an address: whatever a caller passes is looked up here before anything else is done.
//
// Immortal: the destructors of other libraries release their handles while the process exits.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <variant>

#include "Client.h"
#include "Notifier.h"
#include "ovix_client.h"

namespace ovix {

class HandleRegistry {
 public:
  using Entry = std::variant<std::monostate, std::shared_ptr<Client>, std::shared_ptr<Notifier>>;

  static HandleRegistry& getInstance();

  ovix_client_type add(Entry entry);

  // Null when the handle stands for no T.
  template <typename T>
  std::shared_ptr<T> find(ovix_client_type handle) {
    const Entry entry = findAny(handle);
    const auto* found = std::get_if<std::shared_ptr<T>>(&entry);
    return found == nullptr ? nullptr : *found;
  }

  // Stops what the handle stands for, then forgets it: of two threads that release a handle at the
  // same time both wait for its callback. False when the handle is unknown.
  bool release(ovix_client_type handle);

 private:
  HandleRegistry() = default;

  Entry findAny(ovix_client_type handle);

  std::mutex mutex;
  // Guarded by the mutex.
  std::map<uintptr_t, Entry> entries;
  uintptr_t lastHandle = 0;
};

}  // namespace ovix
