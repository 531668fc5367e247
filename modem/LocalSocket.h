// Unix stream sockets by path.
#pragma once

#include <sys/types.h>

#include <stdexcept>
#include <string>

#include "UniqueFd.h"

namespace modem {

// What is wrong with a socket, in one line that names its path.
class SocketError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws SocketError.
UniqueFd connectToSocket(const std::string& path);

// Listens on a path. A socket file that a dead process left there is replaced; one that is served,
// or a file of another kind, is a SocketError. The destructor removes the file if it is still the
// one that this object made. Accepting never blocks.
class ListeningSocket {
 public:
  explicit ListeningSocket(std::string path);
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  int get() const { return fd.get(); }

 private:
  const std::string path;
  UniqueFd fd;
  dev_t device = 0;
  ino_t inode = 0;
};

}  // namespace modem
