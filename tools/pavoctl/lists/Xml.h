// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads a small XML file into a tree of elements that know their lines.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace pavoctl {

struct XmlElement {
  std::string name;
  unsigned long line = 0;
  std::vector<std::pair<std::string, std::string>> attributes;  // In the order of the file, UTF-8.
  std::string text;                                             // Without the children's.
  unsigned long textLine = 0;  // Of its first line that is not blank; 0 when there is none.
  std::vector<XmlElement> children;

  // The attribute's value; nothing when the element does not have it.
  const std::string* attribute(const std::string& attributeName) const;
  // The first child of that name.
  const XmlElement* child(const std::string& childName) const;
};

// Throws Failure with one line that names the file, and the line in it when there is one: it is
// missing, a directory, empty, not well-formed, its root element is none of those, it is larger or
// nested deeper than any APN list, or it declares or uses entities of its own, which can blow a
// small file up to any size. Nothing outside the file is ever opened.
XmlElement readXml(const std::string& path, const std::vector<std::string>& rootNames);

}  // namespace pavoctl
