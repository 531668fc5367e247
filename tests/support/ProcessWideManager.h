// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header lends the process-wide Manager to one test.
#pragma once

#include <pavo/Manager.h>

#include <memory>

namespace pavo::test {

// Returns Manager::getInstance(). When the last handle is dropped, the worker ends and the instance
// is like new again, so no test sees what another test in the same process has done with it.
inline std::shared_ptr<Manager> processWideManager() {
  return {&Manager::getInstance(), [](Manager* manager) {
            std::destroy_at(manager);
            std::construct_at(manager);
          }};
}

}  // namespace pavo::test
