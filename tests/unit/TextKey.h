// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A TextKey is a key that the library has not handed out.
#pragma once

#include <pavo/IProfileKey.h>

#include <functional>
#include <string>
#include <utility>

namespace pavo::test {

// The key dumps as the text that it was made with, and belongs to no cache.
class TextKey : public IProfileKey {
 public:
  explicit TextKey(std::string dumpText) : text(std::move(dumpText)) {}

  int getProfileId() override { return 0; }
  void registerExpirationListener(std::function<void()> /*listener*/) override {}
  std::string dump() override { return text; }

 private:
  const std::string text;
};

}  // namespace pavo::test
