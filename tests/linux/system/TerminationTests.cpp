// SPDX-License-Identifier: MIT

#include <csignal>

#include "platform/linux/windows/QtUserInterface.h"
#include "tests/linux/system/ApplicationTest.h"

namespace tarvik::tests {

namespace {

class TerminationTest : public ApplicationTest, public testing::WithParamInterface<int> {};

TEST_P(TerminationTest, ASignalEndsTheRunCleanly) {
    mainQueue.async([] { std::raise(GetParam()); });
    EXPECT_EQ(application.run(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminationTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(ApplicationTest, ASignalEndsTheRunAlsoWhileAnAlertIsUp) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    int answer = -1;
    mainQueue.async([&] {
        mainQueue.async([] { std::raise(SIGTERM); });
        platform::Alert alert;
        alert.messageText = "Question";
        alert.buttons = {"Save"};
        answer = userInterface.runModal(alert).code;
    });
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(answer, 0);
}

}  // namespace

}  // namespace tarvik::tests
