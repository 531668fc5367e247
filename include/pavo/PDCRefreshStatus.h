// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace pavo {

/// The phase of a configuration refresh, in which the modem takes another operator's configuration.
/// Any value but PDC_REFRESH_STARTED means completed.
enum PDCRefreshStatus : std::uint8_t {
  /// The modem's configuration is being replaced: profile operations are refused until completion.
  PDC_REFRESH_STARTED = 0,
  /// The new configuration is active: every profile is read from the modem again.
  PDC_REFRESH_COMPLETED = 1,
};

}  // namespace pavo
