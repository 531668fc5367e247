// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The steps of a policy as text for people who have not seen one before.
#pragma once

#include "profiles/Profile.h"

#include <string>

namespace pavoctl {

// The text speaks of steps that were done, or of steps that would be done.
enum class Telling { done, foreseen };

// Returns every step, numbered.
std::string stepsText(const Json& steps, Telling telling);
// Returns one line for a change or a creation.
std::string editText(const Json& step, Telling telling);
// Returns the reason of a negative answer, from the last step of a question.
std::string refusalText(const Json& step);
// Returns "apnName internet, homeIPType V4 or more", or "anything" for an empty filter.
std::string filterText(const Json& filter);
// Returns "profile 3 (internet)".
std::string nameText(const Json& profile);

}  // namespace pavoctl
