// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the modem as a process: its command line, its socket file and its end.
#include "Answers.h"
#include "ChildProcess.h"
#include "Deadline.h"
#include "RawClient.h"
#include "TemporaryFolder.h"
#include "modem/client/ControlClient.h"
#include "modem/server/Server.h"
#include "wire/LocalSocket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace modem::test {
namespace {

using nlohmann::json;
using pavo::test::ChildProcess;
using pavo::test::TemporaryFolder;
using testing::AllOf;
using testing::HasSubstr;

using Words = std::vector<std::string>;
using Exit = ChildProcess::Exit;

class ProcessTest : public testing::Test {
 protected:
  std::string socketPath() const { return folder.file("modem"); }

  Words command(const Words& more = {}) const {
    Words words = {PAVO_MODEM_PROGRAM, "--socket", socketPath()};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  bool isReady(ChildProcess& process) const {
    return process.waitForOutput("pavo-modem: listening on " + socketPath() + "\n");
  }
  Exit ctl(const Words& words, std::string* output = nullptr) const {
    Words all = {PAVO_MODEM_PROGRAM, "ctl", "--socket", socketPath()};
    all.insert(all.end(), words.begin(), words.end());
    ChildProcess process(all);
    const auto exit = process.waitForExit();
    if (output != nullptr) {
      *output = process.output();
    }
    return exit.value_or(Exit{});
  }
  RawClient newClient() const {
    RawClient client(connectToSocket(socketPath()));
    client.hello();
    return client;
  }

  TemporaryFolder folder;
};

// An Outcome is the result of a connection to a modem by a process of another user.
enum class Outcome { HungUp, Answered, Broken, NotConnected, NotTheOther };

constexpr uid_t anotherUser = 65534;

// This function runs in the child and makes system calls only. It closes saidFd when it has sent
// all bytes.
Outcome connectAndSend(const sockaddr_un& address, const std::vector<uint8_t>& bytes, int saidFd) {
  if (setresuid(anotherUser, anotherUser, anotherUser) != 0) {
    return Outcome::NotTheOther;
  }
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, /*protocol=*/0);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return Outcome::NotConnected;
  }
  // The modem may have hung up already, so the result is ignored.
  send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  close(saidFd);
  char answer = 0;
  const ssize_t count = recv(fd, &answer, sizeof answer, /*flags=*/0);
  return count == 0 ? Outcome::HungUp : count > 0 ? Outcome::Answered : Outcome::Broken;
}

// The modem is stopped meanwhile, so it finds the connection with the frame already on it.
Outcome connectAsAnotherUser(ChildProcess& modem, const std::string& path, const Frame& frame) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  const std::vector<uint8_t> bytes = encodeFrame(frame);
  int said[2] = {-1, -1};
  EXPECT_EQ(pipe2(said, O_CLOEXEC), 0);
  modem.sendSignal(SIGSTOP);
  const pid_t child = fork();
  if (child == 0) {
    _exit(static_cast<int>(connectAndSend(address, bytes, said[1])));
  }
  close(said[1]);
  char nothing = 0;
  EXPECT_EQ(read(said[0], &nothing, sizeof nothing), 0);
  close(said[0]);
  modem.sendSignal(SIGCONT);
  int status = 0;
  waitpid(child, &status, /*options=*/0);
  return static_cast<Outcome>(WEXITSTATUS(status));
}

// Runs the program to its end, expects the exit code, and returns the error output.
std::string complaintOf(const Words& words, int code) {
  ChildProcess process(words);
  const auto exit = process.waitForExit();
  EXPECT_EQ(exit, (Exit{code, 0})) << process.output() << process.errors();
  return process.errors();
}

class ProcessEnds : public ProcessTest, public testing::WithParamInterface<int> {};

TEST_P(ProcessEnds, Signal_ServingModem_EndsCleanlyAndRemovesTheSocket) {
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  RawClient client = newClient();
  process.sendSignal(GetParam());
  EXPECT_EQ(process.waitForExit(), (Exit{0, 0})) << process.errors();
  EXPECT_FALSE(std::filesystem::exists(socketPath()));
  EXPECT_TRUE(client.isHungUp());
}

INSTANTIATE_TEST_SUITE_P(Signals, ProcessEnds, testing::Values(SIGTERM, SIGINT));

