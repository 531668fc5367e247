// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "profiles/Secrets.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using testing::HasSubstr;
using testing::Not;

struct MaskedText {
  const char* line;
  const char* masked;
};

TEST(Secrets, MaskPassword_Lines_KeepWhatIsNoPassword) {
  for (const MaskedText& c : {
           MaskedText{"ApnName=ims,", "ApnName=ims,"},
           MaskedText{"Password=x,", "Password=********,"},
           MaskedText{"Password=,", "Password=********,"},
           MaskedText{
               "UserName=me,Password=x,AuthType=PAP,HomeIPType=V4,ApnTypesMask=DEFAULT|IMS|,",
               "UserName=me,Password=********,AuthType=PAP,HomeIPType=V4,"
               "ApnTypesMask=DEFAULT|IMS|,"},
           MaskedText{
               "Password=x,AuthType=PAP_CHAP,CommonIPType=V4V6,ApnTypesMask=17,ApnClass=7,"
               "IsClatEnabled=1,OverrideHomeIPType=V4,LteRoamIP=V6,UmtsRoamIP=V6,"
               "MaxPdnConnTimer=9,ProfileName=pavo_profile_ia,",
               "Password=********,AuthType=PAP_CHAP,CommonIPType=V4V6,ApnTypesMask=17,ApnClass=7,"
               "IsClatEnabled=1,OverrideHomeIPType=V4,LteRoamIP=V6,UmtsRoamIP=V6,"
               "MaxPdnConnTimer=9,ProfileName=pavo_profile_ia,"},
       }) {
    EXPECT_EQ(maskPassword(c.line), c.masked) << c.line;
  }
}

TEST(Secrets, MaskPassword_AwkwardPasswords_NeverShow) {
  for (const char* password :
       {"hush,hush", "hush,AuthType=PAP,hush", ",hush", "hush,", "hush,AuthType=hush",
        "x,ProfileName=hush", "hush,MaxPdnConnTimer=1,hush", "Password=hush", "a,Password=hush,b",
        "hush\nhush", "x,AuthType=PAP,hush,AuthType=CHAP", "hush=,=,"}) {
    SCOPED_TRACE(password);
    const std::string line = "2026 [PAVO]Diff: ProfileId=1,Password=" + std::string(password) +
                             ",AuthType=PAP,ProfileName=pavo_profile,";
    const std::string masked = maskPassword(line);
    EXPECT_THAT(masked, Not(HasSubstr("hush")));
    EXPECT_THAT(masked, HasSubstr("ProfileId=1,Password=********"));
  }
}

TEST(Secrets, MaskPassword_LineThatWasCut_IsMaskedToTheEnd) {
  EXPECT_EQ(maskPassword("Password=hush,Aut"), "Password=********");
  EXPECT_EQ(maskPassword("Password=hus"), "Password=********");
}

TEST(Secrets, MaskPassword_UserNameThatLooksLikeIt_MasksMore) {
  EXPECT_EQ(maskPassword("UserName=Password=a,Password=hush,AuthType=PAP,"),
            "UserName=Password=********,AuthType=PAP,");
}

}  // namespace
}  // namespace pavoctl
