// An APN list with any content: read, and each entry mapped to a profile. Whatever is wrong with it
// comes out as one line.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "Errors.h"
#include "lists/ApnFile.h"
#include "lists/ApnMapping.h"

namespace {

void requireOneLine(const std::string& text) {
  if (text.empty() || text.find('\n') != std::string::npos) {
    std::abort();
  }
}

void import(const std::string& path) {
  const pavoctl::ApnFile file = pavoctl::readApnFile(path);
  for (const pavoctl::Remark& remark : file.remarks) {
    requireOneLine(remark.text);
  }
  for (const pavoctl::ApnEntry& entry : file.entries) {
    pavoctl::plmnOf(entry);
    const pavoctl::MappedApn mapped = pavoctl::mapApn(entry);
    for (const std::string& note : mapped.notes) {
      requireOneLine(note);
    }
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
