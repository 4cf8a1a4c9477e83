// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "settings/PermissionChecker.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

class Permissions : public testing::Test {
  protected:
    void requestMicrophone() {
        PermissionChecker::requestMicrophone(platform.captureAuthorization(), platform.mainQueue(),
                                             platform.log(), [this](bool granted) {
                                                 EXPECT_TRUE(platform.time().isRunningBlock());
                                                 answer = granted;
                                             });
    }

    simulated::SimulatedPlatform platform;
    std::optional<bool> answer;
};

TEST_F(Permissions, AuthorizedMicrophoneIsRequestedToo) {
    requestMicrophone();
    EXPECT_EQ(platform.captureAuthorization().requests, 1);
    EXPECT_EQ(answer, std::nullopt);
    platform.runUntilIdle();
    EXPECT_EQ(answer, true);
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: mic status 3 (0=notDet,1=restricted,2=denied,3=authorized)",
                     "TarvikDictate: mic requestAccess → true"}));
}

TEST_F(Permissions, DeniedMicrophoneGivesFalse) {
    platform.captureAuthorization().status = 2;
    requestMicrophone();
    platform.runUntilIdle();
    EXPECT_EQ(answer, false);
    EXPECT_EQ(platform.log().lines(),
              Lines({"TarvikDictate: mic status 2 (0=notDet,1=restricted,2=denied,3=authorized)",
                     "TarvikDictate: mic requestAccess → false"}));
}

TEST_F(Permissions, UnknownStatusIsLoggedAsItsNumber) {
    for (const int status : {-1, 4, 4711}) {
        platform.log().clear();
        platform.captureAuthorization().status = status;
        requestMicrophone();
        EXPECT_EQ(platform.log().lines()[0], "TarvikDictate: mic status " + std::to_string(status) +
                                                 " (0=notDet,1=restricted,2=denied,3=authorized)");
    }
}

TEST_F(Permissions, AnswerOnAnotherThreadIsDeliveredOnTheMainThread) {
    platform.captureAuthorization().status = 0;
    platform.captureAuthorization().isAnswerHeld = true;
    requestMicrophone();
    std::thread answering([this] { platform.captureAuthorization().answer(true); });
    answering.join();
    EXPECT_EQ(platform.log().count("TarvikDictate: mic requestAccess → true"), 1U);
    EXPECT_EQ(answer, std::nullopt);
    platform.runUntilIdle();
    EXPECT_EQ(answer, true);
}

TEST_F(Permissions, TrustedAccessibilityGivesTrue) {
    EXPECT_TRUE(PermissionChecker::requestAccessibility(platform.accessibility(), platform.log()));
    EXPECT_EQ(platform.log().lines(), Lines({"TarvikDictate: accessibility trusted → true"}));
}

TEST_F(Permissions, UntrustedAccessibilityGivesFalseAndPromptsEachTime) {
    platform.accessibility().isTrusted = false;
    EXPECT_FALSE(PermissionChecker::requestAccessibility(platform.accessibility(), platform.log()));
    EXPECT_FALSE(PermissionChecker::requestAccessibility(platform.accessibility(), platform.log()));
    EXPECT_EQ(platform.accessibility().prompts, 2);
    EXPECT_EQ(platform.log().count("TarvikDictate: accessibility trusted → false"), 2U);
}

}  // namespace
}  // namespace tarvik
