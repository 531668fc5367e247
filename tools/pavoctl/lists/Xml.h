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
  std::vector<std::pair<std::string, std::string>> attributes;  // in the order of the file, UTF-8
  std::string text;                                             // without the children's text
  unsigned long textLine = 0;  // the first line of the text that is not blank; 0 when there is none
  std::vector<XmlElement> children;

  // Returns the attribute's value, or null when the element does not have it.
  const std::string* attribute(const std::string& attributeName) const;
  // Returns the first child of that name, or null when there is none.
  const XmlElement* child(const std::string& childName) const;
};

// Throws Failure with one line that names the file, and the line in it when there is one. A file is
// refused when it is missing, a directory, empty or not well-formed, and when its root element is
// none of those named. A file that is larger or nested deeper than any APN list is refused too. So
// is a file that declares or uses entities of its own, because they can blow a small file up to any
// size. Nothing outside the file is ever opened.
XmlElement readXml(const std::string& path, const std::vector<std::string>& rootNames);

}  // namespace pavoctl
