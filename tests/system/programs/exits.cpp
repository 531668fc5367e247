// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This program ends in the way that its argument names, with the library in use. It writes "ending"
// when everything is set up. Its exit code is 0 unless it says otherwise.
#include <pavo/Manager.h>

#include "../AndroidLog.h"
#include "Deadline.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

// A forked child has copies of objects that only the stacks of its parent's threads point to. The
// leak checker takes them for leaks, so it asks this function first.
static bool isForkedChild = false;
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() { return isForkedChild ? 1 : 0; }

namespace {

using pavo::Manager;
using Key = std::shared_ptr<pavo::IProfileKey>;

// An AtExit runs its work when static objects are destroyed.
struct AtExit {
  std::function<void()> work;
  ~AtExit() {
    if (work) {
      work();
    }
  }
};

// These objects are constructed before any function runs, so they are destroyed after the instance
// of Manager.
Key keyBeforeManager;
std::list<Key> keysBeforeManager;
AtExit afterManager;
Manager globalManager;

Key add(const std::string& apn, bool isPersistent = false) {
  pavo::AddProfileParams params(isPersistent, /*isIAProfile=*/false);
  params.setApnName(apn);
  return Manager::getInstance().addProfile(params);
}

void start(Manager& manager = Manager::getInstance()) {
  const pavo::test::AndroidLog& log = pavo::test::AndroidLog::instance();
  const std::size_t position = log.end();
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  if (!log.waitFor("OvixWdsProxy config register request successful!", position)) {
    std::cerr << "no modem" << std::endl;
    std::_Exit(EXIT_FAILURE);
  }
}

void ending() { std::cout << "ending" << std::endl; }

void keyInGlobalBefore() {
  start();
  keyBeforeManager = add("ims");
  ending();
}

void keyInGlobalAfter() {
  start();
  static Key keyAfterManager = add("ims");
  ending();
}

void keysWithListeners() {
  start();
  for (int i = 0; i < 8; ++i) {
    keysBeforeManager.push_back(add("apn" + std::to_string(i)));
    keysBeforeManager.back()->registerExpirationListener(
        [] { std::cout << "expired" << std::endl; });
  }
  ending();
}

void listenerDropsGlobalKeys() {
  start();
  keyBeforeManager = add("ims");
  keysBeforeManager.push_back(add("other"));
  keyBeforeManager->registerExpirationListener([] {
    keysBeforeManager.clear();
    Manager::getInstance().dump();
    std::cout << "expired" << std::endl;
  });
  ending();
}

void operationsAfterManager() {
  start();
  keyBeforeManager = add("ims");
  afterManager.work = [] {
    Manager late;
    late.getProfile(keyBeforeManager);
    keyBeforeManager->registerExpirationListener([] {});
    keyBeforeManager.reset();
    const std::vector<std::string> lines = late.dump();
    std::cout << "late " << lines.back() << std::endl;
  };
  ending();
}

void initAfterManager() {
  start();
  afterManager.work = [] {
    Manager late;
    start(late);
    std::cout << "late" << std::endl;
  };
  ending();
}

void managerInGlobal() {
  start(globalManager);
  ending();
}

void neverConnected() {
  Manager::getInstance().init(0, /*useAndroidLog=*/true);
  ending();
}

void neverInitialised() {
  Manager::getInstance();
  ending();
}

void awaitTest() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  int received = 0;
  sigwait(&signals, &received);
}

void busyWorker() {
  // The signal is blocked before another thread exists, so that it waits for awaitTest.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &signals, /*oldset=*/nullptr);
  start();
  std::cout << "started" << std::endl;
  // The test makes the modem stay silent, ...
  awaitTest();
  std::thread([] { add("lost"); }).detach();
  // ... and makes this program end when the modem is silent.
  awaitTest();
  ending();
}

void busyCallers() {
  start();
  static std::atomic<int> rounds = 0;
  for (int i = 0; i < 4; ++i) {
    std::thread([i] {
      // The threads add profiles until the instance is destroyed under them.
      for (Key key = add("apn" + std::to_string(i)); key != nullptr;) {
        Manager::getInstance().filter(pavo::FilterProfileParams());
        key = add("apn" + std::to_string(i));
        ++rounds;
      }
      while (true) {
        pause();
      }
    }).detach();
  }
  pavo::test::waitUntil([] { return rounds > 20; });
  ending();
}

void exitOnThread() {
  start();
  keyBeforeManager = add("ims");
  std::thread([] {
    ending();
    std::exit(EXIT_SUCCESS);
  }).detach();
  while (true) {
    pause();
  }
}

void exitInListener() {
  start();
  keyBeforeManager = add("ims");
  keyBeforeManager->registerExpirationListener([] {
    ending();
    std::exit(EXIT_SUCCESS);
  });
  // The test deletes the profile through the modem. This thread cannot, because it would wait for
  // the answer.
  std::cout << "ready" << std::endl;
  while (true) {
    pause();
  }
}

void exitInListenerOfTwoManagers() {
  start(globalManager);
  exitInListener();
}

void exitInListenerDuringACall() {
  start(globalManager);
  start();
  keyBeforeManager = add("ims");
  keyBeforeManager->registerExpirationListener([] {
    ending();
    std::exit(EXIT_SUCCESS);
  });
  Manager::getInstance().deleteProfile(keyBeforeManager);
}

void manyInits() {
  for (int i = 0; i < 20; ++i) {
    Manager::getInstance().init(i, /*useAndroidLog=*/i % 2 == 0);
    keysBeforeManager.push_back(add("apn"));
  }
  ending();
}

// The child runs its exit handlers. They drop the key and end its copy of the process-wide Manager.
void forkedChildExits() {
  start();
  keyBeforeManager = add("ims");
  const pid_t child = fork();
  if (child == 0) {
    isForkedChild = true;
    std::exit(EXIT_SUCCESS);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0) {
    std::cerr << "the child ended with wait status " << status << std::endl;
    std::exit(EXIT_FAILURE);
  }
  if (!Manager::getInstance().getProfile(keyBeforeManager)) {
    std::cerr << "the parent's profile is gone" << std::endl;
    std::exit(EXIT_FAILURE);
  }
  ending();
}

const std::map<std::string, void (*)()>& scenarios() {
  static const auto& all = *new std::map<std::string, void (*)()>{
      {"key-in-global-before", keyInGlobalBefore},
      {"key-in-global-after", keyInGlobalAfter},
      {"keys-with-listeners", keysWithListeners},
      {"listener-drops-global-keys", listenerDropsGlobalKeys},
      {"operations-after-manager", operationsAfterManager},
      {"init-after-manager", initAfterManager},
      {"manager-in-global", managerInGlobal},
      {"never-connected", neverConnected},
      {"never-initialised", neverInitialised},
      {"busy-worker", busyWorker},
      {"busy-callers", busyCallers},
      {"exit-on-thread", exitOnThread},
      {"exit-in-listener", exitInListener},
      {"exit-in-listener-of-two-managers", exitInListenerOfTwoManagers},
      {"exit-in-listener-during-a-call", exitInListenerDuringACall},
      {"many-inits", manyInits},
      {"forked-child-exits", forkedChildExits},
  };
  return all;
}

}  // namespace

int main(int argc, char** argv) {
  const auto found = scenarios().find(argc == 2 ? argv[1] : "");
  if (found == scenarios().end()) {
    std::cerr << "no such scenario" << std::endl;
    return EXIT_FAILURE;
  }
  found->second();
  return EXIT_SUCCESS;
}
