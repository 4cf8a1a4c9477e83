// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "tests/core/app/ApplicationUnderTest.h"

namespace tarvik {
namespace {

using Lines = std::vector<std::string>;

TEST(SessionKey, IsSentUnchanged) {
    ApplicationUnderTest app({{"deepgramApiKey", std::string(" spaced key ")}});
    app.launch();
    app.pressHold();
    EXPECT_EQ(app.socket().header("Sec-WebSocket-Protocol"), "token,  spaced key ");
}

TEST(SessionKey, WithLineBreaksFailsTheConnectionWithOneError) {
    ApplicationUnderTest app({{"deepgramApiKey", std::string("secret\r\nX-Other: 1")}});
    app.launchAndSettle();
    app.pressHold();
    EXPECT_EQ(app.socket().header("Sec-WebSocket-Protocol"), "token, secret\r\nX-Other: 1");
    EXPECT_EQ(app.platform.log().linesWith("Deepgram error: ").size(), 1U);
    app.platform.advance(Seconds(5));
    EXPECT_EQ(
        app.platform.log().count("TarvikDictate: Deepgram WS open timeout (5s) — connect failed"),
        1U);
    EXPECT_TRUE(app.isRecording());
}

class SessionWithoutKey : public testing::TestWithParam<simulated::UserDefaultsContents> {};

TEST_P(SessionWithoutKey, ShowsThePromptInALaterTurnInsteadOfRecording) {
    ApplicationUnderTest app(GetParam());
    app.launchAndSettle();
    app.delegate->startRecording();
    EXPECT_TRUE(app.platform.userInterface().alerts.empty());
    app.platform.runUntilIdle();
    EXPECT_EQ(app.platform.userInterface().alerts.size(), 1U);
    EXPECT_EQ(app.logLines(), Lines());
    EXPECT_EQ(app.sessions(), 0U);
    EXPECT_FALSE(app.isRecording());
    EXPECT_TRUE(app.platform.webSockets().sessions().empty());
    EXPECT_EQ(app.platform.time().runningTimers(), 0U);
    // The refused start has not used up a number.
    app.platform.userDefaults().setString("secret", "deepgramApiKey");
    app.pressHold();
    EXPECT_EQ(app.logLines(), Lines({"TarvikDictate: startRecording (session=1)"}));
}

INSTANTIATE_TEST_SUITE_P(
    Stores, SessionWithoutKey,
    testing::Values(simulated::UserDefaultsContents{},
                    simulated::UserDefaultsContents{{"deepgramApiKey", std::string()}},
                    simulated::UserDefaultsContents{
                        {"deepgramApiKey", simulated::UserDefaultsList{"a key"}}}));

}  // namespace
}  // namespace tarvik
