// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This program runs a fuzz target over the given files and folders, once each, so that a corpus is
// a test.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::set<std::filesystem::path> filesOf(const std::filesystem::path& given) {
  if (!std::filesystem::is_directory(given)) {
    return {given};
  }
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(given)) {
    if (entry.is_regular_file()) {
      files.insert(entry.path());
    }
  }
  return files;
}

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || file.bad()) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return false;
  }
  // The path shows which input led to a crash.
  std::fprintf(stderr, "%s\n", path.c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const std::filesystem::path& path : filesOf(argv[i])) {
      if (!replay(path)) {
        return EXIT_FAILURE;
      }
      ++count;
    }
  }
  std::fprintf(stderr, "%zu inputs replayed\n", count);
  return count != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
