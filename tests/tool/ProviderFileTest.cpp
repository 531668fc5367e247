// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "TemporaryFolder.h"
#include "Tool.h"
#include "lists/ApnMapping.h"
#include "lists/ProviderFile.h"

#include <gmock/gmock.h>

#include <map>

namespace pavoctl {
namespace {

using pavo::test::TemporaryFolder;
using pavo::test::writeFile;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* debiansApns = "/usr/share/mobile-broadband-provider-info/apns-conf.xml";
constexpr const char* debiansProviders =
    "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

ApnFile read(const std::string& gsm) {
  const TemporaryFolder folder;
  return readApnFile(writeFile(
      folder, "p.xml",
      "<serviceproviders format='2.0'><country code='xx'><name>X</name><provider><name>P</name>"
      "<gsm><network-id mcc='001' mnc='01'/><network-id mcc='001' mnc='002'/>" +
          gsm + "</gsm></provider></country></serviceproviders>"));
}

struct Mapped {
  const char* apn;
  const char* dump;
  std::vector<std::string> notes;
};

TEST(ProviderFile, Apn_EveryElement_IsMappedOrNoted) {
  constexpr const char* plain =
      "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|SUPL|,";
  for (const Mapped& c : std::vector<Mapped>{
           {"<apn value='net'><usage type='internet'/></apn>", plain, {}},
           {"<apn value='net'/>",
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,",
            {}},
           {"<apn value='net'><usage type='mms'/><name>M</name></apn>",
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=MMS|,",
            {}},
           {"<apn value='net'><usage type='ia'/></apn>",
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=IA|,",
            {}},
           {"<apn value='net'><usage type='mms-internet-hipri-fota'/></apn>",
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|MMS|SUPL|HIPRI|FOTA|,",
            {}},
           {"<apn value='net'><usage type='wap'/></apn>",
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,",
            {"usage 'wap' has no type of its own: taken as default"}},
           {"<apn value='net'><username>me</username><password> p\n</password></apn>",
            "ApnName=net,UserName=me,Password=p,AuthType=PAP_CHAP,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|,",
            {"the blanks around <password> are left out"}},
           {"<apn value='net'><username>me</username><authentication method='pap'/></apn>",
            "ApnName=net,UserName=me,AuthType=PAP,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|,",
            {}},
           {"<apn value='net'><username>me</username><username>you</username>"
            "<authentication method='chap'/></apn>",
            "ApnName=net,UserName=me,AuthType=CHAP,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|,",
            {"a second user is left out"}},
           {"<apn value='net' type='x'><usage type='internet'/><authentication method='eap'/>"
            "<plan type='prepaid'/><dns>1.2.3.4</dns><dns>1.2.3.5</dns><gateway>1.1.1.1</gateway>"
            "<mmsc>http://m</mmsc><mmsproxy>1:8</mmsproxy><max_conns>3</max_conns></apn>",
            plain,
            {"attribute 'type' has no meaning here", "authentication 'eap' has no counterpart",
             "a profile has no place for <plan>, <dns>, <gateway>, <mmsc>, <mmsproxy>, "
             "<max_conns>"}},
       }) {
    SCOPED_TRACE(c.apn);
    const ApnFile file = read(c.apn);
    ASSERT_THAT(file.entries, SizeIs(1));
    EXPECT_THAT(file.entries[0].networks, ElementsAre("00101", "001002"));
    const MappedApn mapped = mapApn(file.entries[0]);
    EXPECT_EQ(mapped.params.dump(), c.dump);
    EXPECT_EQ(mapped.notes, c.notes);
    EXPECT_EQ(mapped.refusal, "");
    EXPECT_THAT(file.remarks, IsEmpty());
  }
}

TEST(ProviderFile, Apn_WhatCannotBeAProfile_IsRefused) {
  EXPECT_EQ(mapApn(read("<apn value=''/>").entries.at(0)).refusal, "it names no access point");
  EXPECT_EQ(mapApn(read("<apn value='" + std::string(151, 'a') + "'/>").entries.at(0)).refusal,
            "apn has 151 bytes, at most 150 fit");
  EXPECT_EQ(mapApn(read("<apn value='x'><usage type='tv'/></apn>").entries.at(0)).refusal,
            "none of its types has a counterpart");
}

TEST(ProviderFile, Names_TheApnsOrTheProviders_WithoutALanguage) {
  const auto carrier = [](const std::string& apn) {
    return read(apn).entries.at(0).valueOf("carrier");
  };
  EXPECT_EQ(carrier("<apn value='x'/>"), "P");
  EXPECT_EQ(carrier("<apn value='x'><name xml:lang='de'>D</name><name>N</name></apn>"), "N");
  EXPECT_EQ(carrier("<apn value='x'><name xml:lang='de'>D</name></apn>"), "D");
}

TEST(ProviderFile, OtherElements_AreRemarkedForTheirOperator) {
  const ApnFile file =
      read("\n<voicemail>1</voicemail>\n<network-id mcc='1' mnc='2'/>\ntext<apn value='x'/>");
  std::vector<std::string> remarks;
  for (const auto& remark : file.remarks) {
    EXPECT_TRUE(remark.isOf("00101")) << remark.text;
    remarks.push_back(std::to_string(remark.line) + " " + remark.text);
  }
  EXPECT_THAT(remarks, ElementsAre("2 a profile has no place for element <voicemail>",
                                   "3 <network-id> without a proper mcc and mnc",
                                   "4 text between the elements has no meaning here"));
  EXPECT_FALSE(file.remarks[0].isOf("23402"));
}

// Debian's package has the same access points in both formats. The only difference is MMS:
// Android's list says that an MMS access point is for data as well.
TEST(ProviderFile, DebiansLists_AreTheSameProfiles) {
  const ApnFile apns = readApnFile(debiansApns);
  const ApnFile providers = readApnFile(debiansProviders);
  ASSERT_EQ(apns.entries.size(), providers.entries.size());
  for (std::size_t i = 0; i < apns.entries.size(); ++i) {
    const ApnEntry& provider = providers.entries[i];
    SCOPED_TRACE("line " + std::to_string(provider.line));
    for (const auto& network : apns.entries[i].networks) {
      EXPECT_TRUE(provider.isOf(network));
    }
    pavo::ProfileParams wanted = mapApn(apns.entries[i]).params;
    pavo::ProfileParams params = mapApn(provider).params;
    if (provider.valueOf("type") == "mms") {
      params.setApnTypesMask(params.getApnTypesMask() | pavo::DEFAULT);
    }
    if (provider.has("authtype")) {
      // Android's list lacks these values.
      wanted.setAuthType(params.getAuthType());
    }
    EXPECT_EQ(params.getPassword(), wanted.getPassword());
    EXPECT_EQ(params.dump(), wanted.dump());
  }
}

}  // namespace
}  // namespace pavoctl
