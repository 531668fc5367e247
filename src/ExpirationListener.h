#pragma once

#include <pavo/IProfileKey.h>

#include <functional>
#include <memory>
#include <utility>

namespace pavo {

// A client's function to call when its profile goes, and the key that has to be alive then.
using ExpirationListener = std::pair<std::function<void()>, std::weak_ptr<IProfileKey>>;

}  // namespace pavo
