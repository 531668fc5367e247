// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header counts allocations and context switches of this process, over all threads. These
// numbers hardly depend on the machine's noise.
#pragma once

#include <cstdint>

namespace pavo::bench {

std::uint64_t allocationCount();
std::uint64_t contextSwitchCount();

}  // namespace pavo::bench
