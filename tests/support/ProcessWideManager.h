// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The process-wide Manager in the hands of one test.
#pragma once

#include <pavo/Manager.h>

#include <memory>

namespace pavo::test {

// Manager::getInstance(), which is like new again, its worker ended, when the last handle goes. So
// no test sees what another one in the same process has done with it.
inline std::shared_ptr<Manager> processWideManager() {
  return {&Manager::getInstance(), [](Manager* manager) {
            std::destroy_at(manager);
            std::construct_at(manager);
          }};
}

}  // namespace pavo::test
