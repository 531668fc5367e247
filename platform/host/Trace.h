// Why a modem's message was refused or dropped, for the person who looks into it: one line on
// standard error when the environment variable OVIX_MODEM_TRACE was set when the library was
// loaded, else nothing. Any thread.
#pragma once

namespace ovix {

[[gnu::format(printf, 1, 2)]] void trace(const char* format, ...);

}  // namespace ovix
