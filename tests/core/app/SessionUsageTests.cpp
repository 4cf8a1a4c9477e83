// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

class SessionUsage : public testing::Test {
  protected:
    SessionUsage() { app.launchAndSettle(); }

    ApplicationUnderTest app;
};

TEST_F(SessionUsage, IsCountedInWholeSeconds) {
    app.pressHold();
    app.platform.advance(Seconds(4));
    app.acceptConnection();
    for (int i = 0; i < 3; ++i) {
        app.platform.advance(Seconds(15));
        app.sayFinal("still here");
    }
    app.platform.advance(Seconds(10.9));
    app.releaseHold();
    EXPECT_EQ(app.recordedSeconds(), 59);
}

TEST_F(SessionUsage, SessionBelowASecondIsNotCounted) {
    app.pressHold();
    app.platform.advance(Seconds(0.9));
    app.releaseHold();
    EXPECT_EQ(app.recordedSeconds(), 0);
    EXPECT_FALSE(app.platform.userDefaults().has("totalDictationSeconds"));
}

TEST_F(SessionUsage, DueCallToActionComesOneSecondAfterTheStop) {
    std::size_t shown = 0;
    for (const auto& [before, headline] : {std::pair(595, "Enjoying Tarvik Dictate?"),
                                           std::pair(3595, "You're getting real value here.")}) {
        app.platform.userDefaults().setInteger(before, "totalDictationSeconds");
        app.pressHold();
        app.platform.advance(Seconds(6));
        app.releaseHold();
        app.platform.advance(Seconds(0.99));
        EXPECT_EQ(app.platform.userInterface().frontTimes("").size(), shown);
        app.platform.advance(Seconds(0.01));
        ASSERT_EQ(app.platform.userInterface().frontTimes("").size(), ++shown);
        EXPECT_TRUE(app.callToAction()->label(headline)) << headline;
    }
}

TEST_F(SessionUsage, WithoutADueTierNoCallToActionComes) {
    app.pressHold();
    app.platform.advance(Seconds(6));
    app.releaseHold();
    app.platform.advance(Seconds(60));
    EXPECT_FALSE(app.callToAction());
    EXPECT_EQ(app.recordedSeconds(), 6);
}

}  // namespace
}  // namespace tarvik
