// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads the text of Manager::dump(), the library's only statement of what happened to a request.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// Messages of the library that the tool looks for.
namespace message {
inline constexpr std::string_view listRead =
    "OvixWdsProxy OVIX_WDS_GET_PROFILE_LIST_REQ_V01 request successful!";
inline constexpr std::string_view listFailed =
    "Unable send OVIX_WDS_GET_PROFILE_LIST_REQ_V01 message";
inline constexpr std::string_view waitingForService = "OvixWdsProxy::registerOvixSvcUp";
inline constexpr std::string_view refreshed = "Refreshed Profiles:";
inline constexpr std::string_view expired = "ProfileCache: token is not present or expired";
inline constexpr std::string_view released = "Released profile ";
inline constexpr std::string_view releaseFailed = "ProfileCache: failed to release profile";
}  // namespace message

struct Dump {
  std::vector<std::string> cache;    // One line for each cached profile.
  std::vector<std::string> pending;  // The indications that the library expects.
  std::vector<std::string> log;      // The recent log lines, oldest first.

  // The lines of Manager::dump().
  static Dump parse(const std::vector<std::string>& lines);

  // What the library logged since the last message that begins with start; nothing when the log no
  // longer reaches back that far.
  std::optional<std::vector<std::string_view>> messagesSince(std::string_view start) const;

  // The last log line, time stamp included, whose message begins with start; empty when there is
  // none. Two of them that differ are two messages.
  std::string_view lastLine(std::string_view start) const;

  // How many of the modem's profiles the cache has without their contents, because these could not
  // be read.
  std::size_t unreadable() const;

  // Whether the library's latest attempt to read the modem's list of profiles has failed, so that
  // the cache is empty although the modem's table need not be.
  bool hasLostList() const;

  // Whether what the library last made of the modem's profiles came from the modem. It did not when
  // the list could not be read, when there was nobody to ask, and when the modem was lost since.
  // Nothing when the log no longer reaches back that far.
  std::optional<bool> hasModemsProfiles() const;
};

// A log line without time stamp and tag.
std::string_view messageOf(std::string_view logLine);

// Whether a message is among those that messagesSince() gave.
bool contains(const std::vector<std::string_view>& messages, std::string_view message);

}  // namespace pavoctl
