// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A folder that is gone after the test.
#pragma once

#include <filesystem>
#include <string>

namespace pavo::test {

// Made empty under the system's folder for temporary files, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return folder; }
  // The path of a file in it, which need not exist.
  std::string file(const std::string& name) const { return (folder / name).string(); }

 private:
  std::filesystem::path folder;
};

}  // namespace pavo::test
