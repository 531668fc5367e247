// Whether this platform has the service's tables at all. A device either has them or not; here the
// modem decides, so that a library that finds none can be tested.
#pragma once

namespace ovix {

// False when the modem that OVIX_MODEM names says so. Without one, or without an answer from it,
// the tables are there: they lie in this library.
bool isServiceKnown() noexcept;

}  // namespace ovix
