// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "wire/Hello.h"

#include <gtest/gtest.h>

namespace wire {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(Hello, Encode_EveryPurpose_IsOneByte) {
  EXPECT_EQ(encodeHello({Purpose::Open, false}), Bytes{0});
  EXPECT_EQ(encodeHello({Purpose::Open, true}), Bytes{1});
  EXPECT_EQ(encodeHello({Purpose::Find, false}), Bytes{2});
  EXPECT_EQ(encodeHello({Purpose::Watch, false}), Bytes{4});
  EXPECT_EQ(encodeHello({Purpose::Object, true}), Bytes{7});
}

TEST(Hello, Decode_WhatWasEncoded_IsTheSame) {
  for (const Purpose purpose : {Purpose::Open, Purpose::Find, Purpose::Watch, Purpose::Object}) {
    for (const bool sawAbsence : {false, true}) {
      const auto hello = decodeHello(encodeHello({purpose, sawAbsence}));
      ASSERT_TRUE(hello);
      EXPECT_EQ(hello->purpose, purpose);
      EXPECT_EQ(hello->sawAbsence, sawAbsence);
    }
  }
}

TEST(Hello, Decode_AnythingElse_IsNone) {
  EXPECT_FALSE(decodeHello({}));
  EXPECT_FALSE(decodeHello(Bytes{8}));
  EXPECT_FALSE(decodeHello(Bytes{0, 0}));
}

TEST(HelloAnswer, Encode_WelcomeAndRefusal_AreTheBootNumberAndTheCode) {
  EXPECT_EQ(encodeHelloAnswer({0x01020304, 0}), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(encodeHelloAnswer({1, -2}), (Bytes{1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}));
}

TEST(HelloAnswer, Decode_WhatWasEncoded_IsTheSame) {
  for (const int32_t refusal : {0, -2, 77}) {
    const auto answer = decodeHelloAnswer(encodeHelloAnswer({0xFFFFFFFF, refusal}));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->boot, 0xFFFFFFFF);
    EXPECT_EQ(answer->refusal, refusal);
  }
}

TEST(HelloAnswer, Decode_AnythingElse_IsNone) {
  EXPECT_FALSE(decodeHelloAnswer({}));
  EXPECT_FALSE(decodeHelloAnswer(Bytes(3)));
  EXPECT_FALSE(decodeHelloAnswer(Bytes(8))) << "a refusal has a code";
  EXPECT_FALSE(decodeHelloAnswer(Bytes(9, 1)));
}

}  // namespace
}  // namespace wire
