#include <climits>

#include "HostTest.h"

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

TEST(ServiceTest, GetServiceObject_Twice_IsTheSame) { EXPECT_EQ(wdsService(), wdsService()); }

}  // namespace
}  // namespace pavo::test