TEST_F(ProcessTest, Start_StaleSocketOfADeadModem_IsReplaced) {
  {
    ChildProcess process(command());
    ASSERT_TRUE(isReady(process));
    process.sendSignal(SIGKILL);
    ASSERT_EQ(process.waitForExit(), (Exit{-1, SIGKILL}));
  }
  ASSERT_TRUE(std::filesystem::exists(socketPath()));
  ChildProcess process(command());
  EXPECT_TRUE(isReady(process)) << process.errors();
}

TEST_F(ProcessTest, Start_SocketOfALiveModem_IsRefusedAndTheLiveOneGoesOn) {
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  EXPECT_THAT(complaintOf(command(), 1), HasSubstr("a running modem serves this socket"));
  EXPECT_EQ(resultOf(newClient().request(MessageId::ProfileList, {})), success);
}

TEST_F(ProcessTest, Start_FileThatIsNoSocket_IsRefusedAndKept) {
  std::ofstream(socketPath()) << "precious";
  EXPECT_THAT(complaintOf(command(), 1), HasSubstr("no socket"));
  EXPECT_EQ(std::filesystem::file_size(socketPath()), 8u);
}

TEST_F(ProcessTest, Start_PathTooLongForASocket_IsRefused) {
  const std::string path = folder.file(std::string(120, 's'));
  EXPECT_THAT(complaintOf({PAVO_MODEM_PROGRAM, "--socket", path}, 1),
              AllOf(HasSubstr(path), HasSubstr("at most 107 bytes")));
}

TEST_F(ProcessTest, Start_BadProfileFile_IsRefusedWithThePlace) {
  std::ofstream(folder.file("bad.json")) << R"({"profiles": [{"pdpType": "V5"}]})";
  EXPECT_THAT(complaintOf(command({"--profiles", folder.file("bad.json")}), 1),
              AllOf(HasSubstr(folder.file("bad.json")), HasSubstr("profiles[0].pdpType")));
  EXPECT_THAT(complaintOf(command({"--profiles", folder.file("none")}), 1),
              HasSubstr("No such file"));
}

