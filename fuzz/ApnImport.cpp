// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This target reads an APN list of either format with any content, maps each entry to a profile,
// and checks the list for mistakes. Every mistake in it must come out as lines.
#include "Errors.h"
#include "lists/ApnCheck.h"
#include "lists/ApnFile.h"
#include "lists/ApnMapping.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void requireOneLine(const std::string& text) {
  if (text.empty() || text.find('\n') != std::string::npos) {
    std::abort();
  }
}

void import(const std::string& path) {
  const pavoctl::XmlElement root = pavoctl::readApnXml(path);
  const pavoctl::ApnFile file = pavoctl::apnFileOf(root);
  for (const pavoctl::Remark& remark : file.remarks) {
    requireOneLine(remark.text);
  }
  for (const pavoctl::ApnEntry& entry : file.entries) {
    for (const std::string& note : pavoctl::mapApn(entry).notes) {
      requireOneLine(note);
    }
  }
  for (const pavoctl::Finding& finding : pavoctl::checkApnList(root, file.entries)) {
    requireOneLine(finding.text);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const int fd = ::memfd_create("apns.xml", MFD_CLOEXEC);
  if (fd == -1 || ::write(fd, data, size) != static_cast<ssize_t>(size)) {
    std::abort();
  }
  try {
    import("/proc/self/fd/" + std::to_string(fd));
  } catch (const pavoctl::Failure& failure) {
    requireOneLine(failure.what());
  }
  ::close(fd);
  return 0;
}
