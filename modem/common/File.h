// Reading files as a whole.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace modem {

// What is wrong with a file, in one line that names the file and the place.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws FileError when it is not there or cannot be read.
std::string readFile(const std::string& path);

// Empty when it is not there.
std::optional<std::string> readFileIfAny(const std::string& path);

}  // namespace modem
