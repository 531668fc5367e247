// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Errors.h"
#include "profiles/Values.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(Values, ParseNumber_WithinRange_IsRead) {
  EXPECT_EQ(parseNumber("--wait", "0", 0, 65535), 0);
  EXPECT_EQ(parseNumber("--wait", "65535", 0, 65535), 65535);
  EXPECT_EQ(parseNumber("--wait", "0xfF", 0, 65535), 255);
  EXPECT_EQ(parseNumber("--n", "-7", -10, 10), -7);
}

TEST(Values, ParseNumber_NoSuchNumber_IsRefusedByName) {
  for (const char* text : {"", "x", "1x", "65536", "-1", " 1", "1 ", "+1", "1.0", "0x", "0x-1",
                           "99999999999999999999"}) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { parseNumber("--wait", text, 0, 65535); },
                ThrowsMessage<UsageError>(HasSubstr("--wait: '")));
  }
}

TEST(Values, ParseSeconds_Fractions_AreMilliseconds) {
  EXPECT_EQ(parseSeconds("--timeout", "5"), 5000);
  EXPECT_EQ(parseSeconds("--timeout", "0.25"), 250);
  for (const char* text : {"", "0", "-1", "nan", "inf", "3601", "1s", "1e99"}) {
    SCOPED_TRACE(text);
    EXPECT_THROW(parseSeconds("--timeout", text), UsageError);
  }
}

TEST(Values, ParseFlag_Words_InAnyCase) {
  for (const char* text : {"yes", "TRUE", "On", "1"}) {
    EXPECT_TRUE(parseFlag("--clat", text)) << text;
  }
  for (const char* text : {"no", "false", "OFF", "0"}) {
    EXPECT_FALSE(parseFlag("--clat", text)) << text;
  }
  EXPECT_THROW(parseFlag("--clat", "maybe"), UsageError);
  EXPECT_THROW(parseFlag("--clat", ""), UsageError);
}

TEST(Values, ParseText_AtTheLimit_IsTaken) {
  EXPECT_EQ(parseText("--apn", std::string(150, 'a'), apnNameBytesMax).size(), 150U);
  EXPECT_EQ(parseText("--apn", "", apnNameBytesMax), "");
}

TEST(Values, ParseText_TooLong_IsRefusedWithoutTheText) {
  try {
    parseText("--password", std::string(128, 's'), passwordBytesMax);
    FAIL();
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "--password: 128 bytes are too long, at most 127 fit");
  }
}

TEST(Values, ParseEnumerations_NameOrNumber) {
  EXPECT_EQ(parseAuthType("--auth", "pap_chap"), pavo::AuthType::PAP_CHAP);
  EXPECT_EQ(parseAuthType("--auth", "2"), pavo::AuthType::CHAP);
  EXPECT_EQ(parseIpType("--home-ip", "V4v6"), pavo::IPType::V4V6);
  EXPECT_EQ(parseIpType("--home-ip", "unknown"), pavo::IPType::UNKNOWN);
  EXPECT_EQ(parseApnClass("--class", "INET"), pavo::ApnClass::INET);
  EXPECT_EQ(parseApnClass("--class", "77"), static_cast<pavo::ApnClass>(77));
}

TEST(Values, ParseEnumerations_UnknownName_ListsTheKnown) {
  EXPECT_THAT([] { parseAuthType("--auth", "EAP"); },
              ThrowsMessage<UsageError>(
                  "--auth: 'EAP' is not one of NONE, PAP, CHAP, PAP_CHAP or a number from 0 to 3"));
  EXPECT_THROW(parseIpType("--home-ip", "4"), UsageError);
  EXPECT_THROW(parseApnClass("--class", "256"), UsageError);
}

TEST(Values, ParseApnTypes_NamesAndNumbers) {
  struct Case {
    const char* text;
    unsigned mask;
  };
  for (const Case& c : {Case{"DEFAULT", 0x1}, Case{"default,supl", 0x5}, Case{"IMS|IA|", 0x140},
                        Case{"RCS, MMS", 0x8002}, Case{"none", 0}, Case{"0x8FFF", 0x8FFF},
                        Case{"65", 0x41}, Case{"0", 0}}) {
    EXPECT_EQ(parseApnTypes("--types", c.text), c.mask) << c.text;
  }
}

TEST(Values, ParseApnTypes_UnknownOrMeaningless_IsRefused) {
  for (const char* text :
       {"", "internet", "DEFAULT,,MMS", "DEFAULT|NONE", "0x1000", "65536", "-1"}) {
    SCOPED_TRACE(text);
    EXPECT_THAT([&] { parseApnTypes("--types", text); },
                ThrowsMessage<UsageError>(HasSubstr("--types: '")));
  }
}

TEST(Values, ParsePlmn_FiveOrSixDigits) {
  EXPECT_EQ(parsePlmn("--plmn", "23402"), "23402");
  EXPECT_EQ(parsePlmn("--plmn", "310260"), "310260");
  for (const char* text : {"", "2340", "3102600", "23a02", "-3402"}) {
    EXPECT_THROW(parsePlmn("--plmn", text), UsageError) << text;
  }
}

TEST(Values, Message_HostileText_IsEscaped) {
  EXPECT_THAT([] { parseFlag("--clat", "\x1b[2J\n"); },
              ThrowsMessage<UsageError>("--clat: '\\x1B[2J\\x0A' is not yes or no"));
}

}  // namespace
}  // namespace pavoctl
