// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <system_error>

namespace pavo {

// The text of an errno. Unlike strerror it may be called on any thread.
inline std::string errorText(int error) { return std::generic_category().message(error); }

}  // namespace pavo
