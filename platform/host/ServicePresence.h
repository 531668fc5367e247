// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Tests whether this platform has the service's tables at all. A device either has them or not.
// Here the modem decides, so that a library can be tested that finds none.
#pragma once

#include <string>

namespace ovix {

// Returns false when the modem at the path refuses the service. The tables are part of this
// library, so the result is true when the path is empty or the modem does not answer.
bool isServiceKnown(const std::string& modemPath) noexcept;

}  // namespace ovix
