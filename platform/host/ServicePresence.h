// Whether this platform has the service's tables at all. A device either has them or not; here the
// modem decides, so that a library that finds none can be tested.
#pragma once

#include <string>

namespace ovix {

// False when the modem at that path says so. Without one (the path is empty), or without an answer
// from it, the tables are there: they lie in this library.
bool isServiceKnown(const std::string& modemPath) noexcept;

}  // namespace ovix
