// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Counts what hardly moves with the machine's noise: allocations and context switches of this
// process, all threads.
#pragma once

#include <cstdint>

namespace pavo::bench {

std::uint64_t allocationCount();
std::uint64_t contextSwitchCount();

}  // namespace pavo::bench
