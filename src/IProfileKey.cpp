// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/IProfileKey.h>

namespace pavo {

IProfileKey::IProfileKey() = default;
IProfileKey::IProfileKey(const IProfileKey&) = default;
IProfileKey& IProfileKey::operator=(const IProfileKey&) = default;
IProfileKey::~IProfileKey() = default;

}  // namespace pavo