TEST_F(ProcessTest, Start_BadStore_IsRefusedAndKept) {
  std::ofstream(folder.file("store")) << "garbage";
  EXPECT_THAT(complaintOf(command({"--store", folder.file("store")}), 1),
              HasSubstr(folder.file("store")));
  EXPECT_EQ(std::filesystem::file_size(folder.file("store")), 7u);
  EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(ProcessTest, Start_StoreOfALiveModem_IsRefusedUntilThatOneIsGone) {
  ChildProcess first(command({"--store", folder.file("store")}));
  ASSERT_TRUE(isReady(first));
  const Words second = {PAVO_MODEM_PROGRAM, "--socket", folder.file("second"), "--store",
                        folder.file("store")};
  EXPECT_THAT(complaintOf(second, 1),
              AllOf(HasSubstr(folder.file("store")), HasSubstr("another modem uses it")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("second")));
  first.sendSignal(SIGKILL);
  ASSERT_EQ(first.waitForExit(), (Exit{-1, SIGKILL}));
  ChildProcess next(second);
  EXPECT_TRUE(next.waitForOutput("pavo-modem: listening on " + folder.file("second") + "\n"));
}

TEST_F(ProcessTest, Start_LinkInThePlaceOfTheStoresLock_IsRefused) {
  std::filesystem::create_symlink(folder.file("victim"), folder.file("store.lock"));
  EXPECT_THAT(complaintOf(command({"--store", folder.file("store")}), 1),
              AllOf(HasSubstr(folder.file("store.lock")), HasSubstr("symbolic link")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("victim")));
}

TEST_F(ProcessTest, Start_FolderStaysLocked_IsRefusedInOneLine) {
  const UniqueFd holder(open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(flock(holder.get(), LOCK_EX), 0);
  EXPECT_EQ(complaintOf(command(), 1), "pavo-modem: " + socketPath() +
                                           ": another process keeps the directory " +
                                           folder.path().string() + " locked\n");
}

TEST_F(ProcessTest, Start_StoreInNoFolder_IsRefused) {
  EXPECT_THAT(complaintOf(command({"--store", folder.file("none/store")}), 1),
              AllOf(HasSubstr("none/store.lock"), HasSubstr("No such file")));
}

TEST_F(ProcessTest, Start_BadUsage_Exits2) {
  complaintOf(command({"--capacity", "256"}), 2);
  complaintOf(command({"--nonsense"}), 2);
  complaintOf({"/usr/bin/env", "-u", "OVIX_MODEM", PAVO_MODEM_PROGRAM}, 2);
}

TEST_F(ProcessTest, Start_SocketFromTheEnvironment_ServesThere) {
  pavo::test::ChildProcessOptions options;
  options.environment = {"OVIX_MODEM=" + socketPath()};
  ChildProcess process({PAVO_MODEM_PROGRAM}, options);
  EXPECT_TRUE(isReady(process)) << process.errors();
}

TEST_F(ProcessTest, Start_ReadyFd_TellsThereInsteadOfStdout) {
  ChildProcess process(command({"--ready-fd", "2"}));
  ASSERT_TRUE(pavo::test::waitUntil(
      [&] { return process.errors().find("listening on") != std::string::npos; }));
  EXPECT_EQ(process.output(), "");
}

TEST_F(ProcessTest, Start_ProfilesAndCapacity_AreUsed) {
  std::ofstream(folder.file("own.json")) << R"({"profiles": [{"index": 2, "apn": "own"}]})";
  ChildProcess process(command({"--profiles", folder.file("own.json"), "--capacity", "2"}));
  ASSERT_TRUE(isReady(process)) << process.errors();
  const json shown = ControlClient(socketPath()).call("show");
  EXPECT_EQ(shown["capacity"], 2);
  EXPECT_EQ(shown["profiles"], json::parse(R"([{"index": 2, "apn": "own"}])"));
}

TEST_F(ProcessTest, Kill_AfterAnswers_LosesNothingPersistent) {
  const Words words = command({"--store", folder.file("store")});
  for (int round = 1; round <= 5; ++round) {
    ChildProcess process(words);
    ASSERT_TRUE(isReady(process)) << process.errors();
    RawClient client = newClient();
    const std::string apn = "apn" + std::to_string(round);
    ASSERT_EQ(resultOf(client.request(MessageId::CreateProfile,
                                      createRequest({.apn = apn, .persistent = uint8_t{1}}))),
              success);
    ASSERT_EQ(resultOf(client.request(MessageId::ModifyProfile, profileRequest(1, {.apn = apn}))),
              success);
    process.sendSignal(SIGKILL);
    ASSERT_EQ(process.waitForExit(), (Exit{-1, SIGKILL}));
  }
  ChildProcess process(words);
  ASSERT_TRUE(isReady(process)) << process.errors();
  RawClient client = newClient();
  EXPECT_EQ(settingsOf(client.request(MessageId::ProfileSettings, profileRequest(1))).apn, "apn5");
  for (uint8_t index = 2; index <= 5; ++index) {
    EXPECT_EQ(settingsOf(client.request(MessageId::ProfileSettings, profileRequest(index))).apn,
              "apn" + std::to_string(index));
  }
}

TEST_F(ProcessTest, Restart_Modem_HasAnotherBootNumber) {
  std::vector<json> boots;
  for (int i = 0; i < 2; ++i) {
    ChildProcess process(command());
    ASSERT_TRUE(isReady(process));
    boots.push_back(ControlClient(socketPath()).call("show")["boot"]);
    process.sendSignal(SIGTERM);
    process.waitForExit();
  }
  EXPECT_NE(boots[0], boots[1]);
}

TEST_F(ProcessTest, Ctl_DoneRefusedAndBadUsage_Exits012) {
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  std::string output;
  EXPECT_EQ(ctl({"create", "apn=ims", "class=3", R"({"clat": true})"}, &output), (Exit{0, 0}));
  EXPECT_EQ(json::parse(output)["index"], 1);
  EXPECT_EQ(ctl({"show"}, &output), (Exit{0, 0}));
  EXPECT_EQ(json::parse(output)["profiles"],
            json::parse(R"([{"index": 1, "apn": "ims", "class": 3, "clat": true}])"));
  EXPECT_EQ(ctl({"delete", "index=7"}, &output), (Exit{1, 0}));
  EXPECT_EQ(json::parse(output)["ok"], false);
  EXPECT_EQ(ctl({}), (Exit{2, 0}));
  EXPECT_EQ(ctl({"create", "apn"}), (Exit{2, 0}));
  EXPECT_EQ(ctl({"create", "{\"apn\""}), (Exit{2, 0}));
}

TEST_F(ProcessTest, Start_BadScript_IsRefusedInOneLineWithThePlace) {
  const std::string path = folder.file("script.json");
  const auto complaint = [&](const std::string& text) {
    std::ofstream(path) << text;
    return complaintOf(command({"--script", path}), 1);
  };
  const auto oneLine = [&](const std::string& error) {
    return AllOf(HasSubstr("pavo-modem: " + path + ": "), HasSubstr(error),
                 testing::ResultOf(
                     [](const std::string& text) { return std::ranges::count(text, '\n'); }, 1));
  };
  EXPECT_THAT(complaint("{"), oneLine("parse error"));
  EXPECT_THAT(complaint(R"({"fault": []})"), oneLine("the list \"faults\""));
  EXPECT_THAT(complaint(R"({"faults": [{"message": "any", "silent": true, "x": 1}]})"),
              oneLine("faults[0]: unknown argument \"x\""));
  EXPECT_THAT(complaintOf(command({"--script", folder.file("none")}), 1),
              HasSubstr("No such file"));
  EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(ProcessTest, Start_BadSeed_Exits2) { complaintOf(command({"--seed", "-1"}), 2); }

TEST_F(ProcessTest, Start_TraceThatCannotBeWritten_IsRefused) {
  EXPECT_THAT(complaintOf(command({"--trace", folder.file("none") + "/trace"}), 1),
              HasSubstr("cannot create"));
  EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(ProcessTest, Start_Script_TakesEffect) {
  std::ofstream(folder.file("script.json"))
      << R"({"seed": 3, "faults": [{"message": "profile-list", "nth": 2, "error": 2}]})";
  ChildProcess process(command({"--script", folder.file("script.json")}));
  ASSERT_TRUE(isReady(process)) << process.errors();
  RawClient client = newClient();
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), success);
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), failure(ErrorCode::Internal));
  EXPECT_EQ(ControlClient(socketPath()).call("show")["boot"], 3);
}

