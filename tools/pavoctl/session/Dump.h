// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads the text of Manager::dump(). The library reports the reason for a result nowhere else.
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

  // Parses the lines of Manager::dump().
  static Dump parse(const std::vector<std::string>& lines);

  // Returns the messages that the library logged since the last one that begins with start. Returns
  // std::nullopt when the log no longer reaches back that far.
  std::optional<std::vector<std::string_view>> messagesSince(std::string_view start) const;

  // Returns the last log line, time stamp included, whose message begins with start, or "" when
  // there is none. Two results that differ stand for two messages.
  std::string_view lastLine(std::string_view start) const;

  // Returns how many of the modem's profiles the cache holds without their contents, because the
  // library could not read them.
  std::size_t unreadable() const;

  // Returns whether the library's latest attempt to read the modem's list of profiles has failed.
  // The cache is then empty although the modem's table need not be.
  bool hasLostList() const;

  // Returns whether the library's latest view of the profiles came from the modem. It did not when
  // the list could not be read, when there was no modem, and when the modem was lost since. Returns
  // std::nullopt when the log no longer reaches back that far.
  std::optional<bool> hasModemsProfiles() const;
};

// Returns a log line without time stamp and tag.
std::string_view messageOf(std::string_view logLine);

// Returns whether the message is among the messages of messagesSince().
bool contains(const std::vector<std::string_view>& messages, std::string_view message);

}  // namespace pavoctl
