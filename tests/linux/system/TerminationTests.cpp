// SPDX-License-Identifier: MIT

#include <QAbstractEventDispatcher>
#include <QPointer>
#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

class LateDelegate final : public platform::ApplicationDelegate {
  public:
    void applicationDidFinishLaunching(const platform::LaunchNotification&) override { onLaunch(); }
    bool applicationShouldHandleReopen(bool) override { return true; }
    void applicationShouldPerform(platform::ApplicationAction) override {}
    void applicationShouldTerminate(std::function<void()> onReady) override {
        ++questions;
        onTerminate(std::move(onReady));
    }

    std::function<void()> onLaunch;
    std::function<void(std::function<void()> onReady)> onTerminate;
    int questions = 0;
};

TEST_F(ApplicationTest, TheRunGoesOnUntilTheDelegateIsReady) {
    const auto delegate = std::make_shared<LateDelegate>();
    application.setDelegate(delegate);
    std::vector<std::string> events;
    delegate->onLaunch = [] { std::raise(SIGTERM); };
    delegate->onTerminate = [&](std::function<void()> onReady) {
        events.emplace_back("asked");
        // Another signal does not end the application earlier, and asks nothing again.
        std::raise(SIGINT);
        mainQueue.asyncAfter(Seconds(0.1), [&, onReady = std::move(onReady)] {
            events.emplace_back("ready");
            onReady();
        });
    };
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(events, (std::vector<std::string>{"asked", "ready"}));
    EXPECT_EQ(delegate->questions, 1);
}

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

// Threads of Qt's own run on, and may be about to wake the loop.
TEST(ApplicationEnd, LeavesTheLoopToOtherThreadsUntilTheNextApplication) {
    const linuxdesktop::MonotonicClock clock;
    int argumentCount = 1;
    std::string name = "application-end";
    std::array<char*, 2> arguments = {name.data(), nullptr};
    std::optional<linuxdesktop::QtApplication> application;
    application.emplace(argumentCount, arguments.data(), clock);
    const QPointer<QAbstractEventDispatcher> loop = QAbstractEventDispatcher::instance();
    ASSERT_TRUE(loop);
    application.reset();
    ASSERT_TRUE(loop);
    loop->wakeUp();
    application.emplace(argumentCount, arguments.data(), clock);
    EXPECT_FALSE(loop);
}

}  // namespace

}  // namespace tarvik::tests
