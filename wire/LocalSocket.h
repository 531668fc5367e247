// Unix stream sockets by path.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

#include "modem/UniqueFd.h"

namespace modem {

// What is wrong with a socket, in one line that names its path.
class SocketError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws SocketError.
UniqueFd connectToSocket(const std::string& path);

// Who may use what the user "server" serves on a socket: that user and root. The socket's mode says
// the same, but its folder's owner may change that.
bool mayConnect(uid_t peer, uid_t server);

// The user who made the connection at the other end; empty when the system does not know.
std::optional<uid_t> peerOf(int connectedSocket);

// Listens on a path, for its own user. A socket file that a dead process left there is replaced;
// one that is served, or a file of another kind, is a SocketError. The destructor removes the file
// if it is still the one that this object made. Accepting never blocks.
class ListeningSocket {
 public:
  // How long another process may hold the lock of the socket's folder. A modem that starts there
  // holds it for an instant.
  static constexpr std::chrono::seconds lockPatience{1};

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
