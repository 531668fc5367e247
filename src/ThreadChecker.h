// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cassert>
#include <thread>

namespace pavo {

// Holds a class to one thread in debug builds: the thread of the first call. Building the object
// elsewhere is no call.
class ThreadChecker {
 public:
#ifdef NDEBUG
  void check() const {}
#else
  void check() {
    if (owner == std::thread::id()) {
      owner = std::this_thread::get_id();
    }
    assert(owner == std::this_thread::get_id());
  }

 private:
  std::thread::id owner;
#endif
};

}  // namespace pavo
