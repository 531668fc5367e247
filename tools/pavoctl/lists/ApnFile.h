// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads lists of access points: Android's <apns><apn carrier=".." mcc=".." mnc=".." apn=".." .../>
// </apns> and GNOME's <serviceproviders>. The root element tells which one it is.
#pragma once

#include "lists/Xml.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pavoctl {

// One access point. Whatever the format, it has the names and values of Android's attributes; what
// only the other format has keeps its own name.
struct ApnEntry {
  unsigned long line = 0;
  std::vector<std::pair<std::string, std::string>> attributes;
  // MCC and MNC together, of every network that it is for; none when it does not say that properly.
  std::vector<std::string> networks{};
  std::string provider{};            // The operator's name, where the format has it.
  std::vector<std::string> notes{};  // What could not be taken over as it stands.

  // Empty when the entry does not have it.
  std::string valueOf(const std::string& name) const;
  bool has(const std::string& name) const;
  bool isOf(const std::string& plmn) const;
};

// Something at a line of the file that the reader or the mapping has to say.
struct Remark {
  unsigned long line = 0;
  std::string text;
  // The operator's that it is about; nothing when it is about the file.
  std::optional<std::vector<std::string>> networks{};

  bool isOf(const std::string& plmn) const;
};

struct ApnFile {
  std::vector<ApnEntry> entries;
  std::vector<Remark> remarks;  // Elements and text that nothing is made of.
};

// The file as it stands. Throws Failure with one line that names the file when it cannot be used:
// see readXml().
XmlElement readApnXml(const std::string& path);
bool isAndroid(const XmlElement& root);

// What is in it for profiles.
ApnFile apnFileOf(const XmlElement& root);
// Both. Throws Failure as well.
ApnFile readApnFile(const std::string& path);

// MCC and MNC together; empty when they are not three and two or three digits.
std::string plmnOf(const std::string& mcc, const std::string& mnc);

}  // namespace pavoctl
