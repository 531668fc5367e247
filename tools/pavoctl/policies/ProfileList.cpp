// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/ProfileList.h"

#include "Errors.h"
#include "Text.h"
#include "profiles/Attributes.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

namespace pavoctl {
namespace {

// A list with every profile that a modem may have is much shorter than this.
constexpr std::size_t bytesMax = 1 << 20;
// A list needs three levels only: the list, a profile in it and the names of its types.
constexpr std::size_t depthMax = 64;

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

// Returns the line of the first bracket that is nested too deep, or nothing when there is none.
// Code that visits values recurses once for each level, so the levels are counted before anything
// is parsed.
std::optional<std::size_t> lineTooDeep(std::string_view text) {
  std::size_t line = 1;
  std::size_t depth = 0;
  bool isInString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n') {
      ++line;
    } else if (c == '"') {
      isInString = !isInString;
    } else if (isInString) {
      i += c == '\\' ? 1 : 0;
    } else if (c == '[' || c == '{') {
      if (++depth > depthMax) {
        return line;
      }
    } else if ((c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return std::nullopt;
}

Json parse(const std::string& text, const std::string& name) {
  if (const auto line = lineTooDeep(text)) {
    throw UsageError(name + ":" + std::to_string(*line) + ": values nested too deep");
  }
  Json json = Json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
  if (!json.is_array()) {
    throw UsageError(
        name + ": " +
        (json.is_discarded() ? "not JSON" : R"(not a list, as in [{"apnName": "internet"}])"));
  }
  return json;
}

}  // namespace

std::list<pavo::ProfileParams> readProfileList(const std::string& path) {
  const bool isInput = path == "-";
  const std::string name = isInput ? "standard input" : printable(path);
  const Json json = parse(isInput ? readAll(STDIN_FILENO, name) : readFile(path, name), name);
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
