// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Errors.h"
#include "TemporaryFolder.h"
#include "Tool.h"
#include "lists/ApnFile.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using pavo::test::TemporaryFolder;
using pavo::test::writeFile;
using testing::AllOf;
using testing::HasSubstr;
using testing::SizeIs;
using testing::ThrowsMessage;

TEST(ApnFile, Read_Entries_WithTheirLines) {
  const TemporaryFolder folder;
  const ApnFile file = readApnFile(writeFile(folder, "a.xml",
                                             "<?xml version=\"1.0\"?>\n<!-- list -->\n<apns>\n"
                                             "<apn carrier='A &amp; B' apn='x'/>\n"
                                             "<apn\n  apn='Z&#252;rich'/></apns>\n"));
  ASSERT_THAT(file.entries, SizeIs(2));
  EXPECT_EQ(file.entries[0].line, 4U);
  EXPECT_EQ(file.entries[0].valueOf("carrier"), "A & B");
  EXPECT_EQ(file.entries[1].line, 5U);
  EXPECT_EQ(file.entries[1].valueOf("apn"), "Zürich");
  EXPECT_FALSE(file.entries[1].has("carrier"));
  EXPECT_EQ(file.entries[1].valueOf("carrier"), "");
  EXPECT_THAT(file.remarks, SizeIs(0));
}

TEST(ApnFile, Read_Strangers_AreRemarkedByLine) {
  const TemporaryFolder folder;
  const ApnFile file = readApnFile(writeFile(
      folder, "a.xml",
      "<apns>\n<other apn='x'/>\n<apn apn='y'>\n<apn apn='inner'/>\ntext</apn>\n</apns>"));
  EXPECT_THAT(file.entries, SizeIs(1));
  ASSERT_THAT(file.remarks, SizeIs(3));
  EXPECT_EQ(file.remarks[0].line, 2U);
  EXPECT_THAT(file.remarks[0].text, HasSubstr("<other>"));
  EXPECT_EQ(file.remarks[1].line, 4U);
  EXPECT_EQ(file.remarks[2].line, 5U);
}

struct BadFile {
  const char* text;
  const char* complaint;
};

TEST(ApnFile, Read_BadContent_IsOneLineWithFileAndLine) {
  const TemporaryFolder folder;
  for (const BadFile& bad : {
           BadFile{"", "the file is empty"},
           BadFile{"\n", "no element found"},
           BadFile{"<apns>\n<apn apn='x'></apns>", ":2: mismatched tag"},
           BadFile{"<apns>\n<apn apn='x' apn='y'/></apns>", ":2: duplicate attribute"},
           BadFile{"<apns><apn apn='x'/>", "no element found"},
           BadFile{"<html>\n</html>", ":1: the root element is <html>"},
           BadFile{"{\"apns\": []}", ":1: not well-formed"},
           BadFile{"<apns>\x01</apns>", "not well-formed"},
           BadFile{"<apns>\xFF</apns>", "not well-formed"},
           BadFile{"<!DOCTYPE apns [\n<!ENTITY a 'aaaaaaaaaa'>\n"
                   "<!ENTITY b '&a;&a;&a;&a;'>]>\n<apns><apn apn='&b;'/></apns>",
                   ":2: the file declares entities"},
           BadFile{"<!DOCTYPE apns [\n<!ENTITY a SYSTEM 'file:///etc/passwd'>]>\n<apns>&a;</apns>",
                   ":2: the file declares entities"},
           BadFile{"<apns><apn apn='&undefined;'/></apns>", "undefined entity"},
           // With an external document type the parser would omit the reference and continue.
           BadFile{"<!DOCTYPE apns SYSTEM 'a.dtd'>\n<apns>\n<apn apn='a&undefined;b'/></apns>",
                   ":3: undefined entity"},
           BadFile{"<!DOCTYPE apns SYSTEM 'a.dtd'>\n<apns>&undefined;</apns>", "undefined entity"},
           BadFile{"<!DOCTYPE apns [<!ATTLIST apn apn CDATA 'x'>]><apns><apn/></apns>",
                   ":1: the file declares attributes"},
       }) {
    SCOPED_TRACE(bad.text);
    const std::string path = writeFile(folder, "bad.xml", bad.text);
    EXPECT_THAT([&] { readApnFile(path); },
                ThrowsMessage<Failure>(AllOf(HasSubstr(path), HasSubstr(bad.complaint),
                                             testing::Not(HasSubstr("\n")))));
  }
}

TEST(ApnFile, Read_OuterDocumentTypeAndOwnReferences_AreNoHarm) {
  const TemporaryFolder folder;
  const ApnFile file = readApnFile(writeFile(
      folder, "a.xml", "<!DOCTYPE apns SYSTEM 'a.dtd'><apns><apn apn='&lt;&#65;'/></apns>"));
  EXPECT_EQ(file.entries.at(0).valueOf("apn"), "<A");
}

TEST(ApnFile, Read_FileWithoutMeasure_IsRefused) {
  const TemporaryFolder folder;
  std::string deep = "<apns>";
  for (int i = 0; i < 100; ++i) {
    deep += "<apn>";
  }
  EXPECT_THAT([&] { readApnFile(writeFile(folder, "deep.xml", deep)); },
              ThrowsMessage<Failure>(HasSubstr(":1: elements nested too deep")));
  const std::string large = "<apns>" + std::string(std::size_t{17} << 20, ' ') + "</apns>";
  EXPECT_THAT([&] { readApnFile(writeFile(folder, "large.xml", large)); },
              ThrowsMessage<Failure>(HasSubstr("larger than 16 MiB")));
}

TEST(ApnFile, PlmnOf_ProperCodes_AreJoined) {
  EXPECT_EQ(plmnOf("234", "02"), "23402");
  EXPECT_EQ(plmnOf("310", "260"), "310260");
  for (const auto& [mcc, mnc] : std::vector<std::pair<std::string, std::string>>{
           {"", ""}, {"234", ""}, {"23", "402"}, {"234", "2"}, {"23x", "02"}, {"234", "0200"}}) {
    EXPECT_EQ(plmnOf(mcc, mnc), "") << mcc << " " << mnc;
  }
}

TEST(ApnFile, Read_NoFile_IsRefused) {
  const TemporaryFolder folder;
  EXPECT_THAT([&] { readApnFile(folder.file("missing")); },
              ThrowsMessage<Failure>(HasSubstr("No such file")));
  EXPECT_THAT([&] { readApnFile(folder.path().string()); },
              ThrowsMessage<Failure>(HasSubstr("Is a directory")));
}

TEST(ApnFile, Read_LongFile_InSeveralPieces) {
  const TemporaryFolder folder;
  std::string text = "<apns>\n";
  for (int i = 0; i < 5000; ++i) {
    text += "<apn mcc='234' mnc='02' apn='name" + std::to_string(i) + "'/>\n";
  }
  const ApnFile file = readApnFile(writeFile(folder, "long.xml", text + "</apns>\n"));
  ASSERT_THAT(file.entries, SizeIs(5000));
  EXPECT_EQ(file.entries.back().line, 5001U);
  EXPECT_EQ(file.entries.back().valueOf("apn"), "name4999");
}

}  // namespace
}  // namespace pavoctl