TEST_F(ProcessTest, Start_SeedGiven_TakesThePlaceOfTheScripts) {
  std::ofstream(folder.file("script.json")) << R"({"seed": 3, "faults": []})";
  ChildProcess process(command({"--script", folder.file("script.json"), "--seed", "4"}));
  ASSERT_TRUE(isReady(process)) << process.errors();
  EXPECT_EQ(ControlClient(socketPath()).call("show")["boot"], 4);
}

TEST_F(ProcessTest, Ctl_ScriptFromAFile_ReplacesTheFaults) {
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  const std::string path = folder.file("script.json");
  std::ofstream(path) << R"({"faults": [{"indication": "any", "lost": true}]})";
  ASSERT_EQ(ctl({"fail", "message=any", "silent=true"}), (Exit{0, 0}));
  ASSERT_EQ(ctl({"script", "@" + path}), (Exit{0, 0}));
  std::string output;
  EXPECT_EQ(ctl({"faults"}, &output), (Exit{0, 0}));
  EXPECT_EQ(json::parse(output)["faults"],
            json::parse(R"([{"indication": "any", "count": 1, "lost": true}])"));
  std::ofstream(path) << R"({"faults": [{"indication": "any", "lost": true, "x": 1}]})";
  EXPECT_EQ(ctl({"script", "@" + path}, &output), (Exit{1, 0}));
  EXPECT_EQ(json::parse(output)["error"], "faults[0]: unknown argument \"x\"");
  EXPECT_EQ(ctl({"script", "@" + folder.file("none")}), (Exit{1, 0}));
  std::ofstream(path) << "[]";
  EXPECT_EQ(ctl({"script", "@" + path}), (Exit{1, 0}));
}

TEST_F(ProcessTest, Connect_ProcessOfAnotherUser_IsHungUpOnAndToldInOneLine) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can become another user; LocalSocketTest has the decision";
  }
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  // The permissions of the folder and of the socket let the other user in.
  const auto all = std::filesystem::perms::all;
  std::filesystem::permissions(folder.path(), all);
  std::filesystem::permissions(socketPath(), all);
  const std::string show = R"({"verb": "show"})";
  const Frame control{FrameKind::ControlRequest, 0, 1, {show.begin(), show.end()}};
  EXPECT_EQ(connectAsAnotherUser(process, socketPath(), control), Outcome::HungUp);
  EXPECT_EQ(connectAsAnotherUser(process, socketPath(), {FrameKind::Hello, 0, 0, {0}}),
            Outcome::HungUp);
  EXPECT_EQ(resultOf(newClient().request(MessageId::ProfileList, {})), success);
  EXPECT_THAT(process.errors(),
              testing::StartsWith("pavo-modem: a connection was turned away, it is of user " +
                                  std::to_string(anotherUser) + "\n"));
}

