// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header gives short names to types that most tests use.
#pragma once

#include <pavo/IProfileKey.h>

#include <memory>
#include <string>
#include <vector>

namespace pavo::test {

using Key = std::shared_ptr<IProfileKey>;
using Lines = std::vector<std::string>;

}  // namespace pavo::test
