// The main of every test program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdlib.h>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // The programs have threads: a death test runs itself in a fresh process, not in a fork.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // Without one, the C library reads the zone anew for every tzset, under a lock that the thread
  // sanitizer does not see.
  setenv("TZ", "UTC0", /*overwrite=*/0);
  return RUN_ALL_TESTS();
}
