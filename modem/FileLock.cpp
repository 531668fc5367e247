#include "FileLock.h"

#include <sys/file.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "PrivateFile.h"
#include "modem/common/File.h"

namespace modem {

FileLock::FileLock(const std::string& path) {
  const std::string lockPath = path + ".lock";
  PrivateFile file = openPrivateFile(lockPath);
  if (!file.fd.isOpen()) {
    throw FileError(lockPath + ": cannot open: " + file.problem);
  }
  fd = std::move(file.fd);
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
    throw FileError(path + (errno == EWOULDBLOCK
                                ? ": another modem uses it"
                                : std::string(": cannot lock: ") + std::strerror(errno)));
  }
}

}  // namespace modem
