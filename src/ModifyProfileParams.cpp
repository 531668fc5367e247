// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/ModifyProfileParams.h>

namespace pavo {

ModifyProfileParams::ModifyProfileParams() = default;
ModifyProfileParams::ModifyProfileParams(const ProfileParams& params) : ProfileParams(params) {}
ModifyProfileParams::ModifyProfileParams(const ModifyProfileParams&) = default;
ModifyProfileParams& ModifyProfileParams::operator=(const ModifyProfileParams&) = default;
ModifyProfileParams::ModifyProfileParams(ModifyProfileParams&&) noexcept = default;
ModifyProfileParams& ModifyProfileParams::operator=(ModifyProfileParams&&) noexcept = default;
ModifyProfileParams::~ModifyProfileParams() = default;

}  // namespace pavo
