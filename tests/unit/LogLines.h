// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header holds lines of the library's log, as dumps contain them, that several tests expect.
#pragma once

namespace pavo::test::line {

inline constexpr const char* listed =
    "OvixWdsProxy OVIX_WDS_GET_PROFILE_LIST_REQ_V01 request successful!";
inline constexpr const char* notListed =
    "Error: Unable send OVIX_WDS_GET_PROFILE_LIST_REQ_V01 message";
inline constexpr const char* read =
    "OvixWdsProxy OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 request successful!";
inline constexpr const char* notRead =
    "Error: Unable send OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 message";
inline constexpr const char* deleted =
    "OvixWdsProxy OVIX_WDS_DELETE_PROFILE_REQ_V01 request successful!";
inline constexpr const char* notDeleted =
    "Error: Unable send OVIX_WDS_DELETE_PROFILE_REQ_V01 message";
inline constexpr const char* unknown = "Error: ProfileCache: token is not present or expired";

// These lines are written as recorded lines, and log the end of a descriptor, a request and a
// profile.
inline constexpr const char* removingHandler = "V EventManager::removeEventHandler(int fd) EX";
inline constexpr const char* handlingRequest = "D :77:handleClientRequest";
inline constexpr const char* profileEnd = "D ~ModemProfile()";

}  // namespace pavo::test::line
