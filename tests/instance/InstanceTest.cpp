// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A process has one manager, although getInstance() is compiled into each of its clients.
#include <pavo/Manager.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace pavo::test {
namespace {

TEST(InstanceTest, GetInstance_InASharedObjectLoadedWithLocalNames_TheSame) {
  void* const client = dlopen(PAVO_INSTANCE_CLIENT, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(client, nullptr) << dlerror();
  void* const symbol = dlsym(client, "clientInstance");
  ASSERT_NE(symbol, nullptr) << dlerror();
  const auto clientInstance = reinterpret_cast<const void* (*)()>(symbol);
  EXPECT_EQ(clientInstance(), &Manager::getInstance());
}

}  // namespace
}  // namespace pavo::test