TEST_F(ProcessTest, Connect_SilentOnes_AreClosedAndTheOthersServed) {
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  RawClient client = newClient();
  ControlClient control(socketPath());
  control.call("show");
  RawClient silent(connectToSocket(socketPath()));
  RawClient halfSaid(connectToSocket(socketPath()));
  halfSaid.sendBytes(Payload{1, 0, 0, 0});
  EXPECT_TRUE(silent.isHungUp());
  EXPECT_TRUE(halfSaid.isHungUp());
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), success);
  EXPECT_EQ(control.call("show")["clients"], 1);
  EXPECT_THAT(process.errors(), HasSubstr("a connection was closed: it has not said what it is\n"));
}

TEST_F(ProcessTest, Connect_MoreThanThereIsRoomFor_IsALineASecondAtMost) {
  const auto start = std::chrono::steady_clock::now();
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  std::vector<RawClient> clients;
  for (size_t i = 0; i < Server::connectionsMax; ++i) {
    clients.push_back(newClient());
  }
  const auto isTurnedAway = [&] { return RawClient(connectToSocket(socketPath())).isHungUp(); };
  EXPECT_TRUE(isTurnedAway());
  EXPECT_TRUE(isTurnedAway());
  EXPECT_TRUE(pavo::test::waitUntil([&] {
    EXPECT_TRUE(isTurnedAway());
    return process.errors().find("such lines left out before") != std::string::npos;
  }));
  const std::string lines = process.errors();
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start)
          .count();
  EXPECT_LE(std::ranges::count(lines, '\n'), seconds + 1);
  EXPECT_THAT(lines, HasSubstr("a connection was turned away, there are 256\n"));
}

class ReplayProcessTest : public ProcessTest {
 protected:
  // Makes the client's requests of the recorded session.
  void makeRequests(const std::string& apn) const {
    RawClient client = newClient();
    client.registerForAll();
    client.request(MessageId::CreateProfile, createRequest({.apn = apn}));
    client.eventsUntilNow();
  }
  void record() {
    ChildProcess process(command({"--trace", tracePath()}));
    ASSERT_TRUE(isReady(process)) << process.errors();
    makeRequests("ims");
    process.sendSignal(SIGTERM);
    ASSERT_EQ(process.waitForExit(), (Exit{0, 0}));
  }
  std::string tracePath() const { return folder.file("trace"); }
  Words replayCommand() const {
    return {PAVO_MODEM_PROGRAM, "replay", "--socket", socketPath(), tracePath()};
  }
};

TEST_F(ReplayProcessTest, SameRequests_Exits0) {
  record();
  ChildProcess process(replayCommand());
  ASSERT_TRUE(isReady(process)) << process.errors();
  makeRequests("ims");
  process.sendSignal(SIGTERM);
  EXPECT_EQ(process.waitForExit(), (Exit{0, 0}));
  EXPECT_EQ(process.errors(), "pavo-modem: replayed 4 of 4 requests, 0 differed\n");
  EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(ReplayProcessTest, OtherRequest_TellsItAndExits1) {
  record();
  ChildProcess process(replayCommand());
  ASSERT_TRUE(isReady(process)) << process.errors();
  makeRequests("other");
  EXPECT_EQ(ctl({"quit"}), (Exit{0, 0}));
  EXPECT_EQ(process.waitForExit(), (Exit{1, 0}));
  EXPECT_THAT(process.errors(), HasSubstr("differs from the trace, which has create-profile"));
  EXPECT_THAT(process.errors(), HasSubstr("replayed 3 of 4 requests, 2 differed\n"));
}

TEST_F(ReplayProcessTest, BadTraceOrUsage_Exits1Or2) {
  std::ofstream(tracePath()) << "nonsense\n";
  EXPECT_THAT(complaintOf(replayCommand(), 1),
              HasSubstr("pavo-modem: " + tracePath() + ": line 1: "));
  complaintOf({PAVO_MODEM_PROGRAM, "replay", "--socket", socketPath()}, 2);
}

TEST_F(ProcessTest, Ctl_NoModem_Exits1) { EXPECT_EQ(ctl({"show"}), (Exit{1, 0})); }

TEST_F(ProcessTest, Ctl_Quit_EndsTheModem) {
  ChildProcess process(command());
  ASSERT_TRUE(isReady(process));
  EXPECT_EQ(ctl({"quit"}), (Exit{0, 0}));
  EXPECT_EQ(process.waitForExit(), (Exit{0, 0}));
  EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

}  // namespace
}  // namespace modem::test
