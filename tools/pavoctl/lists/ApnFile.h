// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads lists of access points: Android's <apns><apn carrier=".." mcc=".." mnc=".." apn=".." .../>
// </apns> and GNOME's <serviceproviders>. The root element shows the format.
#pragma once

#include "lists/Xml.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pavoctl {

// One access point. In both formats it has the names and values of Android's attributes. A setting
// that exists in the other format only keeps its own name.
struct ApnEntry {
  unsigned long line = 0;
  std::vector<std::pair<std::string, std::string>> attributes;
  // MCC and MNC together, for each network of the entry. The list is empty when the file does not
  // name them properly.
  std::vector<std::string> networks{};
  std::string provider{};            // the operator's name, where the format has it
  std::vector<std::string> notes{};  // the settings that could not be taken over unchanged

  // Returns "" when the entry does not have the attribute.
  std::string valueOf(const std::string& name) const;
  bool has(const std::string& name) const;
  bool isOf(const std::string& plmn) const;
};

// A remark of the reader or the mapping on a line of the file.
struct Remark {
  unsigned long line = 0;
  std::string text;
  // The networks of the operator that the remark concerns; nothing when it concerns the file.
  std::optional<std::vector<std::string>> networks{};

  bool isOf(const std::string& plmn) const;
};

struct ApnFile {
  std::vector<ApnEntry> entries;
  std::vector<Remark> remarks;  // elements and text that are not used
};

// Returns the file's elements. Throws Failure with one line that names the file when it cannot be
// used: see readXml().
XmlElement readApnXml(const std::string& path);
bool isAndroid(const XmlElement& root);

// Returns the access points of the file, and the remarks on it.
ApnFile apnFileOf(const XmlElement& root);
// Reads the file and returns its access points. Throws Failure as readApnXml() does.
ApnFile readApnFile(const std::string& path);

// Returns MCC and MNC together, or "" when they are not three and two or three digits.
std::string plmnOf(const std::string& mcc, const std::string& mnc);

}  // namespace pavoctl
