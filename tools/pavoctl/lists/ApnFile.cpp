// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/ApnFile.h"

#include "Text.h"
#include "lists/ProviderFile.h"

#include <algorithm>

namespace pavoctl {
namespace {

bool contains(const std::vector<std::string>& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

ApnFile readApns(const XmlElement& root) {
  ApnFile file;
  const auto remarkText = [&](const XmlElement& element) {
    if (element.textLine != 0) {
      file.remarks.push_back({element.textLine, "text between the elements has no meaning here"});
    }
  };
  const auto remarkElement = [&](const XmlElement& element) {
    file.remarks.push_back(
        {element.line, "element <" + printable(element.name) + "> has no meaning here"});
  };
  for (const XmlElement& element : root.children) {
    if (element.name != "apn") {
      remarkElement(element);
      continue;
    }
    std::for_each(element.children.begin(), element.children.end(), remarkElement);
    remarkText(element);
    ApnEntry& entry = file.entries.emplace_back();
    entry.line = element.line;
    entry.attributes = element.attributes;
    if (auto plmn = plmnOf(entry.valueOf("mcc"), entry.valueOf("mnc")); !plmn.empty()) {
      entry.networks.push_back(std::move(plmn));
    }
  }
  remarkText(root);
  return file;
}

bool isDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

std::string ApnEntry::valueOf(const std::string& name) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [&](const auto& attribute) { return attribute.first == name; });
  return found == attributes.end() ? std::string() : found->second;
}

bool ApnEntry::has(const std::string& name) const {
  return std::any_of(attributes.begin(), attributes.end(),
                     [&](const auto& attribute) { return attribute.first == name; });
}

bool ApnEntry::isOf(const std::string& plmn) const { return contains(networks, plmn); }

bool Remark::isOf(const std::string& plmn) const { return !networks || contains(*networks, plmn); }

XmlElement readApnXml(const std::string& path) {
  return readXml(path, {"apns", "serviceproviders"});
}

bool isAndroid(const XmlElement& root) { return root.name == "apns"; }

ApnFile apnFileOf(const XmlElement& root) {
  ApnFile file = isAndroid(root) ? readApns(root) : readProviders(root);
  std::stable_sort(file.remarks.begin(), file.remarks.end(),
                   [](const Remark& a, const Remark& b) { return a.line < b.line; });
  return file;
}

ApnFile readApnFile(const std::string& path) { return apnFileOf(readApnXml(path)); }

std::string plmnOf(const std::string& mcc, const std::string& mnc) {
  const bool isProper =
      isDigits(mcc) && isDigits(mnc) && mcc.size() == 3 && (mnc.size() == 2 || mnc.size() == 3);
  return isProper ? mcc + mnc : std::string();
}

}  // namespace pavoctl
