// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These functions convert between the wishes of World and the library's records.
#pragma once

#include <pavo/FilterProfileParams.h>

#include "World.h"

namespace pavo::test::model {

ProfileParams paramsOf(const json& wish);
FilterProfileParams paramsOf(const Filter& filter);

// Returns a client's view of a profile, read from the library's record.
json viewOf(const ProfileParams& params);

}  // namespace pavo::test::model
