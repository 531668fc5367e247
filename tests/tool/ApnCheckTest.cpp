// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "TemporaryFolder.h"
#include "Tool.h"
#include "lists/ApnCheck.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using pavo::test::TemporaryFolder;
using pavo::test::writeFile;
using testing::ElementsAreArray;
using Lines = std::vector<std::string>;

Lines check(const std::string& text) {
  const TemporaryFolder folder;
  const XmlElement root = readApnXml(writeFile(folder, "list.xml", text));
  Lines lines;
  for (const auto& finding : checkApnList(root, apnFileOf(root).entries)) {
    lines.push_back(std::to_string(finding.line) + " " + finding.kind + ": " + finding.text);
  }
  return lines;
}

std::string apns(const std::string& attributes) {
  return "<apns>\n<apn carrier='C' mcc='001' mnc='01' " + attributes + "/>\n</apns>";
}

struct CheckCase {
  std::string attributes;
  Lines findings;
};

TEST(ApnCheck, Android_EachAttribute_IsLookedAt) {
  for (const CheckCase& c : std::vector<CheckCase>{
           {"apn='a-b_c.d' type='default,mms' protocol='IPV4V6' authtype='0' user='u' password='p' "
            "carrier_enabled='true' mtu='1500' mmsport='80' mvno_type='spn' bearer_bitmask='1|2' "
            "skip_464xlat='-1' network_type_bitmask='' max_conns='' user_visible=''",
            {"2 credentials: user 'u' without authentication"}},
           {"apn='a' user='u' authtype='3' type='*'", {}},
           {"apn='a' user='u' authtype='-1'", {"2 credentials: user 'u' without authentication"}},
           {"apn='a' password='p'", {"2 credentials: password without user"}},
           {"apn='a' protocl='IP'",
            {"2 unknown: unknown attribute 'protocl', did you mean 'protocol'?"}},
           {"apn='a' Type='mms'", {"2 unknown: unknown attribute 'Type', did you mean 'type'?"}},
           {"apn='a' roaming_protcool='IP'",
            {"2 unknown: unknown attribute 'roaming_protcool', did you mean 'roaming_protocol'?"}},
           {"apn='a' frobnication='1'", {"2 unknown: unknown attribute 'frobnication'"}},
           {"", {"2 missing: <apn> without apn"}},
           {"apn=''", {"2 value: apn '' names no access point"}},
           {"apn='a b'",
            {"2 value: apn 'a b' cannot name an access point: ' ' has no place in it"}},
           {"apn='a..b'",
            {"2 value: apn 'a..b' cannot name an access point: a label has 1 to 63 letters"}},
           {"apn='" + std::string(151, 'a') + "'",
            {"2 value: apn '" + std::string(60, 'a') + "...' has 151 bytes, at most 150 fit"}},
           {"apn='a' type='default,msm'",
            {"2 value: type 'default,msm' has the unknown type 'msm', did you mean 'mms'?"}},
           {"apn='a' protocol='IPV5'",
            {"2 value: protocol 'IPV5' is none of ip, ipv6, ipv4v6, ppp, non-ip, unstructured, "
             "did you mean 'ipv6'?"}},
           {"apn='a' authtype='4'", {"2 value: authtype '4' is not a number from -1 to 3"}},
           {"apn='a' carrier_enabled='ture'",
            {"2 value: carrier_enabled 'ture' is none of true, false, did you mean 'true'?"}},
           {"apn='a' mmsport='http'", {"2 value: mmsport 'http' is not a number from 1 to 65535"}},
           {"apn='a' max_conns='65536'",
            {"2 value: max_conns '65536' is not a number from 0 to 65535"}},
           {"apn='a' bearer_bitmask='1|x'",
            {"2 value: bearer_bitmask '1|x' is not a list of numbers joined by |"}},
           {"apn='a' user='u' authtype='1' password='" + std::string(128, 'x') + "'",
            {"2 value: password has 128 bytes, at most 127 fit"}},
       }) {
    SCOPED_TRACE(c.attributes);
    EXPECT_THAT(check(apns(c.attributes)), ElementsAreArray(c.findings));
  }
}

