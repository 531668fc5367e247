// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FileMode.h"
#include "Payloads.h"
#include "TemporaryFolder.h"
#include "modem/trace/Trace.h"
#include "modem/trace/TraceSessions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace modem::test {
namespace {

using pavo::test::modeOf;
using pavo::test::writeWithMode;
using testing::ContainsRegex;
using testing::HasSubstr;

const std::string heading = "# pavo-modem trace 1\n";

class TraceTest : public testing::Test {
 protected:
  std::string text() const { return readFile(path); }
  void write(const std::string& content) { std::ofstream(path) << content; }
  std::string complaintOfReading() {
    try {
      readTraceSessions(path);
      return "none";
    } catch (const Error& error) {
      return error.what();
    }
  }

  pavo::test::TemporaryFolder folder;
  const std::string path = folder.file("trace");
};

const Frame hello{FrameKind::Hello, 0, 0, {1}};
const Frame welcome{FrameKind::Hello, 0, 0, {7, 0, 0, 0}};
const Frame create{FrameKind::Request, numberOf(MessageId::CreateProfile), 3,
                   createRequest({.apn = "a b #c"})};
const Frame refused{
    FrameKind::Response, numberOf(MessageId::CreateProfile), 3, {2, 8, 0, 1, 0, 0, 0, 3, 0, 0, 0}};
const Frame unchecked{FrameKind::UncheckedResponse, numberOf(MessageId::ProfileList), 4,
                      Payload(100, 0xFF)};
const Frame event{FrameKind::Indication,
                  numberOf(MessageId::ProfileChanged),
                  0,
                  {0x10, 9, 0, 0, 0, 0, 0, 4, 2, 0, 0, 0}};
const Frame unknown{FrameKind::Indication, 0x1234, 0, {}};

TEST_F(TraceTest, Write_Messages_CanBeReadByPeople) {
  TraceWriter writer(path);
  writer.add(Direction::In, 1, hello, "");
  writer.add(Direction::In, 1, create, "error");
  writer.add(Direction::Out, 1, refused, "error");
  writer.add(Direction::Out, 12, event, "");
  writer.addLost(12, event);
  writer.addEnd(12, ClosedBy::Modem);
  EXPECT_THAT(text(), ContainsRegex("\n +[0-9]+\\.[0-9]{6} +1 > hello .*\"purpose\":\"open\""));
  EXPECT_THAT(text(),
              ContainsRegex("1 > request +create-profile +3 .*\"apn\":\"a b #c\".*fault: error"));
  EXPECT_THAT(text(), ContainsRegex("1 < response .*failure 1, error 3 no resources"));
  EXPECT_THAT(text(), ContainsRegex("12 < indication profile-changed .*\"event\":2"));
  EXPECT_THAT(text(),
              ContainsRegex("# lost .* client 12: indication profile-changed .*\"event\":2"));
  EXPECT_THAT(text(), ContainsRegex("12 < end .*the modem hung up"));
}

TEST_F(TraceTest, Read_WhatWasWritten_IsTheSame) {
  const std::vector<std::pair<Direction, Frame>> said = {
      {Direction::In, hello},      {Direction::Out, welcome}, {Direction::In, create},
      {Direction::Out, unchecked}, {Direction::Out, refused}, {Direction::Out, event},
      {Direction::Out, unknown}};
  {
    TraceWriter writer(path);
    for (const auto& [direction, frame] : said) {
      writer.add(direction, 5, frame, "some fault");
    }
    writer.addEnd(5, ClosedBy::Client);
  }
  const std::vector<TraceEvent> events = readTrace(path);
  ASSERT_EQ(events.size(), said.size() + 1);
  for (size_t i = 0; i < said.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(events[i].client, 5u);
    EXPECT_EQ(events[i].direction, said[i].first);
    EXPECT_EQ(events[i].frame.kind, said[i].second.kind);
    EXPECT_EQ(events[i].frame.messageId, said[i].second.messageId);
    EXPECT_EQ(events[i].frame.transaction, said[i].second.transaction);
    EXPECT_EQ(events[i].frame.payload, said[i].second.payload);
    EXPECT_EQ(events[i].line, i + 3);
    EXPECT_GE(events[i + 1].time, events[i].time);
  }
  EXPECT_TRUE(events.back().isEnd);
  EXPECT_EQ(events.back().direction, Direction::In);
}

TEST_F(TraceTest, Write_File_IsTheOwnersAlone) {
  const TraceWriter writer(path);
  EXPECT_EQ(modeOf(path), 0600u);
}

TEST_F(TraceTest, Write_FileThatOthersMayRead_IsReplacedAndTheOwners) {
  writeWithMode(path, std::string(1000, 'x'), 0644);
  const TraceWriter writer(path);
  EXPECT_EQ(modeOf(path), 0600u);
  EXPECT_EQ(text().find('x'), std::string::npos);
}

TEST_F(TraceTest, Write_Link_IsRefusedAndItsTargetKept) {
  writeWithMode(folder.file("victim"), "precious", 0644);
  std::filesystem::create_symlink(folder.file("victim"), path);
  EXPECT_THAT([&] { const TraceWriter writer(path); },
              testing::ThrowsMessage<Error>(HasSubstr("symbolic link")));
  EXPECT_EQ(readFile(folder.file("victim")), "precious");
}

TEST_F(TraceTest, Write_NoFolder_IsTold) {
  EXPECT_THROW(TraceWriter(folder.file("none") + "/trace"), Error);
}

TEST_F(TraceTest, Write_FullDisk_IsTold) { EXPECT_THROW(TraceWriter("/dev/full"), Error); }

TEST_F(TraceTest, Sessions_OfTwoClients_AreTakenApart) {
  {
    TraceWriter writer(path);
    writer.add(Direction::In, 1, hello, "");
    writer.add(Direction::In, 2, {FrameKind::Hello, 0, 0, {4}}, "");
    writer.add(Direction::Out, 1, welcome, "");
    writer.add(Direction::Out, 2, welcome, "");
    writer.add(Direction::In, 1, create, "");
    writer.add(Direction::Out, 1, refused, "");
    writer.add(Direction::Out, 1, event, "");
    writer.addEnd(2, ClosedBy::Modem);
    writer.addEnd(1, ClosedBy::Client);
  }
  const std::vector<TraceSession> sessions = readTraceSessions(path);
  ASSERT_EQ(sessions.size(), 2u);
  EXPECT_EQ(sessions[0].hello.purpose, Purpose::Open);
  EXPECT_TRUE(sessions[0].hello.sawAbsence);
  ASSERT_EQ(sessions[0].exchanges.size(), 2u);
  EXPECT_EQ(sessions[0].exchanges[0].sent.size(), 1u);
  EXPECT_EQ(sessions[0].exchanges[1].said.frame.messageId, numberOf(MessageId::CreateProfile));
  EXPECT_EQ(sessions[0].exchanges[1].sent.size(), 2u);
  EXPECT_EQ(sessions[1].hello.purpose, Purpose::Watch);
  ASSERT_EQ(sessions[1].exchanges.size(), 1u);
  EXPECT_TRUE(sessions[1].exchanges[0].sent[1].isEnd);
}

TEST_F(TraceTest, Read_CommentsAndEmptyLines_AreForPeople) {
  write(heading + "\n# a remark\n0.000001 1 > hello - 0 {} 00\n");
  EXPECT_EQ(readTrace(path).size(), 1u);
}

struct WrongTrace {
  const char* text;
  const char* error;
};

void PrintTo(const WrongTrace& row, std::ostream* out) { *out << row.text; }

class TraceWrong : public TraceTest, public testing::WithParamInterface<WrongTrace> {};

TEST_P(TraceWrong, Read_WrongTrace_TellsTheFileAndTheLine) {
  write(GetParam().text[0] == '!' ? GetParam().text + 1 : heading + GetParam().text + "\n");
  EXPECT_THAT(complaintOfReading(), testing::StartsWith(path + ": line "));
  EXPECT_THAT(complaintOfReading(), HasSubstr(GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(
    Traces, TraceWrong,
    testing::Values(
        WrongTrace{"!", "line 1: it has to be"}, WrongTrace{"!{}", "line 1: it has to be"},
        WrongTrace{"0.000001 1 > hello", "line 2: columns are missing"},
        WrongTrace{"now 1 > hello - 0 {} 00", "line 2: the time \"now\""},
        WrongTrace{"0.1 1 > hello - 0 {} 00", "line 2: the time \"0.1\""},
        WrongTrace{"0.000001 x > hello - 0 {} 00", "line 2: the client \"x\""},
        WrongTrace{"0.000001 1 = hello - 0 {} 00", "line 2: the direction \"=\""},
        WrongTrace{"0.000001 1 > greeting - 0 {} 00", "line 2: there is no kind \"greeting\""},
        WrongTrace{"0.000001 1 > control-request - 0 {} 00", "line 2: there is no kind"},
        WrongTrace{"0.000001 1 > hello nonsense 0 {} 00", "line 2: there is no message"},
        WrongTrace{"0.000001 1 > hello 0x12345 0 {} 00", "line 2: the message"},
        WrongTrace{"0.000001 1 > hello - minus {} 00", "line 2: the transaction"},
        WrongTrace{"0.000001 1 > hello - 0 {} 0", "line 2: the bytes are cut short"},
        WrongTrace{"0.000001 1 > hello - 0 {} zz", "line 2: the byte \"zz\""},
        WrongTrace{"0.000001 1 > hello - 0 {} 0000", "line 2: this is no hello"},
        WrongTrace{"0.000001 1 > request profile-list 1 {} -",
                   "line 2: this client has said no hello yet"},
        WrongTrace{"0.000001 1 > hello - 0 {} 00\n0.000002 1 > hello - 0 {} 00",
                   "line 3: a client says hello once"}));

TEST_F(TraceTest, Read_NoSuchFile_IsTold) {
  EXPECT_THAT(complaintOfReading(), HasSubstr("No such file"));
}

}  // namespace
}  // namespace modem::test
