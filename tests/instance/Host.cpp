// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A program that is not linked to the library: all of it comes with the clients that it loads,
// given as arguments. Ends with 0 when they have the same manager.
#include <dlfcn.h>

#include <cstdio>
#include <set>

int main(int argc, char** argv) {
  std::set<const void*> instances;
  for (int i = 1; i < argc; ++i) {
    void* const client = dlopen(argv[i], RTLD_NOW | RTLD_LOCAL);
    void* const symbol = client != nullptr ? dlsym(client, "clientInstance") : nullptr;
    if (symbol == nullptr) {
      std::fprintf(stderr, "%s\n", dlerror());
      return 2;
    }
    instances.insert(reinterpret_cast<const void* (*)()>(symbol)());
  }
  return instances.size() == 1 ? 0 : 1;
}
