// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This program is not linked to the library. The library comes only with the clients that the
// program loads, given as arguments. It ends with 0 when all clients have the same manager.
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
