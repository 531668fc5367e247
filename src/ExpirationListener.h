// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/IProfileKey.h>

#include <functional>
#include <memory>
#include <utility>

namespace pavo {

// A client's function and its key. The function is called when the profile object is destroyed, if
// the key is alive then.
using ExpirationListener = std::pair<std::function<void()>, std::weak_ptr<IProfileKey>>;

// Returns whether the listener's key is gone. The check takes no handle of the key: such a handle
// could become the last one, and a key must not be destroyed on the worker's thread.
inline bool expired(const ExpirationListener& listener) { return listener.second.expired(); }

}  // namespace pavo
