// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A TemporaryFolder is removed after the test.
#pragma once

#include <filesystem>
#include <string>

namespace pavo::test {

// The folder is made empty under the system's folder for temporary files and removed with its
// contents.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return folder; }
  // Returns the path of a file in the folder. The file need not exist.
  std::string file(const std::string& name) const { return (folder / name).string(); }

 private:
  std::filesystem::path folder;
};

}  // namespace pavo::test
