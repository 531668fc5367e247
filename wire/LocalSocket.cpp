// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "wire/LocalSocket.h"

#include "base/ErrorText.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <thread>
#include <utility>

namespace wire {

namespace {

using pavo::errorText;
using pavo::UniqueFd;

constexpr int backlog = 64;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw SocketError(path + ": " + what);
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.empty()) {
    throw SocketError("the socket's path is empty");
  }
  if (path.size() > socketPathBytesMax) {
    fail(path, "a socket's path has at most " + std::to_string(socketPathBytesMax) +
                   " bytes, this one has " + std::to_string(path.size()));
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

UniqueFd newSocket(int flags) {
  UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, /*protocol=*/0));
  if (!fd.isOpen()) {
    throw SocketError("cannot make a socket: " + errorText(errno));
  }
  return fd;
}

// The result is 0 or errno.
int tryConnect(int fd, const sockaddr_un& address) {
  int result = -1;
  do {
    result = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? 0 : errno;
}

// False when another process holds the lock beyond the deadline, or when the file system has no
// locks; errno says which. It never blocks on the lock itself, because every user that may read
// the directory may hold the lock for ever.
bool lockInTime(int fd) {
  constexpr std::chrono::milliseconds again{10};
  const auto deadline = std::chrono::steady_clock::now() + ListeningSocket::lockTimeout;
  while (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(again);
  }
  return true;
}

// A process that prepares a socket file holds the lock of its directory. So two modems that start
// at once cannot both find a stale file and then remove each other's fresh one. Unlike a lock file,
// the lock leaves nothing behind.
UniqueFd lockDirectoryOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  const std::string directory = parent.empty() ? "." : parent;
  UniqueFd fd(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd.isOpen() || !lockInTime(fd.get())) {
    fail(path, errno == EWOULDBLOCK ? "another process keeps the directory " + directory + " locked"
                                    : "cannot use the directory: " + errorText(errno));
  }
  return fd;
}

void removeStale(const std::string& path, const sockaddr_un& address) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) {
    return;
  }
  if (!S_ISSOCK(status.st_mode)) {
    fail(path, "there is a file that is no socket");
  }
  // The probe does not block: a modem whose queue of connections is full is running, too.
  const UniqueFd probe = newSocket(SOCK_NONBLOCK);
  if (tryConnect(probe.get(), address) != ECONNREFUSED) {
    fail(path, "a running modem serves this socket");
  }
  unlink(path.c_str());
}

}  // namespace

UniqueFd connectToSocket(const std::string& path, bool isBlocking) {
  const sockaddr_un address = addressOf(path);
  UniqueFd fd = newSocket(isBlocking ? 0 : SOCK_NONBLOCK);
  if (const int error = tryConnect(fd.get(), address); error != 0) {
    fail(path, "cannot connect: " + errorText(error));
  }
  return fd;
}

bool mayConnect(uid_t peer, uid_t server) { return peer == server || peer == 0; }

std::optional<uid_t> peerOf(int connectedSocket) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(connectedSocket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
    return std::nullopt;
  }
  return peer.uid;
}

ListeningSocket::ListeningSocket(std::string socketPath) : path(std::move(socketPath)) {
  const sockaddr_un address = addressOf(path);
  const UniqueFd lock = lockDirectoryOf(path);
  removeStale(path, address);
  fd = newSocket(SOCK_NONBLOCK);
  // bind() gives the file the mode of the socket, so the file is never open to other users. A chmod
  // of the path would leave it open for a moment, and could change another file by then. The umask
  // belongs to the whole process, whose other threads make files of their own.
  struct stat status = {};
  if (fchmod(fd.get(), S_IRUSR | S_IWUSR) != 0 ||
      bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(fd.get(), backlog) != 0 || lstat(path.c_str(), &status) != 0) {
    fail(path, "cannot listen: " + errorText(errno));
  }
  device = status.st_dev;
  inode = status.st_ino;
}

ListeningSocket::~ListeningSocket() {
  struct stat status = {};
  if (lstat(path.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode) {
    unlink(path.c_str());
  }
}

}  // namespace wire
