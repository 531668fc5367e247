// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What World calls a wish, as the library's records.
#pragma once

#include <pavo/FilterProfileParams.h>

#include "World.h"

namespace pavo::test::model {

ProfileParams paramsOf(const json& wish);
FilterProfileParams paramsOf(const Filter& filter);

// A client's view of a profile as the library tells it.
json viewOf(const ProfileParams& params);

}  // namespace pavo::test::model
