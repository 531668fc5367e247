// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The steps of a policy as text for people who have not seen one before.
#pragma once

#include "profiles/Profile.h"

#include <string>

namespace pavoctl {

// Whether the steps have been gone through, or would be.
enum class Telling { done, foreseen };

// Every step, numbered.
std::string stepsText(const Json& steps, Telling telling);
// One line for a change or a creation.
std::string editText(const Json& step, Telling telling);
// Why the answer is no, from the last step of a question.
std::string refusalText(const Json& step);
// "apnName internet, homeIPType V4 or more", "anything" for an empty one.
std::string filterText(const Json& filter);
// "profile 3 (internet)".
std::string nameText(const Json& profile);

}  // namespace pavoctl
