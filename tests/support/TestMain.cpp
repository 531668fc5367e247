// The main of every test program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // The programs have threads: a death test runs itself in a fresh process, not in a fork.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  return RUN_ALL_TESTS();
}
