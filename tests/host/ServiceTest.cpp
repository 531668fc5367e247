// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"

#include <climits>

namespace pavo::test {
namespace {

struct Version {
  int major;
  int minor;
  int library;
  bool served;
};

std::ostream& operator<<(std::ostream& out, const Version& version) {
  return out << version.major << "." << version.minor << " library " << version.library;
}

class ServiceVersionTest : public ::testing::TestWithParam<Version> {};

TEST_P(ServiceVersionTest, GetServiceObject_OfVersion_IsThereWhenItFits) {
  const Version version = GetParam();
  const auto* service =
      wds_get_service_object_internal_v01(version.major, version.minor, version.library);
  EXPECT_EQ(service != nullptr, version.served);
}

INSTANTIATE_TEST_SUITE_P(Versions, ServiceVersionTest,
                         ::testing::Values(Version{1, 257, 6, true}, Version{1, 0, 6, true},
                                           Version{1, 256, 6, true}, Version{1, 258, 6, false},
                                           Version{1, -1, 6, false}, Version{0, 257, 6, false},
                                           Version{2, 257, 6, false}, Version{1, 257, 5, false},
                                           Version{1, 257, 7, false},
                                           Version{INT_MIN, INT_MAX, INT_MIN, false}));

ovix_service_object_type askForService() { return wds_get_service_object_internal_v01(1, 257, 6); }

TEST(ServiceTest, GetServiceObject_Twice_IsTheSame) {
  EXPECT_NE(askForService(), nullptr);
  EXPECT_EQ(askForService(), askForService());
}

class ServicePresenceTest : public HostTest {};

TEST_F(ServicePresenceTest, GetServiceObject_OfTwoModems_StandsForEach) {
  const std::string elsewhere = folder.file("another");
  const auto service = askForService();
  EXPECT_EQ(service, askForService());
  const ScopedVariable changed("OVIX_MODEM", elsewhere.c_str());
  const auto other = askForService();
  const RawModem modem(path);
  ovix_service_info info{};
  EXPECT_EQ(ovix_client_get_any_service(service, &info), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(ovix_client_get_any_service(other, &info), OVIX_CLIENT_SERVICE_ERROR);
}

TEST_F(ServicePresenceTest, GetServiceObject_ModemNotThere_IsThere) {
  EXPECT_NE(askForService(), nullptr);
}

TEST_F(ServicePresenceTest, GetServiceObject_ModemKnowsIt_IsThere) {
  RawModem modem(path);
  EXPECT_NE(askForService(), nullptr);
  EXPECT_EQ(modem.hellos(), (std::vector<Bytes>{u8(6)}));
}

TEST_F(ServicePresenceTest, GetServiceObject_ModemRefusesIt_IsMissing) {
  {
    const RawModem modem(path, RawModem::succeed, RawModem::refusal(-2));
    EXPECT_EQ(askForService(), nullptr);
  }
  EXPECT_NE(askForService(), nullptr);
}

TEST_F(ServicePresenceTest, GetServiceObject_ModemTalksNonsense_IsThere) {
  const RawModem modem(path, RawModem::succeed, Bytes(64, 0xFF));
  EXPECT_NE(askForService(), nullptr);
}

TEST_F(ServicePresenceTest, GetServiceObject_SilentModem_IsThere) {
  const RawModem modem(path, RawModem::succeed, /*helloAnswer=*/{});
  EXPECT_NE(askForService(), nullptr);
}

TEST_F(ServicePresenceTest, GetServiceObject_OtherVersion_DoesNotAskTheModem) {
  RawModem modem(path);
  EXPECT_EQ(wds_get_service_object_internal_v01(2, 0, 6), nullptr);
  EXPECT_TRUE(modem.hellos().empty());
}

}  // namespace
}  // namespace pavo::test
