// Claims a file for one process: beside it lies FILE.lock, a PrivateFile that the claiming process
// holds locked. The lock goes with the process, however that ends; the file stays, for removing it
// would let two processes lock two different ones.
#pragma once

#include <string>

#include "modem/UniqueFd.h"

namespace modem {

class FileLock {
 public:
  // Throws std::runtime_error when another process, or another FileLock, has the file.
  explicit FileLock(const std::string& path);

 private:
  UniqueFd fd;
};

}  // namespace modem
