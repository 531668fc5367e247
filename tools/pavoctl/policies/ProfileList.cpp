#include "policies/ProfileList.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

#include "Errors.h"
#include "Text.h"
#include "profiles/Attributes.h"

namespace pavoctl {
namespace {

// A list for every profile that a modem may have, with room to spare.
constexpr std::size_t bytesMax = 1 << 20;

std::string readAll(int fd, const std::string& name) {
  std::string text;
  std::array<char, 4096> buffer;
  while (true) {
    const ssize_t got = ::read(fd, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      throw Failure(name + ": " + std::strerror(errno));
    }
    if (got == 0) {
      return text;
    }
    text.append(buffer.data(), static_cast<std::size_t>(got));
    if (text.size() > bytesMax) {
      throw Failure(name + ": longer than 1 MiB");
    }
  }
}

std::string readFile(const std::string& path, const std::string& name) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    throw Failure(name + ": " + std::strerror(errno));
  }
  const auto close = [](const int* opened) { ::close(*opened); };
  const std::unique_ptr<const int, decltype(close)> closer(&fd, close);
  return readAll(fd, name);
}

}  // namespace

std::list<pavo::ProfileParams> readProfileList(const std::string& path) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : printable(path);
  const std::string text = isInput ? readAll(STDIN_FILENO, name) : readFile(path, name);
  const Json json = Json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
  if (!json.is_array()) {
    throw UsageError(
        name + ": " +
        (json.is_discarded() ? "not JSON" : R"(not a list, as in [{"apnName": "internet"}])"));
  }
  std::list<pavo::ProfileParams> profiles;
  for (const auto& element : json) {
    try {
      profiles.push_back(profileFromJson(element));
    } catch (const UsageError& error) {
      throw UsageError(name + ": element " + std::to_string(profiles.size() + 1) + ": " +
                       error.what());
    }
  }
  return profiles;
}

}  // namespace pavoctl
