// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A Recorder records the callbacks of a handle, and lets a test wait for them or act inside them.
#pragma once

#include "Bytes.h"
#include "ovix_client.h"
#include "support/Deadline.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace pavo::test {

template <typename Record>
class Recorder {
 public:
  // Set this before the first callback can come. It runs inside each callback, after the record was
  // made.
  std::function<void(const Record&)> inside;

  void add(const Record& record) {
    {
      const std::lock_guard lock(mutex);
      records.push_back(record);
      changed.notify_all();
    }
    if (inside) {
      inside(record);
    }
  }

  std::vector<Record> all() {
    const std::lock_guard lock(mutex);
    return records;
  }

  // Returns false when there are still fewer after a long time.
  bool waitFor(size_t count) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, patience(), [&] { return records.size() >= count; });
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Record> records;
};

struct Event {
  ovix_client_type handle;
  int code;  // the event of a notification, the error of an error
  std::thread::id thread;
};
using Events = Recorder<Event>;

inline void recordNotification(ovix_client_type handle, ovix_service_object_type,
                               ovix_client_service_event event, void* events) {
  static_cast<Events*>(events)->add({handle, event, std::this_thread::get_id()});
}

inline void recordError(ovix_client_type handle, ovix_client_error_type error, void* events) {
  static_cast<Events*>(events)->add({handle, error, std::this_thread::get_id()});
}

struct Indication {
  ovix_client_type handle;
  unsigned messageId;
  Bytes payload;
};
using Indications = Recorder<Indication>;

inline void recordIndication(ovix_client_type handle, unsigned messageId, void* bytes,
                             unsigned length, void* indications) {
  const auto* first = static_cast<const uint8_t*>(bytes);
  static_cast<Indications*>(indications)->add({handle, messageId, {first, first + length}});
}

// A callback waits at a Gate until the test opens it.
class Gate {
 public:
  void open() {
    // The notification happens under the lock, because a thread that has passed may destroy the
    // gate.
    const std::lock_guard lock(mutex);
    isOpen = true;
    changed.notify_all();
  }

  // Returns false when the gate stays closed for a long time.
  bool pass() {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, patience(), [this] { return isOpen; });
  }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  bool isOpen = false;
};

}  // namespace pavo::test
