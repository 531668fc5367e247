// Reads Android's APN list format: <apns><apn carrier=".." mcc=".." mnc=".." apn=".." .../></apns>.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace pavoctl {

// One <apn> element as it stands in the file.
struct ApnEntry {
  unsigned long line = 0;
  std::vector<std::pair<std::string, std::string>> attributes;  // In the order of the file, UTF-8.

  // Empty when the element does not have it.
  std::string valueOf(const std::string& name) const;
  bool has(const std::string& name) const;
};

// Something at a line of the file that the reader or the mapping has to say.
struct Remark {
  unsigned long line = 0;
  std::string text;
};

struct ApnFile {
  std::vector<ApnEntry> entries;
  std::vector<Remark> remarks;  // Elements other than <apn>, and text, which nothing is made of.
};

// Throws Failure with one line that names the file: it is missing, a directory, empty, not
// well-formed, not an APN list, or it declares entities, which the format has no use for and which
// can blow a small file up to any size. Nothing outside the file is ever opened.
ApnFile readApnFile(const std::string& path);

}  // namespace pavoctl
