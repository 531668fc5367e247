#include "FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstring>

#include "File.h"

namespace modem {

FileLock::FileLock(const std::string& path) {
  const std::string lockPath = path + ".lock";
  fd.reset(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!fd.isOpen()) {
    throw FileError(lockPath + ": cannot create: " + std::strerror(errno));
  }
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
    throw FileError(path + (errno == EWOULDBLOCK
                                ? ": another modem uses it"
                                : std::string(": cannot lock: ") + std::strerror(errno)));
  }
}

}  // namespace modem