TEST(ApnCheck, Android_EntriesAndElements_AreComparedByNetwork) {
  EXPECT_THAT(check("<apns>\n"
                    "<apn carrier='One' mcc='001' mnc='01' apn='net' type='default'/>\n"
                    "<apn carrier='Two' mnc='01' mcc='001' type='default' apn='net'/>\n"
                    "<apn carrier='ONE' mcc='001' mnc='01' apn='Net' type='mms'/>\n"
                    "<apn carrier='One' mcc='001' mnc='02' apn='net' type='default'/>\n"
                    "<apn carrier='one' mcc='001' mnc='03' apn='NET'/>\n"
                    "<anp/>text\n"
                    "<apn mcc='1' mnc='0200' apn='x'/>\n"
                    "</apns>"),
              ElementsAreArray(Lines{
                  "3 duplicate: the same as line 2",
                  "4 case: apn 'Net' differs from 'net' in line 2 in letter case only",
                  "7 text: text has no meaning in <apns>",
                  "7 unknown: unknown element 'anp' in <apns>, did you mean 'apn'?",
                  "8 value: mcc '1' is not 3 digits",
                  "8 value: mnc '0200' is not 2 or 3 digits",
              }));
}

TEST(ApnCheck, Gnome_ElementsAndValues_AreLookedAt) {
  EXPECT_THAT(
      check("<serviceproviders format='2.0'>\n"
            "<country code='xyz'><name>X</name><provider primary='yes'><name>P</name>\n"
            "<gsm><network-id mcc='001' mnc='1'/><network-id mcc='001' mnc='02'/><netwrok-id/>\n"
            "<apn value='net'><usage type='intrenet'/><usrname>u</usrname></apn>\n"
            "<apn value='Net'><username>u</username><username>v</username></apn>\n"
            "<apn valu='x'><plan type='gold'/><authentication/>text</apn>\n"
            "<apn value='own'><username>u</username><authentication method='chap'/></apn>\n"
            "</gsm><cdma><sid value='x'/></cdma></provider></country></serviceproviders>"),
      ElementsAreArray(Lines{
          "2 value: code 'xyz' is not a country's two letters",
          "2 value: primary 'yes' is none of true, false",
          "3 value: mnc '1' is not 2 or 3 digits",
          "3 unknown: unknown element 'netwrok-id' in <gsm>, did you mean 'network-id'?",
          "4 value: type 'intrenet' is none of internet, mms, wap, ia, mms-internet-hipri, "
          "mms-internet-hipri-fota, did you mean 'internet'?",
          "4 unknown: unknown element 'usrname' in <apn>, did you mean 'username'?",
          "5 duplicate: a second <username> in one <apn>",
          "5 credentials: user 'u' without authentication",
          "5 case: apn 'Net' differs from 'net' in line 4 in letter case only",
          "6 missing: <apn> without value",
          "6 unknown: unknown attribute 'valu', did you mean 'value'?",
          "6 text: text has no meaning in <apn>",
          "6 value: type 'gold' is none of prepaid, postpaid",
          "6 missing: <authentication> without method",
          "8 value: value 'x' is not a number from 0 to 65535",
      }));
}

TEST(ApnCheck, DebiansLists_HaveNoUnknownNames) {
  for (const char* name : {"apns-conf.xml", "serviceproviders.xml"}) {
    SCOPED_TRACE(name);
    const XmlElement root =
        readApnXml(std::string("/usr/share/mobile-broadband-provider-info/") + name);
    std::size_t credentials = 0;
    for (const auto& finding : checkApnList(root, apnFileOf(root).entries)) {
      EXPECT_THAT(std::string(finding.kind),
                  testing::AnyOf("value", "duplicate", "case", "credentials"))
          << finding.line << " " << finding.text;
      credentials += finding.kind == std::string("credentials") ? 1 : 0;
    }
    EXPECT_GT(credentials, 400U);
  }
}

}  // namespace
}  // namespace pavoctl
