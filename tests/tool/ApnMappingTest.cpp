// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/ApnMapping.h"
#include "profiles/Names.h"

#include <gmock/gmock.h>

#include <set>

namespace pavoctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using Attributes = std::vector<std::pair<std::string, std::string>>;

ApnEntry entryOf(Attributes attributes) {
  attributes.insert(attributes.begin(),
                    {{"carrier", "C"}, {"mcc", "234"}, {"mnc", "02"}, {"apn", "net"}});
  return {1, std::move(attributes)};
}

struct Mapped {
  Attributes attributes;
  const char* dump;
};

constexpr const char* plain = "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,";

TEST(ApnMapping, Map_KnownValues_WithoutNotes) {
  for (const Mapped& c : std::vector<Mapped>{
           {{{"type", "default"}}, plain},
           {{{"type", " Default , "}}, plain},
           {{{"type", "default,mms,supl,dun,hipri,fota,ims,cbs,ia,emergency,mcx,xcap,rcs"}},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|MMS|SUPL|DUN|HIPRI|FOTA|"
            "IMS|CBS|IA|EMERGENCY|MCX|XCAP|RCS|,"},
           {{{"type", "*"}},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|MMS|SUPL|DUN|HIPRI|FOTA|"
            "CBS|,"},
           {{},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|MMS|SUPL|DUN|HIPRI|FOTA|"
            "CBS|,"},
           {{{"type", "*,ims"}},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|MMS|SUPL|DUN|HIPRI|FOTA|"
            "IMS|CBS|,"},
           {{{"type", "default"}, {"protocol", "IPV6"}, {"roaming_protocol", "ipv4v6"}},
            "ApnName=net,HomeIPType=V6,RoamIPType=V4V6,ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"user", "me"}, {"password", "p"}},
            "ApnName=net,UserName=me,Password=p,AuthType=PAP_CHAP,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"user", "me"}, {"authtype", "-1"}},
            "ApnName=net,UserName=me,AuthType=PAP_CHAP,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"user", "me"}, {"authtype", "0"}},
            "ApnName=net,UserName=me,AuthType=NONE,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"authtype", "2"}},
            "ApnName=net,AuthType=CHAP,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"user", ""}, {"password", ""}, {"authtype", "-1"}}, plain},
           {{{"type", "default"}, {"carrier_enabled", "false"}, {"skip_464xlat", "0"}},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,IsClatEnabled=1,"
            "IsApnDisabled=1,"},
           {{{"type", "default"}, {"carrier_enabled", "true"}, {"skip_464xlat", "-1"}},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,IsApnDisabled=0,"},
           {{{"type", "default"},
             {"max_conns", "1023"},
             {"max_conns_time", "300"},
             {"wait_time", "0"}},
            "ApnName=net,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|,"
            "MaxPdnsConnPerBlock=1023,MaxPdnConnTimer=300,"},
           {{{"type", "default"}, {"mmsc", ""}}, plain},
       }) {
    SCOPED_TRACE(c.dump);
    const MappedApn mapped = mapApn(entryOf(c.attributes));
    EXPECT_EQ(mapped.params.dump(), c.dump);
    EXPECT_THAT(mapped.notes, IsEmpty());
    EXPECT_EQ(mapped.refusal, "");
  }
}

struct Noted {
  Attributes attributes;
  const char* note;
  const char* dump;
};

TEST(ApnMapping, Map_WhatHasNoCounterpart_IsNoted) {
  for (const Noted& c : std::vector<Noted>{
           {{{"type", "default,vsim,bip"}}, "type 'vsim', 'bip' has no counterpart", plain},
           {{{"type", "default"}, {"protocol", "PPP"}},
            "protocol 'PPP' has no counterpart: the IP type is left to the modem",
            "ApnName=net,RoamIPType=V4,ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"roaming_protocol", "NON-IP"}},
            "roaming_protocol 'NON-IP' has no counterpart: the IP type is left to the modem",
            "ApnName=net,HomeIPType=V4,ApnTypesMask=DEFAULT|,"},
           {{{"type", "default"}, {"authtype", "4"}}, "authtype '4' is none of -1 to 3", plain},
           {{{"type", "default"}, {"carrier_enabled", "perhaps"}},
            "carrier_enabled 'perhaps' is neither true nor false",
            plain},
           {{{"type", "default"}, {"max_conns", "65536"}},
            "max_conns '65536' is not a number from 0 to 65535",
            plain},
           {{{"type", "default"},
             {"mmsc", "http://m"},
             {"mmsproxy", "1.2.3.4"},
             {"mvno_type", "spn"},
             {"mvno_match_data", "x"}},
            "a profile has no place for mmsc, mmsproxy, mvno_type, mvno_match_data",
            plain},
           {{{"type", "default"}, {"frobnicate", "1"}},
            "a profile has no place for frobnicate",
            plain},
       }) {
    SCOPED_TRACE(c.note);
    const MappedApn mapped = mapApn(entryOf(c.attributes));
    EXPECT_EQ(mapped.params.dump(), c.dump);
    EXPECT_THAT(mapped.notes, ElementsAre(c.note));
    EXPECT_EQ(mapped.refusal, "");
  }
}

struct Refused {
  Attributes attributes;
  const char* reason;
};

TEST(ApnMapping, Map_WhatCannotBeAProfile_IsRefused) {
  const std::string long151(151, 'a');
  const std::string long128(128, 'a');
  for (const Refused& c : std::vector<Refused>{
           {{}, "it names no access point"},
           {{{"apn", ""}}, "it names no access point"},
           {{{"apn", long151}}, "apn has 151 bytes, at most 150 fit"},
           {{{"apn", "x"}, {"user", long128}}, "user has 128 bytes, at most 127 fit"},
           {{{"apn", "x"}, {"password", long128}}, "password has 128 bytes, at most 127 fit"},
           {{{"apn", "x"}, {"type", "vsim"}}, "none of its types has a counterpart"},
       }) {
    EXPECT_EQ(mapApn({1, c.attributes}).refusal, c.reason);
  }
}

TEST(ApnMapping, Map_LongestTexts_AreTaken) {
  const MappedApn mapped =
      mapApn({1, {{"apn", std::string(150, 'a')}, {"user", std::string(127, 'u')}}});
  EXPECT_EQ(mapped.refusal, "");
  EXPECT_EQ(mapped.params.getApnName().size(), 150U);
}

// Debian's whole list: every value of every entry is in the profile or in a note.
TEST(ApnMapping, Map_DebiansList_DropsNothing) {
  const ApnFile file = readApnFile("/usr/share/mobile-broadband-provider-info/apns-conf.xml");
  ASSERT_GT(file.entries.size(), 1000U);
  EXPECT_THAT(file.remarks, IsEmpty());
  for (const ApnEntry& entry : file.entries) {
    SCOPED_TRACE("line " + std::to_string(entry.line));
    const MappedApn mapped = mapApn(entry);
    if (!mapped.refusal.empty()) {
      continue;
    }
    std::string notes;
    for (const auto& note : mapped.notes) {
      notes += note + "\n";
    }
    EXPECT_EQ(mapped.params.getApnName(), entry.valueOf("apn"));
    EXPECT_EQ(mapped.params.getUserName(), entry.valueOf("user"));
    EXPECT_EQ(mapped.params.getPassword(), entry.valueOf("password"));
    for (const auto& [name, value] : entry.attributes) {
      if (name.rfind("mms", 0) == 0 && !value.empty()) {
        EXPECT_THAT(notes, HasSubstr(name));
      }
    }
    std::string types = entry.valueOf("type") + ",";
    for (const auto& name : namesOfApnTypes(mapped.params.getApnTypesMask())) {
      std::string lower;
      for (const char c : name) {
        lower += static_cast<char>(c - 'A' + 'a');
      }
      const auto at = types.find(lower + ",");
      ASSERT_NE(at, std::string::npos) << name;
      types.erase(at, lower.size() + 1);
    }
    EXPECT_EQ(types, "");
  }
}

}  // namespace
}  // namespace pavoctl
